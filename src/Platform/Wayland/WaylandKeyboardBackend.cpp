#include "Platform/Wayland/WaylandKeyboardBackend.h"

#include "Platform/X11InputBackend.h"
#include "Utils/Logging.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>

#include <X11/keysym.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

#include <cerrno>
#include <cstring>

namespace {

using Globals = WaylandKeyboardBackend::Globals;

void outputGeometry(void* data, wl_output*, int32_t x, int32_t y, int32_t, int32_t, int32_t, const char*,
                    const char*, int32_t)
{
    static_cast<Globals*>(data)->outputRect.moveTopLeft(QPoint(x, y));
}

void outputMode(void* data, wl_output*, uint32_t flags, int32_t width, int32_t height, int32_t)
{
    if (flags & WL_OUTPUT_MODE_CURRENT) {
        static_cast<Globals*>(data)->outputRect.setSize(QSize(width, height));
    }
}

void outputDone(void*, wl_output*) {}

void outputName(void*, wl_output*, const char*) {}

void outputScale(void* data, wl_output*, int32_t factor)
{
    static_cast<Globals*>(data)->scale = qMax(1, factor);
}

const wl_output_listener kOutputListener = {outputGeometry, outputMode, outputDone,
                                            outputScale,    outputName, outputName};

void registryGlobal(void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t version)
{
    auto* globals = static_cast<Globals*>(data);
    if (std::strcmp(interface, wl_seat_interface.name) == 0 && globals->seat == nullptr) {
        globals->seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    } else if (std::strcmp(interface, zwp_virtual_keyboard_manager_v1_interface.name) == 0) {
        globals->manager = static_cast<zwp_virtual_keyboard_manager_v1*>(
            wl_registry_bind(registry, name, &zwp_virtual_keyboard_manager_v1_interface, 1));
    } else if (std::strcmp(interface, wl_output_interface.name) == 0 && globals->output == nullptr) {
        globals->output = static_cast<wl_output*>(
            wl_registry_bind(registry, name, &wl_output_interface, qMin<uint32_t>(version, 2)));
        wl_output_add_listener(globals->output, &kOutputListener, globals);
    }
}

void registryGlobalRemove(void*, wl_registry*, uint32_t) {}

const wl_registry_listener kRegistryListener = {registryGlobal, registryGlobalRemove};

// The modifier a keysym holds down, as a mask of the real modifiers; 0 for other keys.
unsigned int modifierMask(unsigned long keysym)
{
    switch (keysym) {
        case XK_Shift_L:
        case XK_Shift_R:
            return 1u << 0;
        case XK_Control_L:
        case XK_Control_R:
            return 1u << 2;
        case XK_Alt_L:
        case XK_Alt_R:
        case XK_Meta_L:
        case XK_Meta_R:
            return 1u << 3;
        case XK_Super_L:
        case XK_Super_R:
            return 1u << 6;
        default:
            return 0;
    }
}

quint32 timestamp()
{
    static QElapsedTimer clock;
    if (!clock.isValid()) {
        clock.start();
    }
    return static_cast<quint32>(clock.elapsed());
}

}  // namespace

WaylandKeyboardBackend::WaylandKeyboardBackend(const QByteArray& socket)
    // BackSpace, and the keys of our own chords (Ctrl+A, C, X) from the first keymap on: GTK 3
    // on Wayland misses a chord whose key came in a keymap sent with it.
    : mKeymap(VirtualKeymap::kMaxKeys, {XK_BackSpace, XK_a, XK_c, XK_x})
{
    mDisplay = wl_display_connect(socket.isEmpty() ? nullptr : socket.constData());
    if (mDisplay == nullptr) {
        mUnavailable = QStringLiteral("no Wayland compositor to connect to");
        return;
    }
    mRegistry = wl_display_get_registry(mDisplay);
    wl_registry_add_listener(mRegistry, &kRegistryListener, &mGlobals);
    // The globals, then the outputs' first events.
    if (wl_display_roundtrip(mDisplay) < 0 || wl_display_roundtrip(mDisplay) < 0) {
        fail(QStringLiteral("the Wayland compositor closed the connection"));
        return;
    }
    if (mGlobals.manager == nullptr || mGlobals.seat == nullptr) {
        mUnavailable = mGlobals.manager == nullptr
                           ? QStringLiteral("the compositor offers no virtual keyboard")
                           : QStringLiteral("the compositor has no seat");
        return;
    }
    mKeyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(mGlobals.manager, mGlobals.seat);
    // A keymap first (the compositor refuses modifiers and keys before one), then a clear state.
    if (sendKeymap()) {
        sendModifiers(0, 0);
        waitUntilSent();  // an unauthorised client learns it here
    }
}

WaylandKeyboardBackend::~WaylandKeyboardBackend()
{
    shutDown();
}

void WaylandKeyboardBackend::fail(const QString& reason)
{
    if (!mBroken) {
        const int error = mDisplay != nullptr ? wl_display_get_error(mDisplay) : 0;
        mUnavailable = error != 0
                           ? QStringLiteral("%1 (%2)").arg(reason, QString::fromLocal8Bit(strerror(error)))
                           : reason;
        qCWarning(lcWayland).noquote() << "typing into other windows is off:" << mUnavailable;
    }
    mBroken = true;
}

