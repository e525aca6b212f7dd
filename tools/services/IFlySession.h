#pragma once

#include "RecognitionEngine.h"

#include <QObject>
#include <QString>

#include <memory>

class QJsonObject;
class QWebSocket;
struct Fault;

// One dictation connection: the first frame must name the right app id and carry the
// business parameters; audio frames are heard by the engine; every result goes back as a
// dynamic-correction reply ("apd" opens a sentence, "rpl" with its range rewrites it). The
// end frame closes the sentence, is answered with ls = true, and the server closes.
class IFlySession : public QObject {
    Q_OBJECT

public:
    IFlySession(QWebSocket* socket, const Fault* fault, const QString& appId,
                std::unique_ptr<RecognitionEngine> engine, QObject* parent = nullptr);

signals:
    void finished();

private:
    void onText(const QString& text);
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
    int mSn = 0;
    int mSentenceSn = 0;
};
