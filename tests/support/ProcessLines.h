#pragma once

#include <QElapsedTimer>
#include <QProcess>
#include <QString>

// The next line a child process writes, without its newline: what came so far, or nothing,
// once the time is up. The caller's event loop does not run meanwhile.
inline QString readLineWithin(QProcess& process, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!process.canReadLine() && clock.elapsed() < timeoutMs) {
        process.waitForReadyRead(20);
    }
    const QString line = QString::fromUtf8(process.readLine());
    return line.endsWith(QLatin1Char('\n')) ? line.chopped(1) : line;
}
