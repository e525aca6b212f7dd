#include "ProgramRig.h"

#include <QScopeGuard>

using namespace E2e;

namespace {

// Every stretch of speech is heard as the same sentence, so that what a recovered session types
// does not depend on how many sessions a fault swallowed.
const QString kSentence = QStringLiteral("我们再试一次。");
// The console's navigation and, on its settings page, the daily phrase switch.
const QPoint kDailyPhraseSwitch(802, 365);
const QByteArray kDamagedPreferences("[config\x01\xff\xfe\nrecognitionLanguage=\x80\x81\n");

}  // namespace

// The outside world failing under the real program: the speech gateway refusing, erring, going
// silent or killed mid-session, the backend, translation and synthesis failing, the user's
// files found damaged. The program stays up, the session ends cleanly, the user's text is never
// touched by a failed session, the next session works once the fault is gone, and the user's
// preferences and command words are exactly as before.
class TestFaults : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void recogniserErrorEndsTheSession();
    void gatewayRefusedThenBack();
    void backendFailingLeavesTheCommandAFace();
    void backendFailingAtStartLeavesDictation();
    void translationAndSynthesisFailing();
    void gatewayKilledMidSessionThenBack();
    void silentGatewayEndsTheSession();
    void dictationSocketDroppedMidSentence();
    void clickBeforeTheFinalKeepsTheUsersText_data();
    void clickBeforeTheFinalKeepsTheUsersText();
    void killedWhileSavingKeepsAWholeFile();
    void fullOrFailingDiskKeepsTheFiles();
    void corruptFilesDoNotStopTheProgram();

private:
    // A dictation that must type nothing: the panel comes and goes, the client keeps its text.
    void dictateNothing();
    // A dictation that must type the sentence after what the client has.
    void dictateTheSentence();
    bool panelsGone();
    // Stops the program, puts the daily phrase switch back as the case found it, starts it again.
    void restoreDailyPhrase();

    ProgramRig mRig;
    UserData mBefore;
};

void TestFaults::initTestCase()
{
    QStringList script;
    for (int i = 0; i < 12; ++i) {
        script << kSentence;
    }
    QVERIFY(mRig.prepare(script));
    QString failure;
    QVERIFY2(mRig.startServices({}, &failure), qPrintable(failure));
    QCOMPARE(commandWords(QStringLiteral("打开主页"), QStringLiteral("http://home.example.invalid/")).size(),
             1);
    setPreference(QStringLiteral("textTranslateMode"), 1);  // selections offer the toolbar
    setPreference(QStringLiteral("restTime"), 2);
    setPreference(QStringLiteral("dpiValue"), 0);
    QVERIFY(mRig.startMouse());
    QVERIFY(mRig.startProgramOnReceiver());
    QVERIFY(mRig.startClient());
}

void TestFaults::cleanupTestCase()
{
    mRig.program.reset();
    mRig.client.reset();
}

void TestFaults::init()
{
    mBefore = UserData::read();
}

void TestFaults::cleanup()
{
    QVERIFY(mRig.nothingLost(mBefore));
    QVERIFY(mRig.programRunning());
}

bool TestFaults::panelsGone()
{
    if (QTest::qWaitFor([&] { return mRig.panels().isEmpty(); }, kWindowMs)) {
        return true;
    }
    for (const QString& window : mRig.panels()) {
        const QSize size = windowSize(window);
        qWarning() << "still up:" << window << size;
    }
    return false;
}

void TestFaults::dictateNothing()
{
    mRig.client->activateAtEnd();
    const QString before = mRig.client->text();
    QVERIFY(mRig.speak(6, false));
    QVERIFY(QTest::qWaitFor([&] { return !mRig.panels().isEmpty(); }, kWindowMs));
    QVERIFY(mRig.sim->waitForLine(QStringLiteral("audio done"), 10000));
    mRig.sim->command("release 6");
    QVERIFY(panelsGone());
    QCOMPARE(mRig.client->text(), before);
    QVERIFY(mRig.client->hasKeyboard());
}

