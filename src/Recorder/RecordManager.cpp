#include "Recorder/RecordManager.h"

#include "Utils/Logging.h"

RecordManager::RecordManager() : mSource(nullptr)
{
    qFatal("RecordManager asked for before the program made it");
}

RecordManager::RecordManager(std::unique_ptr<AudioSource> source) : RecordManager(source.get())
{
    mOwnedSource = std::move(source);
}

RecordManager::RecordManager(AudioSource* source, QObject* parent) : QObject(parent), mSource(source)
{
    connect(mSource, &AudioSource::signalData, this, &RecordManager::signalAudioData);
}

QString RecordManager::chooseInput(const QStringList& names)
{
    for (const QString& name : names) {
        if (name.contains(QLatin1String("Sorbeta")) || name.contains(QLatin1String("Pelnica"))) {
            return name;
        }
    }
    return QString();
}

bool RecordManager::createRecorder()
{
    const QString name = chooseInput(mSource->inputNames());
    if (name.isEmpty()) {
        qCInfo(lcAudio) << "no audio input of the receiver";
        return false;
    }
    return mSource->open(name);
}

bool RecordManager::startRecorder()
{
    if (!mSource->isOpen() && !createRecorder()) {
        return false;
    }
    if (mSource->state() == AudioSource::Failed && !createRecorder()) {
        return false;
    }
    const AudioSource::State state = mSource->state();
    if (state == AudioSource::Stopped || state == AudioSource::Suspended || state == AudioSource::Failed) {
        mSource->start();
    }
    return true;
}

void RecordManager::stopRecorder()
{
    if (mSource->isOpen() && mSource->state() == AudioSource::Active) {
        mSource->stop();
    }
}

void RecordManager::destroyRecorder()
{
    mSource->close();
}
