#pragma once

#include <QObject>
#include <QUrl>

class QTcpServer;
class QTcpSocket;

// An HTTP server on loopback that answers every request with a body that does not end: as
// fast as the client takes it, chunked or under an announced length, until `cap` bytes have
// gone out (then a chunked body ends properly, so that a client without a limit would take it
// whole). Tells how much went out and whether the client hung up first. One client at a time.
class FloodHttpServer : public QObject {
    Q_OBJECT

public:
    // announcedLength < 0: chunked.
    explicit FloodHttpServer(qint64 announcedLength = -1, qint64 cap = 96 * 1024 * 1024,
                             QObject* parent = nullptr);

    bool start();
    QUrl url(const QString& path) const;

    qint64 bytesSent() const { return mSent; }
    bool clientHungUp() const { return mHungUp; }

private:
    void onConnection();
    void pump();

    QTcpServer* mServer;
    QTcpSocket* mClient = nullptr;
    QByteArray mRequest;
    qint64 mAnnounced;
    qint64 mCap;
    qint64 mSent = 0;
    bool mAnswering = false;
    bool mHungUp = false;
};