void TestFaults::dictateTheSentence()
{
    mRig.client->activateAtEnd();
    const QString before = mRig.client->text();
    QVERIFY(mRig.speak(6));
    QVERIFY(mRig.client->waitForText(before + kSentence));
    QVERIFY(mRig.client->hasKeyboard());
    QVERIFY(panelsGone());
}

void TestFaults::recogniserErrorEndsTheSession()
{
    // The gateway answers the parameters with an error of its own.
    QVERIFY(mRig.setFault(QStringLiteral("gateway:error=-3005")));
    dictateNothing();
    QVERIFY(programLog().contains(QLatin1String("onRecError: 404")));
    QVERIFY(mRig.setFault(QStringLiteral("gateway:off")));
    dictateTheSentence();
}

void TestFaults::gatewayRefusedThenBack()
{
    QVERIFY(mRig.setFault(QStringLiteral("gateway:refuse")));
    dictateNothing();
    QVERIFY(programLog().contains(QLatin1String("cannot reach the gateway")));
    QVERIFY(mRig.setFault(QStringLiteral("gateway:off")));
    dictateTheSentence();
}

void TestFaults::backendFailingLeavesTheCommandAFace()
{
    // A command the program does not know itself goes to the backend's parsing; when that
    // fails in any way the strip shows its face, types nothing and opens nothing.
    const QString before = mRig.client->text();
    for (const QString& fault : {QStringLiteral("backend:status=500"), QStringLiteral("backend:malformed")}) {
        QVERIFY(mRig.setFault(fault));
        const int asked = mRig.services->output().count(QLatin1String("/semantic"));
        QVERIFY(mRig.speak(5));
        QVERIFY(!waitForWindow(ProgramRig::ourWindows(), kStripSize).isEmpty());
        QVERIFY2(
            QTest::qWaitFor([&] { return mRig.services->output().count(QLatin1String("/semantic")) > asked; },
                            kWindowMs),
            qPrintable(mRig.services->output().right(1500)));
        QTest::qWait(500);
        QVERIFY(!visibleWindows(ProgramRig::ourWindows(), kStripSize).isEmpty());
        QCOMPARE(mRig.client->text(), before);
    }
    // A backend that answers after the program's time limit (8 s): the same, once it is past.
    QVERIFY(mRig.setFault(QStringLiteral("backend:off")));
    QVERIFY(mRig.setFault(QStringLiteral("backend:delay=10000")));
    const int timeouts = programLog().count(QLatin1String("http timeout:"));
    QVERIFY(mRig.speak(5));
    QVERIFY(QTest::qWaitFor([&] { return programLog().count(QLatin1String("http timeout:")) > timeouts; },
                            10000));
    QCOMPARE(mRig.client->text(), before);
    QVERIFY(mRig.setFault(QStringLiteral("backend:off")));
    // The next press clears the strip: a dictation works as ever.
    dictateTheSentence();
}

void TestFaults::backendFailingAtStartLeavesDictation()
{
    // A later start while the backend fails: the mouse of the last run opens all the same.
    QVERIFY(mRig.stopProgram());
    QVERIFY(mRig.setFault(QStringLiteral("backend:status=500")));
    const bool started = mRig.startProgramOnReceiver();
    QVERIFY(mRig.setFault(QStringLiteral("backend:off")));
    QVERIFY(started);
    dictateTheSentence();
}

