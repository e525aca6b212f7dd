#include "IFlySession.h"

#include "Fault.h"
#include "ServicesLog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>
#include <QWebSocket>

namespace {
int sessionNumber = 0;
}

IFlySession::IFlySession(QWebSocket* socket, const Fault* fault, const QString& appId,
                         std::unique_ptr<RecognitionEngine> engine, QObject* parent)
    : QObject(parent),
      mSocket(socket),
      mFault(fault),
      mAppId(appId),
      mEngine(std::move(engine)),
      mSid(QStringLiteral("iat%1@standin").arg(++sessionNumber, 6, 10, QLatin1Char('0')))
{
    socket->setParent(this);
    connect(socket, &QWebSocket::textMessageReceived, this, &IFlySession::onText);
    connect(socket, &QWebSocket::disconnected, this, &IFlySession::finished);
}

void IFlySession::onText(const QString& text)
{
    if (mEnded) {
        return;
    }
    const QJsonObject frame = QJsonDocument::fromJson(text.toUtf8()).object();
    const QJsonObject data = frame.value(QLatin1String("data")).toObject();
    if (!mStarted) {
        const QString appId =
            frame.value(QLatin1String("common")).toObject().value(QLatin1String("app_id")).toString();
        if (appId != mAppId || !frame.value(QLatin1String("business")).isObject()) {
            qCWarning(lcServices).noquote() << "ifly: first frame with app id" << appId << "refused";
            reply(QJsonObject{{QStringLiteral("code"), 10105},
                              {QStringLiteral("message"), QStringLiteral("illegal access|invalid app_id")},
                              {QStringLiteral("sid"), mSid}});
            mEnded = true;
            mSocket->close();
            return;
        }
        mStarted = true;
        qCInfo(lcServices).noquote() << "ifly: session" << mSid;
        if (mFault->errorCode != 0) {
            reply(QJsonObject{{QStringLiteral("code"), mFault->errorCode.load()},
                              {QStringLiteral("message"), QStringLiteral("stand-in error")},
                              {QStringLiteral("sid"), mSid}});
            mEnded = true;
            mSocket->close();
            return;
        }
    }
    const QByteArray audio = QByteArray::fromBase64(data.value(QLatin1String("audio")).toString().toLatin1());
    sendResults(mEngine->feed(audio));
    if (data.value(QLatin1String("status")).toInt() == 2) {
        sendResults(mEngine->finish());
        reply(resultReply(QString(), true));
        mEnded = true;
    }
}

void IFlySession::sendResults(const QList<RecognitionEngine::Result>& results)
{
    for (const RecognitionEngine::Result& r : results) {
        qCInfo(lcServices).noquote() << "ifly:" << (r.final ? "final" : "partial") << r.text;
        reply(resultReply(r.text, false));
        if (r.final) {
            mSentenceOpen = false;
        }
    }
}

QJsonObject IFlySession::resultReply(const QString& text, bool last)
{
    QJsonObject result{{QStringLiteral("sn"), ++mSn},
                       {QStringLiteral("ls"), last},
                       {QStringLiteral("bg"), 0},
                       {QStringLiteral("ed"), 0}};
    if (last || !mSentenceOpen) {
        // "apd": what stood before is settled and this text follows it.
        result.insert(QStringLiteral("pgs"), QStringLiteral("apd"));
        mSentenceOpen = !last;
        mSentenceSn = mSn;
    } else {
        result.insert(QStringLiteral("pgs"), QStringLiteral("rpl"));
        result.insert(QStringLiteral("rg"), QJsonArray{mSentenceSn, mSn - 1});
    }
    QJsonArray ws;
    for (const QChar c : text) {
        ws.append(QJsonObject{
            {QStringLiteral("bg"), 0},
            {QStringLiteral("cw"),
             QJsonArray{QJsonObject{{QStringLiteral("sc"), 0}, {QStringLiteral("w"), QString(c)}}}}});
    }
    result.insert(QStringLiteral("ws"), ws);
    return QJsonObject{{QStringLiteral("code"), 0},
                       {QStringLiteral("message"), QStringLiteral("success")},
                       {QStringLiteral("sid"), mSid},
                       {QStringLiteral("data"), QJsonObject{{QStringLiteral("status"), last ? 2 : 1},
                                                            {QStringLiteral("result"), result}}}};
}

void IFlySession::reply(const QJsonObject& message)
{
    QString text = QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact));
    if (mFault->malformed) {
        text = text.left(text.size() / 2);
    }
    const bool last =
        message.value(QLatin1String("data")).toObject().value(QLatin1String("status")).toInt() == 2;
    const bool closeAfter = mFault->closeMidStream && !mReplied;
    mReplied = true;
    auto send = [this, text, last, closeAfter] {
        if (mSocket->state() != QAbstractSocket::ConnectedState) {
            return;
        }
        mSocket->sendTextMessage(text);
        if (closeAfter) {
            mSocket->flush();
            mSocket->abort();
        } else if (last) {
            mSocket->close();
        }
    };
    if (mFault->delayMs > 0) {
        QTimer::singleShot(mFault->delayMs.load(), this, send);
    } else {
        send();
    }
}
