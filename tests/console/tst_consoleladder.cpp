#include "ConsoleRig.h"
#include "Hid/DeviceMessage.h"
#include "Hid/UsbChangeWorker.h"
#include "Hid/VirtualHidBackend.h"
#include "Http/HttpManager.h"
#include "MouseSimulator.h"
#include "ServiceSet.h"
#include "WidgetPresenter/PictureFiles.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTimer>
#include <QtTest>

namespace DM = DeviceMessage;

namespace {

constexpr int kVid = 0x3151;
constexpr int kPid = 0x4011;
// Both device ladders tick this fast here; what counts is the number of ticks.
constexpr int kTickMs = 40;

// The line the simulator prints when the application writes this record.
QString out(const st_small_base_com_msg& record)
{
    return QStringLiteral("out ") + QString::fromLatin1(record.toByteArray(31).toHex(' '));
}

// Waits until the device message loop has ticked n more times.
bool waitTicks(MainWindowPresenter* presenter, int n)
{
    QSignalSpy ticks(presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceMessage), &QTimer::timeout);
    return QTest::qWaitFor([&] { return ticks.size() >= n; }, 100 * n * kTickMs);
}

// The console's log lines while it lives.
class ConsoleLog {
public:
    ConsoleLog() : mPrevious(qInstallMessageHandler(&ConsoleLog::handle)) { sLines.clear(); }
    ~ConsoleLog() { qInstallMessageHandler(mPrevious); }
    int count(const QString& text) const { return sLines.filter(text).size(); }

private:
    static void handle(QtMsgType, const QMessageLogContext& context, const QString& message)
    {
        if (qstrcmp(context.category, "zorvane.console") == 0) {
            sLines << message;
        }
    }
    static inline QStringList sLines;
    QtMessageHandler mPrevious;
};

void saveNumbers(UserPreferences& p, int vid, int pid)
{
    p.saveVid = vid;
    p.savePid = pid;
    p.saveCustomerCode = QStringLiteral("0A0B0C");
}

}  // namespace

// The console's two ladders against the virtual mouse and the stand-in backend.
class TestConsoleLadder : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void asleepMouseWaitsThenSettingsReachIt();
    void unplugAndReplug();
    void controllerRestsWithoutDevice();
    void onlineLadderOpensFromTheListAndRegisters();
    void unlistedCustomerCodeIsGivenUp();
    void backendDownAtStartLeavesTheMouseWorking();
    void httpStepsRunInOrderAndRetry();
    void optionalStepsGiveWayToRegistration();
    void openDelayOnlineAndOffline();

private:
    std::unique_ptr<MouseSimulator> simulator(const QStringList& setup = {});
    std::unique_ptr<HttpManager> backend();

    QString mSocketPath;
    ServiceSet mServices;
};

void TestConsoleLadder::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName(QStringLiteral("ZorvaneV2"));
    mSocketPath = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
                  QStringLiteral("/mouse-sim-console");
    mServices.setAllPortsFree();
    QString error;
    QVERIFY2(mServices.start(&error), qPrintable(error));
}

std::unique_ptr<MouseSimulator> TestConsoleLadder::simulator(const QStringList& setup)
{
    auto sim = std::make_unique<MouseSimulator>(QStringLiteral(MOUSE_SIM_BINARY), mSocketPath);
    if (!sim->waitReady()) {
        return nullptr;
    }
    for (const QString& line : setup) {
        sim->command(line.toUtf8());
    }
    sim->command("echo set up");
    return sim->waitForLine(QStringLiteral("set up")) ? std::move(sim) : nullptr;
}

std::unique_ptr<HttpManager> TestConsoleLadder::backend()
{
    mServices.fault(ServiceSet::Backend).clear();
    return std::make_unique<HttpManager>(HttpRequest::getInstance(), mServices.url(ServiceSet::Backend),
                                         mServices.url(ServiceSet::IpLookup));
}

