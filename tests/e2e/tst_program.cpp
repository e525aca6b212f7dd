#include "Hid/DeviceMessage.h"
#include "MouseSimulator.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QtTest>

namespace DM = DeviceMessage;

namespace {

// Where the test clicks in the console, from the window's top-left corner. The navigation is a
// column 184 px wide whose buttons stand 46 px apart from y 110; the title bar's buttons are
// 32 x 28 with 12 px to the right edge; the mouse settings page puts the speed frame at
// (214, 80) and, for a mouse with the fourth level, its 100 x 48 buttons at x 39, 153, 267 and
// y 50 inside it.
enum Spot { NavMouseSettings, SpeedSlow, SpeedStandard, Quit };
const QPoint kSpots[] = {
    {92, 248},   // 鼠标设置
    {303, 154},  // 慢速: the mouse's level 2
    {417, 154},  // 标准: level 0
    {852, 22},   // the title bar's close button, which quits
};

const QSize kConsoleSize(880, 600);
const QSize kQuestionSize(400, 200);
const QSize kPlugStripSize(336, 72);  // once it has slid out
const QString kConsoleName = QStringLiteral("^Zorvane$");
const QString kPlugStripName = QStringLiteral("^Zorvane 设备提示$");
const QString kLowbatName = QStringLiteral("^Zorvane 电量提醒$");

// The first open, the ladder and the backend's answers take a few seconds under the sanitizers.
constexpr int kStartMs = 20000;
constexpr int kWindowMs = 8000;

QString out(const st_small_base_com_msg& record)
{
    return QStringLiteral("out ") + QString::fromLatin1(record.toByteArray(31).toHex(' '));
}

// What xdotool answers, trimmed.
QString xdotool(const QStringList& arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    tool.waitForFinished(5000);
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

QSize windowSize(const QString& window)
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
QStringList visibleWindows(const QString& pattern, const QSize& size = {})
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

QString waitForWindow(const QString& pattern, const QSize& size = {}, int timeoutMs = kWindowMs)
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

bool waitForNoWindow(const QString& pattern, const QSize& size = {})
{
    return QTest::qWaitFor([&] { return visibleWindows(pattern, size).isEmpty(); }, kWindowMs);
}

void click(const QString& window, Spot spot)
{
    const QPoint at = kSpots[spot];
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

}  // namespace

// The real program with the virtual mouse and the stand-in services, as separate processes
// under a window manager, driven from outside as a user would.
class TestProgram : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void startOpensTheReceiverAndRunsTheLadders();
    void speedButtonReachesTheMouse();
    void unplugShowsTheStrip();
    void closedConsoleKeepsTheMouse();
    void secondStartBringsTheConsoleBack();
    void quitEndsAndTheAutostartQuestionComesFirst();

private:
    QProcessEnvironment programEnvironment() const;
    void startProgram();
    void screenshot(const QString& name);

    QString mSocketPath;
    QString mAutostartPath;
    std::unique_ptr<Child> mServices;
    std::unique_ptr<MouseSimulator> mSim;
    std::unique_ptr<Child> mProgram;
    QString mConsole;
    bool mToldWhy = false;
};

void TestProgram::initTestCase()
{
    // Free ports, so that parallel suites never meet; the printed snippet points the program there.
    mServices = std::make_unique<Child>();
    mServices->start(QStringLiteral(SERVICES_BINARY), {QStringLiteral("--free-ports")});
    QVERIFY2(mServices->waitForOutput(QStringLiteral("\nready\n"), 10000), qPrintable(mServices->output()));
    const QString printed = mServices->output();
    const int from = printed.indexOf(QLatin1String("\n["));
    const int to = printed.indexOf(QLatin1String("\nready\n"));
    QVERIFY(from > 0 && to > from);
    QString configPath = qEnvironmentVariable("ZORVANE_CONFIG");
    if (configPath.isEmpty()) {
        configPath = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                     QStringLiteral("/zorvane-e2e.ini");
        qputenv("ZORVANE_CONFIG", configPath.toUtf8());
    }
    QDir().mkpath(QFileInfo(configPath).absolutePath());
    QFile config(configPath);
    QVERIFY(config.open(QIODevice::WriteOnly | QIODevice::Truncate));
    config.write(printed.mid(from + 1, to - from).toUtf8());
    config.close();

    mSocketPath =
        QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/mouse");
    mSim = std::make_unique<MouseSimulator>(QStringLiteral(MOUSE_SIM_BINARY), mSocketPath);
    QVERIFY(mSim->waitReady());

    // With the entry in place the start asks nothing; the last case takes it away.
    mAutostartPath = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                     QStringLiteral("/autostart/zorvane.desktop");
    QDir().mkpath(QFileInfo(mAutostartPath).absolutePath());
    QFile entry(mAutostartPath);
    QVERIFY(entry.open(QIODevice::WriteOnly | QIODevice::Truncate));
    entry.write("[Desktop Entry]\nType=Application\nName=Zorvane\nExec=zorvane\n");
    entry.close();
    startProgram();
}

void TestProgram::cleanupTestCase()
{
    mProgram.reset();
    mSim.reset();
    mServices.reset();
}

// The first failure says how the program stood and what it printed last.
void TestProgram::cleanup()
{
    if (!QTest::currentTestFailed() || mToldWhy || !mProgram) {
        return;
    }
    mToldWhy = true;
    const QProcess& program = mProgram->process();
    qWarning().noquote() << "zorvane:" << (program.state() == QProcess::Running ? "running" : "not running")
                         << "exit code" << program.exitCode() << "\n"
                         << mProgram->output().right(4000);
}

QProcessEnvironment TestProgram::programEnvironment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZORVANE_DEVICE_SOCKET"), mSocketPath);
    return environment;
}

