#include "Hid/QtBleTransport.h"

#include "Utils/Logging.h"

#include <QBluetoothAddress>
#include <QBluetoothDeviceInfo>
#include <QBluetoothUuid>

QtBleTransport::QtBleTransport(QObject* parent) : BleTransport(parent)
{
    connect(&mAgent, &QBluetoothDeviceDiscoveryAgent::deviceDiscovered, this,
            [this](const QBluetoothDeviceInfo& info) {
                Device device;
                device.address = info.address().toString();
                device.name = info.name();
                device.lowEnergy =
                    (info.coreConfigurations() & QBluetoothDeviceInfo::LowEnergyCoreConfiguration) != 0;
                emit signalDeviceDiscovered(device);
            });
    connect(&mAgent, &QBluetoothDeviceDiscoveryAgent::finished, this, &BleTransport::signalDiscoveryFinished);
    connect(&mAgent, &QBluetoothDeviceDiscoveryAgent::canceled, this, &BleTransport::signalDiscoveryFinished);
    connect(
        &mAgent, QOverload<QBluetoothDeviceDiscoveryAgent::Error>::of(&QBluetoothDeviceDiscoveryAgent::error),
        this,
        [this](QBluetoothDeviceDiscoveryAgent::Error) { emit signalDiscoveryError(mAgent.errorString()); });
    connect(
        &mLocalDevice, &QBluetoothLocalDevice::deviceConnected, this,
        [this](const QBluetoothAddress& address) { emit signalSystemDeviceConnected(address.toString()); });
}

QtBleTransport::~QtBleTransport()
{
    releaseLink();
}

QStringList QtBleTransport::connectedAddresses()
{
    QStringList addresses;
    for (const QBluetoothAddress& address : mLocalDevice.connectedDevices()) {
        addresses << address.toString();
    }
    return addresses;
}

void QtBleTransport::startDiscovery()
{
    mAgent.start(QBluetoothDeviceDiscoveryAgent::LowEnergyMethod);
}

void QtBleTransport::stopDiscovery()
{
    if (mAgent.isActive()) {
        mAgent.stop();
    }
}

void QtBleTransport::connectToDevice(const QString& address)
{
    releaseLink();
    const QBluetoothDeviceInfo info(QBluetoothAddress(address), QString(), 0);
    mController.reset(QLowEnergyController::createCentral(info));
    mController->setRemoteAddressType(QLowEnergyController::RandomAddress);
    connect(mController.get(), &QLowEnergyController::connected, this, &BleTransport::signalLinkConnected);
    connect(mController.get(), QOverload<QLowEnergyController::Error>::of(&QLowEnergyController::error), this,
            [this](QLowEnergyController::Error) {
                emit signalLinkError(mController ? mController->errorString() : QString());
            });
    connect(mController.get(), &QLowEnergyController::disconnected, this,
            &BleTransport::signalLinkDisconnected);
    connect(mController.get(), &QLowEnergyController::serviceDiscovered, this,
            [this](const QBluetoothUuid& uuid) {
                emit signalServiceDiscovered(uuid.toString(QUuid::WithoutBraces));
            });
    connect(mController.get(), &QLowEnergyController::discoveryFinished, this,
            &BleTransport::signalServiceScanDone);
    connect(mController.get(), &QLowEnergyController::stateChanged, this,
            &BleTransport::signalLinkStateChanged);
    mController->connectToDevice();
    emit signalLinkStateChanged();
}

void QtBleTransport::releaseLink()
{
    releaseService();
    if (mController) {
        // Released later: this may run inside one of the controller's own signals.
        QLowEnergyController* controller = mController.release();
        controller->disconnect(this);
        if (controller->state() != QLowEnergyController::UnconnectedState) {
            controller->disconnectFromDevice();
        }
        controller->deleteLater();
        emit signalLinkStateChanged();
    }
}

bool QtBleTransport::hasLink() const
{
    return mController != nullptr;
}

bool QtBleTransport::isLinkOpen() const
{
    return mController && mController->state() != QLowEnergyController::UnconnectedState;
}

void QtBleTransport::discoverServices()
{
    if (mController) {
        mController->discoverServices();
    }
}

bool QtBleTransport::openService(const QString& serviceUuid)
{
    if (!mController) {
        return false;
    }
    releaseService();
    mService.reset(mController->createServiceObject(QBluetoothUuid(serviceUuid)));
    if (!mService) {
        return false;
    }
    connect(mService.get(), &QLowEnergyService::stateChanged, this,
            [this](QLowEnergyService::ServiceState state) {
                if (state == QLowEnergyService::InvalidService) {
                    emit signalServiceState(InvalidService);
                } else if (state == QLowEnergyService::ServiceDiscovered) {
                    emit signalServiceState(ServiceDiscovered);
                }
            });
    connect(mService.get(), &QLowEnergyService::characteristicChanged, this,
            [this](const QLowEnergyCharacteristic& c, const QByteArray& value) {
                emit signalNotification(c.uuid().toString(QUuid::WithoutBraces), value);
            });
    mService->discoverDetails();
    return true;
}

void QtBleTransport::releaseService()
{
    if (mService) {
        QLowEnergyService* service = mService.release();
        service->disconnect(this);
        service->deleteLater();
    }
}

bool QtBleTransport::hasService() const
{
    return mService != nullptr;
}

QLowEnergyCharacteristic QtBleTransport::characteristic(const QString& uuid) const
{
    return mService ? mService->characteristic(QBluetoothUuid(uuid)) : QLowEnergyCharacteristic();
}

bool QtBleTransport::hasCharacteristic(const QString& uuid) const
{
    return characteristic(uuid).isValid();
}

bool QtBleTransport::enableNotifications(const QString& characteristicUuid)
{
    const QLowEnergyDescriptor descriptor =
        characteristic(characteristicUuid).descriptor(QBluetoothUuid::ClientCharacteristicConfiguration);
    if (!mService || !descriptor.isValid()) {
        return false;
    }
    mService->writeDescriptor(descriptor, QByteArray::fromHex("0100"));
    return true;
}

void QtBleTransport::writeCharacteristic(const QString& characteristicUuid, const QByteArray& data)
{
    const QLowEnergyCharacteristic c = characteristic(characteristicUuid);
    if (mService && c.isValid()) {
        mService->writeCharacteristic(c, data, QLowEnergyService::WriteWithResponse);
    }
}
