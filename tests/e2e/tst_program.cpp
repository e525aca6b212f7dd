#include "E2e.h"
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
using namespace E2e;

namespace {

// Where the test clicks in the console, from the window's top-left corner. The navigation is a
// column 184 px wide whose buttons stand 46 px apart from y 110; the title bar's buttons are
// 32 x 28 with 12 px to the right edge; the mouse settings page puts the speed frame at
// (214, 80) and, for a mouse with the fourth level, its 100 x 48 buttons at x 39, 153, 267 and
// y 50 inside it.
enum Spot { NavMouseSettings, SpeedSlow, SpeedStandard, Menu, Close };
const QPoint kSpots[] = {
    {92, 248},   // 鼠标设置
    {303, 154},  // 慢速: the mouse's level 2
    {417, 154},  // 标准: level 0
    {780, 22},   // the title bar's menu button
    {852, 22},   // the title bar's close button
};

const QString kConsoleName = QStringLiteral("^Zorvane$");

// The first-start question is this wide; its height follows the line on what starts at login.
constexpr int kQuestionWidth = 400;
// The message boxes: the hint on the first close, the question before quitting.
constexpr int kMessageWidth = 360;

QStringList windowsOfWidth(int width)
{
    QStringList found;
    for (const QString& id : visibleWindows(kConsoleName)) {
        if (windowSize(id).width() == width) {
            found << id;
        }
    }
    return found;
}

QStringList questions()
{
    return windowsOfWidth(kQuestionWidth);
}

// Answers the message box that stands with its default button.
bool answerMessage()
{
    if (!QTest::qWaitFor([] { return !windowsOfWidth(kMessageWidth).isEmpty(); }, kWindowMs)) {
        return false;
    }
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"),
             windowsOfWidth(kMessageWidth).constFirst()});
    xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("Return")});
    return QTest::qWaitFor([] { return windowsOfWidth(kMessageWidth).isEmpty(); }, kWindowMs);
}

const QString kPlugStripName = QStringLiteral("^Zorvane 设备提示$");
const QString kLowbatName = QStringLiteral("^Zorvane 电量提醒$");

// The first open, the ladder and the backend's answers take a few seconds under the sanitizers.
constexpr int kStartMs = 20000;

void click(const QString& window, Spot spot)
{
    E2e::clickAt(window, kSpots[spot]);
}

// The windows the window manager lists for task bars (minimised ones among them), as ids.
QStringList clientList()
{
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST")});
    xprop.waitForFinished(5000);
    QStringList ids;
    const QString line = QString::fromLatin1(xprop.readAllStandardOutput());
    for (const QString& hex : line.section(QLatin1Char('#'), 1).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        ids << QString::number(hex.trimmed().toULongLong(nullptr, 16));
    }
    return ids;
}

// The device ladder through for the nth time in this suite's log: the voice key is heard.
bool waitForDeviceReady(int nth)
{
    return QTest::qWaitFor([nth] { return programLog().count(QLatin1String("device initialised")) >= nth; },
                           kStartMs);
}

// A command run to its end; true when it succeeded.
bool run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

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
    void startWithoutNetworkThenItComes();

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
    QString failure;
    QVERIFY2(startServices(mServices.get(), QStringLiteral(SERVICES_BINARY), {}, &failure),
             qPrintable(failure));

    mSocketPath =
        QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/mouse");
    mSim = std::make_unique<MouseSimulator>(QStringLiteral(MOUSE_SIM_BINARY), mSocketPath);
    QVERIFY(mSim->waitReady());

    // With the entry in place the start asks nothing; the last case takes it away.
    mAutostartPath = writeAutostartEntry();
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
        QTest::qWait(1500);  // notices slide in: the picture shows them where they come to rest
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
    QVERIFY(waitForDeviceReady(2));
}

void TestProgram::closedConsoleKeepsTheMouse()
{
    QVERIFY(!mConsole.isEmpty());
    // The title bar's cross only closes, and the first time the program says where it went.
    click(mConsole, Close);
    QVERIFY(waitForNoWindow(kConsoleName, kConsoleSize));
    QCOMPARE(mProgram->process().state(), QProcess::Running);
    QVERIFY(QTest::qWaitFor([] { return !windowsOfWidth(kMessageWidth).isEmpty(); }, kWindowMs));
    screenshot(QStringLiteral("console-closed-hint"));
    QVERIFY(answerMessage());
    // A voice key press leaves it closed: not back in the task bar, minimised.
    mSim->command("press 6");
    QVERIFY(QTest::qWaitFor([&] { return !visibleWindows(kConsoleName).isEmpty(); }, kWindowMs));
    mSim->command("release 6");
    QVERIFY(!xdotool({QStringLiteral("search"), QStringLiteral("--name"), kConsoleName}).isEmpty());
    for (const QString& listed : clientList()) {
        QVERIFY2(windowSize(listed) != kConsoleSize, "the closed console is listed again");
    }
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
    // The window manager's close does the same, and says nothing the second time.
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), mConsole});
    xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("alt+F4")});
    QVERIFY(waitForNoWindow(kConsoleName, kConsoleSize));
    QTest::qWait(300);
    QVERIFY(windowsOfWidth(kMessageWidth).isEmpty());
    Child third(programEnvironment());
    third.start(QStringLiteral(ZORVANE_BINARY));
    QVERIFY(third.process().waitForFinished(10000));
    mConsole = waitForWindow(kConsoleName, kConsoleSize);
    QVERIFY(!mConsole.isEmpty());
}

