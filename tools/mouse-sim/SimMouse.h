#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

class SimAudioStream;
class SimDevice;
class SimScript;
class SimServer;
class QTextStream;

// The whole virtual mouse as the simulator programs run it: the device, the socket it serves,
// its audio and the command line reading standard input.
class SimMouse : public QObject {
    Q_OBJECT

public:
    struct Options {
        QString socketPath;
        int vid = 0x3151;
        int pid = 0x4011;
        bool unplugged = false;
        QStringList script;  // commands to run first
    };

    SimMouse(const Options& options, QTextStream* out, QObject* parent = nullptr);
    ~SimMouse() override;

    // Listens, says "ready PATH", runs the script and then standard input; false with the
    // reason when the socket cannot be served.
    bool start(QString* error);

    SimDevice* device() const { return mDevice.get(); }
    SimServer* server() const { return mServer; }
    SimAudioStream* audio() const { return mAudio; }
    SimScript* script() const { return mScript; }

private:
    Options mOptions;
    QTextStream* mOut;
    std::unique_ptr<SimDevice> mDevice;
    SimServer* mServer;
    SimAudioStream* mAudio;
    SimScript* mScript;
};
