#pragma once

#include <QAudioDeviceInfo>
#include <QByteArray>
#include <QObject>

class QAudioInput;
class QIODevice;

// The computer's default microphone, as the mouse's own would hear: 16 kHz mono 16-bit PCM,
// delivered as it is captured.
class MicrophoneSource : public QObject {
    Q_OBJECT

public:
    explicit MicrophoneSource(QObject* parent = nullptr);
    ~MicrophoneSource() override;

    // The input that start() would open, or why there is none.
    QString deviceName() const;
    QString problem() const;

    // false with the reason in problem() when no input can be opened in that format.
    bool start();
    void stop();
    bool isRunning() const { return mInput != nullptr; }

signals:
    void signalPcm(QByteArray pcm);
    // Capture stopped by itself (the device went away); the text says why.
    void signalFailed(QString why);

private:
    void onReadyRead();
    void onStateChanged();

    QAudioInput* mInput = nullptr;
    QIODevice* mCapture = nullptr;
    QString mProblem;
};
