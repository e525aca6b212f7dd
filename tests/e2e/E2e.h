#pragma once

// What the whole-program suites share: xdotool's view of the screen, child processes whose
// output is kept, and the stand-in services started on free ports with the program pointed at
// them.
#include "Hid/DeviceMessage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QtTest>

#include <memory>

namespace E2e {

// Our windows by their size, and the spots the suites click, from a window's top-left corner.
inline const QSize kConsoleSize(880, 600);
inline const QSize kStripSize(840, 54);
inline const QSize kFixedPanelSize(124, 131);
inline const QSize kToolbarSize(144, 32);
inline const QSize kTranslateWindowSize(456, 361);
inline const QSize kPlugStripSize(336, 72);  // once it has slid out
inline const QPoint kToolbarTranslate(49, 16);
inline const QPoint kToolbarRead(87, 16);
inline const QPoint kTranslateWindowClose(435, 67);  // the frame starts 46 px down, its × at (422, 8)
inline const QPoint kNavAppSettings(92, 202);        // the console's settings page

constexpr int kWindowMs = 8000;

// What xdotool answers, trimmed.
inline QString xdotool(const QStringList& arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    tool.waitForFinished(5000);
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

// A record as mouse-sim prints what the program wrote to the receiver.
inline QString out(const st_small_base_com_msg& record)
{
    return QStringLiteral("out ") + QString::fromLatin1(record.toByteArray(31).toHex(' '));
}

inline bool writeFile(const QString& path, const QByteArray& content, bool executable = false)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    file.write(content);
    file.close();
    return !executable ||
           file.setPermissions(file.permissions() | QFile::ExeOwner | QFile::ExeUser | QFile::ReadOwner);
}

// A stretch of speech as the mouse would hear it: espeak-ng's voice, at 16 kHz mono 16-bit.
inline bool writeSpeech(const QString& path, const QString& words = QStringLiteral("testing one two three"))
{
    const QString raw = path + QStringLiteral(".raw.wav");
    QProcess speak;
    speak.start(QStringLiteral("espeak-ng"), {QStringLiteral("-w"), raw, words});
    if (!speak.waitForFinished(20000) || speak.exitCode() != 0) {
        return false;
    }
    QProcess convert;
    convert.start(QStringLiteral("sox"),
                  {raw, QStringLiteral("-r"), QStringLiteral("16000"), QStringLiteral("-c"),
                   QStringLiteral("1"), QStringLiteral("-b"), QStringLiteral("16"), path});
    return convert.waitForFinished(20000) && convert.exitCode() == 0;
}

// Where the program keeps the user's things: the settings, the log, the command words.
inline QString dataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/ZorvaneV2");
}
inline QString configFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/ZorvaneV2");
}
inline QString stateFolder()
{
    // The suites always set it (tests/CMakeLists.txt).
    return qEnvironmentVariable("XDG_STATE_HOME") + QStringLiteral("/ZorvaneV2");
}
inline QString preferencesPath()
{
    return configFolder() + QStringLiteral("/preferences.ini");
}
inline QString commandWordsPath()
{
    return dataFolder() + QLatin1Char('/') + QString::fromLatin1(QByteArray("zorvane_db").toBase64());
}

inline QString programLogPath()
{
    return stateFolder() + QStringLiteral("/ZorvaneLog.txt");
}
inline QString programLog()
{
    QFile log(programLogPath());
    return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
}

// The program's log from the moment this is made: a start or a new link is waited for by what
// the program logs after it, never by a fixed pause that a loaded machine overruns.
class LogMark {
public:
    LogMark() : mFrom(QFileInfo(programLogPath()).size()) {}
    bool waitFor(const QString& text, int timeoutMs)
    {
        return QTest::qWaitFor(
            [&] {
                QFile log(programLogPath());
                if (!log.open(QIODevice::ReadOnly)) {
                    return false;
                }
                if (log.size() < mFrom) {
                    mFrom = 0;  // started afresh when it was full
                }
                log.seek(mFrom);
                return QString::fromUtf8(log.readAll()).contains(text);
            },
            timeoutMs);
    }
    // The device ladder through after a start or a new link: a press before it may find the
    // mouse not yet awake and start nothing.
    bool waitDeviceReady(int timeoutMs = 25000)
    {
        return waitFor(QStringLiteral("device initialised"), timeoutMs);
    }

private:
    qint64 mFrom;
};

