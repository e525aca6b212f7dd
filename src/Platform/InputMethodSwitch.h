#pragma once

#include <QObject>
#include <QTimer>

// Keeps an input method from catching typed text. With fcitx5 in a composing mode (Pinyin), the
// letters we type would go into its composition instead of the field, so it is switched off for
// the focused field while text is typed and back on a little after the last typing: keys still
// travel from the client to the input method for a while after they are sent, and dictation
// types piece after piece, so the input method stays off across a whole dictation.
//
// fcitx5 is reached on the session bus (org.fcitx.Fcitx5, never started on demand); without it
// nothing happens. Main thread only.
class InputMethodSwitch : public QObject {
    Q_OBJECT

public:
    static constexpr int kRestoreDelayMs = 600;

    explicit InputMethodSwitch(QObject* parent = nullptr);
    ~InputMethodSwitch() override;

    // Before typing: switches the input method off if it is composing.
    void suspend();
    // After typing: switches it back on once no typing followed for a while.
    void scheduleRestore();
    bool isSuspended() const { return mSuspended; }

public slots:
    void restore();

private:
    bool mSuspended = false;
    QTimer mRestoreTimer;
};
