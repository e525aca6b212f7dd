#pragma once

#include "Platform/CaretTracker.h"
#include "Platform/InputBackend.h"
#include "Platform/InputMethodSwitch.h"
#include "Platform/X11KeyPresses.h"

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QVector>

#include <memory>

class QSocketNotifier;

// Keystrokes and text for X11 through XTest. A character the keyboard map lacks is typed by
// putting its keysym on a spare keycode. Clients translate a key when they read it, with the
// keyboard map as the server has it then (GTK re-reads it through XKB after XkbMapNotify, Qt and
// Xlib after their own notifications), so a keycode given another character while a key sent on
// it is still unread comes out as the new character or as nothing. The rule:
//  - every spare keycode of the map is used and keeps its keysym, least recently used first to
//    go, so repeated characters are typed without any change of the map;
//  - keycodes are changed only between keys, all that a text needs at once, in one change of
//    the map (each change has every client rebuild its map), and a keycode whose last key the
//    focused client may not have read yet is changed only once it has;
//  - keycodes whose last key is known to be read go first, so that a change rarely waits.
// "The client has read" is a _NET_WM_PING answered by the focused window (its answer comes after
// it has handled every event before it). A ping goes out after each text without waiting for it;
// its answer is collected later, so that typing only waits when it must reuse a keycode the
// answer has not confirmed yet. A client that does not answer pings gets a settle pause counted
// from the last key sent on the keycode. A change of the map needs no wait of its own: a client
// gets the change's notification before any key sent after it and translates that key with the
// new map (the benchmark shows this for Qt, GTK and xterm).
// Keycodes this process did not empty are never reset at start: a backend may have died with its
// characters on them, and another (a second run) must take them over, or it finds no spare
// keycode left. A keycode carrying one keysym on its first levels is no sign of that (real layouts
// have such keys: digits, Hebrew, Mongolian letters), so every change is marked on the root
// window (keycode and keysym); a keycode counts as spare when it carries nothing or carries what
// its mark says. At the end only keycodes still carrying what this backend had on them are
// emptied: another backend may have taken some over meanwhile.
// Caps Lock and a locked second layout are released while text is typed and locked again after,
// so that letters come out as they were dictated, and a composing input method is switched off.
//
// Main thread only. Without an X server it does nothing and says so once.
class X11InputBackend : public InputBackend {
public:
    // The time a client that does not answer pings is given to read its keys before a keycode
    // they were sent on changes; a busy desktop can keep a client from its queue for over 100 ms.
    static constexpr int kRemapSettleMs = 250;
    // How long a ping may go unanswered before the client counts as not answering.
    static constexpr int kPingTimeoutMs = 2000;
    // Most spare keycodes used at once (X keycodes end at 255).
    static constexpr int kMaxSpareKeycodes = 248;
    // The root window property that marks the keycodes a backend put characters on.
    static constexpr const char* kMarksProperty = "_ZORVANE_TYPED_KEYCODES";

    // How a change of the map is kept from turning keys into other characters. The benchmark
    // compares them on real clients; the program uses Confirmed.
    enum class Safety {
        Confirmed,            // wait for keys on a keycode to be read before changing it
        ConfirmedAndSettled,  // also make the client read each change before the next key
        Unchecked,            // change keycodes whatever is still unread (unsafe, for comparison)
    };

    X11InputBackend();
    ~X11InputBackend() override;
    X11InputBackend(const X11InputBackend&) = delete;
    X11InputBackend& operator=(const X11InputBackend&) = delete;

    bool isAvailable();
    // Why typing is off, once isAvailable() said false.
    QString unavailableReason() const { return mUnavailable; }

    void sendKey(unsigned long keysym, bool down) override;
    void typeText(const QString& text) override;
    void toggleShowingDesktop() override;
    QRect screenGeometry() override;
    QString activeWindowClass() override;
    unsigned long focusedWindow() override;
    QPoint caretPosition() override;
    quint64 foreignKeyPresses() override;
    // The spare keycodes emptied, the input method given back, the caret search joined and the
    // display closed; typing stays off after it.
    void shutDown() override;