void TestConsoleLadder::asleepMouseWaitsThenSettingsReachIt()
{
    auto sim = simulator();
    QVERIFY(sim);
    VirtualHidBackend link(mSocketPath);
    ConsoleRig rig(&link, kTickMs);
    rig.prepare([](UserPreferences& p) { saveNumbers(p, kVid, kPid); });
    MainWindowPresenter* presenter = rig.start();
    presenter->onInternetStateChange(false);  // no backend: the saved branding counts

    // Asleep before the ladder asks: it stops at the wake check and asks nothing more (the
    // message loop still learns the module).
    QVERIFY(sim->waitForLine(QStringLiteral("open")));
    sim->command("active 0");
    QTRY_VERIFY(presenter->lifecycle()->deviceStatus().activeKnown);
    QVERIFY(waitTicks(presenter, 4));
    QVERIFY(!sim->hasLine(out(DM::getDongleFlashID())));
    QVERIFY(!sim->hasLine(out(DM::getDPILevelValue())));
    QVERIFY(!presenter->lifecycle()->deviceStatus().dongleIdKnown);

    // Awake: module, ids and settings follow.
    sim->command("active 1");
    QTRY_VERIFY_WITH_TIMEOUT(presenter->lifecycle()->isDeviceInitialised(), 15000);
    const DeviceStatus status = presenter->lifecycle()->deviceStatus();
    QVERIFY(status.moduleKnown && status.dongleIdKnown && status.remoteIdKnown && status.levelValuesKnown);
    QVERIFY(status.shake.known && status.shake.status);
    QCOMPARE(presenter->lifecycle()->device().dongleFlashID, QStringLiteral("8877665544332211"));
    QVERIFY(rig.view.calls.contains(QStringLiteral("setVipFunction(true)")));
    QVERIFY(!rig.errors().contains(1));

    // A switch on the page reaches the mouse within five ticks of the message loop, here
    // ticked by hand.
    presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceMessage)->stop();
    presenter->onCheckShake(false);
    for (int tick = 0; tick < 5; ++tick) {
        presenter->lifecycle()->onTimerDeviceMessage();
    }
    QVERIFY(sim->waitForLine(out(DM::setShake(false))));
    presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceMessage)->start();
    QTRY_VERIFY(!presenter->lifecycle()->deviceStatus().shake.status);

    // Asleep again: everything waits, the link stays.
    sim->command("active 0");
    QTRY_VERIFY(!presenter->lifecycle()->deviceStatus().mouseActive);
    presenter->onCheckShake(true);
    QVERIFY(waitTicks(presenter, 6));
    QVERIFY(!sim->hasLine(out(DM::setShake(true))));
    QCOMPARE(rig.device.state(), 1);
    QVERIFY(!sim->hasLine(QStringLiteral("closed")));
}

void TestConsoleLadder::unplugAndReplug()
{
    auto sim = simulator();
    QVERIFY(sim);
    VirtualHidBackend link(mSocketPath);
    ConsoleRig rig(&link, kTickMs);
    rig.prepare([](UserPreferences& p) {
        saveNumbers(p, kVid, kPid);
        p.delayOpenDeviceTime = 300;
    });
    MainWindowPresenter* presenter = rig.start();
    presenter->onInternetStateChange(false);
    QTRY_VERIFY_WITH_TIMEOUT(presenter->lifecycle()->isDeviceInitialised(), 15000);
    QCOMPARE(presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceDelayOpen)->interval(), 300);

    // The plug watch looks now rather than at its next second. Its first look is not
    // announced: it only learns what is there.
    auto plug = [&sim, &rig](const QByteArray& command) {
        sim->command(command);
        sim->command("echo " + command);
        return sim->waitForLine(QString::fromLatin1(command)) &&
               QMetaObject::invokeMethod(rig.hid.changeWorker(), "onCheck", Qt::BlockingQueuedConnection);
    };
    QVERIFY(QMetaObject::invokeMethod(rig.hid.changeWorker(), "onCheck", Qt::BlockingQueuedConnection));
    QVERIFY(plug("unplug"));
    QTRY_VERIFY_WITH_TIMEOUT(rig.errors().contains(1), 1000);
    QCOMPARE(rig.view.callsOf(QStringLiteral("updateSystemTray")).last(),
             QStringLiteral("updateSystemTray(1)"));
    QTRY_COMPARE(rig.notices.shown, QStringList{QStringLiteral("change(false)")});
    QCOMPARE(rig.device.state(), 0);
    QVERIFY(!presenter->lifecycle()->deviceStatus().connected);
    QVERIFY(!presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceMessage)->isActive());
    // Parked: the delay repeats until the receiver comes back.
    QVERIFY(!presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceDelayOpen)->isSingleShot());

    QVERIFY(plug("plug"));
    QTRY_COMPARE(rig.notices.shown.size(), 2);
    QCOMPARE(rig.notices.shown.last(), QStringLiteral("change(true)"));
    QVERIFY(presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceDelayOpen)->isSingleShot());
    QTRY_VERIFY_WITH_TIMEOUT(presenter->lifecycle()->isDeviceInitialised(), 15000);
    QVERIFY(!rig.errors().contains(1));
    QCOMPARE(rig.view.callsOf(QStringLiteral("setDeviceTypeIcon")).size(), 2);
    QCOMPARE(presenter->lifecycle()->currentDeviceInfo().vid, QStringLiteral("3151"));  // the saved numbers
}