void TestFaults::translationAndSynthesisFailing()
{
    QVERIFY(mRig.setFault(QStringLiteral("translate:error=54003")));
    QVERIFY(mRig.setFault(QStringLiteral("synthesis:status=500")));
    mRig.client->selectWithPointer(140);
    QString toolbar = waitForWindow(ProgramRig::ourWindows(), kToolbarSize);
    QVERIFY(!toolbar.isEmpty());
    clickAt(toolbar, kToolbarTranslate);
    const QString window = waitForWindow(ProgramRig::ourWindows(), kTranslateWindowSize);
    QVERIFY(!window.isEmpty());
    QVERIFY(mRig.services->waitForOutput(QStringLiteral("translate: GET"), kWindowMs));
    QVERIFY(QTest::qWaitFor([&] { return programLog().contains(QLatin1String("text translation failed")); },
                            kWindowMs));
    // The window stays and still answers: its close button closes it.
    QVERIFY(!visibleWindows(ProgramRig::ourWindows(), kTranslateWindowSize).isEmpty());
    clickAt(window, kTranslateWindowClose);
    QVERIFY(waitForNoWindow(ProgramRig::ourWindows(), kTranslateWindowSize));

    // Reading a selection aloud with the synthesis failing: asked, nothing played, no crash.
    mRig.client->selectWithPointer(100);
    toolbar = waitForWindow(ProgramRig::ourWindows(), kToolbarSize);
    QVERIFY(!toolbar.isEmpty());
    clickAt(toolbar, kToolbarRead);
    QVERIFY(mRig.services->waitForOutput(QStringLiteral("synthesis:"), kWindowMs));
    QTest::qWait(500);
    // Nothing plays, and the toolbar still answers: a second click stops the reading, and with
    // the pointer away it goes.
    QVERIFY(!visibleWindows(ProgramRig::ourWindows(), kToolbarSize).isEmpty());
    clickAt(toolbar, kToolbarRead);
    clickAt(mRig.client->window(), QPoint(mRig.client->field().width() - 20, 30));
    QVERIFY(waitForNoWindow(ProgramRig::ourWindows(), kToolbarSize));
    QVERIFY(mRig.setFault(QStringLiteral("translate:off")));
    QVERIFY(mRig.setFault(QStringLiteral("synthesis:off")));
    dictateTheSentence();
}

void TestFaults::gatewayKilledMidSessionThenBack()
{
    mRig.client->activateAtEnd();
    const QString before = mRig.client->text();
    QVERIFY(mRig.speak(6, false));
    QVERIFY(QTest::qWaitFor([&] { return !mRig.panels().isEmpty(); }, kWindowMs));
    QTest::qWait(700);
    // The services die in mid-sentence; the key comes up later as the user lets go.
    mRig.services->process().kill();
    mRig.services->process().waitForFinished();
    QVERIFY(mRig.sim->waitForLine(QStringLiteral("audio done"), 10000));
    mRig.sim->command("release 6");
    QVERIFY(panelsGone());
    QVERIFY(mRig.programRunning());
    // Whatever the partial results typed stays; nothing else came.
    const QString after = mRig.client->text();
    QVERIFY(after.startsWith(before));
    QVERIFY(kSentence.startsWith(after.mid(before.size())));

    // The services come back where they were: the next session works without a restart.
    QString failure;
    QVERIFY2(mRig.restartServices({}, &failure), qPrintable(failure));
    dictateTheSentence();
}

void TestFaults::silentGatewayEndsTheSession()
{
    // Every SDK port takes the parameters and never answers them.
    QString failure;
    QVERIFY2(mRig.restartServices(
                 {QStringLiteral("--gateway-params"), QStringLiteral("silent,silent,silent")}, &failure),
             qPrintable(failure));
    dictateNothing();
    QVERIFY(programLog().contains(QLatin1String("no parameter acknowledgement")));
    QVERIFY2(mRig.restartServices({}, &failure), qPrintable(failure));
    dictateTheSentence();
}

