#include "Platform/X11InputBackend.h"

#include "Platform/AtspiCaret.h"
#include "Utils/Logging.h"
#include "Utils/Trace.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMap>
#include <QScreen>
#include <QSet>
#include <QSocketNotifier>
#include <QThread>

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include "Platform/X11Window.h"

#include <poll.h>

#include <algorithm>
#include <iterator>

namespace {

Display* dpy(void* handle)
{
    return static_cast<Display*>(handle);
}

// What carriedKeysym() says of a keycode that carries a key of the layout.
constexpr unsigned long kLayoutKey = ~0UL;

Atom atom(Display* d, const char* name)
{
    return XInternAtom(d, name, False);
}

QString windowClass(Display* d, Window w)
{
    XClassHint hint{nullptr, nullptr};
    if (w == 0 || XGetClassHint(d, w, &hint) == 0) {
        return QString();
    }
    const QString result = QString::fromLocal8Bit(hint.res_class != nullptr ? hint.res_class : "");
    if (hint.res_name != nullptr) {
        XFree(hint.res_name);
    }
    if (hint.res_class != nullptr) {
        XFree(hint.res_class);
    }
    return result;
}

}  // namespace

X11InputBackend::X11InputBackend()
{
    mClock.start();
}

X11InputBackend::~X11InputBackend()
{
    shutDown();
}

void X11InputBackend::shutDown()
{
    mShutDown = true;
    mOpenTried = true;  // no display is opened again: typing stays off
    if (mDisplay != nullptr) {
        mEvents.reset();
        restoreSpares();  // once the keys sent are read
    }
    mPresses.reset();
    mInputMethod.finish();
    mCaret.reset();
    if (mDisplay != nullptr) {
        XCloseDisplay(dpy(mDisplay));
        mDisplay = nullptr;
        mUnavailable = QStringLiteral("shut down");
    }
}

void* X11InputBackend::display()
{
    if (mDisplay == nullptr && !mOpenTried) {
        mOpenTried = true;
        Display* d = XOpenDisplay(nullptr);
        int event = 0;
        int error = 0;
        int major = 0;
        int minor = 0;
        if (d == nullptr) {
            mUnavailable = QStringLiteral("no X display");
            qCWarning(lcX11) << "no X display: typing into other windows is off";
            return nullptr;
        }
        if (!XTestQueryExtension(d, &event, &error, &major, &minor)) {
            mUnavailable = QStringLiteral("the X server lacks XTest");
            qCWarning(lcX11) << "the X server lacks XTest: typing into other windows is off";
            XCloseDisplay(d);
            return nullptr;
        }
        mDisplay = d;
        // Before the first key goes out, so that every key of ours is among those counted.
        mPresses = std::make_unique<X11KeyPresses>();
        XDisplayKeycodes(d, &mMinKeycode, &mMaxKeycode);
        if (QCoreApplication::instance() != nullptr) {
            mEvents = std::make_unique<QSocketNotifier>(ConnectionNumber(d), QSocketNotifier::Read);
            QObject::connect(mEvents.get(), &QSocketNotifier::activated, mEvents.get(),
                             [this] { readEvents(); });
        }
    }
    return mDisplay;
}

bool X11InputBackend::isAvailable()
{
    return display() != nullptr;
}

