#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
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

// Runs a program to its end while this process keeps serving events (a program that talks
// to us must find us answering): its exit code, -2 for a crash, -1 if it outlived the time.
inline int runServingEvents(QProcess& process, const QString& program, const QStringList& arguments,
                            int timeoutMs = 20000)
{
    QElapsedTimer clock;
    clock.start();
    process.start(program, arguments);
    while (process.state() != QProcess::NotRunning && clock.elapsed() < timeoutMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        process.waitForFinished(10);
    }
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
        return -1;
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
}

// The text of a running program's log file once `done` holds for it, or as it was when the
// time ran out or the program ended.
template <typename Done>
QString waitForLog(QProcess& process, const QString& logPath, Done done, int timeoutMs)
{
    QFile log(logPath);
    QString text;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < timeoutMs && process.state() == QProcess::Running) {
        if (log.open(QIODevice::ReadOnly)) {
            text = QString::fromUtf8(log.readAll());
            log.close();
            if (done(text)) {
                break;
            }
        }
        process.waitForFinished(50);
    }
    return text;
}
