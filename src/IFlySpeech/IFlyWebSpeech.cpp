#include "IFlySpeech/IFlyWebSpeech.h"

#include "Utils/AppConfig.h"
#include "Utils/Logging.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QMessageAuthenticationCode>
#include <QUrlQuery>
#include <QtEndian>

#include <cstdlib>

namespace {

const QString kFormat = QStringLiteral("audio/L16;rate=16000");
const QString kEncoding = QStringLiteral("raw");

IFlyWebSpeech::Service configuredService()
{
    AppConfig* config = AppConfig::getInstance();
    return {config->iflyUrl(), config->credential(AppConfig::IFlyAppId),
            config->credential(AppConfig::IFlyApiKey), config->credential(AppConfig::IFlyApiSecret)};
}

}  // namespace

IFlyWebSpeech::IFlyWebSpeech() : IFlyWebSpeech(configuredService(), {}) {}

IFlyWebSpeech::IFlyWebSpeech(const Service& service, std::function<int()> deviceType, QObject* parent)
    : SpeechRecognizer(parent), mService(service), mDeviceType(std::move(deviceType))
{
    mTimerIdle.setSingleShot(true);
    mTimerIdle.setInterval(kIdleMs);
    // No usable reply for so long ends the session as if the caller had asked.
    connect(&mTimerIdle, &QTimer::timeout, this, &IFlyWebSpeech::stop);
    mConnectTime.start();
}

IFlyWebSpeech::~IFlyWebSpeech()
{
    if (socket) {
        socket->disconnect(this);
        socket->abort();
    }
}

bool IFlyWebSpeech::isRunning() const
{
    return mRunning != 0;
}

QUrl IFlyWebSpeech::buildAuthUrl(const Service& service, const QDateTime& now)
{
    const QString date = QLocale(QLocale::English, QLocale::UnitedStates)
                             .toString(now.toUTC(), QStringLiteral("ddd, dd MMM yyyy HH:mm:ss t"));
    const QString host = service.url.host();
    const QString origin =
        QStringLiteral("host: %1\ndate: %2\nGET %3 HTTP/1.1").arg(host, date, service.url.path());
    const QByteArray signature = QMessageAuthenticationCode::hash(origin.toUtf8(), service.apiSecret.toUtf8(),
                                                                  QCryptographicHash::Sha256)
                                     .toBase64();
    const QString authorization =
        QStringLiteral("api_key=\"%1\", algorithm=\"%2\", headers=\"%3\", signature=\"%4\"")
            .arg(service.apiKey, QStringLiteral("hmac-sha256"), QStringLiteral("host date request-line"),
                 QString::fromLatin1(signature));
    QUrl url = service.url;
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("authorization"),
                       QString::fromLatin1(authorization.toUtf8().toBase64()));
    query.addQueryItem(QStringLiteral("date"), date);
    query.addQueryItem(QStringLiteral("host"), host);
    url.setQuery(query);
    return QUrl::fromEncoded(url.toEncoded(QUrl::FullyEncoded));
}

void IFlyWebSpeech::start(QString language, QString accent, int mode)
{
    if (mRunning == 1) {
        return;
    }
    mRunning = 1;
    mMode = mode;
    mLanguage = language;
    mAccent = accent;
    connectSocket();
    mFrameStatus = 0;
    mResult.clear();
    mTempResult.clear();
    mVolumes.clear();
    mConnectTime.restart();
    mAgeOffsetMs = 0;
    mRestarting = false;
    mPendingAudio.clear();
    mTimerIdle.start();
}