void X11InputBackend::loadKeymap()
{
    Display* d = dpy(mDisplay);
    const int count = mMaxKeycode - mMinKeycode + 1;
    int perKeycode = 0;
    KeySym* map = XGetKeyboardMapping(d, static_cast<KeyCode>(mMinKeycode), count, &perKeycode);
    mKeysymsPerKeycode = perKeycode;
    mKeymap.resize(count * perKeycode);
    for (int i = 0; i < count * perKeycode; ++i) {
        mKeymap[i] = map[i];
    }
    XFree(map);
    mMarks = readMarks();

    // Spare: keycodes with nothing on them, and those a backend (this one, or one of an earlier
    // run that could not give them back) marked as carrying a character it put there.
    QHash<unsigned long, int> spareFor;
    QList<int> spare;
    const int limit = std::min(mSpareLimit, kMaxSpareKeycodes);
    for (int code = mMaxKeycode; code >= mMinKeycode && spare.size() < limit; --code) {
        const unsigned long keysym = carriedKeysym(code);
        if (keysym == NoSymbol) {
            spare.append(code);
        } else if (mMarks.value(code) == keysym || mSpareFor.value(keysym) == code) {
            spare.append(code);
            if (!spareFor.contains(keysym) || mSpareFor.value(keysym) == code) {
                spareFor.insert(keysym, code);
            }
        }
    }
    mSpareFor = spareFor;
    // Keep the least-recently-used order of the keycodes we already had.
    QList<int> ordered;
    for (int code : qAsConst(mSpareKeycodes)) {
        if (spare.contains(code)) {
            ordered.append(code);
        }
    }
    for (int code : qAsConst(spare)) {
        if (!ordered.contains(code)) {
            ordered.prepend(code);
        }
    }
    mSpareKeycodes = ordered;
}

unsigned long X11InputBackend::carriedKeysym(int code) const
{
    // What a spare keycode looks like once a keysym is on it: the keysym at the first two
    // levels and nothing else beside it.
    const int first = (code - mMinKeycode) * mKeysymsPerKeycode;
    const unsigned long keysym = mKeymap.value(first);
    for (int level = 0; level < mKeysymsPerKeycode; ++level) {
        const unsigned long at = mKeymap.value(first + level);
        if (at != keysym && !(at == NoSymbol && level >= 2)) {
            return kLayoutKey;
        }
    }
    return keysym;
}

QHash<int, unsigned long> X11InputBackend::readMarks() const
{
    Display* d = dpy(mDisplay);
    QHash<int, unsigned long> marks;
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(d, DefaultRootWindow(d), atom(d, kMarksProperty), 0, 2 * kMaxSpareKeycodes, False,
                           XA_CARDINAL, &type, &format, &items, &after, &data) == Success &&
        type == XA_CARDINAL && format == 32) {
        const auto* pairs = reinterpret_cast<const unsigned long*>(data);
        for (unsigned long i = 0; i + 1 < items; i += 2) {
            marks.insert(static_cast<int>(pairs[i]), pairs[i + 1]);
        }
    }
    if (data != nullptr) {
        XFree(data);
    }
    return marks;
}

void X11InputBackend::writeMarks()
{
    Display* d = dpy(mDisplay);
    QVector<unsigned long> pairs;
    for (auto it = mMarks.constBegin(); it != mMarks.constEnd(); ++it) {
        pairs << static_cast<unsigned long>(it.key()) << it.value();
    }
    if (pairs.isEmpty()) {
        XDeleteProperty(d, DefaultRootWindow(d), atom(d, kMarksProperty));
    } else {
        XChangeProperty(d, DefaultRootWindow(d), atom(d, kMarksProperty), XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(pairs.constData()), pairs.size());
    }
}

bool X11InputBackend::findInKeymap(unsigned long keysym, KeyPosition* position) const
{
    const auto spare = mSpareFor.constFind(keysym);
    if (spare != mSpareFor.constEnd()) {
        *position = {spare.value(), false};
        return true;
    }
    const int count = mMaxKeycode - mMinKeycode + 1;
    for (int level = 0; level < 2 && level < mKeysymsPerKeycode; ++level) {
        for (int i = 0; i < count; ++i) {
            if (mKeymap[i * mKeysymsPerKeycode + level] == keysym) {
                *position = {mMinKeycode + i, level == 1};
                return true;
            }
        }
    }
    return false;
}

