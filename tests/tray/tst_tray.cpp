#include "Database/DBManager.h"
#include "FakeBleTransport.h"
#include "FakeHidBackend.h"
#include "FakeNotifications.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"
#include "Hid/HookManager.h"
#include "Platform/AppAutoRunUtils.h"
#include "Platform/DesktopNotifications.h"
#include "Platform/InternetUtils.h"
#include "PrivateBus.h"
#include "Utils/PreferencesUtils.h"
#include "Widget/Console/MainWindow.h"
#include "Widget/Console/SystemTray.h"
#include "Widget/Notices/BLEConnectedDialog.h"
#include "Widget/Notices/LowbatDialog.h"
#include "Widget/Notices/USBChangeMessageDialog.h"
#include "Widget/Notices/WidgetConsoleNotices.h"
#include "WidgetPresenter/DeviceLifecycle.h"
#include "WidgetPresenter/PreferencesRecord.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QPainter>
#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QSystemTrayIcon>
#include <QToolTip>
#include <QtTest>

class TestTray : public QObject {
    Q_OBJECT

public:
    explicit TestTray(const QString& busAddress) : mAddress(busAddress) {}

private slots:
    void initTestCase();
    void notifyCarriesTheAppAndReplacesItsKind();
    void missingServiceIsToldOnce();
    void preferenceReadsOldFilesAndIsFollowed();
    void consoleNoticesShowOnceByDefault();
    void trayLookFollowsTheState();
    void trayFollowsConsoleAndDevice();
    void trayMenuSpeaksThroughSignals();
    void renderedBatteryShowsItsFill();
    void windowDrivesTrayAndRoutesBatteryNotices();
    void screenshotOnADesktopTray();

private:
    // Waits until the notifier has had this many answers from now on.
    static bool waitSent(DesktopNotifications* n, int count = 1)
    {
        QSignalSpy sent(n, &DesktopNotifications::signalSent);
        while (sent.count() < count) {
            if (!sent.wait(5000)) {
                return false;
            }
        }
        return true;
    }
    // The battery notices the server saw: the console's presenter may send device ones meanwhile.
    QList<FakeNotifications::Call> batteryCalls() const
    {
        QList<FakeNotifications::Call> found;
        for (const FakeNotifications::Call& call : mServer.calls) {
            if (call.summary.startsWith(QStringLiteral("鼠标"))) {
                found << call;
            }
        }
        return found;
    }
    QList<USBChangeMessageDialog*> strips() const
    {
        QList<USBChangeMessageDialog*> found;
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (auto* strip = qobject_cast<USBChangeMessageDialog*>(w);
                strip != nullptr && strip->isVisible()) {
                found << strip;
            }
        }
        return found;
    }

    QString mAddress;
    FakeNotifications mServer;
    QDBusConnection mServerBus{QStringLiteral("unset")};
    QDBusConnection mClientBus{QStringLiteral("unset")};
};

void TestTray::initTestCase()
{
    QVERIFY2(!mAddress.isEmpty(), "no private bus");
    mServerBus = QDBusConnection::connectToBus(mAddress, QStringLiteral("server"));
    mClientBus = QDBusConnection::connectToBus(mAddress, QStringLiteral("client"));
    QVERIFY(mServerBus.isConnected() && mClientBus.isConnected());
    QVERIFY(mServerBus.registerService(QStringLiteral("org.freedesktop.Notifications")));
    QVERIFY(mServerBus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &mServer,
                                      QDBusConnection::ExportAllSlots));
}

