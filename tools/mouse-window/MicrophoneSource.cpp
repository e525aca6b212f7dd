#include "MicrophoneSource.h"

#include "MouseWindowLogging.h"
#include "Recorder/QtAudioSource.h"

#include <QAudioInput>

namespace {

// 100 ms of audio: short enough that speech follows the press closely.
constexpr int kBufferBytes = 3200;

}  // namespace

MicrophoneSource::MicrophoneSource(QObject* parent) : QObject(parent) {}

MicrophoneSource::~MicrophoneSource()
{
    stop();
}

QString MicrophoneSource::deviceName() const
{
    const QAudioDeviceInfo device = QAudioDeviceInfo::defaultInputDevice();
    return device.isNull() ? QString() : device.deviceName();
}

QString MicrophoneSource::problem() const
{
    return mProblem;
}

bool MicrophoneSource::start()
{
    stop();
    const QAudioDeviceInfo device = QAudioDeviceInfo::defaultInputDevice();
    if (device.isNull()) {
        mProblem = QStringLiteral("no microphone found; choose a WAV file instead");
        qCWarning(lcMouseWindow) << "no default audio input";
        return false;
    }
    if (!device.isFormatSupported(QtAudioSource::buildAudioFormat())) {
        mProblem =
            QStringLiteral("the microphone %1 does not record 16 kHz mono 16-bit").arg(device.deviceName());
        qCWarning(lcMouseWindow) << "format refused by" << device.deviceName();
        return false;
    }
    mInput = new QAudioInput(device, QtAudioSource::buildAudioFormat(), this);
    mInput->setBufferSize(kBufferBytes);
    connect(mInput, &QAudioInput::stateChanged, this, &MicrophoneSource::onStateChanged);
    mCapture = mInput->start();
    if (mCapture == nullptr || mInput->error() != QAudio::NoError) {
        mProblem = QStringLiteral("the microphone %1 cannot be opened").arg(device.deviceName());
        qCWarning(lcMouseWindow) << "cannot open" << device.deviceName() << "error" << mInput->error();
        stop();
        return false;
    }
    connect(mCapture, &QIODevice::readyRead, this, &MicrophoneSource::onReadyRead);
    mProblem.clear();
    qCInfo(lcMouseWindow) << "listening to" << device.deviceName();
    return true;
}

void MicrophoneSource::stop()
{
    if (mInput == nullptr) {
        return;
    }
    // What was captured up to now still counts.
    onReadyRead();
    QAudioInput* input = mInput;
    mInput = nullptr;
    mCapture = nullptr;
    input->disconnect(this);
    input->stop();
    input->deleteLater();
}

void MicrophoneSource::onReadyRead()
{
    if (mCapture == nullptr) {
        return;
    }
    const QByteArray pcm = mCapture->readAll();
    if (!pcm.isEmpty()) {
        emit signalPcm(pcm);
    }
}

void MicrophoneSource::onStateChanged()
{
    if (mInput == nullptr || mInput->error() == QAudio::NoError) {
        return;
    }
    mProblem = mInput->error() == QAudio::IOError ? QStringLiteral("the microphone went away")
                                                  : QStringLiteral("the microphone stopped working");
    qCWarning(lcMouseWindow) << "capture failed:" << mInput->error();
    stop();
    emit signalFailed(mProblem);
}
