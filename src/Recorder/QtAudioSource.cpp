#include "Recorder/QtAudioSource.h"

#include "Utils/Logging.h"

QtAudioSource::QtAudioSource(QObject* parent) : AudioSource(parent) {}

QtAudioSource::~QtAudioSource()
{
    close();
}

QAudioFormat QtAudioSource::buildAudioFormat()
{
    QAudioFormat format;
    format.setSampleRate(16000);
    format.setChannelCount(1);
    format.setSampleSize(16);
    format.setSampleType(QAudioFormat::SignedInt);
    format.setByteOrder(QAudioFormat::LittleEndian);
    format.setCodec(QStringLiteral("audio/pcm"));
    return format;
}

QStringList QtAudioSource::inputNames()
{
    QStringList names;
    for (const QAudioDeviceInfo& device : QAudioDeviceInfo::availableDevices(QAudio::AudioInput)) {
        names << device.deviceName();
    }
    return names;
}

bool QtAudioSource::open(const QString& name)
{
    for (const QAudioDeviceInfo& device : QAudioDeviceInfo::availableDevices(QAudio::AudioInput)) {
        if (device.deviceName() == name) {
            initializeAudio(device);
            return true;
        }
    }
    return false;
}

void QtAudioSource::initializeAudio(const QAudioDeviceInfo& device)
{
    QAudioFormat format = buildAudioFormat();
    if (!device.isFormatSupported(format)) {
        qCWarning(lcAudio) << "Default format not supported - trying to use nearest";
        format = device.nearestFormat(format);
    }
    close();
    mInput = std::make_unique<QAudioInput>(device, format);
}

bool QtAudioSource::isOpen() const
{
    return mInput != nullptr;
}

AudioSource::State QtAudioSource::state() const
{
    if (!mInput || mInput->error() != QAudio::NoError) {
        return Failed;
    }
    switch (mInput->state()) {
        case QAudio::ActiveState:
        case QAudio::IdleState:
            return Active;
        case QAudio::SuspendedState:
            return Suspended;
        default:
            return Stopped;
    }
}

void QtAudioSource::start()
{
    if (!mInput) {
        return;
    }
    mDevice = mInput->start();
    if (mDevice != nullptr) {
        connect(mDevice, &QIODevice::readyRead, this, &QtAudioSource::onReadyRead);
    }
}

void QtAudioSource::onReadyRead()
{
    if (!mInput || mDevice == nullptr) {
        return;
    }
    const qint64 ready = std::min<qint64>(mInput->bytesReady(), kMaxRead);
    const QByteArray data = mDevice->read(ready);
    if (!data.isEmpty()) {
        emit signalData(data);
    }
}

void QtAudioSource::stop()
{
    if (mInput && mInput->state() == QAudio::ActiveState) {
        mInput->stop();
    }
}

void QtAudioSource::close()
{
    if (mInput) {
        mInput->stop();
        mInput->disconnect(this);
        mInput.reset();
        mDevice = nullptr;
    }
}
