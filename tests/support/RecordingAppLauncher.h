#pragma once

#include "Platform/AppLauncher.h"

// Keeps what would have been opened: "url <address>", "app <first installed entry>
// [arguments]" and "path <local path>"; the test says which desktop entries are installed.
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
    // The user's defaults are the real launcher's business; here only the fixed list counts.
    bool launchApplication(const AppChoice& choice) override
    {
        for (const QString& id : choice.desktopIds) {
            if (installed.contains(id)) {
                log << QStringList(QStringList{QStringLiteral("app"), id} + choice.arguments)
                           .join(QLatin1Char(' '));
                return true;
            }
        }
        return false;
    }
};
