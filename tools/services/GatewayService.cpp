#include "GatewayService.h"

#include "EngineFactory.h"
#include "Fault.h"
#include "ServicesLog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>

GatewayService::GatewayService(const Fault* fault, const EngineFactory* engines, QObject* parent)
    : QObject(parent), mFault(fault), mEngines(engines), mControl(new QTcpServer(this))
{
    connect(mControl, &QTcpServer::newConnection, this, &GatewayService::onControlConnection);
}

bool GatewayService::parseParamsAnswers(const QString& text, QList<GatewaySession::ParamsAnswer>* answers,
                                        QString* error)
{
    answers->clear();
    for (const QString& word : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        if (word == QLatin1String("accept")) {
            answers->append(GatewaySession::Accept);
        } else if (word == QLatin1String("refuse")) {
            answers->append(GatewaySession::Refuse);
        } else if (word == QLatin1String("silent")) {
            answers->append(GatewaySession::Silent);
        } else {
            *error = QStringLiteral("parameter answer must be accept, refuse or silent: %1").arg(word);
            return false;
        }
    }
    return true;
}

bool GatewayService::parseCounts(const QString& text, QList<int>* counts, QString* error)
{
    counts->clear();
    for (const QString& word : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool ok = false;
        const int count = word.toInt(&ok);
        if (!ok || count < 0) {
            *error = QStringLiteral("a count must be a number of 0 or more: %1").arg(word);
            return false;
        }
        counts->append(count);
    }
    if (counts->isEmpty()) {
        *error = QStringLiteral("at least one SDK port is needed");
        return false;
    }
    return true;
}

bool GatewayService::start(quint16 controlPort, QString* error)
{
    for (int i = 0; i < mCounts.size(); ++i) {
        auto* server = new QTcpServer(this);
        if (!server->listen(QHostAddress::LocalHost, 0)) {
            *error = server->errorString();
            return false;
        }
        connect(server, &QTcpServer::newConnection, this, [this, server, i] { onSdkConnection(server, i); });
        mSdk << server;
    }
    if (!mControl->listen(QHostAddress::LocalHost, controlPort)) {
        *error = QStringLiteral("gateway control port %1: %2").arg(controlPort).arg(mControl->errorString());
        return false;
    }
    mControlPort = mControl->serverPort();
    return true;
}

void GatewayService::setListening(bool listening)
{
    if (!listening) {
        mControl->close();
    } else if (!mControl->isListening()) {
        mControl->listen(QHostAddress::LocalHost, mControlPort);
    }
}

QList<quint16> GatewayService::sdkPorts() const
{
    QList<quint16> ports;
    for (const QTcpServer* server : mSdk) {
        ports << server->serverPort();
    }
    return ports;
}

QByteArray GatewayService::serverList() const
{
    if (mFault->malformed) {
        return QByteArrayLiteral("[{\"port\":");
    }
    QJsonArray list;
    for (int i = 0; i < mSdk.size(); ++i) {
        list.append(QJsonObject{{QStringLiteral("port"), mSdk.at(i)->serverPort()},
                                {QStringLiteral("count"), mCounts.value(i)}});
    }
    return QJsonDocument(list).toJson(QJsonDocument::Compact);
}

void GatewayService::onControlConnection()
{
    while (QTcpSocket* socket = mControl->nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            if (socket->bytesAvailable() < 8) {
                return;
            }
            // Every request on this port is the server-list frame; anything else is dropped.
            if (!socket->readAll().startsWith(QByteArray::fromHex("5a5b6c0300000000"))) {
                socket->abort();
                return;
            }
            const QByteArray reply = serverList();
            qCInfo(lcServices).noquote() << "gateway: server list" << reply;
            if (mFault->delayMs > 0) {
                QTimer::singleShot(mFault->delayMs.load(), socket, [socket, reply] { socket->write(reply); });
            } else {
                socket->write(reply);
            }
        });
    }
}

void GatewayService::onSdkConnection(QTcpServer* server, int index)
{
    while (QTcpSocket* socket = server->nextPendingConnection()) {
        ++mSessions;
        auto* session = new GatewaySession(socket, mAnswers.value(index, GatewaySession::Accept), mFault,
                                           mEngines->create(), this);
        connect(session, &GatewaySession::finished, session, &QObject::deleteLater);
    }
}