void TestTray::notifyCarriesTheAppAndReplacesItsKind()
{
    DesktopNotifications n(mClientBus);
    mServer.calls.clear();
    n.notifyBattery(0);
    QVERIFY(waitSent(&n));
    QCOMPARE(mServer.calls.size(), 1);
    const FakeNotifications::Call first = mServer.calls[0];
    QCOMPARE(first.app, QStringLiteral("Zorvane"));
    QCOMPARE(first.replaces, 0u);
    QCOMPARE(first.icon, QStringLiteral("zorvane"));
    QCOMPARE(first.summary, QStringLiteral("鼠标电量低"));
    QVERIFY(first.actions.isEmpty());
    QCOMPARE(first.expire, -1);
    // The hint is a byte, as servers require.
    QCOMPARE(first.hints.value(QStringLiteral("urgency")).userType(), int(QMetaType::UChar));
    QCOMPARE(first.hints.value(QStringLiteral("urgency")).toInt(), 1);
    QCOMPARE(first.hints.value(QStringLiteral("desktop-entry")).toString(), QStringLiteral("zorvane"));
    const uint batteryId = n.lastId(DesktopNotifications::KindBattery);
    QVERIFY(batteryId != 0);

    // The next battery notice takes the place of the first; a device notice stands apart.
    n.notifyBattery(1);
    QVERIFY(waitSent(&n));
    n.notifyDeviceChange(false);
    QVERIFY(waitSent(&n));
    n.notifyDeviceChange(true);
    QVERIFY(waitSent(&n));
    QCOMPARE(mServer.calls.size(), 4);
    QCOMPARE(mServer.calls[1].replaces, batteryId);
    QCOMPARE(mServer.calls[1].hints.value(QStringLiteral("urgency")).toInt(), 2);
    QCOMPARE(mServer.calls[2].replaces, 0u);
    QCOMPARE(mServer.calls[2].summary, QStringLiteral("设备拔出"));
    QCOMPARE(mServer.calls[3].replaces, n.lastId(DesktopNotifications::KindDevice));
    QVERIFY(n.lastId(DesktopNotifications::KindDevice) != batteryId);

    // A burst before the server answers still ends as one notification, showing the newest.
    DesktopNotifications fresh(mClientBus);
    mServer.calls.clear();
    fresh.notifyBattery(0);
    fresh.notifyBattery(1);
    fresh.notifyBattery(3);
    QVERIFY(waitSent(&fresh, 2));
    QCOMPARE(mServer.calls.size(), 2);
    QCOMPARE(mServer.calls[1].replaces, mServer.lastGiven);
    QCOMPARE(mServer.calls[1].summary, QStringLiteral("鼠标正在充电"));
}

namespace {
int gNoServiceLines = 0;
QtMessageHandler gPreviousHandler = nullptr;
void countNoService(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (text.startsWith(QLatin1String("no desktop notifications"))) {
        ++gNoServiceLines;
    }
    gPreviousHandler(type, context, text);
}
}  // namespace

void TestTray::missingServiceIsToldOnce()
{
    QVERIFY(mServerBus.unregisterService(QStringLiteral("org.freedesktop.Notifications")));
    gNoServiceLines = 0;
    gPreviousHandler = qInstallMessageHandler(countNoService);
    {
        DesktopNotifications n(mClientBus);
        QSignalSpy sent(&n, &DesktopNotifications::signalSent);
        n.notifyBattery(0);
        n.notifyBattery(1);
        n.notifyDeviceChange(true);
        QTRY_COMPARE(gNoServiceLines, 1);
        QTest::qWait(200);
        QCOMPARE(gNoServiceLines, 1);
        QCOMPARE(sent.count(), 0);
        QCOMPARE(n.lastId(DesktopNotifications::KindBattery), 0u);
    }
    {
        // A session without a bus at all: the same, and no wait.
        DesktopNotifications n(QDBusConnection(QStringLiteral("never-connected")));
        n.notifyBattery(0);
        QTRY_COMPARE(gNoServiceLines, 2);
    }
    qInstallMessageHandler(gPreviousHandler);
    QVERIFY(mServerBus.registerService(QStringLiteral("org.freedesktop.Notifications")));
}

void TestTray::preferenceReadsOldFilesAndIsFollowed()
{
    PreferencesUtils* prefs = PreferencesUtils::getInstance();
    // A file of an earlier version, without the key: the default, notification.
    {
        QSettings old(PreferencesUtils::preferencesPath(), QSettings::IniFormat);
        old.setValue(QStringLiteral("config/dpiValue"), 1);
    }
    QCOMPARE(prefs->getUserPreferences().noticeStyle, 1);
    QCOMPARE(prefs->getUserPreferences().dpiValue, 1);

    // The process-wide notifier starts from the file and follows every change.
    DesktopNotifications* shared = DesktopNotifications::getInstance();
    QCOMPARE(shared->style(), 1);
    UserPreferences p = prefs->getUserPreferences();
    p.noticeStyle = 0;
    prefs->setUserPreferences(p);
    QCOMPARE(shared->style(), 0);
    QCOMPARE(prefs->getUserPreferences().noticeStyle, 0);
    // A value the console does not know is the default.
    p.noticeStyle = 9;
    prefs->setUserPreferences(p);
    QCOMPARE(shared->style(), 1);
}

