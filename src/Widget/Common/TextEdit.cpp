#include "Widget/Common/TextEdit.h"

#include <QKeyEvent>
#include <QMouseEvent>

TextEdit::TextEdit(QWidget* parent) : QTextEdit(parent)
{
    installEventFilter(this);
}

bool TextEdit::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == this && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (isReadOnly()) {
                emit signalEditEnterKey();
            } else {
                emit signalEditFinish();
            }
            return true;
        }
        if (key == Qt::Key_Space) {
            emit signalEditSpaceKey();
            return true;
        }
    }
    return QTextEdit::eventFilter(watched, event);
}

void TextEdit::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    emit signalEditMouseButtonRelease();
    QTextEdit::mouseReleaseEvent(event);
}