// Changes one preference in the file, as the program reads it at start.
inline void setPreference(const QString& key, const QVariant& value)
{
    QSettings preferences(preferencesPath(), QSettings::IniFormat);
    preferences.setValue(QStringLiteral("config/") + key, value);
    preferences.sync();
}

// The command words table as the program keeps it (words in Base64), one "keyword -> target"
// line a row; with keyword given, that word is added first. Empty on a file that is not a
// database.
inline QStringList commandWords(const QString& keyword = {}, const QString& target = {})
{
    QStringList rows;
    QDir().mkpath(dataFolder());
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("e2e"));
        db.setDatabaseName(commandWordsPath());
        if (db.open()) {
            QSqlQuery query(db);
            if (!keyword.isEmpty() &&
                query.exec(QStringLiteral("create table if not exists command_word(id integer primary key "
                                          "autoincrement, keyword varchar(200), target varchar(200), type "
                                          "int, pro varchar(200))")) &&
                query.prepare(QStringLiteral(
                    "insert into command_word(keyword, target, type, pro) values(?, ?, 0, '')"))) {
                query.addBindValue(QString::fromLatin1(keyword.toUtf8().toBase64()));
                query.addBindValue(QString::fromLatin1(target.toUtf8().toBase64()));
                query.exec();
            }
            if (query.exec(
                    QStringLiteral("select keyword, target, type, pro from command_word order by id"))) {
                while (query.next()) {
                    rows << QString::fromUtf8(QByteArray::fromBase64(query.value(0).toByteArray())) +
                                QStringLiteral(" -> ") +
                                QString::fromUtf8(QByteArray::fromBase64(query.value(1).toByteArray())) +
                                QLatin1Char(' ') + query.value(2).toString() + QLatin1Char(' ') +
                                query.value(3).toString();
                }
            }
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("e2e"));
    return rows;
}

// What the user has set and saved: every preference and habit, and the command words. A
// scenario takes it before and compares after: what it did not touch must be exactly as it was.
struct UserData {
    QMap<QString, QString> values;
    QStringList words;

    static UserData read()
    {
        UserData data;
        for (const QString& file : {QStringLiteral("preferences.ini"), QStringLiteral("user_habit_ini")}) {
            QSettings settings(configFolder() + QLatin1Char('/') + file, QSettings::IniFormat);
            for (const QString& key : settings.allKeys()) {
                data.values.insert(file + QLatin1Char(':') + key, settings.value(key).toString());
            }
        }
        data.words = commandWords();
        return data;
    }
    // The differences, one line each, leaving out the keys named.
    QStringList changedFrom(const UserData& before, const QStringList& touched = {}) const
    {
        QStringList changes;
        QMap<QString, QString> all = before.values;
        all.insert(values);
        for (auto it = all.cbegin(); it != all.cend(); ++it) {
            if (!touched.contains(it.key().section(QLatin1Char('/'), -1)) &&
                before.values.value(it.key()) != values.value(it.key())) {
                changes << it.key() + QStringLiteral(": ") + before.values.value(it.key()) +
                               QStringLiteral(" -> ") + values.value(it.key());
            }
        }
        if (words != before.words) {
            changes << QStringLiteral("command words: ") + before.words.join(QStringLiteral(", ")) +
                           QStringLiteral(" -> ") + words.join(QStringLiteral(", "));
        }
        return changes;
    }
};

inline QRect windowGeometry(const QString& window)
{
    QRect geometry;
    const QString shell = xdotool({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window});
    for (const QString& line : shell.split(QLatin1Char('\n'))) {
        const int value = line.mid(line.indexOf(QLatin1Char('=')) + 1).toInt();
        if (line.startsWith(QLatin1String("X="))) {
            geometry.moveLeft(value);
        } else if (line.startsWith(QLatin1String("Y="))) {
            geometry.moveTop(value);
        } else if (line.startsWith(QLatin1String("WIDTH="))) {
            geometry.setWidth(value);
        } else if (line.startsWith(QLatin1String("HEIGHT="))) {
            geometry.setHeight(value);
        }
    }
    return geometry;
}

