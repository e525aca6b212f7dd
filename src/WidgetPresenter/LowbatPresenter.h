#pragma once

#include <QObject>

class LowBatView;
class QTimer;

// The frame animations of the battery panel: 153 frames for low battery, 109 for critical,
// one frame each 40 ms, numbered from 1.
class LowbatPresenter : public QObject {
    Q_OBJECT

public:
    static constexpr int kFrameMs = 40;
    static constexpr int kLowbatFrames = 153;
    static constexpr int kMinLowbatFrames = 109;

    explicit LowbatPresenter(LowBatView* view, QObject* parent = nullptr);

    void startLowbatAnimation();
    void stopLowbatAnimation();
    void startMinLowbatAnimation();
    void stopMinLowbatAnimation();

    QTimer* lowbatTimer() const { return mTimerLowbat; }
    QTimer* minLowbatTimer() const { return mTimerMinLowbat; }

public slots:
    void onLowbatAnimation();
    void onMinLowbatAnimation();

private:
    void initData();

    LowBatView* mView;
    QTimer* mTimerLowbat = nullptr;
    QTimer* mTimerMinLowbat = nullptr;
    int mLowbatFrame = 0;
    int mMinLowbatFrame = 0;
};