void TestTray::consoleNoticesShowOnceByDefault()
{
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    const QString path = QStringLiteral("/org/freedesktop/Notifications");
    BLEConnectedDialog* hint = BLEConnectedDialog::getInstance(nullptr);
    // By default, with a server on the bus: the notification alone.
    DesktopNotifications n(mClientBus);
    QTRY_COMPARE(n.server(), DesktopNotifications::ServerPresent);
    WidgetConsoleNotices notices(nullptr, &n);
    mServer.calls.clear();
    notices.showDeviceChange(false);
    notices.showBleConnected();
    QTRY_COMPARE(mServer.calls.size(), 2);
    QCOMPARE(mServer.calls[0].summary, QStringLiteral("设备拔出"));
    QVERIFY(strips().isEmpty());
    QVERIFY(!hint->isVisible());

    // A server that fails the call: the popup instead, once the failure is known.
    mServerBus.unregisterObject(path);
    notices.showDeviceChange(true);
    QTRY_COMPARE(strips().size(), 1);
    notices.showBleConnected();
    QTRY_VERIFY(hint->isVisible());
    hint->hide();
    QVERIFY(mServerBus.registerObject(path, &mServer, QDBusConnection::ExportAllSlots));

    // No server at all: straight to the popups, nothing asked of the bus.
    QVERIFY(mServerBus.unregisterService(service));
    QTRY_COMPARE(n.server(), DesktopNotifications::ServerAbsent);
    mServer.calls.clear();
    notices.showBleConnected();
    QVERIFY(hint->isVisible());
    hint->hide();
    QVERIFY(mServerBus.registerService(service));
    QTRY_COMPARE(n.server(), DesktopNotifications::ServerPresent);

    // The user's other choices: popups only, or both.
    n.setStyle(DesktopNotifications::StylePopup);
    notices.showBleConnected();
    QVERIFY(hint->isVisible());
    hint->hide();
    n.setStyle(DesktopNotifications::StyleBoth);
    notices.showBleConnected();
    QTRY_COMPARE(mServer.calls.size(), 1);
    QVERIFY(hint->isVisible());
    hint->hide();
}

void TestTray::trayLookFollowsTheState()
{
    using S = SystemTray::State;
    // A missing mouse says nothing of its battery, but other troubles still show.
    S missing;
    missing.status = 5;
    SystemTray::Look look = SystemTray::lookOf(missing);
    QCOMPARE(look.base, QStringLiteral(":/console/tray/mouse_missing.svg"));
    QCOMPARE(look.gauge, -1);
    QCOMPARE(look.tooltip, QStringLiteral("Zorvane\n未找到鼠标"));
    for (const auto& [status, text] : {std::pair{3, "网络未连接"}, std::pair{7, "无法连接到服务器"}}) {
        missing.status = status;
        QVERIFY(SystemTray::lookOf(missing).tooltip.contains(QString::fromUtf8(text)));
    }

    S usb;
    usb.link = SystemTray::LinkReceiver;
    usb.battery = SystemTray::batteryPercent(3600);
    look = SystemTray::lookOf(usb);
    QCOMPARE(look.gauge, 50);
    QCOMPARE(look.tooltip, QStringLiteral("Zorvane\n已通过接收器连接\n电量约 50%"));
    S asleep = usb;
    asleep.link = SystemTray::LinkBluetooth;
    asleep.asleep = true;
    look = SystemTray::lookOf(asleep);
    QCOMPARE(look.base, QStringLiteral(":/console/tray/mouse_asleep.svg"));
    QVERIFY(look.tooltip.contains(QStringLiteral("已通过蓝牙连接，鼠标休眠中")));

    // Low and critical colour the battery even before a figure came; the blink's steps win.
    S low = usb;
    low.battery = -1;
    low.status = 4;
    QCOMPARE(SystemTray::lookOf(low).gauge, 20);
    S critical = usb;
    critical.status = 5;
    critical.chargeStep = 3;
    look = SystemTray::lookOf(critical);
    QCOMPARE(look.gauge, 13);
    QCOMPARE(look.gaugeColor, QColor(0xe5, 0x48, 0x4d));

    // Charging: the bolt, green even when the figure is still low.
    S charging = usb;
    charging.status = 6;
    charging.battery = 8;
    look = SystemTray::lookOf(charging);
    QVERIFY(look.bolt);
    QCOMPARE(look.gaugeColor, QColor(0x2e, 0xb8, 0x5c));
    charging.chargeStep = SystemTray::kChargeSteps - 1;
    QCOMPARE(SystemTray::lookOf(charging).gauge, 100);

    QCOMPARE(SystemTray::batteryPercent(2000), 0);
    QCOMPARE(SystemTray::batteryPercent(5000), 100);
}

