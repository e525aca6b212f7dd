#include "SimServer.h"

#include "Hid/VirtualDeviceConnection.h"

#include "Utils/SocketPath.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>

namespace {
constexpr int kMaxFrame = 0xFFFF;
}

SimServer::SimServer(SimDevice* device, int vid, int pid, QObject* parent)
    : QObject(parent), mDevice(device), mVid(vid), mPid(pid), mServer(new QLocalServer(this))
{
    connect(mServer, &QLocalServer::newConnection, this, &SimServer::onNewConnection);
}

bool SimServer::listen(const QString& socketPath)
{
    // A bare name lands in the temporary folder, as the local server would put it.
    const QString fullPath = socketPath.startsWith(QLatin1Char('/'))
                                 ? socketPath
                                 : QDir::cleanPath(QDir::tempPath()) + QLatin1Char('/') + socketPath;
    mError = SocketPath::tooLong(fullPath);
    if (!mError.isEmpty()) {
        return false;
    }
    QLocalServer::removeServer(socketPath);
    mServer->setSocketOptions(QLocalServer::UserAccessOption);
    return mServer->listen(socketPath);
}

QString SimServer::errorString() const
{
    return mError.isEmpty() ? mServer->errorString() : mError;
}

QString SimServer::vendorPath() const
{
    return QStringLiteral("sim:receiver:vendor");
}

QByteArray SimServer::interfacesPayload() const
{
    QByteArray payload;
    if (!mPlugged) {
        payload.append('\0');
        return payload;
    }
    // Like the real receiver: a mouse interface before the one that carries records.
    struct Entry {
        QString path;
        int usagePage;
    };
    const Entry entries[] = {{QStringLiteral("sim:receiver:mouse"), 0x0001}, {vendorPath(), 0xFF00}};
    payload.append(static_cast<char>(2));
    for (const Entry& e : entries) {
        const QByteArray path = e.path.toUtf8();
        const int values[] = {mVid, mPid, e.usagePage};
        for (int v : values) {
            payload.append(static_cast<char>(v & 0xFF));
            payload.append(static_cast<char>((v >> 8) & 0xFF));
        }
        payload.append(static_cast<char>(path.size()));
        payload.append(path);
    }
    return payload;
}

void SimServer::setPlugged(bool plugged)
{
    if (mPlugged == plugged) {
        return;
    }
    mPlugged = plugged;
    if (!plugged && mOpenBy != nullptr) {
        sendFrame(mOpenBy, VirtualDeviceConnection::HidGone, QByteArray());
        mOpenBy = nullptr;
        emit signalOpened(false);
    }
    if (!plugged && mAudioClient != nullptr) {
        mAudioClient = nullptr;
        emit signalRecording(false);
    }
    for (QLocalSocket* client : qAsConst(mClients)) {
        sendFrame(client, VirtualDeviceConnection::HidInterfaces, interfacesPayload());
        sendFrame(client, VirtualDeviceConnection::AudioInputs, audioInputName().toUtf8());
    }
    emit signalPlugged(plugged);
}

bool SimServer::sendRecord(const st_small_base_com_msg& msg)
{
    // Attached over Bluetooth, the mouse talks there; else through the receiver.
    if (isBleAttached()) {
        return sendBlePacket(msg.toByteArray(20));
    }
    if (mOpenBy == nullptr) {
        return false;
    }
    sendFrame(mOpenBy, VirtualDeviceConnection::HidInput, msg.toByteArray());
    return true;
}

void SimServer::onNewConnection()
{
    while (QLocalSocket* socket = mServer->nextPendingConnection()) {
        mClients.append(socket);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] {
            mClients.removeAll(socket);
            mBuffers.remove(socket);
            if (mOpenBy == socket) {
                mOpenBy = nullptr;
                emit signalOpened(false);
            }
            if (mAudioClient == socket) {
                mAudioClient = nullptr;
                emit signalRecording(false);
            }
            if (mBleClient == socket) {
                mBleClient = nullptr;
                mBleNotify = false;
                emit signalBleAttached(false);
            }
            socket->deleteLater();
            emit signalClients(clientCount());
        });
        sendFrame(socket, VirtualDeviceConnection::HidInterfaces, interfacesPayload());
        sendFrame(socket, VirtualDeviceConnection::AudioInputs, audioInputName().toUtf8());
        sendFrame(socket, VirtualDeviceConnection::BleSystemDevices, bleSystemDevices());
        emit signalClients(clientCount());
    }
}

void SimServer::onReadyRead(QLocalSocket* socket)
{
    // Frames may arrive split or several at once.
    QByteArray& buffer = mBuffers[socket];
    buffer.append(socket->readAll());
    while (buffer.size() >= 3) {
        const int length = static_cast<quint8>(buffer.at(1)) | (static_cast<quint8>(buffer.at(2)) << 8);
        if (buffer.size() < 3 + length) {
            break;
        }
        const int channel = static_cast<quint8>(buffer.at(0));
        const QByteArray payload = buffer.mid(3, length);
        buffer.remove(0, 3 + length);
        handleFrame(socket, channel, payload);
    }
}

