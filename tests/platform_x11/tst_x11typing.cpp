#include "MixedText.h"
#include "Platform/WinUtils.h"
#include "Platform/X11InputBackend.h"
#include "PrivateBus.h"
#include "ProcessLines.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <iostream>
#include <memory>

namespace {

// A client window in its own process, as a user's application would be.
class Client {
public:
    virtual ~Client() = default;
    virtual bool waitReady() = 0;
    // What the field holds once it equals `expected`, or what it held at the time-out.
    QString text(const QString& expected, int timeoutMs = 5000)
    {
        QElapsedTimer clock;
        clock.start();
        QString last;
        while (clock.elapsed() < timeoutMs) {
            last = read();
            if (last == expected) {
                break;
            }
            QTest::qWait(20);
        }
        return last;
    }

protected:
    virtual QString read() = 0;
};

// The Qt and GTK receivers: "ready" once focused, "get" for the field's text.
class LineClient : public Client {
public:
    explicit LineClient(const QString& program, const QStringList& arguments = {},
                        const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
    {
        mProcess.setProcessEnvironment(env);
        mProcess.start(program, arguments);
    }
    ~LineClient() override
    {
        mProcess.write("quit\n");
        if (!mProcess.waitForFinished(2000)) {
            mProcess.kill();
            mProcess.waitForFinished();
        }
    }
    bool waitReady() override { return readLineWithin(mProcess, 10000).startsWith(QLatin1String("ready ")); }

protected:
    QString read() override
    {
        mProcess.write("get\n");
        return readLineWithin(mProcess, 2000).mid(5);
    }

private:
    QProcess mProcess;
};

// xterm running `cat` on a raw terminal: what was typed lands in a file byte for byte.
class TerminalClient : public Client {
public:
    TerminalClient()
    {
        mFile = mDir.filePath(QStringLiteral("typed"));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        mProcess.setProcessEnvironment(env);
        mProcess.start(QStringLiteral("xterm"),
                       {QStringLiteral("-u8"), QStringLiteral("-T"), QStringLiteral("terminal receiver"),
                        QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"),
                        QStringLiteral("stty -icanon -echo && exec cat > '%1'").arg(mFile)});
    }
    ~TerminalClient() override
    {
        mProcess.terminate();
        if (!mProcess.waitForFinished(2000)) {
            mProcess.kill();
            mProcess.waitForFinished();
        }
    }
    bool waitReady() override
    {
        // No window manager gives it the focus.
        QProcess focus;
        focus.start(QStringLiteral("xdotool"),
                    {QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
                     QStringLiteral("--name"), QStringLiteral("terminal receiver"),
                     QStringLiteral("windowfocus"), QStringLiteral("--sync")});
        const bool focused = focus.waitForFinished(10000) && focus.exitCode() == 0;
        QElapsedTimer clock;
        clock.start();
        while (!QFile::exists(mFile) && clock.elapsed() < 10000) {
            QTest::qWait(20);
        }
        return focused && QFile::exists(mFile);
    }

protected:
    QString read() override
    {
        QFile file(mFile);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

private:
    QTemporaryDir mDir;
    QString mFile;
    QProcess mProcess;
};

std::unique_ptr<Client> startClient(const QString& kind, const QString& inputModule = QString())
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    if (!inputModule.isEmpty()) {
        env.insert(QStringLiteral("QT_IM_MODULE"), inputModule);
        env.insert(QStringLiteral("GTK_IM_MODULE"), inputModule);
        env.insert(QStringLiteral("XMODIFIERS"), QStringLiteral("@im=") + inputModule);
    }
    if (kind.startsWith(QLatin1String("qt"))) {
        return std::make_unique<LineClient>(QStringLiteral(TYPING_RECEIVER), QStringList(), env);
    }
    if (kind.startsWith(QLatin1String("gtk"))) {
        const QStringList busy{QStringLiteral("--busy"), QStringLiteral("2")};
        return std::make_unique<LineClient>(QStringLiteral(GTK_RECEIVER),
                                            kind == QLatin1String("gtk-busy") ? busy : QStringList(), env);
    }
    return std::make_unique<TerminalClient>();
}

// A backend in a process of its own, as the program is: "type TEXT" types the text in pieces
// and answers "typed" once the client has read it; the end of its input is an orderly quit, a
// kill is a crash (the keyboard map is left as it was).
class Typist {
public:
    Typist()
    {
        mProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        mProcess.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--typist")});
    }
    ~Typist() { quit(); }
    // The time it took in ms, or -1.
    int type(const QString& text)
    {
        mProcess.write(QStringLiteral("type %1\n").arg(text).toUtf8());
        const QString answer = readLineWithin(mProcess, 30000);
        return answer.startsWith(QLatin1String("typed ")) ? answer.mid(6).toInt() : -1;
    }
    void quit()
    {
        mProcess.closeWriteChannel();
        mProcess.waitForFinished(10000);
    }
    void crash()
    {
        mProcess.kill();
        mProcess.waitForFinished();
    }

