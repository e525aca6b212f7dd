#include "Hid/BLEManager.h"

#include "Platform/SleepNotification.h"
#include "Utils/AppConfig.h"
#include "Utils/Logging.h"

#include <QThread>

namespace {
const QStringList kAcceptedNames = {QStringLiteral("Sorbeta"), QStringLiteral("Pelnica")};
const QStringList kAcceptedAddressParts = {QStringLiteral("C8:47:8C"), QStringLiteral("22:18:3A")};
}  // namespace

BLEManager::BLEManager() : mTransport(nullptr)
{
    qFatal("BLEManager asked for before the program made it");
}

BLEManager::BLEManager(std::unique_ptr<BleTransport> transport, std::unique_ptr<SleepNotification> sleep)
    : BLEManager(transport.get(), sleep.get())
{
    mOwnedTransport = std::move(transport);
    mOwnedSleep = std::move(sleep);
}

BLEManager::BLEManager(BleTransport* transport, SleepNotification* sleep, QObject* parent)
    : QObject(parent), mTransport(transport)
{
    mConnectTimer.setSingleShot(true);
    mConnectTimer.setInterval(kConnectTimeoutMs);
    connect(&mConnectTimer, &QTimer::timeout, this, &BLEManager::onConnectTimeout);

    connect(mTransport, &BleTransport::signalDeviceDiscovered, this, &BLEManager::addDevice);
    connect(mTransport, &BleTransport::signalDiscoveryFinished, this, [this] {
        mScanning = false;
        emit signalScanFinished();
    });
    connect(mTransport, &BleTransport::signalDiscoveryError, this,
            [](const QString& error) { qCWarning(lcDeviceBle) << "scan error:" << error; });
    connect(mTransport, &BleTransport::signalSystemDeviceConnected, this,
            &BLEManager::onSystemDeviceConnected);
    connect(mTransport, &BleTransport::signalLinkConnected, this, &BLEManager::deviceConnected);
    connect(mTransport, &BleTransport::signalLinkError, this, &BLEManager::errorReceived);
    connect(mTransport, &BleTransport::signalLinkDisconnected, this, &BLEManager::deviceDisconnected);
    connect(mTransport, &BleTransport::signalLinkStateChanged, this, &BLEManager::refreshLinkState);
    connect(mTransport, &BleTransport::signalServiceDiscovered, this, &BLEManager::addLowEnergyService);
    connect(mTransport, &BleTransport::signalServiceState, this, &BLEManager::serviceDetailsDiscovered);
    connect(mTransport, &BleTransport::signalNotification, this,
            [this](const QString&, const QByteArray& value) {
                // Whatever the characteristic; nothing once closed.
                if (mConnectionMode != ModeIdle) {
                    emit signalReceiverMessage(value);
                }
            });
    if (sleep != nullptr) {
        connect(sleep, &SleepNotification::signalWakeApp, this, &BLEManager::onWake);
        connect(sleep, &SleepNotification::signalSleepApp, this, &BLEManager::onSleep);
    }
}

BLEManager::~BLEManager()
{
    mTransport->releaseLink();
}

void BLEManager::setDeviceTypeSource(std::function<int()> source)
{
    mDeviceType = std::move(source);
}

int BLEManager::deviceType() const
{
    return mDeviceType ? mDeviceType() : 0;
}

bool BLEManager::isAcceptedName(const QString& name)
{
    return kAcceptedNames.contains(name);
}

bool BLEManager::isAcceptedAddress(const QString& address)
{
    for (const QString& part : kAcceptedAddressParts) {
        if (address.contains(part, Qt::CaseInsensitive)) {
            return true;
        }
    }
    return false;
}

bool BLEManager::isConnected()
{
    // A question to the system, true before any attach.
    for (const QString& address : mTransport->connectedAddresses()) {
        if (isAcceptedAddress(address)) {
            return true;
        }
    }
    return false;
}

bool BLEManager::isOpen()
{
    // The device controller asks from its own thread while this one may be releasing the link.
    if (QThread::currentThread() == thread()) {
        refreshLinkState();
    }
    return mLinkOpen;
}

void BLEManager::refreshLinkState()
{
    mLinkOpen = mTransport->isLinkOpen();
}

bool BLEManager::isScan() const
{
    return mScanning;
}

void BLEManager::openDevice(QString uuid)
{
    mConnectionMode = ModeAttaching;
    if (uuid.isEmpty()) {
        emit signalConnectState(false, QString());
        return;
    }
    mDeviceUuid = uuid;
    if (!isConnected()) {
        qCInfo(lcDeviceBle) << "the system holds no connection to the mouse";
        emit signalConnectState(false, QString());
        return;
    }
    // One link at a time: a new attach replaces a half-made one.
    mTransport->releaseLink();
    mCurrentDevice = BleTransport::Device{uuid, QString(), true};
    mTransport->connectToDevice(uuid);
    mConnectTimer.start();
}

void BLEManager::scanDevice()
{
    mConnectionMode = ModeScanning;
    mDevices.clear();
    mScanning = true;
    mTransport->startDiscovery();
}

