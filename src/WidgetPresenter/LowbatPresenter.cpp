#include "WidgetPresenter/LowbatPresenter.h"

#include "WidgetPresenter/LowBatView.h"

#include <QTimer>

LowbatPresenter::LowbatPresenter(LowBatView* view, QObject* parent) : QObject(parent), mView(view)
{
    initData();
}

void LowbatPresenter::initData()
{
    mTimerLowbat = new QTimer(this);
    mTimerLowbat->setInterval(kFrameMs);
    connect(mTimerLowbat, &QTimer::timeout, this, &LowbatPresenter::onLowbatAnimation);
    mTimerMinLowbat = new QTimer(this);
    mTimerMinLowbat->setInterval(kFrameMs);
    connect(mTimerMinLowbat, &QTimer::timeout, this, &LowbatPresenter::onMinLowbatAnimation);
}

namespace {

void startAnimation(QTimer* timer, int* frame)
{
    *frame = 0;
    if (!timer->isActive()) {
        timer->start();
    }
}

void stopAnimation(QTimer* timer, int* frame)
{
    *frame = 0;
    if (timer->isActive()) {
        timer->stop();
    }
}

// Frame 0 is never shown: the count runs 1 to last and round again.
int nextFrame(int* frame, int last)
{
    *frame += 1;
    if (*frame > last) {
        *frame = 1;
    }
    return *frame;
}

}  // namespace

void LowbatPresenter::startLowbatAnimation()
{
    startAnimation(mTimerLowbat, &mLowbatFrame);
}

void LowbatPresenter::stopLowbatAnimation()
{
    stopAnimation(mTimerLowbat, &mLowbatFrame);
}

void LowbatPresenter::startMinLowbatAnimation()
{
    startAnimation(mTimerMinLowbat, &mMinLowbatFrame);
}

void LowbatPresenter::stopMinLowbatAnimation()
{
    stopAnimation(mTimerMinLowbat, &mMinLowbatFrame);
}

void LowbatPresenter::onLowbatAnimation()
{
    mView->setLowbatAnimationImage(nextFrame(&mLowbatFrame, kLowbatFrames));
}

void LowbatPresenter::onMinLowbatAnimation()
{
    mView->setMinLowbatAnimationImage(nextFrame(&mMinLowbatFrame, kMinLowbatFrames));
}
