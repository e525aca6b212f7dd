#pragma once

#include "CallRecorder.h"
#include "WidgetPresenter/TextTranslateView.h"

// The text translation window as a record of calls. The source text and whether the window
// is hidden are answers a test sets ("getSourceText", "isHiddenView").
class RecordingTextTranslateView : public TextTranslateView, public CallRecorder {
public:
    ANSWERS(QString, getSourceText, QString(), toString)
    RECORDS_ARG(setSourceTextIsOnlyRead, bool)
    RECORDS_ARG(setSourceText, QString)
    RECORDS_ARG(setTargetText, QString)
    RECORDS_ARG(setComboTextTranslateLanguage, int)
    ANSWERS(int, getComboTextTranslateLanguage, 0, toInt)
    RECORDS_ARG(setShowHint, QString)
    RECORDS_ARG(setTranslateStatus, int)
    ANSWERS(bool, isHiddenView, true, toBool)
    RECORDS(toShow)
    RECORDS_ARG(setCurrentIpId, int)
};
