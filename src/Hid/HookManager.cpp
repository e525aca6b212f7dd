#include "Hid/HookManager.h"

#include "Platform/X11PointerObserver.h"

#include <QTimer>

#include <cstdlib>

HookManager::HookManager(QObject* parent) : QObject(parent)
{
    mKeyTimer = new QTimer(this);
    mKeyTimer->setInterval(ClickClassifier::kTickMs);
    connect(mKeyTimer, &QTimer::timeout, this, &HookManager::onKeyCheck, Qt::QueuedConnection);
}

void HookManager::startHook()
{
    startMouseHook();
    startKeyboardHook();
}

void HookManager::stopHook()
{
    stopMouseHook();
    stopKeyboardHook();
}

void HookManager::startMouseHook()
{
    if (mObserver == nullptr) {
        mObserver = new X11PointerObserver(this);
        connect(mObserver, &X11PointerObserver::signalButton, this, &HookManager::OnMouseEvent);
    }
    mObserver->start();
}

void HookManager::startKeyboardHook()
{
    // Keystrokes are not watched: nothing in the application needs them.
}

void HookManager::stopMouseHook()
{
    if (mObserver != nullptr) {
        mObserver->stop();
    }
}

void HookManager::stopKeyboardHook() {}

void HookManager::OnMouseEvent(int type, qint64 x, qint64 y)
{
    switch (type) {
        case LeftMouseDown:
            emit signalMouseEvent(1, 1);
            mSelection = true;
            mPressX = x;
            mPressY = y;
            buildClickType(1, 1);
            break;
        case LeftMouseUp: {
            emit signalMouseEvent(1, 0);
            const qint64 dx = std::llabs(x - mPressX);
            const qint64 dy = std::llabs(y - mPressY);
            if (dx > kSelectionDragPixels || dy > kSelectionDragPixels) {
                emit signalPaddleWords(1);
                mSelection = true;
            } else {
                emit signalPaddleWords(0);
                mSelection = false;
            }
            buildClickType(1, 0);
            break;
        }
        case RightMouseDown:
            emit signalMouseEvent(2, 1);
            buildClickType(2, 1);
            break;
        case RightMouseUp:
            emit signalMouseEvent(2, 0);
            buildClickType(2, 0);
            break;
        default:
            break;
    }
}

void HookManager::buildClickType(int key, int status)
{
    // A double click whose last release ended a text selection ends quietly.
    emitClickResults(this, mClassifier.buildClickType(key, status, !mSelection));
    if (status != 0 && !mKeyTimer->isActive()) {
        mKeyTimer->start();
    }
}

void HookManager::onKeyCheck()
{
    emitClickResults(this, mClassifier.onKeyCheck());
    if (mClassifier.isIdle()) {
        mKeyTimer->stop();
    }
}

bool HookManager::isKeyTimerActive() const
{
    return mKeyTimer->isActive();
}
