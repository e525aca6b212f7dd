#pragma once

#include <QPushButton>

// A button held like the mouse's voice key: down from the press until the release, wherever
// the pointer goes in between (a plain button would let go when the pointer leaves it).
class TalkButton : public QPushButton {
    Q_OBJECT

public:
    explicit TalkButton(const QString& text, QWidget* parent = nullptr);

signals:
    void signalHeld(bool held);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool mHeld = false;
};
