#include "FakeSpeechGateway.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QtEndian>

FakeSpeechGateway::FakeSpeechGateway(QObject* parent) : QObject(parent), mControl(new QTcpServer(this))
{
    connect(mControl, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = mControl->nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                if (socket->readAll().startsWith(QByteArray::fromHex("5a5b6c0300000000"))) {
                    ++controlRequests;
                    QJsonArray list;
                    for (int i = 0; i < mSdk.size(); ++i) {
                        list.append(QJsonObject{{QStringLiteral("port"), mSdk.at(i)->serverPort()},
                                                {QStringLiteral("count"), mCounts.value(i)}});
                    }
                    writeTo(socket, QJsonDocument(list).toJson(QJsonDocument::Compact));
                }
            });
        }
    });
}

bool FakeSpeechGateway::start(const QList<int>& counts)
{
    mCounts = counts;
    if (!mControl->listen(QHostAddress::LocalHost, 0)) {
        return false;
    }
    for (int i = 0; i < counts.size(); ++i) {
        auto* server = new QTcpServer(this);
        if (!server->listen(QHostAddress::LocalHost, 0)) {
            return false;
        }
        const quint16 port = server->serverPort();
        connect(server, &QTcpServer::newConnection, this, [this, server, port] {
            while (QTcpSocket* socket = server->nextPendingConnection()) {
                mClient = socket;
                mBuffer.clear();
                sdkConnections << port;
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onSdkData(socket); });
            }
        });
        mSdk << server;
    }
    return true;
}

quint16 FakeSpeechGateway::controlPort() const
{
    return mControl->serverPort();
}

QList<quint16> FakeSpeechGateway::sdkPorts() const
{
    QList<quint16> ports;
    for (const QTcpServer* s : mSdk) {
        ports << s->serverPort();
    }
    return ports;
}

void FakeSpeechGateway::setCounts(const QList<int>& counts)
{
    mCounts = counts;
}

void FakeSpeechGateway::closeControl()
{
    mControl->close();
}

void FakeSpeechGateway::onSdkData(QTcpSocket* socket)
{
    if (socket != mClient) {
        socket->readAll();
        return;
    }
    mBuffer.append(socket->readAll());
    // Frames are taken from a moving offset and the buffer cut once: a read of megabytes holds
    // a thousand frames.
    int at = 0;
    while (mBuffer.size() - at >= 8) {
        const quint32 type = qFromBigEndian<quint32>(mBuffer.constData() + at);
        const quint32 length = qFromBigEndian<quint32>(mBuffer.constData() + at + 4);
        if (static_cast<quint32>(mBuffer.size() - at) < 8 + length) {
            break;
        }
        frames.append({type, mBuffer.mid(at + 8, static_cast<int>(length))});
        at += 8 + static_cast<int>(length);
        if (type == 0x5A5B6C10 && mParamsAnswer != Silent) {
            sendEvent(56, mParamsAnswer == Accept ? 1 : 0);
        }
    }
    mBuffer.remove(0, at);
}

void FakeSpeechGateway::sendEvent(int type, int code, const QString& data)
{
    if (mClient == nullptr) {
        return;
    }
    QJsonObject line{
        {QStringLiteral("type"), type}, {QStringLiteral("code"), code}, {QStringLiteral("ack"), 0}};
    if (!data.isNull()) {
        line.insert(QStringLiteral("data"), data);
    }
    writeTo(mClient, QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
}

void FakeSpeechGateway::writeTo(QTcpSocket* socket, const QByteArray& bytes)
{
    if (!mSplit) {
        socket->write(bytes);
        return;
    }
    socket->write(bytes.left(bytes.size() / 2));
    socket->flush();
    QTimer::singleShot(30, socket, [socket, rest = bytes.mid(bytes.size() / 2)] { socket->write(rest); });
}

bool FakeSpeechGateway::sendRaw(const QByteArray& bytes)
{
    if (mClient == nullptr || mClient->state() != QAbstractSocket::ConnectedState) {
        return false;
    }
    mClient->write(bytes);
    return true;
}

QString FakeSpeechGateway::result(const QString& text)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonObject{{QStringLiteral("results_recognition"), QJsonArray{text}}})
            .toJson(QJsonDocument::Compact));
}