void TestConsoleLadder::controllerRestsWithoutDevice()
{
    // No receiver and no Bluetooth mouse: once the attempt with the backend's device list has
    // failed and the open wait (200 ticks) is over, the controller says "no device" and stops;
    // a receiver plugged in later wakes it and the mouse is set up.
    auto sim = simulator({QStringLiteral("unplug")});
    QVERIFY(sim);
    auto http = backend();
    VirtualHidBackend link(mSocketPath);
    ConsoleRig rig(&link, kTickMs);
    rig.prepare([](UserPreferences& p) { p.delayOpenDeviceTime = 300; });
    MainWindowPresenter* presenter = rig.start(http.get());
    QVERIFY(QMetaObject::invokeMethod(rig.hid.changeWorker(), "onCheck", Qt::BlockingQueuedConnection));
    QTRY_VERIFY_WITH_TIMEOUT(!presenter->lifecycle()->isDeviceControllerRunning(), 600 * kTickMs);
    QVERIFY(rig.errors().contains(1));
    QVERIFY(!presenter->lifecycle()->deviceStatus().connected);
    // The connection check shows the guidance only on a console on the screen: with the console
    // away it rests, and the console coming up starts it, and the guidance follows.
    QTimer* check = presenter->timer(MainWindowPresenter::TimerConnectionCheck);
    QTRY_VERIFY_WITH_TIMEOUT(!check->isActive(), 2500);
    QSignalSpy guidance(presenter, &MainWindowPresenter::signalShowBLEGuidanceDialog);
    rig.view.answers[QStringLiteral("isShow")] = true;
    presenter->onViewShown();
    QVERIFY(check->isActive());
    QTRY_COMPARE_WITH_TIMEOUT(guidance.size(), 1, 2500);

    sim->command("plug");
    sim->command("echo plugged");
    QVERIFY(sim->waitForLine(QStringLiteral("plugged")));
    QVERIFY(QMetaObject::invokeMethod(rig.hid.changeWorker(), "onCheck", Qt::BlockingQueuedConnection));
    QTRY_VERIFY(presenter->lifecycle()->isDeviceControllerRunning());
    QTRY_VERIFY_WITH_TIMEOUT(presenter->lifecycle()->isDeviceInitialised(), 15000);
    QVERIFY(!rig.errors().contains(1));
}

