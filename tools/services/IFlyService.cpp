#include "IFlyService.h"

#include "EngineFactory.h"
#include "Fault.h"
#include "IFlySession.h"
#include "ServicesLog.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QMessageAuthenticationCode>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrlQuery>
#include <QWebSocket>
#include <QWebSocketServer>

namespace {

constexpr int kMaxHandshakeBytes = 16384;

QDateTime parseHttpDate(const QString& text)
{
    // "Mon, 23 Nov 2026 10:00:00 GMT"; the zone word is taken as UTC, whichever it is.
    const QString withoutZone = text.section(QLatin1Char(' '), 0, 4);
    QDateTime time = QLocale(QLocale::English, QLocale::UnitedStates)
                         .toDateTime(withoutZone, QStringLiteral("ddd, dd MMM yyyy HH:mm:ss"));
    time.setTimeSpec(Qt::UTC);
    return time;
}

void refuse(QTcpSocket* socket, int status, const QString& reason)
{
    const QByteArray body =
        QJsonDocument(QJsonObject{{QStringLiteral("message"), reason}}).toJson(QJsonDocument::Compact);
    const char* text = status == 401 ? "Unauthorized" : status == 403 ? "Forbidden" : "Not Found";
    socket->write("HTTP/1.1 " + QByteArray::number(status) + ' ' + text +
                  "\r\nContent-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
                  "\r\nConnection: close\r\n\r\n" + body);
    socket->disconnectFromHost();
}

}  // namespace

IFlyService::IFlyService(const Fault* fault, const EngineFactory* engines, const Credentials& credentials,
                         QObject* parent)
    : QObject(parent),
      mFault(fault),
      mEngines(engines),
      mCredentials(credentials),
      mServer(new QTcpServer(this)),
      mWebSockets(new QWebSocketServer(QStringLiteral("iat"), QWebSocketServer::NonSecureMode, this))
{
    connect(mServer, &QTcpServer::newConnection, this, &IFlyService::onConnection);
    connect(mWebSockets, &QWebSocketServer::newConnection, this, &IFlyService::onWebSocket);
}

bool IFlyService::start(quint16 port, QString* error)
{
    if (!mServer->listen(QHostAddress::LocalHost, port)) {
        *error = QStringLiteral("ifly port %1: %2").arg(port).arg(mServer->errorString());
        return false;
    }
    mPort = mServer->serverPort();
    return true;
}

void IFlyService::setListening(bool listening)
{
    if (!listening) {
        mServer->close();
    } else if (!mServer->isListening()) {
        mServer->listen(QHostAddress::LocalHost, mPort);
    }
}

int IFlyService::checkHandshake(const QUrl& target, const QString& hostHeader, const Credentials& credentials,
                                const QDateTime& now, QString* reason)
{
    if (target.path() != QLatin1String("/v2/iat")) {
        *reason = QStringLiteral("no such path");
        return 404;
    }
    const QUrlQuery query(target);
    const QString host = query.queryItemValue(QStringLiteral("host"), QUrl::FullyDecoded);
    const QString date = query.queryItemValue(QStringLiteral("date"), QUrl::FullyDecoded);
    const QString authorization = QString::fromUtf8(QByteArray::fromBase64(
        query.queryItemValue(QStringLiteral("authorization"), QUrl::FullyDecoded).toLatin1()));
    const QDateTime sent = parseHttpDate(date);
    if (!sent.isValid() || qAbs(sent.secsTo(now)) > kMaxSkewSecs) {
        *reason = QStringLiteral(
            "HMAC signature cannot be verified, a valid date or x-date header is required "
            "for HMAC Authentication");
        return 403;
    }
    QHash<QString, QString> fields;
    const QRegularExpression field(QStringLiteral("(\\w+)=\"([^\"]*)\""));
    for (auto it = field.globalMatch(authorization); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        fields.insert(m.captured(1), m.captured(2));
    }
    const QString signedText =
        QStringLiteral("host: %1\ndate: %2\nGET %3 HTTP/1.1").arg(host, date, target.path());
    const QString expected = QString::fromLatin1(
        QMessageAuthenticationCode::hash(signedText.toUtf8(), credentials.apiSecret.toUtf8(),
                                         QCryptographicHash::Sha256)
            .toBase64());
    if (fields.value(QStringLiteral("api_key")) != credentials.apiKey ||
        fields.value(QStringLiteral("algorithm")) != QLatin1String("hmac-sha256") ||
        fields.value(QStringLiteral("headers")) != QLatin1String("host date request-line") ||
        fields.value(QStringLiteral("signature")) != expected ||
        host != hostHeader.section(QLatin1Char(':'), 0, 0)) {
        *reason = QStringLiteral("HMAC signature does not match");
        return 401;
    }
    return 0;
}

void IFlyService::onConnection()
{
    while (QTcpSocket* socket = mServer->nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        if (mFault->refuse) {
            socket->abort();
            continue;
        }
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onHandshakeData(socket); });
    }
}

void IFlyService::onHandshakeData(QTcpSocket* socket)
{
    // Peek, so that the web socket server still finds the whole request once accepted.
    const QByteArray head = socket->peek(kMaxHandshakeBytes);
    const int end = head.indexOf("\r\n\r\n");
    if (end < 0) {
        if (head.size() >= kMaxHandshakeBytes) {
            socket->abort();
        }
        return;
    }
    disconnect(socket, &QTcpSocket::readyRead, this, nullptr);
    const QList<QByteArray> lines = head.left(end).split('\n');
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    QString hostHeader;
    for (const QByteArray& line : lines) {
        if (line.toLower().startsWith("host:")) {
            hostHeader = QString::fromLatin1(line.mid(5).trimmed());
        }
    }
    const QUrl target(QString::fromLatin1(requestLine.value(1)));
    QString reason;
    const int status =
        checkHandshake(target, hostHeader, mCredentials, QDateTime::currentDateTimeUtc(), &reason);
    if (status != 0) {
        qCWarning(lcServices).noquote() << "ifly: handshake refused with" << status << reason;
        refuse(socket, status, reason);
        return;
    }
    disconnect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    mWebSockets->handleConnection(socket);
    // The request is already buffered: no new readyRead would come to start the handshake.
    emit socket->readyRead();
}

void IFlyService::onWebSocket()
{
    while (QWebSocket* socket = mWebSockets->nextPendingConnection()) {
        ++mSessions;
        auto* session = new IFlySession(socket, mFault, mCredentials.appId, mEngines->create(), this);
        connect(session, &IFlySession::finished, session, &QObject::deleteLater);
    }
}
