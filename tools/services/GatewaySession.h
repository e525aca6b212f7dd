#pragma once

#include "RecognitionEngine.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <memory>

class QJsonObject;
class QTcpSocket;
struct Fault;

// One client on an SDK port: it reads the binary frames (parameters, audio, finish, end
// acknowledgement), hears the audio with its engine and answers with one JSON object per line.
// After a finish frame it waits a moment for the client's second one, then ends the session
// with ON_END, ON_END_ACK and ON_LONG_SPEECH_END.
class GatewaySession : public QObject {
    Q_OBJECT

public:
    enum ParamsAnswer { Accept, Refuse, Silent };
    static constexpr int kEndSettleMs = 250;
    static constexpr int kMaxFrameBytes = 1 << 20;

    GatewaySession(QTcpSocket* socket, ParamsAnswer answer, const Fault* fault,
                   std::unique_ptr<RecognitionEngine> engine, QObject* parent = nullptr);

    static QByteArray eventLine(int type, int code, const QString& data = QString());
    static QString resultDocument(const QString& text);

signals:
    void finished();

private:
    void onReadyRead();
    void handleFrame(quint32 type, const QByteArray& payload);
    void sendResults(const QList<RecognitionEngine::Result>& results);
    void send(const QByteArray& line, bool isResult);
    void endSession();

    QTcpSocket* mSocket;
    ParamsAnswer mAnswer;
    const Fault* mFault;
    std::unique_ptr<RecognitionEngine> mEngine;
    QByteArray mBuffer;
    QTimer mEndTimer;
    bool mAccepted = false;
    bool mResultSent = false;
    quint16 mPort = 0;
};
