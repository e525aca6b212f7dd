#include "ConsoleRig.h"
#include "FakeHidBackend.h"

#include <QStandardPaths>
#include <QtTest>

// The device controller's thread against the main thread: the ladder opens and loses the
// receiver while the page's and the device's slots change the same state.
class TestConsoleController : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void controllerAndSlotsShareTheState();
};

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
    QVERIFY(presenter->isDeviceControllerRunning());

    // Opened by the saved numbers on the controller's thread; ready is told back to the main one.
    QTRY_VERIFY_WITH_TIMEOUT(presenter->deviceStatus().ready, 5000);
    QCOMPARE(rig.view.callsOf(QStringLiteral("setDeviceTypeIcon")),
             QStringList{QStringLiteral("setDeviceTypeIcon(0)")});
    QVERIFY(presenter->timer(MainWindowPresenter::TimerDeviceMessage)->isActive());

    // The main thread moves targets while the controller walks the ladder.
    for (int i = 0; i < 40; ++i) {
        presenter->onDeviceMouseActive(i % 2 == 0);
        presenter->onCheckShake(i % 2 == 0);
        presenter->onDeviceDpi(i % 3);
        QTest::qWait(20);
    }
    QVERIFY(!backend.writes().isEmpty());

    // The receiver goes: the controller sees the lost link, zeroes the state and reports it.
    backend.pullOut();
    QTRY_VERIFY_WITH_TIMEOUT(rig.errors().contains(1), 3000);
    QTRY_VERIFY(!presenter->deviceStatus().connected);
}

QTEST_GUILESS_MAIN(TestConsoleController)
#include "tst_consolecontroller.moc"