void SimServer::handleFrame(QLocalSocket* socket, int channel, const QByteArray& payload)
{
    switch (channel) {
        case VirtualDeviceConnection::HidOpen:
            if (mPlugged && QString::fromUtf8(payload) == vendorPath()) {
                mOpenBy = socket;
                emit signalOpened(true);
            }
            break;
        case VirtualDeviceConnection::HidClose:
            if (mOpenBy == socket) {
                mOpenBy = nullptr;
                emit signalOpened(false);
            }
            break;
        case VirtualDeviceConnection::HidOutput: {
            if (mOpenBy != socket) {
                break;
            }
            emit signalOutput(payload);
            const st_small_base_com_msg request = st_small_base_com_msg::fromBytes(payload);
            for (const st_small_base_com_msg& reply : mDevice->handleRequest(request)) {
                sendRecord(reply);
            }
            break;
        }
        case VirtualDeviceConnection::AudioStart:
            if (mPlugged && QString::fromUtf8(payload) == audioInputName()) {
                mAudioClient = socket;
                emit signalRecording(true);
            }
            break;
        case VirtualDeviceConnection::AudioStop:
            if (mAudioClient == socket) {
                mAudioClient = nullptr;
                emit signalRecording(false);
            }
            break;
        case VirtualDeviceConnection::BleScanStart:
            // The mouse advertises whenever it is on.
            sendFrame(socket, VirtualDeviceConnection::BleAdvert,
                      (bleAddress() + QStringLiteral("\nSorbeta")).toUtf8());
            sendFrame(socket, VirtualDeviceConnection::BleScanDone, QByteArray());
            break;
        case VirtualDeviceConnection::BleConnect: {
            // The payload is the address and a tag line; answers carry it back.
            const QString address = QString::fromUtf8(payload).section(QLatin1Char('\n'), 0, 0);
            if (mBleConnected && address == bleAddress() && (mBleClient == nullptr || mBleClient == socket)) {
                mBleClient = socket;
                mBleNotify = false;
                sendFrame(socket, VirtualDeviceConnection::BleLinkUp, payload);
            } else {
                sendFrame(socket, VirtualDeviceConnection::BleLinkError,
                          payload + "\nthe mouse does not answer");
            }
            break;
        }
        case VirtualDeviceConnection::BleEnableNotify:
            if (mBleClient == socket && !mBleNotify) {
                mBleNotify = true;
                emit signalBleAttached(true);
            }
            break;
        case VirtualDeviceConnection::BleDisconnect:
            if (mBleClient == socket) {
                const bool wasAttached = mBleNotify;
                mBleClient = nullptr;
                mBleNotify = false;
                if (wasAttached) {
                    emit signalBleAttached(false);
                }
            }
            break;
        case VirtualDeviceConnection::BleWrite:
            if (mBleClient == socket) {
                emit signalOutput(payload);
                for (const st_small_base_com_msg& reply :
                     mDevice->handleRequest(st_small_base_com_msg::fromBytes(payload))) {
                    sendRecord(reply);
                }
            }
            break;
        default:
            break;
    }
}

QString SimServer::bleAddress()
{
    return QStringLiteral("C8:47:8C:5A:01:02");
}

QByteArray SimServer::bleSystemDevices() const
{
    return mBleConnected ? bleAddress().toUtf8() : QByteArray();
}

void SimServer::dropBleClient()
{
    if (mBleClient != nullptr) {
        sendFrame(mBleClient, VirtualDeviceConnection::BleLinkDown, QByteArray());
        const bool wasAttached = mBleNotify;
        mBleClient = nullptr;
        mBleNotify = false;
        if (wasAttached) {
            emit signalBleAttached(false);
        }
    }
}

void SimServer::setBleConnected(bool connected)
{
    if (mBleConnected == connected) {
        return;
    }
    mBleConnected = connected;
    if (!connected) {
        dropBleClient();
    }
    for (QLocalSocket* client : qAsConst(mClients)) {
        sendFrame(client, VirtualDeviceConnection::BleSystemDevices, bleSystemDevices());
    }
    emit signalBleConnected(connected);
}

bool SimServer::sendBlePacket(const QByteArray& packet)
{
    if (!isBleAttached()) {
        return false;
    }
    sendFrame(mBleClient, VirtualDeviceConnection::BleNotify, packet);
    return true;
}

QString SimServer::audioInputName() const
{
    return mPlugged ? QStringLiteral("Pelnica USB Receiver") : QString();
}

bool SimServer::sendPcm(const QByteArray& pcm)
{
    if (mAudioClient == nullptr) {
        return false;
    }
    sendFrame(mAudioClient, VirtualDeviceConnection::AudioPcm, pcm);
    return true;
}

void SimServer::sendFrame(QLocalSocket* socket, int channel, const QByteArray& payload)
{
    if (payload.size() <= kMaxFrame) {
        socket->write(VirtualDeviceConnection::frame(channel, payload));
    }
}
