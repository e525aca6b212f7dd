#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class SimAudioStream;
class SimDevice;
class SimServer;
class QSocketNotifier;
class QTextStream;

// The simulator's command line: runs commands in order ("wait" holds the ones after it back,
// so key timings are exact) and reports what the application does, one line each, on out.
// Commands come from a script file and from standard input.
class SimScript : public QObject {
    Q_OBJECT

public:
    // A command the script does not know; true if the handler took it.
    using Extension = std::function<bool(const QStringList& words)>;

    SimScript(SimDevice* device, SimServer* server, SimAudioStream* audio, QTextStream* out,
              QObject* parent = nullptr);
    ~SimScript() override;

    static QString help();
    // PCM of a 16 kHz mono 16-bit WAV file (its data chunk) or of a raw file; empty with the
    // reason when unreadable or in another format.
    static QByteArray loadPcm(const QString& path, QString* error);

    void append(const QString& line);
    void append(const QStringList& lines);
    // Runs the lines read from the descriptor; its end leaves the simulator running.
    void readFrom(int fd);
    void setExtension(Extension extension) { mExtension = std::move(extension); }

signals:
    void signalQuit(int code);

private:
    void runNext();
    void readInput();
    // Runs one command; returns the milliseconds to wait before the next.
    int execute(const QString& line);

    SimDevice* mDevice;
    SimServer* mServer;
    SimAudioStream* mAudio;
    QTextStream* mOut;
    QStringList mQueue;
    bool mWaiting = false;
    Extension mExtension;
    QSocketNotifier* mInput = nullptr;
    QByteArray mInputPending;  // a line not yet ended
};
