#include "Widget/Console/SystemTray.h"

#include "Utils/LanguageTables.h"
#include "Utils/Logging.h"
#include "Widget/Console/MainWindow.h"
#include "WidgetPresenter/DeviceLifecycle.h"

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QSystemTrayIcon>

#include <algorithm>

namespace {

constexpr int kIconSize = 64;
// The battery figure's scale: about the figure of a mouse that shuts down, and of a full one.
constexpr int kEmptyFigure = 3100;
constexpr int kFullFigure = 4100;

const QColor kGood(0x2e, 0xb8, 0x5c);
const QColor kLow(0xf5, 0x9e, 0x0b);
const QColor kCritical(0xe5, 0x48, 0x4d);

QString linkText(const SystemTray::State& s)
{
    switch (s.link) {
        case SystemTray::LinkReceiver:
            return s.asleep ? SystemTray::tr("已通过接收器连接，鼠标休眠中")
                            : SystemTray::tr("已通过接收器连接");
        case SystemTray::LinkBluetooth:
            return s.asleep ? SystemTray::tr("已通过蓝牙连接，鼠标休眠中") : SystemTray::tr("已通过蓝牙连接");
        case SystemTray::LinkNone:
            break;
    }
    return SystemTray::tr("未找到鼠标");
}

QString statusText(int status)
{
    switch (status) {
        case 2:
            return SystemTray::tr("麦克风无法打开");
        case 3:
            return SystemTray::tr("网络未连接");
        case 4:
            return SystemTray::tr("电量低，请及时充电");
        case 5:
            return SystemTray::tr("电量严重不足，请立即充电");
        case 6:
            return SystemTray::tr("正在充电");
        case 7:
            return SystemTray::tr("无法连接到服务器");
        default:
            return QString();
    }
}

}  // namespace

SystemTray::Look SystemTray::lookOf(const State& s)
{
    Look look;
    QStringList lines{QStringLiteral("Zorvane"), linkText(s)};
    if (s.link == LinkNone) {
        look.base = QStringLiteral(":/console/tray/mouse_missing.svg");
    } else {
        look.base = s.asleep                  ? QStringLiteral(":/console/tray/mouse_asleep.svg")
                    : s.link == LinkBluetooth ? QStringLiteral(":/console/tray/mouse_bluetooth.svg")
                                              : QStringLiteral(":/console/tray/mouse_receiver.svg");
        if (s.battery >= 0) {
            lines << tr("电量约 %1%").arg(s.battery);
        }
        // The animation's step wins over the figure: it is what the console wants seen now.
        if (s.chargeStep >= 0) {
            look.gauge = s.chargeStep * 100 / (kChargeSteps - 1);
        } else if (s.battery >= 0) {
            look.gauge = s.battery;
        } else if (s.status == 4 || s.status == 5) {
            // A low report before any figure: show an almost empty battery.
            look.gauge = s.status == 4 ? 20 : 5;
        }
        look.bolt = s.status == 6;
        if (s.status == 5 || (!look.bolt && look.gauge >= 0 && look.gauge <= 10)) {
            look.gaugeColor = kCritical;
        } else if (s.status == 4 || (!look.bolt && look.gauge >= 0 && look.gauge <= 25)) {
            look.gaugeColor = kLow;
        } else {
            look.gaugeColor = kGood;
        }
    }
    // A missing device is said above; the console's other troubles still matter.
    const bool batteryStatus = s.status >= 4 && s.status <= 6;
    const QString status = s.link == LinkNone && batteryStatus ? QString() : statusText(s.status);
    if (!status.isEmpty()) {
        lines << status;
    }
    if (!s.note.isEmpty()) {
        lines << s.note;
    }
    look.tooltip = lines.join(QLatin1Char('\n'));
    return look;
}

int SystemTray::batteryPercent(int figure)
{
    const int percent = (figure - kEmptyFigure) * 100 / (kFullFigure - kEmptyFigure);
    return std::clamp(percent, 0, 100);
}

QIcon SystemTray::render(const Look& look)
{
    QPixmap picture(kIconSize, kIconSize);
    picture.fill(Qt::transparent);
    QPainter p(&picture);
    p.setRenderHint(QPainter::Antialiasing);
    QIcon(look.base).paint(&p, picture.rect());
    if (look.gauge >= 0) {
        // A battery standing to the right of the mouse, filled from the bottom.
        const QRectF shell(42, 14, 18, 46);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x3a, 0x40, 0x4a));
        p.drawRoundedRect(QRectF(47, 9, 8, 6), 1.5, 1.5);
        p.drawRoundedRect(shell, 4, 4);
        const QRectF inside = shell.adjusted(3, 3, -3, -3);
        p.setBrush(QColor(0xff, 0xff, 0xff));
        p.drawRoundedRect(inside, 2, 2);
        const qreal height = inside.height() * std::clamp(look.gauge, 0, 100) / 100.0;
        p.setBrush(look.gaugeColor);
        p.drawRoundedRect(QRectF(inside.left(), inside.bottom() - height, inside.width(), height), 2, 2);
        if (look.bolt) {
            const QPolygonF bolt({{53, 19}, {45, 39}, {51, 39}, {49, 55}, {57, 33}, {51, 33}});
            p.setPen(QPen(QColor(0x3a, 0x40, 0x4a), 1.5));
            p.setBrush(QColor(0xff, 0xd4, 0x3b));
            p.drawPolygon(bolt);
        }
    }
    p.end();
    return QIcon(picture);
}

