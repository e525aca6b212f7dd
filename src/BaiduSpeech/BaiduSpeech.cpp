#include "BaiduSpeech/BaiduSpeech.h"

#include "Utils/AppConfig.h"
#include "Utils/Logging.h"
#include "Utils/Notice.h"
#include "Utils/Trace.h"

#include <QTcpSocket>
#include <QUuid>
#include <QtEndian>

#include <sys/socket.h>

#include <cerrno>
#include <cstdlib>

namespace {
const QString kConnectFailed = QStringLiteral("无法连接到服务!");
constexpr int kSilenceFrames = 25;
constexpr int kSilenceFrameBytes = 1280;
}  // namespace

BaiduSpeech::BaiduSpeech()
    : BaiduSpeech(AppConfig::getInstance()->gatewayHost(), AppConfig::getInstance()->gatewayControlPort())
{
}

BaiduSpeech::BaiduSpeech(const QString& host, quint16 controlPort, QObject* parent)
    : SpeechRecognizer(parent),
      mHost(host),
      mControlPort(controlPort),
      mControlSocket(new QTcpSocket(this)),
      mSDKSocket(new QTcpSocket(this))
{
    mTimerStart.setSingleShot(true);
    mTimerStart.setInterval(500);
    mTimerEnd.setSingleShot(true);
    mTimerEnd.setInterval(5000);
    mTimerTail.setSingleShot(true);
    mTimerTail.setInterval(100);
    // The audio waits here 8 ms at a time: room for a frame and its backlog, kept across
    // sessions (emptied with resize, which keeps reserved room), so that it never grows per frame.
    mAudioBuffer.reserve(2 * kFrameBytes);
    connect(&mTimerStart, &QTimer::timeout, this, &BaiduSpeech::onStartTimeout);
    connect(&mTimerEnd, &QTimer::timeout, this, &BaiduSpeech::onEndTimeout);
    connect(&mTimerTail, &QTimer::timeout, this, &BaiduSpeech::onTailTimeout);

    for (QTimer* timer : {&mControlConnect, &mSdkConnect}) {
        timer->setSingleShot(true);
        timer->setInterval(kConnectTimeoutMs);
    }
    connect(&mControlConnect, &QTimer::timeout, this, [this] { connectFailed(mControlSocket); });
    // A gateway that sends part of a list and neither finishes nor hangs up would hold the press.
    mControlQuiet.setSingleShot(true);
    mControlQuiet.setInterval(kListQuietMs);
    connect(&mControlQuiet, &QTimer::timeout, this, [this] { onControlReadyRead(true); });
    connect(&mSdkConnect, &QTimer::timeout, this, [this] { connectFailed(mSDKSocket); });
    connect(mControlSocket, &QTcpSocket::errorOccurred, this, [this] {
        if (mControlConnect.isActive()) {
            connectFailed(mControlSocket);
        }
    });
    connect(mSDKSocket, &QTcpSocket::errorOccurred, this, [this] {
        if (mSdkConnect.isActive()) {
            connectFailed(mSDKSocket);
        }
    });

    connect(mControlSocket, &QTcpSocket::connected, this, [this] {
        mControlConnect.stop();
        readPortList();
    });
    connect(mControlSocket, &QTcpSocket::readyRead, this, [this] { onControlReadyRead(false); });
    connect(mControlSocket, &QTcpSocket::disconnected, this, [this] {
        // A reply that never parsed is taken for what it is once the gateway hangs up.
        if (!mControlReply.isEmpty()) {
            onControlReadyRead(true);
        }
        mControlSocket->close();
    });
    connect(mSDKSocket, &QTcpSocket::connected, this, [this] {
        mSdkConnect.stop();
        sendStart();
        mTimerStart.start();
    });
    connect(mSDKSocket, &QTcpSocket::readyRead, this, &BaiduSpeech::onSDKReadyRead);
}

BaiduSpeech::~BaiduSpeech() = default;

bool BaiduSpeech::isRunning() const
{
    return mState != Idle;
}

