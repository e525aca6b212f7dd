#pragma once

#include "SpeechRec/SpeechSynthesisWorker.h"
#include "Utils/Singleton.h"

#include <QList>
#include <QObject>
#include <QThread>

#include <memory>

class AudioPlayback;

// Reads text aloud: a caller emits speechSynthesis per piece (at most 1024 characters), the
// worker thread fetches the audio, and the pieces play in order of arrival through one file,
// "/tts.mp3" in the cache folder, removed when the last piece ends or the reading stops.
// speechSynthesisOver follows the end of every piece.
class SpeechSynthesisUtils : public QObject, public Singleton<SpeechSynthesisUtils> {
    Q_OBJECT

public:
    // Tests hand in their service addresses and playback (not owned).
    SpeechSynthesisUtils(const SpeechSynthesisWorker::Service& service, AudioPlayback* playback,
                         QObject* parent = nullptr);
    ~SpeechSynthesisUtils() override;

    bool isPlaying() const;
    // Ends the reading: the piece playing, the ones waiting and the ones still being fetched.
    void stop();
    // At quit: the reading stopped and the worker's thread joined. Safe to call twice.
    void shutDown();
    static QString audioFile();

signals:
    void speechSynthesis(QString text, int per, int spd, int pit, int vol);
    void speechSynthesisOver();
    void speechSynthesisResult(QByteArray data);

public slots:
    void onSpeechSynthesisResult(QByteArray data);

private slots:
    void onStopped();
    void onWorkerResult(QByteArray data, quint64 round);

private:
    friend class Singleton<SpeechSynthesisUtils>;
    SpeechSynthesisUtils();

    void playData(const QByteArray& data);

    QThread mThread;
    std::unique_ptr<AudioPlayback> mOwnedPlayback;
    AudioPlayback* mPlayer;
    QList<QByteArray> mQueue;
    SpeechSynthesisWorker* mWorker;
};
