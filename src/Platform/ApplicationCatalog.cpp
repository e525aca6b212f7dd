#include "ApplicationCatalog.h"

#include "DesktopEntry.h"

#include <QCollator>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QLocale>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>
#include <functional>

namespace {

// Calls visit(id, path) for each entry file, the winning folder first; stops when it says so.
void walkEntries(const std::function<bool(const QString&, const QString&)>& visit)
{
    for (const QString& folder : ApplicationCatalog::folders()) {
        const QDir root(folder);
        QDirIterator it(folder, {QStringLiteral("*.desktop")}, QDir::Files | QDir::Readable,
                        QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
        // Sorted, so that the same tree always gives the same winner within a folder.
        QStringList files;
        while (it.hasNext()) {
            files << it.next();
        }
        files.sort();
        for (const QString& file : qAsConst(files)) {
            QString id = root.relativeFilePath(file);
            id.replace(QLatin1Char('/'), QLatin1Char('-'));
            if (!visit(id, file)) {
                return;
            }
        }
    }
}

}  // namespace

QStringList ApplicationCatalog::folders()
{
    return QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
}

QString ApplicationCatalog::messagesLocale()
{
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = qEnvironmentVariable(variable);
        if (!value.isEmpty()) {
            return value;
        }
    }
    return QString();
}

QList<InstalledApplication> ApplicationCatalog::applications(const QString& locale)
{
    const QString language = locale.isEmpty() ? messagesLocale() : locale;
    QList<InstalledApplication> list;
    QSet<QString> seen;
    walkEntries([&](const QString& id, const QString& path) {
        if (seen.contains(id)) {
            return true;
        }
        seen.insert(id);
        DesktopEntry entry;
        // A program that needs a terminal would start without one: not offered.
        if (entry.load(path) && entry.isLaunchable() && !entry.noDisplay() && !entry.terminal()) {
            list << InstalledApplication{id, entry.name(language), entry.icon(), path};
        }
        return true;
    });
    // The encoding and modifier are no part of a Qt locale name.
    QCollator collator(QLocale(language.section(QLatin1Char('.'), 0, 0).section(QLatin1Char('@'), 0, 0)));
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    std::stable_sort(list.begin(), list.end(),
                     [&collator](const InstalledApplication& a, const InstalledApplication& b) {
                         return collator.compare(a.name, b.name) < 0;
                     });
    return list;
}

QString ApplicationCatalog::entryId(const QString& path)
{
    const QString clean = QDir::cleanPath(path);
    for (const QString& folder : folders()) {
        const QString prefix = QDir::cleanPath(folder) + QLatin1Char('/');
        if (clean.startsWith(prefix)) {
            return clean.mid(prefix.size()).replace(QLatin1Char('/'), QLatin1Char('-'));
        }
    }
    // A folder no longer searched (another user's, a data folder since dropped): its
    // layout still tells the id.
    const QString marker = QStringLiteral("/applications/");
    const int at = clean.lastIndexOf(marker);
    if (at >= 0) {
        return clean.mid(at + marker.size()).replace(QLatin1Char('/'), QLatin1Char('-'));
    }
    return clean.section(QLatin1Char('/'), -1);
}

bool ApplicationCatalog::isInstalledEntry(const QString& path)
{
    const QString file = QFileInfo(path).canonicalFilePath();
    if (file.isEmpty() || !file.endsWith(QLatin1String(".desktop"))) {
        return false;
    }
    const QStringList roots = folders();
    const bool inside = std::any_of(roots.begin(), roots.end(), [&file](const QString& root) {
        const QString canonical = QFileInfo(root).canonicalFilePath();
        return !canonical.isEmpty() && file.startsWith(canonical + QLatin1Char('/'));
    });
    DesktopEntry entry;
    return inside && entry.load(file) && entry.isLaunchable();
}

QString ApplicationCatalog::locate(const QString& id)
{
    if (id.isEmpty()) {
        return QString();
    }
    QString found;
    walkEntries([&](const QString& entryId, const QString& path) {
        if (entryId == id) {
            found = path;
            return false;
        }
        return true;
    });
    return found;
}

ApplicationCatalog::Sample ApplicationCatalog::sampleApplication()
{
    // "计算器" and "文本编辑" are built-in phrases, and a command word equal to one never
    // fires; "记事本" is free and names a program nearly every desktop has.
    static const QStringList editors{QStringLiteral("org.gnome.TextEditor.desktop"),
                                     QStringLiteral("org.gnome.gedit.desktop"),
                                     QStringLiteral("gedit.desktop"),
                                     QStringLiteral("org.kde.kwrite.desktop"),
                                     QStringLiteral("org.kde.kate.desktop"),
                                     QStringLiteral("org.xfce.mousepad.desktop"),
                                     QStringLiteral("pluma.desktop"),
                                     QStringLiteral("xed.desktop")};
    Sample sample{QStringLiteral("记事本"), QString()};
    for (const QString& id : editors) {
        const QString path = locate(id);
        DesktopEntry entry;
        if (!path.isEmpty() && entry.load(path) && entry.isLaunchable()) {
            sample.path = path;
            break;
        }
    }
    return sample;
}