void TestProgram::startProgram()
{
    mProgram = std::make_unique<Child>(programEnvironment());
    mProgram->start(QStringLiteral(ZORVANE_BINARY));
}

// With ZORVANE_SCREENSHOTS set, the whole screen as the user would see it.
void TestProgram::screenshot(const QString& name)
{
    const QString folder = qEnvironmentVariable("ZORVANE_SCREENSHOTS");
    if (!folder.isEmpty()) {
        QDir().mkpath(folder);
        QGuiApplication::primaryScreen()->grabWindow(0).save(folder + QStringLiteral("/program-") + name +
                                                             QStringLiteral(".png"));
    }
}

void TestProgram::startOpensTheReceiverAndRunsTheLadders()
{
    QVERIFY(mSim->waitForLine(QStringLiteral("open"), kStartMs));
    // The device ladder asks for the ids, the levels and then each setting; the last answer
    // ends it.
    for (const st_small_base_com_msg& record :
         {DM::getDongleFlashID(), DM::getRemoteFlashID(), DM::getDPILevelValue(), DM::getSoundEffect()}) {
        QVERIFY2(mSim->waitForLine(out(record), kStartMs), qPrintable(out(record)));
    }
    // The online ladder reaches registration at the stand-in backend.
    QVERIFY2(mServices->waitForOutput(QStringLiteral("POST /BelmorZorvaneV2Mac/device/register"), kStartMs),
             qPrintable(mServices->output()));
    mConsole = waitForWindow(kConsoleName, kConsoleSize);
    QVERIFY(!mConsole.isEmpty());
}

void TestProgram::speedButtonReachesTheMouse()
{
    QVERIFY(!mConsole.isEmpty());
    click(mConsole, NavMouseSettings);
    click(mConsole, SpeedSlow);
    QVERIFY(mSim->waitForLine(out(DM::setDpi(2))));
    click(mConsole, SpeedStandard);
    QVERIFY(mSim->waitForLine(out(DM::setDpi(0))));
    screenshot(QStringLiteral("console-mouse-settings"));
}

void TestProgram::unplugShowsTheStrip()
{
    mSim->command("unplug");
    QVERIFY(mSim->waitForLine(QStringLiteral("closed")));
    QVERIFY(!waitForWindow(kPlugStripName, kPlugStripSize).isEmpty());
    screenshot(QStringLiteral("unplugged"));
    // Back in, the receiver is opened again.
    mSim->command("plug");
    QVERIFY(mSim->waitForLine(QStringLiteral("open"), kStartMs));
}

void TestProgram::closedConsoleKeepsTheMouse()
{
    QVERIFY(!mConsole.isEmpty());
    // Closed the way a desktop closes windows: the window manager's close request.
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), mConsole});
    xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("alt+F4")});
    QVERIFY(waitForNoWindow(kConsoleName, kConsoleSize));
    QCOMPARE(mProgram->process().state(), QProcess::Running);
    // The receiver stays open and read: a low battery report still brings its panel.
    mSim->command("lowbat 1");
    QVERIFY(!waitForWindow(kLowbatName).isEmpty());
    QVERIFY(!mSim->hasLine(QStringLiteral("closed")));
    screenshot(QStringLiteral("low-battery"));
}

void TestProgram::secondStartBringsTheConsoleBack()
{
    QVERIFY(visibleWindows(kConsoleName, kConsoleSize).isEmpty());
    Child second(programEnvironment());
    second.start(QStringLiteral(ZORVANE_BINARY));
    QVERIFY(second.process().waitForFinished(10000));
    QCOMPARE(second.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(second.process().exitCode(), 0);
    mConsole = waitForWindow(kConsoleName, kConsoleSize);
    QVERIFY(!mConsole.isEmpty());
    QCOMPARE(mProgram->process().state(), QProcess::Running);
}

void TestProgram::quitEndsAndTheAutostartQuestionComesFirst()
{
    QVERIFY(!mConsole.isEmpty());
    click(mConsole, Quit);
    QVERIFY(mProgram->process().waitForFinished(10000));
    QCOMPARE(mProgram->process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(mProgram->process().exitCode(), 0);
    QVERIFY(mSim->waitForLine(QStringLiteral("closed")));

    // Without the entry the question stands alone first; its answer lets the console come.
    QVERIFY(QFile::remove(mAutostartPath));
    startProgram();
    const QString question = waitForWindow(kConsoleName, kQuestionSize, kStartMs);
    QVERIFY(!question.isEmpty());
    screenshot(QStringLiteral("autostart-question"));
    QVERIFY(visibleWindows(kConsoleName, kConsoleSize).isEmpty());
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), question});
    xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("Return")});
    QVERIFY(!waitForWindow(kConsoleName, kConsoleSize).isEmpty());
    QVERIFY(visibleWindows(kConsoleName, kQuestionSize).isEmpty());
    // The box was ticked when asked: the entry is back.
    QVERIFY(QFile::exists(mAutostartPath));
}

QTEST_MAIN(TestProgram)
#include "tst_program.moc"
