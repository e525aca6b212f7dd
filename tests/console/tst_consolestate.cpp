#include "ConsoleRig.h"
#include "FakeHidBackend.h"
#include "Http/HttpManager.h"
#include "LocalHttpServer.h"
#include "Platform/InternetUtils.h"
#include "WidgetPresenter/PictureFiles.h"

#include <QDir>
#include <QStandardPaths>
#include <QTimer>
#include <QtTest>

// The console presenter's decisions that need no device traffic: speed buttons and targets,
// battery notices, the work clock. Slots are called as the device and the page would.
class TestConsoleState : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void speedLevelsAndTargets();
    void switchesWaitForTheMouse();
    void bestResolutionForTheScreen();
    void cpiLabels_data();
    void cpiLabels();
    void lowAndCriticalReminders();
    void plugAndShutdown();
    void batteryFigureRecovery();
    void workClock();
    void unplugKeepsTheDelayParked();
    void startsWithTheNetworkAsItIs();
    void picturesFromTheBackendStayInTheirFolder();
};

namespace {

using P = MainWindowPresenter;

std::unique_ptr<ConsoleRig> rigWith(FakeHidBackend* backend, int dpiValue)
{
    auto rig = std::make_unique<ConsoleRig>(backend);
    rig->prepare([dpiValue](UserPreferences& p) { p.dpiValue = dpiValue; });
    rig->start();
    return rig;
}

}  // namespace

void TestConsoleState::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName(QStringLiteral("ZorvaneV2"));
}

void TestConsoleState::speedLevelsAndTargets()
{
    FakeHidBackend backend;
    auto rig = rigWith(&backend, 1);
    MainWindowPresenter* p = rig->presenter.get();
    // Device at level 2 (the first button), user wants 1: the slow button lights, target 1.
    p->lifecycle()->onDeviceDpi(2);
    QCOMPARE(rig->view.callsOf(QStringLiteral("setDeviceRadioLevel0Checked")),
             QStringList{QStringLiteral("setDeviceRadioLevel0Checked(true)")});
    QCOMPARE(p->lifecycle()->deviceStatus().targetDpi, 1);
    rig->view.calls.clear();
    // A reply that is not the target lights nothing; the target's reply lights the fast button.
    p->lifecycle()->onDeviceDpi(0);
    QVERIFY(rig->view.calls.isEmpty());
    p->lifecycle()->onDeviceDpi(1);
    QCOMPARE(rig->view.calls, QStringList{QStringLiteral("setDeviceRadioLevel2Checked(true)")});

    // The user picks the standard button; the speed key on the mouse wins over that change.
    p->onRadioSelectDpi0(true);
    QCOMPARE(p->lifecycle()->deviceStatus().targetDpi, 0);
    p->lifecycle()->onChangeMouseDpiKey(2);
    QCOMPARE(p->lifecycle()->deviceStatus().targetDpi, 2);
    QCOMPARE(p->lifecycle()->deviceStatus().dpiLevel.level000, 2);
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().dpiValue, 2);
    // Unchecking a button moves nothing.
    p->onRadioSelectDpi1(false);
    QCOMPARE(p->lifecycle()->deviceStatus().targetDpi, 2);
}