void IFlyWebSpeech::connectSocket()
{
    if (socket) {
        socket->disconnect(this);
        if (socket->state() != QAbstractSocket::UnconnectedState) {
            socket->abort();
        }
    }
    socket.reset(new QWebSocket(QString(), QWebSocketProtocol::Version13));
    socket->setMaxAllowedIncomingFrameSize(kMaxReplyBytes);
    socket->setMaxAllowedIncomingMessageSize(kMaxReplyBytes);
    const QUrl url = buildAuthUrl(mService, QDateTime::currentDateTimeUtc());
    connect(socket.data(), &QWebSocket::connected, this, &IFlyWebSpeech::onConnected);
    connect(socket.data(), &QWebSocket::textMessageReceived, this, &IFlyWebSpeech::onReceiver);
    connect(socket.data(), &QWebSocket::disconnected, this, &IFlyWebSpeech::onDisconnected);
    connect(socket.data(), QOverload<QAbstractSocket::SocketError>::of(&QWebSocket::error), this,
            [this](QAbstractSocket::SocketError error) {
                qCWarning(lcSpeechIFly) << "socket error" << error;
                emit signalError(static_cast<int>(error), QString());
            });
    socket->open(url);
    mConnectTime.restart();
    mAgeOffsetMs = 0;
    mFrameStatus = 0;
    mVolumes.clear();
    mResult.clear();
    mTempResult.clear();
}

bool IFlyWebSpeech::isConnected() const
{
    return socket && socket->state() == QAbstractSocket::ConnectedState;
}

qint64 IFlyWebSpeech::connectionAgeMs() const
{
    return mConnectTime.elapsed() + mAgeOffsetMs;
}

void IFlyWebSpeech::onConnected()
{
    if (mRunning != 1) {
        // Stopped while connecting: nobody waits for this connection.
        dropSocket();
        return;
    }
    if (mRestarting) {
        mRestarting = false;
        return;
    }
    if (mDeviceType && mDeviceType() == 0) {
        emit signalMicrophone(true);
    }
    emit signalBegin();
}

int IFlyWebSpeech::avgVolume(const QByteArray& data)
{
    const int samples = data.size() / 2;
    if (samples == 0) {
        return 0;
    }
    long long sum = 0;
    for (int i = 0; i < samples; ++i) {
        sum += std::abs(static_cast<int>(qFromLittleEndian<qint16>(data.constData() + 2 * i)));
    }
    return static_cast<int>(sum / samples / 2);
}

int IFlyWebSpeech::getVolume(const QByteArray& data) const
{
    long long sum = avgVolume(data);
    int count = 1;
    for (int i = mVolumes.size() - 1; i >= 0 && count < 4; --i, ++count) {
        sum += mVolumes.at(i);
    }
    return static_cast<int>(sum / count);
}

void IFlyWebSpeech::sendFrame(const QJsonObject& frame)
{
    if (isConnected()) {
        socket->sendTextMessage(QString::fromUtf8(QJsonDocument(frame).toJson(QJsonDocument::Compact)));
    }
}

void IFlyWebSpeech::sendAudio(const QByteArray& data)
{
    QJsonObject audio{{QStringLiteral("format"), kFormat},
                      {QStringLiteral("encoding"), kEncoding},
                      {QStringLiteral("audio"), QString::fromLatin1(data.toBase64())}};
    if (mFrameStatus == 0) {
        audio.insert(QStringLiteral("status"), 0);
        QJsonObject business{{QStringLiteral("language"), mLanguage},
                             {QStringLiteral("accent"), mAccent},
                             {QStringLiteral("domain"), QStringLiteral("iat")},
                             {QStringLiteral("vad_eos"), 10000},
                             {QStringLiteral("dwa"), QStringLiteral("wpgs")}};
        if (mMode == 1) {
            business.insert(QStringLiteral("rlang"), QStringLiteral("zh-cn"));
        } else if (mMode == 2) {
            business.insert(QStringLiteral("rlang"), QStringLiteral("zh-hk"));
        }
        sendFrame(
            QJsonObject{{QStringLiteral("common"), QJsonObject{{QStringLiteral("app_id"), mService.appId}}},
                        {QStringLiteral("business"), business},
                        {QStringLiteral("data"), audio}});
        mFrameStatus = 1;
    } else {
        audio.insert(QStringLiteral("status"), 1);
        sendFrame(QJsonObject{{QStringLiteral("data"), audio}});
    }
}

