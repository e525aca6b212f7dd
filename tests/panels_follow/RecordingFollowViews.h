#pragma once

#include "CallRecorder.h"
#include "WidgetPresenter/FocusFollowView.h"
#include "WidgetPresenter/NoFocusFollowView.h"

// The operations both panels share, recorded; unset answers: visible, page 0, a sample of 40.
// clang-format off
#define FOLLOW_PANEL_RECORDS \
    RECORDS(onUpdateVolume); \
    RECORDS_ARG(setDictationTextLanguageName, QString); \
    RECORDS_ARG(setTranslateTextSourceLanguageName, QString); \
    RECORDS_ARG(setTranslateTextTargetLanguageName, QString); \
    RECORDS_ARG(setInitTranslateSrcLanguage, QString); \
    RECORDS_ARG(setInitTranslateDstLanguage, QString); \
    ANSWERS(bool, IsHidden, false, toBool); \
    RECORDS(toHide); \
    RECORDS(toWaitingHide); \
    ANSWERS(int, getVolumeSample, 40, toInt); \
    RECORDS_ARG(setVoiceTranslateSourceText, QString); \
    RECORDS_ARG(setVoiceTranslateTargetText, QString); \
    ANSWERS(bool, isVoiceTranslateTextNull, false, toBool); \
    RECORDS(clearText); \
    RECORDS(setInitDictationView); \
    RECORDS(startDictationAnimation); \
    RECORDS(startTranslateAnimation); \
    ANSWERS(int, getCurrentViewStatus, 0, toInt); \
    RECORDS_ARG(setMicStatus, bool); \
    RECORDS_ARG(setTranslateStatus, int); \
    RECORDS_ARG(changeMenuEnterStatus, int); \
    RECORDS_ARG(changeMenuSpaceStatus, int); \
    RECORDS_ARG(changeMenuAutoSendStatus, int); \
    RECORDS_ARG(setCurrentIpId, int); \
    RECORDS_ARG(showMicView, bool);
// clang-format on

class RecordingFocusFollowView : public FocusFollowView, public CallRecorder {
public:
    FOLLOW_PANEL_RECORDS
    RECORDS(toShow);
    RECORDS_ARG(setCurrentStackedWidgetIndex, int);
    RECORDS(moveWindow);
    RECORDS(setInitTranslateView);
};

class RecordingNoFocusFollowView : public NoFocusFollowView, public CallRecorder {
public:
    FOLLOW_PANEL_RECORDS
    RECORDS_ARG(setInitTranslateView, bool);
    RECORDS_ARG(changeView, int);
    RECORDS(hideMainWindows);
};