void TestTray::trayFollowsConsoleAndDevice()
{
    SystemTray tray(nullptr);
    QCOMPARE(tray.state().link, SystemTray::LinkNone);
    // Nothing to report comes once the device is ready: without a device layer, the receiver.
    tray.setStatus(0);
    QCOMPARE(tray.state().link, SystemTray::LinkReceiver);
    tray.setBatteryFigure(4100);
    tray.setAsleep(true);
    QCOMPARE(tray.trayIcon()->toolTip(), SystemTray::lookOf(tray.state()).tooltip);
    QVERIFY(tray.trayIcon()->toolTip().contains(QStringLiteral("100%")));

    // Critical: the blink's steps show; charging replaces them until its own animation runs.
    tray.setStatus(5);
    tray.setChargeStep(3);
    tray.setStatus(6);
    QCOMPARE(tray.state().chargeStep, -1);
    tray.setChargeStep(40);
    QCOMPARE(tray.state().chargeStep, SystemTray::kChargeSteps - 1);

    // The mouse is gone: its link, sleep and battery go with it.
    tray.setStatus(1);
    QCOMPARE(tray.state().link, SystemTray::LinkNone);
    QCOMPARE(tray.state().battery, -1);
    QVERIFY(!tray.state().asleep);
    // Offline after that: still not found.
    tray.setStatus(3);
    QCOMPARE(tray.state().link, SystemTray::LinkNone);

    // The device layer's own reports, queued from its threads and passed on by the lifecycle.
    FakeHidBackend backend;
    HidManager hid(&backend);
    FakeBleTransport transport;
    BLEManager ble(&transport, nullptr);
    DeviceManager device(&hid, &ble);
    PreferencesRecord preferences;
    const QString savedUuid = preferences.get().saveDeviceUuid;
    DeviceLifecycle::Collaborators parts;
    parts.device = &device;
    parts.preferences = &preferences;
    DeviceLifecycle lifecycle(parts);
    tray.watchDevice(&lifecycle);
    emit device.signalBLEDeviceConnectState(true, QStringLiteral("uuid"));
    emit device.signalBatteryValue(3350);
    emit device.signalMouseActive(false);
    QTRY_COMPARE(tray.state().link, SystemTray::LinkBluetooth);
    QCOMPARE(tray.state().battery, 25);
    QVERIFY(tray.state().asleep);
    emit device.signalBLEDeviceConnectState(false, QString());
    QTRY_COMPARE(tray.state().link, SystemTray::LinkNone);
    // The link's answer saved the mouse: the suites after this one start without it.
    preferences.change([&savedUuid](UserPreferences& p) { p.saveDeviceUuid = savedUuid; });
    preferences.save();
}

void TestTray::trayMenuSpeaksThroughSignals()
{
    SystemTray tray(nullptr);
    QCOMPARE(tray.languageActions().size(), 4);
    QSignalSpy language(&tray, &SystemTray::signalDictationLanguage);
    QSignalSpy open(&tray, &SystemTray::signalOpenConsole);
    tray.languageActions()[2]->trigger();
    QCOMPARE(language.value(0).at(0).toInt(), 2);
    // A click opens the console; the context click leaves it to the menu.
    emit tray.trayIcon()->activated(QSystemTrayIcon::Trigger);
    emit tray.trayIcon()->activated(QSystemTrayIcon::Context);
    QCOMPARE(open.count(), 1);
}

