#include "FloodHttpServer.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace {
constexpr int kChunk = 64 * 1024;
constexpr qint64 kQueued = 1024 * 1024;
}  // namespace

FloodHttpServer::FloodHttpServer(qint64 announcedLength, qint64 cap, QObject* parent)
    : QObject(parent), mServer(new QTcpServer(this)), mAnnounced(announcedLength), mCap(cap)
{
    connect(mServer, &QTcpServer::newConnection, this, &FloodHttpServer::onConnection);
}

bool FloodHttpServer::start()
{
    return mServer->listen(QHostAddress::LocalHost, 0);
}

QUrl FloodHttpServer::url(const QString& path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(mServer->serverPort()).arg(path));
}

void FloodHttpServer::onConnection()
{
    mClient = mServer->nextPendingConnection();
    mRequest.clear();
    mAnswering = false;
    connect(mClient, &QTcpSocket::readyRead, this, [this] {
        mRequest += mClient->readAll();
        if (mAnswering || !mRequest.contains("\r\n\r\n")) {
            return;
        }
        mAnswering = true;
        QByteArray head = "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n";
        head += mAnnounced < 0 ? QByteArray("Transfer-Encoding: chunked\r\n")
                               : "Content-Length: " + QByteArray::number(mAnnounced) + "\r\n";
        mClient->write(head + "\r\n");
        pump();
    });
    connect(mClient, &QTcpSocket::bytesWritten, this, &FloodHttpServer::pump);
    connect(mClient, &QTcpSocket::disconnected, this, [this] {
        if (mSent < mCap) {
            mHungUp = true;
        }
    });
}

void FloodHttpServer::pump()
{
    const QByteArray piece(kChunk, 'x');
    while (mClient->state() == QAbstractSocket::ConnectedState && mClient->bytesToWrite() < kQueued &&
           mSent < mCap) {
        if (mAnnounced < 0) {
            mClient->write(QByteArray::number(kChunk, 16) + "\r\n" + piece + "\r\n");
        } else {
            mClient->write(piece);
        }
        mSent += kChunk;
        if (mSent >= mCap && mAnnounced < 0) {
            mClient->write("0\r\n\r\n");
        }
    }
}
