#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

// What a voice session needs of a recogniser, whichever service it talks to. The audio is handed
// in (the mouse's Bluetooth frames and the receiver's microphone reach the same slot); the
// recogniser says when it wants the receiver's microphone open, and whoever owns the microphone
// opens and closes it. Main thread.
class SpeechRecognizer : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void stop() = 0;
    virtual bool isRunning() const = 0;

signals:
    void signalBegin();
    // The text so far, revised as more audio comes.
    void signalFlushResult(QString result);
    void signalResult(QString result);
    void signalVolume(int volume);
    void signalEnd();
    void signalError(int code, QString message);
    // True when the receiver's microphone should deliver audio, false when it can stop.
    void signalMicrophone(bool on);

public slots:
    virtual void onAudioData(const QByteArray& data) = 0;
};
