#include "WidgetPresenter/PreferencesRecord.h"

#include "Utils/PreferencesUtils.h"

PreferencesRecord::PreferencesRecord(QObject* parent) : QObject(parent)
{
    PreferencesUtils* file = PreferencesUtils::getInstance();
    mRecord = file->getUserPreferences();
    connect(file, &PreferencesUtils::signalPreferencesChange, this, [this](UserPreferences preferences) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mRecord = preferences;
    });
}

UserPreferences PreferencesRecord::get() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mRecord;
}

void PreferencesRecord::change(const std::function<void(UserPreferences&)>& fn)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    fn(mRecord);
}

void PreferencesRecord::save()
{
    PreferencesUtils::getInstance()->setUserPreferences(get());
}

void PreferencesRecord::store(int UserPreferences::*field, int value)
{
    change([field, value](UserPreferences& p) { p.*field = value; });
    save();
}