void X11InputBackend::mapBatch(const QVector<unsigned long>& keysyms)
{
    QSet<int> busy;
    QVector<unsigned long> missing;
    for (unsigned long keysym : keysyms) {
        KeyPosition position;
        if (findInKeymap(keysym, &position)) {
            busy.insert(position.keycode);
        } else if (!missing.contains(keysym)) {
            missing.append(keysym);
        }
    }
    if (missing.isEmpty()) {
        return;
    }
    // Keycodes whose last key the client has read go first: changing them needs no wait.
    QMap<int, unsigned long> changes;  // keycode -> new keysym, in keycode order
    LastKey mustWaitFor;
    for (unsigned long keysym : qAsConst(missing)) {
        int code = 0;
        for (int pass = 0; pass < 2 && code == 0; ++pass) {
            for (int candidate : qAsConst(mSpareKeycodes)) {
                if (!busy.contains(candidate) && (pass == 1 || isRead(candidate))) {
                    code = candidate;
                    break;
                }
            }
        }
        if (code == 0) {
            qCWarning(lcX11) << "no spare keycode left for keysym" << Qt::hex << keysym;
            continue;
        }
        if (!isRead(code)) {
            const LastKey last = mLastKey.value(code);
            if (last.serial > mustWaitFor.serial) {
                mustWaitFor = last;
            }
        }
        for (auto it = mSpareFor.begin(); it != mSpareFor.end(); ++it) {
            if (it.value() == code) {
                mSpareFor.erase(it);
                break;
            }
        }
        mSpareFor.insert(keysym, code);
        mSpareKeycodes.removeAll(code);
        mSpareKeycodes.append(code);  // most recently used last
        busy.insert(code);
        changes.insert(code, keysym);
    }
    if (changes.isEmpty()) {
        return;
    }
    if (mustWaitFor.serial != 0 && mSafety != Safety::Unchecked) {
        waitForKeys(mustWaitFor.serial, mustWaitFor.atMs);
    }
    writeChanges(changes);
    // The marks go out with the change, so that a backend started after a crash of this one
    // takes these keycodes over. Marks whose keycode carries something else now are stale.
    for (auto it = changes.constBegin(); it != changes.constEnd(); ++it) {
        mMarks.insert(it.key(), it.value());
    }
    for (auto it = mMarks.begin(); it != mMarks.end();) {
        it = carriedKeysym(it.key()) == it.value() ? std::next(it) : mMarks.erase(it);
    }
    writeMarks();
    if (mSafety == Safety::ConfirmedAndSettled) {
        // The old rule: the client reads the change before the next key goes out.
        waitUntilRead();
    }
}

void X11InputBackend::writeChanges(const QMap<int, unsigned long>& changes)
{
    Display* d = dpy(mDisplay);
    for (auto it = changes.constBegin(); it != changes.constEnd(); ++it) {
        for (int level = 0; level < mKeysymsPerKeycode; ++level) {
            mKeymap[(it.key() - mMinKeycode) * mKeysymsPerKeycode + level] = it.value();
        }
        ++mRemapCount;
    }
    // Each request that changes the map has every client fetch and rebuild its map (Qt at once),
    // and spare keycodes lie scattered among the layout's keys: a request per keycode cost Qt
    // more than the typing itself. So one XKB request spans the batch's first to last keycode,
    // the layout's keys in between sent back as read (their types and every group, which a core
    // request would not keep). The server is held from the read to the write, so that no change
    // another client makes in between is undone.
    XGrabServer(d);
    bool written = false;
    if (XkbDescPtr xkb = XkbGetMap(d, XkbKeyTypesMask | XkbKeySymsMask, XkbUseCoreKbd)) {
        written = true;
        for (auto it = changes.constBegin(); it != changes.constEnd() && written; ++it) {
            // Both levels, so that Shift changes nothing.
            int types[XkbNumKbdGroups] = {XkbTwoLevelIndex};
            written = XkbChangeTypesOfKey(xkb, it.key(), 1, XkbGroup1Mask, types, nullptr) == Success;
            if (written) {
                KeySym* syms = XkbKeySymsPtr(xkb, it.key());
                syms[0] = syms[1] = it.value();
            }
        }
        if (written) {
            XkbMapChangesRec span{};
            span.changed = XkbKeySymsMask;
            span.first_key_sym = static_cast<KeyCode>(changes.firstKey());
            span.num_key_syms = static_cast<unsigned char>(changes.lastKey() - changes.firstKey() + 1);
            written = XkbChangeMap(d, xkb, &span) != 0;
        }
        XkbFreeKeyboard(xkb, 0, True);
    }
    XUngrabServer(d);
    XFlush(d);
    if (written) {
        return;
    }
    // Without XKB: core requests, each run of neighbouring keycodes in one.
    for (auto it = changes.constBegin(); it != changes.constEnd();) {
        const int first = it.key();
        QVector<KeySym> syms;
        int next = first;
        for (; it != changes.constEnd() && it.key() == next; ++it, ++next) {
            syms.insert(syms.size(), mKeysymsPerKeycode, it.value());
        }
        XChangeKeyboardMapping(d, first, mKeysymsPerKeycode, syms.data(), next - first);
    }
}

