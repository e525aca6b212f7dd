#pragma once

#include "AppLauncher.h"

#include <QProcessEnvironment>

// The desktop's own way: URLs through the desktop's handlers, applications by their desktop
// entries found in the XDG data folders, started directly (never through a shell). The user's
// default applications come from the XDG MIME associations (mimeapps.list, the current
// desktop's own file first) and from Debian's alternatives.
class DesktopLauncher : public AppLauncher {
public:
    void openUrl(const QUrl& url) override;
    bool launchApplication(const AppChoice& choice) override;
    void openLocalPath(const QString& path) override;

    // Sets a variable for this process alone (before any thread starts): what it starts gets the
    // user's value back, or none. Zorvane's own platform choices break other programs (a Qt
    // Quick application without GL).
    static void setOwnVariable(const char* name, const QByteArray& value);
    // The environment the user started Zorvane with: the one for the programs it starts.
    static QProcessEnvironment userEnvironment();

    // The file of the first launchable entry of the list, or empty.
    static QString findInstalled(const QStringList& desktopIds);
    // The file of the launchable entry the user chose as default handler of the MIME type,
    // or empty.
    static QString defaultHandler(const QString& mimeType);

private:
    static bool startEntry(const QString& path, const QStringList& arguments);
    static bool start(const QString& program, const QStringList& arguments, const QString& what);
    // Started detached, with the user's environment.
    static bool spawn(const QString& program, const QStringList& arguments);
};
