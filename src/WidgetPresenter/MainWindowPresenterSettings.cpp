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
        mView->setDeviceSettingsEnabled(true);
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
        mView->setDeviceSettingsEnabled(true);
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
        // A switch the user flipped while the mouse had not yet said is what the user wants:
        // the ladder sends it, rather than the reply undoing the click.
        if (!setting.chosen) {
            setting.target = enable;
        }
        (mView->*setOnOff)(setting.target);
        (mView->*setStatus)(enable);
        setting.known = true;
    }
}

void MainWindowPresenter::chooseSetting(DeviceStatus::Setting& setting, bool checked,
                                        void (MainWindowView::*setOnOff)(bool),
                                        void (MainWindowView::*setStatus)(bool))
{
    {
        const Lock lock(mStatusMutex);
        setting.target = checked;
        setting.chosen = true;
    }
    // The switch leaves its unknown look for the user's choice.
    (mView->*setOnOff)(checked);
    (mView->*setStatus)(checked);
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
    chooseSetting(mDeviceStatus.lowbatReport, checked, &MainWindowView::setCheckLowbatOnOffChecked,
                  &MainWindowView::setCheckLowbatStatusChecked);
    mDeviceManager->setLowbatReport(checked);
}

void MainWindowPresenter::onCheckShake(bool checked)
{
    chooseSetting(mDeviceStatus.shake, checked, &MainWindowView::setCheckShakeOnOffChecked,
                  &MainWindowView::setCheckShakeStatusChecked);
}

void MainWindowPresenter::onCheckLamplight(bool checked)
{
    chooseSetting(mDeviceStatus.lamplight, checked, &MainWindowView::setCheckLightingEffectOnOffChecked,
                  &MainWindowView::setCheckLightingEffectStatusChecked);
}

void MainWindowPresenter::onCheckSoundEffect(bool checked)
{
    chooseSetting(mDeviceStatus.soundEffect, checked, &MainWindowView::setCheckSoundEffectOnOffChecked,
                  &MainWindowView::setCheckSoundEffectStatusChecked);
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
