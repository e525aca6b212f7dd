#pragma once

// What the whole-program suites share: xdotool's view of the screen, child processes whose
// output is kept, and the stand-in services started on free ports with the program pointed at
// them.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

namespace E2e {

constexpr int kWindowMs = 8000;

// What xdotool answers, trimmed.
inline QString xdotool(const QStringList& arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    tool.waitForFinished(5000);
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

inline QSize windowSize(const QString& window)
{
    QSize size;
    const QString shell = xdotool({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window});
    for (const QString& line : shell.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("WIDTH="))) {
            size.setWidth(line.mid(6).toInt());
        } else if (line.startsWith(QLatin1String("HEIGHT="))) {
            size.setHeight(line.mid(7).toInt());
        }
    }
    return size;
}

// The mapped windows with a title matching the pattern and, when given, of that size.
inline QStringList visibleWindows(const QString& pattern, const QSize& size = {})
{
    QStringList found;
    const QString ids = xdotool(
        {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), pattern});
    for (const QString& id : ids.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (!size.isValid() || windowSize(id) == size) {
            found << id;
        }
    }
    return found;
}

inline QString waitForWindow(const QString& pattern, const QSize& size = {}, int timeoutMs = kWindowMs)
{
    QString window;
    const bool found = QTest::qWaitFor(
        [&] {
            window = visibleWindows(pattern, size).value(0);
            return !window.isEmpty();
        },
        timeoutMs);
    return found ? window : QString();
}

inline bool waitForNoWindow(const QString& pattern, const QSize& size = {})
{
    return QTest::qWaitFor([&] { return visibleWindows(pattern, size).isEmpty(); }, kWindowMs);
}

inline void clickAt(const QString& window, const QPoint& at)
{
    xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), window, QString::number(at.x()),
             QString::number(at.y()), QStringLiteral("click"), QStringLiteral("1")});
}

// A child process whose output is kept for the checks.
class Child {
public:
    explicit Child(const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
    {
        mProcess.setProcessEnvironment(environment);
        mProcess.setProcessChannelMode(QProcess::MergedChannels);
    }
    ~Child() { stop(); }
    void start(const QString& program, const QStringList& arguments = {})
    {
        mOutput.clear();
        mProcess.start(program, arguments);
    }
    bool waitForOutput(const QString& text, int timeoutMs)
    {
        return QTest::qWaitFor(
            [&] {
                mOutput += QString::fromUtf8(mProcess.readAll());
                return mOutput.contains(text);
            },
            timeoutMs);
    }
    QString output()
    {
        mOutput += QString::fromUtf8(mProcess.readAll());
        return mOutput;
    }
    void stop()
    {
        if (mProcess.state() != QProcess::NotRunning) {
            mProcess.terminate();
            if (!mProcess.waitForFinished(3000)) {
                mProcess.kill();
                mProcess.waitForFinished();
            }
        }
    }
    QProcess& process() { return mProcess; }

private:
    QProcess mProcess;
    QString mOutput;
};

// Starts the stand-ins on free ports and writes the snippet they print to the configuration
// file the program reads (ZORVANE_CONFIG, set here when the suite has none). False with the
// services' output in failure when they do not come up.
inline bool startServices(Child* services, const QString& program, const QStringList& options,
                          QString* failure)
{
    services->start(program, QStringList{QStringLiteral("--free-ports")} + options);
    if (!services->waitForOutput(QStringLiteral("\nready\n"), 10000)) {
        *failure = services->output();
        return false;
    }
    const QString printed = services->output();
    const int from = printed.indexOf(QLatin1String("\n["));
    const int to = printed.indexOf(QLatin1String("\nready\n"));
    if (from <= 0 || to <= from) {
        *failure = printed;
        return false;
    }
    QString configPath = qEnvironmentVariable("ZORVANE_CONFIG");
    if (configPath.isEmpty()) {
        configPath = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                     QStringLiteral("/zorvane-e2e.ini");
        qputenv("ZORVANE_CONFIG", configPath.toUtf8());
    }
    QDir().mkpath(QFileInfo(configPath).absolutePath());
    QFile config(configPath);
    if (!config.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        *failure = configPath;
        return false;
    }
    config.write(printed.mid(from + 1, to - from).toUtf8());
    return true;
}

// The autostart entry in place, so that a start asks nothing; returns its path.
inline QString writeAutostartEntry()
{
    const QString path = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                         QStringLiteral("/autostart/zorvane.desktop");
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile entry(path);
    if (entry.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        entry.write("[Desktop Entry]\nType=Application\nName=Zorvane\nExec=zorvane\n");
    }
    return path;
}

}  // namespace E2e