void X11InputBackend::pressKey(const KeyPosition& position)
{
    Display* d = dpy(mDisplay);
    const KeyCode shift = XKeysymToKeycode(d, XK_Shift_L);
    if (position.shift && shift != 0) {
        XTestFakeKeyEvent(d, shift, True, CurrentTime);
        ++mPressesSent;
    }
    XTestFakeKeyEvent(d, static_cast<KeyCode>(position.keycode), True, CurrentTime);
    ++mPressesSent;
    XTestFakeKeyEvent(d, static_cast<KeyCode>(position.keycode), False, CurrentTime);
    if (position.shift && shift != 0) {
        XTestFakeKeyEvent(d, shift, False, CurrentTime);
    }
    keySent(position.keycode);
}

void X11InputBackend::keySent(int keycode)
{
    if (mFirstKeyOfText) {
        mFirstKeyOfText = false;
        XFlush(dpy(mDisplay));
        Trace::mark("key-posted");
    }
    mLastKey.insert(keycode, LastKey{++mKeySerial, mClock.elapsed()});
}

bool X11InputBackend::isRead(int keycode) const
{
    const auto last = mLastKey.constFind(keycode);
    if (last == mLastKey.constEnd() || last->serial <= mReadSerial) {
        return true;
    }
    // A client that does not answer pings: only time tells.
    return mFocusKnown && mFocus == 0 && mClock.elapsed() - last->atMs >= kRemapSettleMs;
}

unsigned long X11InputBackend::pingableFocus()
{
    Display* d = dpy(mDisplay);
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(d, &focus, &revert);
    const Atom ping = atom(d, "_NET_WM_PING");
    // From the focused window up to its top level; a window manager may focus a frame, whose
    // child is the client.
    for (int depth = 0; depth < 8 && focus != None && focus != PointerRoot; ++depth) {
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(d, focus, &root, &parent, &children, &count)) {
            return 0;
        }
        QVector<Window> candidates{focus};
        for (unsigned int i = 0; i < count; ++i) {
            candidates.append(children[i]);
        }
        if (children != nullptr) {
            XFree(children);
        }
        for (Window w : qAsConst(candidates)) {
            Atom* protocols = nullptr;
            int protocolCount = 0;
            bool answers = false;
            if (XGetWMProtocols(d, w, &protocols, &protocolCount) != 0) {
                answers = std::find(protocols, protocols + protocolCount, ping) != protocols + protocolCount;
                XFree(protocols);
            }
            if (answers) {
                // Our own windows answer from the thread that is waiting here.
                const bool ours = X11Window::property(d, w, "_NET_WM_PID", XA_CARDINAL) ==
                                  static_cast<unsigned long>(QCoreApplication::applicationPid());
                return ours || mSilentClients.contains(w) ? 0 : w;
            }
        }
        if (parent == root) {
            break;
        }
        focus = parent;
    }
    return 0;
}

unsigned long X11InputBackend::focusForThisText()
{
    if (!mFocusKnown) {
        mFocus = pingableFocus();
        mFocusKnown = true;
    }
    return mFocus;
}

