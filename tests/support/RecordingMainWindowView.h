#pragma once

#include "CallRecorder.h"
#include "WidgetPresenter/MainWindowView.h"

// The console window as a record of calls ("setDeviceRadioLevel0Checked(true)"). Questions
// answer what the test set in answers, else false, 0 or empty; selectedCustomTableItems takes
// a QList<int> answer. A command word shows as "row,keyword|target", a phrase as
// "content|link".
class RecordingMainWindowView : public MainWindowView, public CallRecorder {
public:
    ANSWERS(bool, isShow, false, toBool);
    RECORDS_ARG(recvMenuSiganl, int);
    RECORDS_ARG(setCheckVoiceTranslateOnOffChecked, bool);
    RECORDS_ARG(setCheckTextTranslateOnOffChecked, bool);
    RECORDS_ARG(setCheckAutoRunOnOffChecked, bool);
    RECORDS_ARG(setCheckAutoRunStatusChecked, bool);
    RECORDS_ARG(setComboDictationLanguageCurrentIndex, int);
    RECORDS_ARG(setComboVoiceTranslateSrcLanguageCurrentIndex, int);
    RECORDS_ARG(setComboVoiceTranslateTarLanguageCurrentIndex, int);
    RECORDS_ARG(setComboTextTranslateLanguageCurrentIndex, int);
    RECORDS_ARG(setCheckCalendarPhrasesOnOffChecked, bool);
    RECORDS_ARG(setCheckUpdateHintOnOffChecked, bool);
    RECORDS_ARG(setCheckUpdateHintStatusChecked, bool);
    RECORDS_ARG(setCheckLightingEffectOnOffEnabled, bool);
    RECORDS_ARG(setCheckLightingEffectOnOffChecked, bool);
    RECORDS_ARG(setCheckLightingEffectStatusChecked, bool);
    RECORDS_ARG(setCheckShakeOnOffEnabled, bool);
    RECORDS_ARG(setCheckShakeOnOffChecked, bool);
    RECORDS_ARG(setCheckShakeStatusChecked, bool);
    RECORDS_ARG(setCheckSoundEffectOnOffEnabled, bool);
    RECORDS_ARG(setCheckSoundEffectOnOffChecked, bool);
    RECORDS_ARG(setCheckSoundEffectStatusChecked, bool);
    RECORDS_ARG(setCheckLowbatOnOffChecked, bool);
    RECORDS_ARG(setCheckLowbatStatusChecked, bool);
    RECORDS_ARG(setDeviceRadioLevel0Checked, bool);
    RECORDS_ARG(setDeviceRadioLevel1Checked, bool);
    RECORDS_ARG(setDeviceRadioLevel2Checked, bool);
    RECORDS_ARG(setDeviceRadioLevel3Checked, bool);
    RECORDS(showMouseSettingsUnknown);
    RECORDS_ARG(setDeviceSettingsEnabled, bool);
    RECORDS(clearCustomTableContents);
    RECORDS_ARG(setCustomTableRowCount, int);
    RECORDS(scrollCustomTableToBottom);
    QList<int> selectedCustomTableItems() override
    {
        record(QStringLiteral("selectedCustomTableItems"));
        return answers.value(QStringLiteral("selectedCustomTableItems")).value<QList<int>>();
    }
    ANSWERS(int, getCurrentCustomTableIndex, 0, toInt);
    ANSWERS(int, getCustomTableRowCounts, 0, toInt);
    ANSWERS(int, getWidth, 0, toInt);
    RECORDS(toShow);
    RECORDS(activateWindow);
    ANSWERS(int, getCommandViewPosX, 0, toInt);
    ANSWERS(int, getCommandViewPosY, 0, toInt);
    void setQTableWidgetItemIcon(int row, CommandWord word) override
    {
        record(QStringLiteral("setQTableWidgetItemIcon"), row,
               QString(word.keyword + QLatin1Char('|') + word.target));
    }
    RECORDS(showUpdateView);
    ANSWERS(int, execDelPopupView, 0, toInt);
    void onKeyEvent(int key, int status) override { record(QStringLiteral("onKeyEvent"), key, status); }
    RECORDS_ARG(setHomeImage, QString);
    RECORDS(setDefaultHomeImage);
    RECORDS_ARG(setExplain, bool);
    RECORDS_ARG(setExplainImage, QString);
    RECORDS_ARG(setNavImage, QString);
    RECORDS_ARG(setDeviceEnable, bool);
    RECORDS_ARG(setDeviceTypeIcon, int);
    RECORDS_ARG(setChargeUpTrayAnimationImage, int);
    RECORDS_ARG(setSystemTrayStatus, QString);
    RECORDS_ARG(showLowbatView, int);
    void showCalendarPhrases(CalendarPhrases phrases) override
    {
        record(QStringLiteral("showCalendarPhrases"),
               QString(phrases.content + QLatin1Char('|') + phrases.link));
    }
    RECORDS_ARG(updateSystemTray, int);
    RECORDS_ARG(setZorvaneMessage, QString);
    RECORDS_ARG(setDeviceName, QString);
    RECORDS(showRestDialog);
    RECORDS_ARG(setComboRestTime, int);
    RECORDS_ARG(setVipFunction, bool);
    RECORDS_ARG(setCpiValue, int);
    RECORDS_ARG(showLamplightModule, int);
    RECORDS_ARG(setUpdateView, int);
    RECORDS_ARG(setDiscoverNewestVersionInfo, QString);
    RECORDS_ARG(setSignalClickModeEnable, bool);
    ANSWERS(int, getCurVolume, 0, toInt);
    ANSWERS(int, getCurrentStackedWidgetIndex, 0, toInt);
    RECORDS_ARG(setAddCommandContent, QString);
    RECORDS_ARG(setEditCommandContent, QString);
    ANSWERS(int, getAddCommmandCurrentType, 0, toInt);
    ANSWERS(int, getEditCommmandCurrentType, 0, toInt);
    ANSWERS(QString, getAddCommandCurrentCommand, QString(), toString);
    ANSWERS(QString, getEditCommandCurrentCommand, QString(), toString);
    ANSWERS(QString, getAddCommandCurrentContent, QString(), toString);
    ANSWERS(QString, getEditCommandCurrentContent, QString(), toString);
    RECORDS_ARG(setAddCommandWarningText, QString);
    RECORDS_ARG(setEditCommandWarningText, QString);
    RECORDS(closeWarningHint);
    RECORDS_ARG(setPreferenceSettingCheckBoxClick, bool);
    RECORDS_ARG(setPreferenceSettingRadioButtonClickSend, bool);
    RECORDS_ARG(setPreferenceSettingRadioButtonAutoSend, bool);
    RECORDS_ARG(setPreferenceSettingCheckBoxEnterKeySend, bool);
    RECORDS_ARG(setPreferenceSettingCheckBoxSpaceKeySend, bool);
    RECORDS_ARG(setPreferenceSettingCheckBoxDelAllSign, bool);
};
