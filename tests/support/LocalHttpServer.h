#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QUrl>

#include <mutex>

class QTcpServer;
class QTcpSocket;

// A small HTTP/1.1 server on loopback for client tests: scripted answers per path (status,
// body, delay), and a record of every request. Lives on the thread that creates it.
class LocalHttpServer : public QObject {
    Q_OBJECT

public:
    struct Answer {
        int status = 200;
        QByteArray body;
        int delayMs = 0;
        QByteArray contentType = "application/json";
        bool echoTarget = false;             // answer with the request's path and query instead of body
        QByteArray location = QByteArray();  // a Location header, for redirects
    };
    struct Request {
        QByteArray method;
        QByteArray target;                      // path and query as sent
        QHash<QByteArray, QByteArray> headers;  // lower-case names
        QByteArray body;
    };

    explicit LocalHttpServer(QObject* parent = nullptr);

    bool start();
    QUrl url(const QString& pathAndQuery = QString()) const;

    // Answers for a path (without query); unknown paths get 404.
    void setAnswer(const QString& path, const Answer& answer);
    QList<Request> requests() const;

private:
    void onConnection();
    void onReadyRead(QTcpSocket* socket);
    void respond(QTcpSocket* socket, const Request& request);

    QTcpServer* mServer;
    QHash<QTcpSocket*, QByteArray> mBuffers;
    QHash<QString, Answer> mAnswers;
    mutable std::mutex mMutex;
    QList<Request> mRequests;
};
