#include "Platform/InputBackendChoice.h"
#include "Platform/WinUtils.h"
#include "Platform/X11InputBackend.h"
#include "RecordingInputBackend.h"
#include "RecordingNoticeSink.h"

#include <QtTest>

class TestWinUtils : public QObject {
    Q_OBJECT

private slots:
    void init();
    void storedCodesBecomeKeys();
    void editingChordsArePressedWhole();
    void textAndDesktop();
    void positionRules();
    void simplifiedToTraditional();
    void keysymsOfCharacters();
    void withoutADisplayNothingHappens();
    void backendFollowsTheSession();

private:
    RecordingInputBackend mRecorder;
    WinUtils* win() { return WinUtils::getInstance(); }
    QString log() { return mRecorder.takeLog().join(QStringLiteral(", ")); }
};

void TestWinUtils::init()
{
    mRecorder = RecordingInputBackend();
    win()->setBackend(&mRecorder);
}

void TestWinUtils::storedCodesBecomeKeys()
{
    // A stored chord "55#,#0" (Command+A) replayed: down in order, up in reverse.
    for (const QString& code : QStringLiteral("55#,#0").split(QStringLiteral("#,#"))) {
        win()->sendKeyboard(static_cast<unsigned short>(code.toInt()), true);
    }
    win()->sendKeyboard(0, false);
    win()->sendKeyboard(55, false);
    QCOMPARE(log(), QStringLiteral("down Control_L, down a, up a, up Control_L"));
    // The low 16 bits of a stored number count.
    win()->sendKeyboard(static_cast<unsigned short>(0x10000 + 36), true);
    QCOMPARE(log(), QStringLiteral("down Return"));
    // A code with no key is dropped.
    win()->sendKeyboard(52, true);
    QVERIFY(mRecorder.log.isEmpty());
}

void TestWinUtils::editingChordsArePressedWhole()
{
    win()->selectAll();
    win()->copyContent();
    win()->cutContent();
    win()->deleteFile();
    win()->backspace();
    QCOMPARE(log(), QStringLiteral("down Control_L, down a, up a, up Control_L, "
                                   "down Control_L, down c, up c, up Control_L, "
                                   "down Control_L, down x, up x, up Control_L, "
                                   "down Delete, up Delete, down BackSpace, up BackSpace"));
}

void TestWinUtils::textAndDesktop()
{
    win()->sendInput(QString());
    QVERIFY(mRecorder.log.isEmpty());
    win()->sendInput(QStringLiteral("你好👋"));
    win()->backspace();
    win()->backDesktop();
    QCOMPARE(mRecorder.typedText(), QStringLiteral("你好"));
    QCOMPARE(mRecorder.log.last(), QStringLiteral("desktop"));
}

void TestWinUtils::positionRules()
{
    mRecorder.screen = QRect(0, 0, 1920, 1080);
    mRecorder.caret = QPoint(300, 400);
    QCOMPARE(win()->getPosition(), QPoint(300, 400));
    mRecorder.caret = QPoint(1920, 1080);  // ends included
    QCOMPARE(win()->getPosition(), QPoint(1920, 1080));
    mRecorder.caret = QPoint(2500, 10);  // another screen: no caret
    QCOMPARE(win()->getPosition(), QPoint(0, 0));
}

void TestWinUtils::simplifiedToTraditional()
{
    QCOMPARE(win()->SimplifiedToTraditional(QStringLiteral("后来的发展, ok")),
             QStringLiteral("後來的發展, ok"));
}

void TestWinUtils::keysymsOfCharacters()
{
    QCOMPARE(X11InputBackend::keysymFor(0x4F60), 0x01004F60UL);  // 你
    QCOMPARE(X11InputBackend::keysymFor(0xFC), 0xFCUL);          // ü is Latin-1
    QCOMPARE(X11InputBackend::keysymFor('\n'), 0xFF0DUL);        // Return
}

void TestWinUtils::withoutADisplayNothingHappens()
{
    const QByteArray saved = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":4998");
    X11InputBackend backend;
    QTest::ignoreMessage(QtWarningMsg, "no X display: typing into other windows is off");
    QVERIFY(!backend.isAvailable());
    backend.typeText(QStringLiteral("你好"));
    backend.sendKey(0xff08, true);
    backend.toggleShowingDesktop();
    QVERIFY(backend.activeWindowClass().isEmpty());
    QCOMPARE(backend.focusedWindow(), 0UL);
    qputenv("DISPLAY", saved);
}

void TestWinUtils::backendFollowsTheSession()
{
    using InputBackendChoice::Kind;
    int asked = 0;
    auto offers = [&asked](bool answer) { return [&asked, answer] { return ++asked, answer; }; };
    QCOMPARE(InputBackendChoice::choose("x11", "wayland-0", offers(true), offers(true)), Kind::X11);
    QCOMPARE(InputBackendChoice::choose("wayland", "", offers(true), offers(true)), Kind::X11);
    QCOMPARE(asked, 0);  // neither compositor nor ibus is asked where the session decides
    QCOMPARE(InputBackendChoice::choose("wayland", "wayland-0", offers(true), offers(true)),
             Kind::WaylandVirtualKeyboard);
    QCOMPARE(InputBackendChoice::choose("wayland", "wayland-0", offers(false), offers(true)), Kind::IBus);
    QCOMPARE(InputBackendChoice::choose("", "wayland-0", offers(false), offers(false)), Kind::X11);

    // A Wayland session whose compositor cannot be reached: X11, and the log says what is lost.
    qputenv("XDG_SESSION_TYPE", "wayland");
    qputenv("WAYLAND_DISPLAY", "/nonexistent/wayland-9");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                           "^Wayland session without a virtual keyboard .*reaches "
                                           "only X11 windows; native Wayland windows.*nothing$")));
    const std::unique_ptr<InputBackend> chosen = InputBackendChoice::create();
    QVERIFY(dynamic_cast<X11InputBackend*>(chosen.get()) != nullptr);
    // The user is told, once, what does not work and what to do; not in an X11 session.
    RecordingNoticeSink sink;
    Notice::setSink(&sink);
    QVERIFY(InputBackendChoice::tellIfNoRoute(chosen.get(), nullptr));
    QCOMPARE(sink.notices.size(), 1);
    QVERIFY2(sink.notices.first().contains(QStringLiteral("Wayland")) &&
                 sink.notices.first().contains(QStringLiteral("IBus")),
             qPrintable(sink.notices.first()));
    qputenv("XDG_SESSION_TYPE", "x11");
    QVERIFY(!InputBackendChoice::tellIfNoRoute(chosen.get(), nullptr));
    Notice::setSink(nullptr);
    QCOMPARE(sink.notices.size(), 1);
    qunsetenv("XDG_SESSION_TYPE");
    qunsetenv("WAYLAND_DISPLAY");
}

QTEST_GUILESS_MAIN(TestWinUtils)
#include "tst_winutils.moc"
