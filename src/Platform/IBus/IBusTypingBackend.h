#pragma once

#include "Platform/IBus/IBusEngineService.h"
#include "Platform/InputBackend.h"
#include "Platform/InputMethodSwitch.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QThread>
#include <QTimer>

#include <memory>

// Typing through ibus-daemon, for Wayland sessions whose compositor offers no virtual keyboard
// (GNOME): there the text reaches native Wayland windows only through the input method the
// desktop runs. We register an engine of our own with the user's daemon; while we type, ibus
// runs it for the focused field instead of the user's engine (Pinyin included), and it commits
// our text there whole: no keys, no keymap, no layout. The user's engine is given back a little
// after the last typing, as on X11 (InputMethodSwitch).
//
// Deleting (BackSpace) asks the field to delete the characters before its caret, in order with
// the text committed; BackSpaces in a row go as one request, or as BackSpace keys where the
// field's unit for it is not known for sure (IBusEngineService). GNOME Shell keeps only the last
// of the commits (or deletions) that reach it together, so each waits until the field has shown
// the one before (IBusEngineService); text after a deletion request goes at once, since the field
// applies a deletion first. A field that reports its text is waited for longer (kFieldTextMs:
// a busy one may take its time, and a change sent before it shows the last one is lost) than
// one that reports only its caret. A field that cannot delete on request (a terminal) gets the
// BackSpace key forwarded, as do other keys (Return, Ctrl+A, ...), carrying the modifiers held
// through sendKey. A client queues forwarded keys as input events but takes committed text at
// once, so text right after a forwarded key waits a moment: it would otherwise land before the
// key (Ctrl+A, then text).
//
// ibus-daemon may be started again under us (GNOME does once Xwayland is up, as does
// `ibus restart`): our engine goes with the old daemon, so typing first joins the daemon running
// now if our connection is gone.
//
// Like the virtual keyboard, it cannot tell which window has the focus, its class or its caret.
// Main thread only; the engines answer the daemon on a thread of their own.
class IBusTypingBackend : public InputBackend {
public:
    // The engine's name with ibus.
    static const QString kEngineName;
    // How long typing waits for the switch to our engine to reach the focused field.
    static constexpr int kFocusTimeoutMs = 2000;
    static constexpr int kForwardSettleMs = 40;
    static constexpr int kFieldReportMs = 100;
    static constexpr int kFieldTextMs = 1000;
    static constexpr int kChangeGapMs = 40;

    // Registers with the daemon of this session (InputMethodSwitch::ibusBus).
    IBusTypingBackend();
    ~IBusTypingBackend() override;
    IBusTypingBackend(const IBusTypingBackend&) = delete;
    IBusTypingBackend& operator=(const IBusTypingBackend&) = delete;

    bool isAvailable() const { return mService != nullptr && mUnavailable.isEmpty(); }
    QString unavailableReason() const { return mUnavailable; }

    void sendKey(unsigned long keysym, bool down) override;
    void typeText(const QString& text) override;
    void toggleShowingDesktop() override {}
    QRect screenGeometry() override;
    QString activeWindowClass() override { return QString(); }
    unsigned long focusedWindow() override { return 0; }
    QPoint caretPosition() override { return QPoint(0, 0); }
    // Gives the user's engine back and stops answering the daemon; typing stays off after it.
    void shutDown() override;

private:
    // Serves our engine on mBus and registers it with the daemon there.
    void join();
    void leave();
    // False if typing is off; joins the daemon running now if ours went away.
    bool joined();
    // Our engine on the focused field; false (and a warning) if it did not get there.
    bool activate();
    void settleForwardedKeys();
    // The deletions asked for so far, as one request.
    void flushDeletes();
    void deleteBeforeCaret(int characters);
    // Until the field has shown our changes sent so far.
    void waitForField();
    // Sends one change (a commit or a deletion) once the field can take it; textWaits: text
    // after it waits until the field shows it.
    template <typename Change>
    void change(bool textWaits, Change send);

    QDBusConnection mBus;
    QThread mThread;
    std::unique_ptr<IBusEngineService> mService;
    InputMethodSwitch mSwitch;
    QString mUnavailable;
    bool mShutDown = false;
    bool mServing = false;        // our objects are on the bus: only then are they taken off
    unsigned int mModifiers = 0;  // held through sendKey, in ibus's modifier bits
    QElapsedTimer mSinceForward;  // valid after a forwarded key
    QElapsedTimer mSinceChange;   // since our last change
    IBusEngineService::Reports mReportsBeforeChange;
    bool mUnshown = false;        // the field has not shown our last change yet
    bool mUnshownCommit = false;  // nor a change text waits for, among those since it showed one
    int mPendingDeletes = 0;
    QTimer mDeleteFlush;  // sends the deletions once the caller's run of BackSpaces is over
};