void X11InputBackend::sendPing(unsigned long window)
{
    Display* d = dpy(mDisplay);
    if (!mRootSelected) {
        // The answer goes to the root window, for those listening to its children (GTK) or to
        // the root itself (Qt); listen there while answers are due.
        XSelectInput(d, DefaultRootWindow(d), SubstructureNotifyMask | StructureNotifyMask);
        mRootSelected = true;
    }
    const Atom ping = atom(d, "_NET_WM_PING");
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = atom(d, "WM_PROTOCOLS");
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(ping);
    event.xclient.data.l[1] = ++mPingSerial;
    event.xclient.data.l[2] = static_cast<long>(window);
    XSendEvent(d, window, False, NoEventMask, &event);
    XFlush(d);
    mPings.append(Ping{mPingSerial, mKeySerial, mClock.elapsed(), window});
}

void X11InputBackend::readEvents()
{
    if (mDisplay == nullptr) {
        return;
    }
    Display* d = dpy(mDisplay);
    const Atom protocols = atom(d, "WM_PROTOCOLS");
    const Atom ping = atom(d, "_NET_WM_PING");
    while (XPending(d) > 0) {
        XEvent event{};
        XNextEvent(d, &event);
        if (event.type != ClientMessage || event.xclient.message_type != protocols ||
            static_cast<Atom>(event.xclient.data.l[0]) != ping) {
            continue;  // the root window's own notifications
        }
        const long serial = event.xclient.data.l[1];
        // A client answers in order: this answer stands for every ping sent before it too.
        while (!mPings.isEmpty() && mPings.constFirst().serial <= serial) {
            mReadSerial = std::max(mReadSerial, mPings.constFirst().keys);
            mPings.removeFirst();
        }
    }
    if (mPings.isEmpty() && mRootSelected) {
        XSelectInput(d, DefaultRootWindow(d), NoEventMask);
        mRootSelected = false;
        XFlush(d);
    }
}

void X11InputBackend::waitForKeys(quint64 serial, qint64 lastAtMs)
{
    Display* d = dpy(mDisplay);
    ++mClientWaitCount;
    const unsigned long client = focusForThisText();
    if (client == 0) {
        // Without an answer the only safe thing is time since the key.
        const qint64 since = mClock.elapsed() - lastAtMs;
        if (since < kRemapSettleMs) {
            QThread::msleep(static_cast<unsigned long>(kRemapSettleMs - since));
        }
        mReadSerial = std::max(mReadSerial, serial);
        return;
    }
    readEvents();
    if (mReadSerial >= serial) {
        return;
    }
    // A ping sent after those keys may be on its way already; else one goes now.
    bool asked = false;
    for (const Ping& sent : qAsConst(mPings)) {
        asked = asked || (sent.keys >= serial && sent.window == client);
    }
    if (!asked) {
        sendPing(client);
    }
    const qint64 since = mClock.elapsed();
    while (mReadSerial < serial && mClock.elapsed() - since < kPingTimeoutMs) {
        pollfd fd{ConnectionNumber(d), POLLIN, 0};
        poll(&fd, 1, 10);
        readEvents();
    }
    if (mReadSerial < serial) {
        qCWarning(lcX11) << "window" << Qt::hex << client
                         << "does not answer pings: typing into it with pauses";
        mSilentClients.insert(client);
        mFocus = 0;
        mPings.clear();
        readEvents();
        mReadSerial = std::max(mReadSerial, serial);  // it had its two seconds
    }
}

void X11InputBackend::waitUntilRead()
{
    if (display() == nullptr || mKeySerial == 0) {
        return;
    }
    const LastKey last{mKeySerial, mClock.elapsed()};
    if (mReadSerial < last.serial) {
        waitForKeys(last.serial, mLastKey.isEmpty() ? 0 : last.atMs);
    }
}

