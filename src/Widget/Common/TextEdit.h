#pragma once

#include <QPoint>
#include <QTextEdit>

// The text box of the panels. Return and space never reach the text: in a read-only box they
// mean "send", in an editable one Return ends the edit, so a box never holds a line break or
// a space typed by the user.
class TextEdit : public QTextEdit {
    Q_OBJECT

public:
    explicit TextEdit(QWidget* parent = nullptr);

signals:
    void signalEditFinish();
    void signalEditSpaceKey();
    void signalEditEnterKey();
    void signalEditMouseButtonRelease();
    void signalCursorMove(QPoint point);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
};
