// Typing into other applications: 1000 characters of mixed Chinese, ASCII, digits, accented
// Latin and emoji in pieces of 20, as recognition delivers them, into a Qt line edit and a GTK 3
// text view; then rewriting a 20-character tail. Beside each figure, xdotool doing the same on
// the same clients. Last, which rule a change of the keyboard map needs for Qt, GTK (also one
// that is slow on every change) and xterm: the same typing with a small pool of spare keycodes,
// so that keycodes are reused while keys on them may still be unread.
// Run under an X server of its own: tests/xvfb-run-test build/release/bench/typing [--smoke]
// --smoke: short texts, checks that everything arrived, prints no table.
// --ours: the X11 figures of ours only, without xdotool and the study (for comparing builds).
// --wayland: the same 1000 characters and rewrites into the GTK 3 view on Wayland, through the
// virtual keyboard, beside wtype; run under tests/sway-run-test.
// --gnome: the same through our IBus engine, the user's Pinyin active before; run under
// tests/gnome-run-test.
#include "BenchUtil.h"
#include "MixedText.h"
#include "Platform/IBus/IBusTypingBackend.h"
#include "Platform/Wayland/WaylandKeyboardBackend.h"
#include "Platform/X11InputBackend.h"
#include "ProcessLines.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <poll.h>

#include <cstdio>
#include <memory>

namespace {

bool gSmoke = false;
bool gWayland = false;
bool gOursOnly = false;

// A client window in its own process: "ready WINID" once focused, "get" for its text.
class Client {
public:
    explicit Client(const QString& kind)
    {
        if (kind == QLatin1String("xterm")) {
            mFile = mDir.filePath(QStringLiteral("typed"));
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
            mProcess.setProcessEnvironment(env);
            mProcess.start(QStringLiteral("xterm"),
                           {QStringLiteral("-u8"), QStringLiteral("-T"), QStringLiteral("bench terminal"),
                            QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"),
                            QStringLiteral("stty -icanon -echo && exec cat > '%1'").arg(mFile)});
            return;
        }
        const bool gtk = kind.startsWith(QLatin1String("gtk"));
        if (gtk && gWayland) {
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(QStringLiteral("GDK_BACKEND"), QStringLiteral("wayland"));
            mProcess.setProcessEnvironment(env);
        }
        QStringList arguments;
        if (kind == QLatin1String("gtk-busy")) {
            arguments << QStringLiteral("--busy") << QStringLiteral("2");
        }
        mProcess.start(gtk ? QStringLiteral(GTK_CLIENT) : QStringLiteral(QT_CLIENT), arguments);
    }
    ~Client()
    {
        if (mFile.isEmpty()) {
            mProcess.write("quit\n");
        } else {
            mProcess.terminate();
        }
        if (!mProcess.waitForFinished(2000)) {
            mProcess.kill();
            mProcess.waitForFinished();
        }
    }
    bool waitReady()
    {
        if (mFile.isEmpty()) {
            return readLineWithin(mProcess, 10000).startsWith(QLatin1String("ready "));
        }
        QProcess focus;
        focus.start(QStringLiteral("xdotool"),
                    {QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
                     QStringLiteral("--name"), QStringLiteral("bench terminal"),
                     QStringLiteral("windowfocus"), QStringLiteral("--sync")});
        QElapsedTimer clock;
        clock.start();
        const bool focused = focus.waitForFinished(10000) && focus.exitCode() == 0;
        while (!QFile::exists(mFile) && clock.elapsed() < 10000) {
            QThread::msleep(20);
        }
        return focused && QFile::exists(mFile);
    }
    // What the field holds once it equals expected, or after the time-out; asked every pollMs.
    QString text(const QString& expected, int timeoutMs = 3000, int pollMs = 20)
    {
        QElapsedTimer clock;
        clock.start();
        QString last;
        do {
            last = read();
            if (last == expected) {
                break;
            }
            QThread::msleep(pollMs);
        } while (clock.elapsed() < timeoutMs);
        return last;
    }

private:
    QString read()
    {
        if (!mFile.isEmpty()) {
            QFile file(mFile);
            return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        }
        mProcess.write("get\n");
        return readLineWithin(mProcess, 2000).mid(5);
    }

