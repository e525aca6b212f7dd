#include "E2e.h"
#include "Hid/DeviceMessage.h"
#include "MixedText.h"
#include "MouseSimulator.h"

namespace DM = DeviceMessage;
using namespace E2e;

namespace {

// What the stand-in gateway hears, one line per stretch of speech and session: a dictation whose
// partial result is revised, a voice search, a command word, a dictation over Bluetooth, a
// translation and a sentence cut off when the mouse leaves.
const QStringList kScript = {QStringLiteral("我想|我想去北经|我想去北京看看。"),
                             QStringLiteral("搜索天气"),
                             QStringLiteral("打开主页"),
                             QStringLiteral("今天天气很好。"),
                             QStringLiteral("你好。"),
                             QStringLiteral("这一句说到一半。")};
// The user's own command word: "打开主页" opens this page.
const QString kCommandWord = QStringLiteral("打开主页");
const QString kCommandPage = QStringLiteral("http://home.example.invalid/start");
const QString kFirstDictation = QStringLiteral("我想去北京看看。");
const QString kSecondDictation = QStringLiteral("今天天气很好。");

// The address the virtual mouse has on Bluetooth.
const QString kMouseBleAddress = QStringLiteral("C8:47:8C:5A:01:02");
const QString kZorvane = QStringLiteral("^Zorvane$");
constexpr int kStartMs = 25000;
constexpr int kTextMs = 15000;

}  // namespace

// Press, speak, and the text arrives in another application that keeps the keyboard: the real
// program with the virtual mouse and the stand-ins under a window manager.
class TestVoice : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void dictationOverUsbTypesIntoTheFocusedClient();
    void voiceSearchOpensTheSearchPage();
    void commandWordOpensItsPage();
    void selectionToolbarTranslatesAndReads();
    void dictationOverBluetooth();
    void voiceTranslationIsSentIntoTheClient();
    void longDictationAfterARestart();
    void realRecognitionIsTypedAsHeard();
    void mouseLeavingMidDictationEndsTheSession();

private:
    void speak(int key);
    void startProgram();
    void restartWith(const QString& key, const QVariant& value);
    bool pageOpened(const QString& part);
    // The streams now playing into the suite's sound server, as pactl lists them.
    QString soundStreams();
    QString selectInClient(int toX);
    // The voice panels up now: every window of ours but the console.
    QStringList panels();

    QString mHome;
    UserData mBefore;
    QStringList mTouched;  // preferences the case set on purpose
    QString mSocketPath;
    QString mSpeech;
    QString mUrls;
    QString mSoundServer;
    std::unique_ptr<Child> mSound;
    std::unique_ptr<Child> mServices;
    std::unique_ptr<MouseSimulator> mSim;
    std::unique_ptr<LineEditClient> mClient;
    std::unique_ptr<Child> mProgram;
};

