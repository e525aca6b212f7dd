#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>

class QTcpServer;
class QTcpSocket;

// A speech gateway on loopback for client tests: a control port that answers the server
// list with its SDK ports, and SDK ports that keep every frame they get and answer the
// parameters as told. Event lines are pushed by the test.
class FakeSpeechGateway : public QObject {
    Q_OBJECT

public:
    enum ParamsAnswer { Accept, Refuse, Silent };
    struct Frame {
        quint32 type;
        QByteArray payload;
    };

    explicit FakeSpeechGateway(QObject* parent = nullptr);

    bool start(const QList<int>& counts);  // one SDK port per count
    quint16 controlPort() const;
    QList<quint16> sdkPorts() const;
    void setCounts(const QList<int>& counts);
    void setParamsAnswer(ParamsAnswer answer) { mParamsAnswer = answer; }
    void closeControl();
    // The server list and each line go out in two pieces, the second 30 ms later.
    void setSplitWrites(bool split) { mSplit = split; }

    QList<Frame> frames;      // every frame on every SDK port, in order
    int controlRequests = 0;  // server-list requests seen
    QList<quint16> sdkConnections;

    // A line to the client on the SDK port it is connected to.
    void sendEvent(int type, int code = 0, const QString& data = QString());
    // Bytes as they are, on the same socket; false once the client has gone.
    bool sendRaw(const QByteArray& bytes);
    static QString result(const QString& text);

private:
    void onSdkData(QTcpSocket* socket);
    void writeTo(QTcpSocket* socket, const QByteArray& bytes);

    QTcpServer* mControl;
    QList<QTcpServer*> mSdk;
    QList<int> mCounts;
    QTcpSocket* mClient = nullptr;
    QByteArray mBuffer;
    ParamsAnswer mParamsAnswer = Accept;
    bool mSplit = false;
};