    QProcess mProcess;
    QTemporaryDir mDir;
    QString mFile;
};

// Waits until the focused window has handled every event sent before: a _NET_WM_PING round
// trip, the way the backend itself knows (used for xdotool, which has no such wait).
void waitForFocusedClient(Display* d)
{
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(d, &focus, &revert);
    // The focus may be a child of the client's top-level window, which answers pings.
    for (int depth = 0; depth < 8 && focus > PointerRoot; ++depth) {
        Atom* protocols = nullptr;
        int count = 0;
        bool answers = false;
        const Atom ping = XInternAtom(d, "_NET_WM_PING", False);
        if (XGetWMProtocols(d, focus, &protocols, &count) != 0) {
            answers = std::find(protocols, protocols + count, ping) != protocols + count;
            XFree(protocols);
        }
        if (answers) {
            break;
        }
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned int n = 0;
        XQueryTree(d, focus, &root, &parent, &children, &n);
        if (children != nullptr) {
            XFree(children);
        }
        focus = parent == root ? 0 : parent;
    }
    if (focus <= PointerRoot) {
        QThread::msleep(200);  // a client without pings (xterm): time
        return;
    }
    const Window root = DefaultRootWindow(d);
    XSelectInput(d, root, SubstructureNotifyMask);
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = focus;
    event.xclient.message_type = XInternAtom(d, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(d, "_NET_WM_PING", False));
    event.xclient.data.l[1] = 424242;
    event.xclient.data.l[2] = static_cast<long>(focus);
    XSendEvent(d, focus, False, NoEventMask, &event);
    XFlush(d);
    QElapsedTimer clock;
    clock.start();
    for (bool answered = false; !answered && clock.elapsed() < 5000;) {
        while (!answered && XPending(d) > 0) {
            XEvent reply{};
            XNextEvent(d, &reply);
            answered = reply.type == ClientMessage && reply.xclient.data.l[1] == 424242;
        }
        pollfd fd{ConnectionNumber(d), POLLIN, 0};
        poll(&fd, 1, answered ? 0 : 5);
    }
    XSelectInput(d, root, NoEventMask);
    XSync(d, True);
}

struct Outcome {
    Bench::Arrival arrival;
    double seconds = 0;
    int characters = 0;
    int remaps = 0;
    double rate() const { return seconds > 0 ? characters / seconds : 0; }
    QString text() const
    {
        return QStringLiteral("%1 lost, %2 wrong, %3 chars/s")
            .arg(arrival.lost)
            .arg(arrival.extra)
            .arg(rate(), 0, 'f', 0);
    }
};

// Our typing: a fresh backend (nothing mapped yet), the text in pieces, then until the client
// has read the last key.
Outcome typeOurs(const QString& kind, const QString& text, X11InputBackend::Safety safety, int spares)
{
    Outcome outcome;
    Client client(kind);
    if (!client.waitReady()) {
        std::fprintf(stderr, "typing: the %s client did not start\n", qPrintable(kind));
        outcome.arrival.lost = text.toUcs4().size();
        return outcome;
    }
    X11InputBackend backend;
    backend.setSafety(safety);
    backend.setSpareLimit(spares);
    const QStringList parts = pieces(text, 20);
    QElapsedTimer clock;
    clock.start();
    for (const QString& piece : parts) {
        backend.typeText(piece);
    }
    backend.waitUntilRead();
    outcome.seconds = clock.nsecsElapsed() / 1e9;
    outcome.characters = text.toUcs4().size();
    outcome.remaps = backend.remapCount();
    outcome.arrival = Bench::compare(text, client.text(text));
    return outcome;
}

Outcome typeXdotool(const QString& kind, const QString& text, const QStringList& options, Display* d)
{
    Outcome outcome;
    Client client(kind);
    if (!client.waitReady()) {
        outcome.arrival.lost = text.toUcs4().size();
        return outcome;
    }
    QElapsedTimer clock;
    clock.start();
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), QStringList{QStringLiteral("type")} + options + QStringList{text});
    tool.waitForFinished(120000);
    waitForFocusedClient(d);
    outcome.seconds = clock.nsecsElapsed() / 1e9;
    outcome.characters = text.toUcs4().size();
    outcome.arrival = Bench::compare(text, client.text(text));
    return outcome;
}