    static int run()
    {
        X11InputBackend backend;
        std::string line;
        while (std::getline(std::cin, line)) {
            QElapsedTimer clock;
            clock.start();
            for (const QString& piece : pieces(QString::fromStdString(line).mid(5), 20)) {
                backend.typeText(piece);
            }
            backend.waitUntilRead();
            std::cout << "typed " << clock.elapsed() << std::endl;
        }
        return 0;
    }

private:
    QProcess mProcess;
};

// The first keysym of every keycode.
QVector<unsigned long> keymap(Display* d)
{
    int min = 0;
    int max = 0;
    int perKeycode = 0;
    XDisplayKeycodes(d, &min, &max);
    KeySym* map = XGetKeyboardMapping(d, static_cast<KeyCode>(min), max - min + 1, &perKeycode);
    QVector<unsigned long> first;
    for (int i = 0; i <= max - min; ++i) {
        first << map[i * perKeycode];
    }
    XFree(map);
    return first;
}

// The input method's state for the focused field: 2 while it composes.
int inputMethodState()
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.fcitx.Fcitx5"), QStringLiteral("/controller"),
        QStringLiteral("org.fcitx.Fcitx.Controller1"), QStringLiteral("State"));
    call.setAutoStartService(false);  // the bus would start one with the user's settings
    return QDBusConnection::sessionBus().call(call).arguments().value(0, -1).toInt();
}

// Sets ibus's engine for every field, over the bus whose address it wrote for this display.
bool setIbusEngine(const QString& engine)
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                      QStringLiteral("/ibus/bus"));
    QString address;
    for (const QFileInfo& entry : folder.entryInfoList(QDir::Files)) {
        QFile file(entry.filePath());
        file.open(QIODevice::ReadOnly);
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (line.startsWith("IBUS_ADDRESS=")) {
                address = QString::fromUtf8(line.mid(13));
            }
        }
    }
    QDBusConnection::disconnectFromBus(QStringLiteral("test.ibus"));
    QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("test.ibus"));
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.IBus"), QStringLiteral("/org/freedesktop/IBus"),
        QStringLiteral("org.freedesktop.IBus"), QStringLiteral("SetGlobalEngine"));
    call << engine;
    return !address.isEmpty() && bus.call(call).type() == QDBusMessage::ReplyMessage;
}

}  // namespace

class TestX11Typing : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void longDictationArrivesExactly_data();
    void longDictationArrivesExactly();
    void restartedProgramTypesExactly_data();
    void restartedProgramTypesExactly();
    void capsLockChangesNothing_data();
    void capsLockChangesNothing();
    void newCharactersChangeTheMapOnce();
    void inputMethodLeavesTextAlone_data();
    void inputMethodLeavesTextAlone();
    void editingKeysInAQtField();

private:
    bool startInputMethod(const QString& name);
    QString composingState(const QString& inputMethod);

    Display* mDisplay = nullptr;
    QProcess mBus;
    QProcess mInputMethod;
    QTemporaryDir mInputMethodHome;
};

void TestX11Typing::initTestCase()
{
    mDisplay = XOpenDisplay(nullptr);
    QVERIFY(mDisplay != nullptr);
    // A session bus of our own, so that the input method we start (and the one a developer
    // runs) never meet.
    mBus.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                               QStringLiteral("--print-address=1"), busInRuntimeFolder()});
    QVERIFY(mBus.waitForReadyRead(5000));
    qputenv("DBUS_SESSION_BUS_ADDRESS", mBus.readLine().trimmed());
}

void TestX11Typing::cleanupTestCase()
{
    XCloseDisplay(mDisplay);
    for (QProcess* process : {&mInputMethod, &mBus}) {
        process->terminate();
        process->waitForFinished(3000);
    }
}

