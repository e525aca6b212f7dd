#include "SimMouse.h"

#include "SimAudioStream.h"
#include "SimDevice.h"
#include "SimScript.h"
#include "SimServer.h"

#include <QTextStream>

#include <unistd.h>

SimMouse::SimMouse(const Options& options, QTextStream* out, QObject* parent)
    : QObject(parent),
      mOptions(options),
      mOut(out),
      mDevice(std::make_unique<SimDevice>()),
      mServer(new SimServer(mDevice.get(), options.vid, options.pid, this)),
      mAudio(new SimAudioStream(mServer, this)),
      mScript(new SimScript(mDevice.get(), mServer, mAudio, out, this))
{
    if (options.unplugged) {
        mServer->setPlugged(false);
    }
}

SimMouse::~SimMouse()
{
    // The children use the device until they go.
    delete mScript;
    delete mAudio;
    delete mServer;
}

bool SimMouse::start(QString* error)
{
    if (!mServer->listen(mOptions.socketPath)) {
        *error = QStringLiteral("cannot listen on %1: %2").arg(mOptions.socketPath, mServer->errorString());
        return false;
    }
    *mOut << "ready " << mOptions.socketPath << Qt::endl;
    mScript->append(mOptions.script);
    mScript->readFrom(STDIN_FILENO);
    return true;
}