// A revised partial: the last 20 characters go and 20 others come, as the rewrite of a segment
// sends them (one BackSpace per character, then the new text), timed until the client has read
// them all.
struct Rewrites {
    std::vector<double> ms;
    bool exact = true;
};
Rewrites rewriteOurs(const QString& kind, int count)
{
    Rewrites result;
    Client client(kind);
    if (!client.waitReady()) {
        result.exact = false;
        return result;
    }
    X11InputBackend backend;
    QString expected = mixedText(20, 7);
    backend.typeText(expected);
    backend.waitUntilRead();
    for (int i = 0; i < count; ++i) {
        const QString tail = mixedText(20, 100u + quint32(i));
        QElapsedTimer clock;
        clock.start();
        for (int k = 0; k < 20; ++k) {
            backend.sendKey(XK_BackSpace, true);
            backend.sendKey(XK_BackSpace, false);
        }
        backend.typeText(tail);
        backend.waitUntilRead();
        result.ms.push_back(clock.nsecsElapsed() / 1e6);
        expected = tail;
        if (client.text(expected) != expected) {
            result.exact = false;
        }
    }
    return result;
}

Rewrites rewriteXdotool(const QString& kind, int count, Display* d)
{
    Rewrites result;
    Client client(kind);
    if (!client.waitReady()) {
        result.exact = false;
        return result;
    }
    QString expected = mixedText(20, 7);
    QProcess::execute(QStringLiteral("xdotool"), {QStringLiteral("type"), expected});
    for (int i = 0; i < count; ++i) {
        const QString tail = mixedText(20, 100u + quint32(i));
        QElapsedTimer clock;
        clock.start();
        QStringList keys{QStringLiteral("key")};
        for (int k = 0; k < 20; ++k) {
            keys << QStringLiteral("BackSpace");
        }
        QProcess::execute(QStringLiteral("xdotool"), keys);
        QProcess::execute(QStringLiteral("xdotool"), {QStringLiteral("type"), tail});
        waitForFocusedClient(d);
        result.ms.push_back(clock.nsecsElapsed() / 1e6);
        expected = tail;
        if (client.text(expected) != expected) {
            result.exact = false;
        }
    }
    return result;
}

// On Wayland no client answers pings: the time runs until the view holds the whole text, for
// ours and for wtype alike. Asked every 10 ms for the long text (each question costs the view a
// copy of its text, which would slow what is measured) and every 2 ms for a rewrite.
Outcome arrivedAfter(Client& client, const QString& text, const QElapsedTimer& clock)
{
    Outcome outcome;
    const QString got = client.text(text, 15000, text.size() > 100 ? 10 : 2);
    outcome.seconds = clock.nsecsElapsed() / 1e9;
    outcome.characters = text.toUcs4().size();
    outcome.arrival = Bench::compare(text, got);
    return outcome;
}

Outcome typeOursWayland(const QString& text)
{
    Client client(QStringLiteral("gtk"));
    WaylandKeyboardBackend backend;
    if (!client.waitReady() || !backend.isAvailable()) {
        Outcome failed;
        failed.arrival.lost = text.toUcs4().size();
        return failed;
    }
    QElapsedTimer clock;
    clock.start();
    for (const QString& piece : pieces(text, 20)) {
        backend.typeText(piece);
    }
    const double sent = clock.nsecsElapsed() / 1e6;
    backend.waitUntilSent();
    const double handled = clock.nsecsElapsed() / 1e6;
    Outcome outcome = arrivedAfter(client, text, clock);
    outcome.remaps = backend.keymapCount();
    std::fprintf(
        stderr,
        "typing wayland: sent after %.1f ms, handled by sway after %.1f ms, in the view after %.1f ms\n",
        sent, handled, outcome.seconds * 1e3);
    return outcome;
}

Outcome typeWtype(const QString& text)
{
    Client client(QStringLiteral("gtk"));
    if (!client.waitReady()) {
        Outcome failed;
        failed.arrival.lost = text.toUcs4().size();
        return failed;
    }
    QElapsedTimer clock;
    clock.start();
    QProcess::execute(QStringLiteral("wtype"), {text});
    return arrivedAfter(client, text, clock);
}