void TestConsoleState::switchesWaitForTheMouse()
{
    FakeHidBackend backend;
    auto rig = rigWith(&backend, 0);
    P* p = rig->presenter.get();
    // The mouse says what it has: its switches take clicks but show no state yet.
    p->lifecycle()->onDeviceModule(1, 1, 0, 0, QStringLiteral("0A0B0C"), 0);
    QCOMPARE(rig->view.callsOf(QStringLiteral("setCheckShakeOnOffEnabled")),
             QStringList{QStringLiteral("setCheckShakeOnOffEnabled(true)")});
    QVERIFY(rig->view.callsOf(QStringLiteral("setCheckShakeStatusChecked")).isEmpty());
    QVERIFY(rig->view.calls.contains(QStringLiteral("setDeviceSettingsEnabled(true)")));

    // A click before the mouse reports the setting is the user's target: the first reply
    // lights the status and leaves the switch as the user put it.
    p->onCheckShake(false);
    p->onCheckLowbatReport(false);
    rig->view.calls.clear();
    p->lifecycle()->onDeviceShake(true);
    p->lifecycle()->onDeviceLowbatReport(true);
    p->lifecycle()->onDeviceLamplight(1);
    QCOMPARE(rig->view.calls, (QStringList{QStringLiteral("setCheckShakeOnOffChecked(false)"),
                                           QStringLiteral("setCheckShakeStatusChecked(true)"),
                                           QStringLiteral("setCheckLowbatOnOffChecked(false)"),
                                           QStringLiteral("setCheckLowbatStatusChecked(true)"),
                                           QStringLiteral("setCheckLightingEffectOnOffChecked(true)"),
                                           QStringLiteral("setCheckLightingEffectStatusChecked(true)")}));
    QVERIFY(!p->lifecycle()->deviceStatus().shake.target && p->lifecycle()->deviceStatus().shake.status);
    QVERIFY(!p->lifecycle()->deviceStatus().lowbatReport.target);
    QVERIFY(p->lifecycle()->deviceStatus().lamplight.target);
    // A second module reply leaves the page alone.
    rig->view.calls.clear();
    p->lifecycle()->onDeviceModule(1, 1, 0, 0, QStringLiteral("0A0B0C"), 0);
    QVERIFY(rig->view.callsOf(QStringLiteral("setCheckShakeOnOffEnabled")).isEmpty());

    // Unplugged: the page forgets the mouse, and the next one starts from its first replies.
    p->lifecycle()->deviceInsert(true);
    p->lifecycle()->deviceInsert(false);
    QCOMPARE(rig->view.callsOf(QStringLiteral("showMouseSettingsUnknown")).size(), 1);
    QVERIFY(!p->lifecycle()->deviceStatus().shake.known && !p->lifecycle()->deviceStatus().shake.chosen);
    p->lifecycle()->onDeviceShake(true);
    QVERIFY(p->lifecycle()->deviceStatus().shake.target);
}

void TestConsoleState::bestResolutionForTheScreen()
{
    FakeHidBackend backend;
    {
        // A saved resolution, but the level values never came: the level reply sets target 0.
        auto rig = rigWith(&backend, 1100);
        rig->presenter->lifecycle()->onDeviceDpi(1);
        QCOMPARE(rig->presenter->lifecycle()->deviceStatus().targetDpi, 0);
    }
    auto rig = rigWith(&backend, 1100);
    MainWindowPresenter* p = rig->presenter.get();
    // Nominal values (factor 1) on a 1440-pixel screen: 1200.
    p->lifecycle()->onDeviceDpiLevelValue(1000, 1200, 1600);
    QVERIFY(rig->view.calls.contains(QStringLiteral("setCpiValue(1200)")));
    {
        // The button shows the label of the screen's value: none past 1400 (a 1920-pixel screen).
        ConsoleRig wide(&backend);
        wide.start(nullptr, nullptr, 1920)->lifecycle()->onDeviceDpiLevelValue(1000, 1200, 1600);
        QCOMPARE(wide.view.callsOf(QStringLiteral("setCpiValue")),
                 QStringList{QStringLiteral("setCpiValue(0)")});
    }
    QCOMPARE(rig->view.callsOf(QStringLiteral("setVipFunction")).last(),
             QStringLiteral("setVipFunction(true)"));
    QCOMPARE(p->lifecycle()->deviceStatus().bestCpiValue, 1200);
    p->lifecycle()->onDeviceCpi(1600);
    QCOMPARE(p->lifecycle()->deviceStatus().targetDpi, 1200);
    QVERIFY(rig->view.calls.contains(QStringLiteral("setDeviceRadioLevel3Checked(true)")));
    // Reaching the target stores it.
    p->lifecycle()->onDeviceCpi(1200);
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().dpiValue, 1200);
    // Twice the nominal values double it.
    p->lifecycle()->onDeviceDpiLevelValue(2000, 2400, 3200);
    QCOMPARE(p->lifecycle()->deviceStatus().bestCpiValue, 2400);
}

void TestConsoleState::cpiLabels_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("label");
    // Each side of every step.
    const int rows[][2] = {{853, 853},   {854, 1066},  {1066, 1066}, {1067, 1138}, {1138, 1138}, {1139, 1200},
                           {1200, 1200}, {1201, 1333}, {1333, 1333}, {1334, 1400}, {1400, 1400}, {1401, 0}};
    for (const auto& row : rows) {
        QTest::addRow("%d", row[0]) << row[0] << row[1];
    }
}

void TestConsoleState::cpiLabels()
{
    QFETCH(int, value);
    QFETCH(int, label);
    QCOMPARE(MainWindowPresenter::cpiLabel(value), label);
}