void BLEManager::scanCancel()
{
    mTransport->stopDiscovery();
    mScanning = false;
    mDevices.clear();
}

void BLEManager::addDevice(const BleTransport::Device& device)
{
    if (mConnectionMode != ModeScanning || !device.lowEnergy || !isAcceptedName(device.name)) {
        return;
    }
    bool known = false;
    for (const BleTransport::Device& d : qAsConst(mDevices)) {
        known = known || d.address == device.address;
    }
    if (!known) {
        mDevices.append(device);
    }
    connectDevice();
}

void BLEManager::connectDevice()
{
    if (mConnectionMode == ModeIdle || mTransport->hasLink() || mDevices.isEmpty()) {
        return;
    }
    mCurrentDevice = mDevices.first();
    // No connect timer here: a failed candidate's error moves on to the next.
    mTransport->connectToDevice(mCurrentDevice.address);
}

void BLEManager::deviceConnected()
{
    if (mConnectionMode == ModeIdle) {
        return;
    }
    mConnectTimer.stop();
    mTransport->discoverServices();
}

void BLEManager::addLowEnergyService(const QString& uuid)
{
    if (mConnectionMode == ModeIdle || uuid.compare(QLatin1String(kService), Qt::CaseInsensitive) != 0) {
        return;
    }
    mTransport->openService(uuid);
}

void BLEManager::serviceDetailsDiscovered(int state)
{
    if (mConnectionMode == ModeIdle) {
        return;
    }
    if (state == BleTransport::InvalidService) {
        mTransport->releaseService();
        return;
    }
    if (state != BleTransport::ServiceDiscovered) {
        return;
    }
    if (mTransport->hasCharacteristic(QLatin1String(kReadCharacteristic)) &&
        !mTransport->enableNotifications(QLatin1String(kReadCharacteristic))) {
        // No configuration descriptor: the link stays open and silent.
        qCWarning(lcDeviceBle) << "the mouse's notify characteristic has no configuration descriptor";
        return;
    }
    if (!mTransport->hasCharacteristic(QLatin1String(kWriteCharacteristic))) {
        return;
    }
    qCInfo(lcDeviceBle) << "attached to" << mCurrentDevice.address;
    emit signalConnectState(true, mCurrentDevice.address);
    mTransport->stopDiscovery();
    mScanning = false;
}

void BLEManager::serviceWriteMessage(QByteArray data)
{
    if (QThread::currentThread() != thread()) {
        // The device controller's thread: Qt Bluetooth lives on this object's thread. The
        // packets wait in a locked queue, in order, and this thread drains it.
        {
            const std::lock_guard<std::mutex> lock(mPendingMutex);
            mPendingWrites.append(data);
        }
        QMetaObject::invokeMethod(this, "drainPendingWrites", Qt::QueuedConnection);
        return;
    }
    writeOnThisThread(data);
}

void BLEManager::drainPendingWrites()
{
    QList<QByteArray> writes;
    {
        const std::lock_guard<std::mutex> lock(mPendingMutex);
        writes.swap(mPendingWrites);
    }
    for (const QByteArray& data : qAsConst(writes)) {
        writeOnThisThread(data);
    }
}

void BLEManager::writeOnThisThread(const QByteArray& data)
{
    if (mConnectionMode == ModeIdle || !mTransport->isLinkOpen() || data.isEmpty() ||
        !mTransport->hasService()) {
        return;
    }
    mTransport->writeCharacteristic(QLatin1String(kWriteCharacteristic), data);
}

void BLEManager::onConnectTimeout()
{
    mTransport->releaseLink();
    qCInfo(lcDeviceBle) << "attach timed out";
    emit signalConnectState(false, QString());
}

void BLEManager::errorReceived(const QString& error)
{
    qCWarning(lcDeviceBle) << "link error:" << error;
    if (mConnectionMode == ModeScanning) {
        mTransport->releaseLink();
        if (!mDevices.isEmpty()) {
            mDevices.removeFirst();
        }
        connectDevice();
    } else if (mConnectionMode == ModeAttaching) {
        mConnectTimer.stop();
        mTransport->releaseLink();
        emit signalConnectState(false, QString());
    }
}

void BLEManager::deviceDisconnected()
{
    // No signal: the device controller's poll of state() sees the loss.
    if (mConnectionMode != ModeScanning) {
        mConnectTimer.stop();
        mTransport->releaseLink();
    } else if (mTransport->hasLink()) {
        mDevices.clear();
        mTransport->releaseLink();
    }
}

void BLEManager::closeDevice()
{
    mConnectionMode = ModeIdle;
    mConnectTimer.stop();
    mTransport->releaseService();
    mTransport->releaseLink();
}

void BLEManager::onSystemDeviceConnected(QString address)
{
    if (deviceType() == 1 && mConnectionMode != ModeScanning && isAcceptedAddress(address)) {
        openDevice(mDeviceUuid);
    }
}

void BLEManager::onWake()
{
    if (deviceType() == 1) {
        openDevice(mDeviceUuid);
    }
}

void BLEManager::onSleep()
{
    if (deviceType() == 1) {
        closeDevice();
    }
}