void TestProgram::quitEndsAndTheAutostartQuestionComesFirst()
{
    QVERIFY(!mConsole.isEmpty());
    // 退出 is the last entry of the title bar's menu, and asks first.
    click(mConsole, Menu);
    xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("Up"),
             QStringLiteral("Return")});
    QVERIFY(QTest::qWaitFor([] { return !windowsOfWidth(kMessageWidth).isEmpty(); }, kWindowMs));
    screenshot(QStringLiteral("quit-question"));
    QCOMPARE(mProgram->process().state(), QProcess::Running);
    QVERIFY(answerMessage());
    QVERIFY(mProgram->process().waitForFinished(10000));
    QCOMPARE(mProgram->process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(mProgram->process().exitCode(), 0);
    QVERIFY(mSim->waitForLine(QStringLiteral("closed")));

    // Without the entry the question stands alone first; its answer lets the console come.
    QVERIFY(QFile::remove(mAutostartPath));
    startProgram();
    QVERIFY(QTest::qWaitFor([] { return !questions().isEmpty(); }, kStartMs));
    const QString question = questions().constFirst();
    screenshot(QStringLiteral("autostart-question"));
    QVERIFY(visibleWindows(kConsoleName, kConsoleSize).isEmpty());
    // The program answers the mouse while the question stands: a voice key press brings a panel.
    QVERIFY(waitForDeviceReady(3));
    mSim->command("press 6");
    const bool panel =
        QTest::qWaitFor([&] { return visibleWindows(kConsoleName).size() > questions().size(); }, kWindowMs);
    mSim->command("release 6");
    QVERIFY(panel);
    QVERIFY(visibleWindows(kConsoleName, kConsoleSize).isEmpty());
    // A click on its body quicker than the window manager (as a touchpad tap) starts no move
    // that the pointer would drag along afterwards.
    const QPoint questionAt = windowGeometry(question).topLeft();
    clickAt(question, QPoint(60, 24));
    xdotool({QStringLiteral("mousemove_relative"), QStringLiteral("--sync"), QStringLiteral("150"),
             QStringLiteral("90")});
    QTest::qWait(300);
    QCOMPARE(windowGeometry(question).topLeft(), questionAt);
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), question});
    xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), QStringLiteral("Return")});
    QVERIFY(!waitForWindow(kConsoleName, kConsoleSize).isEmpty());
    QVERIFY(questions().isEmpty());
    // The box was ticked when asked: the entry is back.
    QVERIFY(QFile::exists(mAutostartPath));
}

// Started with no network (a laptop in aeroplane mode, a login before the Wi-Fi is up), in a
// network namespace of its own with the stand-ins; then the network comes up there.
void TestProgram::startWithoutNetworkThenItComes()
{
    mProgram.reset();
    QVERIFY(mSim->waitForLine(QStringLiteral("closed")));
    Child holder;
    holder.start(QStringLiteral("unshare"),
                 {QStringLiteral("-n"), QStringLiteral("sleep"), QStringLiteral("300")});
    if (!holder.process().waitForStarted() || holder.process().waitForFinished(300)) {
        QSKIP("no network namespace here (needs root)");
    }
    const QString pid = QString::number(holder.process().processId());
    const QStringList inside{QStringLiteral("-t"), pid, QStringLiteral("-n")};
    QVERIFY(run(QStringLiteral("nsenter"),
                inside + QStringList{QStringLiteral("ip"), QStringLiteral("link"), QStringLiteral("set"),
                                     QStringLiteral("lo"), QStringLiteral("up")}));
    // The stand-ins live in there too, on its own loopback.
    const QString servicesInside = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
                                   QStringLiteral("/services-inside");
    QVERIFY(writeFile(servicesInside,
                      QStringLiteral("#!/bin/sh\nexec nsenter -t %1 -n '%2' \"$@\"\n")
                          .arg(pid, QStringLiteral(SERVICES_BINARY))
                          .toUtf8(),
                      true));
    Child services;
    QString failure;
    QVERIFY2(startServices(&services, servicesInside, {}, &failure), qPrintable(failure));
    mProgram = std::make_unique<Child>(programEnvironment());
    mProgram->start(QStringLiteral("nsenter"), inside + QStringList{QStringLiteral(ZORVANE_BINARY)});
    QVERIFY(mSim->waitForLine(QStringLiteral("open"), kStartMs));
    QVERIFY(!waitForWindow(kConsoleName, kConsoleSize, kStartMs).isEmpty());
    QCOMPARE(mProgram->process().state(), QProcess::Running);
    QVERIFY(!services.output().contains(QLatin1String("/device/register")));

    // A link comes up with an address: the program goes online and reaches the backend.
    QVERIFY(run(QStringLiteral("nsenter"),
                inside + QStringList{QStringLiteral("sh"), QStringLiteral("-c"),
                                     QStringLiteral("ip link add zv0 type veth peer name zv1 && ip addr add "
                                                    "10.213.0.1/24 dev zv0 && ip link set zv1 up && ip link "
                                                    "set zv0 up")}));
    QVERIFY2(services.waitForOutput(QStringLiteral("POST /BelmorZorvaneV2Mac/device/register"), kStartMs),
             qPrintable(services.output()));
    QCOMPARE(mProgram->process().state(), QProcess::Running);
    mProgram.reset();
}

QTEST_MAIN(TestProgram)
#include "tst_program.moc"