void TestConsoleState::lowAndCriticalReminders()
{
    FakeHidBackend backend;
    auto rig = rigWith(&backend, 0);
    P* p = rig->presenter.get();
    p->battery()->onDeviceLowbat();
    QCOMPARE(rig->view.callsOf(QStringLiteral("showLowbatView")),
             QStringList{QStringLiteral("showLowbatView(0)")});
    QVERIFY(p->battery()->timer(BatteryWatch::TimerLowbatGate)->isActive());
    QCOMPARE(rig->errors().last(), 4);
    // Within the gate nothing shows again, but the critical reminder is allowed again.
    p->recvMinLowbatSignalNoLongerRemind();
    p->battery()->onDeviceLowbat();
    QCOMPARE(rig->view.callsOf(QStringLiteral("showLowbatView")).size(), 1);
    QVERIFY(!p->battery()->state().minLowbatNoLongerRemind);

    p->battery()->onDeviceMinLowbat();
    QCOMPARE(rig->view.callsOf(QStringLiteral("showLowbatView")).last(), QStringLiteral("showLowbatView(1)"));
    QVERIFY(!p->battery()->timer(BatteryWatch::TimerLowbatGate)->isActive());
    QVERIFY(p->battery()->timer(BatteryWatch::TimerMinLowbatGate)->isActive());
    QVERIFY(p->battery()->timer(BatteryWatch::TimerLowbatBlink)->isActive());
    QCOMPARE(rig->errors(), QList<int>{5});
    // Once critical, low reports are silent until the power comes back.
    p->battery()->timer(BatteryWatch::TimerLowbatGate)->stop();
    p->battery()->onDeviceLowbat();
    QCOMPARE(rig->view.callsOf(QStringLiteral("showLowbatView")).size(), 2);
    p->battery()->onDevicePowerPlusIn(true);
    QCOMPARE(rig->view.callsOf(QStringLiteral("showLowbatView")).last(), QStringLiteral("showLowbatView(3)"));
    QCOMPARE(rig->errors(), QList<int>{6});
    QVERIFY(!p->battery()->timer(BatteryWatch::TimerLowbatBlink)->isActive());
    QCOMPARE(rig->view.callsOf(QStringLiteral("setDeviceEnable")).last(),
             QStringLiteral("setDeviceEnable(true)"));
    const BatteryWatch::State b = p->battery()->state();
    QVERIFY(!b.lowbatSeen && !b.minLowbatSeen && b.powerPlugged);

    // "No longer remind" holds until the opposite report clears it.
    p->battery()->onDevicePowerPlusIn(false);
    p->recvLowbatSignalNoLongerRemind();
    p->battery()->timer(BatteryWatch::TimerLowbatGate)->stop();
    p->battery()->onDeviceLowbat();
    QCOMPARE(rig->view.callsOf(QStringLiteral("showLowbatView")).size(), 3);
    p->battery()->timer(BatteryWatch::TimerMinLowbatGate)->stop();
    p->battery()->onDeviceMinLowbat();
    QVERIFY(!p->battery()->state().lowbatNoLongerRemind);
}

void TestConsoleState::plugAndShutdown()
{
    FakeHidBackend backend;
    auto rig = rigWith(&backend, 0);
    MainWindowPresenter* p = rig->presenter.get();
    // Plugging in a healthy mouse shows nothing; a low report while plugged ends early.
    p->battery()->onDevicePowerPlusIn(true);
    p->battery()->onDeviceLowbat();
    p->battery()->onDevicePowerPlusIn(false);
    QVERIFY(rig->view.callsOf(QStringLiteral("showLowbatView")).isEmpty());
    QVERIFY(!p->battery()->state().powerPlugged);
    QVERIFY(p->battery()->state().lowbatSeen);

    p->recvLowbatSignalNoLongerRemind();
    p->battery()->onMouseShutdown();
    p->battery()->onMouseShutdown();
    QCOMPARE(rig->view.callsOf(QStringLiteral("showLowbatView")),
             QStringList{QStringLiteral("showLowbatView(2)")});
    QVERIFY(!p->battery()->state().lowbatNoLongerRemind);
    // Shut down: no low or critical notice.
    p->battery()->onDeviceMinLowbat();
    QCOMPARE(rig->view.callsOf(QStringLiteral("showLowbatView")).size(), 1);
}