// fcitx5 with Pinyin on by default in every field, or ibus with its Pinyin engine.
bool TestX11Typing::startInputMethod(const QString& name)
{
    if (mInputMethod.state() == QProcess::Running && mInputMethod.program() == name) {
        return true;
    }
    mInputMethod.terminate();
    mInputMethod.waitForFinished(3000);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
    mInputMethod.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    if (name == QLatin1String("ibus-daemon")) {
        mInputMethod.setProcessEnvironment(env);
    } else {
        const QString config = mInputMethodHome.filePath(QStringLiteral("config/fcitx5"));
        QDir().mkpath(config);
        QFile profile(config + QStringLiteral("/profile"));
        QFile behaviour(config + QStringLiteral("/config"));
        if (!profile.open(QIODevice::WriteOnly) || !behaviour.open(QIODevice::WriteOnly)) {
            return false;
        }
        profile.write(
            "[Groups/0]\nName=Default\nDefault Layout=us\nDefaultIM=pinyin\n\n"
            "[Groups/0/Items/0]\nName=keyboard-us\nLayout=\n\n"
            "[Groups/0/Items/1]\nName=pinyin\nLayout=\n\n[GroupOrder]\n0=Default\n");
        behaviour.write("[Behavior]\nActiveByDefault=True\nShareInputState=No\n");
        profile.close();
        behaviour.close();
        // Its own settings, and its own ibus address file, away from the suite's.
        env.insert(QStringLiteral("HOME"), mInputMethodHome.path());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), mInputMethodHome.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), mInputMethodHome.filePath(QStringLiteral("data")));
        mInputMethod.setProcessEnvironment(env);
    }
    const bool ibus = name == QLatin1String("ibus-daemon");
    // ibus would put its bus socket in the cache folder, inside the build tree, where a deep
    // checkout leaves too little of a socket path's 107 bytes: the short runtime folder instead.
    const QStringList arguments =
        ibus ? QStringList{QStringLiteral("--panel=disable"),
                           QStringLiteral("--address=unix:tmpdir=") + qEnvironmentVariable("XDG_RUNTIME_DIR")}
             : QStringList{QStringLiteral("--disable=wayland,waylandim")};
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 15000) {
        // The one stopped before may not have left the bus yet: start again until it stays.
        if (mInputMethod.state() == QProcess::NotRunning) {
            mInputMethod.start(name, arguments);
            mInputMethod.waitForStarted();
        }
        if (ibus ? setIbusEngine(QStringLiteral("libpinyin")) : inputMethodState() >= 0) {
            return true;
        }
        QTest::qWait(100);
    }
    return false;
}

QString TestX11Typing::composingState(const QString& inputMethod)
{
    if (inputMethod == QLatin1String("ibus-daemon")) {
        QProcess ibus;
        ibus.start(QStringLiteral("ibus"), {QStringLiteral("engine")});
        ibus.waitForFinished(3000);
        return QString::fromUtf8(ibus.readAllStandardOutput()).trimmed();
    }
    return QString::number(inputMethodState());
}

void TestX11Typing::inputMethodLeavesTextAlone_data()
{
    QTest::addColumn<QString>("client");
    QTest::addColumn<QString>("inputMethod");
    QTest::addColumn<QString>("module");
    QTest::addColumn<QString>("composing");
    QTest::newRow("qt, fcitx5") << QStringLiteral("qt+im") << QStringLiteral("fcitx5")
                                << QStringLiteral("fcitx") << QStringLiteral("2");
    QTest::newRow("gtk, fcitx5") << QStringLiteral("gtk+im") << QStringLiteral("fcitx5")
                                 << QStringLiteral("fcitx") << QStringLiteral("2");
    QTest::newRow("qt, ibus") << QStringLiteral("qt+im") << QStringLiteral("ibus-daemon")
                              << QStringLiteral("ibus") << QStringLiteral("libpinyin");
    QTest::newRow("gtk, ibus") << QStringLiteral("gtk+im") << QStringLiteral("ibus-daemon")
                               << QStringLiteral("ibus") << QStringLiteral("libpinyin");
}

void TestX11Typing::inputMethodLeavesTextAlone()
{
    QFETCH(QString, client);
    QFETCH(QString, inputMethod);
    QFETCH(QString, module);
    QFETCH(QString, composing);
    if (QStandardPaths::findExecutable(inputMethod).isEmpty()) {
        QSKIP("the input method is not installed (scripts/bootstrap installs it)");
    }
    QVERIFY(startInputMethod(inputMethod));
    std::unique_ptr<Client> receiver = startClient(client, module);
    QVERIFY(receiver->waitReady());
    QTRY_COMPARE(composingState(inputMethod), composing);
    // Pinyin would make "nihao " into a Chinese word and keep "zhong" as a composition.
    const QString text = QStringLiteral("nihao Yes 你好 zhong");
    WinUtils::getInstance()->sendInput(text.left(6));
    WinUtils::getInstance()->sendInput(text.mid(6));
    QCOMPARE(receiver->text(text), text);
    // And it composes again once the typing is over.
    QTRY_COMPARE_WITH_TIMEOUT(composingState(inputMethod), composing, 3000);
}

