#pragma once

#include <QString>

// What the two voice panels (the one beside the caret and the one at a fixed place) share
// towards their presenters: the dictation badge, the translation boxes and their hints, the
// level display and the send-mode menu marks.
class FocusFollowPanelView {
public:
    virtual ~FocusFollowPanelView() = default;

    virtual void onUpdateVolume() = 0;
    virtual void setDictationTextLanguageName(QString name) = 0;
    virtual void setTranslateTextSourceLanguageName(QString name) = 0;
    virtual void setTranslateTextTargetLanguageName(QString name) = 0;
    virtual void setInitTranslateSrcLanguage(QString name) = 0;
    virtual void setInitTranslateDstLanguage(QString name) = 0;
    virtual bool IsHidden() = 0;
    virtual void toHide() = 0;
    virtual void toWaitingHide() = 0;
    virtual int getVolumeSample() = 0;
    virtual void setVoiceTranslateSourceText(QString text) = 0;
    virtual void setVoiceTranslateTargetText(QString text) = 0;
    virtual bool isVoiceTranslateTextNull() = 0;
    virtual void clearText() = 0;
    virtual void setInitDictationView() = 0;
    virtual void startDictationAnimation() = 0;
    virtual void startTranslateAnimation() = 0;
    virtual int getCurrentViewStatus() = 0;
    virtual void setMicStatus(bool on) = 0;
    virtual void setTranslateStatus(int status) = 0;
    virtual void changeMenuEnterStatus(int status) = 0;
    virtual void changeMenuSpaceStatus(int status) = 0;
    virtual void changeMenuAutoSendStatus(int status) = 0;
    virtual void setCurrentIpId(int id) = 0;
    virtual void showMicView(bool wide) = 0;
};