void TestConsoleLadder::onlineLadderOpensFromTheListAndRegisters()
{
    auto sim = simulator();
    QVERIFY(sim);
    auto http = backend();
    const int registeredBefore = mServices.uploads().entries(QStringLiteral("/device/register")).size();
    VirtualHidBackend link(mSocketPath);
    ConsoleRig rig(&link, kTickMs);
    // Numbers of a receiver that is not there: the backend's list finds the one that is.
    rig.prepare([](UserPreferences& p) { saveNumbers(p, 0x2222, 0x1111); });
    MainWindowPresenter* presenter = rig.start(http.get());
    QSignalSpy directUIs(presenter, &MainWindowPresenter::signalDirectUIsToInput);
    QSignalSpy ipIds(presenter, &MainWindowPresenter::signalLocalIpId);

    QTRY_VERIFY_WITH_TIMEOUT(presenter->ladder()->isComplete(), 20000);
    QCOMPARE(presenter->lifecycle()->currentDeviceInfo().customerName, QStringLiteral("Zorvane"));
    // The branding pictures are named by the Base64 of their file names.
    const QString picture = PictureFiles::folder() + QStringLiteral("/em9ydmFuZV9ob21lLnBuZw");
    const QString home = QStringLiteral("setHomeImage(") + picture + QLatin1Char(')');
    QTRY_VERIFY(rig.view.calls.contains(home));
    // Module replies may repeat; each shows the one picture again.
    QTRY_VERIFY(!rig.view.callsOf(QStringLiteral("setNavImage")).isEmpty());
    const QStringList navCalls = rig.view.callsOf(QStringLiteral("setNavImage"));
    QCOMPARE(navCalls.count(navCalls.first()), navCalls.size());
    QVERIFY(QFileInfo(picture).size() > 0);
    const UserPreferences saved = PreferencesUtils::getInstance()->getUserPreferences();
    QCOMPARE(saved.saveVid, kVid);
    QCOMPARE(saved.savePid, kPid);
    QCOMPARE(saved.saveIpAddress, 1);  // a flag, not the id
    // The stand-in publishes this build's version as the newest: nothing to offer.
    QCOMPARE(rig.view.callsOf(QStringLiteral("setUpdateView")), QStringList());
    QCOMPARE(directUIs.size(), 1);
    QCOMPARE(directUIs.at(0).at(0).value<QList<DirectUI>>().size(), 4);

    // The address report goes first, so that the registration and the records carry its id.
    QCOMPARE(ipIds.size(), 1);
    QStringList endpoints;
    for (const QJsonValue& entry : mServices.uploads().entries()) {
        endpoints << entry.toObject().value(QLatin1String("endpoint")).toString();
    }
    const int ipAt = endpoints.indexOf(QStringLiteral("/ipinfo/upload"));
    QVERIFY(ipAt >= 0 && endpoints.lastIndexOf(QStringLiteral("/device/register")) > ipAt);
    QCOMPARE(mServices.uploads().entries(QStringLiteral("/device/register")).size(), registeredBefore + 1);
    QCOMPARE(presenter->ladder()->deviceRecord().ip, ipIds.at(0).at(0).toInt());
    QVERIFY(presenter->ladder()->timer(BackendLadder::TimerHeartbeat)->isActive());
    QVERIFY(!presenter->ladder()->timer(BackendLadder::TimerController)->isActive());

    // Two module replies with different codes: the last one brands the console.
    presenter->lifecycle()->onDeviceModule(1, 1, 1, 1, QStringLiteral("0D0E0F"), 0);
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().saveCustomerName,
             QStringLiteral("Zorvane HK"));
    QVERIFY(presenter->userPreferences().isIFlySpeech);
    presenter->lifecycle()->onDeviceModule(1, 1, 1, 1, QStringLiteral("0A0B0C"), 0);
    QCOMPARE(presenter->lifecycle()->currentDeviceInfo().customerName, QStringLiteral("Zorvane"));
    QVERIFY(!presenter->userPreferences().isIFlySpeech);
    // A code the list lacks changes nothing.
    presenter->lifecycle()->onDeviceModule(1, 1, 1, 1, QStringLiteral("FFFFFF"), 0);
    QCOMPARE(presenter->lifecycle()->currentDeviceInfo().customerName, QStringLiteral("Zorvane"));
}

void TestConsoleLadder::unlistedCustomerCodeIsGivenUp()
{
    // The backend lists no such customer: the console asks a few times, says so once, and
    // goes on to the mouse's settings without touching the user's switches again.
    auto sim = simulator({QStringLiteral("set customer 0F0F0F")});
    QVERIFY(sim);
    auto http = backend();
    VirtualHidBackend link(mSocketPath);
    ConsoleRig rig(&link, kTickMs);
    rig.prepare([](UserPreferences& p) { saveNumbers(p, kVid, kPid); });
    ConsoleLog log;
    MainWindowPresenter* presenter = rig.start(http.get());
    QTRY_VERIFY_WITH_TIMEOUT(presenter->lifecycle()->deviceStatus().moduleKnown, 20000);
    QTRY_VERIFY_WITH_TIMEOUT(presenter->lifecycle()->isDeviceInitialised(), 15000);
    presenter->onCheckShake(false);
    QVERIFY(sim->waitForLine(out(DM::setShake(false))));
    QTRY_VERIFY(!presenter->lifecycle()->deviceStatus().shake.status);

    const int asked = sim->countLines(out(DM::getModule()));
    QVERIFY(waitTicks(presenter, 10));
    QCOMPARE(sim->countLines(out(DM::getModule())), asked);
    QCOMPARE(sim->countLines(out(DM::setLowbatReport(true))), 1);
    QVERIFY(!presenter->lifecycle()->deviceStatus().shake.target);
    QCOMPARE(log.count(QStringLiteral("is not in the backend's device list")), 1);
    QCOMPARE(rig.view.callsOf(QStringLiteral("setDeviceName")),
             QStringList{QStringLiteral("setDeviceName(未识别的鼠标（客户编码 0F0F0F）)")});
}