unsigned long X11InputBackend::keysymFor(uint codePoint)
{
    switch (codePoint) {
        case '\n':
            return XK_Return;
        case '\t':
            return XK_Tab;
        case '\b':
            return XK_BackSpace;
        default:
            break;
    }
    // Latin-1 keysyms are the code points themselves; the rest live at 0x01000000 + code point.
    if ((codePoint >= 0x20 && codePoint < 0x7f) || (codePoint >= 0xa0 && codePoint <= 0xff)) {
        return codePoint;
    }
    return 0x01000000UL + codePoint;
}

void X11InputBackend::typeText(const QString& text)
{
    if (text.isEmpty() || display() == nullptr) {
        return;
    }
    Display* d = dpy(mDisplay);
    mFirstKeyOfText = true;
    readEvents();
    loadKeymap();
    // Caps Lock would turn "Yes" into "yES" and a second layout would give other letters: both
    // are released for the typing and locked again after. Each key carries the state it was
    // sent with, so locking again at once changes nothing that is still unread.
    XkbStateRec state{};
    const bool haveState = XkbGetState(d, XkbUseCoreKbd, &state) == Success;
    const bool capsLocked = haveState && (state.locked_mods & LockMask) != 0;
    const int lockedGroup = haveState ? state.locked_group : 0;
    if (capsLocked) {
        XkbLockModifiers(d, XkbUseCoreKbd, LockMask, 0);
    }
    if (lockedGroup != 0) {
        XkbLockGroup(d, XkbUseCoreKbd, XkbGroup1Index);
    }
    mInputMethod.suspend();
    QVector<unsigned long> keysyms;
    for (uint cp : text.toUcs4()) {
        if (cp == '\r') {
            continue;
        }
        keysyms.append(keysymFor(cp));
    }
    // Runs as long as the spare keycodes allow: those the run types on keep their keysym, the
    // rest take the characters it lacks.
    int start = 0;
    while (start < keysyms.size()) {
        QSet<unsigned long> needing;
        QSet<int> kept;
        int end = start;
        for (; end < keysyms.size(); ++end) {
            KeyPosition position;
            if (findInKeymap(keysyms[end], &position)) {
                if (mSpareFor.contains(keysyms[end]) && !kept.contains(position.keycode)) {
                    if (needing.size() + kept.size() == mSpareKeycodes.size()) {
                        break;
                    }
                    kept.insert(position.keycode);
                }
            } else if (!needing.contains(keysyms[end])) {
                if (needing.size() + kept.size() == mSpareKeycodes.size()) {
                    break;
                }
                needing.insert(keysyms[end]);
            }
        }
        if (end == start) {
            end = start + 1;  // no spare keycode at all: the character is skipped below
        }
        const QVector<unsigned long> batch = keysyms.mid(start, end - start);
        mapBatch(batch);
        for (unsigned long keysym : batch) {
            KeyPosition position;
            if (findInKeymap(keysym, &position)) {
                pressKey(position);
            }
        }
        XFlush(d);
        start = end;
    }
    if (capsLocked) {
        XkbLockModifiers(d, XkbUseCoreKbd, LockMask, LockMask);
    }
    if (lockedGroup != 0) {
        XkbLockGroup(d, XkbUseCoreKbd, static_cast<unsigned int>(lockedGroup));
    }
    // Asked now, answered while the next text is on its way: its keycodes are then known read.
    // The window asked is the one judged by until the next text ends.
    mFocusKnown = false;
    if (const unsigned long client = focusForThisText()) {
        sendPing(client);
    }
    XFlush(d);
    Trace::mark("typed");
    mInputMethod.scheduleRestore();
}

void X11InputBackend::sendKey(unsigned long keysym, bool down)
{
    if (keysym == 0 || display() == nullptr) {
        return;
    }
    Display* d = dpy(mDisplay);
    KeyCode code = XKeysymToKeycode(d, keysym);
    if (code == 0) {
        loadKeymap();
        mapBatch({keysym});
        KeyPosition position;
        if (!findInKeymap(keysym, &position)) {
            return;
        }
        code = static_cast<KeyCode>(position.keycode);
    }
    mFirstKeyOfText = true;
    XTestFakeKeyEvent(d, code, down ? True : False, CurrentTime);
    mPressesSent += down ? 1 : 0;
    keySent(code);
    XFlush(d);
}

