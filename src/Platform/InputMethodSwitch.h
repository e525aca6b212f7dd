#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QTimer>

// Keeps an input method from catching typed text. In a composing mode (Pinyin) the letters we
// type would go into its composition instead of the field, so it is switched off while text is
// typed and back on a little after the last typing: keys still travel from the client to the
// input method for a while after they are sent, and dictation types piece after piece, so the
// input method stays off across a whole dictation.
//
// fcitx5 is reached on the session bus (org.fcitx.Fcitx5, never started on demand) and switched
// for the focused field. ibus is reached on its own bus (IBUS_ADDRESS, or the address file it
// writes per display) and its global engine is set to the US keyboard engine, only when the
// composing engine types on the US layout too: another engine would change the keyboard layout.
// Typing waits until ibus has the new engine running: keys sent during a switch get mixed up.
// Without either nothing happens. Main thread only.
//
// With a typing engine set (setIbusTypingEngine), ibus is switched to that engine instead, whatever
// the user's engine is: the IBus typing backend types through an engine of its own.
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
    // At quit: switches it back on now, after what is left of the delay.
    void finish();
    bool isSuspended() const { return mFcitxSuspended || mIbusSwitched; }
    // The engine ibus runs while text is typed; empty: the US keyboard, for composing engines only.
    void setIbusTypingEngine(const QString& engine) { mIbusTypingEngine = engine; }

    // The connection to the ibus-daemon of this session (IBUS_ADDRESS, or the address file it
    // writes per display); not connected when there is none.
    static QDBusConnection ibusBus();

public slots:
    void restore();

private:
    void suspendFcitx();
    void suspendIbus();

    bool mFcitxSuspended = false;
    bool mIbusSwitched = false;
    QString mIbusEngine;  // the engine to give back, while ibus is switched; empty if it had none
    QString mIbusTypingEngine;
    QTimer mRestoreTimer;
};
