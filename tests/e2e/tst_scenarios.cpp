#include "FakeNotifications.h"
#include "PrivateBus.h"
#include "ProgramRig.h"

#include <QDBusConnection>

using namespace E2e;

namespace {

// The first stretch of speech is cut off when the receiver is pulled; the second is heard
// whole once it is back.
const QStringList kScript = {QStringLiteral("这一句说到一半就断了。"), QStringLiteral("我又回来了。")};
const QString kAfterReplug = QStringLiteral("我又回来了。");
const QString kNewVersion = QStringLiteral("9.9.9.9");

const QSize kFeedbackSize(460, 400);
const QSize kUpdateSize(440, 320);
const QString kLowbatName = QStringLiteral("^Zorvane 电量提醒$");
const QString kPlugStripName = QStringLiteral("^Zorvane 设备提示$");

// Spots in the windows, from their top-left corners: the console's navigation and the link at
// the foot of its settings page, the feedback dialog's fields and button, the update offer's.
const QPoint kFeedbackLink(245, 565);
const QPoint kFeedbackTitle(233, 66);
const QPoint kFeedbackContent(233, 200);
const QPoint kFeedbackSubmit(393, 364);
const QPoint kUpdateNow(365, 274);

}  // namespace

// What a user meets besides dictating, in the real program with the virtual mouse and the
// stand-ins under a window manager: battery and plug notices reach the desktop's notification
// server, a session survives the receiver going and coming, feedback reaches the backend and an
// update is offered, fetched, checked and handed to the package installer. After each, whatever the scenario
// did not touch of the user's preferences and command words is exactly as before.
class TestScenarios : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void lowBatteryShowsThePanelAndANotification();
    void receiverPulledMidSessionAndBack();
    void feedbackReachesTheBackend();
    void updateIsOfferedFetchedAndHandedOver();

private:
    QList<FakeNotifications::Call> callsStartingWith(const QString& summary) const;

    ProgramRig mRig;
    QString mOpened;
    QProcess mBus;
    FakeNotifications mNotifications;
    UserData mBefore;
};

void TestScenarios::initTestCase()
{
    QVERIFY(mRig.prepare(kScript));
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);

    // The desktop's session bus with a notification server on it, which is this suite.
    mBus.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                               QStringLiteral("--print-address=1"), busInRuntimeFolder()});
    QVERIFY(mBus.waitForStarted() && mBus.waitForReadyRead(5000));
    const QString address = QString::fromLocal8Bit(mBus.readLine()).trimmed();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address.toLocal8Bit());
    QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("e2e"));
    QVERIFY(bus.isConnected());
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &mNotifications,
                               QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.Notifications")));

    // What the desktop opens files with: a handler that notes each one.
    mOpened = mRig.runtime() + QStringLiteral("/opened.txt");
    const QString opener = mRig.runtime() + QStringLiteral("/opener");
    QVERIFY(
        writeFile(opener, QStringLiteral("#!/bin/sh\necho \"$1\" >> '%1'\n").arg(mOpened).toUtf8(), true));
    QVERIFY(writeFile(
        data + QStringLiteral("/applications/e2e-opener.desktop"),
        QStringLiteral("[Desktop Entry]\nType=Application\nName=Opener\nExec=%1 %f\n").arg(opener).toUtf8()));
    // The system's package installer, as the desktop associates it with Debian packages.
    QVERIFY(writeFile(data + QStringLiteral("/applications/e2e-installer.desktop"),
                      QStringLiteral("[Desktop Entry]\nType=Application\nName=Installer\nExec=%1 %f\n"
                                     "Categories=System;PackageManager;\n")
                          .arg(opener)
                          .toUtf8()));
    QVERIFY(writeFile(config + QStringLiteral("/mimeapps.list"),
                      "[Default Applications]\napplication/vnd.debian.binary-package=e2e-installer.desktop\n"
                      "text/x-shellscript=e2e-opener.desktop\n"
                      "application/x-shellscript=e2e-opener.desktop\n"
                      "application/octet-stream=e2e-opener.desktop\ntext/plain=e2e-opener.desktop\n"));

    QString failure;
    QVERIFY2(mRig.startServices({}, &failure), qPrintable(failure));
    // The user's own things, which no scenario may lose: a command word and a few settings.
    QCOMPARE(commandWords(QStringLiteral("打开主页"), QStringLiteral("http://home.example.invalid/")).size(),
             1);
    setPreference(QStringLiteral("dpiValue"), 0);  // "standard", which the mouse reaches at once
    setPreference(QStringLiteral("restTime"), 2);
    setPreference(QStringLiteral("noticeStyle"), 2);  // the panel and a notification
    QVERIFY(mRig.startMouse());
    QVERIFY(mRig.startProgramOnReceiver());
    QVERIFY(mRig.startClient());
}

void TestScenarios::cleanupTestCase()
{
    mRig.program.reset();
    mRig.client.reset();
    mBus.kill();
    mBus.waitForFinished();
}

void TestScenarios::init()
{
    mBefore = UserData::read();
}

// Nothing the scenario did not ask for changed on disk.
void TestScenarios::cleanup()
{
    QVERIFY(mRig.nothingLost(mBefore));
}

QList<FakeNotifications::Call> TestScenarios::callsStartingWith(const QString& summary) const
{
    QList<FakeNotifications::Call> found;
    for (const FakeNotifications::Call& call : mNotifications.calls) {
        if (call.summary.startsWith(summary)) {
            found << call;
        }
    }
    return found;
}

