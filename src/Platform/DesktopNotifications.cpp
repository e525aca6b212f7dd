#include "Platform/DesktopNotifications.h"

#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
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
    watchServer();
}

void DesktopNotifications::watchServer()
{
    if (!mBus.isConnected()) {
        mServer = ServerAbsent;
        failed(QStringLiteral("no session bus"));
        return;
    }
    auto* watcher = new QDBusServiceWatcher(kService, mBus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                // A server that the bus starts on demand may leave when idle: still there.
                setServer(!owner.isEmpty() || mActivatable ? ServerPresent : ServerAbsent);
            });
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    const auto ask = [&](const QString& method, const QVariantList& arguments) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, method);
        call.setArguments(arguments);
        return new QDBusPendingCallWatcher(mBus.asyncCall(call), this);
    };
    // Both answers come in order; the second one decides.
    connect(ask(QStringLiteral("ListActivatableNames"), {}), &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* w) {
                w->deleteLater();
                const QDBusPendingReply<QStringList> names = *w;
                mActivatable = !names.isError() && names.value().contains(kService);
            });
    connect(ask(QStringLiteral("NameHasOwner"), {kService}), &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* w) {
                w->deleteLater();
                const QDBusPendingReply<bool> running = *w;
                if (mServer == ServerUnknown) {
                    const bool present = mActivatable || (!running.isError() && running.value());
                    setServer(present ? ServerPresent : ServerAbsent);
                }
            });
}

void DesktopNotifications::setServer(Server server)
{
    if (server == mServer) {
        return;
    }
    mServer = server;
    if (server == ServerAbsent) {
        failed(QStringLiteral("no notification server on the bus; notices show as popups"));
    } else {
        mFailureLogged = false;  // a server that goes again is worth a line again
    }
    emit signalServerChanged(mServer);
}

bool DesktopNotifications::wantsPopup() const
{
    return mStyle != StyleNotification || mServer == ServerAbsent;
}

bool DesktopNotifications::wantsNotification() const
{
    return mStyle == StyleBoth || (mStyle == StyleNotification && mServer != ServerAbsent);
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
    const int known = style == StylePopup || style == StyleBoth ? style : StyleNotification;
    if (known == mStyle) {
        return;
    }
    mStyle = known;
    emit signalStyleChanged(mStyle);
}

void DesktopNotifications::notify(Kind kind, const QString& summary, const QString& body, Urgency urgency,
                                  Undelivered undelivered)
{
    if (!wantsNotification()) {
        return;
    }
    if (wantsPopup()) {
        undelivered = nullptr;  // the popup shows anyway
    }
    if (!mBus.isConnected()) {
        // A call on it would never answer.
        failed(QStringLiteral("no session bus"));
        if (undelivered) {
            undelivered();
        }
        return;
    }
    if (mInFlight[kind]) {
        // Only the newest matters: it would replace the ones before it at once.
        mWaiting[kind] = Waiting{true, summary, body, urgency, std::move(undelivered)};
        return;
    }
    send(kind, summary, body, urgency, std::move(undelivered));
}

void DesktopNotifications::send(Kind kind, const QString& summary, const QString& body, Urgency urgency,
                                Undelivered undelivered)
{
    mInFlight[kind] = true;
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kService, QStringLiteral("Notify"));
    QVariantMap hints;
    hints.insert(QStringLiteral("urgency"), QVariant::fromValue(uchar(urgency)));
    hints.insert(QStringLiteral("desktop-entry"), QString::fromLatin1(kAppIcon));
    call << kAppName << mLastId[kind] << QString::fromLatin1(kAppIcon) << summary << body << QStringList()
         << hints << kDefaultExpiry;
    auto* watcher = new QDBusPendingCallWatcher(mBus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, kind, undelivered = std::move(undelivered)](QDBusPendingCallWatcher* w) {
                w->deleteLater();
                mInFlight[kind] = false;
                const QDBusPendingReply<uint> reply = *w;
                if (reply.isError()) {
                    failed(reply.error().message());
                    // The popup instead; a newer notice of the kind waiting replaces this one.
                    if (undelivered && !mWaiting[kind].valid) {
                        undelivered();
                    }
                } else {
                    mLastId[kind] = reply.value();
                    emit signalSent(kind, mLastId[kind]);
                }
                if (mWaiting[kind].valid) {
                    Waiting next = std::exchange(mWaiting[kind], Waiting());
                    if (wantsNotification()) {
                        notify(kind, next.summary, next.body, next.urgency, std::move(next.undelivered));
                    } else if (next.undelivered) {
                        next.undelivered();
                    }
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

void DesktopNotifications::notifyBattery(int page, Undelivered undelivered)
{
    Undelivered u = std::move(undelivered);
    switch (page) {
        case 0:
            notify(KindBattery, tr("鼠标电量低"), tr("请及时为鼠标充电"), UrgencyNormal, std::move(u));
            break;
        case 1:
            notify(KindBattery, tr("鼠标电量严重不足"), tr("鼠标即将关机，请立即充电"), UrgencyCritical,
                   std::move(u));
            break;
        case 2:
            notify(KindBattery, tr("鼠标已关机"), tr("电量耗尽，充电后即可继续使用"), UrgencyCritical,
                   std::move(u));
            break;
        case 3:
            notify(KindBattery, tr("鼠标正在充电"), QString(), UrgencyLow, std::move(u));
            break;
        default:
            break;
    }
}

void DesktopNotifications::notifyDeviceChange(bool insert, Undelivered undelivered)
{
    notify(KindDevice, insert ? tr("设备插入") : tr("设备拔出"), QString(), UrgencyNormal,
           std::move(undelivered));
}

void DesktopNotifications::notifyBleConnected(Undelivered undelivered)
{
    notify(KindDevice, tr("蓝牙鼠标已连接"), QString(), UrgencyNormal, std::move(undelivered));
}
