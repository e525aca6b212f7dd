#include "SimAudioStream.h"

#include "SimServer.h"

#include <QTimer>

namespace {
// Audio goes out in 20 ms pieces: 320 samples of 16 bits.
constexpr int kTickMs = 20;
constexpr int kChunkBytes = 640;
}  // namespace

SimAudioStream::SimAudioStream(SimServer* server, QObject* parent)
    : QObject(parent), mServer(server), mTimer(new QTimer(this))
{
    mTimer->setInterval(kTickMs);
    mTimer->setTimerType(Qt::PreciseTimer);
    connect(mTimer, &QTimer::timeout, this, &SimAudioStream::tick);
    // A mouse that loses its Bluetooth link stops streaming.
    connect(mServer, &SimServer::signalBleAttached, this, [this](bool attached) {
        if (!attached && mPacketizer && isStreaming()) {
            stop();
            emit signalCut();
        }
    });
}

SimAudioStream::~SimAudioStream() = default;

void SimAudioStream::begin(SbcPacketizer::Group group)
{
    stop();
    if (mServer->isBleAttached()) {
        mPacketizer = std::make_unique<SbcPacketizer>(group);
    }
}

void SimAudioStream::play(const QByteArray& pcm, SbcPacketizer::Group group)
{
    begin(group);
    mPending = pcm;
    mTimer->start();
}

void SimAudioStream::startLive(SbcPacketizer::Group group)
{
    begin(group);
    mLive = true;
}

void SimAudioStream::feed(const QByteArray& pcm)
{
    if (mLive) {
        send(pcm);
    }
}

void SimAudioStream::stop()
{
    mTimer->stop();
    mPending.clear();
    mLive = false;
    mPacketizer.reset();
}

bool SimAudioStream::isStreaming() const
{
    return mLive || mTimer->isActive();
}

void SimAudioStream::tick()
{
    if (mPending.isEmpty()) {
        stop();
        emit signalDone();
        return;
    }
    const QByteArray chunk = mPending.left(kChunkBytes);
    mPending.remove(0, kChunkBytes);
    send(chunk);
}

void SimAudioStream::send(const QByteArray& pcm)
{
    if (mPacketizer) {
        for (const QByteArray& packet : mPacketizer->feed(pcm)) {
            if (mToLose > 0) {
                --mToLose;
            } else {
                mServer->sendBlePacket(packet);
            }
        }
    } else {
        mServer->sendPcm(pcm);
    }
}
