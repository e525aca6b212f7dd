#pragma once

#include "RecognitionEngine.h"

#include <QObject>
#include <QString>

#include <memory>

class QJsonObject;
class QWebSocket;
struct Fault;

// One dictation connection. Every frame is checked as the service checks it: the first
// carries the app id, the business parameters and the first audio (status 0), the next ones
// only audio (status 1), the end frame status 2 and no audio; a frame that breaks a rule is
// answered with the service's error code and the connection closes. Audio is heard by the
// engine. With dynamic correction asked for (dwa "wpgs") every partial result goes back
// ("apd" opens a sentence, "rpl" with its range rewrites it); without it only whole
// sentences, with no pgs. The end frame closes the sentence, is answered with ls = true, and
// the server closes.
class IFlySession : public QObject {
    Q_OBJECT

public:
    IFlySession(QWebSocket* socket, const Fault* fault, const QString& appId,
                std::unique_ptr<RecognitionEngine> engine, QObject* parent = nullptr);

    static constexpr int kIllegalAppId = 10105;
    static constexpr int kInvalidParam = 10163;
    // The error code for a frame the service refuses (reason filled), or 0. first: no frame
    // came before it on this connection.
    static int checkFrame(const QJsonObject& frame, bool first, const QString& appId, QString* reason);

signals:
    void finished();

private:
    void onText(const QString& text);
    void refuse(int code, const QString& reason);
    void sendResults(const QList<RecognitionEngine::Result>& results);
    void reply(const QJsonObject& message);
    QJsonObject resultReply(const QString& text, bool last);

    QWebSocket* mSocket;
    const Fault* mFault;
    QString mAppId;
    std::unique_ptr<RecognitionEngine> mEngine;
    QString mSid;
    bool mStarted = false;
    bool mEnded = false;
    bool mReplied = false;
    bool mSentenceOpen = false;
    bool mDynamic = false;
    int mSn = 0;
    int mSentenceSn = 0;
};