// The time runs until the view holds the new tail (see arrivedAfter).
Rewrites rewriteWith(Client& client, InputBackend& backend, int count, bool wtype)
{
    Rewrites result;
    QString expected = mixedText(20, 7);
    backend.typeText(expected);
    result.exact = client.text(expected) == expected;
    for (int i = 0; i < count; ++i) {
        const QString tail = mixedText(20, 100u + quint32(i));
        QElapsedTimer clock;
        clock.start();
        if (wtype) {
            QStringList arguments;
            for (int k = 0; k < 20; ++k) {
                arguments << QStringLiteral("-k") << QStringLiteral("BackSpace");
            }
            QProcess::execute(QStringLiteral("wtype"), arguments << tail);
        } else {
            for (int k = 0; k < 20; ++k) {
                backend.sendKey(XK_BackSpace, true);
                backend.sendKey(XK_BackSpace, false);
            }
            backend.typeText(tail);
        }
        expected = tail;
        const Outcome outcome = arrivedAfter(client, expected, clock);
        result.ms.push_back(outcome.seconds * 1e3);
        result.exact = result.exact && outcome.arrival.exact();
    }
    return result;
}

// The revised tail, by us or by one wtype call (BackSpace ×20, then the text).
Rewrites rewriteWayland(int count, bool wtype)
{
    Rewrites result;
    Client client(QStringLiteral("gtk"));
    WaylandKeyboardBackend backend;
    if (!client.waitReady() || !backend.isAvailable()) {
        result.exact = false;
        return result;
    }
    return rewriteWith(client, backend, count, wtype);
}

QString rewriteText(const Rewrites& rewrites)
{
    return QStringLiteral("%1 / %2, %3")
        .arg(Bench::ms(Bench::quantile(rewrites.ms, 0.5)), Bench::ms(Bench::quantile(rewrites.ms, 0.95)),
             rewrites.exact ? QStringLiteral("exact") : QStringLiteral("not exact"));
}

int runWayland()
{
    // The user's keyboard: a seat without one gives no window the keyboard focus.
    WaylandKeyboardBackend seatKeyboard;
    if (!seatKeyboard.isAvailable()) {
        std::fprintf(stderr, "typing: no virtual keyboard (%s): run it under tests/sway-run-test\n",
                     qPrintable(seatKeyboard.unavailableReason()));
        return 2;
    }
    if (gSmoke) {
        const QString text = mixedText(300, 14);
        const Outcome outcome = typeOursWayland(text);
        const Rewrites rewrites = rewriteWayland(3, false);
        std::printf("smoke wayland: %s, %d keymaps; rewrite %s\n", qPrintable(outcome.text()), outcome.remaps,
                    rewrites.exact ? "exact" : "WRONG");
        const bool ok = outcome.arrival.exact() && rewrites.exact;
        std::printf("%s\n", ok ? "typing smoke: passed" : "typing smoke: FAILED");
        return ok ? 0 : 1;
    }
    const QString text = mixedText(1000, 14);
    const Outcome ours = typeOursWayland(text);
    const Outcome peer =
        QStandardPaths::findExecutable(QStringLiteral("wtype")).isEmpty() ? Outcome() : typeWtype(text);
    std::fprintf(stderr, "typing wayland: ours %.3f s, %d keymaps\n", ours.seconds, ours.remaps);
    Bench::row(QStringLiteral("1. 1000 mixed characters in pieces of 20, GTK 3 on sway (Wayland)"),
               ours.text(), QStringLiteral("wtype: %1").arg(peer.text()),
               QStringLiteral("0 lost, ≥ 1000 chars/s"), ours.arrival.exact() && ours.rate() >= 1000);
    const Rewrites rewrites = rewriteWayland(30, false);
    const Rewrites wtype = rewriteWayland(5, true);
    Bench::row(QStringLiteral("2. Rewrite a 20-character tail, GTK 3 on sway (p50 / p95)"),
               rewriteText(rewrites),
               QStringLiteral("wtype -k BackSpace ×20 + text: %1").arg(rewriteText(wtype)),
               QStringLiteral("≤ 40 ms, exact"), rewrites.exact && Bench::quantile(rewrites.ms, 0.95) <= 40);
    return 0;
}

