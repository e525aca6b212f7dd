// Battery notices: which report reaches the user, how often, and when the battery counts as
// recovered.
#include "WidgetPresenter/BackendLadder.h"
#include "WidgetPresenter/MainWindowPresenter.h"
#include "WidgetPresenter/MainWindowView.h"

#include <QTimer>

namespace {

void stopIfActive(QTimer* timer)
{
    if (timer->isActive()) {
        timer->stop();
    }
}

}  // namespace

void MainWindowPresenter::onDeviceLowbat()
{
    BatteryState& b = mBattery;
    b.lowbatSeen = true;
    if (b.shutdown || b.minLowbatSeen || b.powerPlugged || b.lowbatNoLongerRemind) {
        return;
    }
    b.minLowbatNoLongerRemind = false;
    if (mTimers[TimerLowbatGate]->isActive()) {
        return;
    }
    stopIfActive(mTimers[TimerMinLowbatGate]);
    mView->showLowbatView(0);
    mTimers[TimerLowbatGate]->start();
    mView->setDeviceEnable(false);
    addErrorStatus(4);
    stopIfActive(mTimers[TimerLowbatBlink]);
}

void MainWindowPresenter::onDeviceMinLowbat()
{
    BatteryState& b = mBattery;
    b.minLowbatSeen = true;
    if (b.shutdown || b.powerPlugged || b.minLowbatNoLongerRemind) {
        return;
    }
    b.lowbatNoLongerRemind = false;
    if (mTimers[TimerMinLowbatGate]->isActive()) {
        return;
    }
    stopIfActive(mTimers[TimerLowbatGate]);
    mView->showLowbatView(1);
    mTimers[TimerMinLowbatGate]->start();
    mView->setDeviceEnable(false);
    removeErrorStatus(4);
    addErrorStatus(5);
    if (!mTimers[TimerLowbatBlink]->isActive()) {
        mTimers[TimerLowbatBlink]->start();
    }
}

void MainWindowPresenter::onDevicePowerPlusIn(bool plugged)
{
    BatteryState& b = mBattery;
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
    mView->showLowbatView(3);
    mView->setDeviceEnable(true);
    removeErrorStatus(4);
    removeErrorStatus(5);
    addErrorStatus(6);
    stopIfActive(mTimers[TimerLowbatBlink]);
}

void MainWindowPresenter::onMouseShutdown()
{
    BatteryState& b = mBattery;
    if (b.shutdown) {
        return;
    }
    b.shutdown = true;
    b.lowbatNoLongerRemind = false;
    b.minLowbatNoLongerRemind = false;
    stopIfActive(mTimers[TimerLowbatGate]);
    stopIfActive(mTimers[TimerMinLowbatGate]);
    removeErrorStatus(4);
    removeErrorStatus(5);
    mView->showLowbatView(2);
}

void MainWindowPresenter::batteryBackToNormal()
{
    removeErrorStatus(4);
    removeErrorStatus(5);
    addErrorStatus(mLadder->isOnline() ? 0 : 3);
    stopIfActive(mTimers[TimerLowbatGate]);
    stopIfActive(mTimers[TimerMinLowbatGate]);
}

void MainWindowPresenter::onDeviceBatteryValue(int value)
{
    if (mPowerHint) {
        const Device device = mDevice;
        mView->setZorvaneMessage(QStringLiteral("电量:%1; 音量:%2\nRID:%3\nDID:%4")
                                     .arg(value)
                                     .arg(mView->getCurVolume())
                                     .arg(device.remoteFlashID, device.dongleFlashID));
    }
    BatteryState& b = mBattery;
    if (value > 3600) {
        // A healthy battery.
        b.powerPlugged = false;
        b.lowbatSeen = false;
        b.minLowbatSeen = false;
        b.shutdown = false;
        batteryBackToNormal();
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
        batteryBackToNormal();
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

void MainWindowPresenter::recvLowbatSignalNoLongerRemind()
{
    mBattery.lowbatNoLongerRemind = true;
}

void MainWindowPresenter::recvMinLowbatSignalNoLongerRemind()
{
    mBattery.minLowbatNoLongerRemind = true;
}
