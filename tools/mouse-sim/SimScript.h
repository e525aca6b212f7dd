#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

class SimDevice;
class SimServer;
class QTextStream;
class SbcPacketizer;
class QTimer;

// Runs mouse-sim commands in order; "wait" holds the ones after it back, so key timings are
// exact. Commands come from a script file and from standard input.
class SimScript : public QObject {
    Q_OBJECT

public:
    SimScript(SimDevice* device, SimServer* server, QTextStream* out, QObject* parent = nullptr);
    ~SimScript() override;

    static QString help();
    // PCM of a WAV file (its data chunk) or of a raw file; empty if unreadable.
    static QByteArray loadPcm(const QString& path);

    void append(const QString& line);
    void append(const QStringList& lines);

signals:
    void signalQuit(int code);

private:
    void runNext();
    void streamTick();
    // Runs one command; returns the milliseconds to wait before the next.
    int execute(const QString& line);

    SimDevice* mDevice;
    SimServer* mServer;
    QTextStream* mOut;
    QStringList mQueue;
    bool mWaiting = false;
    QByteArray mStream;  // audio still to send, in real time
    QTimer* mStreamTimer = nullptr;
    std::unique_ptr<SbcPacketizer> mPacketizer;  // set while a stream goes over Bluetooth
};
