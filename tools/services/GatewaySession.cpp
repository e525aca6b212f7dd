#include "GatewaySession.h"

#include "BaiduSpeech/ElvUtil.h"
#include "Fault.h"
#include "ServicesLog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QtEndian>

GatewaySession::GatewaySession(QTcpSocket* socket, ParamsAnswer answer, const Fault* fault,
                               std::unique_ptr<RecognitionEngine> engine, QObject* parent)
    : QObject(parent), mSocket(socket), mAnswer(answer), mFault(fault), mEngine(std::move(engine))
{
    mPort = socket->localPort();
    socket->setParent(this);
    mEndTimer.setSingleShot(true);
    mEndTimer.setInterval(kEndSettleMs);
    connect(&mEndTimer, &QTimer::timeout, this, &GatewaySession::endSession);
    connect(socket, &QTcpSocket::readyRead, this, &GatewaySession::onReadyRead);
    connect(socket, &QTcpSocket::disconnected, this, &GatewaySession::finished);
}

QByteArray GatewaySession::eventLine(int type, int code, const QString& data)
{
    QJsonObject o{{QStringLiteral("type"), type}, {QStringLiteral("code"), code}, {QStringLiteral("ack"), 0}};
    if (!data.isEmpty()) {
        o.insert(QStringLiteral("data"), data);
    }
    return QJsonDocument(o).toJson(QJsonDocument::Compact) + '\n';
}

QString GatewaySession::resultDocument(const QString& text)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonObject{{QStringLiteral("results_recognition"), QJsonArray{text}},
                                  {QStringLiteral("result_type"), QStringLiteral("partial_result")}})
            .toJson(QJsonDocument::Compact));
}

void GatewaySession::onReadyRead()
{
    mBuffer.append(mSocket->readAll());
    while (mBuffer.size() >= 8) {
        const quint32 type = qFromBigEndian<quint32>(mBuffer.constData());
        const quint32 length = qFromBigEndian<quint32>(mBuffer.constData() + 4);
        if ((type & 0xFFFFFF00u) != 0x5A5B6C00u || length > kMaxFrameBytes) {
            qCWarning(lcServices) << "gateway: not a frame on port" << mPort << "- closing";
            mSocket->abort();
            return;
        }
        if (static_cast<quint32>(mBuffer.size()) < 8 + length) {
            return;
        }
        const QByteArray payload = mBuffer.mid(8, static_cast<int>(length));
        mBuffer.remove(0, 8 + static_cast<int>(length));
        handleFrame(type, payload);
        if (mSocket->state() != QAbstractSocket::ConnectedState) {
            return;
        }
    }
}

void GatewaySession::handleFrame(quint32 type, const QByteArray& payload)
{
    switch (type) {
        case ElvUtil::TypeParams: {
            const QJsonObject params = QJsonDocument::fromJson(payload).object();
            qCInfo(lcServices).noquote() << "gateway: session on port" << mPort << "language"
                                         << params.value(QLatin1String("language")).toString() << "uid"
                                         << params.value(QLatin1String("uid")).toString().left(12);
            if (mAnswer == Silent) {
                return;
            }
            if (mAnswer == Refuse) {
                send(eventLine(ElvUtil::ON_PARAMS_ACK, 0), false);
                return;
            }
            send(eventLine(ElvUtil::ON_PARAMS_ACK, 1), false);
            send(eventLine(ElvUtil::ON_START_WORKING, 0), false);
            if (mFault->errorCode != 0) {
                // A session that errs recognises nothing after it.
                send(eventLine(ElvUtil::ON_ERROR, mFault->errorCode), false);
                break;
            }
            mAccepted = true;
            break;
        }
        case ElvUtil::TypeData:
            if (mAccepted) {
                sendResults(mEngine->feed(payload));
            }
            break;
        case ElvUtil::TypeFinish:
            if (mAccepted) {
                sendResults(mEngine->finish());
                mEndTimer.start();
            }
            break;
        case ElvUtil::TypeEndAck:
            qCInfo(lcServices) << "gateway: session on port" << mPort << "acknowledged its end";
            break;
        default:
            qCInfo(lcServices) << "gateway: unknown frame type" << Qt::hex << type;
            break;
    }
}

void GatewaySession::sendResults(const QList<RecognitionEngine::Result>& results)
{
    for (const RecognitionEngine::Result& r : results) {
        qCInfo(lcServices).noquote() << "gateway:" << (r.final ? "final" : "partial") << r.text;
        send(eventLine(r.final ? ElvUtil::ON_FINISH : ElvUtil::ON_FLUSH, 0, resultDocument(r.text)), true);
    }
}

void GatewaySession::endSession()
{
    mAccepted = false;
    send(eventLine(ElvUtil::ON_END, 0), false);
    send(eventLine(ElvUtil::ON_END_ACK, 0), false);
    send(eventLine(ElvUtil::ON_LONG_SPEECH_END, 0), false);
}

void GatewaySession::send(const QByteArray& line, bool isResult)
{
    QByteArray bytes = line;
    if (isResult && mFault->malformed) {
        bytes = line.left(line.size() / 2) + '\n';
    }
    const bool closeAfter = isResult && mFault->closeMidStream && !mResultSent;
    mResultSent = mResultSent || isResult;
    auto write = [this, bytes, closeAfter] {
        if (mSocket->state() != QAbstractSocket::ConnectedState) {
            return;
        }
        mSocket->write(bytes);
        if (closeAfter) {
            mSocket->flush();
            mSocket->abort();
        }
    };
    const int delay = mFault->delayMs;
    if (delay > 0) {
        QTimer::singleShot(delay, this, write);
    } else {
        write();
    }
}