// GNOME Shell's Wayland: our engine, switched to from the user's Pinyin as a Chinese user has it.
int runGnome()
{
    QProcess::execute(QStringLiteral("gsettings"),
                      {QStringLiteral("set"), QStringLiteral("org.gnome.desktop.input-sources"),
                       QStringLiteral("sources"), QStringLiteral("[('ibus', 'libpinyin'), ('xkb', 'us')]")});
    // The shell switches ibus to it in a while: not in the middle of our typing.
    QElapsedTimer waited;
    waited.start();
    QProcess engine;
    do {
        QThread::msleep(100);
        engine.start(QStringLiteral("ibus"), {QStringLiteral("engine")});
        engine.waitForFinished(3000);
    } while (engine.readAllStandardOutput().trimmed() != "libpinyin" && waited.elapsed() < 15000);
    IBusTypingBackend backend;
    if (!backend.isAvailable()) {
        std::fprintf(stderr, "typing: no ibus (%s): run it under tests/gnome-run-test\n",
                     qPrintable(backend.unavailableReason()));
        return 2;
    }
    const QString text = mixedText(gSmoke ? 300 : 1000, 14);
    Outcome ours;
    {
        Client client(QStringLiteral("gtk"));
        if (client.waitReady()) {
            QElapsedTimer clock;
            clock.start();
            for (const QString& piece : pieces(text, 20)) {
                backend.typeText(piece);
            }
            ours = arrivedAfter(client, text, clock);
        } else {
            ours.arrival.lost = text.toUcs4().size();
        }
    }
    Rewrites rewrites;
    {
        Client client(QStringLiteral("gtk"));
        rewrites.exact = client.waitReady();
        if (rewrites.exact) {
            rewrites = rewriteWith(client, backend, gSmoke ? 3 : 30, false);
        }
    }
    if (gSmoke) {
        const bool ok = ours.arrival.exact() && rewrites.exact;
        std::printf("smoke gnome: %s; rewrite %s\n%s\n", qPrintable(ours.text()),
                    rewrites.exact ? "exact" : "WRONG", ok ? "typing smoke: passed" : "typing smoke: FAILED");
        return ok ? 0 : 1;
    }
    Bench::row(
        QStringLiteral(
            "1. 1000 mixed characters in pieces of 20, GTK 3 on GNOME Shell (Wayland, our IBus engine)"),
        ours.text(), QStringLiteral("none: GNOME offers clients no other way in"), QStringLiteral("0 lost"),
        ours.arrival.exact());
    Bench::row(QStringLiteral("2. Rewrite a 20-character tail, GTK 3 on GNOME Shell (p50 / p95)"),
               rewriteText(rewrites), QString(), QStringLiteral("≤ 40 ms, exact"),
               rewrites.exact && Bench::quantile(rewrites.ms, 0.95) <= 40);
    return 0;
}

