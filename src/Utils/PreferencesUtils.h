#pragma once

#include "Utils/Singleton.h"
#include "Utils/UserHabit.h"
#include "Utils/UserPreferences.h"

#include <QMap>
#include <QObject>

// The only door to "/preferences.ini" and "/user_habit_ini" in the configuration folder. Holds no
// copy of its own: each call opens the file afresh. Main thread only.
class PreferencesUtils : public QObject, public Singleton<PreferencesUtils> {
    Q_OBJECT

public:
    static constexpr int kBuiltInSearchHabitId = 18;

    UserPreferences getUserPreferences();
    // Writes the fields that differ from the file (an absent key counts as 0 or empty), then
    // emits the whole record, in-memory fields included, before it returns.
    void setUserPreferences(UserPreferences preferences);

    QMap<int, UserHabit> getUserHabitList();
    void addUserHabit(UserHabit habit);
    QMap<int, UserHabit> updateUserHabit(int id, QString website, QString searchUrl);

    // Hints given once in the program's life ("where the console went"), kept beside the
    // preferences in a group of their own so that the fixed record above stays as it is.
    bool wasSaid(const QString& hint);
    void markSaid(const QString& hint);

    static QString preferencesPath();
    static QString habitPath();

signals:
    void signalPreferencesChange(UserPreferences preferences);

private:
    friend class Singleton<PreferencesUtils>;
    PreferencesUtils();
};
