#include "WidgetPresenter/PaddleWordsPresenter.h"

#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/ReadAloud.h"

PaddleWordsPresenter::PaddleWordsPresenter(PaddleWordsView* view, SpeechSynthesisUtils* synthesis,
                                           QObject* parent)
    : QObject(parent),
      mView(view),
      mPreferences(PreferencesUtils::getInstance()->getUserPreferences()),
      mReading(new ReadAloud(synthesis, ReadAloud::ReachNow, this))
{
    connect(PreferencesUtils::getInstance(), &PreferencesUtils::signalPreferencesChange, this,
            &PaddleWordsPresenter::setPreferences);
}

void PaddleWordsPresenter::setPreferences(UserPreferences preferences)
{
    mPreferences = preferences;
}
