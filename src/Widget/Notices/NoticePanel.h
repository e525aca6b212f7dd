#pragma once

#include <QDialog>
#include <QPointer>

class QFrame;
class QPropertyAnimation;
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
    bool isMoving() const { return !mAnimation.isNull(); }

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

    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    // Moves the top edge until the panel is `height` tall; the bottom edge stays.
    void animateTo(int height, bool hideAtEnd);
    void stopAnimation();

    QFrame* mFrame;
    QPushButton* mClose;
    QTimer* mTimerAutoHide;
    QPointer<QPropertyAnimation> mAnimation;
    int mOutsideCount = 0;
    bool mTranslucent;
};
