#include "Widget/LineEdit.h"

#include "Utils/KeyTable.h"

#include <QKeyEvent>

LineEdit::LineEdit(QWidget* parent) : QLineEdit(parent)
{
    // Keys, not composed text: an input method would swallow them.
    setAttribute(Qt::WA_InputMethodEnabled, false);
    mTimerClear.setSingleShot(true);
    mTimerClear.setInterval(kClearMs);
    connect(&mTimerClear, &QTimer::timeout, this, &LineEdit::onClearTimeout);
}

void LineEdit::setShortcutMode(bool on)
{
    mShortcutMode = on;
}

bool LineEdit::isShortcutMode() const
{
    return mShortcutMode;
}

QString LineEdit::getKeyName(int qtKey)
{
    return KeyTable::getKeyName(qtKey);
}

bool LineEdit::event(QEvent* event)
{
    // While capturing, every chord is the user's, the window's shortcuts (Ctrl+1, Esc) too.
    if (mShortcutMode && event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void LineEdit::keyPressEvent(QKeyEvent* event)
{
    if (!mShortcutMode) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    removeInvalidKey();
    mTimerClear.start();
    const int key = event->key();
    mKeyStates.insert(key, 1);
    if (!mKeys.contains(key)) {
        mKeys.append(key);
    }
    setText(KeyTable::displayName(mKeys));
}

void LineEdit::keyReleaseEvent(QKeyEvent* event)
{
    if (!mShortcutMode) {
        QWidget::keyReleaseEvent(event);
        return;
    }
    // A held key repeats as release-press pairs on X11; those releases are not the user's.
    if (event->isAutoRepeat()) {
        return;
    }
    // A key pressed before the box had the keyboard is no part of the chord; its release
    // alone would end an empty one and wipe the chord just shown.
    if (!mKeyStates.contains(event->key())) {
        return;
    }
    mKeyStates.insert(event->key(), 0);
    if (checkFinish()) {
        emit signalShortcut(mKeys);
        mKeyStates.clear();
        mKeys.clear();
    }
}

void LineEdit::removeInvalidKey()
{
    for (auto it = mKeyStates.begin(); it != mKeyStates.end();) {
        if (it.value() == 0) {
            mKeys.removeAll(it.key());
            it = mKeyStates.erase(it);
        } else {
            ++it;
        }
    }
}

bool LineEdit::checkFinish() const
{
    for (auto it = mKeyStates.constBegin(); it != mKeyStates.constEnd(); ++it) {
        if (it.value() != 0) {
            return false;
        }
    }
    return true;
}

void LineEdit::onClearTimeout()
{
    mKeyStates.clear();
    mKeys.clear();
    clear();
    mTimerClear.stop();
}
