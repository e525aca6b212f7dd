#include "Widget/Common/label.h"

#include <QEvent>
#include <QMouseEvent>

label::label(QWidget* parent) : QLabel(parent)
{
    installEventFilter(this);
}

bool label::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == this) {
        switch (event->type()) {
            case QEvent::Enter:
                emit signalsMouseEnter();
                return true;
            case QEvent::Leave:
                emit signalsMouseLeave();
                return true;
            case QEvent::MouseButtonRelease:
                emit signalsMouseRelease();
                return true;
            default:
                break;
        }
    }
    return QLabel::eventFilter(watched, event);
}

void label::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        emit signalsMousePress();
    }
    QLabel::mousePressEvent(event);
}