void TestVoice::initTestCase()
{
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString script = runtime + QStringLiteral("/script.txt");
    QVERIFY(writeFile(script, kScript.join(QLatin1Char('\n')).toUtf8() + '\n'));
    mServices = std::make_unique<Child>();
    QString failure;
    QVERIFY2(startServices(mServices.get(), QStringLiteral(SERVICES_BINARY),
                           {QStringLiteral("--script"), script}, &failure),
             qPrintable(failure));

    // The user's browser, as the desktop knows it: it notes each page it is asked to open.
    mUrls = runtime + QStringLiteral("/opened.txt");
    const QString browser = runtime + QStringLiteral("/browser");
    QVERIFY(writeFile(browser, QStringLiteral("#!/bin/sh\necho \"$1\" >> '%1'\n").arg(mUrls).toUtf8(), true));
    QVERIFY(writeFile(data + QStringLiteral("/applications/e2e-browser.desktop"),
                      QStringLiteral("[Desktop Entry]\nType=Application\nName=Browser\nExec=%1 %u\n")
                          .arg(browser)
                          .toUtf8()));
    QVERIFY(writeFile(config + QStringLiteral("/mimeapps.list"),
                      "[Default Applications]\nx-scheme-handler/http=e2e-browser.desktop\n"
                      "x-scheme-handler/https=e2e-browser.desktop\n"));
    // Selected text offers the toolbar.
    QVERIFY(writeFile(preferencesPath(), "[config]\ntextTranslateMode=1\ndpiValue=0\n"));
    writeAutostartEntry();
    QVERIFY(commandWords(kCommandWord, kCommandPage).size() == 1);
    mSpeech = runtime + QStringLiteral("/speech.wav");
    QVERIFY(writeSpeech(mSpeech));

    // A sound server of the suite's own whose only output is a null sink: what is read aloud
    // plays there as it would to the speakers.
    const QString soundSocket = runtime + QStringLiteral("/sound-server");
    mSoundServer = QStringLiteral("unix:") + soundSocket;
    mSound = std::make_unique<Child>();
    mSound->start(
        QStringLiteral("pulseaudio"),
        {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--exit-idle-time=-1"),
         QStringLiteral("--use-pid-file=no"), QStringLiteral("-L"),
         QStringLiteral("module-null-sink sink_name=e2e"), QStringLiteral("-L"),
         QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=") + soundSocket});
    QVERIFY2(QTest::qWaitFor([&] { return QFileInfo::exists(soundSocket); }, 10000),
             qPrintable(mSound->output()));

    // A two-key mouse on its receiver.
    mSocketPath = runtime + QStringLiteral("/mouse");
    mSim = std::make_unique<MouseSimulator>(QStringLiteral(MOUSE_SIM_BINARY), mSocketPath);
    QVERIFY(mSim->waitReady());
    mSim->command("set key-type 0");

    startProgram();
    QVERIFY(mSim->waitForLine(QStringLiteral("open"), kStartMs));
    QVERIFY(mSim->waitForLine(out(DM::getSoundEffect()), kStartMs));
    const QString console = waitForWindow(kZorvane, kConsoleSize, kStartMs);
    QVERIFY(!console.isEmpty());
    xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), console});

    // The application the user types in, with the keyboard.
    mClient = std::make_unique<LineEditClient>();
    QVERIFY(mClient->start(QStringLiteral(LINE_EDIT_CLIENT)));
    QVERIFY(mClient->waitForKeyboard());
}

void TestVoice::init()
{
    mBefore = UserData::read();
    mTouched.clear();
}

// Nothing of the user's that the case did not set on purpose changed on disk.
void TestVoice::cleanup()
{
    const QStringList changed = UserData::read().changedFrom(mBefore, mTouched);
    QVERIFY2(changed.isEmpty(), qPrintable(changed.join(QLatin1Char('\n'))));
}

void TestVoice::cleanupTestCase()
{
    mProgram.reset();
    mClient.reset();
    mSim.reset();
    mServices.reset();
    mSound.reset();
}

void TestVoice::startProgram()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZORVANE_DEVICE_SOCKET"), mSocketPath);
    environment.insert(QStringLiteral("PULSE_SERVER"), mSoundServer);
    mProgram = std::make_unique<Child>(environment);
    mProgram->start(QStringLiteral(ZORVANE_BINARY));
}

QString TestVoice::soundStreams()
{
    QProcess pactl;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PULSE_SERVER"), mSoundServer);
    pactl.setProcessEnvironment(environment);
    pactl.start(QStringLiteral("pactl"), {QStringLiteral("list"), QStringLiteral("sink-inputs")});
    pactl.waitForFinished(3000);
    return QString::fromUtf8(pactl.readAllStandardOutput());
}

// Holds the key while the mouse streams one stretch of speech, then lets go.
void TestVoice::speak(int key)
{
    mSim->command(QByteArray("press ") + QByteArray::number(key));
    mSim->command("audio " + mSpeech.toUtf8());
    QVERIFY(mSim->waitForLine(QStringLiteral("audio done"), 10000));
    mSim->command(QByteArray("release ") + QByteArray::number(key));
}

void TestVoice::dictationOverUsbTypesIntoTheFocusedClient()
{
    mSim->command("press 6");
    mSim->command("audio " + mSpeech.toUtf8());
    // The fixed panel shows while the key is held (the client tells no caret).
    QVERIFY(!waitForWindow(kZorvane, kFixedPanelSize).isEmpty());
    QVERIFY(mSim->waitForLine(QStringLiteral("audio done"), 10000));
    mSim->command("release 6");
    // The revised partial ("北经") was rewritten in place: exactly the final sentence.
    QVERIFY(mClient->waitForText(kFirstDictation));
    QVERIFY(mClient->hasKeyboard());
    QVERIFY(waitForNoWindow(kZorvane, kFixedPanelSize));
}

