#include "App/CommandLine.h"
#include "ProcessLines.h"
#include "Utils/AppConfig.h"
#include "Widget/SingleApplication.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// This process is the running instance; the real program is started beside it.
class TestCommandLine : public QObject {
    Q_OBJECT

public:
    explicit TestCommandLine(SingleApplication* app) : mApp(app) {}

private slots:
    void helpAndVersionLeaveTheRunningInstanceAlone();
    void badOptionsFailAndQtOptionsPass();
    void startLineNamesTheSources();
    void aRealStartMovesEarlierFilesAndLogsTheStartLine();

private:
    struct Run {
        int code = -1;
        QString out;
        QString err;
    };
    Run run(const QStringList& arguments);
    SingleApplication* mApp;
};

TestCommandLine::Run TestCommandLine::run(const QStringList& arguments)
{
    QProcess program;
    Run result;
    result.code = runServingEvents(program, QStringLiteral(ZORVANE_BINARY), arguments);
    result.out = QString::fromLocal8Bit(program.readAllStandardOutput());
    result.err = QString::fromLocal8Bit(program.readAllStandardError());
    return result;
}

void TestCommandLine::helpAndVersionLeaveTheRunningInstanceAlone()
{
    QWidget window;
    mApp->mainWindow = &window;
    const QString version = QStringLiteral("zorvane " ZORVANE_VERSION "\n");
    for (const QString& option : {QStringLiteral("--version"), QStringLiteral("-v")}) {
        const Run r = run({option});
        QCOMPARE(r.code, 0);
        QCOMPARE(r.out, version);
    }
    for (const QString& option : {QStringLiteral("--help"), QStringLiteral("-h")}) {
        const Run r = run({option, QStringLiteral("somefile")});
        QCOMPARE(r.code, 0);
        QVERIFY2(r.out.startsWith(QLatin1String("Usage: zorvane")), qPrintable(r.out));
        QVERIFY(r.out.contains(QLatin1String("--version")));
    }
    QTest::qWait(100);
    QVERIFY2(!window.isVisible(), "an answered option raised the running instance");
    // Nor did it open the log of the running instance.
    const QString stateHome = qEnvironmentVariable("XDG_STATE_HOME");
    QVERIFY(!QFile::exists(stateHome + QStringLiteral("/ZorvaneV2/ZorvaneLog.txt")));
    mApp->mainWindow = nullptr;
}

void TestCommandLine::badOptionsFailAndQtOptionsPass()
{
    const Run r = run({QStringLiteral("--frobnicate")});
    QCOMPARE(r.code, 2);
    QVERIFY(r.out.isEmpty());
    QVERIFY2(r.err.contains(QLatin1String("frobnicate")) && r.err.contains(QLatin1String("--help")),
             qPrintable(r.err));

    const QString program = QStringLiteral("zorvane");
    QVERIFY(!CommandLine::parse({program}).exit);
    // What QApplication reads itself, and a plain argument for the running instance.
    QVERIFY(!CommandLine::parse({program, QStringLiteral("-platform"), QStringLiteral("offscreen"),
                                 QStringLiteral("-style=fusion"), QStringLiteral("-reverse"),
                                 QStringLiteral("notes.txt")})
                 .exit);
    QVERIFY(CommandLine::parse({program, QStringLiteral("-style")}).exit);  // value missing
    const CommandLine::Outcome both = CommandLine::parse(
        {program, QStringLiteral("-platform"), QStringLiteral("xcb"), QStringLiteral("--version")});
    QVERIFY(both.exit);
    QCOMPARE(both.exitCode, 0);

    // A Wayland session with XWayland runs us on X11; no X11 at all leaves the choice alone.
    QCOMPARE(CommandLine::platformFor({}, ":0"), QByteArray("xcb"));
    QCOMPARE(CommandLine::platformFor("wayland-egl", ":1"), QByteArray("xcb"));
    QCOMPARE(CommandLine::platformFor("offscreen", ":0"), QByteArray("offscreen"));
    QCOMPARE(CommandLine::platformFor("wayland", {}), QByteArray("wayland"));
    QCOMPARE(CommandLine::platformFor({}, {}), QByteArray());
}

void TestCommandLine::startLineNamesTheSources()
{
    QTemporaryDir dir;
    const QString ini = dir.filePath(QStringLiteral("zorvane.ini"));
    {
        QFile file(ini);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[backend]\nurl=http://10.0.0.1\n[search]\nurl=http://10.0.0.2\n");
    }
    const QHash<QString, QString> env{{QStringLiteral("ZORVANE_DEVICE_SOCKET"), QStringLiteral("/tmp/m")},
                                      {QStringLiteral("ZORVANE_TOKEN_URL"), QStringLiteral("http://t")}};
    const QString configured = CommandLine::startLine(AppConfig::fromSources(ini, env), ini);
    QVERIFY2(configured.contains(QLatin1String(ZORVANE_VERSION)), qPrintable(configured));
    QVERIFY2(configured.contains(QStringLiteral("file %1 (2 values)").arg(ini)), qPrintable(configured));
    QVERIFY2(configured.contains(QLatin1String("ZORVANE_TOKEN_URL")) &&
                 configured.contains(QLatin1String("ZORVANE_DEVICE_SOCKET")),
             qPrintable(configured));
    QVERIFY2(configured.endsWith(QLatin1String("virtual device at /tmp/m")), qPrintable(configured));

    const QString missing = dir.filePath(QStringLiteral("none.ini"));
    const QString plain = CommandLine::startLine(AppConfig::fromSources(missing, {}), missing);
    QVERIFY2(plain.contains(QStringLiteral("no file at ") + missing), qPrintable(plain));
    QVERIFY2(plain.contains(QLatin1String("no environment")), qPrintable(plain));
    QVERIFY2(plain.contains(QLatin1String("receiver")) && !plain.contains(QLatin1String("virtual")),
             qPrintable(plain));
}

