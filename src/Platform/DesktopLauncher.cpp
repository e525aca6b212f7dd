#include "DesktopLauncher.h"

#include "ApplicationCatalog.h"
#include "DesktopEntry.h"
#include "Utils/Logging.h"
#include "Utils/UrlRules.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <map>
#include <optional>

namespace {

// The variables set for this process alone, with the user's value (none: unset).
std::map<QString, std::optional<QString>>& ownVariables()
{
    static std::map<QString, std::optional<QString>> variables;
    return variables;
}

}  // namespace

void DesktopLauncher::setOwnVariable(const char* name, const QByteArray& value)
{
    const QString key = QString::fromLatin1(name);
    if (ownVariables().count(key) == 0) {
        ownVariables()[key] = qEnvironmentVariableIsSet(name)
                                  ? std::optional<QString>(qEnvironmentVariable(name))
                                  : std::nullopt;
    }
    qputenv(name, value);
}

QProcessEnvironment DesktopLauncher::userEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : ownVariables()) {
        if (value) {
            environment.insert(name, *value);
        } else {
            environment.remove(name);
        }
    }
    return environment;
}

void DesktopLauncher::openUrl(const QUrl& url)
{
    // The desktop's opener, as Qt would run it, but with the user's environment. The query
    // stays out of the log: it may hold what the user dictated. Qt's own fallback is not tried:
    // it logs the whole address when it finds no browser either.
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (opener.isEmpty() || !spawn(opener, {url.toString(QUrl::FullyEncoded)})) {
        qCWarning(lcSystem) << "no opener (xdg-open) started for" << UrlRules::forLog(url);
    }
}

QString DesktopLauncher::findInstalled(const QStringList& desktopIds)
{
    for (const QString& id : desktopIds) {
        // Also ids of entries in subfolders ("kde4-kate.desktop").
        const QString path = ApplicationCatalog::locate(id);
        DesktopEntry entry;
        if (!path.isEmpty() && entry.load(path) && entry.isLaunchable()) {
            return path;
        }
    }
    return QString();
}

QString DesktopLauncher::defaultHandler(const QString& mimeType)
{
    // The association files by precedence: each config folder, then each data folder's
    // applications, the current desktop's own file before the common one in each.
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        folders << data + QStringLiteral("/applications");
    }
    QStringList names;
    for (const QString& desktop : DesktopEntry::currentDesktops()) {
        names << desktop.toLower() + QStringLiteral("-mimeapps.list");
    }
    names << QStringLiteral("mimeapps.list");
    for (const QString& folder : qAsConst(folders)) {
        for (const QString& name : qAsConst(names)) {
            const QStringList ids = DesktopEntry::readList(folder + QLatin1Char('/') + name,
                                                           QStringLiteral("Default Applications"), mimeType);
            // A default that is not installed gives way to the next one listed.
            const QString path = findInstalled(ids);
            if (!path.isEmpty()) {
                return path;
            }
        }
    }
    return QString();
}

bool DesktopLauncher::launchApplication(const AppChoice& choice)
{
    if (!choice.defaultFor.isEmpty()) {
        const QString path = defaultHandler(choice.defaultFor);
        if (!path.isEmpty()) {
            return startEntry(path, choice.arguments);
        }
    }
    if (!choice.alternative.isEmpty()) {
        const QString program = QStandardPaths::findExecutable(choice.alternative);
        if (!program.isEmpty()) {
            return start(program, choice.arguments, program);
        }
    }
    const QString path = findInstalled(choice.desktopIds);
    if (path.isEmpty()) {
        qCInfo(lcSystem) << "none installed of" << choice.desktopIds;
        return false;
    }
    return startEntry(path, choice.arguments);
}

bool DesktopLauncher::startEntry(const QString& path, const QStringList& arguments)
{
    DesktopEntry entry;
    entry.load(path);
    QStringList command = entry.command();
    if (command.isEmpty()) {
        qCWarning(lcSystem) << "nothing to start in" << path;
        return false;
    }
    const QString program = command.takeFirst();
    return start(program, command + arguments, path);
}

bool DesktopLauncher::spawn(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setProcessEnvironment(userEnvironment());
    return process.startDetached();
}

bool DesktopLauncher::start(const QString& program, const QStringList& arguments, const QString& what)
{
    if (!spawn(program, arguments)) {
        qCWarning(lcSystem) << "cannot start" << program << "of" << what;
        return false;
    }
    qCInfo(lcSystem) << "started" << what << arguments;
    return true;
}

void DesktopLauncher::openLocalPath(const QString& path)
{
    // The file handler of a program would open it as a document, not run it.
    const QFileInfo file(path);
    if (file.isFile() && path.endsWith(QLatin1String(".desktop"))) {
        DesktopEntry entry;
        if (entry.load(path) && entry.isLaunchable()) {
            startEntry(path, QStringList());
            return;
        }
    }
    if (file.isFile() && file.isExecutable()) {
        start(path, QStringList(), path);
        return;
    }
    openUrl(QUrl::fromLocalFile(path));
}
