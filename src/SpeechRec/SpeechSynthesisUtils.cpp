#include "SpeechRec/SpeechSynthesisUtils.h"

#include "SpeechRec/MediaPlayerPlayback.h"
#include "Utils/AppConfig.h"
#include "Utils/AppPaths.h"
#include "Utils/Logging.h"

#include <QFile>

namespace {
SpeechSynthesisWorker::Service configuredService()
{
    AppConfig* config = AppConfig::getInstance();
    return {config->tokenUrl(), config->synthesisUrl(), config->credential(AppConfig::TokenClientId),
            config->credential(AppConfig::TokenClientSecret), config->credential(AppConfig::SynthesisCuid)};
}
}  // namespace

SpeechSynthesisUtils::SpeechSynthesisUtils() : SpeechSynthesisUtils(configuredService(), nullptr) {}

SpeechSynthesisUtils::SpeechSynthesisUtils(const SpeechSynthesisWorker::Service& service,
                                           AudioPlayback* playback, QObject* parent)
    : QObject(parent), mPlayer(playback), mWorker(new SpeechSynthesisWorker(service))
{
    if (mPlayer == nullptr) {
        mOwnedPlayback = std::make_unique<MediaPlayerPlayback>();
        mPlayer = mOwnedPlayback.get();
    }
    connect(mPlayer, &AudioPlayback::signalStopped, this, &SpeechSynthesisUtils::onStopped);
    mWorker->moveToThread(&mThread);
    connect(this, &SpeechSynthesisUtils::speechSynthesis, mWorker, &SpeechSynthesisWorker::onSpeechSynthesis,
            Qt::QueuedConnection);
    connect(mWorker, &SpeechSynthesisWorker::signalResult, this, &SpeechSynthesisUtils::onWorkerResult,
            Qt::QueuedConnection);
    mThread.setObjectName(QStringLiteral("SpeechSynthesis"));
    mThread.start();
}

SpeechSynthesisUtils::~SpeechSynthesisUtils()
{
    shutDown();
    delete mWorker;
}

void SpeechSynthesisUtils::shutDown()
{
    if (mThread.isRunning()) {
        stop();
    }
    mThread.quit();
    mThread.wait();
}

QString SpeechSynthesisUtils::audioFile()
{
    return AppPaths::cacheFile(QStringLiteral("/tts.mp3"));
}

bool SpeechSynthesisUtils::isPlaying() const
{
    return mPlayer->isPlaying();
}

void SpeechSynthesisUtils::stop()
{
    mWorker->cancel();
    mQueue.clear();
    mPlayer->stop();
    mPlayer->clear();
    QFile::remove(audioFile());
}

void SpeechSynthesisUtils::playData(const QByteArray& data)
{
    QFile file(audioFile());
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        file.write(data);
        file.close();
    } else {
        qCWarning(lcHttp) << "cannot write" << audioFile();
    }
    mPlayer->play(audioFile());
}

void SpeechSynthesisUtils::onSpeechSynthesisResult(QByteArray data)
{
    if (mPlayer->isPlaying()) {
        mQueue.append(data);
        return;
    }
    playData(data);
}

void SpeechSynthesisUtils::onWorkerResult(QByteArray data, quint64 round)
{
    // Fetched before a stop, delivered after it.
    if (round == mWorker->cancels()) {
        onSpeechSynthesisResult(data);
    }
}

void SpeechSynthesisUtils::onStopped()
{
    mPlayer->clear();
    if (!mQueue.isEmpty()) {
        playData(mQueue.takeFirst());
    } else {
        // What was read stays nowhere on disk once it has been heard.
        QFile::remove(audioFile());
    }
    emit speechSynthesisOver();
}