void TestTray::renderedBatteryShowsItsFill()
{
    SystemTray::Look look;
    look.base = QStringLiteral(":/console/tray/mouse_receiver.svg");
    look.gaugeColor = QColor(0x2e, 0xb8, 0x5c);
    look.gauge = 100;
    const QImage full = SystemTray::render(look).pixmap(64).toImage();
    look.gauge = 0;
    const QImage empty = SystemTray::render(look).pixmap(64).toImage();
    look.gauge = -1;
    const QImage none = SystemTray::render(look).pixmap(64).toImage();
    // Low in the battery: filled, white, or nothing at all; the mouse itself is drawn.
    QCOMPARE(full.pixelColor(51, 54), look.gaugeColor);
    QCOMPARE(empty.pixelColor(51, 54), QColor(Qt::white));
    QCOMPARE(none.pixelColor(51, 54).alpha(), 0);
    QCOMPARE(none.pixelColor(8, 50), QColor(0x2f, 0x7d, 0xf6));

    if (const QString folder = qEnvironmentVariable("ZORVANE_SCREENSHOTS"); !folder.isEmpty()) {
        QDir().mkpath(folder);
        QImage sheet(5 * 72, 72, QImage::Format_ARGB32_Premultiplied);
        sheet.fill(QColor(0x2b, 0x2d, 0x31));
        QPainter p(&sheet);
        SystemTray::State s;
        const auto add = [&](int i) {
            p.drawPixmap(4 + i * 72, 4, SystemTray::render(SystemTray::lookOf(s)).pixmap(64));
        };
        add(0);
        s.link = SystemTray::LinkReceiver;
        s.battery = 80;
        add(1);
        s.link = SystemTray::LinkBluetooth;
        s.status = 5;
        s.chargeStep = 3;
        add(2);
        s.status = 6;
        s.chargeStep = -1;
        s.battery = 40;
        add(3);
        s.status = 0;
        s.asleep = true;
        add(4);
        p.end();
        QVERIFY(sheet.save(folder + QStringLiteral("/tray-icons.png")));
    }
}

void TestTray::windowDrivesTrayAndRoutesBatteryNotices()
{
    // The notifications of the whole program go to the private bus (see main).
    FakeHidBackend backend;
    HidManager hid(&backend);
    FakeBleTransport transport;
    BLEManager ble(&transport, nullptr);
    DeviceManager device(&hid, &ble);
    AppAutoRunUtils::getInstance()->setAppAutoRun(true);  // no autostart question
    MainWindowPresenter::Collaborators c;
    c.device = &device;
    c.db = DBManager::getInstance();
    c.autoRun = AppAutoRunUtils::getInstance();
    c.screenWidth = [] { return 1440; };
    // Started without a network: the presenter tells the tray while the window is being built.
    InternetUtils offline([] { return QList<InternetUtils::Interface>{}; });
    c.internet = &offline;
    InputPresenter::Collaborators voice;
    voice.device = &device;
    voice.hook = HookManager::getInstance();
    MainWindow* window = MainWindow::getInstance(nullptr, &c, &voice);
    SystemTray* tray = window->systemTray();
    QVERIFY(tray != nullptr);
    QCOMPARE(tray->state().status, 3);

    window->updateSystemTray(0);
    window->updateSystemTray(5);
    window->setChargeUpTrayAnimationImage(3);
    window->setSystemTrayStatus(QStringLiteral("电量:3300"));
    QCOMPARE(tray->state().status, 5);
    QCOMPARE(tray->state().chargeStep, 3);
    QVERIFY(tray->trayIcon()->toolTip().endsWith(QStringLiteral("\n电量:3300")));

    // The tray's language goes through the console's box into the preferences.
    emit tray->signalDictationLanguage(1);
    QCOMPARE(window->widgets().comboDictationLanguage->currentIndex(), 1);
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().recognitionLanguage, 1);
    // Start at login, as the console's switch does it.
    emit tray->signalAutoRun(false);
    QVERIFY(!AppAutoRunUtils::getInstance()->isAppAutoRun());
    QVERIFY(!window->widgets().autoRun.onOff->isChecked());

    // A low battery by default, with a notification server: one notification, no panel.
    QComboBox* style = window->widgets().comboNoticeStyle;
    QCOMPARE(style->currentIndex(), 1);
    DesktopNotifications* shared = DesktopNotifications::getInstance();
    QTRY_COMPARE(shared->server(), DesktopNotifications::ServerPresent);
    mServer.calls.clear();
    window->showLowbatView(0);
    QTRY_COMPARE(batteryCalls().size(), 1);
    QVERIFY(window->lowbatDialog()->isHidden());

    // Both, chosen in the settings box: the panel and a notification that replaces the last.
    emit style->activated(2);
    QCOMPARE(shared->style(), 2);
    QTRY_VERIFY(shared->lastId(DesktopNotifications::KindBattery) != 0);
    const uint firstId = shared->lastId(DesktopNotifications::KindBattery);
    window->showLowbatView(1);
    QTRY_COMPARE(batteryCalls().size(), 2);
    QVERIFY(!window->lowbatDialog()->isHidden());
    QCOMPARE(batteryCalls()[0].replaces, 0u);
    QCOMPARE(batteryCalls()[1].replaces, firstId);
    window->lowbatDialog()->hide();
    // The window's presenter uses the device above: it goes first.
    MainWindow::resetInstanceForTest();
}

