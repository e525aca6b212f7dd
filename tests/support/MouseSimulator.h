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
        if (mProcess.state() == QProcess::NotRunning) {
            return;
        }
        mProcess.write("quit\n");
        if (!mProcess.waitForFinished(3000)) {
            kill();
        }
    }
    // Gone at once, as a crashed or killed device process would be.
    void kill()
    {
        mProcess.kill();
        mProcess.waitForFinished();
    }
    // Whether a line has come, reading what is waiting first.
    bool hasLine(const QString& line)
    {
        readLines();
        return mLines.contains(line);
    }
    // Lines seen so far that are the text exactly, taken or not by waitForLine.
    int countLines(const QString& line)
    {
        readLines();
        return mLines.count(line) + mTaken.count(line);
    }
    bool waitReady() { return waitForLine(QStringLiteral("ready ") + mSocketPath); }
    void command(const QByteArray& line) { mProcess.write(line + '\n'); }
    // Waits for a line of output that starts with the text, and takes it: waiting again for
    // the same text needs a new line. Lines read on the way are kept.
    bool waitForLine(const QString& start, int timeoutMs = 5000)
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < timeoutMs) {
            readLines();
            for (int i = 0; i < mLines.size(); ++i) {
                if (mLines.at(i).startsWith(start)) {
                    mTaken << mLines.takeAt(i);
                    return true;
                }
            }
            mProcess.waitForReadyRead(20);
            QCoreApplication::processEvents();
        }
        return false;
    }

private:
    void readLines()
    {
        while (mProcess.canReadLine()) {
            mLines << QString::fromUtf8(mProcess.readLine()).trimmed();
        }
    }

    QString mSocketPath;
    QProcess mProcess;
    QStringList mLines;
    QStringList mTaken;
};