void TestScenarios::lowBatteryShowsThePanelAndANotification()
{
    const QString battery = QStringLiteral("鼠标电量");
    mRig.sim->command("lowbat 1");
    QVERIFY(!waitForWindow(kLowbatName).isEmpty());
    QVERIFY(QTest::qWaitFor([&] { return callsStartingWith(battery).size() == 1; }, kWindowMs));
    const FakeNotifications::Call first = callsStartingWith(battery).first();
    QCOMPARE(first.app, QStringLiteral("Zorvane"));
    QVERIFY(!first.icon.isEmpty());
    QCOMPARE(first.replaces, 0u);

    // Worse news replaces the notice instead of stacking a second one.
    mRig.sim->command("lowbat 2");
    QVERIFY(QTest::qWaitFor([&] { return callsStartingWith(battery).size() == 2; }, kWindowMs));
    QCOMPARE(callsStartingWith(battery).last().summary, QStringLiteral("鼠标电量严重不足"));
    QCOMPARE(callsStartingWith(battery).last().replaces, mNotifications.lastGiven);
    QVERIFY(mRig.programRunning());
}

void TestScenarios::receiverPulledMidSessionAndBack()
{
    LineEditClient* client = mRig.client.get();
    client->activateAtEnd();
    const QString before = client->text();
    QVERIFY(mRig.speak(6, false));
    QTest::qWait(600);
    // Pulled out in mid-sentence: no release ever comes from the mouse.
    mRig.sim->command("unplug");
    QVERIFY(mRig.sim->waitForLine(QStringLiteral("closed"), kWindowMs));
    QVERIFY(!waitForWindow(kPlugStripName, kPlugStripSize).isEmpty());
    QVERIFY(
        QTest::qWaitFor([&] { return !callsStartingWith(QStringLiteral("设备拔出")).isEmpty(); }, kWindowMs));
    QVERIFY(mRig.programRunning());
    QVERIFY(client->text().startsWith(before));

    // Back in: the next session types its sentence whole, after whatever the cut one left.
    LogMark mark;
    mRig.sim->command("plug");
    QVERIFY(mRig.sim->waitForLine(QStringLiteral("open"), ProgramRig::kStartMs));
    QVERIFY(
        QTest::qWaitFor([&] { return !callsStartingWith(QStringLiteral("设备插入")).isEmpty(); }, kWindowMs));
    QVERIFY(mark.waitDeviceReady());
    client->activateAtEnd();
    const QString cut = client->text();
    QVERIFY(mRig.speak(6));
    QVERIFY(client->waitForText(cut + kAfterReplug));
    QVERIFY(client->hasKeyboard());
}

void TestScenarios::feedbackReachesTheBackend()
{
    const QString console = mRig.showConsole();
    QVERIFY(!console.isEmpty());
    clickAt(console, kNavAppSettings);
    clickAt(console, kFeedbackLink);
    const QString dialog = waitForWindow(ProgramRig::ourWindows(), kFeedbackSize);
    QVERIFY(!dialog.isEmpty());
    clickAt(dialog, kFeedbackTitle);
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"),
             QStringLiteral("Battery lasts a week")});
    clickAt(dialog, kFeedbackContent);
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"),
             QStringLiteral("Thanks for the update.")});
    clickAt(dialog, kFeedbackSubmit);

    // The backend has both fields; the thanks count down and the dialog goes.
    const QString endpoint = QStringLiteral("/feedback/upload");
    QVERIFY(QTest::qWaitFor([&] { return !mRig.uploads(endpoint).isEmpty(); }, kWindowMs));
    const QJsonObject feedback = mRig.uploads(endpoint).last();
    QCOMPARE(feedback.value(QLatin1String("title")).toString(), QStringLiteral("Battery lasts a week"));
    QCOMPARE(feedback.value(QLatin1String("content")).toString(), QStringLiteral("Thanks for the update."));
    QVERIFY(waitForNoWindow(ProgramRig::ourWindows(), kFeedbackSize));
    xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), console});
}

void TestScenarios::updateIsOfferedFetchedAndHandedOver()
{
    // The backend now publishes a newer version: the next start offers it.
    QVERIFY(mRig.stopProgram());
    QString failure;
    QVERIFY2(mRig.startServices({QStringLiteral("--app-version"), kNewVersion,
                                 QStringLiteral("--installer-kib"), QStringLiteral("256")},
                                &failure),
             qPrintable(failure));
    mRig.startProgram();
    const QString offer = waitForWindow(ProgramRig::ourWindows(), kUpdateSize, ProgramRig::kStartMs);
    QVERIFY(!offer.isEmpty());
    clickAt(offer, kUpdateNow);

    // Fetched into the Downloads folder, checked against the published digest, handed to the
    // package installer, and the program goes.
    const QString installer = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation) +
                              QStringLiteral("/zorvane-update.deb");
    QProcess& program = mRig.program->process();
    QVERIFY(program.waitForFinished(ProgramRig::kStartMs));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QFile fetched(installer);
    QVERIFY2(fetched.open(QIODevice::ReadOnly), qPrintable(programLog().right(3000)));
    QVERIFY(fetched.size() >= 256 * 1024);
    QVERIFY(fetched.readAll().contains(kNewVersion.toUtf8()));
    QVERIFY(QTest::qWaitFor(
        [&] {
            QFile opened(mOpened);
            return opened.open(QIODevice::ReadOnly) && opened.readAll().contains(installer.toUtf8());
        },
        kWindowMs));
}

QTEST_MAIN(TestScenarios)
#include "tst_scenarios.moc"