QString safetyName(X11InputBackend::Safety safety)
{
    switch (safety) {
        case X11InputBackend::Safety::Confirmed:
            return QStringLiteral("keys on a keycode read before it changes (ours)");
        case X11InputBackend::Safety::ConfirmedAndSettled:
            return QStringLiteral("same, and each change read before the next key");
        case X11InputBackend::Safety::Unchecked:
            break;
    }
    return QStringLiteral("keycodes changed at once");
}

}  // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    gSmoke = app.arguments().contains(QStringLiteral("--smoke"));
    gWayland = app.arguments().contains(QStringLiteral("--wayland"));
    gOursOnly = app.arguments().contains(QStringLiteral("--ours"));
    if (app.arguments().contains(QStringLiteral("--gnome"))) {
        gWayland = true;  // the client on Wayland
        return runGnome();
    }
    if (gWayland) {
        return runWayland();
    }
    Display* d = XOpenDisplay(nullptr);
    if (d == nullptr) {
        std::fprintf(stderr, "typing: no X display (run it under tests/xvfb-run-test)\n");
        return 2;
    }
    bool ok = true;
    using Safety = X11InputBackend::Safety;

    if (gSmoke) {
        // Correctness only: a text that needs every spare keycode reused, into Qt and GTK, and a
        // rewrite; a small pool makes the reuse happen in a short text.
        const QString text = mixedText(120, 14);
        for (const QString& kind : {QStringLiteral("qt"), QStringLiteral("gtk")}) {
            const Outcome outcome = typeOurs(kind, text, Safety::Confirmed, 16);
            std::printf("smoke %s: %s, %d remaps\n", qPrintable(kind), qPrintable(outcome.text()),
                        outcome.remaps);
            ok = ok && outcome.arrival.exact() && outcome.remaps > 16;
            const Rewrites rewrites = rewriteOurs(kind, 3);
            std::printf("smoke %s rewrite: %s\n", qPrintable(kind), rewrites.exact ? "exact" : "WRONG");
            ok = ok && rewrites.exact;
        }
        XCloseDisplay(d);
        std::printf("%s\n", ok ? "typing smoke: passed" : "typing smoke: FAILED");
        return ok ? 0 : 1;
    }

    const QString text = mixedText(1000, 14);
    for (const QString& kind : {QStringLiteral("qt"), QStringLiteral("gtk")}) {
        const QString name = kind == QLatin1String("qt") ? QStringLiteral("Qt") : QStringLiteral("GTK 3");
        const Outcome ours = typeOurs(kind, text, Safety::Confirmed, X11InputBackend::kMaxSpareKeycodes);
        const Outcome slow = gOursOnly ? Outcome() : typeXdotool(kind, text, {}, d);
        const Outcome fast =
            gOursOnly ? Outcome()
                      : typeXdotool(kind, text, {QStringLiteral("--delay"), QStringLiteral("0")}, d);
        std::fprintf(stderr, "typing %s: ours %.3f s, %d remaps\n", qPrintable(kind), ours.seconds,
                     ours.remaps);
        Bench::row(QStringLiteral("1. 1000 mixed characters in pieces of 20, %1").arg(name), ours.text(),
                   QStringLiteral("xdotool type: %1; --delay 0: %2").arg(slow.text(), fast.text()),
                   QStringLiteral("0 lost, ≥ 1000 chars/s"), ours.arrival.exact() && ours.rate() >= 1000);
    }
    for (const QString& kind : {QStringLiteral("qt"), QStringLiteral("gtk")}) {
        const QString name = kind == QLatin1String("qt") ? QStringLiteral("Qt") : QStringLiteral("GTK 3");
        const Rewrites ours = rewriteOurs(kind, 30);
        const Rewrites peer = gOursOnly ? Rewrites() : rewriteXdotool(kind, 3, d);
        const double p95 = Bench::quantile(ours.ms, 0.95);
        Bench::row(QStringLiteral("2. Rewrite a 20-character tail, %1 (p50 / p95)").arg(name),
                   QStringLiteral("%1 / %2, %3")
                       .arg(Bench::ms(Bench::quantile(ours.ms, 0.5)), Bench::ms(p95),
                            ours.exact ? QStringLiteral("exact") : QStringLiteral("NOT exact")),
                   QStringLiteral("xdotool key BackSpace ×20 + type: %1, %2")
                       .arg(Bench::ms(Bench::quantile(peer.ms, 0.5)),
                            peer.exact ? QStringLiteral("exact") : QStringLiteral("not exact")),
                   QStringLiteral("≤ 40 ms, exact"), ours.exact && p95 <= 40);
    }
    if (gOursOnly) {
        XCloseDisplay(d);
        return 0;
    }
    // What a change of the map needs: 24 spare keycodes, so that they are reused while keys
    // sent on them may be unread. 400 characters each.
    const QString study = mixedText(400, 21);
    for (const QString& kind :
         {QStringLiteral("qt"), QStringLiteral("gtk"), QStringLiteral("gtk-busy"), QStringLiteral("xterm")}) {
        for (Safety safety : {Safety::Unchecked, Safety::Confirmed, Safety::ConfirmedAndSettled}) {
            const Outcome outcome = typeOurs(kind, study, safety, 24);
            std::printf("study\t%s\t%s\t%s\t%d remaps\n", qPrintable(kind), qPrintable(safetyName(safety)),
                        qPrintable(outcome.text()), outcome.remaps);
            std::fflush(stdout);
        }
    }
    XCloseDisplay(d);
    return ok ? 0 : 1;
}
