#pragma once

#include "Platform/CaretTracker.h"
#include "Platform/InputBackend.h"
#include "Platform/InputMethodSwitch.h"

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QSet>
#include <QVector>

#include <memory>

// Keystrokes and text for X11 through XTest. A character the keyboard map lacks is typed by
// putting its keysym on a spare keycode. Clients translate a key when they read it, with the
// keyboard map as the server has it then (GTK re-reads it through XKB after XkbMapNotify, Qt and
// Xlib after their own notifications), so a keycode given another character while a key sent on
// it is still unread comes out as the new character or as nothing. The rule:
//  - a spare keycode keeps its keysym, least recently used first to go, so repeated characters
//    are typed without any remap or pause;
//  - keycodes are changed only between keys, all that a run of text needs at once, and a keycode
//    still carrying an unconfirmed key is changed only once the focused client has read every key
//    sent so far;
//  - after a change the client is made to read the change before the next key goes out.
// "The client has read" is a _NET_WM_PING round trip to the focused window (its answer comes after
// it has handled every event before it); a client that does not answer pings gets a settle pause
// counted from its last key.
// Caps Lock and a locked second layout are released while text is typed and locked again after,
// so that letters come out as they were dictated, and a composing input method is switched off.
//
// Main thread only. Without an X server it does nothing and says so once.
class X11InputBackend : public InputBackend {
public:
    // The time a client that does not answer pings is given to read its keys before a keycode
    // they were sent on changes.
    static constexpr int kRemapSettleMs = 80;
    // How long a ping may go unanswered before the client counts as not answering.
    static constexpr int kPingTimeoutMs = 2000;
    // Most spare keycodes used at once.
    static constexpr int kMaxSpareKeycodes = 48;

    X11InputBackend();
    ~X11InputBackend() override;
    X11InputBackend(const X11InputBackend&) = delete;
    X11InputBackend& operator=(const X11InputBackend&) = delete;

    bool isAvailable();

    void sendKey(unsigned long keysym, bool down) override;
    void typeText(const QString& text) override;
    void toggleShowingDesktop() override;
    QRect screenGeometry() override;
    QString activeWindowClass() override;
    QPoint caretPosition() override;

    // The keysym that types a code point.
    static unsigned long keysymFor(uint codePoint);
    // Remaps made so far, and waits for the client (for measurements).
    int remapCount() const { return mRemapCount; }
    int clientWaitCount() const { return mClientWaitCount; }

private:
    struct KeyPosition {
        int keycode = 0;
        bool shift = false;
    };

    void* display();  // Display*, opened on first use
    void loadKeymap();
    bool findInKeymap(unsigned long keysym, KeyPosition* position) const;
    // Puts every keysym of the batch that has no key on a spare keycode.
    void mapBatch(const QVector<unsigned long>& keysyms);
    void pressKey(const KeyPosition& position);
    void restoreSpares();
    // Returns once the focused client has read every event sent before the call; after a change
    // of the map, once it has read that too.
    void waitForClient(bool afterChange = false);
    // The focused top-level window if it answers _NET_WM_PING, else 0.
    unsigned long pingableFocus();

    // The caret search on a thread of its own, started on first use.
    std::unique_ptr<CaretTracker> mCaret;
    void* mDisplay = nullptr;
    bool mOpenTried = false;
    int mMinKeycode = 0;
    int mMaxKeycode = 0;
    int mKeysymsPerKeycode = 0;
    QVector<unsigned long> mKeymap;       // the server's map as last read, our changes applied
    QList<int> mSpareKeycodes;            // keycodes free for our use, least recently used first
    QHash<unsigned long, int> mSpareFor;  // keysym -> the spare keycode it is on
    QSet<int> mUnconfirmed;               // keycodes pressed since the client last caught up
    QSet<unsigned long> mSilentClients;   // windows that let a ping time out
    long mPingSerial = 0;
    QElapsedTimer mSinceKey;  // since the last key went out
    int mRemapCount = 0;
    int mClientWaitCount = 0;
    InputMethodSwitch mInputMethod;
};