    // The keysym that types a code point.
    static unsigned long keysymFor(uint codePoint);
    // Measurements: keycodes changed, waits for the client, and the knobs the benchmark turns.
    int remapCount() const { return mRemapCount; }
    int clientWaitCount() const { return mClientWaitCount; }
    void setSafety(Safety safety) { mSafety = safety; }
    void setSpareLimit(int keycodes) { mSpareLimit = keycodes; }
    // Returns once the focused client has read every key sent so far.
    void waitUntilRead();

private:
    struct KeyPosition {
        int keycode = 0;
        bool shift = false;
    };
    struct LastKey {
        quint64 serial = 0;  // the key's number among all keys sent
        qint64 atMs = 0;     // when it went out
    };
    struct Ping {
        long serial = 0;
        quint64 keys = 0;  // keys sent before it
        qint64 sentMs = 0;
        unsigned long window = 0;
    };

    void* display();  // Display*, opened on first use
    void loadKeymap();
    // The keysym a keycode carries the way a spare keycode does (NoSymbol when it carries
    // nothing); anything else is a key of the layout.
    unsigned long carriedKeysym(int code) const;
    // The root window's marks: keycode -> the keysym a backend put on it.
    QHash<int, unsigned long> readMarks() const;
    void writeMarks();
    bool findInKeymap(unsigned long keysym, KeyPosition* position) const;
    // Puts every keysym of the batch that has no key on a spare keycode.
    void mapBatch(const QVector<unsigned long>& keysyms);
    // Puts the keysyms on their keycodes (keycode -> keysym) with one change of the map.
    void writeChanges(const QMap<int, unsigned long>& changes);
    void pressKey(const KeyPosition& position);
    void keySent(int keycode);
    void restoreSpares();
    // Whether the client has surely read the last key sent on the keycode.
    bool isRead(int keycode) const;
    // Waits until the keys up to the given number are read (a ping, or time for a silent client).
    void waitForKeys(quint64 serial, qint64 lastAtMs);
    void sendPing(unsigned long window);
    // Reads what the server sent us: ping answers.
    void readEvents();
    // The focused top-level window if it answers _NET_WM_PING, else 0.
    unsigned long pingableFocus();
    // The same, kept from the end of the last text: the window its keys went to.
    unsigned long focusForThisText();

    // The caret search on a thread of its own, started on first use.
    std::unique_ptr<CaretTracker> mCaret;
    void* mDisplay = nullptr;
    // Ping answers come while the program waits for the next text: read them then, so that the
    // root window is listened to no longer than needed.
    std::unique_ptr<QSocketNotifier> mEvents;
    bool mOpenTried = false;
    bool mShutDown = false;
    QString mUnavailable;
    int mMinKeycode = 0;
    int mMaxKeycode = 0;
    int mKeysymsPerKeycode = 0;
    QVector<unsigned long> mKeymap;       // the server's map as last read, our changes applied
    QList<int> mSpareKeycodes;            // keycodes free for our use, least recently used first
    QHash<unsigned long, int> mSpareFor;  // keysym -> the spare keycode it is on
    QHash<int, unsigned long> mMarks;     // the root window's marks as last read, ours applied
    QHash<int, LastKey> mLastKey;         // keycode -> the last key sent on it
    QSet<unsigned long> mSilentClients;   // windows that let a ping time out
    QList<Ping> mPings;                   // sent, not answered yet
    quint64 mKeySerial = 0;               // keys sent so far
    quint64 mReadSerial = 0;              // keys the focused client is known to have read
    long mPingSerial = 0;
    bool mRootSelected = false;
    bool mFocusKnown = false;
    unsigned long mFocus = 0;
    QElapsedTimer mClock;
    Safety mSafety = Safety::Confirmed;
    int mSpareLimit = kMaxSpareKeycodes;
    bool mFirstKeyOfText = false;
    int mRemapCount = 0;
    // Every press of the session, and those of them this backend sent.
    std::unique_ptr<X11KeyPresses> mPresses;
    quint64 mPressesSent = 0;
    int mClientWaitCount = 0;
    InputMethodSwitch mInputMethod;
};
