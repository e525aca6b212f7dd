#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QUrl>

class EngineFactory;
class QTcpServer;
class QTcpSocket;
class QWebSocketServer;
struct Fault;

// The dictation web socket at /v2/iat. The handshake is read before it is accepted: a wrong
// path gets 404, a signature that does not match the API secret gets 401 and a date more than
// five minutes off gets 403, as plain HTTP answers, the way the real service refuses.
class IFlyService : public QObject {
    Q_OBJECT

public:
    struct Credentials {
        QString appId;
        QString apiKey;
        QString apiSecret;
    };
    static constexpr int kMaxSkewSecs = 300;

    IFlyService(const Fault* fault, const EngineFactory* engines, const Credentials& credentials,
                QObject* parent = nullptr);

    bool start(quint16 port, QString* error);
    void setListening(bool listening);
    quint16 port() const { return mPort; }
    int sessionCount() const { return mSessions; }

    // 0 when the handshake may go on, else the HTTP status it is refused with (reason filled).
    static int checkHandshake(const QUrl& target, const QString& hostHeader, const Credentials& credentials,
                              const QDateTime& now, QString* reason);

private:
    void onConnection();
    void onHandshakeData(QTcpSocket* socket);
    void onWebSocket();

    const Fault* mFault;
    const EngineFactory* mEngines;
    Credentials mCredentials;
    QTcpServer* mServer;
    QWebSocketServer* mWebSockets;
    quint16 mPort = 0;
    int mSessions = 0;
};
