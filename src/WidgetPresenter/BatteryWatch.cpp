#include "WidgetPresenter/BatteryWatch.h"

#include "Hid/DeviceManager.h"

#include <QTimer>

namespace {

void stopIfActive(QTimer* timer)
{
    if (timer->isActive()) {
        timer->stop();
    }
}

}  // namespace

BatteryWatch::BatteryWatch(DeviceManager* device, std::function<bool()> online, QObject* parent)
    : QObject(parent), mOnline(std::move(online))
{
    const int intervals[TimerCount] = {kLowbatGateMs, kMinLowbatGateMs, kLowbatBlinkMs};
    for (int id = 0; id < TimerCount; ++id) {
        mTimers[id] = new QTimer(this);
        mTimers[id]->setInterval(intervals[id]);
        mTimers[id]->setSingleShot(id != TimerLowbatBlink);
    }
    connect(mTimers[TimerLowbatBlink], &QTimer::timeout, this, [this] {
        mBlinkStep = mBlinkStep == 3 ? 0 : 3;
        emit blinkImage(mBlinkStep);
    });
    connect(device, &DeviceManager::signalLowbat, this, &BatteryWatch::onDeviceLowbat);
    connect(device, &DeviceManager::signalMinLowbat, this, &BatteryWatch::onDeviceMinLowbat);
    connect(device, &DeviceManager::signalDevicePowerPlugIn, this, &BatteryWatch::onDevicePowerPlusIn);
    connect(device, &DeviceManager::signalMouseShutdown, this, &BatteryWatch::onMouseShutdown);
    connect(device, &DeviceManager::signalBatteryValue, this, &BatteryWatch::onDeviceBatteryValue);
}

void BatteryWatch::stop()
{
    for (QTimer* timer : mTimers) {
        timer->stop();
    }
}

void BatteryWatch::onDeviceLowbat()
{
    State& b = mState;
    b.lowbatSeen = true;
    if (b.shutdown || b.minLowbatSeen || b.powerPlugged || b.lowbatNoLongerRemind) {
        return;
    }
    b.minLowbatNoLongerRemind = false;
    if (mTimers[TimerLowbatGate]->isActive()) {
        return;
    }
    stopIfActive(mTimers[TimerMinLowbatGate]);
    emit noticeShown(0);
    mTimers[TimerLowbatGate]->start();
    emit deviceEnabled(false);
    emit errorRaised(4);
    stopIfActive(mTimers[TimerLowbatBlink]);
}

void BatteryWatch::onDeviceMinLowbat()
{
    State& b = mState;
    b.minLowbatSeen = true;
    if (b.shutdown || b.powerPlugged || b.minLowbatNoLongerRemind) {
        return;
    }
    b.lowbatNoLongerRemind = false;
    if (mTimers[TimerMinLowbatGate]->isActive()) {
        return;
    }
    stopIfActive(mTimers[TimerLowbatGate]);
    emit noticeShown(1);
    mTimers[TimerMinLowbatGate]->start();
    emit deviceEnabled(false);
    emit errorCleared(4);
    emit errorRaised(5);
    if (!mTimers[TimerLowbatBlink]->isActive()) {
        mTimers[TimerLowbatBlink]->start();
    }
}

void BatteryWatch::onDevicePowerPlusIn(bool plugged)
{
    State& b = mState;
    b.powerPlugged = plugged;
    if (!b.lowbatSeen && !b.minLowbatSeen) {
        return;  // plugging in a healthy mouse shows nothing
    }
    if (!plugged) {
        return;
    }
    b.lowbatSeen = false;
    b.minLowbatSeen = false;
    b.shutdown = false;
    emit noticeShown(3);
    emit deviceEnabled(true);
    emit errorCleared(4);
    emit errorCleared(5);
    emit errorRaised(6);
    stopIfActive(mTimers[TimerLowbatBlink]);
}

void BatteryWatch::onMouseShutdown()
{
    State& b = mState;
    if (b.shutdown) {
        return;
    }
    b.shutdown = true;
    b.lowbatNoLongerRemind = false;
    b.minLowbatNoLongerRemind = false;
    stopIfActive(mTimers[TimerLowbatGate]);
    stopIfActive(mTimers[TimerMinLowbatGate]);
    emit errorCleared(4);
    emit errorCleared(5);
    emit noticeShown(2);
}

void BatteryWatch::backToNormal()
{
    emit errorCleared(4);
    emit errorCleared(5);
    emit errorRaised(!mOnline || mOnline() ? 0 : 3);
    stopIfActive(mTimers[TimerLowbatGate]);
    stopIfActive(mTimers[TimerMinLowbatGate]);
}

void BatteryWatch::onDeviceBatteryValue(int value)
{
    State& b = mState;
    if (value > 3600) {
        // A healthy battery.
        b.powerPlugged = false;
        b.lowbatSeen = false;
        b.minLowbatSeen = false;
        b.shutdown = false;
        backToNormal();
        stopIfActive(mTimers[TimerLowbatBlink]);
        return;
    }
    if (value >= 3151) {
        if (b.minLowbatSeen) {
            b.minLowbatSeen = false;
            b.lowbatSeen = false;
        }
        b.shutdown = false;
    } else if (value >= 3001) {
        if (b.shutdown) {
            b.shutdown = false;
            b.minLowbatSeen = false;
        }
    }
    if ((b.lowbatSeen || b.minLowbatSeen) && !b.recoveryWatch) {
        b.recoveryWatch = true;
        b.watchBase = value;
    }
    if (b.recoveryWatch && value >= b.watchBase + 200) {
        // Rising by 200 means charging, whether or not a plug report came.
        b.recoveryWatch = false;
        b.lastValue = value;
        b.reportCount = 0;
        b.lowbatSeen = false;
        b.minLowbatSeen = false;
        b.shutdown = false;
        b.powerPlugged = true;
        backToNormal();
    }
    if (b.powerPlugged) {
        ++b.reportCount;
        if (b.reportCount == 6) {
            // A figure that fell over six reports takes the plugged state back.
            if (b.lastValue > value) {
                b.powerPlugged = false;
            } else {
                b.lastValue = value;
            }
            b.reportCount = 0;
        }
    }
}

void BatteryWatch::recvLowbatSignalNoLongerRemind()
{
    mState.lowbatNoLongerRemind = true;
}

void BatteryWatch::recvMinLowbatSignalNoLongerRemind()
{
    mState.minLowbatNoLongerRemind = true;
}
