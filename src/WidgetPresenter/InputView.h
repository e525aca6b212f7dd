#pragma once

#include <QString>

// Everything the voice session logic asks of its panels, and nothing more: the voice search
// strip, the focus-follow ("Fo") and no-focus ("NoFo") panels, the text translation window,
// the selection toolbar, the three language pickers and the console. The presenter holds all
// session state; the view only shows and answers questions about what the user sees.
// Panel pages (getCurrent*ViewStatus): 0 dictation, 1 translation result, 2 translation start,
// 3 microphone page of a single-key mouse.
class InputView {
public:
    virtual ~InputView() = default;

    virtual void toHide() = 0;
    virtual void toShow() = 0;
    virtual bool isViewHidden() = 0;
    virtual void forceFinish() = 0;
    virtual void changeVolume(int volume) = 0;
    virtual void setContent(QString text) = 0;
    virtual void setVoiceSearchViewStyle(int style) = 0;
    virtual void setTRContent(bool show, QString source, QString target) = 0;
    virtual void clearContent() = 0;
    virtual int getVolumeSample() = 0;
    virtual void setTextLanguageText(QString name) = 0;
    virtual void setInitVoiceSearchView() = 0;
    virtual void startVoiceSearchAnimation() = 0;
    virtual void toHideImageSpeak() = 0;
    virtual void setMuteVolume() = 0;
    virtual void showFace(int face) = 0;
    virtual bool isOnMouseEnter() = 0;
    virtual int getCurrentFocusViewStatus() = 0;
    virtual bool isHiddenFocusView() = 0;
    virtual void toHideFocusView() = 0;
    virtual void initFoDictationView() = 0;
    virtual void startFoDictationAnimation() = 0;
    virtual void initFoTranslateView() = 0;
    virtual void startFoTranslateAnimation() = 0;
    virtual int getCurrentFoViewHeight() = 0;
    virtual bool isFoOnEditing() = 0;
    virtual bool isFoMouseEnter() = 0;
    virtual bool isFoPlaying() = 0;
    virtual void clearFoTranslateResult() = 0;
    virtual void setFoMicView(bool translate) = 0;
    virtual void forceFinishFoView() = 0;
    virtual int getCurrentNoFocusViewStatus() = 0;
    virtual bool isHiddenNoFocusView() = 0;
    virtual void toHideNoFocusView() = 0;
    virtual void initNoFoDictationView() = 0;
    virtual void startNoFoDictationAnimation() = 0;
    virtual void initNoFoTranslateView(bool keepText) = 0;
    virtual void startNoFoTranslateAnimation() = 0;
    virtual void changNoFoView(int page) = 0;
    virtual bool isNoFoOnEditing() = 0;
    virtual bool isNoFoMouseEnter() = 0;
    virtual bool isNoFoPlaying() = 0;
    virtual void clearNoFoTranslateResult() = 0;
    virtual void setNoFoMicView(bool translate) = 0;
    virtual void forceFinishNoFoView() = 0;
    virtual void toShowTextTranslateView() = 0;
    virtual bool isHiddenTextTranslateView() = 0;
    virtual QString getTextTranslateSourceText() = 0;
    virtual void setTextTranslateSourceText(QString text) = 0;
    virtual void setTextTranslateTargetText(QString text) = 0;
    virtual void setVoiceTranslateSourceText(QString text) = 0;
    virtual void setVoiceTranslateTargetText(QString text) = 0;
    virtual void insertVoiceTranslateOnEditingSourceText(QString text) = 0;
    virtual bool isVoiceTranslateTextNull() = 0;
    virtual void clearTranslateContent() = 0;
    virtual void setDeviceEnable(bool enable) = 0;
    virtual void toShowPaddleWordsView() = 0;
    virtual bool isHiddenPaddleWordsView() = 0;
    virtual void toHiddenPaddleWordsView() = 0;
    virtual bool isShowPaddlewordsView() = 0;
    virtual bool isPaddleWords() = 0;
    virtual void clearPaddleWordsStatus() = 0;
    virtual void setReviseSignViewText(int x, int y, QString text) = 0;
    virtual bool isHiddenChangeSearchLanguageView() = 0;
    virtual bool isHiddenChangeTranLanguageView() = 0;
    virtual bool isHiddenChangeTranMoreLanguageView() = 0;
    virtual bool isFocusOnMouseEnter() = 0;
    virtual bool isNoFocusOnMouseEnter() = 0;
    virtual void setMicStatus(bool on) = 0;
    virtual void hideCommandWidget() = 0;
    virtual void showMainView(int page) = 0;
    virtual void showExplain() = 0;
    virtual void hideMainWindows() = 0;
};
