#pragma once

#include <QStringList>
#include <QUrl>

// Opens web pages, files and folders with the desktop's handlers, and starts installed
// applications by their desktop entries. Tests put a recording implementation in.
class AppLauncher {
public:
    virtual ~AppLauncher() = default;

    virtual void openUrl(const QUrl& url) = 0;
    // Starts the first of the desktop entries (ids such as "org.gnome.Calculator.desktop")
    // that is installed; false when none is.
    virtual bool launchApplication(const QStringList& desktopIds) = 0;
    // A local path the backend names: a program is started, a desktop entry launched, any
    // other file opened by its handler.
    virtual void openLocalPath(const QString& path) = 0;
};
