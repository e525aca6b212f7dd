#pragma once

#include "ProcessLines.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

#include <memory>

// A receiving window as a child process, with the variables and arguments given (its GDK or Qt
// backend, its input module): the X11 suites' GTK 3 text view (tests/platform_x11/gtk_receiver),
// its Qt line edit (typing_receiver) or the GTK 4 view (tests/support/gtk4_receiver.py), which
// speak the same lines: "ready" once the view has the keyboard, "get" for its text. Other
// receivers say when they are ready and what they hold in their own way.
class GtkReceiver {
public:
    GtkReceiver(const QString& program, const QMap<QString, QString>& variables,
                const QStringList& arguments = QStringList())
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (auto it = variables.cbegin(); it != variables.cend(); ++it) {
            env.insert(it.key(), it.value());
        }
        mProcess.setProcessEnvironment(env);
        mProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        mProcess.start(program, arguments);
    }
    virtual ~GtkReceiver()
    {
        mProcess.write("quit\n");
        if (!mProcess.waitForFinished(2000)) {
            mProcess.kill();
            mProcess.waitForFinished();
        }
    }
    virtual bool waitReady(int timeoutMs = 10000)
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
            last = read();
        } while (last != expected && clock.elapsed() < timeoutMs && (QTest::qWait(5), true));
        return last;
    }

protected:
    virtual QString read()
    {
        mProcess.write("get\n");
        return readLineWithin(mProcess, 2000).mid(5);
    }

    QProcess mProcess;
};

// A receiver as a native Wayland client: "GTK 3" (gtk_receiver), "GTK 4" (gtk4_receiver.py,
// run by Debian's own python3, which has the GTK 4 bindings) or "Qt 5" (typing_receiver), with
// the variables given besides.
inline std::unique_ptr<GtkReceiver> waylandReceiver(const QString& toolkit, const QString& program,
                                                    QMap<QString, QString> variables = {})
{
    QStringList arguments;
    if (toolkit == QLatin1String("GTK 4")) {
        arguments << program;
        // Drawn without GL: the headless compositors have no GPU.
        variables.insert(QStringLiteral("GSK_RENDERER"), QStringLiteral("cairo"));
    }
    if (toolkit == QLatin1String("Qt 5")) {
        variables.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
    } else {
        variables.insert(QStringLiteral("GDK_BACKEND"), QStringLiteral("wayland"));
    }
    return std::make_unique<GtkReceiver>(arguments.isEmpty() ? program : QStringLiteral("/usr/bin/python3"),
                                         variables, arguments);
}