void TestConsoleLadder::backendDownAtStartLeavesTheMouseWorking()
{
    // Online, but the backend fails everything: the mouse saved last time opens with its saved
    // delay and branding and takes the user's switches. Once the backend is back its list
    // names the mouse and the registration carries the code the mouse reported.
    auto sim = simulator();
    QVERIFY(sim);
    auto http = backend();
    mServices.fault(ServiceSet::Backend).httpStatus = 500;
    const int registeredBefore = mServices.uploads().entries(QStringLiteral("/device/register")).size();
    VirtualHidBackend link(mSocketPath);
    ConsoleRig rig(&link, kTickMs);
    qint64 now = 0;
    rig.clockMs = [&now] { return now; };
    rig.prepare([](UserPreferences& p) {
        saveNumbers(p, kVid, kPid);
        p.saveCustomerName = QStringLiteral("Saved");
    });
    MainWindowPresenter* presenter = rig.start(http.get());
    QTRY_VERIFY_WITH_TIMEOUT(presenter->lifecycle()->isDeviceInitialised(), 20000);
    QCOMPARE(presenter->lifecycle()->currentDeviceInfo().customerName, QStringLiteral("Saved"));
    QCOMPARE(rig.errors(), QList<int>{7});
    const int asked = sim->countLines(out(DM::getModule()));
    QVERIFY(waitTicks(presenter, 10));
    QCOMPARE(sim->countLines(out(DM::getModule())), asked);
    presenter->onCheckShake(false);
    QVERIFY(sim->waitForLine(out(DM::setShake(false))));

    mServices.fault(ServiceSet::Backend).clear();
    now += BackendLadder::kBackoffMs;
    presenter->ladder()->resume();
    QTRY_VERIFY_WITH_TIMEOUT(presenter->ladder()->isComplete(), 20000);
    QCOMPARE(rig.errors(), QList<int>());
    QCOMPARE(presenter->lifecycle()->currentDeviceInfo().customerName, QStringLiteral("Zorvane"));
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().saveCustomerName,
             QStringLiteral("Zorvane"));
    const QJsonArray registered = mServices.uploads().entries(QStringLiteral("/device/register"));
    QCOMPARE(registered.size(), registeredBefore + 1);
    QCOMPARE(registered.last()[QLatin1String("body")][QLatin1String("customerCode")].toString(),
             QStringLiteral("0A0B0C"));
}

void TestConsoleLadder::httpStepsRunInOrderAndRetry()
{
    using L = BackendLadder;
    auto http = backend();
    VirtualHidBackend noReceiver(mSocketPath + QStringLiteral(".absent"));
    ConsoleRig rig(&noReceiver, kTickMs);
    qint64 now = 0;
    rig.clockMs = [&now] { return now; };
    ConsoleLog log;
    MainWindowPresenter* presenter = rig.start(http.get());
    BackendLadder* ladder = presenter->ladder();
    ladder->timer(L::TimerController)->stop();  // ticks by hand from here
    http->setTimeout(200);

    // A slow backend: the first step times out and is asked again on the next tick.
    Fault& fault = mServices.fault(ServiceSet::Backend);
    fault.delayMs = 600;
    ladder->onTimerController();
    QVERIFY(ladder->requested(L::StepAppVersion));
    QTRY_VERIFY(!ladder->requested(L::StepAppVersion));
    QVERIFY(!ladder->answered(L::StepAppVersion));
    QVERIFY(!rig.errors().contains(7));  // a failure is not yet a backend that is down
    fault.clear();
    http->setTimeout(L::kHttpTimeoutMs);  // no more time-outs from a busy machine
    // Errors are retried the same way, at once the second time, then only after a pause.
    fault.httpStatus = 500;
    for (int attempt = 0; attempt < 2; ++attempt) {
        ladder->onTimerController();
        QVERIFY(ladder->requested(L::StepAppVersion));
        QTRY_VERIFY(!ladder->requested(L::StepAppVersion));
    }
    now += L::kBackoffMs - 1;
    ladder->onTimerController();
    QVERIFY(!ladder->requested(L::StepAppVersion));
    now += 1;
    ladder->onTimerController();
    QVERIFY(ladder->requested(L::StepAppVersion));
    QTRY_VERIFY(!ladder->requested(L::StepAppVersion));
    QVERIFY(rig.errors().contains(7));
    fault.clear();
    // The streak of four failures is written once, and its end once.
    QCOMPARE(log.count(QStringLiteral("app version failed")), 1);
    now += L::kBackoffMs;
    QTRY_VERIFY([&] {
        ladder->onTimerController();
        return ladder->answered(L::StepAppVersion);
    }());
    QCOMPARE(log.count(QStringLiteral("app version")), 2);
    QVERIFY(!rig.errors().contains(7));

    // Each step is asked only once the one before has answered. The device controller asks
    // for the open time on its own, so that step is left out of the order.
    const QList<L::Step> order{L::StepAppVersion, L::StepDeviceList,   L::StepIpAddress,
                               L::StepIpInfo,     L::StepUploadIpInfo, L::StepCalendarPhrases};
    for (int i = 0; i < order.size(); ++i) {
        QTRY_VERIFY([&] {
            ladder->onTimerController();
            return ladder->answered(order.at(i));
        }());
        for (int later = i + 1; later < order.size(); ++later) {
            QVERIFY2(!ladder->requested(order.at(later)) || i + 1 == later, qPrintable(QString::number(i)));
        }
    }
    // Without a set-up device the ladder rests before the registration, timer stopped.
    ladder->timer(L::TimerController)->start();
    ladder->onTimerController();
    QVERIFY(!ladder->requested(L::StepRegisterDevice));
    QVERIFY(!ladder->timer(L::TimerController)->isActive());
    QVERIFY(!ladder->isComplete());

    // Offline the timer stops at its first tick; online starts it again.
    presenter->onInternetStateChange(false);
    QCOMPARE(rig.errors().last(), 3);
    presenter->onInternetStateChange(true);
    QVERIFY(ladder->timer(L::TimerController)->isActive());
    QVERIFY(!rig.errors().contains(3));

    // A receiver whose id is sixteen zeros is never registered.
    const int registeredBefore = mServices.uploads().entries(QStringLiteral("/device/register")).size();
    presenter->lifecycle()->onDeviceDongleFlashID(QStringLiteral("0000000000000000"));
    ladder->registerDevice();
    QVERIFY(ladder->answered(L::StepRegisterDevice));
    QTest::qWait(200);
    QCOMPARE(mServices.uploads().entries(QStringLiteral("/device/register")).size(), registeredBefore);
    QVERIFY(!ladder->timer(L::TimerHeartbeat)->isActive());
}

