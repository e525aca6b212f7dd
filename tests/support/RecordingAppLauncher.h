#pragma once

#include "Platform/AppLauncher.h"

// Keeps what would have been opened: "url <address>", "app <first installed entry>" and
// "path <local path>"; the test says which desktop entries are installed.
class RecordingAppLauncher : public AppLauncher {
public:
    QStringList log;
    QStringList installed;
    QList<QUrl> urls;  // as given, for what a file URL names

    void openUrl(const QUrl& url) override
    {
        log << QStringLiteral("url ") + url.toString();
        urls << url;
    }
    void openLocalPath(const QString& path) override { log << QStringLiteral("path ") + path; }
    bool launchApplication(const QStringList& desktopIds) override
    {
        for (const QString& id : desktopIds) {
            if (installed.contains(id)) {
                log << QStringLiteral("app ") + id;
                return true;
            }
        }
        return false;
    }
};