inline QSize windowSize(const QString& window)
{
    return windowGeometry(window).size();
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

// Another application the user types in: a Qt line edit (tests/platform_x11/line_edit_client)
// that has the keyboard, asked for its text through its standard input.
class LineEditClient {
public:
    bool start(const QString& program)
    {
        mChild.start(program, {QString(), QString()});
        if (!mChild.waitForOutput(QStringLiteral("ready "), 10000)) {
            return false;
        }
        const QStringList ready =
            mChild.output().section(QStringLiteral("ready "), 1).split(QLatin1Char(' '));
        mField = QRect(ready.value(0).toInt(), ready.value(1).toInt(), ready.value(2).toInt(),
                       ready.value(3).trimmed().toInt());
        mWindow = waitForWindow(QStringLiteral("^selection source$"));
        return !mWindow.isEmpty();
    }
    ~LineEditClient() { mChild.process().write("quit\n"); }

    QString window() const { return mWindow; }
    QRect field() const { return mField; }
    // The line edit's text as it answers now.
    QString text()
    {
        const QString before = mChild.output();
        mChild.process().write("?\n");
        if (!QTest::qWaitFor(
                [&] {
                    const QString now = mChild.output();
                    return now.size() > before.size() && now.endsWith(QLatin1Char('\n'));
                },
                2000)) {
            return QString();
        }
        // presses, owns clipboard, text, clipboard text
        return mChild.output().mid(before.size()).trimmed().section(QLatin1Char('\t'), 2, 2);
    }
    // Waits for exactly this text; says what was there instead.
    bool waitForText(const QString& text, int timeoutMs = 15000)
    {
        QString last;
        const bool arrived = QTest::qWaitFor(
            [&] {
                last = this->text();
                return last == text;
            },
            timeoutMs);
        if (!arrived) {
            qWarning().noquote() << "client has" << last << "expected" << text;
        }
        return arrived;
    }
    bool hasKeyboard() const
    {
        return xdotool({QStringLiteral("getwindowfocus")}) == mWindow ||
               xdotool({QStringLiteral("getactivewindow")}) == mWindow;
    }
    // The window manager hands the keyboard over in its own time.
    bool waitForKeyboard() const
    {
        return QTest::qWaitFor([this] { return hasKeyboard(); }, kWindowMs);
    }
    // Selects the line's first characters with the pointer, as a user would, up to toX.
    void selectWithPointer(int toX)
    {
        xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), mWindow});
        const int y = mField.center().y();
        xdotool({QStringLiteral("mousemove"), QString::number(mField.left() + 4), QString::number(y),
                 QStringLiteral("mousedown"), QStringLiteral("1"), QStringLiteral("mousemove"),
                 QString::number(mField.left() + 60), QString::number(y), QStringLiteral("mousemove"),
                 QString::number(mField.left() + toX), QString::number(y), QStringLiteral("mouseup"),
                 QStringLiteral("1")});
    }
    // A click into the line at x from its left edge, which moves the cursor there.
    void clickIntoLine(int x)
    {
        xdotool({QStringLiteral("mousemove"), QString::number(mField.left() + x),
                 QString::number(mField.center().y()), QStringLiteral("click"), QStringLiteral("1")});
    }
    // Gives it the keyboard back with the cursor at the end, where typing goes on.
    void activateAtEnd()
    {
        xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), mWindow});
        xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("End")});
    }

private:
    Child mChild;
    QString mWindow;
    QRect mField;
};

// Starts the stand-ins on free ports and writes the snippet they print to the configuration
// file the program reads (ZORVANE_CONFIG, set here when the suite has none). False with the
// services' output in failure when they do not come up.
inline bool startServices(Child* services, const QString& program, const QStringList& options,
                          QString* failure)
{
    services->start(program, QStringList{QStringLiteral("--free-ports")} + options);
    // The recogniser loads its model first: seconds under the sanitizers on a loaded machine.
    if (!services->waitForOutput(QStringLiteral("\nready\n"), 25000)) {
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