void TestConsoleState::batteryFigureRecovery()
{
    FakeHidBackend backend;
    auto rig = rigWith(&backend, 0);
    P* p = rig->presenter.get();
    p->battery()->onDeviceLowbat();
    p->battery()->onDeviceBatteryValue(3100);
    QVERIFY(p->battery()->state().recoveryWatch);
    QCOMPARE(p->battery()->state().watchBase, 3100);
    p->battery()->onDeviceBatteryValue(3299);
    QVERIFY(p->battery()->state().lowbatSeen);
    // 200 above the base: charging, whether or not a plug report came.
    p->battery()->onDeviceBatteryValue(3300);
    BatteryWatch::State b = p->battery()->state();
    QVERIFY(!b.recoveryWatch && !b.lowbatSeen && b.powerPlugged);
    QCOMPARE(rig->errors().last(), 0);
    QVERIFY(!p->battery()->timer(BatteryWatch::TimerLowbatGate)->isActive());
    // A figure that fell over six reports (the recovering one counts) takes the plugged
    // state back.
    for (int i = 0; i < 4; ++i) {
        p->battery()->onDeviceBatteryValue(3290);
    }
    QVERIFY(p->battery()->state().powerPlugged);
    p->battery()->onDeviceBatteryValue(3280);
    QVERIFY(!p->battery()->state().powerPlugged);

    // A healthy figure clears everything; offline it reports "no internet".
    p->onInternetStateChange(false);
    p->battery()->onDeviceMinLowbat();
    p->battery()->onDeviceBatteryValue(3700);
    b = p->battery()->state();
    QVERIFY(!b.minLowbatSeen && !b.powerPlugged);
    QVERIFY(!p->battery()->timer(BatteryWatch::TimerLowbatBlink)->isActive());
    QVERIFY(!rig->errors().contains(5));
    QCOMPARE(rig->errors().last(), 3);
}

void TestConsoleState::workClock()
{
    FakeHidBackend backend;
    auto rig = rigWith(&backend, 0);
    P* p = rig->presenter.get();
    QTimer* work = p->timer(P::TimerWorkTime);
    QTimer* reset = p->timer(P::TimerWorkReset);
    // Off: input starts nothing.
    p->onWorkInput();
    QVERIFY(!work->isActive() && !reset->isActive());

    p->setRestEnable(true);
    p->setWorkTime(3600000);
    QCOMPARE(rig->view.callsOf(QStringLiteral("setComboRestTime")).last(),
             QStringLiteral("setComboRestTime(3)"));
    p->onWorkInput();
    QVERIFY(work->isActive() && reset->isActive());
    // A break shorter than the reset keeps the period: input does not restart the work time.
    QTest::qWait(30);
    const int left = work->remainingTime();
    p->onWorkInput();
    QVERIFY(work->remainingTime() <= left);
    p->onTimerWorkTime();
    QCOMPARE(rig->view.callsOf(QStringLiteral("showRestDialog")).size(), 1);
    QVERIFY(!work->isActive() && !reset->isActive());

    // Fifteen quiet minutes end the period.
    p->onWorkInput();
    p->onTimerWorkReset();
    QVERIFY(!work->isActive());
    // Choosing a row stops the period even with the same interval.
    p->onWorkInput();
    p->setWorkTime(3600000);
    QVERIFY(!work->isActive() && !reset->isActive());
    // A value outside the box's rows works but leaves the box alone; off selects the last row.
    rig->view.calls.clear();
    p->setWorkTime(1234567);
    QVERIFY(rig->view.callsOf(QStringLiteral("setComboRestTime")).isEmpty());
    QCOMPARE(work->interval(), 1234567);
    p->onWorkInput();
    p->setRestEnable(false);
    QVERIFY(!work->isActive() && !reset->isActive());
    QCOMPARE(rig->view.callsOf(QStringLiteral("setComboRestTime")).last(),
             QStringLiteral("setComboRestTime(4)"));
}

void TestConsoleState::unplugKeepsTheDelayParked()
{
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    MainWindowPresenter* p = rig.start();
    QTimer* delay = p->lifecycle()->timer(DeviceLifecycle::TimerDeviceDelayOpen);
    p->lifecycle()->deviceInsert(true);
    p->lifecycle()->deviceInsert(false);
    QVERIFY(delay->isActive() && !delay->isSingleShot());
    // The controller asked for the first delay just before the unplug; its request lands now
    // and must not end the parking, or Bluetooth would be tried with the receiver out.
    emit p->lifecycle()->delayOpenWanted();
    QVERIFY(delay->isActive() && !delay->isSingleShot());
    p->lifecycle()->deviceInsert(true);
    QVERIFY(delay->isActive() && delay->isSingleShot());
}

