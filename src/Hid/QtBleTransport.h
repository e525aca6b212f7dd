#pragma once

#include "Hid/BleTransport.h"

#include <QBluetoothDeviceDiscoveryAgent>
#include <QBluetoothLocalDevice>
#include <QLowEnergyController>
#include <QLowEnergyService>

#include <memory>

// The Bluetooth stack as shipped: Qt Bluetooth over BlueZ. Without an adapter every call
// fails quietly and discovery reports an error.
class QtBleTransport : public BleTransport {
    Q_OBJECT

public:
    explicit QtBleTransport(QObject* parent = nullptr);
    ~QtBleTransport() override;

    QStringList connectedAddresses() override;
    void startDiscovery() override;
    void stopDiscovery() override;
    void connectToDevice(const QString& address) override;
    void releaseLink() override;
    bool hasLink() const override;
    bool isLinkOpen() const override;
    void discoverServices() override;
    bool openService(const QString& serviceUuid) override;
    void releaseService() override;
    bool hasService() const override;
    bool hasCharacteristic(const QString& uuid) const override;
    bool enableNotifications(const QString& characteristicUuid) override;
    void writeCharacteristic(const QString& characteristicUuid, const QByteArray& data) override;

private:
    QLowEnergyCharacteristic characteristic(const QString& uuid) const;

    QBluetoothLocalDevice mLocalDevice;
    QBluetoothDeviceDiscoveryAgent mAgent;
    // The one owner of the controller and its service.
    std::unique_ptr<QLowEnergyController> mController;
    std::unique_ptr<QLowEnergyService> mService;
};