void TestX11Typing::cleanup()
{
    // A failed case must not leave Caps Lock on for the next.
    XkbLockModifiers(mDisplay, XkbUseCoreKbd, LockMask, 0);
    XSync(mDisplay, False);
    WinUtils::getInstance()->setBackend(nullptr);
}

void TestX11Typing::longDictationArrivesExactly_data()
{
    QTest::addColumn<QString>("client");
    QTest::newRow("qt") << QStringLiteral("qt");
    QTest::newRow("gtk") << QStringLiteral("gtk");
    QTest::newRow("gtk, busy on each change") << QStringLiteral("gtk-busy");
    QTest::newRow("xterm") << QStringLiteral("xterm");
}

void TestX11Typing::longDictationArrivesExactly()
{
    QFETCH(QString, client);
    const QString text = mixedText(1004, 14);
    const int runs = qMax(1, qEnvironmentVariableIntValue("ZORVANE_TYPING_RUNS"));
    for (int run = 0; run < runs; ++run) {
        std::unique_ptr<Client> receiver = startClient(client);
        QVERIFY(receiver->waitReady());
        // A fresh backend: every character starts unmapped, so keycodes are reassigned
        // hundreds of times while the client still has keys to read.
        X11InputBackend backend;
        WinUtils::getInstance()->setBackend(&backend);
        QElapsedTimer clock;
        clock.start();
        for (const QString& piece : pieces(text, 20)) {
            WinUtils::getInstance()->sendInput(piece);
        }
        const qint64 typing = clock.elapsed();
        const QString arrived = receiver->text(text, 15000);
        WinUtils::getInstance()->setBackend(nullptr);
        qInfo("%s run %d: %lld ms, %d remaps, %d of %d characters arrived", qPrintable(client), run, typing,
              backend.remapCount(), arrived.toUcs4().size(), text.toUcs4().size());
        QCOMPARE(arrived, text);
    }
}

void TestX11Typing::restartedProgramTypesExactly_data()
{
    QTest::addColumn<QString>("client");
    QTest::newRow("qt") << QStringLiteral("qt");
    QTest::newRow("gtk") << QStringLiteral("gtk");
}

// Runs of the program in turn in one X session, each into a new client: the first dies with its
// characters on the keyboard map, later ones quit in order.
void TestX11Typing::restartedProgramTypesExactly()
{
    QFETCH(QString, client);
    const QVector<unsigned long> original = keymap(mDisplay);
    const QString text = mixedText(1004, 14);
    auto typeInto = [&](Typist& typist, const QString& what) {
        std::unique_ptr<Client> receiver = startClient(client);
        if (!receiver->waitReady()) {
            return QString();
        }
        const int ms = typist.type(what);
        const QString arrived = receiver->text(what, 15000);
        qInfo("%d of %d characters arrived, %d ms typing", arrived.toUcs4().size(), what.toUcs4().size(), ms);
        return arrived;
    };
    Typist crashed;
    QCOMPARE(typeInto(crashed, text), text);
    crashed.crash();
    Typist second;
    QCOMPARE(typeInto(second, text), text);
    const QVector<unsigned long> leftBySecond = keymap(mDisplay);

    // A third run types while the second still runs, taking over some of its keycodes; the
    // second, quitting, empties only those that still carry its characters.
    Typist third;
    const QString other = mixedText(20, 15);
    QCOMPARE(typeInto(third, other), other);
    const QVector<unsigned long> now = keymap(mDisplay);
    QVector<unsigned long> expected = now;
    for (int i = 0; i < expected.size(); ++i) {
        if (original[i] == NoSymbol && now[i] == leftBySecond[i]) {
            expected[i] = NoSymbol;
        }
    }
    QVERIFY(now != leftBySecond && now != expected);
    second.quit();
    QCOMPARE(keymap(mDisplay), expected);
    third.quit();
    QCOMPARE(keymap(mDisplay), original);
    Typist afterCleanQuit;
    QCOMPARE(typeInto(afterCleanQuit, text), text);
}

void TestX11Typing::capsLockChangesNothing_data()
{
    QTest::addColumn<QString>("client");
    QTest::newRow("qt") << QStringLiteral("qt");
    QTest::newRow("gtk") << QStringLiteral("gtk");
}

