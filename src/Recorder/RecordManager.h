#pragma once

#include "Recorder/AudioSource.h"
#include "Utils/Singleton.h"

#include <QObject>

#include <memory>

// The receiver's microphone over USB: the audio input whose name holds "Sorbeta" or
// "Pelnica", never the default microphone. Main thread.
class RecordManager : public QObject, public Singleton<RecordManager> {
    Q_OBJECT

public:
    // Tests hand in their source; not owned.
    explicit RecordManager(AudioSource* source, QObject* parent = nullptr);
    // The program's: the source its configuration chose, owned.
    explicit RecordManager(std::unique_ptr<AudioSource> source);

    bool createRecorder();
    bool startRecorder();
    void stopRecorder();
    void destroyRecorder();

    // The first name holding one of the receiver's names, or empty.
    static QString chooseInput(const QStringList& names);

signals:
    void signalAudioData(QByteArray data);

private:
    friend class Singleton<RecordManager>;
    RecordManager();  // never: the program makes it with its source first

    std::unique_ptr<AudioSource> mOwnedSource;
    AudioSource* mSource;
};
