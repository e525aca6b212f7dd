#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

// What the Bluetooth LE link needs of the Bluetooth stack: the system's connected devices,
// discovery, and one GATT link at a time with its service and two characteristics. Devices
// are named by their address text. Qt Bluetooth ships; tests script a fake.
class BleTransport : public QObject {
    Q_OBJECT

public:
    struct Device {
        QString address;
        QString name;
        bool lowEnergy = true;
    };
    // Service states as the link reports them.
    enum ServiceState { InvalidService = 0, ServiceDiscovered = 3 };

    using QObject::QObject;

    // Addresses of the devices the system holds a connection to.
    virtual QStringList connectedAddresses() = 0;

    virtual void startDiscovery() = 0;
    virtual void stopDiscovery() = 0;

    // Creates the link to a device (random address type) and starts connecting.
    virtual void connectToDevice(const QString& address) = 0;
    // Disconnects if needed and releases the link and its service.
    virtual void releaseLink() = 0;
    virtual bool hasLink() const = 0;
    // A link exists and is not unconnected.
    virtual bool isLinkOpen() const = 0;
    virtual void discoverServices() = 0;
    // Creates the service object and discovers its details; false if there is no such service.
    virtual bool openService(const QString& serviceUuid) = 0;
    virtual void releaseService() = 0;
    virtual bool hasService() const = 0;
    virtual bool hasCharacteristic(const QString& uuid) const = 0;
    // Writes 01 00 to the characteristic's configuration descriptor; false if it has none.
    virtual bool enableNotifications(const QString& characteristicUuid) = 0;
    virtual void writeCharacteristic(const QString& characteristicUuid, const QByteArray& data) = 0;

signals:
    void signalDeviceDiscovered(BleTransport::Device device);
    void signalDiscoveryFinished();
    void signalDiscoveryError(QString error);
    void signalSystemDeviceConnected(QString address);
    void signalLinkConnected();
    void signalLinkError(QString error);
    void signalLinkDisconnected();
    // Whatever isLinkOpen() answers may have changed.
    void signalLinkStateChanged();
    void signalServiceDiscovered(QString uuid);
    void signalServiceScanDone();
    void signalServiceState(int state);
    void signalNotification(QString characteristicUuid, QByteArray value);
};
