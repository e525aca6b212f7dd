#include "MouseControl.h"

#include "MicrophoneSource.h"
#include "MouseWindowLogging.h"
#include "SimAudioStream.h"
#include "SimMouse.h"
#include "SimScript.h"
#include "SimServer.h"

#include <QFileInfo>

namespace {
constexpr int kBytesPerSecond = 32000;  // 16 kHz of 16-bit samples
}  // namespace

MouseControl::MouseControl(SimMouse* mouse, MicrophoneSource* microphone, QObject* parent)
    : QObject(parent), mMouse(mouse), mMicrophone(microphone)
{
    SimServer* server = mMouse->server();
    for (auto signal : {&SimServer::signalOpened, &SimServer::signalRecording, &SimServer::signalBleAttached,
                        &SimServer::signalPlugged, &SimServer::signalBleConnected}) {
        connect(server, signal, this, &MouseControl::signalStatusChanged);
    }
    connect(server, &SimServer::signalClients, this, &MouseControl::signalStatusChanged);
    connect(mMicrophone, &MicrophoneSource::signalPcm, mMouse->audio(), &SimAudioStream::feed);
    connect(mMicrophone, &MicrophoneSource::signalFailed, this, &MouseControl::setProblem);
}

void MouseControl::command(const QString& line)
{
    qCDebug(lcMouseWindow).noquote() << line;
    mMouse->script()->append(line);
}

void MouseControl::setTalking(int key, bool down)
{
    if (down && mTalkKey < 0) {
        mTalkKey = key;
        command(QStringLiteral("press %1").arg(key));
        startHearing();
    } else if (!down && key == mTalkKey) {
        // The last of the microphone's sound goes out before the key comes up.
        mMicrophone->stop();
        mMouse->audio()->stop();
        command(QStringLiteral("release %1").arg(key));
        mTalkKey = -1;
    }
}

void MouseControl::startHearing()
{
    if (mSource == WavFile) {
        mMouse->audio()->play(mWavPcm);
        return;
    }
    if (mMicrophone->start()) {
        mMouse->audio()->startLive();
        setProblem(QString());
    } else {
        setProblem(mMicrophone->problem());
    }
}

void MouseControl::click(int key)
{
    command(QStringLiteral("click %1").arg(key));
}

void MouseControl::doubleClick(int key)
{
    command(QStringLiteral("double-click %1").arg(key));
}

void MouseControl::longPress(int key)
{
    command(QStringLiteral("long-press %1").arg(key));
}

void MouseControl::setPlugged(bool plugged)
{
    command(plugged ? QStringLiteral("plug") : QStringLiteral("unplug"));
}

bool MouseControl::isPlugged() const
{
    return mMouse->server()->isPlugged();
}

bool MouseControl::isBleOn() const
{
    return mMouse->server()->isBleConnected();
}

void MouseControl::setBleOn(bool on)
{
    command(on ? QStringLiteral("ble-on") : QStringLiteral("ble-off"));
}

void MouseControl::setBattery(int millivolts)
{
    command(QStringLiteral("battery %1").arg(millivolts));
}

void MouseControl::lowBattery(int level)
{
    command(level == 3 ? QStringLiteral("shutdown") : QStringLiteral("lowbat %1").arg(level));
}

void MouseControl::setCharging(bool charging)
{
    command(QStringLiteral("power-plug %1").arg(charging ? 1 : 0));
}

void MouseControl::useMicrophone()
{
    mSource = Microphone;
    setProblem(QString());
}

bool MouseControl::useWavFile(const QString& path)
{
    QString error;
    const QByteArray pcm = SimScript::loadPcm(path, &error);
    if (pcm.isEmpty()) {
        qCWarning(lcMouseWindow).noquote() << error;
        setProblem(error);
        return false;
    }
    mSource = WavFile;
    mWavPath = path;
    mWavPcm = pcm;
    setProblem(QString());
    qCInfo(lcMouseWindow).noquote() << "hears" << path << pcm.size() * 1000 / kBytesPerSecond << "ms";
    return true;
}

void MouseControl::setProblem(const QString& problem)
{
    if (problem != mProblem) {
        mProblem = problem;
        emit signalProblemChanged(problem);
    }
}

QString MouseControl::sourceText() const
{
    if (mSource == WavFile) {
        return QStringLiteral("Hears %1 (%2 s)")
            .arg(QFileInfo(mWavPath).fileName())
            .arg(static_cast<double>(mWavPcm.size()) / kBytesPerSecond, 0, 'f', 1);
    }
    const QString name = mMicrophone->deviceName();
    return name.isEmpty() ? QStringLiteral("No microphone found: choose a WAV file")
                          : QStringLiteral("Hears the default microphone: %1").arg(name);
}

QString MouseControl::statusText() const
{
    const SimServer* server = mMouse->server();
    QStringList parts;
    parts << (server->isPlugged() ? QStringLiteral("Receiver plugged in")
                                  : QStringLiteral("Receiver pulled out"));
    parts << (server->clientCount() > 0 ? QStringLiteral("Zorvane connected")
                                        : QStringLiteral("Zorvane not connected"));
    if (server->isRecording()) {
        parts << QStringLiteral("recording");
    }
    if (server->isBleAttached()) {
        parts << QStringLiteral("Bluetooth attached");
    } else {
        parts << (server->isBleConnected() ? QStringLiteral("Bluetooth on")
                                           : QStringLiteral("Bluetooth off"));
    }
    return parts.join(QStringLiteral(" · "));
}