void X11InputBackend::toggleShowingDesktop()
{
    if (display() == nullptr) {
        return;
    }
    Display* d = dpy(mDisplay);
    const Window root = DefaultRootWindow(d);
    const unsigned long showing = X11Window::property(d, root, "_NET_SHOWING_DESKTOP", XA_CARDINAL);
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = root;
    event.xclient.message_type = atom(d, "_NET_SHOWING_DESKTOP");
    event.xclient.format = 32;
    event.xclient.data.l[0] = showing != 0 ? 0 : 1;
    XSendEvent(d, root, False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    XFlush(d);
}

QRect X11InputBackend::screenGeometry()
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr &&
        QGuiApplication::primaryScreen()) {
        return QGuiApplication::primaryScreen()->availableGeometry();
    }
    if (display() == nullptr) {
        return QRect();
    }
    Display* d = dpy(mDisplay);
    return QRect(0, 0, DisplayWidth(d, DefaultScreen(d)), DisplayHeight(d, DefaultScreen(d)));
}

QString X11InputBackend::activeWindowClass()
{
    if (display() == nullptr) {
        return QString();
    }
    Display* d = dpy(mDisplay);
    Window window = X11Window::property(d, DefaultRootWindow(d), "_NET_ACTIVE_WINDOW", XA_WINDOW);
    if (window == 0) {
        // No window manager says which is active: the focus window, or the frame above it.
        int revert = 0;
        XGetInputFocus(d, &window, &revert);
        if (window == PointerRoot || window == None) {
            return QString();
        }
    }
    QString name;
    X11Window::findUpwards(d, window, [&](Window w) {
        name = windowClass(d, w);
        return !name.isEmpty();
    });
    return name;
}

unsigned long X11InputBackend::focusedWindow()
{
    if (display() == nullptr) {
        return 0;
    }
    Display* d = dpy(mDisplay);
    Window window = None;
    int revert = 0;
    XGetInputFocus(d, &window, &revert);
    if (window == PointerRoot || window == None) {
        window = X11Window::property(d, DefaultRootWindow(d), "_NET_ACTIVE_WINDOW", XA_WINDOW);
    }
    return window;
}

quint64 X11InputBackend::foreignKeyPresses()
{
    if (display() == nullptr || !mPresses) {
        return 0;
    }
    // Our own keys processed first, so that none of them is still on its way to the count.
    XSync(dpy(mDisplay), False);
    const quint64 all = mPresses->count();
    return all > mPressesSent ? all - mPressesSent : 0;
}

QPoint X11InputBackend::caretPosition()
{
    if (mShutDown) {
        return QPoint(0, 0);
    }
    if (!mCaret) {
        mCaret = std::make_unique<CaretTracker>(&AtspiCaret::lookUp);
    }
    return mCaret->caretPosition();
}

void X11InputBackend::restoreSpares()
{
    Display* d = dpy(mDisplay);
    if (mSpareFor.isEmpty() || mKeysymsPerKeycode == 0) {
        return;
    }
    // The keycodes go back to having nothing on them once the keys sent on them are read; only
    // those still carrying what this backend put there: another may have taken some over.
    mFocusKnown = false;
    waitUntilRead();
    const QHash<unsigned long, int> ours = mSpareFor;
    loadKeymap();
    QVector<KeySym> none(mKeysymsPerKeycode, NoSymbol);
    for (auto it = ours.constBegin(); it != ours.constEnd(); ++it) {
        if (carriedKeysym(it.value()) == it.key()) {
            XChangeKeyboardMapping(d, it.value(), mKeysymsPerKeycode, none.data(), 1);
            mMarks.remove(it.value());
        }
    }
    writeMarks();
    XSync(d, False);
    mSpareFor.clear();
}
