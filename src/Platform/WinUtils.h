#pragma once

#include "Utils/Singleton.h"

#include <QPoint>
#include <QRect>
#include <QString>

#include <memory>

class ChineseConverter;
class InputBackend;

// The one place where the application acts on the rest of the desktop: keystrokes into the
// focused window, typed text, screen geometry, the foreground window and the caret. Key codes
// are the macOS virtual key codes that the key table and stored chords hold; Command is
// Control here. Main thread only.
class WinUtils : public Singleton<WinUtils> {
public:
    ~WinUtils();

    // Tests put a recording backend in; not owned. Null goes back to the desktop's.
    void setBackend(InputBackend* backend);
    InputBackend* backend() const;
    // At quit: the desktop's backend gives back the keymap and the input method; typing is off
    // afterwards.
    void shutDown();

    QRect getScreen();
    QPoint getPosition1();
    QPoint getPosition2();
    QPoint getPosition();
    QString getForegroundWindowName();
    unsigned long focusedWindow();
    // The user's key presses so far, as the backend sees them.
    quint64 foreignKeyPresses();

    // One key event of a stored code (its low 16 bits).
    void sendKeyboard(unsigned short key, bool down);
    void backDesktop();
    void backspace();
    void selectAll();
    void copyContent();
    void cutContent();
    void deleteFile();
    void sendInput(QString text);

    QString SimplifiedToTraditional(QString text);

private:
    friend class Singleton<WinUtils>;
    // The backend the session calls for.
    WinUtils();
    explicit WinUtils(std::unique_ptr<InputBackend> desktop);

    void chord(unsigned long modifier, unsigned long key);

    std::unique_ptr<InputBackend> mDesktop;
    InputBackend* mBackend = nullptr;
    std::unique_ptr<ChineseConverter> mConverter;
};
