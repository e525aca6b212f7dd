#pragma once

#include "Widget/Common/WindowDrag.h"

#include <QColor>
#include <QDialog>

#include <initializer_list>

class QHBoxLayout;

// A dialog without the window manager's frame that draws its own rounded card. With a
// compositor the corners are see-through; without one (plain X11, Xvfb) they would turn
// black, so the window is cut to the rounded shape instead.
class FramelessDialog : public QDialog {
    Q_OBJECT

public:
    static constexpr int kRadius = 10;

    explicit FramelessDialog(QWidget* parent = nullptr, Qt::WindowFlags extraFlags = {});

    // Moves this dialog so that its centre meets the centre of the given window (or of the
    // screen when there is none).
    void centreOver(const QWidget* window);

protected:
    // The whole body drags the window; the window manager moves it where it can.
    void setDraggable(bool draggable) { mDraggable = draggable; }
    void setCardColor(const QColor& color) { mCardColor = color; }
    // A heading with a close button at the right that closes the dialog like the window's own.
    QHBoxLayout* titleBar(const QString& text);
    // The buttons at the right end of a row, in the order given.
    static QHBoxLayout* buttonRow(std::initializer_list<QWidget*> buttons);

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool mTranslucent;
    bool mDraggable = false;
    WindowDrag mDrag;
    QColor mCardColor = Qt::white;
};
