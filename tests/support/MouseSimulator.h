#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QStringList>

// The virtual mouse as a separate process, driven through its standard input.
class MouseSimulator {
public:
    MouseSimulator(const QString& program, const QString& socketPath, const QStringList& options = {})
        : mSocketPath(socketPath)
    {
        mProcess.setProcessChannelMode(QProcess::SeparateChannels);
        mProcess.start(program, QStringList{socketPath} + options);
    }
    ~MouseSimulator()
    {
        mProcess.write("quit\n");
        if (!mProcess.waitForFinished(3000)) {
            mProcess.kill();
            mProcess.waitForFinished();
        }
    }
    // Whether a line has come, reading what is waiting first.
    bool hasLine(const QString& line)
    {
        while (mProcess.canReadLine()) {
            mLines << QString::fromUtf8(mProcess.readLine()).trimmed();
        }
        return mLines.contains(line);
    }
    bool waitReady() { return waitForLine(QStringLiteral("ready ") + mSocketPath); }
    void command(const QByteArray& line) { mProcess.write(line + '\n'); }
    // Waits for a line of output; lines read on the way are kept.
    bool waitForLine(const QString& line, int timeoutMs = 5000)
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < timeoutMs) {
            while (mProcess.canReadLine()) {
                mLines << QString::fromUtf8(mProcess.readLine()).trimmed();
            }
            if (mLines.contains(line)) {
                return true;
            }
            mProcess.waitForReadyRead(50);
            QCoreApplication::processEvents();
        }
        return false;
    }

private:
    QString mSocketPath;
    QProcess mProcess;
    QStringList mLines;
};
