#include "WidgetPresenter/PaddleWordsPresenter.h"

#include "Utils/PreferencesUtils.h"

PaddleWordsPresenter::PaddleWordsPresenter(PaddleWordsView* view, QObject* parent)
    : QObject(parent), mView(view), mPreferences(PreferencesUtils::getInstance()->getUserPreferences())
{
    connect(PreferencesUtils::getInstance(), &PreferencesUtils::signalPreferencesChange, this,
            &PaddleWordsPresenter::setPreferences);
}

void PaddleWordsPresenter::setPreferences(UserPreferences preferences)
{
    mPreferences = preferences;
}
