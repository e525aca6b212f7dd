#pragma once

#include "CallRecorder.h"
#include "WidgetPresenter/InputView.h"

// Records every call of the presenter in order ("setContent(正在全选...)", "toHide()") and
// answers the questions with what the test set in answers, keyed by operation name. Unset:
// panels and pickers hidden, everything else false, 0 or empty, and a volume sample of 40.
// Queries are recorded too, so a test can see what was asked.
class RecordingInputView : public InputView, public CallRecorder {
public:
    RECORDS(toHide);
    RECORDS(toShow);
    ANSWERS(bool, isViewHidden, true, toBool);
    RECORDS(forceFinish);
    RECORDS_ARG(changeVolume, int);
    RECORDS_ARG(setContent, QString);
    RECORDS_ARG(setVoiceSearchViewStyle, int);
    void setTRContent(bool show, QString source, QString target) override
    {
        record(QStringLiteral("setTRContent"), show, source, target);
    }
    RECORDS(clearContent);
    ANSWERS(int, getVolumeSample, 40, toInt);
    RECORDS_ARG(setTextLanguageText, QString);
    RECORDS(setInitVoiceSearchView);
    RECORDS(startVoiceSearchAnimation);
    RECORDS(toHideImageSpeak);
    RECORDS(setMuteVolume);
    RECORDS_ARG(showFace, int);
    ANSWERS(bool, isOnMouseEnter, false, toBool);
    ANSWERS(int, getCurrentFocusViewStatus, 0, toInt);
    ANSWERS(bool, isHiddenFocusView, true, toBool);
    RECORDS(toHideFocusView);
    RECORDS(initFoDictationView);
    RECORDS(startFoDictationAnimation);
    RECORDS(initFoTranslateView);
    RECORDS(startFoTranslateAnimation);
    ANSWERS(int, getCurrentFoViewHeight, 0, toInt);
    ANSWERS(bool, isFoOnEditing, false, toBool);
    ANSWERS(bool, isFoMouseEnter, false, toBool);
    ANSWERS(bool, isFoPlaying, false, toBool);
    RECORDS(clearFoTranslateResult);
    RECORDS_ARG(setFoMicView, bool);
    RECORDS(forceFinishFoView);
    ANSWERS(int, getCurrentNoFocusViewStatus, 0, toInt);
    ANSWERS(bool, isHiddenNoFocusView, true, toBool);
    RECORDS(toHideNoFocusView);
    RECORDS(initNoFoDictationView);
    RECORDS(startNoFoDictationAnimation);
    RECORDS_ARG(initNoFoTranslateView, bool);
    RECORDS(startNoFoTranslateAnimation);
    RECORDS_ARG(changNoFoView, int);
    ANSWERS(bool, isNoFoOnEditing, false, toBool);
    ANSWERS(bool, isNoFoMouseEnter, false, toBool);
    ANSWERS(bool, isNoFoPlaying, false, toBool);
    RECORDS(clearNoFoTranslateResult);
    RECORDS_ARG(setNoFoMicView, bool);
    RECORDS(forceFinishNoFoView);
    RECORDS(toShowTextTranslateView);
    ANSWERS(bool, isHiddenTextTranslateView, true, toBool);
    ANSWERS(QString, getTextTranslateSourceText, QString(), toString);
    RECORDS_ARG(setTextTranslateSourceText, QString);
    RECORDS_ARG(setTextTranslateTargetText, QString);
    RECORDS_ARG(setVoiceTranslateSourceText, QString);
    RECORDS_ARG(setVoiceTranslateTargetText, QString);
    RECORDS_ARG(insertVoiceTranslateOnEditingSourceText, QString);
    ANSWERS(bool, isVoiceTranslateTextNull, false, toBool);
    RECORDS(clearTranslateContent);
    RECORDS_ARG(setDeviceEnable, bool);
    RECORDS(toShowPaddleWordsView);
    ANSWERS(bool, isHiddenPaddleWordsView, true, toBool);
    RECORDS(toHiddenPaddleWordsView);
    ANSWERS(bool, isShowPaddlewordsView, false, toBool);
    ANSWERS(bool, isPaddleWords, false, toBool);
    RECORDS(clearPaddleWordsStatus);
    void setReviseSignViewText(int x, int y, QString text) override
    {
        record(QStringLiteral("setReviseSignViewText"), x, y, text);
    }
    ANSWERS(bool, isHiddenChangeSearchLanguageView, true, toBool);
    ANSWERS(bool, isHiddenChangeTranLanguageView, true, toBool);
    ANSWERS(bool, isHiddenChangeTranMoreLanguageView, true, toBool);
    ANSWERS(bool, isFocusOnMouseEnter, false, toBool);
    ANSWERS(bool, isNoFocusOnMouseEnter, false, toBool);
    RECORDS_ARG(setMicStatus, bool);
    RECORDS(hideCommandWidget);
    RECORDS_ARG(showMainView, int);
    RECORDS(showExplain);
    RECORDS(hideMainWindows);
};