SystemTray::SystemTray(MainWindow* window, QObject* parent) : QObject(parent)
{
    // The pictures live in a static library: nothing else would pull them into the program.
    Q_INIT_RESOURCE(console);
    mIcon = new QSystemTrayIcon(this);
    buildMenu();
    mIcon->setContextMenu(mMenu);
    connect(mIcon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick) {
            emit signalOpenConsole();
        }
    });
    if (window != nullptr) {
        connectWindow(window);
    }
    refresh();
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        // Said once a run: GNOME without its AppIndicator extension has no tray at all.
        static bool told = false;
        if (!told) {
            told = true;
            qCInfo(lcConsole)
                << "no system tray on this desktop; the console opens from the application menu";
        }
    }
    // Shown even without a tray now: a tray that comes later picks the icon up.
    mIcon->show();
}

SystemTray::~SystemTray()
{
    delete mMenu;
}

void SystemTray::buildMenu()
{
    mMenu = new QMenu;
    connect(mMenu->addAction(tr("打开控制台")), &QAction::triggered, this, &SystemTray::signalOpenConsole);
    mLanguageMenu = mMenu->addMenu(tr("听写语言"));
    auto* group = new QActionGroup(mLanguageMenu);
    for (int i = 0; i < kSpokenLanguageCount; ++i) {
        QAction* action = mLanguageMenu->addAction(LanguageTables::shown(kConsoleSourceLabels[i]));
        action->setCheckable(true);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, i] { emit signalDictationLanguage(i); });
        mLanguages << action;
    }
    mAutoRun = mMenu->addAction(tr("开机自启动"));
    mAutoRun->setCheckable(true);
    connect(mAutoRun, &QAction::triggered, this, &SystemTray::signalAutoRun);
    mMenu->addSeparator();
    connect(mMenu->addAction(tr("退出")), &QAction::triggered, this, &SystemTray::signalQuit);
}

void SystemTray::connectWindow(MainWindow* window)
{
    connect(this, &SystemTray::signalOpenConsole, window, [window] {
        window->onShowMainView(0);
        window->raise();
        window->activateWindow();
    });
    // Through the console's box, as the pickers do, so that the choice reaches the preferences.
    connect(this, &SystemTray::signalDictationLanguage, window,
            [window](int index) { window->setComboDictationLanguageCurrentIndex(index); });
    connect(this, &SystemTray::signalAutoRun, window, [window](bool enable) {
        window->presenter()->onCheckAutoRunOnOff(enable);
        window->setCheckAutoRunOnOffChecked(enable);
    });
    connect(this, &SystemTray::signalQuit, window, &MainWindow::onQuit);
    // The checks show what holds when the menu opens.
    connect(mMenu, &QMenu::aboutToShow, this, [this, window] {
        const int language = window->widgets().comboDictationLanguage->currentIndex();
        if (language >= 0 && language < mLanguages.size()) {
            mLanguages[language]->setChecked(true);
        }
        mAutoRun->setChecked(window->presenter()->isAppAutoRun());
    });
}

void SystemTray::watchDevice(DeviceLifecycle* lifecycle)
{
    mDevice = lifecycle;
    if (lifecycle == nullptr) {
        return;
    }
    connect(lifecycle, &DeviceLifecycle::deviceReady, this, [this] { setLink(linkOfDevice()); });
    connect(lifecycle, &DeviceLifecycle::bleLinkChanged, this, [this](bool connected) {
        if (connected) {
            setLink(LinkBluetooth);
        } else if (mState.link == LinkBluetooth) {
            setLink(LinkNone);
        }
    });
    connect(lifecycle, &DeviceLifecycle::mouseActive, this, [this](bool active) { setAsleep(!active); });
    connect(lifecycle, &DeviceLifecycle::batteryFigure, this, &SystemTray::setBatteryFigure);
}

SystemTray::Link SystemTray::linkOfDevice() const
{
    if (mDevice != nullptr && mDevice->overBluetooth()) {
        return LinkBluetooth;
    }
    return LinkReceiver;
}

void SystemTray::setStatus(int status)
{
    if (status != mState.status) {
        // A blink or charge step belongs to the state that started it.
        mState.chargeStep = -1;
    }
    mState.status = status;
    if (status == 1) {
        // The mouse is gone: what it told no longer holds.
        mState.link = LinkNone;
        mState.asleep = false;
        mState.battery = -1;
    } else if (status == 0 && mState.link == LinkNone) {
        // Nothing to report is told once the device is ready.
        mState.link = linkOfDevice();
    }
    refresh();
}

void SystemTray::setChargeStep(int step)
{
    mState.chargeStep = std::clamp(step, 0, kChargeSteps - 1);
    refresh();
}

void SystemTray::setNote(const QString& text)
{
    mState.note = text;
    refresh();
}

void SystemTray::setLink(Link link)
{
    mState.link = link;
    if (link == LinkNone) {
        mState.asleep = false;
        mState.battery = -1;
    }
    refresh();
}

void SystemTray::setAsleep(bool asleep)
{
    mState.asleep = asleep;
    refresh();
}

void SystemTray::setBatteryFigure(int figure)
{
    mState.battery = batteryPercent(figure);
    refresh();
}

void SystemTray::refresh()
{
    const Look look = lookOf(mState);
    if (mShownOnce && look.base == mShown.base && look.gauge == mShown.gauge &&
        look.gaugeColor == mShown.gaugeColor && look.bolt == mShown.bolt && look.tooltip == mShown.tooltip) {
        return;
    }
    mShownOnce = true;
    mShown = look;
    mIcon->setIcon(render(look));
    mIcon->setToolTip(look.tooltip);
}
