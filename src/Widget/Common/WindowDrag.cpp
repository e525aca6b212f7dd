#include "Widget/Common/WindowDrag.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

bool WindowDrag::press(QWidget* window, const QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        return false;
    }
    mPressed = true;
    mDragging = false;
    mPressAt = event->globalPos();
    mWindowAt = window->pos();
    return true;
}

bool WindowDrag::move(QWidget* window, const QMouseEvent* event)
{
    if (mDragging) {
        window->move(mWindowAt + event->globalPos() - mPressAt);
        return true;
    }
    if (!mPressed || !(event->buttons() & Qt::LeftButton)) {
        mPressed = false;
        return false;
    }
    if ((event->globalPos() - mPressAt).manhattanLength() < QApplication::startDragDistance()) {
        return true;
    }
    mPressed = false;
    if (window->windowHandle() != nullptr && window->windowHandle()->startSystemMove()) {
        return true;
    }
    mDragging = true;
    window->move(mWindowAt + event->globalPos() - mPressAt);
    return true;
}

bool WindowDrag::release(QWidget* window, const QMouseEvent* event)
{
    const bool ours = mPressed || mDragging;
    if (mDragging && event->button() == Qt::LeftButton) {
        window->move(mWindowAt + event->globalPos() - mPressAt);
    }
    mPressed = false;
    mDragging = false;
    return ours;
}
