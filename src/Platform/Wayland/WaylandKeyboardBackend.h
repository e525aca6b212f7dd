#pragma once

#include "Platform/InputBackend.h"
#include "Platform/Wayland/VirtualKeymap.h"

struct wl_display;
struct wl_registry;
struct wl_seat;
struct wl_output;
struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

// Keystrokes and text for compositors that offer virtual keyboards to clients (sway, Hyprland,
// labwc, river: zwp_virtual_keyboard_manager_v1). A connection of its own to the compositor,
// apart from Qt's (the program's windows stay on XWayland), and one virtual keyboard on the
// first seat, whose keymap this backend writes (VirtualKeymap): every character is one key, so
// Chinese, accents and emoji need no input method and no layout of the user's.
//
// A key never arrives under the wrong keymap, without any wait: the keymap, key and modifier
// requests travel in one socket, in the order made, and the compositor handles them in that
// order. A keymap request replaces the virtual keyboard's keymap at once and the compositor
// hands it to the focused client (wl_keyboard.keymap) before any key this keyboard sends later;
// the client reads its events in order and translates each key with the keymap it holds when
// it reads it. So keys sent before a change are read with the old keymap, keys after with the
// new one, however far behind the client is. (X11 differs: clients there fetch the map
// lazily, which is why the X11 backend waits.) A round trip is needed only before the
// connection closes: a compositor drops a client's unread requests when it hangs up.
//
// The modifier state of this keyboard is sent clear (nothing held, nothing locked) and typed
// text is sent with it clear: the compositor gives the client the state of the keyboard a key
// comes from, so the user's held Shift or Caps Lock on their own keyboard changes nothing. Held
// modifiers and Caps Lock sent through sendKey (stored shortcuts) are set aside while text is
// typed and restored after it.
//
// What a virtual keyboard cannot tell: which window has the focus, its class and its caret.
// focusedWindow() is 0, activeWindowClass() empty and caretPosition() (0, 0): the program then
// treats every window alike, shows panels at their fixed spot and cannot drop a pending
// rewrite when the focus moves. toggleShowingDesktop() does nothing.
//
// Main thread only; it starts no thread. Unavailable (and silent) without such a compositor.
class WaylandKeyboardBackend : public InputBackend {
public:
    // Keys sent between two flushes: the connection's buffer holds 4 KiB, and a request that
    // finds it full while the socket is full too would end the connection.
    static constexpr int kKeysPerFlush = 64;

    // Connects to the compositor WAYLAND_DISPLAY names (or the given socket name or path).
    explicit WaylandKeyboardBackend(const QByteArray& socket = QByteArray());
    ~WaylandKeyboardBackend() override;
    WaylandKeyboardBackend(const WaylandKeyboardBackend&) = delete;
    WaylandKeyboardBackend& operator=(const WaylandKeyboardBackend&) = delete;

    bool isAvailable() const { return mKeyboard != nullptr && !mBroken; }
    // Why typing is off, once isAvailable() said false.
    QString unavailableReason() const { return mUnavailable; }

    void sendKey(unsigned long keysym, bool down) override;
    void typeText(const QString& text) override;
    void toggleShowingDesktop() override {}
    QRect screenGeometry() override;
    QString activeWindowClass() override { return QString(); }
    unsigned long focusedWindow() override { return 0; }
    QPoint caretPosition() override { return QPoint(0, 0); }
    // The virtual keyboard destroyed once the compositor has every key, and the connection
    // closed; typing stays off after it.
    void shutDown() override;

    // Returns once the compositor has handled every request sent so far.
    void waitUntilSent();
    // Keymaps sent, the first included.
    int keymapCount() const { return mKeymapCount; }

    // Filled by the registry listener.
    struct Globals {
        wl_seat* seat = nullptr;
        zwp_virtual_keyboard_manager_v1* manager = nullptr;
        wl_output* output = nullptr;
        QRect outputRect;  // position and current mode in pixels
        int scale = 1;
    };

private:
    void fail(const QString& reason);
    bool sendKeymap();
    void sendModifiers(unsigned int depressed, unsigned int locked);
    void sendKeyEvent(int key, bool down);
    // Puts the buffered requests on the socket, waiting while the socket is full.
    void flush();

    wl_display* mDisplay = nullptr;
    wl_registry* mRegistry = nullptr;
    zwp_virtual_keyboard_v1* mKeyboard = nullptr;
    Globals mGlobals;
    VirtualKeymap mKeymap;
    QString mUnavailable;
    bool mBroken = false;
    static constexpr unsigned int kLockMask = 1u << 1;
    unsigned int mDepressed = 0;  // modifiers held through sendKey
    unsigned int mLocked = 0;     // Caps Lock, locked through sendKey
    int mUnflushed = 0;
    int mKeymapCount = 0;
};
