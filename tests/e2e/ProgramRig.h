#pragma once

// The whole program as a user has it, for the scenario suites: the stand-in services, the
// virtual mouse on its receiver, the real program pointed at both, and another application
// with the keyboard that dictation types into.
#include "E2e.h"
#include "MouseSimulator.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace E2e {

class ProgramRig {
public:
    static constexpr int kStartMs = 25000;
    static QString ourWindows() { return QStringLiteral("^Zorvane$"); }

    // Files in the suite's runtime folder: the speech the mouse hears, the script the stand-in
    // gateway follows, the uploads the backend received.
    bool prepare(const QStringList& script)
    {
        mRuntime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
        mSpeech = mRuntime + QStringLiteral("/speech.wav");
        mScript = mRuntime + QStringLiteral("/script.txt");
        mUploads = mRuntime + QStringLiteral("/uploads.jsonl");
        writeAutostartEntry();
        return writeSpeech(mSpeech) && writeFile(mScript, script.join(QLatin1Char('\n')).toUtf8() + '\n');
    }

    // The stand-ins on free ports, the program's configuration pointing there; what they
    // printed in failure when they do not come up.
    bool startServices(const QStringList& options, QString* failure)
    {
        services = std::make_unique<Child>();
        return E2e::startServices(
            services.get(), QStringLiteral(SERVICES_BINARY),
            QStringList{QStringLiteral("--script"), mScript, QStringLiteral("--upload-log"), mUploads} +
                options,
            failure);
    }
    // The stand-ins again on the ports they had, so that the running program finds them, as
    // after a restart of the real services; the old ones are killed first if still up.
    bool restartServices(const QStringList& options, QString* failure)
    {
        QStringList samePorts;
        const QRegularExpression serving(QStringLiteral("^(\\w+) on 127\\.0\\.0\\.1:(\\d+) "),
                                         QRegularExpression::MultilineOption);
        for (auto it = serving.globalMatch(services->output()); it.hasNext();) {
            const QRegularExpressionMatch match = it.next();
            samePorts << QStringLiteral("--port") << match.captured(1) + QLatin1Char('=') + match.captured(2);
        }
        services->process().kill();
        services->process().waitForFinished();
        return startServices(samePorts + options, failure);
    }
    // A switch of the running stand-ins ("gateway:refuse", "backend:off"), as --fault takes it.
    bool setFault(const QString& spec)
    {
        const QString answer =
            QStringLiteral("\nfault ") + spec.section(QLatin1Char(':'), 0, 0) + QStringLiteral(": ");
        const int before = services->output().count(answer);
        services->process().write("fault " + spec.toUtf8() + '\n');
        return QTest::qWaitFor([&] { return services->output().count(answer) > before; }, 5000);
    }

    bool startMouse()
    {
        mSocketPath = mRuntime + QStringLiteral("/mouse");
        sim = std::make_unique<MouseSimulator>(QStringLiteral(MOUSE_SIM_BINARY), mSocketPath);
        if (!sim->waitReady()) {
            return false;
        }
        sim->command("set key-type 0");
        return true;
    }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("ZORVANE_DEVICE_SOCKET"), mSocketPath);
        environment.insert(extraEnvironment);
        return environment;
    }
    // Set for the program's next starts, on top of the suite's own.
    QProcessEnvironment extraEnvironment;
    void startProgram()
    {
        program = std::make_unique<Child>(environment());
        program->start(QStringLiteral(ZORVANE_BINARY));
    }
    // Started and settled on the receiver: opened, the device ladder through, the console up
    // and put away.
    bool startProgramOnReceiver()
    {
        startProgram();
        if (!sim->waitForLine(QStringLiteral("open"), kStartMs) ||
            !sim->waitForLine(out(DeviceMessage::getSoundEffect()), kStartMs)) {
            return false;
        }
        const QString console = waitForWindow(ourWindows(), kConsoleSize, kStartMs);
        xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), console});
        return !console.isEmpty();
    }
    bool stopProgram()
    {
        program.reset();
        return sim->waitForLine(QStringLiteral("closed"), kWindowMs);
    }
    bool programRunning() const { return program && program->process().state() == QProcess::Running; }

    bool startClient()
    {
        client = std::make_unique<LineEditClient>();
        return client->start(QStringLiteral(LINE_EDIT_CLIENT));
    }

    // Holds the key while the mouse streams the speech; with release false the key stays down.
    bool speak(int key, bool release = true)
    {
        sim->command(QByteArray("press ") + QByteArray::number(key));
        sim->command("audio " + mSpeech.toUtf8());
        if (!release) {
            return true;
        }
        const bool done = sim->waitForLine(QStringLiteral("audio done"), 10000);
        sim->command(QByteArray("release ") + QByteArray::number(key));
        return done;
    }

    // The console in front, as a second start brings it; its window id.
    QString showConsole()
    {
        Child second(environment());
        second.start(QStringLiteral(ZORVANE_BINARY));
        second.process().waitForFinished(10000);
        const QString console = waitForWindow(ourWindows(), kConsoleSize);
        xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), console});
        return console;
    }

    // Our windows up now but the console.
    QStringList panels() const
    {
        QStringList found = visibleWindows(ourWindows());
        for (const QString& console : visibleWindows(ourWindows(), kConsoleSize)) {
            found.removeAll(console);
        }
        return found;
    }

    // The uploads of one endpoint the backend received, oldest first.
    QList<QJsonObject> uploads(const QString& endpoint) const
    {
        QList<QJsonObject> found;
        QFile file(mUploads);
        if (file.open(QIODevice::ReadOnly)) {
            for (const QByteArray& line : file.readAll().split('\n')) {
                const QJsonObject entry = QJsonDocument::fromJson(line).object();
                if (entry.value(QLatin1String("endpoint")).toString() == endpoint) {
                    found << entry.value(QLatin1String("body")).toObject();
                }
            }
        }
        return found;
    }

    // Whether the user's data is as it was, but for the keys touched; the changes are told. The
    // first failing case also tells how the program stood.
    bool nothingLost(const UserData& before, const QStringList& touched = {})
    {
        const QStringList changed = UserData::read().changedFrom(before, touched);
        if (!changed.isEmpty()) {
            qWarning().noquote() << "changed:" << changed;
        }
        if (QTest::currentTestFailed() && !mToldWhy) {
            mToldWhy = true;
            tellWhy();
        }
        return changed.isEmpty();
    }

    // What a failing case shows: how the program stood and what it printed last.
    void tellWhy()
    {
        if (program) {
            qWarning().noquote() << "zorvane:" << (programRunning() ? "running" : "not running") << "\n"
                                 << program->output().right(4000);
        }
        if (services) {
            qWarning().noquote() << "services:" << services->output().right(1500);
        }
    }

    QString runtime() const { return mRuntime; }

    std::unique_ptr<Child> services;
    std::unique_ptr<MouseSimulator> sim;
    std::unique_ptr<Child> program;
    std::unique_ptr<LineEditClient> client;

private:
    QString mRuntime;
    QString mSpeech;
    QString mScript;
    QString mUploads;
    QString mSocketPath;
    bool mToldWhy = false;
};

}  // namespace E2e