bool WaylandKeyboardBackend::sendKeymap()
{
    const QByteArray text = mKeymap.text();
    // The compositor maps the file and reads a NUL-terminated string from it; each keymap gets a
    // file of its own, so one it has not read yet is never rewritten.
    const int fd = memfd_create("zorvane-keymap", MFD_CLOEXEC);
    const qsizetype size = text.size() + 1;
    if (fd < 0 || write(fd, text.constData(), size_t(size)) != size) {
        if (fd >= 0) {
            close(fd);
        }
        fail(QStringLiteral("no memory file for the keymap"));
        return false;
    }
    zwp_virtual_keyboard_v1_keymap(mKeyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, fd, quint32(size));
    close(fd);  // the request holds a copy until it is sent
    ++mKeymapCount;
    return true;
}

void WaylandKeyboardBackend::sendModifiers(unsigned int depressed, unsigned int locked)
{
    zwp_virtual_keyboard_v1_modifiers(mKeyboard, depressed, 0, locked, 0);
}

void WaylandKeyboardBackend::sendKeyEvent(int key, bool down)
{
    zwp_virtual_keyboard_v1_key(mKeyboard, timestamp(), quint32(key),
                                down ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
    if (++mUnflushed >= kKeysPerFlush) {
        flush();
    }
}

void WaylandKeyboardBackend::flush()
{
    mUnflushed = 0;
    QElapsedTimer clock;
    clock.start();
    while (!mBroken && wl_display_flush(mDisplay) < 0) {
        pollfd fd{wl_display_get_fd(mDisplay), POLLOUT, 0};
        if (errno != EAGAIN || clock.elapsed() > 5000) {
            fail(QStringLiteral("the Wayland compositor stopped reading keys"));
        } else {
            poll(&fd, 1, 100);
        }
    }
}

void WaylandKeyboardBackend::sendKey(unsigned long keysym, bool down)
{
    if (!isAvailable()) {
        return;
    }
    if (keysym == XK_Caps_Lock) {
        // The minimal keymap gives keys no actions: the lock is set here, as a press toggles it.
        if (down) {
            mLocked ^= kLockMask;
            sendModifiers(mDepressed, mLocked);
        }
    } else if (const unsigned int mask = modifierMask(keysym)) {
        // A virtual keyboard's modifiers are what it says they are, not what its keys do.
        mDepressed = down ? (mDepressed | mask) : (mDepressed & ~mask);
        sendModifiers(mDepressed, mLocked);
    } else {
        if (mKeymap.place({keysym})) {
            if (!sendKeymap()) {
                return;
            }
            // A compositor starts a new keymap with nothing held or locked (wlroots does):
            // the chord's Control would be gone.
            if (mDepressed != 0 || mLocked != 0) {
                sendModifiers(mDepressed, mLocked);
            }
        }
        sendKeyEvent(mKeymap.keyFor(keysym), down);
    }
    flush();
}

void WaylandKeyboardBackend::typeText(const QString& text)
{
    if (text.isEmpty() || !isAvailable()) {
        return;
    }
    QVector<unsigned long> keysyms;
    for (uint cp : text.toUcs4()) {
        if (cp >= 0x20 || cp == '\n' || cp == '\t') {
            keysyms << X11InputBackend::keysymFor(cp);
        }
    }
    // Held or locked here (a stored shortcut), a modifier would change the text.
    if (mDepressed != 0 || mLocked != 0) {
        sendModifiers(0, 0);
    }
    // Runs as long as the table holds at once: one keymap (if any) before each run.
    for (int start = 0; start < keysyms.size() && !mBroken;) {
        const int end = mKeymap.runEnd(keysyms, start);
        if (mKeymap.place(keysyms.mid(start, end - start)) && !sendKeymap()) {
            return;
        }
        for (int i = start; i < end; ++i) {
            const int key = mKeymap.keyFor(keysyms[i]);
            sendKeyEvent(key, true);
            sendKeyEvent(key, false);
        }
        start = end;
    }
    if (mDepressed != 0 || mLocked != 0) {
        sendModifiers(mDepressed, mLocked);
    }
    flush();
}

QRect WaylandKeyboardBackend::screenGeometry()
{
    if (mGlobals.outputRect.isValid()) {
        const QRect& pixels = mGlobals.outputRect;
        return QRect(pixels.topLeft(), pixels.size() / mGlobals.scale);
    }
    auto* app = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    return app != nullptr && app->primaryScreen() != nullptr ? app->primaryScreen()->geometry() : QRect();
}

void WaylandKeyboardBackend::waitUntilSent()
{
    if (mDisplay != nullptr && !mBroken && wl_display_roundtrip(mDisplay) < 0) {
        fail(QStringLiteral("the Wayland compositor closed the connection"));
    }
}

void WaylandKeyboardBackend::shutDown()
{
    if (mDisplay == nullptr) {
        return;
    }
    if (mKeyboard != nullptr) {
        // Nothing stays held on the user's seat.
        if ((mDepressed != 0 || mLocked != 0) && !mBroken) {
            sendModifiers(0, 0);
        }
        zwp_virtual_keyboard_v1_destroy(mKeyboard);
        mKeyboard = nullptr;
    }
    waitUntilSent();
    if (mGlobals.manager != nullptr) {
        zwp_virtual_keyboard_manager_v1_destroy(mGlobals.manager);
    }
    if (mGlobals.output != nullptr) {
        wl_output_destroy(mGlobals.output);
    }
    if (mGlobals.seat != nullptr) {
        wl_seat_destroy(mGlobals.seat);
    }
    wl_registry_destroy(mRegistry);
    wl_display_disconnect(mDisplay);
    mGlobals = Globals();
    mDisplay = nullptr;
    mBroken = true;
    if (mUnavailable.isEmpty()) {
        mUnavailable = QStringLiteral("shut down");
    }
}
