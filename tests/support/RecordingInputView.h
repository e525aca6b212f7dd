#pragma once

#include "CallRecorder.h"
#include "WidgetPresenter/InputView.h"

#include <QHash>
#include <QStringList>
#include <QVariant>

// Records every call of the presenter in order ("setContent(正在全选...)", "toHide()") and
// answers the questions with what the test set in answers, keyed by operation name. Unset:
// panels and pickers hidden, everything else false, 0 or empty, and a volume sample of 40.
// Queries are recorded too, so a test can see what was asked.
class RecordingInputView : public InputView, public CallRecorder {
public:
    void toHide() override { record(QStringLiteral("toHide")); }
    void toShow() override { record(QStringLiteral("toShow")); }
    bool isViewHidden() override { return ask(QStringLiteral("isViewHidden"), true).toBool(); }
    void forceFinish() override { record(QStringLiteral("forceFinish")); }
    void changeVolume(int volume) override { record(QStringLiteral("changeVolume"), volume); }
    void setContent(QString text) override { record(QStringLiteral("setContent"), text); }
    void setVoiceSearchViewStyle(int style) override
    {
        record(QStringLiteral("setVoiceSearchViewStyle"), style);
    }
    void setTRContent(bool show, QString source, QString target) override
    {
        record(QStringLiteral("setTRContent"), show, source, target);
    }
    void clearContent() override { record(QStringLiteral("clearContent")); }
    int getVolumeSample() override { return ask(QStringLiteral("getVolumeSample"), 40).toInt(); }
    void setTextLanguageText(QString name) override { record(QStringLiteral("setTextLanguageText"), name); }
    void setInitVoiceSearchView() override { record(QStringLiteral("setInitVoiceSearchView")); }
    void startVoiceSearchAnimation() override { record(QStringLiteral("startVoiceSearchAnimation")); }
    void toHideImageSpeak() override { record(QStringLiteral("toHideImageSpeak")); }
    void setMuteVolume() override { record(QStringLiteral("setMuteVolume")); }
    void showFace(int face) override { record(QStringLiteral("showFace"), face); }
    bool isOnMouseEnter() override { return ask(QStringLiteral("isOnMouseEnter"), false).toBool(); }
    int getCurrentFocusViewStatus() override
    {
        return ask(QStringLiteral("getCurrentFocusViewStatus"), 0).toInt();
    }
    bool isHiddenFocusView() override { return ask(QStringLiteral("isHiddenFocusView"), true).toBool(); }
    void toHideFocusView() override { record(QStringLiteral("toHideFocusView")); }
    void initFoDictationView() override { record(QStringLiteral("initFoDictationView")); }
    void startFoDictationAnimation() override { record(QStringLiteral("startFoDictationAnimation")); }
    void initFoTranslateView() override { record(QStringLiteral("initFoTranslateView")); }
    void startFoTranslateAnimation() override { record(QStringLiteral("startFoTranslateAnimation")); }
    int getCurrentFoViewHeight() override { return ask(QStringLiteral("getCurrentFoViewHeight"), 0).toInt(); }
    bool isFoOnEditing() override { return ask(QStringLiteral("isFoOnEditing"), false).toBool(); }
    bool isFoMouseEnter() override { return ask(QStringLiteral("isFoMouseEnter"), false).toBool(); }
    bool isFoPlaying() override { return ask(QStringLiteral("isFoPlaying"), false).toBool(); }
    void clearFoTranslateResult() override { record(QStringLiteral("clearFoTranslateResult")); }
    void setFoMicView(bool translate) override { record(QStringLiteral("setFoMicView"), translate); }
    void forceFinishFoView() override { record(QStringLiteral("forceFinishFoView")); }
    int getCurrentNoFocusViewStatus() override
    {
        return ask(QStringLiteral("getCurrentNoFocusViewStatus"), 0).toInt();
    }
    bool isHiddenNoFocusView() override { return ask(QStringLiteral("isHiddenNoFocusView"), true).toBool(); }
    void toHideNoFocusView() override { record(QStringLiteral("toHideNoFocusView")); }
    void initNoFoDictationView() override { record(QStringLiteral("initNoFoDictationView")); }
    void startNoFoDictationAnimation() override { record(QStringLiteral("startNoFoDictationAnimation")); }
    void initNoFoTranslateView(bool keepText) override
    {
        record(QStringLiteral("initNoFoTranslateView"), keepText);
    }
    void startNoFoTranslateAnimation() override { record(QStringLiteral("startNoFoTranslateAnimation")); }
    void changNoFoView(int page) override { record(QStringLiteral("changNoFoView"), page); }
    bool isNoFoOnEditing() override { return ask(QStringLiteral("isNoFoOnEditing"), false).toBool(); }
    bool isNoFoMouseEnter() override { return ask(QStringLiteral("isNoFoMouseEnter"), false).toBool(); }
    bool isNoFoPlaying() override { return ask(QStringLiteral("isNoFoPlaying"), false).toBool(); }
    void clearNoFoTranslateResult() override { record(QStringLiteral("clearNoFoTranslateResult")); }
    void setNoFoMicView(bool translate) override { record(QStringLiteral("setNoFoMicView"), translate); }
    void forceFinishNoFoView() override { record(QStringLiteral("forceFinishNoFoView")); }
    void toShowTextTranslateView() override { record(QStringLiteral("toShowTextTranslateView")); }
    bool isHiddenTextTranslateView() override
    {
        return ask(QStringLiteral("isHiddenTextTranslateView"), true).toBool();
    }
    QString getTextTranslateSourceText() override
    {
        return ask(QStringLiteral("getTextTranslateSourceText"), QString()).toString();
    }
    void setTextTranslateSourceText(QString text) override
    {
        record(QStringLiteral("setTextTranslateSourceText"), text);
    }
    void setTextTranslateTargetText(QString text) override
    {
        record(QStringLiteral("setTextTranslateTargetText"), text);
    }
    void setVoiceTranslateSourceText(QString text) override
    {
        record(QStringLiteral("setVoiceTranslateSourceText"), text);
    }
    void setVoiceTranslateTargetText(QString text) override
    {
        record(QStringLiteral("setVoiceTranslateTargetText"), text);
    }
    void insertVoiceTranslateOnEditingSourceText(QString text) override
    {
        record(QStringLiteral("insertVoiceTranslateOnEditingSourceText"), text);
    }
    bool isVoiceTranslateTextNull() override
    {
        return ask(QStringLiteral("isVoiceTranslateTextNull"), false).toBool();
    }
    void clearTranslateContent() override { record(QStringLiteral("clearTranslateContent")); }
    void setDeviceEnable(bool enable) override { record(QStringLiteral("setDeviceEnable"), enable); }
    void toShowPaddleWordsView() override { record(QStringLiteral("toShowPaddleWordsView")); }
    bool isHiddenPaddleWordsView() override
    {
        return ask(QStringLiteral("isHiddenPaddleWordsView"), true).toBool();
    }
    void toHiddenPaddleWordsView() override { record(QStringLiteral("toHiddenPaddleWordsView")); }
    bool isShowPaddlewordsView() override
    {
        return ask(QStringLiteral("isShowPaddlewordsView"), false).toBool();
    }
    bool isPaddleWords() override { return ask(QStringLiteral("isPaddleWords"), false).toBool(); }
    void clearPaddleWordsStatus() override { record(QStringLiteral("clearPaddleWordsStatus")); }
    void setReviseSignViewText(int x, int y, QString text) override
    {
        record(QStringLiteral("setReviseSignViewText"), x, y, text);
    }
    bool isHiddenChangeSearchLanguageView() override
    {
        return ask(QStringLiteral("isHiddenChangeSearchLanguageView"), true).toBool();
    }
    bool isHiddenChangeTranLanguageView() override
    {
        return ask(QStringLiteral("isHiddenChangeTranLanguageView"), true).toBool();
    }
    bool isHiddenChangeTranMoreLanguageView() override
    {
        return ask(QStringLiteral("isHiddenChangeTranMoreLanguageView"), true).toBool();
    }
    bool isFocusOnMouseEnter() override { return ask(QStringLiteral("isFocusOnMouseEnter"), false).toBool(); }
    bool isNoFocusOnMouseEnter() override
    {
        return ask(QStringLiteral("isNoFocusOnMouseEnter"), false).toBool();
    }
    void setMicStatus(bool on) override { record(QStringLiteral("setMicStatus"), on); }
    void hideCommandWidget() override { record(QStringLiteral("hideCommandWidget")); }
    void showMainView(int page) override { record(QStringLiteral("showMainView"), page); }
    void showExplain() override { record(QStringLiteral("showExplain")); }
    void hideMainWindows() override { record(QStringLiteral("hideMainWindows")); }
};
