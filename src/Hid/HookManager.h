#pragma once

#include "Hid/ClickClassifier.h"
#include "Utils/Singleton.h"

#include <QObject>

class QTimer;
class X11PointerObserver;

// Clicks, double clicks and long presses of the ordinary mouse buttons (1 left, 2 right) of
// any pointer, and whether a left-button drag selected text. Fed by a listen-only observer of
// the whole session: it never takes an event away from anyone.
class HookManager : public QObject, public Singleton<HookManager> {
    Q_OBJECT

public:
    // The pointer event types, numbered as the pointer callbacks number them.
    enum MouseEventType { LeftMouseDown = 1, LeftMouseUp = 2, RightMouseDown = 3, RightMouseUp = 4 };
    // A drag longer than this on either axis selected text.
    static constexpr qint64 kSelectionDragPixels = 9;

    void startHook();
    void stopHook();
    void startMouseHook();
    void startKeyboardHook();
    void stopMouseHook();
    void stopKeyboardHook();

    // One pointer event at the given screen position; other types pass by.
    void OnMouseEvent(int type, qint64 x, qint64 y);
    void buildClickType(int key, int status);

    bool isKeyTimerActive() const;

signals:
    void signalMouseEvent(int key, int status);
    void signalKeyboardEvent(int key, int status);
    void signalShowTrayPowerValue();
    void signalClickListener(int key);
    void signalLongClickListener(int key, int status);
    void signalDoubleClickListener(int key, int status);
    void signalPaddleWords(int status);

public slots:
    void onKeyCheck();

private:
    friend class Singleton<HookManager>;
    explicit HookManager(QObject* parent = nullptr);

    ClickClassifier mClassifier;
    bool mSelection = false;
    qint64 mPressX = 0;
    qint64 mPressY = 0;
    // Ticks only while a button is in progress, so an idle session costs no wakeups.
    QTimer* mKeyTimer = nullptr;
    X11PointerObserver* mObserver = nullptr;
};
