#pragma once

#include <QDialog>

class QFrame;
class QPushButton;
class QTimer;

// A 384 x 384 panel that rises out of the bottom right corner of the screen, floats without
// taking the focus and sinks again once the pointer has stayed away from it for 5 seconds.
class NoticePanel : public QDialog {
    Q_OBJECT

public:
    static constexpr int kSize = 384;
    static constexpr int kAnimationMs = 800;
    static constexpr int kTickMs = 100;
    static constexpr int kOutsideTicks = 50;

    QTimer* autoHideTimer() const { return mTimerAutoHide; }

public slots:
    void animationShow();
    void animationHide();
    void onAutoHideTick();

protected:
    NoticePanel(int closeButtonSize, QWidget* parent);

    // Just below the bottom edge, at height 0, ready to rise.
    void placeAtBottomRight();
    QFrame* frame() const { return mFrame; }
    QPushButton* closeButton() const { return mClose; }

    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void animateTop(int delta, bool hideAtEnd);

    QFrame* mFrame;
    QPushButton* mClose;
    QTimer* mTimerAutoHide;
    int mOutsideCount = 0;
    bool mTranslucent;
};
