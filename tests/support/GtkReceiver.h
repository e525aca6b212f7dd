#pragma once

#include "ProcessLines.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

// The X11 suites' GTK 3 text view (tests/platform_x11/gtk_receiver) as a child process, with
// the variables given (its GDK backend, its input module): "ready" once its view has the
// keyboard, "get" for its text.
class GtkReceiver {
public:
    GtkReceiver(const QString& program, const QMap<QString, QString>& variables)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (auto it = variables.cbegin(); it != variables.cend(); ++it) {
            env.insert(it.key(), it.value());
        }
        mProcess.setProcessEnvironment(env);
        mProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        mProcess.start(program, QStringList());
    }
    ~GtkReceiver()
    {
        mProcess.write("quit\n");
        if (!mProcess.waitForFinished(2000)) {
            mProcess.kill();
            mProcess.waitForFinished();
        }
    }
    bool waitReady(int timeoutMs = 10000)
    {
        return readLineWithin(mProcess, timeoutMs).startsWith(QLatin1String("ready "));
    }
    // Makes the text its content, all selected: the view owns the PRIMARY selection.
    void select(const QString& text)
    {
        mProcess.write("select " + text.toUtf8() + '\n');
        readLineWithin(mProcess, 2000);
    }
    // What the view holds once it equals `expected`, or what it held at the time-out.
    QString text(const QString& expected, int timeoutMs = 5000)
    {
        QElapsedTimer clock;
        clock.start();
        QString last;
        do {
            mProcess.write("get\n");
            last = readLineWithin(mProcess, 2000).mid(5);
        } while (last != expected && clock.elapsed() < timeoutMs && (QTest::qWait(5), true));
        return last;
    }

private:
    QProcess mProcess;
};
