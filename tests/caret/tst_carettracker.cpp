#include "Platform/CaretTracker.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

// A search that answers a new point each time, after `delayMs`.
struct CountingLookup {
    std::atomic<int> calls{0};
    std::atomic<int> delayMs{0};

    QPoint operator()()
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs.load()));
        const int n = ++calls;
        return QPoint(n, 100 + n);
    }
};

qint64 timed(CaretTracker& tracker, QPoint* answer)
{
    QElapsedTimer clock;
    clock.start();
    *answer = tracker.caretPosition();
    return clock.elapsed();
}

}  // namespace

class TestCaretTracker : public QObject {
    Q_OBJECT

private slots:
    // A quick search answers each request afresh: a caret that moved between two presses is
    // seen where it is now.
    void answersEachRequestAfresh()
    {
        CountingLookup lookup;
        CaretTracker tracker([&] { return lookup(); }, 2000ms);
        QCOMPARE(tracker.caretPosition(), QPoint(1, 101));
        QCOMPARE(tracker.caretPosition(), QPoint(2, 102));
        QCOMPARE(lookup.calls.load(), 2);
    }

    // A search that hangs costs the caller the wait only: unknown first, then the last point
    // found while it is young enough, then unknown again.
    void slowSearchCostsTheWaitOnly()
    {
        CountingLookup lookup;
        CaretTracker tracker([&] { return lookup(); }, 30ms, 400ms);
        QPoint answer;
        lookup.delayMs = 300;
        QVERIFY(timed(tracker, &answer) < 200);
        QCOMPARE(answer, QPoint(0, 0));

        QTRY_COMPARE(lookup.calls.load(), 1);
        QVERIFY(timed(tracker, &answer) < 200);  // the first result arrived meanwhile
        QCOMPARE(answer, QPoint(1, 101));

        // Once the last result is older than 400 ms the caller no longer trusts it.
        QTRY_COMPARE(lookup.calls.load(), 2);
        lookup.delayMs = 1000;
        QTest::qWait(450);
        QVERIFY(timed(tracker, &answer) < 200);
        QCOMPARE(answer, QPoint(0, 0));
    }

    // Callers on several threads share searches; the tracker goes away with a search running.
    void concurrentCallersAndShutdown()
    {
        CountingLookup lookup;
        lookup.delayMs = 5;
        std::atomic<int> unknown{0};
        {
            CaretTracker tracker([&] { return lookup(); }, 500ms);
            std::vector<std::thread> callers;
            for (int t = 0; t < 4; ++t) {
                callers.emplace_back([&] {
                    for (int i = 0; i < 20; ++i) {
                        if (tracker.caretPosition().isNull()) {
                            ++unknown;
                        }
                    }
                });
            }
            for (std::thread& caller : callers) {
                caller.join();
            }
            QVERIFY(lookup.calls.load() <= 80);
        }
        QCOMPARE(unknown.load(), 0);
        CaretTracker hasty([&] { return lookup(); }, 10ms);
        lookup.delayMs = 100;
        hasty.caretPosition();  // leaves a search running as it goes
    }
};

QTEST_GUILESS_MAIN(TestCaretTracker)
#include "tst_carettracker.moc"
