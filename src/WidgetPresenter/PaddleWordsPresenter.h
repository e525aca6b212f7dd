#pragma once

#include "Utils/UserPreferences.h"

#include <QObject>

class PaddleWordsView;
class ReadAloud;
class SpeechSynthesisUtils;

// Keeps the selection toolbar's copy of the preferences current, and its reading's state.
class PaddleWordsPresenter : public QObject {
    Q_OBJECT

public:
    // synthesis null: the process-wide one.
    PaddleWordsPresenter(PaddleWordsView* view, SpeechSynthesisUtils* synthesis, QObject* parent = nullptr);

    UserPreferences preferences() const { return mPreferences; }
    bool isTextTranslateMode() const { return mPreferences.textTranslateMode != 0; }
    bool isTextReadingMode() const { return mPreferences.textReadingMode != 0; }
    // The selection's reading, which the input presenter starts.
    ReadAloud* reading() const { return mReading; }

public slots:
    void setPreferences(UserPreferences preferences);

private:
    PaddleWordsView* mView;
    UserPreferences mPreferences;
    ReadAloud* mReading;
};
