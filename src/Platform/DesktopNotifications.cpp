#include "Platform/DesktopNotifications.h"

#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QVariantMap>

#include <utility>

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kAppName = QStringLiteral("Zorvane");
// The server's own default time on screen.
constexpr int kDefaultExpiry = -1;

// The session bus where the session has one. Without it, asking for it would start a bus of
// our own through X11 autolaunch, which no notification server listens on: a connection
// that never connects makes every call fail at once instead.
QDBusConnection sessionBusIfAny()
{
    const bool present = qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
                         QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
    return present ? QDBusConnection::sessionBus()
                   : QDBusConnection(QStringLiteral("zorvane-no-session-bus"));
}

}  // namespace

DesktopNotifications::DesktopNotifications(const QDBusConnection& bus, int style, QObject* parent)
    : QObject(parent), mBus(bus)
{
    setStyle(style);
}

DesktopNotifications::DesktopNotifications() : DesktopNotifications(sessionBusIfAny())
{
    PreferencesUtils* preferences = PreferencesUtils::getInstance();
    setStyle(preferences->getUserPreferences().noticeStyle);
    connect(preferences, &PreferencesUtils::signalPreferencesChange, this,
            &DesktopNotifications::onPreferencesChange);
}

void DesktopNotifications::onPreferencesChange(const UserPreferences& preferences)
{
    setStyle(preferences.noticeStyle);
}

void DesktopNotifications::setStyle(int style)
{
    const int known = style == StylePopup || style == StyleNotification ? style : StyleBoth;
    if (known == mStyle) {
        return;
    }
    mStyle = known;
    emit signalStyleChanged(mStyle);
}

void DesktopNotifications::notify(Kind kind, const QString& summary, const QString& body, Urgency urgency)
{
    if (!wantsNotification()) {
        return;
    }
    if (!mBus.isConnected()) {
        // A call on it would never answer.
        failed(QStringLiteral("no session bus"));
        return;
    }
    if (mInFlight[kind]) {
        // Only the newest matters: it would replace the ones before it at once.
        mWaiting[kind] = Waiting{true, summary, body, urgency};
        return;
    }
    send(kind, summary, body, urgency);
}

void DesktopNotifications::send(Kind kind, const QString& summary, const QString& body, Urgency urgency)
{
    mInFlight[kind] = true;
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kService, QStringLiteral("Notify"));
    QVariantMap hints;
    hints.insert(QStringLiteral("urgency"), QVariant::fromValue(uchar(urgency)));
    hints.insert(QStringLiteral("desktop-entry"), QString::fromLatin1(kAppIcon));
    call << kAppName << mLastId[kind] << QString::fromLatin1(kAppIcon) << summary << body << QStringList()
         << hints << kDefaultExpiry;
    auto* watcher = new QDBusPendingCallWatcher(mBus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, kind](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        mInFlight[kind] = false;
        const QDBusPendingReply<uint> reply = *w;
        if (reply.isError()) {
            failed(reply.error().message());
        } else {
            mLastId[kind] = reply.value();
            emit signalSent(kind, mLastId[kind]);
        }
        if (mWaiting[kind].valid) {
            const Waiting next = std::exchange(mWaiting[kind], Waiting());
            send(kind, next.summary, next.body, next.urgency);
        }
    });
}

void DesktopNotifications::failed(const QString& reason)
{
    // Once per run: a desktop without a notification service fails every call so.
    if (!mFailureLogged) {
        mFailureLogged = true;
        qCInfo(lcSystem) << "no desktop notifications:" << reason;
    }
}

void DesktopNotifications::notifyBattery(int page)
{
    switch (page) {
        case 0:
            notify(KindBattery, tr("鼠标电量低"), tr("请及时为鼠标充电"));
            break;
        case 1:
            notify(KindBattery, tr("鼠标电量严重不足"), tr("鼠标即将关机，请立即充电"), UrgencyCritical);
            break;
        case 2:
            notify(KindBattery, tr("鼠标已关机"), tr("电量耗尽，充电后即可继续使用"), UrgencyCritical);
            break;
        case 3:
            notify(KindBattery, tr("鼠标正在充电"), QString(), UrgencyLow);
            break;
        default:
            break;
    }
}

void DesktopNotifications::notifyDeviceChange(bool insert)
{
    notify(KindDevice, insert ? tr("设备插入") : tr("设备拔出"), QString());
}

void DesktopNotifications::notifyBleConnected()
{
    notify(KindDevice, tr("蓝牙鼠标已连接"), QString());
}
