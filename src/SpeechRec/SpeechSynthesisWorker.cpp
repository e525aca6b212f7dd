#include "SpeechRec/SpeechSynthesisWorker.h"

#include "Http/HttpRequest.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {
QString base(const QUrl& url)
{
    QString text = url.toString();
    while (text.endsWith(QLatin1Char('/'))) {
        text.chop(1);
    }
    return text;
}
}  // namespace

SpeechSynthesisWorker::SpeechSynthesisWorker(const Service& service, QObject* parent)
    : QObject(parent), mService(service)
{
}

QString SpeechSynthesisWorker::urlEncode(QString text)
{
    return QString::fromLatin1(text.toUtf8().toPercentEncoding());
}

QString SpeechSynthesisWorker::parseToken(const QByteArray& reply)
{
    return QJsonDocument::fromJson(reply).object().value(QLatin1String("access_token")).toString();
}

QString SpeechSynthesisWorker::getToken()
{
    QByteArray reply;
    const QString url =
        base(mService.tokenUrl) +
        QStringLiteral("/oauth/2.0/token?grant_type=client_credentials&client_id=%1&client_secret=%2")
            .arg(mService.clientId, mService.clientSecret);
    // A failed call leaves the token empty; the synthesis request goes out all the same.
    HttpRequest::getInstance()->syncGet(url, &reply);
    return parseToken(reply);
}

QString SpeechSynthesisWorker::synthesisUrl(const QString& text, const QString& token, int per, int spd,
                                            int pit, int vol) const
{
    // One call fills every place: chained calls would take an escape inside the encoded text
    // ("%3A" of a colon) for the next place.
    return base(mService.synthesisUrl) +
           QStringLiteral("/text2audio?tex=%1&lan=zh&cuid=%2&ctp=1&tok=%3&per=%4&spd=%5&pit=%6&vol=%7")
               .arg(urlEncode(text), mService.cuid, token, QString::number(per), QString::number(spd),
                    QString::number(pit), QString::number(vol));
}

void SpeechSynthesisWorker::onSpeechSynthesis(QString text, int per, int spd, int pit, int vol)
{
    mPieces.append({text, per, spd, pit, vol, cancels()});
    // The blocking requests run a local event loop, which delivers the next piece's call
    // right here: it waits its turn instead of overtaking the one in progress.
    if (mBusy) {
        return;
    }
    mBusy = true;
    while (!mPieces.isEmpty()) {
        const Piece piece = mPieces.takeFirst();
        if (piece.round != cancels()) {
            continue;
        }
        const QString token = getToken();
        QByteArray data;
        HttpRequest::getInstance()->syncGet(
            synthesisUrl(piece.text, token, piece.per, piece.spd, piece.pit, piece.vol), &data);
        if (!data.isEmpty() && piece.round == cancels()) {
            emit signalResult(data, piece.round);
        }
    }
    mBusy = false;
}
