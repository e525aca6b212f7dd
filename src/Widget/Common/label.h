#pragma once

#include <QLabel>

// A picture or text that acts like a button: the panels follow the pointer over it. Enter,
// leave and release are taken whole by the label; a left press comes through mousePressEvent.
class label : public QLabel {
    Q_OBJECT

public:
    explicit label(QWidget* parent = nullptr);

signals:
    void signalsMouseEnter();
    void signalsMouseLeave();
    void signalsMousePress();
    void signalsMouseRelease();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
};
