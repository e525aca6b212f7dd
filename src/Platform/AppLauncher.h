#pragma once

#include <QStringList>
#include <QUrl>

// An application to start: the user's own choice first, where there is one, then the first
// installed of a fixed list.
struct AppChoice {
    // A MIME type ("x-scheme-handler/http") whose default handler comes first.
    QString defaultFor;
    // A Debian alternative ("x-www-browser"), tried next.
    QString alternative;
    // Desktop entry ids ("org.gnome.Calculator.desktop") in order of preference.
    QStringList desktopIds;
    // Added to the command of whichever is started.
    QStringList arguments;
};

// Opens web pages, files and folders with the desktop's handlers, and starts installed
// applications by their desktop entries. Tests put a recording implementation in.
class AppLauncher {
public:
    virtual ~AppLauncher() = default;

    virtual void openUrl(const QUrl& url) = 0;
    // Starts the first of the choice that is there; false when none is.
    virtual bool launchApplication(const AppChoice& choice) = 0;
    // A local path the backend names: a program is started, a desktop entry launched, any
    // other file opened by its handler.
    virtual void openLocalPath(const QString& path) = 0;
};
