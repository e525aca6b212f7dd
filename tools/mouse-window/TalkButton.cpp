#include "TalkButton.h"

#include <QMouseEvent>

TalkButton::TalkButton(const QString& text, QWidget* parent) : QPushButton(text, parent)
{
    setFocusPolicy(Qt::NoFocus);
}

void TalkButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || mHeld) {
        event->ignore();
        return;
    }
    mHeld = true;
    setDown(true);
    emit signalHeld(true);
}

void TalkButton::mouseMoveEvent(QMouseEvent* event)
{
    event->accept();
}

void TalkButton::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !mHeld) {
        event->ignore();
        return;
    }
    mHeld = false;
    setDown(false);
    emit signalHeld(false);
}
