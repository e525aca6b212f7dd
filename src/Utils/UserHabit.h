#pragma once

#include <QMetaType>
#include <QString>

// The preferred site and search address of a voice search intent; '*' in searchUrl is where
// the search word goes.
struct UserHabit {
    int id = 0;
    QString website;
    QString searchUrl;
};
Q_DECLARE_METATYPE(UserHabit)
