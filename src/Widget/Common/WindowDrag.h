#pragma once

#include <QPoint>

class QMouseEvent;
class QWidget;

// Moves a frameless window by a drag on its body. The window manager's own move (snapping,
// monitor edges) is asked for once the pointer has moved with the button held, not on the
// press: a click shorter than the manager's reaction (a touchpad tap, a quick click) ended
// before its move began, and the window then followed the pointer until the next click.
// Where the manager cannot move windows, the window follows the pointer itself.
class WindowDrag {
public:
    // Each returns whether the event was the drag's.
    bool press(QWidget* window, const QMouseEvent* event);
    bool move(QWidget* window, const QMouseEvent* event);
    bool release(QWidget* window, const QMouseEvent* event);

private:
    bool mPressed = false;   // the button is down and the pointer has not gone far yet
    bool mDragging = false;  // the window follows the pointer by our hand
    QPoint mPressAt;         // global
    QPoint mWindowAt;
};
