#pragma once

#include <QtGlobal>

// Counts the key presses of the whole X11 session, from every keyboard, ours included (XTest),
// on a connection of its own. The typing backend takes the presses it sent itself away: what
// is left was pressed by someone else, such as the user's Enter right after speaking. Raw
// events reach every client from XInput 2.1 on, without taking the keys from anyone. Without
// the extension the count stays 0.
class X11KeyPresses {
public:
    X11KeyPresses();
    ~X11KeyPresses();
    X11KeyPresses(const X11KeyPresses&) = delete;
    X11KeyPresses& operator=(const X11KeyPresses&) = delete;

    bool isActive() const { return mDisplay != nullptr; }
    // Every press the server made up to this call (one round trip), since construction.
    quint64 count();

private:
    void* mDisplay = nullptr;  // Display*
    int mXiOpcode = 0;
    quint64 mCount = 0;
};
