#pragma once

#include "Utils/Singleton.h"
#include "WidgetPresenter/LowBatView.h"

#include <QDialog>
#include <QPointer>

class LowbatPresenter;
class QLabel;
class QPropertyAnimation;
class QPushButton;
class QStackedWidget;
class QTimer;
class QToolButton;

// The battery panel at the bottom right of the screen: low battery and critical battery with
// their moving pictures, shut down and charging. It goes by itself once the pointer has
// stayed away from it for 5 seconds, or at its cross; the "不再提醒" button on the first two
// pages silences that kind of report.
class LowbatDialog : public QDialog, public LowBatView, public Singleton<LowbatDialog> {
    Q_OBJECT
    friend class Singleton<LowbatDialog>;

public:
    enum Page { LowbatPage = 0, MinLowbatPage = 1, ShutdownPage = 2, ChargingPage = 3 };
    static constexpr int kAutoHideTickMs = 100;
    static constexpr int kAutoHideTicks = 50;
    static constexpr int kHideMs = 800;

    void setLowbatAnimationView();
    void setMinLowAnimationView();
    void setMouseShutdownView();
    void setMouseChargingView();
    void changeView(int index);

    bool IsHidden() override;
    void toShow() override;
    void setLowbatAnimationImage(int frame) override;
    void setMinLowbatAnimationImage(int frame) override;

    int currentPage() const;
    LowbatPresenter* presenter() const { return mPresenter; }
    QTimer* autoHideTimer() const { return mTimerAutoHide; }
    QPushButton* noLongerRemindButton() const { return mButton; }
    QToolButton* closeButton() const { return mClose; }
    QPixmap lowbatFrame() const;
    QPixmap minLowbatFrame() const;

signals:
    void signalLowbatNoLongerRemind();
    void signalMinLowbatNoLongerRemind();
    void signalLowbatViewAutoHide();
    void signalMinLowbatViewAutoHide();

public slots:
    void onAutoHideTick();
    void animationHide();

protected:
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    explicit LowbatDialog(QWidget* parent = nullptr);
    void setupUi();
    void onNoLongerRemind();

    QStackedWidget* mStack = nullptr;
    QList<QWidget*> mFrames;
    QLabel* mLowbatAnimation = nullptr;
    QLabel* mMinLowbatAnimation = nullptr;
    QPushButton* mButton = nullptr;
    QToolButton* mClose = nullptr;
    LowbatPresenter* mPresenter = nullptr;
    QTimer* mTimerAutoHide = nullptr;
    int mOutsideCount = 0;
    QPoint mDragPoint;
    bool mDragging = false;
    QPointer<QPropertyAnimation> mHiding;
};