void TestCommandLine::aRealStartMovesEarlierFilesAndLogsTheStartLine()
{
    // A runtime folder of its own: the program must not find us and must start fully.
    QTemporaryDir runtime(QStringLiteral("/tmp/zcl-XXXXXX"));
    QTemporaryDir home;
    QVERIFY(runtime.isValid() && home.isValid());
    QFile::setPermissions(runtime.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
    for (const char* kind : {"DATA", "CONFIG", "STATE", "CACHE"}) {
        env.insert(QStringLiteral("XDG_%1_HOME").arg(QLatin1String(kind)),
                   home.filePath(QLatin1String(kind)));
    }
    env.insert(QStringLiteral("ZORVANE_DEVICE_SOCKET"), runtime.filePath(QStringLiteral("mouse")));

    // The data folder as an earlier version left it: everything in one place.
    const QString earlier = home.filePath(QStringLiteral("DATA/ZorvaneV2/"));
    const QMap<QString, QString> kept{
        {QStringLiteral("preferences.ini"), QStringLiteral("CONFIG")},
        {QStringLiteral("preferences.ini.corrupt-20240101-000000-000"), QStringLiteral("CONFIG")},
        {QStringLiteral("user_habit_ini"), QStringLiteral("CONFIG")},
        {QStringLiteral("autostart.ini"), QStringLiteral("CONFIG")},
        {QStringLiteral("ZorvaneLog.txt.1"), QStringLiteral("STATE")},
        {QStringLiteral("pictures/aG9tZS5wbmc"), QStringLiteral("CACHE")},
    };
    // What was read aloud is dropped, not moved.
    const QStringList dropped{QStringLiteral("text.txt"), QStringLiteral("tts.mp3")};
    QVERIFY(QDir().mkpath(earlier + QStringLiteral("pictures")));
    const auto write = [](const QString& path, const QByteArray& bytes) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    };
    // Settings files stay readable as such: an unreadable one would be set aside.
    const auto content = [](const QString& name) -> QByteArray {
        return QByteArray("[config]\nnote=") + name.toUtf8() + "\n";
    };
    for (auto it = kept.begin(); it != kept.end(); ++it) {
        QVERIFY(write(earlier + it.key(), content(it.key())));
    }
    QVERIFY(write(earlier + QStringLiteral("ZorvaneLog.txt"), "an earlier run\r\n"));
    for (const QString& name : dropped) {
        QVERIFY(write(earlier + name, "read aloud"));
    }
    // The command words stay in the data folder (an empty file is an empty database to SQLite;
    // anything else unreadable would be set aside at start as damaged).
    const QString words = earlier + QStringLiteral("em9ydmFuZV9kYg==");
    QVERIFY(write(words, QByteArray()));

    QProcess program;
    program.setProcessEnvironment(env);
    program.start(QStringLiteral(ZORVANE_BINARY), QStringList());
    QVERIFY(program.waitForStarted());
    const QString text = waitForLog(
        program, home.filePath(QStringLiteral("STATE/ZorvaneV2/ZorvaneLog.txt")),
        [](const QString& log) { return log.contains(QLatin1String("starting;")); }, 20000);
    program.kill();
    program.waitForFinished();

    // Each file in its folder, whole, and gone from the old place; the log goes on in its own.
    for (auto it = kept.begin(); it != kept.end(); ++it) {
        QFile moved(home.filePath(it.value() + QStringLiteral("/ZorvaneV2/") + it.key()));
        QVERIFY2(moved.open(QIODevice::ReadOnly), qPrintable(moved.fileName()));
        QVERIFY2(moved.readAll().contains(content(it.key()).mid(9)), qPrintable(it.key()));
        QVERIFY2(!QFile::exists(earlier + it.key()), qPrintable(it.key()));
    }
    for (const QString& name : dropped) {
        QVERIFY2(!QFile::exists(earlier + name), qPrintable(name));
        QVERIFY2(!QFile::exists(home.filePath(QStringLiteral("CACHE/ZorvaneV2/") + name)), qPrintable(name));
    }
    QVERIFY2(text.startsWith(QLatin1String("an earlier run\r\n")), qPrintable(text.left(200)));
    QVERIFY2(text.contains(QLatin1String("moved ") + earlier + QStringLiteral("preferences.ini")),
             qPrintable(text));
    QVERIFY(QFile::exists(words));
    const QString line = text.section(QLatin1String("starting;"), 1, 1).section(QLatin1Char('\n'), 0, 0);
    QVERIFY2(!line.isEmpty(), qPrintable(text));
    QVERIFY2(line.contains(QLatin1String("environment ZORVANE_DEVICE_SOCKET")), qPrintable(line));
    QVERIFY2(line.contains(QLatin1String("virtual device at ") + runtime.filePath(QStringLiteral("mouse"))),
             qPrintable(line));
    // This suite has no X server of its own: whichever the answer, the line gives it.
    QVERIFY2(line.contains(QLatin1String("; typing into other windows: ") + CommandLine::typingState()),
             qPrintable(line));
}

int main(int argc, char** argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("ZorvaneV2"));
    SingleApplication app(argc, argv);
    if (app.isRunning()) {
        qCritical("another instance already runs in this test's runtime folder");
        return 1;
    }
    app.setQuitOnLastWindowClosed(false);
    TestCommandLine test(&app);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_commandline.moc"