void TestVoice::voiceSearchOpensTheSearchPage()
{
    speak(5);
    QVERIFY(!waitForWindow(kZorvane, kStripSize).isEmpty());
    QVERIFY(pageOpened(QStringLiteral("/s?wd=")));
    // The command typed nothing.
    QCOMPARE(mClient->text(), kFirstDictation);
}

bool TestVoice::pageOpened(const QString& part)
{
    const bool opened = QTest::qWaitFor(
        [&] {
            QFile file(mUrls);
            return file.open(QIODevice::ReadOnly) && QString::fromUtf8(file.readAll()).contains(part);
        },
        kTextMs);
    if (!opened) {
        qWarning().noquote() << "zorvane:" << mProgram->output().right(3000);
    }
    return opened;
}

void TestVoice::commandWordOpensItsPage()
{
    speak(5);
    QVERIFY(pageOpened(kCommandPage));
    QCOMPARE(mClient->text(), kFirstDictation);
}

QStringList TestVoice::panels()
{
    QStringList found = visibleWindows(kZorvane);
    for (const QString& console : visibleWindows(kZorvane, kConsoleSize)) {
        found.removeAll(console);
    }
    return found;
}

// Selects the line's first characters with the pointer; the toolbar that comes, or empty.
QString TestVoice::selectInClient(int toX)
{
    mClient->selectWithPointer(toX);
    return waitForWindow(kZorvane, kToolbarSize);
}

void TestVoice::selectionToolbarTranslatesAndReads()
{
    QString toolbar = selectInClient(140);
    QVERIFY(!toolbar.isEmpty());
    QVERIFY(mClient->hasKeyboard());
    clickAt(toolbar, kToolbarTranslate);
    const QString window = waitForWindow(kZorvane, kTranslateWindowSize);
    QVERIFY(!window.isEmpty());
    QVERIFY2(mServices->waitForOutput(QStringLiteral("translate: GET"), kTextMs),
             qPrintable(mServices->output().right(2000)));
    clickAt(window, kTranslateWindowClose);
    QVERIFY(waitForNoWindow(kZorvane, kTranslateWindowSize));

    // Reading aloud asks the synthesis service for a new selection and plays what it says.
    toolbar = selectInClient(100);
    QVERIFY(!toolbar.isEmpty());
    clickAt(toolbar, kToolbarRead);
    QVERIFY2(mServices->waitForOutput(QStringLiteral("synthesis:"), kTextMs),
             qPrintable(mServices->output().right(2000)));
    const QString ours =
        QStringLiteral("application.process.id = \"%1\"").arg(mProgram->process().processId());
    QVERIFY2(QTest::qWaitFor([&] { return soundStreams().contains(ours); }, kTextMs),
             qPrintable(programLog().right(800) + mSound->output().right(400)));
    QCOMPARE(mClient->text(), kFirstDictation);
}

void TestVoice::dictationOverBluetooth()
{
    // The receiver out and the mouse, paired before, on Bluetooth; the program starts afresh.
    mProgram.reset();
    QVERIFY(mSim->waitForLine(QStringLiteral("closed")));
    mSim->command("unplug");
    mSim->command("ble-on");
    restartWith(QStringLiteral("saveDeviceUuid"), kMouseBleAddress);
    speak(6);
    QVERIFY(mClient->waitForText(kFirstDictation + kSecondDictation));
    QVERIFY(mClient->hasKeyboard());
}

void TestVoice::voiceTranslationIsSentIntoTheClient()
{
    // Mandarin into English: the final sentence's translation (the stand-in marks it "[en]"),
    // never the partial's, is sent into the client when the panel closes.
    mProgram.reset();
    QVERIFY(mSim->waitForLine(QStringLiteral("ble detached"), kStartMs));
    restartWith(QStringLiteral("voiceTranslateTargetLanguage"), 4);
    speak(6);
    QVERIFY(mServices->waitForOutput(QStringLiteral("translate: GET"), kTextMs));
    QVERIFY(mClient->waitForText(kFirstDictation + kSecondDictation + QStringLiteral("[en] 你好。")));
    QVERIFY(mClient->hasKeyboard());
}

