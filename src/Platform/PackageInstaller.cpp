#include "Platform/PackageInstaller.h"

#include "Platform/DesktopEntry.h"

#include <QStandardPaths>

namespace PackageInstaller {

namespace {

// The desktop entries that open the type: the association files' defaults and additions,
// then the desktop's MIME caches, in order of precedence.
QStringList handlersOf(const QString& mimeType)
{
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    const QStringList data = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (const QString& folder : data) {
        folders << folder + QStringLiteral("/applications");
    }
    QStringList ids;
    for (const QString& folder : qAsConst(folders)) {
        for (const QString& group :
             {QStringLiteral("Default Applications"), QStringLiteral("Added Associations")}) {
            ids << DesktopEntry::readList(folder + QStringLiteral("/mimeapps.list"), group, mimeType);
        }
    }
    for (const QString& folder : data) {
        ids << DesktopEntry::readList(folder + QStringLiteral("/applications/mimeinfo.cache"),
                                      QStringLiteral("MIME Cache"), mimeType);
    }
    ids.removeDuplicates();
    return ids;
}

}  // namespace

Command installCommand(const QString& debPath)
{
    // Only a package manager counts: an archive viewer opens .deb files too and installs nothing.
    for (const QString& id : handlersOf(QLatin1String(kDebMimeType))) {
        const QString path = QStandardPaths::locate(QStandardPaths::ApplicationsLocation, id);
        DesktopEntry entry;
        if (path.isEmpty() || !entry.load(path) || !entry.isLaunchable() ||
            !DesktopEntry::readList(path, QStringLiteral("Desktop Entry"), QStringLiteral("Categories"))
                 .contains(QLatin1String("PackageManager"))) {
            continue;
        }
        return {entry.command() << debPath, false};
    }
    const QString pkexec = QStandardPaths::findExecutable(QStringLiteral("pkexec"));
    const QString apt = QStandardPaths::findExecutable(QStringLiteral("apt-get"));
    if (!pkexec.isEmpty() && !apt.isEmpty()) {
        // Nothing of the user's system is removed for an update: apt stops instead.
        return {{pkexec, apt, QStringLiteral("install"), QStringLiteral("--yes"),
                 QStringLiteral("--no-remove"), debPath},
                true};
    }
    return {};
}

QString manualCommand(const QString& debPath)
{
    QString quoted = debPath;
    quoted.replace(QLatin1Char('\''), QStringLiteral("'\\''"));
    return QStringLiteral("sudo apt install '%1'").arg(quoted);
}

}  // namespace PackageInstaller
