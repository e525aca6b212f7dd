#include "GtkReceiver.h"
#include "MixedText.h"
#include "Platform/InputBackendChoice.h"
#include "Platform/Wayland/WaylandKeyboardBackend.h"
#include "Platform/WinUtils.h"

#include <QSet>
#include <QtTest>

#include <X11/keysym.h>

#include <memory>

namespace {

// foot running `cat` on a raw terminal: what the terminal sends its program lands in a file,
// byte for byte. BackSpace arrives there as DEL (0x7f), which a line editor or shell applies
// as the removal of one character: so does read(). A terminal says nothing of its focus, so
// sway is asked (its socket in SWAYSOCK, from tests/sway-run-test).
class FootReceiver : public GtkReceiver {
public:
    explicit FootReceiver(const QString& file)
        : GtkReceiver(QStringLiteral("foot"), {{QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8")}},
                      {QStringLiteral("--app-id=zorvane-foot"), QStringLiteral("sh"), QStringLiteral("-c"),
                       QStringLiteral("stty raw -echo && exec cat > '%1'").arg(file)}),
          mFile(file)
    {
    }
    ~FootReceiver() override { mProcess.terminate(); }
    bool waitReady(int timeoutMs = 10000) override
    {
        QElapsedTimer clock;
        clock.start();
        const QStringList focused{QStringLiteral("-q"),
                                  QStringLiteral("[app_id=zorvane-foot con_id=__focused__] nop")};
        while (!(QFile::exists(mFile) && QProcess::execute(QStringLiteral("swaymsg"), focused) == 0)) {
            if (clock.elapsed() > timeoutMs) {
                return false;
            }
            QTest::qWait(20);
        }
        return true;
    }

protected:
    QString read() override
    {
        QFile file(mFile);
        if (!file.open(QIODevice::ReadOnly)) {
            return QString();
        }
        QVector<uint> text;
        for (const uint cp : QString::fromUtf8(file.readAll()).toUcs4()) {
            if (cp != 0x7f) {
                text << cp;
            } else if (!text.isEmpty()) {
                text.removeLast();
            }
        }
        return QString::fromUcs4(text.constData(), text.size());
    }

private:
    QString mFile;
};

}  // namespace

class TestWaylandTyping : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { WinUtils::getInstance()->setBackend(nullptr); }
    void longDictationAndRewriteArriveExactly_data();
    void longDictationAndRewriteArriveExactly();
    void heldModifiersAndRestartChangeNothing();
};

void TestWaylandTyping::longDictationAndRewriteArriveExactly_data()
{
    QTest::addColumn<QString>("client");
    QTest::addColumn<QString>("program");
    QTest::newRow("GTK 3") << QStringLiteral("GTK 3") << QStringLiteral(GTK_RECEIVER);
    QTest::newRow("GTK 4") << QStringLiteral("GTK 4") << QStringLiteral(GTK4_RECEIVER);
    QTest::newRow("Qt 5") << QStringLiteral("Qt 5") << QStringLiteral(TYPING_RECEIVER);
    QTest::newRow("foot") << QStringLiteral("foot") << QStringLiteral("foot");
}

// 1000 characters in pieces of 20 through the program's typing entry, then a revised tail:
// one BackSpace per character and the new text. Every new character needs a new keymap while
// keys sent with the one before may still be unread.
void TestWaylandTyping::longDictationAndRewriteArriveExactly()
{
    QFETCH(QString, client);
    QFETCH(QString, program);
    if (QStandardPaths::findExecutable(QFileInfo(program).fileName()).isEmpty() && !QFile::exists(program)) {
        QSKIP("the client is not installed (scripts/bootstrap --tests installs it)");
    }
    // First the keyboard: a seat without one gives no window the keyboard focus.
    WaylandKeyboardBackend backend;
    QVERIFY2(backend.isAvailable(), qPrintable(backend.unavailableReason()));
    const std::unique_ptr<GtkReceiver> receiver =
        client == QLatin1String("foot")
            ? std::make_unique<FootReceiver>(
                  QDir(qEnvironmentVariable("XDG_RUNTIME_DIR")).filePath(QStringLiteral("typed")))
            : waylandReceiver(client, program);
    QVERIFY(receiver->waitReady());
    WinUtils* win = WinUtils::getInstance();
    win->setBackend(&backend);

    const QString text = mixedText(1000, 14);
    // A keymap at start, then at most one per piece, and one for each piece that brings a
    // character never typed before (more once the table is full and keys are given up).
    const QStringList parts = pieces(text, 20);
    QSet<uint> seen{XK_BackSpace, XK_a, XK_c, XK_x};  // keys from the start
    int novel = 0;
    for (const QString& piece : parts) {
        const QVector<uint> ucs4 = piece.toUcs4();
        const int before = seen.size();
        seen.unite(QSet<uint>(ucs4.cbegin(), ucs4.cend()));
        novel += seen.size() > before ? 1 : 0;
        win->sendInput(piece);
    }
    QCOMPARE(receiver->text(text, 15000), text);
    const int keymaps = backend.keymapCount();
    QVERIFY2(keymaps >= 1 + novel && keymaps <= 1 + parts.size(), qPrintable(QString::number(keymaps)));

    // The revised tail: the last characters again, backwards: their keys are there, so no keymap.
    QVector<uint> last = text.toUcs4().mid(980);
    std::reverse(last.begin(), last.end());
    const QString tail = QString::fromUcs4(last.constData(), last.size());
    for (int i = 0; i < 20; ++i) {
        win->backspace();
    }
    win->sendInput(tail);
    const QString revised = QString::fromUcs4(text.toUcs4().constData(), 980) + tail;
    QCOMPARE(receiver->text(revised), revised);
    QCOMPARE(backend.keymapCount(), keymaps);
    qInfo("%d keymaps for %d different characters", backend.keymapCount(), int(seen.size()));
}

// The user's own keyboard has Caps Lock on (its "q" gives "Q", in a keymap made after the lock) and holds
// Shift and Control while text is typed (with them, "a" would select all and "c" copy); the program's
// keyboard has Caps Lock on too (a stored shortcut). Then the program restarts and a new backend selects all
// in the same view and types over it.
void TestWaylandTyping::heldModifiersAndRestartChangeNothing()
{
    WaylandKeyboardBackend user;
    const std::unique_ptr<GtkReceiver> receiver =
        waylandReceiver(QStringLiteral("GTK 3"), QStringLiteral(GTK_RECEIVER));
    QVERIFY(receiver->waitReady());
    user.sendKey(XK_Caps_Lock, true);
    user.sendKey(XK_Caps_Lock, false);
    user.sendKey(XK_q, true);
    user.sendKey(XK_q, false);
    QCOMPARE(receiver->text(QStringLiteral("Q")), QStringLiteral("Q"));
    user.sendKey(XK_Shift_L, true);
    user.sendKey(XK_Control_L, true);
    user.waitUntilSent();
    // The program's own choice in this session.
    std::unique_ptr<InputBackend> first = InputBackendChoice::create();
    QCOMPARE(InputBackendChoice::describe(first.get()),
             QStringLiteral("available (Wayland virtual keyboard)"));
    QCOMPARE(first->screenGeometry(), QRect(0, 0, 1280, 800));  // the output tests/sway-run-test sets
    first->sendKey(XK_Caps_Lock, true);
    first->sendKey(XK_Caps_Lock, false);
    // "ac" first: keys it has from the start, so no new keymap sets the lock aside for it.
    const QString text = QStringLiteral("Qac held: abc, Ünïcode ça 你好 1+1=2.");
    first->typeText(text.mid(1, 2));
    first->typeText(text.mid(3));
    QCOMPARE(receiver->text(text), text);
    user.sendKey(XK_Control_L, false);
    user.sendKey(XK_Shift_L, false);

    first->shutDown();
    first.reset();
    // A fresh keyboard's first chord: GTK 3 missed it when its key came in a new keymap.
    WaylandKeyboardBackend second;
    WinUtils* win = WinUtils::getInstance();
    win->setBackend(&second);
    win->selectAll();
    const QString more = QStringLiteral("again: 再来 😀 é");
    win->sendInput(more);
    QCOMPARE(receiver->text(more), more);
}

QTEST_GUILESS_MAIN(TestWaylandTyping)
#include "tst_waylandtyping.moc"
