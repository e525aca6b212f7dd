#pragma once

#include <QPoint>
#include <QRect>
#include <QString>

// What WinUtils needs of the desktop: key events by X keysym, typed Unicode text, and a few
// facts about the screen. The X11 backend ships; tests record with their own.
class InputBackend {
public:
    virtual ~InputBackend() = default;

    // One key going down or up.
    virtual void sendKey(unsigned long keysym, bool down) = 0;
    // Types the text into the focused window, whatever its characters.
    virtual void typeText(const QString& text) = 0;
    // Shows the desktop, or the windows again.
    virtual void toggleShowingDesktop() = 0;

    virtual QRect screenGeometry() = 0;
    // The class of the active window's WM_CLASS, or empty.
    virtual QString activeWindowClass() = 0;
    // Which window has the keyboard focus, as a number that differs between windows; 0 when
    // unknown.
    virtual unsigned long focusedWindow() = 0;
    // The caret in global coordinates, or (0, 0) when unknown.
    virtual QPoint caretPosition() = 0;
    // Key presses made on the desktop since the backend started that it did not send itself:
    // the user's. 0 where they cannot be seen.
    virtual quint64 foreignKeyPresses() { return 0; }
    // At quit: gives back what typing changed on the desktop and stops its threads. Nothing is
    // typed afterwards. Safe to call twice.
    virtual void shutDown() {}
};
