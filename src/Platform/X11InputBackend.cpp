#include "Platform/X11InputBackend.h"

#include "Platform/AtspiCaret.h"
#include "Utils/Logging.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QScreen>
#include <QSet>
#include <QThread>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

namespace {

Display* dpy(void* handle)
{
    return static_cast<Display*>(handle);
}

Atom atom(Display* d, const char* name)
{
    return XInternAtom(d, name, False);
}

// A window property of type WINDOW or CARDINAL, first item, or 0.
unsigned long propertyValue(Display* d, Window w, const char* name, Atom type)
{
    Atom actualType = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long after = 0;
    unsigned char* data = nullptr;
    unsigned long value = 0;
    if (XGetWindowProperty(d, w, atom(d, name), 0, 1, False, type, &actualType, &format, &items, &after,
                           &data) == Success &&
        data != nullptr) {
        if (items > 0 && format == 32) {
            value = reinterpret_cast<unsigned long*>(data)[0];
        }
        XFree(data);
    }
    return value;
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

X11InputBackend::X11InputBackend() = default;

X11InputBackend::~X11InputBackend()
{
    if (mDisplay != nullptr) {
        restoreSpares();
        XCloseDisplay(dpy(mDisplay));
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
            qCWarning(lcX11) << "no X display: typing into other windows is off";
            return nullptr;
        }
        if (!XTestQueryExtension(d, &event, &error, &major, &minor)) {
            qCWarning(lcX11) << "the X server lacks XTest: typing into other windows is off";
            XCloseDisplay(d);
            return nullptr;
        }
        mDisplay = d;
        XDisplayKeycodes(d, &mMinKeycode, &mMaxKeycode);
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

    // Spare: keycodes with nothing on them, and those we put our keysyms on earlier.
    QSet<int> ours;
    for (int code : qAsConst(mSpareFor)) {
        ours.insert(code);
    }
    QList<int> spare;
    for (int code = mMaxKeycode; code >= mMinKeycode && spare.size() < kMaxSpareKeycodes; --code) {
        bool empty = true;
        for (int level = 0; level < perKeycode; ++level) {
            empty = empty && mKeymap[(code - mMinKeycode) * perKeycode + level] == NoSymbol;
        }
        if (empty || ours.contains(code)) {
            spare.append(code);
        }
    }
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
    // A mapping of ours that someone else overwrote is gone.
    for (auto it = mSpareFor.begin(); it != mSpareFor.end();) {
        const int index = (it.value() - mMinKeycode) * perKeycode;
        if (mKeymap.value(index) != it.key()) {
            it = mSpareFor.erase(it);
        } else {
            ++it;
        }
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
    Display* d = dpy(mDisplay);
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
    // The client may still be reading keys typed on the keycodes about to change.
    if (mTypedSinceRemap) {
        XSync(d, False);
        QThread::msleep(kRemapSettleMs);
    }
    for (unsigned long keysym : qAsConst(missing)) {
        int code = 0;
        for (int candidate : qAsConst(mSpareKeycodes)) {
            if (!busy.contains(candidate)) {
                code = candidate;
                break;
            }
        }
        if (code == 0) {
            qCWarning(lcX11) << "no spare keycode left for keysym" << Qt::hex << keysym;
            continue;
        }
        for (auto it = mSpareFor.begin(); it != mSpareFor.end(); ++it) {
            if (it.value() == code) {
                mSpareFor.erase(it);
                break;
            }
        }
        QVector<KeySym> syms(mKeysymsPerKeycode, keysym);  // every level, so Shift and Caps change nothing
        XChangeKeyboardMapping(d, code, mKeysymsPerKeycode, syms.data(), 1);
        for (int level = 0; level < mKeysymsPerKeycode; ++level) {
            mKeymap[(code - mMinKeycode) * mKeysymsPerKeycode + level] = keysym;
        }
        mSpareFor.insert(keysym, code);
        mSpareKeycodes.removeAll(code);
        mSpareKeycodes.append(code);  // most recently used last
        busy.insert(code);
        ++mRemapCount;
    }
    XSync(d, False);
    QThread::msleep(kRemapSettleMs);
    mTypedSinceRemap = false;
}

void X11InputBackend::pressKey(const KeyPosition& position)
{
    Display* d = dpy(mDisplay);
    const KeyCode shift = XKeysymToKeycode(d, XK_Shift_L);
    if (position.shift && shift != 0) {
        XTestFakeKeyEvent(d, shift, True, CurrentTime);
    }
    XTestFakeKeyEvent(d, static_cast<KeyCode>(position.keycode), True, CurrentTime);
    XTestFakeKeyEvent(d, static_cast<KeyCode>(position.keycode), False, CurrentTime);
    if (position.shift && shift != 0) {
        XTestFakeKeyEvent(d, shift, False, CurrentTime);
    }
    mTypedSinceRemap = true;
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
    loadKeymap();
    QVector<unsigned long> keysyms;
    for (uint cp : text.toUcs4()) {
        if (cp == '\r') {
            continue;
        }
        keysyms.append(keysymFor(cp));
    }
    // Batches as large as the spare keycodes allow.
    int start = 0;
    while (start < keysyms.size()) {
        QSet<unsigned long> needing;
        int end = start;
        for (; end < keysyms.size(); ++end) {
            KeyPosition position;
            if (!findInKeymap(keysyms[end], &position) && !needing.contains(keysyms[end])) {
                if (needing.size() == mSpareKeycodes.size()) {
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
        XFlush(dpy(mDisplay));
        start = end;
    }
    XSync(dpy(mDisplay), False);
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
    XTestFakeKeyEvent(d, code, down ? True : False, CurrentTime);
    XFlush(d);
    mTypedSinceRemap = true;
}

void X11InputBackend::toggleShowingDesktop()
{
    if (display() == nullptr) {
        return;
    }
    Display* d = dpy(mDisplay);
    const Window root = DefaultRootWindow(d);
    const unsigned long showing = propertyValue(d, root, "_NET_SHOWING_DESKTOP", XA_CARDINAL);
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
    Window window = propertyValue(d, DefaultRootWindow(d), "_NET_ACTIVE_WINDOW", XA_WINDOW);
    if (window == 0) {
        // No window manager says which is active: the focus window, or the frame above it.
        int revert = 0;
        XGetInputFocus(d, &window, &revert);
        if (window == PointerRoot || window == None) {
            return QString();
        }
    }
    for (int depth = 0; depth < 8 && window != 0; ++depth) {
        const QString name = windowClass(d, window);
        if (!name.isEmpty()) {
            return name;
        }
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(d, window, &root, &parent, &children, &count)) {
            break;
        }
        if (children != nullptr) {
            XFree(children);
        }
        window = parent == root ? 0 : parent;
    }
    return QString();
}

QPoint X11InputBackend::caretPosition()
{
    return AtspiCaret::caretPosition();
}

QString X11InputBackend::clipboardText()
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) {
        return QString();
    }
    return QGuiApplication::clipboard()->text();
}

void X11InputBackend::setClipboardText(const QString& text)
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr) {
        QGuiApplication::clipboard()->setText(text);
    }
}

void X11InputBackend::restoreSpares()
{
    Display* d = dpy(mDisplay);
    if (mSpareFor.isEmpty() || mKeysymsPerKeycode == 0) {
        return;
    }
    // Keys already sent are read by now; the keycodes go back to having nothing on them.
    XSync(d, False);
    QThread::msleep(kRemapSettleMs);
    QVector<KeySym> none(mKeysymsPerKeycode, NoSymbol);
    for (int code : qAsConst(mSpareFor)) {
        XChangeKeyboardMapping(d, code, mKeysymsPerKeycode, none.data(), 1);
    }
    XSync(d, False);
    mSpareFor.clear();
}