QString BaiduSpeech::buildID()
{
    const QString uuid = QUuid::createUuid().toString();
    QString id = uuid + uuid;
    id.remove(QLatin1Char('{')).remove(QLatin1Char('}'));
    return id.left(64);
}

SDKServer BaiduSpeech::getPort(const QList<SDKServer>& list)
{
    SDKServer result;
    result.port = -1;
    for (const SDKServer& entry : list) {
        if (result.port == -1) {
            result = entry;
        } else if (entry.count == 0) {
            return entry;
        } else if (entry.count < result.count) {
            result = entry;
        }
    }
    return result;
}

void BaiduSpeech::removeOne(QList<SDKServer>* list, const SDKServer& server)
{
    for (int i = 0; i < list->size(); ++i) {
        if (list->at(i).port == server.port) {
            list->removeAt(i);
            return;
        }
    }
}

int BaiduSpeech::calcAvg(const QByteArray& data)
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

void BaiduSpeech::start(int language)
{
    if (mState == Running) {
        return;
    }
    mState = Running;
    // From here the open SDK connection, if any, speaks for the utterance before: its late
    // lines (a final, the end) are not this one's.
    ++mUtterance;
    mSamples.clear();
    mSamples.reserve(kSamplesReserved);
    // On either link: the receiver's microphone, if there is one, is what hears the user.
    emit signalMicrophone(true);
    mUid = buildID();
    mLanguage = language;
    mParamsAccepted = false;
    mListRenewed = false;
    mTimerStart.stop();
    mTimerEnd.stop();
    mTimerTail.stop();
    connectControl();
}

void BaiduSpeech::connectControl()
{
    if (mControlSocket->state() == QAbstractSocket::ConnectedState || mControlConnect.isActive()) {
        return;
    }
    mControlSocket->abort();
    mControlReply.clear();
    mControlQuiet.stop();
    connectAsync(mControlSocket, &mControlConnect, mControlPort);
}

void BaiduSpeech::connectAsync(QTcpSocket* socket, QTimer* timer, quint16 port)
{
    timer->start();
    socket->connectToHost(mHost, port, QIODevice::ReadWrite, QAbstractSocket::AnyIPProtocol);
}

void BaiduSpeech::connectFailed(QTcpSocket* socket)
{
    (socket == mControlSocket ? mControlConnect : mSdkConnect).stop();
    socket->abort();
    if (socket == mControlSocket) {
        qCWarning(lcSpeechGateway) << "cannot reach the gateway at" << mHost << mControlPort;
    } else {
        qCWarning(lcSpeechGateway) << "cannot reach SDK server" << mCurrentServer.port;
    }
    Notice::show(kConnectFailed);
}

void BaiduSpeech::readPortList()
{
    mControlSocket->write(ElvUtil::readServerList());
}

void BaiduSpeech::onControlReadyRead(bool ended)
{
    readControl(mControlSocket->readAll(), ended);
}

void BaiduSpeech::readControl(const QByteArray& bytes, bool ended)
{
    // The reply may come in several reads: it is whole once it parses (or past the limit).
    mControlReply += bytes;
    if (!ended && !ElvUtil::isWholeServerList(mControlReply)) {
        mControlQuiet.start();
        return;
    }
    mControlQuiet.stop();
    mServerList = ElvUtil::parseServerList(mControlReply);
    mControlReply.clear();
    mControlSocket->close();
    // A session's first list is taken whole; one asked for again because the servers ran out
    // leaves out the server just given up.
    if (mListRenewed) {
        removeOne(&mServerList, mCurrentServer);
    }
    connectSdkServer();
}

void BaiduSpeech::reconnectSDKServer()
{
    removeOne(&mServerList, mCurrentServer);
    connectSdkServer();
}

void BaiduSpeech::connectSdkServer()
{
    mSdkConnect.stop();
    if (mSDKSocket->isOpen()) {
        mSDKSocket->close();
    }
    if (mServerList.isEmpty()) {
        // The list ran out: ask the control port once more in this session (its socket was
        // closed after the reply); a second empty list ends the tries.
        if (mListRenewed) {
            qCWarning(lcSpeechGateway) << "no SDK server left";
            Notice::show(kConnectFailed);
            return;
        }
        mListRenewed = true;
        connectControl();
        return;
    }
    mCurrentServer = getPort(mServerList);
    mOpenLine.clear();
    mSdkUtterance = mUtterance;
    connectAsync(mSDKSocket, &mSdkConnect, static_cast<quint16>(mCurrentServer.port));
}

