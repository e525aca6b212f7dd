#pragma once

#include "Database/CommandWord.h"
#include "Http/BackendRecords.h"

#include <QList>
#include <QString>

// What the console presenter asks of the console window. The window is the one
// implementation; tests record the calls. Main thread only.
class MainWindowView {
public:
    virtual ~MainWindowView() = default;

    virtual bool isShow() = 0;
    virtual void recvMenuSiganl(int index) = 0;
    virtual void setCheckVoiceTranslateOnOffChecked(bool checked) = 0;
    virtual void setCheckTextTranslateOnOffChecked(bool checked) = 0;
    virtual void setCheckAutoRunOnOffChecked(bool checked) = 0;
    virtual void setCheckAutoRunStatusChecked(bool checked) = 0;
    virtual void setComboDictationLanguageCurrentIndex(int index) = 0;
    virtual void setComboVoiceTranslateSrcLanguageCurrentIndex(int index) = 0;
    virtual void setComboVoiceTranslateTarLanguageCurrentIndex(int index) = 0;
    virtual void setComboTextTranslateLanguageCurrentIndex(int index) = 0;
    virtual void setCheckCalendarPhrasesOnOffChecked(bool checked) = 0;
    virtual void setCheckUpdateHintOnOffChecked(bool checked) = 0;
    virtual void setCheckUpdateHintStatusChecked(bool checked) = 0;
    virtual void setCheckLightingEffectOnOffEnabled(bool enabled) = 0;
    virtual void setCheckLightingEffectOnOffChecked(bool checked) = 0;
    virtual void setCheckLightingEffectStatusChecked(bool checked) = 0;
    virtual void setCheckShakeOnOffEnabled(bool enabled) = 0;
    virtual void setCheckShakeOnOffChecked(bool checked) = 0;
    virtual void setCheckShakeStatusChecked(bool checked) = 0;
    virtual void setCheckSoundEffectOnOffEnabled(bool enabled) = 0;
    virtual void setCheckSoundEffectOnOffChecked(bool checked) = 0;
    virtual void setCheckSoundEffectStatusChecked(bool checked) = 0;
    virtual void setCheckLowbatOnOffChecked(bool checked) = 0;
    virtual void setCheckLowbatStatusChecked(bool checked) = 0;
    virtual void setDeviceRadioLevel0Checked(bool checked) = 0;
    virtual void setDeviceRadioLevel1Checked(bool checked) = 0;
    virtual void setDeviceRadioLevel2Checked(bool checked) = 0;
    virtual void setDeviceRadioLevel3Checked(bool checked) = 0;
    // No mouse to ask: speed and switches show no state and take no clicks.
    virtual void showMouseSettingsUnknown() = 0;
    // The speed row and the low-battery switch, which every mouse has, take clicks again.
    virtual void setDeviceSettingsEnabled(bool enabled) = 0;
    virtual void clearCustomTableContents() = 0;
    virtual void setCustomTableRowCount(int count) = 0;
    virtual void scrollCustomTableToBottom() = 0;
    // The table row of every selected cell, in selection order: a selected row gives three.
    virtual QList<int> selectedCustomTableItems() = 0;
    virtual int getCurrentCustomTableIndex() = 0;
    virtual int getCustomTableRowCounts() = 0;
    virtual int getWidth() = 0;
    virtual void toShow() = 0;
    virtual void activateWindow() = 0;
    virtual int getCommandViewPosX() = 0;
    virtual int getCommandViewPosY() = 0;
    virtual void setQTableWidgetItemIcon(int row, CommandWord word) = 0;
    virtual void showUpdateView() = 0;
    // 1 when the user confirmed the deletion.
    virtual int execDelPopupView() = 0;
    virtual void onKeyEvent(int key, int status) = 0;
    virtual void setHomeImage(QString path) = 0;
    virtual void setDefaultHomeImage() = 0;
    virtual void setExplain(bool enable) = 0;
    virtual void setExplainImage(QString path) = 0;
    virtual void setNavImage(QString path) = 0;
    virtual void setDeviceEnable(bool enable) = 0;
    virtual void setDeviceTypeIcon(int type) = 0;
    // No tray on this platform: the next three do nothing.
    virtual void setChargeUpTrayAnimationImage(int step) = 0;
    virtual void setSystemTrayStatus(QString text) = 0;
    virtual void showLowbatView(int page) = 0;
    virtual void showCalendarPhrases(CalendarPhrases phrases) = 0;
    virtual void updateSystemTray(int status) = 0;
    virtual void setZorvaneMessage(QString text) = 0;
    virtual void setDeviceName(QString name) = 0;
    virtual void showRestDialog() = 0;
    virtual void setComboRestTime(int index) = 0;
    virtual void setVipFunction(bool enable) = 0;
    virtual void setCpiValue(int value) = 0;
    virtual void showLamplightModule(int module) = 0;
    virtual void setUpdateView(int page) = 0;
    virtual void setDiscoverNewestVersionInfo(QString text) = 0;
    virtual void setSignalClickModeEnable(bool enable) = 0;
    virtual int getCurVolume() = 0;
    virtual int getCurrentStackedWidgetIndex() = 0;
    virtual void setAddCommandContent(QString text) = 0;
    virtual void setEditCommandContent(QString text) = 0;
    virtual int getAddCommmandCurrentType() = 0;
    virtual int getEditCommmandCurrentType() = 0;
    virtual QString getAddCommandCurrentCommand() = 0;
    virtual QString getEditCommandCurrentCommand() = 0;
    virtual QString getAddCommandCurrentContent() = 0;
    virtual QString getEditCommandCurrentContent() = 0;
    virtual void setAddCommandWarningText(QString text) = 0;
    virtual void setEditCommandWarningText(QString text) = 0;
    virtual void closeWarningHint() = 0;
    virtual void setPreferenceSettingCheckBoxClick(bool checked) = 0;
    virtual void setPreferenceSettingRadioButtonClickSend(bool checked) = 0;
    virtual void setPreferenceSettingRadioButtonAutoSend(bool checked) = 0;
    virtual void setPreferenceSettingCheckBoxEnterKeySend(bool checked) = 0;
    virtual void setPreferenceSettingCheckBoxSpaceKeySend(bool checked) = 0;
    virtual void setPreferenceSettingCheckBoxDelAllSign(bool checked) = 0;
};
