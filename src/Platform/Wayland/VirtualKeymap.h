#pragma once

#include <QByteArray>
#include <QHash>
#include <QVector>

// The keys of a virtual keyboard whose keymap this program writes: every key carries one
// keysym, so that any character is one key press, whatever the user's layout. Keys are handed
// out as characters need them and kept, so that text made of characters typed before needs no
// new keymap; when the table is full the least recently used keys are given new keysyms. Keys
// for keysyms named at construction are never given up (BackSpace: a correction must not wait
// for a keymap). Pure bookkeeping: the backend sends the keymap and the keys.
class VirtualKeymap {
public:
    // Keycodes 9..255 (evdev 1..247): X clients behind XWayland get no keycode above 255.
    static constexpr int kMaxKeys = 247;

    explicit VirtualKeymap(int capacity = kMaxKeys, const QVector<unsigned long>& kept = {});

    // The end of the longest run of keysyms from `from` that fits in the table at once (at most
    // `capacity` different keysyms, kept ones aside); at least from + 1 when from is inside the list.
    int runEnd(const QVector<unsigned long>& keysyms, int from) const;
    // Gives every keysym of the run a key and marks them all as just used, taking free keys
    // first, then the least recently used ones outside the run. The run must fit (runEnd).
    // True when a key changed its keysym or a key was added: the keymap must be sent again.
    bool place(const QVector<unsigned long>& keysyms);
    // The evdev code of the keysym's key, or -1.
    int keyFor(unsigned long keysym) const;
    int size() const { return mKeysyms.size(); }
    // The keymap in xkbcommon's text form: one single-level key per keysym, no other keys.
    QByteArray text() const;

private:
    int mCapacity;
    int mKept = 0;
    QVector<unsigned long> mKeysyms;  // index: evdev code - 1
    QVector<quint64> mLastUse;        // same index: the clock when last placed
    QHash<unsigned long, int> mIndexOf;
    quint64 mClock = 0;
};
