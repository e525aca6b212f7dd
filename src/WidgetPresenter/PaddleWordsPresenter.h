#pragma once

#include "Utils/UserPreferences.h"

#include <QObject>

class PaddleWordsView;

// Keeps the selection toolbar's copy of the preferences current.
class PaddleWordsPresenter : public QObject {
    Q_OBJECT

public:
    explicit PaddleWordsPresenter(PaddleWordsView* view, QObject* parent = nullptr);

    UserPreferences preferences() const { return mPreferences; }
    bool isTextTranslateMode() const { return mPreferences.textTranslateMode != 0; }
    bool isTextReadingMode() const { return mPreferences.textReadingMode != 0; }

public slots:
    void setPreferences(UserPreferences preferences);

private:
    PaddleWordsView* mView;
    UserPreferences mPreferences;
};