void TestConsoleLadder::optionalStepsGiveWayToRegistration()
{
    auto sim = simulator();
    QVERIFY(sim);
    auto http = backend();
    mServices.fault(ServiceSet::IpLookup).httpStatus = 500;
    const int registeredBefore = mServices.uploads().entries(QStringLiteral("/device/register")).size();
    VirtualHidBackend link(mSocketPath);
    ConsoleRig rig(&link, kTickMs);
    rig.prepare([](UserPreferences& p) { saveNumbers(p, kVid, kPid); });
    MainWindowPresenter* presenter = rig.start(http.get());
    QSignalSpy directUIs(presenter, &MainWindowPresenter::signalDirectUIsToInput);

    // The address report is given up after a few tries; the mouse is registered without it.
    QTRY_VERIFY_WITH_TIMEOUT(presenter->ladder()->isComplete(), 20000);
    mServices.fault(ServiceSet::IpLookup).clear();
    QCOMPARE(directUIs.size(), 1);
    QCOMPARE(mServices.uploads().entries(QStringLiteral("/device/register")).size(), registeredBefore + 1);
    QVERIFY(presenter->ladder()->givenUp(BackendLadder::StepIpInfo));
    QVERIFY(presenter->ladder()->givenUp(BackendLadder::StepUploadIpInfo));
    QVERIFY(!presenter->ladder()->givenUp(BackendLadder::StepCalendarPhrases));
    QCOMPARE(presenter->ladder()->deviceRecord().ip, 0);
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().saveIpAddress, 0);
}

void TestConsoleLadder::openDelayOnlineAndOffline()
{
    auto http = backend();
    VirtualHidBackend noReceiver(mSocketPath + QStringLiteral(".absent"));
    for (bool online : {false, true}) {
        ConsoleRig rig(&noReceiver, kTickMs);
        rig.prepare([](UserPreferences& p) { p.delayOpenDeviceTime = 1234; });
        MainWindowPresenter* presenter = rig.start(http.get());
        // Offline (told before the controller's request is handled) the saved value holds;
        // online the backend's (1000 in the stand-in's data) replaces it.
        if (!online) {
            presenter->onInternetStateChange(false);
        }
        const int expected = online ? 1000 : 1234;
        QTRY_COMPARE(presenter->lifecycle()->timer(DeviceLifecycle::TimerDeviceDelayOpen)->interval(),
                     expected);
        QCOMPARE(presenter->userPreferences().delayOpenDeviceTime, expected);
    }
}

QTEST_GUILESS_MAIN(TestConsoleLadder)
#include "tst_consoleladder.moc"
