#include "FakeBleTransport.h"

#include "Hid/BLEManager.h"

void FakeBleTransport::connectToDevice(const QString& address)
{
    calls << QStringLiteral("connect ") + address;
    link = true;
    emit signalLinkStateChanged();
}

bool FakeBleTransport::hasLink() const
{
    if (QThread::currentThread() != thread()) {
        ++offThreadCalls;
    }
    return link;
}

bool FakeBleTransport::isLinkOpen() const
{
    if (QThread::currentThread() != thread()) {
        ++offThreadCalls;
    }
    return link;
}

void FakeBleTransport::releaseLink()
{
    if (link) {
        calls << QStringLiteral("release");
    }
    link = false;
    service = false;
    emit signalLinkStateChanged();
}

bool FakeBleTransport::openService(const QString& serviceUuid)
{
    calls << QStringLiteral("service ") + serviceUuid;
    service = true;
    return true;
}

bool FakeBleTransport::hasCharacteristic(const QString& uuid) const
{
    if (!service) {
        return false;
    }
    return uuid == QLatin1String(BLEManager::kReadCharacteristic) ||
           uuid == QLatin1String(BLEManager::kWriteCharacteristic);
}

bool FakeBleTransport::enableNotifications(const QString&)
{
    if (!hasNotifyDescriptor) {
        return false;
    }
    calls << QStringLiteral("notify");
    return true;
}

void FakeBleTransport::writeCharacteristic(const QString&, const QByteArray& data)
{
    writes << data;
    writeThreads << QThread::currentThread();
}

void FakeBleTransport::answerAttach()
{
    emit signalLinkConnected();
    emit signalServiceDiscovered(QStringLiteral("00001800-0000-1000-8000-00805f9b34fb"));
    emit signalServiceDiscovered(QLatin1String(BLEManager::kService));
    emit signalServiceState(ServiceDiscovered);
}
