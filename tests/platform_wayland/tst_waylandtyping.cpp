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

// The X11 suites' GTK 3 text view, a native Wayland client here.
class GtkClient : public GtkReceiver {
public:
    GtkClient()
        : GtkReceiver(QStringLiteral(GTK_RECEIVER),
                      {{QStringLiteral("GDK_BACKEND"), QStringLiteral("wayland")}})
    {
    }
};

}  // namespace

class TestWaylandTyping : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { WinUtils::getInstance()->setBackend(nullptr); }
    void longDictationAndRewriteArriveExactly();
    void heldModifiersAndRestartChangeNothing();
};

// 1000 characters in pieces of 20 through the program's typing entry, then a revised tail:
// one BackSpace per character and the new text. Every new character needs a new keymap while
// keys sent with the one before may still be unread.
void TestWaylandTyping::longDictationAndRewriteArriveExactly()
{
    // First the keyboard: a seat without one gives no window the keyboard focus.
    WaylandKeyboardBackend backend;
    QVERIFY2(backend.isAvailable(), qPrintable(backend.unavailableReason()));
    GtkClient client;
    QVERIFY(client.waitReady());
    WinUtils* win = WinUtils::getInstance();
    win->setBackend(&backend);

    const QString text = mixedText(1000, 14);
    // A keymap at start, then at most one per piece, and one for each piece that brings a
    // character never typed before (more once the table is full and keys are given up).
    const QStringList parts = pieces(text, 20);
    QSet<uint> seen{XK_BackSpace};
    int novel = 0;
    for (const QString& piece : parts) {
        const QVector<uint> ucs4 = piece.toUcs4();
        const int before = seen.size();
        seen.unite(QSet<uint>(ucs4.cbegin(), ucs4.cend()));
        novel += seen.size() > before ? 1 : 0;
        win->sendInput(piece);
    }
    QCOMPARE(client.text(text, 15000), text);
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
    QCOMPARE(client.text(revised), revised);
    QCOMPARE(backend.keymapCount(), keymaps);
    qInfo("%d keymaps for %d different characters", backend.keymapCount(), int(seen.size()));
}

// The user holds Shift and Control on a keyboard of their own while text is typed (with them,
// "a" would select all and "c" copy); then the program restarts and a new backend types into
// the same view.
void TestWaylandTyping::heldModifiersAndRestartChangeNothing()
{
    WaylandKeyboardBackend user;
    GtkClient client;
    QVERIFY(client.waitReady());
    user.sendKey(XK_Shift_L, true);
    user.sendKey(XK_Control_L, true);
    user.waitUntilSent();
    // The program's own choice in this session.
    std::unique_ptr<InputBackend> first = InputBackendChoice::create();
    QCOMPARE(InputBackendChoice::describe(first.get()),
             QStringLiteral("available (Wayland virtual keyboard)"));
    QCOMPARE(first->screenGeometry(), QRect(0, 0, 1280, 800));  // the output tests/sway-run-test sets
    const QString text = QStringLiteral("held: abc, Ünïcode ça 你好 1+1=2.");
    first->typeText(text);
    QCOMPARE(client.text(text), text);
    user.sendKey(XK_Control_L, false);
    user.sendKey(XK_Shift_L, false);

    first->shutDown();
    first.reset();
    WaylandKeyboardBackend second;
    const QString more = QStringLiteral(" again: 再来 😀 é");
    second.typeText(more);
    QCOMPARE(client.text(text + more), text + more);
}

QTEST_GUILESS_MAIN(TestWaylandTyping)
#include "tst_waylandtyping.moc"
