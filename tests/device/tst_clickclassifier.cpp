#include "Hid/ClickClassifier.h"

#include <QtTest>

#include <atomic>
#include <thread>

using Kind = ClickClassifier::Kind;

namespace {

// Drives a classifier through a timeline given in ticks and records every result with the
// tick at which it came.
struct Timeline {
    ClickClassifier classifier;
    QStringList log;
    int now = 0;

    void record(const ClickClassifier::Results& results)
    {
        for (const auto& r : results) {
            const char* kind = r.kind == Kind::Click       ? "click"
                               : r.kind == Kind::LongClick ? "long"
                                                           : "double";
            log << QStringLiteral("%1 %2 k%3 s%4")
                       .arg(now)
                       .arg(QLatin1String(kind))
                       .arg(r.key)
                       .arg(r.kind == Kind::Click ? -1 : r.status);
        }
    }
    void tickTo(int tick)
    {
        while (now < tick) {
            ++now;
            record(classifier.onKeyCheck());
        }
    }
    void press(int tick, int key = 6)
    {
        tickTo(tick);
        record(classifier.buildClickType(key, 1));
    }
    void release(int tick, int key = 6)
    {
        tickTo(tick);
        record(classifier.buildClickType(key, 0));
    }
};

}  // namespace

class TestClickClassifier : public QObject {
    Q_OBJECT

private slots:
    void timings();
    void twoKeysAreIndependent();
    void quietDoubleClickEnd();
    void pressesFromAnotherThread();
};

void TestClickClassifier::timings()
{
    // Key 6 goes down (1) or up (0) at the given ticks: the results up to tick 200, and a
    // note if the classifier is not idle by then.
    const auto run = [](std::initializer_list<std::pair<int, int>> events) {
        Timeline t;
        for (const auto& [tick, down] : events) {
            if (down != 0) {
                t.press(tick);
            } else {
                t.release(tick);
            }
        }
        t.tickTo(200);
        if (!t.classifier.isIdle()) {
            t.log << QStringLiteral("still busy");
        }
        return t.log.join(QLatin1String("; "));
    };
    // Double click: start on the second press, end on its release; no single click.
    QCOMPARE(run({{0, 1}, {10, 0}, {30, 1}, {40, 0}}), QStringLiteral("30 double k6 s1; 40 double k6 s0"));
    // A click is told once the double-click window has run out: the 46th tick.
    QCOMPARE(run({{0, 1}, {10, 0}}), QStringLiteral("46 click k6 s-1"));
    // Held: long press at exactly tick 50, its end at the release.
    QCOMPARE(run({{0, 1}, {190, 0}}), QStringLiteral("50 long k6 s1; 190 long k6 s0"));
    // A press at tick 45 is neither a double click nor a new entry; its release finds none.
    QCOMPARE(run({{0, 1}, {10, 0}, {45, 1}, {60, 0}}), QStringLiteral("46 click k6 s-1"));
    // Held past the window, let go before the long press: a click on the next tick.
    QCOMPARE(run({{0, 1}, {48, 0}}), QStringLiteral("49 click k6 s-1"));
    // A third press inside the window starts the double click again.
    QCOMPARE(run({{0, 1}, {5, 0}, {10, 1}, {20, 1}, {25, 0}}),
             QStringLiteral("10 double k6 s1; 20 double k6 s1; 25 double k6 s0"));
    // A release with nothing pressed is ignored.
    QCOMPARE(run({{3, 0}}), QString());
}

void TestClickClassifier::twoKeysAreIndependent()
{
    Timeline t;
    t.press(0, 5);
    t.press(20, 6);
    t.release(30, 5);
    t.tickTo(100);
    t.release(120, 6);
    t.tickTo(200);
    QCOMPARE(t.log, QStringList({QStringLiteral("46 click k5 s-1"), QStringLiteral("70 long k6 s1"),
                                 QStringLiteral("120 long k6 s0")}));
}

void TestClickClassifier::quietDoubleClickEnd()
{
    ClickClassifier c;
    c.buildClickType(1, 1);
    c.buildClickType(1, 0);
    QCOMPARE(c.buildClickType(1, 1).size(), 1);
    QCOMPARE(c.buildClickType(1, 0, false).size(), 0);
    QVERIFY(c.isIdle());
}

void TestClickClassifier::pressesFromAnotherThread()
{
    // The device read thread classifies while the main thread ticks.
    ClickClassifier c;
    std::atomic<bool> done{false};
    std::atomic<int> fromReader{0};
    std::thread reader([&] {
        for (int i = 0; i < 2000; ++i) {
            fromReader += c.buildClickType(3 + (i % 4), (i / 4) % 2 == 0 ? 1 : 0).size();
        }
        done = true;
    });
    int fromTicks = 0;
    while (!done) {
        fromTicks += c.onKeyCheck().size();
    }
    reader.join();
    for (int i = 0; i < 100; ++i) {
        fromTicks += c.onKeyCheck().size();
    }
    QVERIFY(fromReader + fromTicks > 0);
}

QTEST_GUILESS_MAIN(TestClickClassifier)
#include "tst_clickclassifier.moc"