// tools/screenshots/render: the icon in a real tray (trayer, under Xvfb) with its menu open.
void TestTray::screenshotOnADesktopTray()
{
    const QString folder = qEnvironmentVariable("ZORVANE_SCREENSHOTS");
    const QString trayer = QStandardPaths::findExecutable(QStringLiteral("trayer"));
    if (folder.isEmpty() || QGuiApplication::platformName() != QLatin1String("xcb")) {
        QSKIP("needs ZORVANE_SCREENSHOTS and an X display");
    }
    if (trayer.isEmpty()) {
        // No tray to show the icon in: the menu alone.
        SystemTray tray(nullptr);
        tray.languageActions()[0]->setChecked(true);
        tray.menu()->popup(QPoint(20, 20));
        QVERIFY(QTest::qWaitForWindowExposed(tray.menu()));
        QVERIFY(tray.menu()->grab().save(folder + QStringLiteral("/tray-menu.png")));
        tray.menu()->hide();
        return;
    }
    // A plain desktop behind the tray, mapped first so that the tray and the menu lie over it.
    QScreen* screen = QGuiApplication::primaryScreen();
    const QRect area(screen->geometry().right() - 360, 0, 360, 220);
    QWidget desktop(nullptr, Qt::FramelessWindowHint);
    desktop.setStyleSheet(QStringLiteral("background: #5b7083;"));
    desktop.setGeometry(area);
    desktop.show();
    QVERIFY(QTest::qWaitForWindowExposed(&desktop));
    QProcess host;
    host.start(trayer, {QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--align"),
                        QStringLiteral("right"), QStringLiteral("--widthtype"), QStringLiteral("request"),
                        QStringLiteral("--height"), QStringLiteral("32"), QStringLiteral("--tint"),
                        QStringLiteral("0x2b2d31"), QStringLiteral("--transparent"), QStringLiteral("true"),
                        QStringLiteral("--alpha"), QStringLiteral("0")});
    QVERIFY(host.waitForStarted());
    QTRY_VERIFY(QSystemTrayIcon::isSystemTrayAvailable());
    SystemTray tray(nullptr);
    tray.setStatus(0);
    tray.setBatteryFigure(3900);
    QTRY_VERIFY(tray.trayIcon()->geometry().isValid());
    QTest::qWait(500);
    const QRect icon = tray.trayIcon()->geometry();
    const auto shoot = [&](const QString& name) {
        QTest::qWait(500);
        QVERIFY(screen->grabWindow(0, area.x(), area.y(), area.width(), area.height())
                    .save(folder + QStringLiteral("/%1.png").arg(name)));
    };
    QToolTip::showText(QPoint(icon.left() - 150, icon.bottom() + 6), tray.trayIcon()->toolTip());
    shoot(QStringLiteral("tray-tooltip"));
    QToolTip::hideText();
    tray.languageActions()[0]->setChecked(true);
    tray.menu()->popup(QPoint(icon.right() - 200, icon.bottom() + 4));
    shoot(QStringLiteral("tray-menu"));
    tray.menu()->hide();
    host.kill();
    host.waitForFinished();
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    // A private bus with this suite's fake server, for the suite's notifiers and the program's.
    QProcess daemon;
    daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                 QStringLiteral("--print-address=1"), busInRuntimeFolder()});
    QString address;
    if (daemon.waitForStarted() && daemon.waitForReadyRead(5000)) {
        address = QString::fromLocal8Bit(daemon.readLine()).trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toLocal8Bit());
    }
    int result = 0;
    {
        TestTray test(address);
        result = QTest::qExec(&test, argc, argv);
    }
    daemon.kill();
    daemon.waitForFinished();
    return result;
}

#include "tst_tray.moc"
