#pragma once

#include "SimDevice.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>

class QLocalServer;
class QLocalSocket;

// Serves the virtual device socket: shows the receiver's interfaces while it is plugged in,
// answers the records the application writes and sends the device's events.
class SimServer : public QObject {
    Q_OBJECT

public:
    SimServer(SimDevice* device, int vid, int pid, QObject* parent = nullptr);

    bool listen(const QString& socketPath);
    QString errorString() const;

    void setPlugged(bool plugged);
    bool isPlugged() const { return mPlugged; }
    // Sends a record as an input report when the application has the receiver open.
    bool sendRecord(const st_small_base_com_msg& msg);

    // The HidInterfaces payload for the current plug state.
    QByteArray interfacesPayload() const;
    // The receiver's audio input name while plugged in.
    QString audioInputName() const;
    // Captured audio for the application, if it is recording; false otherwise.
    bool sendPcm(const QByteArray& pcm);
    bool isRecording() const { return mAudioClient != nullptr; }

    // The mouse over Bluetooth: whether the system holds a connection to it, and whether the
    // application is attached with notifications on.
    static QString bleAddress();
    void setBleConnected(bool connected);
    bool isBleConnected() const { return mBleConnected; }
    // Applications connected to the socket now.
    int clientCount() const { return static_cast<int>(mClients.size()); }
    bool isBleAttached() const { return mBleClient != nullptr && mBleNotify; }
    // One notification (an audio packet) to the attached application.
    bool sendBlePacket(const QByteArray& packet);

signals:
    // Every record the application wrote, as it reached the receiver (31 bytes).
    void signalOutput(QByteArray bytes);
    void signalOpened(bool open);
    void signalRecording(bool recording);
    void signalBleAttached(bool attached);
    void signalPlugged(bool plugged);
    void signalBleConnected(bool connected);
    void signalClients(int count);

private:
    void onNewConnection();
    void onReadyRead(QLocalSocket* socket);
    void handleFrame(QLocalSocket* socket, int channel, const QByteArray& payload);
    void sendFrame(QLocalSocket* socket, int channel, const QByteArray& payload);
    QString vendorPath() const;
    QByteArray bleSystemDevices() const;
    void dropBleClient();

    SimDevice* mDevice;
    int mVid;
    int mPid;
    bool mPlugged = true;
    QLocalServer* mServer;
    QString mError;  // why listen() refused before asking the server
    QList<QLocalSocket*> mClients;
    QHash<QLocalSocket*, QByteArray> mBuffers;
    QLocalSocket* mOpenBy = nullptr;
    QLocalSocket* mAudioClient = nullptr;
    bool mBleConnected = false;
    QLocalSocket* mBleClient = nullptr;
    bool mBleNotify = false;
};
