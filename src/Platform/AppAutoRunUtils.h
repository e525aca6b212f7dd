#pragma once

#include "Utils/Singleton.h"

#include <QObject>

// Start at login through the XDG autostart entry "zorvane.desktop": on means the entry exists.
class AppAutoRunUtils : public QObject, public Singleton<AppAutoRunUtils> {
    Q_OBJECT

public:
    bool isAppAutoRun() const;
    // Writes or removes the entry; false when the folder cannot be written.
    bool setAppAutoRun(bool enable);

    static QString autostartPath();
    // The entry for an executable; the path is quoted and escaped as desktop entries require.
    static QByteArray desktopEntry(const QString& executable);
    // The Exec value that runs exactly this program.
    static QString execArgument(const QString& executable);

signals:
    void signalChangeAutoRun(bool enable);

private:
    friend class Singleton<AppAutoRunUtils>;
    AppAutoRunUtils() = default;
};
