#include "ConsoleRig.h"
#include "FakeHidBackend.h"

#include <QStandardPaths>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <thread>

// The device controller's thread against the main thread: the ladder opens and loses the
// receiver while the page's and the device's slots change the same state.
class TestConsoleController : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void controllerAndSlotsShareTheState();
    void slowEnumerationDoesNotHoldUpInput();
};

namespace {

// A receiver whose enumeration takes its time, as a busy USB bus's does. Only the device
// controller's: the plug watch enumerates on its own thread as well.
class SlowHidBackend : public FakeHidBackend {
public:
    std::atomic<bool> enumerating{false};
    std::atomic<int> delayMs{0};
    QList<Interface> enumerate() override
    {
        if (QThread::currentThread()->objectName() == QLatin1String("UsbChangeWorker")) {
            return FakeHidBackend::enumerate();
        }
        enumerating = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs.load()));
        enumerating = false;
        return FakeHidBackend::enumerate();
    }
};

}  // namespace

void TestConsoleController::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName(QStringLiteral("ZorvaneV2"));
}

void TestConsoleController::controllerAndSlotsShareTheState()
{
    FakeHidBackend backend;
    backend.setInterfaces({HidBackend::Interface{QStringLiteral("/dev/hidraw3"), 0x3151, 0x4011, 0xFF00}});
    ConsoleRig rig(&backend);
    rig.prepare([](UserPreferences& p) {
        p.saveVid = 0x3151;
        p.savePid = 0x4011;
    });
    MainWindowPresenter* presenter = rig.start();
    QVERIFY(presenter->lifecycle()->isDeviceControllerRunning());

    // Opened by the saved numbers on the controller's thread; ready is told back to the main one.
    QTRY_VERIFY_WITH_TIMEOUT(presenter->lifecycle()->deviceStatus().ready, 5000);
    QCOMPARE(rig.view.callsOf(QStringLiteral("setDeviceTypeIcon")),
             QStringList{QStringLiteral("setDeviceTypeIcon(0)")});
    QVERIFY(presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceMessage)->isActive());

    // The main thread moves targets while the controller walks the ladder.
    for (int i = 0; i < 40; ++i) {
        presenter->lifecycle()->onDeviceMouseActive(i % 2 == 0);
        presenter->onCheckShake(i % 2 == 0);
        presenter->lifecycle()->onDeviceDpi(i % 3);
        QTest::qWait(20);
    }
    QVERIFY(!backend.writes().isEmpty());

    // The receiver goes: the controller sees the lost link, zeroes the state and reports it.
    backend.pullOut();
    QTRY_VERIFY_WITH_TIMEOUT(rig.errors().contains(1), 3000);
    QTRY_VERIFY(!presenter->lifecycle()->deviceStatus().connected);
}

void TestConsoleController::slowEnumerationDoesNotHoldUpInput()
{
    SlowHidBackend backend;
    ConsoleRig rig(&backend, 20);
    rig.prepare([](UserPreferences& p) { p.restRemind = 1; });
    backend.delayMs = 1500;
    MainWindowPresenter* presenter = rig.start();

    // Every key and mouse event of the desktop comes through here on the main thread. It
    // takes well under a millisecond; held up by the enumeration it would take 1.5 s.
    QVERIFY(QTest::qWaitFor([&] { return backend.enumerating.load(); }, 5000));
    QElapsedTimer clock;
    clock.start();
    presenter->onWorkInput();
    QVERIFY2(clock.elapsed() < 500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(presenter->timer(MainWindowPresenter::TimerWorkTime)->isActive());
    backend.delayMs = 0;
}

QTEST_GUILESS_MAIN(TestConsoleController)
#include "tst_consolecontroller.moc"
