#pragma once

#include "Hid/BleTransport.h"

#include <QList>
#include <QPair>

#include <memory>
#include <mutex>

class VirtualDeviceConnection;

// The mouse over Bluetooth as the virtual device (tools/mouse-sim) plays it. Frames read on
// the socket's thread are queued and handed to this object's thread, where the signals go out.
class VirtualBleTransport : public BleTransport {
    Q_OBJECT

public:
    explicit VirtualBleTransport(const QString& socketPath, QObject* parent = nullptr);
    ~VirtualBleTransport() override;

    QStringList connectedAddresses() override;
    void startDiscovery() override;
    void stopDiscovery() override;
    void connectToDevice(const QString& address) override;
    void releaseLink() override;
    bool hasLink() const override { return mLink; }
    bool isLinkOpen() const override { return mLink && mLinkUp; }
    void discoverServices() override;
    bool openService(const QString& serviceUuid) override;
    void releaseService() override { mService = false; }
    bool hasService() const override { return mService; }
    bool hasCharacteristic(const QString& uuid) const override;
    bool enableNotifications(const QString& characteristicUuid) override;
    void writeCharacteristic(const QString& characteristicUuid, const QByteArray& data) override;

private slots:
    void deliverFrames();

private:
    void onFrame(int channel, const QByteArray& payload);

    std::mutex mMutex;
    QList<QPair<int, QByteArray>> mFrames;  // from the socket's thread
    QStringList mSystemDevices;

    // This object's thread: what the system's list held last time (only addresses new to it
    // are connections) and whether a scan runs (a cancelled one reports nothing more).
    QStringList mAnnounced;
    bool mDiscovering = false;

    bool mLink = false;
    int mAttempt = 0;        // numbers the connects, so a late answer to an old one is ignored
    QByteArray mConnectTag;  // "address\nattempt" of the link in use
    bool mLinkUp = false;
    bool mService = false;
    std::unique_ptr<VirtualDeviceConnection> mConnection;
};
