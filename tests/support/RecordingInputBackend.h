#pragma once

#include "Platform/InputBackend.h"

#include <QStringList>

// Keeps every key event and every typed text in one ordered log, for tests of what the
// application sends to the desktop; the answers about the desktop are set by the test.
class RecordingInputBackend : public InputBackend {
public:
    // "down Control_L", "up a", "text 你好", "desktop"
    QStringList log;

    QRect screen = QRect(0, 0, 1920, 1080);
    QString windowClass;
    unsigned long window = 1;
    QPoint caret;

    void sendKey(unsigned long keysym, bool down) override;
    void typeText(const QString& text) override;
    void toggleShowingDesktop() override;
    QRect screenGeometry() override { return screen; }
    QString activeWindowClass() override { return windowClass; }
    unsigned long focusedWindow() override { return window; }
    QPoint caretPosition() override { return caret; }

    // Everything typed, joined, with each backspace taking one character back: what a text
    // box would now hold if it had been empty.
    QString typedText() const;
    QStringList takeLog();
};