void BaiduSpeech::sendStart()
{
    sendMessage(ElvUtil::paramUpload(ElvUtil::buildParams(mLanguage, mUid)));
}

bool BaiduSpeech::sdkWritable() const
{
    return mSDKSocket->state() == QAbstractSocket::ConnectedState && mSDKSocket->isWritable();
}

void BaiduSpeech::sendMessage(const QByteArray& frame)
{
    if (!sdkWritable()) {
        return;
    }
    // With nothing queued in the socket's own buffer the frame goes straight to the kernel:
    // queueing it would make the event dispatcher allocate a writability watch for every frame
    // (16 a second while audio flows) and wake the loop once more to send it. What the kernel
    // does not take, or a failure, goes the queued way, which keeps the order and reports errors.
    qint64 sent = 0;
    if (mSDKSocket->bytesToWrite() == 0) {
        const int fd = static_cast<int>(mSDKSocket->socketDescriptor());
        ssize_t n;
        do {
            n = ::send(fd, frame.constData(), static_cast<size_t>(frame.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
        } while (n < 0 && errno == EINTR);
        sent = n > 0 ? n : 0;
    }
    if (sent < frame.size()) {
        mSDKSocket->write(frame.constData() + sent, frame.size() - sent);
    }
}

void BaiduSpeech::onStartTimeout()
{
    qCInfo(lcSpeechGateway) << "no parameter acknowledgement from" << mCurrentServer.port;
    reconnectSDKServer();
}

void BaiduSpeech::onEndTimeout()
{
    emit signalEnd();
}

void BaiduSpeech::onSDKReadyRead()
{
    readSdk(mSDKSocket->readAll());
}

void BaiduSpeech::readSdk(const QByteArray& bytes)
{
    const qint64 readAt = Trace::enabled() ? Trace::now() : 0;
    // Only whole lines are parsed: the rest waits for its end in the next read. A gateway that
    // never ends its line is cut off, as a gateway error.
    mOpenLine += bytes;
    const int lastBreak = mOpenLine.lastIndexOf('\n');
    const QByteArray text = mOpenLine.left(lastBreak + 1);
    mOpenLine.remove(0, lastBreak + 1);
    if (mOpenLine.size() > ElvUtil::kMaxLineBytes) {
        qCWarning(lcSpeechGateway) << "a line of over" << ElvUtil::kMaxLineBytes << "bytes from SDK server"
                                   << mCurrentServer.port << "- connection closed";
        mOpenLine.clear();
        mSDKSocket->abort();
        if (mSdkUtterance == mUtterance) {
            emit signalError(404, QStringLiteral("识别错误"));
        }
        return;
    }
    for (const SocketMessage& message : ElvUtil::parseSocketMessages(text)) {
        if (readAt != 0 && (message.type == ElvUtil::ON_FLUSH || message.type == ElvUtil::ON_FINISH)) {
            Trace::markAt(message.type == ElvUtil::ON_FINISH ? "final-read" : "result-read", readAt);
        }
        handleSocketMessage(message);
    }
}

void BaiduSpeech::handleSocketMessage(const SocketMessage& message)
{
    if (mSdkUtterance != mUtterance) {
        // A line of the utterance before: nothing of it reaches the new one, whose end it
        // would otherwise be. The connection is only closed politely.
        qCDebug(lcSpeechGateway) << "a line of an earlier utterance dropped:" << message.type;
        if (message.type == ElvUtil::ON_LONG_SPEECH_END) {
            sendMessage(ElvUtil::endAck());
            mSDKSocket->close();
        }
        return;
    }
    switch (message.type) {
        case ElvUtil::ON_START_WORKING:
            emit signalBegin();
            break;
        case ElvUtil::ON_FLUSH:
            if (mState != Skipped) {
                mFlushSeen = true;
                emit signalFlushResult(ElvUtil::recognitionText(message.data));
            }
            break;
        case ElvUtil::ON_FINISH:
            if (mState != Skipped) {
                mFlushSeen = false;
                mSilenceSent = false;
                mQuietMs = 0;
                mMinVolume = 32767;
                emit signalResult(ElvUtil::recognitionText(message.data));
            }
            break;
        case ElvUtil::ON_LONG_SPEECH_END:
            if (mState != Skipped) {
                emit signalEnd();
            }
            sendMessage(ElvUtil::endAck());
            mSDKSocket->close();
            mAudioBuffer.resize(0);
            break;
        case ElvUtil::ON_ERROR:
            if (message.code == -3001) {
                start(mLanguage);
            } else {
                emit signalError(404, QStringLiteral("识别错误"));
            }
            break;
        case ElvUtil::ON_PARAMS_ACK:
            mTimerStart.stop();
            if (message.code == 1) {
                mParamsAccepted = true;
            } else {
                reconnectSDKServer();
            }
            break;
        case ElvUtil::ON_END_ACK:
            mTimerEnd.stop();
            break;
        default:
            break;
    }
}

void BaiduSpeech::onAudioData(const QByteArray& data)
{
    // A packet without samples says nothing about the volume.
    if (data.size() < 2) {
        return;
    }
    if (mTimerTail.isActive()) {
        mTimerTail.start();
    }
    mSamples.append(data);
    mVolume = calcAvg(data);
    emit signalVolume(mVolume / 80);

    if (mFlushSeen && !mSilenceSent) {
        mMinVolume = std::min(mMinVolume, mVolume);
        if (mVolume - mMinVolume < kQuietVolumeBand) {
            mQuietMs += data.size() / 32;
        } else {
            mQuietMs = 0;
        }
        if (mQuietMs >= kQuietMsForSilence) {
            emit signalDebugLog(QStringLiteral("触发静音..."));
            // A second of silence ahead of what waits, so the gateway closes the sentence.
            const QByteArray zeros(kSilenceFrameBytes, '\0');
            for (int i = 0; i < kSilenceFrames; ++i) {
                sendMessage(ElvUtil::dataUpload(zeros, kSilenceFrameBytes));
            }
            mSilenceSent = true;
            dynamicChangeVolume();
        }
    }

    mAudioBuffer.append(data);
    if (sdkWritable() && mParamsAccepted && mAudioBuffer.size() >= kFrameBytes) {
        sendMessage(ElvUtil::dataUpload(mAudioBuffer.constData(), kFrameBytes));
        mAudioBuffer.remove(0, kFrameBytes);
    }
}

void BaiduSpeech::dynamicChangeVolume()
{
    QStringList log;
    const int step = mVolumeJudge.dynamicChangeVolume(&mSamples, &log);
    for (const QString& line : qAsConst(log)) {
        emit signalDebugLog(line);
    }
    if (step != 0) {
        emit signalChangeVolume(step);
    }
}

void BaiduSpeech::sendEnd()
{
    if (!mAudioBuffer.isEmpty()) {
        sendMessage(ElvUtil::dataUpload(mAudioBuffer, -1));
        mAudioBuffer.resize(0);
    }
    sendMessage(ElvUtil::dataFinish());
    Trace::mark("finish-sent");
}

void BaiduSpeech::stop()
{
    if (mState == Idle) {
        qCDebug(lcSpeechGateway) << "stop while idle";
        return;
    }
    mState = Idle;
    emit signalMicrophone(false);
    mParamsAccepted = false;
    sendEnd();
    mTimerTail.start();
}

void BaiduSpeech::onTailTimeout()
{
    mState = Idle;
    mParamsAccepted = false;
    sendEnd();
    mTimerEnd.start();
    mAudioBuffer.resize(0);
}

void BaiduSpeech::skip()
{
    mState = Skipped;
    mSamples.clear();
    emit signalMicrophone(false);
    mParamsAccepted = false;
    mTimerEnd.start();
    mAudioBuffer.resize(0);
}