// The mouse of a customer whose dictation goes to the web socket service; that service hangs
// up after its first result.
void TestFaults::dictationSocketDroppedMidSentence()
{
    const auto switchMouse = [this](const QByteArray& customer) {
        mRig.sim->command("unplug");
        QVERIFY(mRig.sim->waitForLine(QStringLiteral("closed"), kWindowMs));
        mRig.sim->command("set customer " + customer);
        mRig.sim->command("plug");
        QVERIFY(mRig.sim->waitForLine(QStringLiteral("open"), ProgramRig::kStartMs));
        QVERIFY(mRig.sim->waitForLine(out(DeviceMessage::getSoundEffect()), ProgramRig::kStartMs));
        QVERIFY(waitForNoWindow(ProgramRig::ourWindows(), QSize(336, 72)));  // the plug strip
    };
    switchMouse("0D0E0F");
    QVERIFY(mRig.setFault(QStringLiteral("ifly:close")));
    mRig.client->activateAtEnd();
    const QString before = mRig.client->text();
    const int sessions = mRig.services->output().count(QLatin1String("ifly: "));
    QVERIFY(mRig.speak(6));
    QVERIFY(QTest::qWaitFor([&] { return mRig.services->output().count(QLatin1String("ifly: ")) > sessions; },
                            kWindowMs));
    QVERIFY(panelsGone());
    // What came before the cut stays; nothing else came, and the program goes on.
    const QString after = mRig.client->text();
    QVERIFY(after.startsWith(before));
    QVERIFY(kSentence.startsWith(after.mid(before.size())));
    QVERIFY(mRig.setFault(QStringLiteral("ifly:off")));
    mRig.client->activateAtEnd();
    const QString cut = mRig.client->text();
    QVERIFY(mRig.speak(6));
    QVERIFY(mRig.client->waitForText(cut + kSentence));
    switchMouse("0A0B0C");
}

// The user clicks into the line, or presses Enter (a chat sends the line), before the
// sentence's final correction comes (here the full stop, which comes with the release): it must
// not land where the cursor is now.
void TestFaults::clickBeforeTheFinalKeepsTheUsersText_data()
{
    QTest::addColumn<bool>("enter");
    QTest::newRow("click") << false;
    QTest::newRow("enter") << true;
}

void TestFaults::clickBeforeTheFinalKeepsTheUsersText()
{
    QFETCH(bool, enter);
    const QString dropped = QStringLiteral("its rewrite is dropped");
    const int droppedBefore = programLog().count(dropped);
    mRig.client->activateAtEnd();
    const QString before = mRig.client->text();
    const QString lastPartial = kSentence.chopped(1);
    QVERIFY(mRig.speak(6, false));
    QVERIFY(mRig.sim->waitForLine(QStringLiteral("audio done"), 10000));
    QVERIFY(mRig.client->waitForText(before + lastPartial));
    if (enter) {
        xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    } else {
        mRig.client->clickIntoLine(2);
    }
    mRig.sim->command("release 6");
    QVERIFY(panelsGone());
    QVERIFY(QTest::qWaitFor([&] { return programLog().count(dropped) > droppedBefore; }, kWindowMs));
    QCOMPARE(mRig.client->text(), before + lastPartial);
    dictateTheSentence();
}

