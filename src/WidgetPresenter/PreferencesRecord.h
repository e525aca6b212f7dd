#pragma once

#include "Utils/UserPreferences.h"

#include <QObject>

#include <functional>
#include <mutex>

// The user's preferences as the console holds them, fields kept only in memory included: one
// record for the presenter and the device lifecycle, whose controller thread reads it. It
// follows every save (the preferences file tells each); save() writes it, on the main thread.
// Its lock is held only inside its own calls, so any other lock may be held around them.
class PreferencesRecord : public QObject {
    Q_OBJECT

public:
    explicit PreferencesRecord(QObject* parent = nullptr);

    UserPreferences get() const;
    // In memory only.
    void change(const std::function<void(UserPreferences&)>& fn);
    // Writes the record to the file, which tells every listener, this record among them.
    void save();
    void store(int UserPreferences::*field, int value);

private:
    mutable std::mutex mMutex;
    UserPreferences mRecord;
};