void TestConsoleState::startsWithTheNetworkAsItIs()
{
    bool up = false;
    InternetUtils watcher([&up] {
        QList<InternetUtils::Interface> interfaces{{QStringLiteral("lo"), true, true, true, true}};
        if (up) {
            interfaces.append({QStringLiteral("eth0"), true, true, false, true});
        }
        return interfaces;
    });
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    rig.internet = &watcher;
    MainWindowPresenter* p = rig.start();
    QCOMPARE(rig.errors(), QList<int>{3});
    QVERIFY(!p->ladder()->timer(BackendLadder::TimerController)->isActive());

    up = true;
    watcher.refresh();
    QVERIFY(!rig.errors().contains(3));
    QVERIFY(p->ladder()->timer(BackendLadder::TimerController)->isActive());
}

void TestConsoleState::picturesFromTheBackendStayInTheirFolder()
{
    auto local = [](const QByteArray& name) -> QString {
        return PictureFiles::folder() + QLatin1Char('/') +
               QString::fromLatin1(
                   name.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
    };
    // Names that are no plain names are refused; a name's folders are dropped.
    for (const QString& bad :
         {QStringLiteral("../../x"), QStringLiteral("a/../../b.png"), QStringLiteral("/etc/passwd"),
          QStringLiteral("file:///etc/passwd"), QStringLiteral("a\\..\\b"), QStringLiteral("dir/"),
          QStringLiteral("a\nb.png")}) {
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("picture name from the backend refused")));
        QVERIFY2(PictureFiles::localPath(bad).isEmpty(), qPrintable(bad));
    }
    QCOMPARE(PictureFiles::localPath(QStringLiteral("img/home.png")), local("home.png"));
    QCOMPARE(QFileInfo(PictureFiles::folder()).dir(),
             QDir(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                  QStringLiteral("/ZorvaneV2")));
    // A link put in the folder under a picture's name does not lead the download elsewhere.
    QVERIFY(QFile::link(QStringLiteral("/etc/hostname"), local("linked.png")));
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("outside the picture folder refused")));
    QVERIFY(PictureFiles::localPath(QStringLiteral("linked.png")).isEmpty());

    // Through the presenter: a refused home picture shows the default one and is never asked
    // for; a picture whose download fails leaves no part of itself to pass for the whole.
    LocalHttpServer server;
    QVERIFY(server.start());
    server.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/deviceInfo/query"),
                     {200, R"({"code":1,"data":[{"customerCode":"0A0B0C","homeImage":"../../x",)"
                           R"("explainImage":"good.png","navImage":"gone.png","enable":1}]})"});
    HttpManager http(HttpRequest::getInstance(), server.url(), server.url());
    FakeHidBackend backend;
    ConsoleRig rig(&backend);
    MainWindowPresenter* p = rig.start(&http);
    p->ladder()->getDeviceList();
    QTRY_VERIFY(p->ladder()->answered(BackendLadder::StepDeviceList));
    server.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/deviceInfo/download"), {200, "PNG", 0, "image/png"});
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("picture name from the backend refused")));
    p->lifecycle()->onDeviceModule(1, 1, 1, 0, QStringLiteral("0A0B0C"), 0);
    QCOMPARE(rig.view.callsOf(QStringLiteral("setDefaultHomeImage")).size(), 1);
    QTRY_COMPARE(rig.view.callsOf(QStringLiteral("setExplainImage")),
                 QStringList{QStringLiteral("setExplainImage(%1)").arg(local("good.png"))});
    QTRY_COMPARE(rig.view.callsOf(QStringLiteral("setNavImage")).size(), 1);

    server.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/deviceInfo/download"),
                     {404, "not found", 0, "text/plain"});
    QFile::remove(local("gone.png"));
    p->showPictures();
    auto downloads = [&server] {
        QList<QByteArray> targets;
        for (const LocalHttpServer::Request& request : server.requests()) {
            if (request.target.contains("/deviceInfo/download")) {
                targets << request.target.mid(request.target.indexOf('='));
            }
        }
        return targets;
    };
    QTRY_COMPARE(downloads(), (QList<QByteArray>{"=good.png", "=gone.png", "=gone.png"}));
    QTRY_VERIFY(!QFile::exists(local("gone.png")));
}

QTEST_GUILESS_MAIN(TestConsoleState)
#include "tst_consolestate.moc"
