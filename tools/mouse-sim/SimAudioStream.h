#pragma once

#include "SbcPacketizer.h"

#include <QByteArray>
#include <QObject>

#include <memory>

class SimServer;
class QTimer;

// What the mouse sends while it hears something: into the receiver's audio input while the
// application records from it, or as SBC packets when the mouse is attached over Bluetooth.
// The way is chosen when a stream starts. A file is paced in real time; live audio (a
// microphone) goes out as it comes.
class SimAudioStream : public QObject {
    Q_OBJECT

public:
    explicit SimAudioStream(SimServer* server, QObject* parent = nullptr);
    ~SimAudioStream() override;

    // Speaks pcm (16 kHz mono 16-bit) in place of whatever was playing.
    void play(const QByteArray& pcm, SbcPacketizer::Group group = SbcPacketizer::GroupD);
    // Live audio from now on; feed() sends each piece at once.
    void startLive(SbcPacketizer::Group group = SbcPacketizer::GroupD);
    void feed(const QByteArray& pcm);
    // Ends the stream without a report.
    void stop();
    bool isStreaming() const;
    // The next count Bluetooth audio packets are lost on the way.
    void losePackets(int count) { mToLose = count; }

signals:
    // A played file has gone out whole.
    void signalDone();
    // The Bluetooth link dropped in the middle of a stream.
    void signalCut();

private:
    void begin(SbcPacketizer::Group group);
    void tick();
    void send(const QByteArray& pcm);

    SimServer* mServer;
    QTimer* mTimer;
    QByteArray mPending;  // file audio still to send
    bool mLive = false;
    int mToLose = 0;
    std::unique_ptr<SbcPacketizer> mPacketizer;  // set while a stream goes over Bluetooth
};
