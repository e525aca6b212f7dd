#include "LocalHttpServer.h"

#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

LocalHttpServer::LocalHttpServer(QObject* parent) : QObject(parent), mServer(new QTcpServer(this))
{
    connect(mServer, &QTcpServer::newConnection, this, &LocalHttpServer::onConnection);
}

bool LocalHttpServer::start()
{
    return mServer->listen(QHostAddress::LocalHost, 0);
}

QUrl LocalHttpServer::url(const QString& pathAndQuery) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(mServer->serverPort()).arg(pathAndQuery));
}

void LocalHttpServer::setAnswer(const QString& path, const Answer& answer)
{
    mAnswers.insert(path, answer);
}

QList<LocalHttpServer::Request> LocalHttpServer::requests() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mRequests;
}

void LocalHttpServer::onConnection()
{
    while (QTcpSocket* socket = mServer->nextPendingConnection()) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            mBuffers.remove(socket);
            socket->deleteLater();
        });
    }
}

void LocalHttpServer::onReadyRead(QTcpSocket* socket)
{
    QByteArray& buffer = mBuffers[socket];
    buffer.append(socket->readAll());
    for (;;) {
        const int headerEnd = buffer.indexOf("\r\n\r\n");
        if (headerEnd < 0) {
            return;
        }
        Request request;
        const QList<QByteArray> lines = buffer.left(headerEnd).split('\n');
        const QList<QByteArray> start = lines.value(0).trimmed().split(' ');
        request.method = start.value(0);
        request.target = start.value(1);
        for (int i = 1; i < lines.size(); ++i) {
            const int colon = lines.at(i).indexOf(':');
            if (colon > 0) {
                request.headers.insert(lines.at(i).left(colon).trimmed().toLower(),
                                       lines.at(i).mid(colon + 1).trimmed());
            }
        }
        const int length = request.headers.value("content-length", "0").toInt();
        if (buffer.size() < headerEnd + 4 + length) {
            return;
        }
        request.body = buffer.mid(headerEnd + 4, length);
        buffer.remove(0, headerEnd + 4 + length);
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mRequests.append(request);
        }
        respond(socket, request);
    }
}

void LocalHttpServer::respond(QTcpSocket* socket, const Request& request)
{
    const QString path = QString::fromUtf8(request.target).section(QLatin1Char('?'), 0, 0);
    Answer answer;
    if (mAnswers.contains(path)) {
        answer = mAnswers.value(path);
    } else {
        answer.status = 404;
        answer.body = "not found";
    }
    if (answer.echoTarget) {
        answer.body = request.target;
    }
    QByteArray response = "HTTP/1.1 " + QByteArray::number(answer.status) + " X\r\n";
    response += "Content-Type: " + answer.contentType + "\r\n";
    response += "Content-Length: " + QByteArray::number(answer.body.size()) + "\r\n";
    if (!answer.location.isEmpty()) {
        response += "Location: " + answer.location + "\r\n";
    }
    response += "Connection: keep-alive\r\n\r\n";
    response += answer.body;
    QPointer<QTcpSocket> guarded(socket);
    QTimer::singleShot(answer.delayMs, this, [guarded, response] {
        if (guarded) {
            guarded->write(response);
        }
    });
}
