#include "Recorder/VirtualAudioSource.h"

#include "Hid/VirtualDeviceConnection.h"

#include <chrono>

namespace {
constexpr int kFirstListWaitMs = 500;
constexpr int kMaxPending = 256;  // about 5 s of audio; older chunks go first
}  // namespace

VirtualAudioSource::VirtualAudioSource(const QString& socketPath, QObject* parent)
    : AudioSource(parent),
      mConnection(std::make_unique<VirtualDeviceConnection>(
          socketPath, [this](int channel, const QByteArray& payload) { onFrame(channel, payload); },
          [this] {
              const std::lock_guard<std::mutex> lock(mMutex);
              mInputs.clear();
              mHaveInputs = false;
              if (mState == Active) {
                  mState = Failed;
              }
          }))
{
}

VirtualAudioSource::~VirtualAudioSource()
{
    mConnection.reset();
}

void VirtualAudioSource::onFrame(int channel, const QByteArray& payload)
{
    bool deliver = false;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (channel == VirtualDeviceConnection::AudioInputs) {
            mInputs = QString::fromUtf8(payload).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            mHaveInputs = true;
            if (!mName.isEmpty() && !mInputs.contains(mName)) {
                mState = Failed;  // the receiver went with its input
            }
        } else if (channel == VirtualDeviceConnection::AudioPcm && mState == Active) {
            if (mPending.size() >= kMaxPending) {
                mPending.removeFirst();
            }
            mPending.append(payload);
            deliver = mPending.size() == 1;
        }
    }
    mChanged.notify_all();
    if (deliver) {
        QMetaObject::invokeMethod(this, "deliverPending", Qt::QueuedConnection);
    }
}

void VirtualAudioSource::deliverPending()
{
    QList<QByteArray> chunks;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        chunks.swap(mPending);
    }
    for (const QByteArray& chunk : qAsConst(chunks)) {
        emit signalData(chunk);
    }
}

QStringList VirtualAudioSource::inputNames()
{
    if (!mConnection->ensureConnected()) {
        return {};
    }
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait_for(lock, std::chrono::milliseconds(kFirstListWaitMs), [this] { return mHaveInputs; });
    return mInputs;
}

bool VirtualAudioSource::open(const QString& name)
{
    if (!inputNames().contains(name)) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mName = name;
    mState = Stopped;
    return true;
}

bool VirtualAudioSource::isOpen() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return !mName.isEmpty();
}

AudioSource::State VirtualAudioSource::state() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mState;
}

void VirtualAudioSource::start()
{
    QString name;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        name = mName;
    }
    const bool sent = mConnection->send(VirtualDeviceConnection::AudioStart, name.toUtf8());
    const std::lock_guard<std::mutex> lock(mMutex);
    mState = sent ? Active : Failed;
}

void VirtualAudioSource::stop()
{
    mConnection->send(VirtualDeviceConnection::AudioStop, QByteArray());
    const std::lock_guard<std::mutex> lock(mMutex);
    mState = Stopped;
    mPending.clear();
}

void VirtualAudioSource::close()
{
    stop();
    const std::lock_guard<std::mutex> lock(mMutex);
    mName.clear();
}
