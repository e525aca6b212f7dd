#pragma once

#include "Platform/InputBackend.h"

#include <QHash>
#include <QList>
#include <QVector>

// Keystrokes and text for X11 through XTest. A character the keyboard map lacks is typed by
// putting its keysym on a spare keycode. The receiving client refreshes its copy of the
// keyboard map asynchronously, so a key sent right after a remap can be read with the old
// map and come out wrong or not at all. So the characters are taken in batches: every
// missing keysym of a batch is mapped at once, the client is given one settle pause, then
// the batch is typed at full speed; mappings are kept for reuse and put back only when the
// backend goes. A remap of keycodes the client may still be reading waits the pause first.
//
// Main thread only. Without an X server it does nothing and says so once.
class X11InputBackend : public InputBackend {
public:
    // The pause that lets clients pick up a changed keyboard map.
    static constexpr int kRemapSettleMs = 40;
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
    QString clipboardText() override;
    void setClipboardText(const QString& text) override;

    // The keysym that types a code point.
    static unsigned long keysymFor(uint codePoint);
    // Remaps made so far (for measurements).
    int remapCount() const { return mRemapCount; }

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

    void* mDisplay = nullptr;
    bool mOpenTried = false;
    int mMinKeycode = 0;
    int mMaxKeycode = 0;
    int mKeysymsPerKeycode = 0;
    QVector<unsigned long> mKeymap;       // the server's map as last read, our changes applied
    QList<int> mSpareKeycodes;            // keycodes free for our use, least recently used first
    QHash<unsigned long, int> mSpareFor;  // keysym -> the spare keycode it is on
    bool mTypedSinceRemap = false;        // keys went out since the last remap
    int mRemapCount = 0;
};