void IFlyWebSpeech::sendEndFrame()
{
    sendFrame(QJsonObject{{QStringLiteral("data"), QJsonObject{{QStringLiteral("status"), 2},
                                                               {QStringLiteral("format"), kFormat},
                                                               {QStringLiteral("encoding"), kEncoding},
                                                               {QStringLiteral("audio"), QString()}}}});
}

void IFlyWebSpeech::onAudioData(const QByteArray& data)
{
    if (mRunning != 1 || !isConnected() || data.isEmpty()) {
        return;
    }
    const int volume = getVolume(data);
    emit signalVolume(volume);
    if (mRestarting) {
        mPendingAudio.append(data);
        return;
    }
    for (const QByteArray& pending : qAsConst(mPendingAudio)) {
        sendAudio(pending);
    }
    mPendingAudio.clear();
    sendAudio(data);

    if (connectionAgeMs() <= kRenewAfterMs) {
        return;
    }
    // Past 45 s, renew the connection at the first quiet moment.
    mVolumes.append(volume);
    if (mVolumes.size() < 51) {
        return;
    }
    mVolumes.removeFirst();
    long long sum = 0;
    for (int v : qAsConst(mVolumes)) {
        sum += v;
    }
    if (sum / mVolumes.size() > 3) {
        return;
    }
    qCInfo(lcSpeechIFly) << "renewing the connection";
    mRestarting = true;
    sendEndFrame();
}

void IFlyWebSpeech::onReceiver(const QString& text)
{
    if (text.isEmpty()) {
        return;
    }
    HttpEntry entry;
    if (!IFlyMessage::parse(text.toUtf8(), &entry) || entry.code != 0) {
        return;
    }
    mTimerIdle.start();
    QString tempResult;
    for (const Ws& ws : qAsConst(entry.ws)) {
        for (const Cw& cw : ws.cw) {
            tempResult += cw.w;
        }
    }
    // "apd" settles what stood before; anything else replaces the unsettled part.
    if (entry.pgs == QLatin1String("apd") && !mTempResult.isEmpty()) {
        mResult = mTempResult;
    }
    mTempResult = mResult;
    if (!tempResult.isEmpty()) {
        mTempResult += tempResult;
        emit signalFlushResult(mTempResult);
    }
    if (entry.ls) {
        emit signalResult(mTempResult);
        socket->disconnect(this);
        socket->abort();
        if (!mRestarting) {
            emit signalMicrophone(false);
            emit signalEnd();
            mRunning = 0;
        } else {
            // The aborted socket no longer tells us: the renewal goes on here.
            QTimer::singleShot(50, this, &IFlyWebSpeech::reconnect);
        }
    }
}

void IFlyWebSpeech::onDisconnected()
{
    const bool tooMuch = socket && socket->closeCode() == QWebSocketProtocol::CloseCodeTooMuchData;
    if (tooMuch) {
        qCWarning(lcSpeechIFly) << "a reply over" << kMaxReplyBytes << "bytes - connection closed";
    }
    if (mRestarting) {
        QTimer::singleShot(50, this, &IFlyWebSpeech::reconnect);
    } else if (tooMuch) {
        emit signalError(static_cast<int>(QWebSocketProtocol::CloseCodeTooMuchData), QString());
    }
}

void IFlyWebSpeech::reconnect()
{
    // A stop() during the wait has ended the session.
    if (mRunning == 1 && mRestarting) {
        connectSocket();
    }
}

void IFlyWebSpeech::dropSocket()
{
    if (socket) {
        socket->disconnect(this);
        socket->abort();
    }
}

void IFlyWebSpeech::stop()
{
    if (mRunning != 1) {
        return;
    }
    mRunning = 0;
    // Between the last reply of a renewed connection and the next one standing, no last reply
    // is coming that would end the session.
    const bool betweenConnections = mRestarting && !isConnected();
    if (socket) {
        sendEndFrame();
    }
    if (mDeviceType && mDeviceType() == 0) {
        emit signalMicrophone(false);
    }
    mRestarting = false;
    mTimerIdle.stop();
    if (betweenConnections) {
        dropSocket();
        emit signalEnd();
    }
}
