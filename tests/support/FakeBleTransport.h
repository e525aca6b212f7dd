#pragma once

#include "Hid/BleTransport.h"

#include <QThread>

#include <atomic>

// A scripted Bluetooth stack: the test says which devices the system holds, what a scan
// finds, and answers connects itself through the signals; every call is logged.
class FakeBleTransport : public BleTransport {
    Q_OBJECT

public:
    QStringList systemConnected;
    QStringList calls;  // "connect AA:..", "release", "discover", "service <uuid>", "notify", "stop scan"
    QList<QByteArray> writes;
    QList<QThread*> writeThreads;
    bool link = false;
    bool service = false;
    bool hasNotifyDescriptor = true;
    // Calls on the link from another thread than the transport's: the Bluetooth stack is not
    // made for them.
    mutable std::atomic<int> offThreadCalls{0};

    QStringList connectedAddresses() override { return systemConnected; }
    void startDiscovery() override { calls << QStringLiteral("scan"); }
    void stopDiscovery() override { calls << QStringLiteral("stop scan"); }
    void connectToDevice(const QString& address) override;
    void releaseLink() override;
    bool hasLink() const override;
    bool isLinkOpen() const override;
    void discoverServices() override { calls << QStringLiteral("discover"); }
    bool openService(const QString& serviceUuid) override;
    void releaseService() override { service = false; }
    bool hasService() const override { return service; }
    bool hasCharacteristic(const QString& uuid) const override;
    bool enableNotifications(const QString& characteristicUuid) override;
    void writeCharacteristic(const QString& characteristicUuid, const QByteArray& data) override;

    // The whole attach answered as a mouse would.
    void answerAttach();
};
