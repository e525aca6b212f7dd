#include "Hid/VirtualBleTransport.h"

#include "Hid/BLEManager.h"
#include "Hid/VirtualDeviceConnection.h"

using Channel = VirtualDeviceConnection::Channel;

VirtualBleTransport::VirtualBleTransport(const QString& socketPath, QObject* parent)
    : BleTransport(parent),
      mConnection(std::make_unique<VirtualDeviceConnection>(
          socketPath, [this](int channel, const QByteArray& payload) { onFrame(channel, payload); },
          [this] {
              // No simulator, no mouse: the system holds nothing any more.
              onFrame(VirtualDeviceConnection::BleSystemDevices, QByteArray());
              onFrame(VirtualDeviceConnection::BleLinkDown, QByteArray());
          }))
{
    mConnection->ensureConnected();
}

VirtualBleTransport::~VirtualBleTransport()
{
    mConnection.reset();
}

void VirtualBleTransport::onFrame(int channel, const QByteArray& payload)
{
    bool first = false;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (channel == VirtualDeviceConnection::BleSystemDevices) {
            mSystemDevices = QString::fromUtf8(payload).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        }
        if (channel < VirtualDeviceConnection::BleSystemDevices) {
            return;  // the receiver's channels are for the USB side
        }
        mFrames.append({channel, payload});
        first = mFrames.size() == 1;
    }
    if (first) {
        QMetaObject::invokeMethod(this, "deliverFrames", Qt::QueuedConnection);
    }
}

void VirtualBleTransport::deliverFrames()
{
    QList<QPair<int, QByteArray>> frames;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        frames.swap(mFrames);
    }
    for (const auto& frame : qAsConst(frames)) {
        const QByteArray& payload = frame.second;
        switch (frame.first) {
            case VirtualDeviceConnection::BleSystemDevices: {
                // The simulator sends the whole list on every change.
                const QStringList addresses =
                    QString::fromUtf8(payload).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
                const QStringList before = mAnnounced;
                mAnnounced = addresses;
                for (const QString& address : addresses) {
                    if (!before.contains(address)) {
                        emit signalSystemDeviceConnected(address);
                    }
                }
                break;
            }
            case VirtualDeviceConnection::BleAdvert:
                if (mDiscovering) {
                    const QStringList parts = QString::fromUtf8(payload).split(QLatin1Char('\n'));
                    emit signalDeviceDiscovered(Device{parts.value(0), parts.value(1), true});
                }
                break;
            case VirtualDeviceConnection::BleScanDone:
                if (mDiscovering) {
                    mDiscovering = false;
                    emit signalDiscoveryFinished();
                }
                break;
            case VirtualDeviceConnection::BleLinkUp:
                if (mLink && payload == mConnectTag) {
                    mLinkUp = true;
                    emit signalLinkStateChanged();
                    emit signalLinkConnected();
                }
                break;
            case VirtualDeviceConnection::BleLinkError:
                if (mLink && payload.startsWith(mConnectTag + '\n')) {
                    emit signalLinkError(QString::fromUtf8(payload.mid(mConnectTag.size() + 1)));
                }
                break;
            case VirtualDeviceConnection::BleLinkDown:
                if (mLink && mLinkUp) {
                    mLinkUp = false;
                    emit signalLinkStateChanged();
                    emit signalLinkDisconnected();
                }
                break;
            case VirtualDeviceConnection::BleNotify:
                if (mService) {
                    emit signalNotification(QLatin1String(BLEManager::kReadCharacteristic), payload);
                }
                break;
            default:
                break;
        }
    }
}

QStringList VirtualBleTransport::connectedAddresses()
{
    mConnection->ensureConnected();
    const std::lock_guard<std::mutex> lock(mMutex);
    return mSystemDevices;
}

void VirtualBleTransport::startDiscovery()
{
    mDiscovering = true;
    mConnection->send(VirtualDeviceConnection::BleScanStart, QByteArray());
}

void VirtualBleTransport::stopDiscovery()
{
    // A stopped scan ends like the system's: one finish, nothing after it.
    if (mDiscovering) {
        mDiscovering = false;
        emit signalDiscoveryFinished();
    }
}

void VirtualBleTransport::connectToDevice(const QString& address)
{
    releaseLink();
    mLink = true;
    mLinkUp = false;
    mConnectTag = address.toUtf8() + '\n' + QByteArray::number(++mAttempt);
    if (!mConnection->send(VirtualDeviceConnection::BleConnect, mConnectTag)) {
        QMetaObject::invokeMethod(
            this, [this] { emit signalLinkError(QStringLiteral("no virtual device")); },
            Qt::QueuedConnection);
    }
}

void VirtualBleTransport::releaseLink()
{
    mService = false;
    if (mLink) {
        mLink = false;
        mLinkUp = false;
        mConnection->send(VirtualDeviceConnection::BleDisconnect, QByteArray());
        emit signalLinkStateChanged();
    }
}

void VirtualBleTransport::discoverServices()
{
    // The virtual mouse has exactly its one service.
    emit signalServiceDiscovered(QLatin1String(BLEManager::kService));
    emit signalServiceScanDone();
}

bool VirtualBleTransport::openService(const QString& serviceUuid)
{
    if (!mLinkUp || serviceUuid.compare(QLatin1String(BLEManager::kService), Qt::CaseInsensitive) != 0) {
        return false;
    }
    mService = true;
    QMetaObject::invokeMethod(
        this, [this] { emit signalServiceState(ServiceDiscovered); }, Qt::QueuedConnection);
    return true;
}

bool VirtualBleTransport::hasCharacteristic(const QString& uuid) const
{
    return mService && (uuid == QLatin1String(BLEManager::kReadCharacteristic) ||
                        uuid == QLatin1String(BLEManager::kWriteCharacteristic));
}

bool VirtualBleTransport::enableNotifications(const QString&)
{
    return mService &&
           mConnection->send(VirtualDeviceConnection::BleEnableNotify, QByteArray::fromHex("0100"));
}

void VirtualBleTransport::writeCharacteristic(const QString&, const QByteArray& data)
{
    if (mService) {
        mConnection->send(VirtualDeviceConnection::BleWrite, data);
    }
}
