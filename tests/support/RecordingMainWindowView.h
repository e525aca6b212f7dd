#pragma once

#include "CallRecorder.h"
#include "WidgetPresenter/MainWindowView.h"

// The console window as a record of calls ("setDeviceRadioLevel0Checked(true)"). Questions
// answer what the test set in answers, else false, 0 or empty; selectedCustomTableItems takes
// a QList<int> answer. A command word shows as "row,keyword|target", a phrase as
// "content|link".
class RecordingMainWindowView : public MainWindowView, public CallRecorder {
public:
    bool isShow() override { return ask(QStringLiteral("isShow"), false).toBool(); }
    void recvMenuSiganl(int index) override { record(QStringLiteral("recvMenuSiganl"), index); }
    void setCheckVoiceTranslateOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckVoiceTranslateOnOffChecked"), checked);
    }
    void setCheckTextTranslateOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckTextTranslateOnOffChecked"), checked);
    }
    void setCheckAutoRunOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckAutoRunOnOffChecked"), checked);
    }
    void setCheckAutoRunStatusChecked(bool checked) override
    {
        record(QStringLiteral("setCheckAutoRunStatusChecked"), checked);
    }
    void setComboDictationLanguageCurrentIndex(int index) override
    {
        record(QStringLiteral("setComboDictationLanguageCurrentIndex"), index);
    }
    void setComboVoiceTranslateSrcLanguageCurrentIndex(int index) override
    {
        record(QStringLiteral("setComboVoiceTranslateSrcLanguageCurrentIndex"), index);
    }
    void setComboVoiceTranslateTarLanguageCurrentIndex(int index) override
    {
        record(QStringLiteral("setComboVoiceTranslateTarLanguageCurrentIndex"), index);
    }
    void setComboTextTranslateLanguageCurrentIndex(int index) override
    {
        record(QStringLiteral("setComboTextTranslateLanguageCurrentIndex"), index);
    }
    void setCheckCalendarPhrasesOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckCalendarPhrasesOnOffChecked"), checked);
    }
    void setCheckUpdateHintOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckUpdateHintOnOffChecked"), checked);
    }
    void setCheckUpdateHintStatusChecked(bool checked) override
    {
        record(QStringLiteral("setCheckUpdateHintStatusChecked"), checked);
    }
    void setCheckLightingEffectOnOffEnabled(bool enabled) override
    {
        record(QStringLiteral("setCheckLightingEffectOnOffEnabled"), enabled);
    }
    void setCheckLightingEffectOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckLightingEffectOnOffChecked"), checked);
    }
    void setCheckLightingEffectStatusChecked(bool checked) override
    {
        record(QStringLiteral("setCheckLightingEffectStatusChecked"), checked);
    }
    void setCheckShakeOnOffEnabled(bool enabled) override
    {
        record(QStringLiteral("setCheckShakeOnOffEnabled"), enabled);
    }
    void setCheckShakeOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckShakeOnOffChecked"), checked);
    }
    void setCheckShakeStatusChecked(bool checked) override
    {
        record(QStringLiteral("setCheckShakeStatusChecked"), checked);
    }
    void setCheckSoundEffectOnOffEnabled(bool enabled) override
    {
        record(QStringLiteral("setCheckSoundEffectOnOffEnabled"), enabled);
    }
    void setCheckSoundEffectOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckSoundEffectOnOffChecked"), checked);
    }
    void setCheckSoundEffectStatusChecked(bool checked) override
    {
        record(QStringLiteral("setCheckSoundEffectStatusChecked"), checked);
    }
    void setCheckLowbatOnOffChecked(bool checked) override
    {
        record(QStringLiteral("setCheckLowbatOnOffChecked"), checked);
    }
    void setCheckLowbatStatusChecked(bool checked) override
    {
        record(QStringLiteral("setCheckLowbatStatusChecked"), checked);
    }
    void setDeviceRadioLevel0Checked(bool checked) override
    {
        record(QStringLiteral("setDeviceRadioLevel0Checked"), checked);
    }
    void setDeviceRadioLevel1Checked(bool checked) override
    {
        record(QStringLiteral("setDeviceRadioLevel1Checked"), checked);
    }
    void setDeviceRadioLevel2Checked(bool checked) override
    {
        record(QStringLiteral("setDeviceRadioLevel2Checked"), checked);
    }
    void setDeviceRadioLevel3Checked(bool checked) override
    {
        record(QStringLiteral("setDeviceRadioLevel3Checked"), checked);
    }
    void clearCustomTableContents() override { record(QStringLiteral("clearCustomTableContents")); }
    void setCustomTableRowCount(int count) override
    {
        record(QStringLiteral("setCustomTableRowCount"), count);
    }
    void scrollCustomTableToBottom() override { record(QStringLiteral("scrollCustomTableToBottom")); }
    QList<int> selectedCustomTableItems() override
    {
        record(QStringLiteral("selectedCustomTableItems"));
        return answers.value(QStringLiteral("selectedCustomTableItems")).value<QList<int>>();
    }
    int getCurrentCustomTableIndex() override
    {
        return ask(QStringLiteral("getCurrentCustomTableIndex"), 0).toInt();
    }
    int getCustomTableRowCounts() override
    {
        return ask(QStringLiteral("getCustomTableRowCounts"), 0).toInt();
    }
    int getWidth() override { return ask(QStringLiteral("getWidth"), 0).toInt(); }
    void toShow() override { record(QStringLiteral("toShow")); }
    void activateWindow() override { record(QStringLiteral("activateWindow")); }
    int getCommandViewPosX() override { return ask(QStringLiteral("getCommandViewPosX"), 0).toInt(); }
    int getCommandViewPosY() override { return ask(QStringLiteral("getCommandViewPosY"), 0).toInt(); }
    void setQTableWidgetItemIcon(int row, CommandWord word) override
    {
        record(QStringLiteral("setQTableWidgetItemIcon"), row,
               QString(word.keyword + QLatin1Char('|') + word.target));
    }
    void showUpdateView() override { record(QStringLiteral("showUpdateView")); }
    int execDelPopupView() override { return ask(QStringLiteral("execDelPopupView"), 0).toInt(); }
    void onKeyEvent(int key, int status) override { record(QStringLiteral("onKeyEvent"), key, status); }
    void setHomeImage(QString path) override { record(QStringLiteral("setHomeImage"), path); }
    void setDefaultHomeImage() override { record(QStringLiteral("setDefaultHomeImage")); }
    void setExplain(bool enable) override { record(QStringLiteral("setExplain"), enable); }
    void setExplainImage(QString path) override { record(QStringLiteral("setExplainImage"), path); }
    void setNavImage(QString path) override { record(QStringLiteral("setNavImage"), path); }
    void setDeviceEnable(bool enable) override { record(QStringLiteral("setDeviceEnable"), enable); }
    void setDeviceTypeIcon(int type) override { record(QStringLiteral("setDeviceTypeIcon"), type); }
    void setChargeUpTrayAnimationImage(int step) override
    {
        record(QStringLiteral("setChargeUpTrayAnimationImage"), step);
    }
    void setSystemTrayStatus(QString text) override { record(QStringLiteral("setSystemTrayStatus"), text); }
    void showLowbatView(int page) override { record(QStringLiteral("showLowbatView"), page); }
    void showCalendarPhrases(CalendarPhrases phrases) override
    {
        record(QStringLiteral("showCalendarPhrases"),
               QString(phrases.content + QLatin1Char('|') + phrases.link));
    }
    void updateSystemTray(int status) override { record(QStringLiteral("updateSystemTray"), status); }
    void setZorvaneMessage(QString text) override { record(QStringLiteral("setZorvaneMessage"), text); }
    void setDeviceName(QString name) override { record(QStringLiteral("setDeviceName"), name); }
    void showRestDialog() override { record(QStringLiteral("showRestDialog")); }
    void setComboRestTime(int index) override { record(QStringLiteral("setComboRestTime"), index); }
    void setVipFunction(bool enable) override { record(QStringLiteral("setVipFunction"), enable); }
    void setCpiValue(int value) override { record(QStringLiteral("setCpiValue"), value); }
    void showLamplightModule(int module) override { record(QStringLiteral("showLamplightModule"), module); }
    void setUpdateView(int page) override { record(QStringLiteral("setUpdateView"), page); }
    void setDiscoverNewestVersionInfo(QString text) override
    {
        record(QStringLiteral("setDiscoverNewestVersionInfo"), text);
    }
    void setSignalClickModeEnable(bool enable) override
    {
        record(QStringLiteral("setSignalClickModeEnable"), enable);
    }
    int getCurVolume() override { return ask(QStringLiteral("getCurVolume"), 0).toInt(); }
    int getCurrentStackedWidgetIndex() override
    {
        return ask(QStringLiteral("getCurrentStackedWidgetIndex"), 0).toInt();
    }
    void setAddCommandContent(QString text) override { record(QStringLiteral("setAddCommandContent"), text); }
    void setEditCommandContent(QString text) override
    {
        record(QStringLiteral("setEditCommandContent"), text);
    }
    int getAddCommmandCurrentType() override
    {
        return ask(QStringLiteral("getAddCommmandCurrentType"), 0).toInt();
    }
    int getEditCommmandCurrentType() override
    {
        return ask(QStringLiteral("getEditCommmandCurrentType"), 0).toInt();
    }
    QString getAddCommandCurrentCommand() override
    {
        return ask(QStringLiteral("getAddCommandCurrentCommand"), QString()).toString();
    }
    QString getEditCommandCurrentCommand() override
    {
        return ask(QStringLiteral("getEditCommandCurrentCommand"), QString()).toString();
    }
    QString getAddCommandCurrentContent() override
    {
        return ask(QStringLiteral("getAddCommandCurrentContent"), QString()).toString();
    }
    QString getEditCommandCurrentContent() override
    {
        return ask(QStringLiteral("getEditCommandCurrentContent"), QString()).toString();
    }
    void setAddCommandWarningText(QString text) override
    {
        record(QStringLiteral("setAddCommandWarningText"), text);
    }
    void setEditCommandWarningText(QString text) override
    {
        record(QStringLiteral("setEditCommandWarningText"), text);
    }
    void closeWarningHint() override { record(QStringLiteral("closeWarningHint")); }
    void setPreferenceSettingCheckBoxClick(bool checked) override
    {
        record(QStringLiteral("setPreferenceSettingCheckBoxClick"), checked);
    }
    void setPreferenceSettingRadioButtonClickSend(bool checked) override
    {
        record(QStringLiteral("setPreferenceSettingRadioButtonClickSend"), checked);
    }
    void setPreferenceSettingRadioButtonAutoSend(bool checked) override
    {
        record(QStringLiteral("setPreferenceSettingRadioButtonAutoSend"), checked);
    }
    void setPreferenceSettingCheckBoxEnterKeySend(bool checked) override
    {
        record(QStringLiteral("setPreferenceSettingCheckBoxEnterKeySend"), checked);
    }
    void setPreferenceSettingCheckBoxSpaceKeySend(bool checked) override
    {
        record(QStringLiteral("setPreferenceSettingCheckBoxSpaceKeySend"), checked);
    }
    void setPreferenceSettingCheckBoxDelAllSign(bool checked) override
    {
        record(QStringLiteral("setPreferenceSettingCheckBoxDelAllSign"), checked);
    }
};
