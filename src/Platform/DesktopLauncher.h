#pragma once

#include "AppLauncher.h"

// The desktop's own way: URLs through the desktop's handlers, applications by their desktop
// entries found in the XDG data folders, started directly (never through a shell).
class DesktopLauncher : public AppLauncher {
public:
    void openUrl(const QUrl& url) override;
    bool launchApplication(const QStringList& desktopIds) override;
    void openLocalPath(const QString& path) override;

    // The file of the first launchable entry of the list, or empty.
    static QString findInstalled(const QStringList& desktopIds);

private:
    static bool startEntry(const QString& path);
};
