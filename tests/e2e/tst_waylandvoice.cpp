#include "E2e.h"
#include "GtkReceiver.h"
#include "Hid/DeviceMessage.h"
#include "MouseSimulator.h"

using namespace E2e;

namespace {

// The stand-in gateway's partial result is revised ("北经" becomes "北京") before the final.
const QStringList kScript = {QStringLiteral("我想|我想去北经|我想去北京看看。"),
                             QStringLiteral("你好，😀 ça va 123。")};
constexpr int kStartMs = 30000;
constexpr int kTextMs = 15000;

#ifdef GNOME_SHELL_SESSION
const QString kTypingRoute = QStringLiteral("typing into other windows: available (IBus engine on Wayland)");
#else
const QString kTypingRoute =
    QStringLiteral("typing into other windows: available (Wayland virtual keyboard)");
#endif

}  // namespace

// Press, speak, and the text arrives in a native Wayland window: the real program in a Wayland
// session (its own windows on the session's Xwayland), the virtual mouse and the stand-ins.
class TestWaylandVoice : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void dictationArrivesRevisedInPlace();
    void selectionInTheClientOffersTheToolbar();

private:
    void speak();

    QString mSpeech;
    std::unique_ptr<Child> mServices;
    std::unique_ptr<MouseSimulator> mSim;
    std::unique_ptr<Child> mProgram;
    std::unique_ptr<GtkReceiver> mClient;
};

void TestWaylandVoice::initTestCase()
{
    QVERIFY2(!qEnvironmentVariableIsEmpty("DISPLAY") && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"),
             "needs the session's Xwayland and its Wayland display");
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString script = runtime + QStringLiteral("/script.txt");
    QVERIFY(writeFile(script, kScript.join(QLatin1Char('\n')).toUtf8() + '\n'));
    mServices = std::make_unique<Child>();
    QString failure;
    QVERIFY2(startServices(mServices.get(), QStringLiteral(SERVICES_BINARY),
                           {QStringLiteral("--script"), script}, &failure),
             qPrintable(failure));
    writeAutostartEntry();
    // Selected text offers the toolbar.
    QVERIFY(writeFile(preferencesPath(), "[config]\ntextTranslateMode=1\n"));
    mSpeech = runtime + QStringLiteral("/speech.wav");
    QVERIFY(writeSpeech(mSpeech));

    const QString socket = runtime + QStringLiteral("/mouse");
    mSim = std::make_unique<MouseSimulator>(QStringLiteral(MOUSE_SIM_BINARY), socket);
    QVERIFY(mSim->waitReady());
    mSim->command("set key-type 0");

    // As a Wayland session starts it: no platform chosen, so the program picks Xwayland itself.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    environment.insert(QStringLiteral("ZORVANE_DEVICE_SOCKET"), socket);
    mProgram = std::make_unique<Child>(environment);
    mProgram->start(QStringLiteral(ZORVANE_BINARY));
    QVERIFY(mSim->waitForLine(QStringLiteral("open"), kStartMs));
    QVERIFY(mSim->waitForLine(out(DeviceMessage::getSoundEffect()), kStartMs));
    // The start line names the session's typing route, not XTest through Xwayland.
    QVERIFY2(QTest::qWaitFor([] { return programLog().contains(kTypingRoute); }, kStartMs),
             qPrintable(programLog().right(2000)));
    // The console is up on Xwayland (at the size the compositor gives it) before the client
    // starts, so that the client has the keyboard last.
    QVERIFY(!waitForWindow(QStringLiteral("^Zorvane$"), {}, kStartMs).isEmpty());

    mClient = std::make_unique<GtkReceiver>(
        QStringLiteral(GTK_RECEIVER),
        QMap<QString, QString>{{QStringLiteral("GDK_BACKEND"), QStringLiteral("wayland")}});
    QVERIFY(mClient->waitReady(kStartMs));
}

void TestWaylandVoice::cleanupTestCase()
{
    mClient.reset();
    mProgram.reset();
    mSim.reset();
    mServices.reset();
}

// Holds the voice key while the mouse streams one stretch of speech, then lets go.
void TestWaylandVoice::speak()
{
    mSim->command("press 6");
    mSim->command("audio " + mSpeech.toUtf8());
    QVERIFY(mSim->waitForLine(QStringLiteral("audio done"), kTextMs));
    mSim->command("release 6");
}

// The revised partial is rewritten in place, the next sentence (emoji, accents, digits) goes
// on after it, and the program's panels on Xwayland never take the keyboard from the client.
void TestWaylandVoice::dictationArrivesRevisedInPlace()
{
    const QString first = QStringLiteral("我想去北京看看。");
    speak();
    QCOMPARE(mClient->text(first, kTextMs), first);
    speak();
    const QString both = first + QStringLiteral("你好，😀 ça va 123。");
    const QString arrived = mClient->text(both, kTextMs);
    if (arrived != both) {
        qWarning().noquote() << "zorvane:" << mProgram->output().right(3000);
    }
    QCOMPARE(arrived, both);
}

// In a Wayland session only a new owner of PRIMARY tells of a selection: the pointer hook sees no
// drag in a native window, and Xwayland hands PRIMARY over when one selects. An X client
// selecting without a drag stands for it here, as a headless seat has no pointer to drag with.
void TestWaylandVoice::selectionInTheClientOffersTheToolbar()
{
    // Not while the voice panel is still up after the dictation.
    QVERIFY(waitForNoWindow(QStringLiteral("^Zorvane$"), kFixedPanelSize));
    GtkReceiver x11(QStringLiteral(GTK_RECEIVER), {{QStringLiteral("GDK_BACKEND"), QStringLiteral("x11")}});
    QVERIFY(x11.waitReady(kStartMs));
    x11.select(QStringLiteral("选中的文字 selected words"));
    QVERIFY(!waitForWindow(QStringLiteral("^Zorvane$"), kToolbarSize).isEmpty());
}

QTEST_GUILESS_MAIN(TestWaylandVoice)
#include "tst_waylandvoice.moc"
