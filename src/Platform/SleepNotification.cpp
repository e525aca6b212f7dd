#include "Platform/SleepNotification.h"

#include "Utils/Logging.h"

#include <QDBusError>

namespace {
const QString kService = QStringLiteral("org.freedesktop.login1");
const QString kPath = QStringLiteral("/org/freedesktop/login1");
const QString kInterface = QStringLiteral("org.freedesktop.login1.Manager");
}  // namespace

SleepNotification::SleepNotification(QObject* parent)
    : SleepNotification(QDBusConnection::systemBus(), parent)
{
}

SleepNotification::SleepNotification(const QDBusConnection& bus, QObject* parent) : QObject(parent)
{
    if (!bus.isConnected()) {
        qCWarning(lcSystem) << "no system bus: sleep and wake go unnoticed";
        return;
    }
    // Any sender: logind is the one that emits it, whatever its unique name.
    QDBusConnection connection(bus);
    mWatching = connection.connect(QString(), kPath, kInterface, QStringLiteral("PrepareForSleep"), this,
                                   SLOT(onPrepareForSleep(bool)));
    if (!mWatching) {
        qCWarning(lcSystem) << "cannot watch PrepareForSleep:" << connection.lastError().message();
    }
}

void SleepNotification::onPrepareForSleep(bool start)
{
    if (start) {
        sleep();
    } else {
        wake();
    }
}

void SleepNotification::sleep()
{
    qCInfo(lcSystem) << "休眠";
    emit signalSleepApp();
}

void SleepNotification::wake()
{
    qCInfo(lcSystem) << "唤醒";
    emit signalWakeApp();
}