void TestX11Typing::capsLockChangesNothing()
{
    QFETCH(QString, client);
    std::unique_ptr<Client> receiver = startClient(client);
    QVERIFY(receiver->waitReady());
    XkbLockModifiers(mDisplay, XkbUseCoreKbd, LockMask, LockMask);
    XSync(mDisplay, False);
    const QString text = QStringLiteral("Yes, Ünïcode ça 你好 ÄÖ.");
    WinUtils::getInstance()->sendInput(text);
    QCOMPARE(receiver->text(text), text);
    // The user's Caps Lock is on again afterwards.
    XkbStateRec state{};
    XkbGetState(mDisplay, XkbUseCoreKbd, &state);
    QVERIFY(state.locked_mods & LockMask);
}

// Each change of the keyboard map has every client fetch and rebuild its map: a text's new
// characters go onto their keycodes, scattered among the layout's keys, in one change.
void TestX11Typing::newCharactersChangeTheMapOnce()
{
    LineClient receiver(QStringLiteral(TYPING_RECEIVER));
    QVERIFY(receiver.waitReady());
    X11InputBackend backend;
    WinUtils::getInstance()->setBackend(&backend);
    int opcode = 0;
    int xkbEvent = 0;
    int error = 0;
    int major = XkbMajorVersion;
    int minor = XkbMinorVersion;
    QVERIFY(XkbQueryExtension(mDisplay, &opcode, &xkbEvent, &error, &major, &minor));
    XkbSelectEvents(mDisplay, XkbUseCoreKbd, XkbMapNotifyMask, XkbMapNotifyMask);
    auto mapChanges = [&] {
        XSync(mDisplay, False);
        int count = 0;
        while (XPending(mDisplay) > 0) {
            XEvent event;
            XNextEvent(mDisplay, &event);
            count +=
                event.type == xkbEvent && reinterpret_cast<XkbEvent*>(&event)->any.xkb_type == XkbMapNotify;
        }
        return count;
    };
    mapChanges();
    // Yi syllables: no earlier case typed them, so none has a keycode yet.
    const QString one = QStringLiteral("ꀀ");
    const QString eight = QStringLiteral("ꀁꀂꀃꀄꀅꀆꀇꀈ");
    WinUtils::getInstance()->sendInput(one);
    QCOMPARE(receiver.text(one), one);
    const int forOne = mapChanges();
    QVERIFY(forOne > 0);
    WinUtils::getInstance()->sendInput(eight);
    QCOMPARE(receiver.text(one + eight), one + eight);
    QCOMPARE(mapChanges(), forOne);
    XkbSelectEvents(mDisplay, XkbUseCoreKbd, XkbMapNotifyMask, 0);
}

void TestX11Typing::editingKeysInAQtField()
{
    LineClient receiver(QStringLiteral(TYPING_RECEIVER));
    QVERIFY(receiver.waitReady());
    WinUtils* win = WinUtils::getInstance();
    QCOMPARE(win->getForegroundWindowName(), QStringLiteral("typing_receiver"));
    QVERIFY(win->focusedWindow() != 0);
    const quint64 usersKeys = win->foreignKeyPresses();
    // One backspace per character, whatever its width.
    win->sendInput(QStringLiteral("abc你好"));
    QCOMPARE(receiver.text(QStringLiteral("abc你好")), QStringLiteral("abc你好"));
    win->backspace();
    win->backspace();
    win->backspace();
    QCOMPARE(receiver.text(QStringLiteral("ab")), QStringLiteral("ab"));
    // A stored "Command+A" chord (55, 0) replaces the text with what is typed next.
    win->sendKeyboard(55, true);
    win->sendKeyboard(0, true);
    win->sendKeyboard(0, false);
    win->sendKeyboard(55, false);
    win->sendInput(QStringLiteral("Y"));
    QCOMPARE(receiver.text(QStringLiteral("Y")), QStringLiteral("Y"));
    // And the editing helpers are whole chords, not stuck keys.
    win->sendInput(QStringLiteral("zz"));
    win->selectAll();
    win->sendInput(QStringLiteral("q"));
    QCOMPARE(receiver.text(QStringLiteral("q")), QStringLiteral("q"));
    // None of those keys was the user's; a key pressed by someone else is, at once.
    QCOMPARE(win->foreignKeyPresses(), usersKeys);
    const KeyCode shift = XKeysymToKeycode(mDisplay, XK_Shift_L);
    XTestFakeKeyEvent(mDisplay, shift, True, CurrentTime);
    XTestFakeKeyEvent(mDisplay, shift, False, CurrentTime);
    XSync(mDisplay, False);
    QCOMPARE(win->foreignKeyPresses(), usersKeys + 1);
}

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (app.arguments().value(1) == QLatin1String("--typist")) {
        return Typist::run();
    }
    TestX11Typing test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_x11typing.moc"
