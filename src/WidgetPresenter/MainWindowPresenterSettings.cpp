// The device page: what the mouse reported and what the user wants of its speed, lamplight,
// shake, sound effect and low-battery report. Slots only move targets; the ladders send.
#include "Hid/DeviceManager.h"
#include "WidgetPresenter/MainWindowPresenter.h"
#include "WidgetPresenter/MainWindowView.h"

void MainWindowPresenter::checkDpiButton(int level)
{
    // Level 2 is the first button, 0 the second, 1 the third.
    switch (level) {
        case 2:
            mView->setDeviceRadioLevel0Checked(true);
            break;
        case 0:
            mView->setDeviceRadioLevel1Checked(true);
            break;
        case 1:
            mView->setDeviceRadioLevel2Checked(true);
            break;
        default:
            break;
    }
}

void MainWindowPresenter::onDeviceDpi(int level)
{
    const Lock lock(mStatusMutex);
    DeviceStatus& s = mDeviceStatus;
    s.dpiLevel.level000 = level;
    if (!s.dpiKnown) {
        s.dpiKnown = true;
        s.targetDpi = mUserPreferences.dpiValue < 3 ? mUserPreferences.dpiValue : 0;
        checkDpiButton(level);
    } else if (level == s.targetDpi) {
        checkDpiButton(level);
    }
}

void MainWindowPresenter::onDeviceCpi(int value)
{
    std::unique_lock<std::recursive_mutex> lock(mStatusMutex);
    bool persist = false;
    DeviceStatus& s = mDeviceStatus;
    s.dpiLevel.level000 = value;
    if (!s.dpiKnown) {
        s.dpiKnown = true;
        s.targetDpi = s.bestCpiValue;
        mView->setDeviceRadioLevel3Checked(true);
    } else if (value == s.targetDpi) {
        mView->setDeviceRadioLevel3Checked(true);
        mUserPreferences.dpiValue = value;
        persist = true;
    }
    lock.unlock();
    if (persist) {
        persistPreferences();
    }
}

void MainWindowPresenter::onChangeMouseDpiKey(int level)
{
    {
        const Lock lock(mStatusMutex);
        DeviceStatus& s = mDeviceStatus;
        s.dpiLevel.level000 = level;
        s.targetDpi = level;
        s.dpiKnown = true;
        checkDpiButton(level);
        mUserPreferences.dpiValue = level;
    }
    persistPreferences();
}

void MainWindowPresenter::selectDpi(int target)
{
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.targetDpi = target;
        mUserPreferences.dpiValue = target;
    }
    persistPreferences();
}

void MainWindowPresenter::onRadioSelectDpi0(bool checked)
{
    if (checked) {
        selectDpi(0);
    }
}

void MainWindowPresenter::onRadioSelectDpi1(bool checked)
{
    if (checked) {
        selectDpi(1);
    }
}

void MainWindowPresenter::onRadioSelectDpi2(bool checked)
{
    if (checked) {
        selectDpi(2);
    }
}

void MainWindowPresenter::onRadioSelectDpi3(bool checked)
{
    if (checked) {
        selectDpi(deviceStatus().bestCpiValue);
    }
}

void MainWindowPresenter::onDeviceDpiLevelValue(int v1, int v2, int v3)
{
    // The divisors are the nominal resolutions of the three levels.
    const float factor = (float(v1) / 1000.0f + float(v2) / 1200.0f + float(v3) / 1600.0f) / 3.0f;
    const int width = mScreenWidth();
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.levelValuesKnown = true;
        mDeviceStatus.bestCpiValue = int(float(width) / 1.2f * factor);
        mDeviceStatus.levelValuesShown = true;
    }
    mView->setCpiValue(cpiLabel(int(float(width) / 1.2f)));
    mView->setVipFunction(true);
}

void MainWindowPresenter::firstSettingReply(DeviceStatus::Setting& setting, bool enable,
                                            void (MainWindowView::*setOnOff)(bool),
                                            void (MainWindowView::*setStatus)(bool))
{
    setting.status = enable;
    if (!setting.known) {
        setting.target = enable;
        (mView->*setOnOff)(enable);
        (mView->*setStatus)(enable);
        setting.known = true;
    }
}

void MainWindowPresenter::onDeviceLowbatReport(bool enable)
{
    const Lock lock(mStatusMutex);
    firstSettingReply(mDeviceStatus.lowbatReport, enable, &MainWindowView::setCheckLowbatOnOffChecked,
                      &MainWindowView::setCheckLowbatStatusChecked);
}

void MainWindowPresenter::onDeviceShake(bool enable)
{
    const Lock lock(mStatusMutex);
    firstSettingReply(mDeviceStatus.shake, enable, &MainWindowView::setCheckShakeOnOffChecked,
                      &MainWindowView::setCheckShakeStatusChecked);
}

void MainWindowPresenter::onDeviceLamplight(int enable)
{
    const Lock lock(mStatusMutex);
    firstSettingReply(mDeviceStatus.lamplight, enable != 0,
                      &MainWindowView::setCheckLightingEffectOnOffChecked,
                      &MainWindowView::setCheckLightingEffectStatusChecked);
}

void MainWindowPresenter::onDeviceSoundEffect(bool enable)
{
    const Lock lock(mStatusMutex);
    firstSettingReply(mDeviceStatus.soundEffect, enable, &MainWindowView::setCheckSoundEffectOnOffChecked,
                      &MainWindowView::setCheckSoundEffectStatusChecked);
}

void MainWindowPresenter::onCheckLowbatReport(bool checked)
{
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.lowbatReport.target = checked;
    }
    mView->setCheckLowbatStatusChecked(checked);
    mDeviceManager->setLowbatReport(checked);
}

void MainWindowPresenter::onCheckShake(bool checked)
{
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.shake.target = checked;
    }
    mView->setCheckShakeStatusChecked(checked);
}

void MainWindowPresenter::onCheckLamplight(bool checked)
{
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.lamplight.target = checked;
    }
    mView->setCheckLightingEffectStatusChecked(checked);
}

void MainWindowPresenter::onCheckSoundEffect(bool checked)
{
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.soundEffect.target = checked;
    }
    mView->setCheckSoundEffectStatusChecked(checked);
}

void MainWindowPresenter::onShowTrayPowerValue()
{
    mPowerHint = !mPowerHint;
}

int MainWindowPresenter::cpiLabel(int value)
{
    // Each label is the best value of a common screen width.
    static const int kLabels[][2] = {{854, 853}, {1067, 1066}, {1139, 1138}, {1201, 1200}, {1334, 1333}};
    for (const auto& label : kLabels) {
        if (value < label[0]) {
            return label[1];
        }
    }
    return value <= 1400 ? 1400 : 0;
}