void TestVoice::longDictationAfterARestart()
{
    // Long mixed dictations, each by a new run of the program in the same X session: the first
    // after a quit, the second after a kill. Neither run gives back the keycodes it put
    // characters on, and the next must take them over.
    const QString text = mixedText(400, 14);
    const QString script =
        QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/mixed.txt");
    QVERIFY(writeFile(script, text.toUtf8() + '\n'));
    QString expected = mClient->text();
    for (int run = 0; run < 2; ++run) {
        if (run == 0) {
            mProgram.reset();
        } else {
            mProgram->process().kill();
        }
        QVERIFY(mSim->waitForLine(QStringLiteral("ble detached"), kStartMs));
        if (run == 0) {
            mServices = std::make_unique<Child>();
            QString failure;
            QVERIFY2(startServices(mServices.get(), QStringLiteral(SERVICES_BINARY),
                                   {QStringLiteral("--script"), script}, &failure),
                     qPrintable(failure));
        }
        restartWith(QStringLiteral("voiceTranslateTargetLanguage"), 0);
        QTest::qWait(1500);
        speak(6);
        expected += text;
        QVERIFY2(mClient->waitForText(expected), qPrintable(mClient->text().right(200)));
    }
}

void TestVoice::realRecognitionIsTypedAsHeard()
{
    // The gateway now hears with pocketsphinx: what it recognises in espeak-ng's sentence is
    // what the client must get, whatever the words came out as.
    mProgram.reset();
    QVERIFY(mSim->waitForLine(QStringLiteral("ble detached"), kStartMs));
    mServices = std::make_unique<Child>();
    QString failure;
    QVERIFY2(startServices(mServices.get(), QStringLiteral(SERVICES_BINARY),
                           {QStringLiteral("--engine"), QStringLiteral("sphinx")}, &failure),
             qPrintable(failure));
    if (!mServices->output().contains(QLatin1String("engine: sphinx"))) {
        QSKIP("the stand-in gateway was built without pocketsphinx");
    }
    restartWith(QStringLiteral("voiceTranslateTargetLanguage"), 0);
    const QString before = mClient->text();
    speak(6);
    // The whole line of the final result.
    QString heard;
    QVERIFY2(QTest::qWaitFor(
                 [&] {
                     const QString output = mServices->output();
                     const int at = output.lastIndexOf(QLatin1String("gateway: final "));
                     const int end = at < 0 ? -1 : output.indexOf(QLatin1Char('\n'), at);
                     heard = output.mid(at + 15, end - at - 15);
                     return end > at;
                 },
                 kTextMs),
             qPrintable(mServices->output().right(2000) + programLog().right(1500)));
    qInfo().noquote() << "pocketsphinx heard:" << heard;
    QVERIFY(!heard.trimmed().isEmpty());
    QVERIFY(mClient->waitForText(before + heard));
    QVERIFY(mClient->hasKeyboard());
}

void TestVoice::mouseLeavingMidDictationEndsTheSession()
{
    const QString before = mClient->text();
    mSim->command("press 6");
    mSim->command("audio " + mSpeech.toUtf8());
    // The fixed panel, on its translation page now.
    QVERIFY(QTest::qWaitFor([&] { return !panels().isEmpty(); }, kWindowMs));
    QTest::qWait(400);
    // The mouse drops off the radio link in mid-sentence.
    mSim->command("ble-off");
    QVERIFY(mSim->waitForLine(QStringLiteral("audio cut"), 10000));
    // The session ends: the panel goes and the program stays up.
    QVERIFY(QTest::qWaitFor([&] { return panels().isEmpty(); }, kWindowMs));
    QCOMPARE(mProgram->process().state(), QProcess::Running);
    QVERIFY(mClient->text().startsWith(before));
    QVERIFY(mClient->hasKeyboard());
}

// With the program gone: changes one preference and starts it again on the mouse as it is now,
// waits for the device ladder to be through, then gives the keyboard back to the client.
void TestVoice::restartWith(const QString& key, const QVariant& value)
{
    setPreference(key, value);
    mTouched << key;
    LogMark mark;
    startProgram();
    QVERIFY(mSim->waitForLine(QStringLiteral("ble attached"), kStartMs));
    QVERIFY(mark.waitDeviceReady(kStartMs));
    const QString console = waitForWindow(kZorvane, kConsoleSize, kStartMs);
    QVERIFY(!console.isEmpty());
    xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), console});
    mClient->activateAtEnd();
}

QTEST_MAIN(TestVoice)
#include "tst_voice.moc"
