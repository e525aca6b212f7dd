#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class MicrophoneSource;
class SimMouse;

// What the control window does with the virtual mouse. The talk keys stream what the mouse
// hears (the microphone or a WAV file) for as long as they are held; everything else is one of
// the simulator's own commands, so the window and standard input act alike.
class MouseControl : public QObject {
    Q_OBJECT

public:
    enum Source { Microphone, WavFile };

    MouseControl(SimMouse* mouse, MicrophoneSource* microphone, QObject* parent = nullptr);

    // One talk key at a time: a second one pressed while the first is held is ignored.
    void setTalking(int key, bool down);
    int talkingKey() const { return mTalkKey; }

    void click(int key);
    void doubleClick(int key);
    void longPress(int key);
    void setPlugged(bool plugged);
    bool isPlugged() const;
    void setBleOn(bool on);
    bool isBleOn() const;
    void setBattery(int millivolts);
    // Level 1 or 2; 3 is level 2 with the shutdown bit.
    void lowBattery(int level);
    void setCharging(bool charging);

    Source source() const { return mSource; }
    void useMicrophone();
    // false, keeping the source as it was, when the file cannot be spoken; problem() says why.
    bool useWavFile(const QString& path);
    QString wavFile() const { return mWavPath; }

    // What the mouse hears: the microphone's name or the file's, and how long it lasts.
    QString sourceText() const;
    // One line: the receiver, the application, its recording and the Bluetooth link.
    QString statusText() const;
    // What went wrong last with the sound source, or empty.
    QString problem() const { return mProblem; }

signals:
    void signalStatusChanged();
    void signalProblemChanged(QString problem);

private:
    void command(const QString& line);
    void startHearing();
    void setProblem(const QString& problem);

    SimMouse* mMouse;
    MicrophoneSource* mMicrophone;
    Source mSource = Microphone;
    QString mWavPath;
    QByteArray mWavPcm;
    int mTalkKey = -1;
    QString mProblem;
};