// Killed in the middle of saving a setting: strace kills the program as the save puts the new
// file in place (Qt links its unnamed temporary file, or renames a named one, onto the
// preferences), nothing else in the program links or renames meanwhile. The file is the old one
// byte for byte; saved without a kill, it is the new one, whole. A writer that wrote in place
// would never be stopped there, and fail the case.
void TestFaults::killedWhileSavingKeepsAWholeFile()
{
    if (QStandardPaths::findExecutable(QStringLiteral("strace")).isEmpty()) {
        QSKIP("strace is needed to kill the program inside its save");
    }
    auto fileText = [] {
        QFile file(preferencesPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const UserData before = UserData::read();
    QString console = mRig.showConsole();
    QVERIFY(!console.isEmpty());
    clickAt(console, kNavAppSettings);
    const QByteArray old = fileText();
    QVERIFY(!old.isEmpty());
    const QString calls = QStringLiteral("linkat,rename,renameat,renameat2");
    QProcess strace;
    strace.setProcessChannelMode(QProcess::MergedChannels);
    strace.start(
        QStringLiteral("strace"),
        {QStringLiteral("-f"), QStringLiteral("-p"), QString::number(mRig.program->process().processId()),
         QStringLiteral("-e"), QStringLiteral("trace=") + calls, QStringLiteral("-e"),
         QStringLiteral("inject=%1:signal=SIGKILL").arg(calls)});
    QByteArray traced;
    QVERIFY(QTest::qWaitFor([&] { return (traced += strace.readAll()).contains("attached"); }, 10000));
    clickAt(console, kDailyPhraseSwitch);
    QVERIFY(mRig.program->process().waitForFinished(kWindowMs));
    QVERIFY(strace.waitForFinished(5000));
    traced += strace.readAll();
    // The one call stopped, the first linked or renamed: onto the preferences.
    QVERIFY2(
        traced.contains(QFile::encodeName(preferencesPath()) + '"') && traced.contains("killed by SIGKILL"),
        traced.constData());
    mRig.program.reset();
    QVERIFY(mRig.sim->waitForLine(QStringLiteral("closed"), kWindowMs));
    QCOMPARE(fileText(), old);
    QVERIFY(mRig.nothingLost(before));

    QVERIFY(mRig.startProgramOnReceiver());
    console = mRig.showConsole();
    clickAt(console, kNavAppSettings);
    clickAt(console, kDailyPhraseSwitch);
    QTRY_VERIFY(fileText() != old);
    QSettings written(preferencesPath(), QSettings::IniFormat);
    QCOMPARE(written.status(), QSettings::NoError);
    QVERIFY(mRig.nothingLost(before, {QStringLiteral("calendarPhrases")}));
    restoreDailyPhrase();
}

void TestFaults::restoreDailyPhrase()
{
    QVERIFY(mRig.stopProgram());
    const QString key = QStringLiteral("preferences.ini:config/calendarPhrases");
    QSettings preferences(preferencesPath(), QSettings::IniFormat);
    if (mBefore.values.contains(key)) {
        preferences.setValue(QStringLiteral("config/calendarPhrases"), mBefore.values.value(key));
    } else {
        preferences.remove(QStringLiteral("config/calendarPhrases"));
    }
    preferences.sync();
    QVERIFY(mRig.startProgramOnReceiver());
}

// The disk fills, then fails, under the running program (its write, sync and rename calls on
// the folders fail as the kernel fails them): a setting changed meanwhile is logged as not
// saved and leaves the file as it was; the log keeps its lines whole and tells afterwards how
// many it lost; once the disk is well the next change is saved whole.
void TestFaults::fullOrFailingDiskKeepsTheFiles()
{
    const QString control = mRig.runtime() + QStringLiteral("/faults");
    auto faults = [&](const QStringList& rules) {
        return writeFile(control, rules.join(QLatin1Char('\n')).toUtf8());
    };
    auto rule = [](const char* error, const char* calls, const QString& folder) {
        return QStringLiteral("%1 %2 %3/").arg(QLatin1String(error), QLatin1String(calls), folder);
    };
    auto readFile = [](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    auto fileText = [&] { return readFile(preferencesPath()); };
    auto notSaved = [] { return programLog().count(QStringLiteral("- the file is left as it was")); };
    QVERIFY(faults({}));
    QVERIFY(mRig.stopProgram());
    mRig.extraEnvironment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(SYSCALL_FAULTS_LIBRARY));
    mRig.extraEnvironment.insert(QStringLiteral("ZORVANE_FAULTS"), control);
    // The address sanitizer's runtime is then not the first library, which it would refuse.
    mRig.extraEnvironment.insert(
        QStringLiteral("ASAN_OPTIONS"),
        qEnvironmentVariable("ASAN_OPTIONS") + QStringLiteral(":verify_asan_link_order=0"));
    auto plain = qScopeGuard([&] { mRig.extraEnvironment = QProcessEnvironment(); });
    QVERIFY(mRig.startProgramOnReceiver());
    const QString console = mRig.showConsole();
    QVERIFY(!console.isEmpty());
    clickAt(console, kNavAppSettings);
    const QByteArray before = fileText();
    QVERIFY(!before.isEmpty());
    // Away from the file's value, which is a save; then back to it, which needs none.
    auto changeAndBack = [&] {
        const int earlier = notSaved();
        clickAt(console, kDailyPhraseSwitch);
        QTRY_VERIFY(notSaved() > earlier);
        QCOMPARE(fileText(), before);
        clickAt(console, kDailyPhraseSwitch);
    };

    // A full disk, then one that takes the new file but fails to sync or name it.
    QVERIFY(faults({rule("ENOSPC", "write", configFolder())}));
    changeAndBack();
    QVERIFY(faults({rule("EIO", "sync", configFolder()), rule("EIO", "rename", configFolder())}));
    changeAndBack();

    // The log's folder full as well: the line saying so is lost, the log stays as it was.
    QVERIFY(faults({rule("ENOSPC", "write", configFolder()), rule("ENOSPC", "write", stateFolder())}));
    const QString log = programLog();
    clickAt(console, kDailyPhraseSwitch);
    // Each call failed is listed beside the rules: the log's write was one.
    QTRY_VERIFY(QString::fromUtf8(readFile(control + QStringLiteral(".hits"))).contains(programLogPath()));
    QCOMPARE(programLog(), log);
    clickAt(console, kDailyPhraseSwitch);
    // Room for the log again: its next line is told of the loss, after the old lines, whole.
    QVERIFY(faults({rule("ENOSPC", "write", configFolder())}));
    changeAndBack();
    QVERIFY(programLog().startsWith(log));
    QVERIFY2(programLog().mid(log.size()).contains(QStringLiteral("log lines were lost")),
             qPrintable(programLog().mid(log.size())));
    QVERIFY(mRig.programRunning());

    // A well disk: the next change is saved, whole.
    QVERIFY(faults({}));
    clickAt(console, kDailyPhraseSwitch);
    QTRY_VERIFY(fileText() != before);
    QCOMPARE(QSettings(preferencesPath(), QSettings::IniFormat).status(), QSettings::NoError);
    QVERIFY(mRig.programRunning());
    mRig.extraEnvironment = QProcessEnvironment();
    restoreDailyPhrase();
}

void TestFaults::corruptFilesDoNotStopTheProgram()
{
    // The program ends; the preferences and the command words are found damaged at the next
    // start, as after a disk fault.
    QVERIFY(mRig.stopProgram());
    QFile preferences(preferencesPath());
    QVERIFY(preferences.open(QIODevice::ReadOnly));
    const QByteArray goodPreferences = preferences.readAll();
    preferences.close();
    QFile words(commandWordsPath());
    QVERIFY(words.open(QIODevice::ReadOnly));
    const QByteArray goodWords = words.readAll();
    words.close();
    // A database's header with nothing sound behind it.
    const QByteArray damagedWords = QByteArray("SQLite format 3\0", 16) + QByteArray(3000, '\xa5');
    QVERIFY(writeFile(preferencesPath(), kDamagedPreferences));
    QVERIFY(writeFile(commandWordsPath(), damagedWords));

    QVERIFY(mRig.startProgramOnReceiver());
    dictateTheSentence();
    // What was damaged is kept for the user to look at, beside the fresh files.
    QStringList kept;
    QFileInfoList files = QDir(dataFolder()).entryInfoList(QDir::Files);
    files += QDir(configFolder()).entryInfoList(QDir::Files);
    for (const QFileInfo& file : qAsConst(files)) {
        QFile damaged(file.filePath());
        const QByteArray content = damaged.open(QIODevice::ReadOnly) ? damaged.readAll() : QByteArray();
        if (file.filePath() != preferencesPath() && file.filePath() != commandWordsPath() &&
            (content == kDamagedPreferences || content == damagedWords)) {
            kept << file.fileName();
        }
    }
    QVERIFY2(kept.size() == 2, qPrintable(kept.join(QLatin1Char(' '))));

    // The good files back, for the cases after this one and for the comparison of the user's data.
    QVERIFY(mRig.stopProgram());
    QVERIFY(writeFile(preferencesPath(), goodPreferences));
    QVERIFY(writeFile(commandWordsPath(), goodWords));
    QVERIFY(mRig.startProgramOnReceiver());
}

QTEST_MAIN(TestFaults)
#include "tst_faults.moc"
