#include "Utils/CustomTimer.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <thread>

class TestCustomTimer : public QObject {
    Q_OBJECT

private slots:
    void repeatsAtItsInterval();
    void stopIsPromptEvenWithALongInterval();
    void singleShotRunsOnce();
    void restartAfterStopAndDestroyWhileRunning();
};

void TestCustomTimer::repeatsAtItsInterval()
{
    std::atomic<int> calls{0};
    std::atomic<bool> onOtherThread{true};
    const std::thread::id mainThread = std::this_thread::get_id();
    CustomTimer timer(20, [&] {
        ++calls;
        onOtherThread = onOtherThread && std::this_thread::get_id() != mainThread;
    });
    QVERIFY(!timer.isActive());
    timer.start();
    QVERIFY(timer.isActive());
    QTRY_VERIFY(calls >= 5);
    timer.stop();
    QTRY_VERIFY(!timer.isActive());
    const int after = calls;
    QTest::qWait(60);
    QCOMPARE(calls.load(), after);
    QVERIFY(onOtherThread);
}

void TestCustomTimer::stopIsPromptEvenWithALongInterval()
{
    std::atomic<int> calls{0};
    CustomTimer timer(2000, [&] { ++calls; });
    timer.start();
    QTRY_COMPARE(calls.load(), 1);
    QElapsedTimer clock;
    clock.start();
    timer.stop();
    QVERIFY(timer.wait(1000));
    QVERIFY2(clock.elapsed() < 200, "the thread waited out its interval");
    QCOMPARE(calls.load(), 1);
}

void TestCustomTimer::singleShotRunsOnce()
{
    std::atomic<int> calls{0};
    CustomTimer timer(10, [&] { ++calls; });
    timer.setSingleShot(true);
    timer.start();
    QVERIFY(timer.wait(2000));
    QTest::qWait(50);
    QCOMPARE(calls.load(), 1);
    QVERIFY(!timer.isActive());
}

void TestCustomTimer::restartAfterStopAndDestroyWhileRunning()
{
    std::atomic<int> calls{0};
    {
        CustomTimer timer(5, [&] { ++calls; });
        timer.start();
        QTRY_VERIFY(calls >= 1);
        timer.stop();
        timer.start();  // while the thread may still be leaving
        const int before = calls;
        QTRY_VERIFY(calls > before + 2);
        QVERIFY(timer.isActive());
    }  // destroyed while running: stops and joins
    const int final = calls;
    QTest::qWait(30);
    QCOMPARE(calls.load(), final);
}

QTEST_GUILESS_MAIN(TestCustomTimer)
#include "tst_customtimer.moc"
