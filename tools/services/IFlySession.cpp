#include "IFlySession.h"

#include "Fault.h"
#include "ServicesLog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>
#include <QWebSocket>

#include <cmath>

namespace {

int sessionNumber = 0;

const QString kFormat = QStringLiteral("audio/L16;rate=16000");

bool onlyKeys(const QJsonObject& object, const QStringList& allowed, QString* unknown)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!allowed.contains(it.key())) {
            *unknown = it.key();
            return false;
        }
    }
    return true;
}

}  // namespace

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

int IFlySession::checkFrame(const QJsonObject& frame, bool first, const QString& appId, QString* reason)
{
    auto invalid = [reason](const QString& what) {
        *reason = QStringLiteral("param validate error: ") + what;
        return kInvalidParam;
    };
    QString unknown;
    if (!onlyKeys(
            frame,
            first ? QStringList{QStringLiteral("common"), QStringLiteral("business"), QStringLiteral("data")}
                  : QStringList{QStringLiteral("data")},
            &unknown)) {
        return invalid(unknown + QStringLiteral(" not allowed here"));
    }
    if (first) {
        const QJsonObject common = frame.value(QLatin1String("common")).toObject();
        if (common.value(QLatin1String("app_id")).toString() != appId) {
            *reason = QStringLiteral("illegal access|invalid app_id");
            return kIllegalAppId;
        }
        if (!frame.value(QLatin1String("business")).isObject()) {
            return invalid(QStringLiteral("business missing"));
        }
        const QJsonObject business = frame.value(QLatin1String("business")).toObject();
        if (!onlyKeys(business,
                      {QStringLiteral("language"), QStringLiteral("accent"), QStringLiteral("domain"),
                       QStringLiteral("vad_eos"), QStringLiteral("dwa"), QStringLiteral("rlang")},
                      &unknown)) {
            return invalid(QStringLiteral("business.") + unknown + QStringLiteral(" unknown"));
        }
        const QString language = business.value(QLatin1String("language")).toString();
        if (language != QLatin1String("zh_cn") && language != QLatin1String("en_us")) {
            return invalid(QStringLiteral("business.language"));
        }
        const QString accent = business.value(QLatin1String("accent")).toString();
        if (accent != QLatin1String("mandarin") && accent != QLatin1String("cantonese") &&
            accent != QLatin1String("lmz")) {
            return invalid(QStringLiteral("business.accent"));
        }
        if (business.value(QLatin1String("domain")).toString() != QLatin1String("iat")) {
            return invalid(QStringLiteral("business.domain"));
        }
        // Milliseconds of silence that end the speech: a whole number up to ten seconds.
        const QJsonValue vadEos = business.value(QLatin1String("vad_eos"));
        const double eos = vadEos.toDouble(-1);
        if (!vadEos.isDouble() || std::trunc(eos) != eos || eos < 1000 || eos > 10000) {
            return invalid(QStringLiteral("business.vad_eos"));
        }
        if (business.contains(QLatin1String("dwa")) &&
            business.value(QLatin1String("dwa")).toString() != QLatin1String("wpgs")) {
            return invalid(QStringLiteral("business.dwa"));
        }
        if (business.contains(QLatin1String("rlang")) &&
            business.value(QLatin1String("rlang")).toString() != QLatin1String("zh-cn") &&
            business.value(QLatin1String("rlang")).toString() != QLatin1String("zh-hk")) {
            return invalid(QStringLiteral("business.rlang"));
        }
    }
    if (!frame.value(QLatin1String("data")).isObject()) {
        return invalid(QStringLiteral("data missing"));
    }
    const QJsonObject data = frame.value(QLatin1String("data")).toObject();
    const QJsonValue status = data.value(QLatin1String("status"));
    const bool statusFits =
        first ? status == QJsonValue(0) : (status == QJsonValue(1) || status == QJsonValue(2));
    if (!statusFits) {
        return invalid(QStringLiteral("data.status"));
    }
    if (data.value(QLatin1String("format")).toString() != kFormat) {
        return invalid(QStringLiteral("data.format"));
    }
    if (data.value(QLatin1String("encoding")).toString() != QLatin1String("raw")) {
        return invalid(QStringLiteral("data.encoding"));
    }
    const QJsonValue audio = data.value(QLatin1String("audio"));
    const bool end = status == QJsonValue(2);
    if (!audio.isString() || (end != audio.toString().isEmpty()) ||
        QByteArray::fromBase64Encoding(audio.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors)
                .decodingStatus != QByteArray::Base64DecodingStatus::Ok) {
        return invalid(QStringLiteral("data.audio"));
    }
    return 0;
}

void IFlySession::refuse(int code, const QString& reason)
{
    qCWarning(lcServices).noquote() << "ifly: frame refused with" << code << reason;
    reply(QJsonObject{
        {QStringLiteral("code"), code}, {QStringLiteral("message"), reason}, {QStringLiteral("sid"), mSid}});
    mEnded = true;
    mSocket->close();
}

void IFlySession::onText(const QString& text)
{
    if (mEnded) {
        return;
    }
    const QJsonObject frame = QJsonDocument::fromJson(text.toUtf8()).object();
    QString reason;
    if (const int code = checkFrame(frame, !mStarted, mAppId, &reason); code != 0) {
        refuse(code, reason);
        return;
    }
    const QJsonObject data = frame.value(QLatin1String("data")).toObject();
    if (!mStarted) {
        mStarted = true;
        mDynamic = frame.value(QLatin1String("business")).toObject().contains(QLatin1String("dwa"));
        qCInfo(lcServices).noquote() << "ifly: session" << mSid;
        if (mFault->errorCode != 0) {
            refuse(mFault->errorCode.load(), QStringLiteral("stand-in error"));
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
        if (!mDynamic && !r.final) {
            continue;  // without dynamic correction only whole sentences go back
        }
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
    if (!mDynamic) {
        // Each reply adds to what came before; nothing is rewritten.
    } else if (last || !mSentenceOpen) {
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
