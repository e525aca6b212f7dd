#include "DesktopLauncher.h"

#include "DesktopEntry.h"
#include "Utils/Logging.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

void DesktopLauncher::openUrl(const QUrl& url)
{
    if (!QDesktopServices::openUrl(url)) {
        qCInfo(lcSystem) << "no handler opened" << url.toString();
    }
}

QString DesktopLauncher::findInstalled(const QStringList& desktopIds)
{
    for (const QString& id : desktopIds) {
        const QString path = QStandardPaths::locate(QStandardPaths::ApplicationsLocation, id);
        DesktopEntry entry;
        if (!path.isEmpty() && entry.load(path) && entry.isLaunchable()) {
            return path;
        }
    }
    return QString();
}

bool DesktopLauncher::launchApplication(const QStringList& desktopIds)
{
    const QString path = findInstalled(desktopIds);
    if (path.isEmpty()) {
        qCInfo(lcSystem) << "none installed of" << desktopIds;
        return false;
    }
    return startEntry(path);
}

bool DesktopLauncher::startEntry(const QString& path)
{
    DesktopEntry entry;
    entry.load(path);
    QStringList command = entry.command();
    if (command.isEmpty()) {
        qCWarning(lcSystem) << "nothing to start in" << path;
        return false;
    }
    const QString program = command.takeFirst();
    if (!QProcess::startDetached(program, command)) {
        qCWarning(lcSystem) << "cannot start" << program << "of" << path;
        return false;
    }
    qCInfo(lcSystem) << "started" << path;
    return true;
}

void DesktopLauncher::openLocalPath(const QString& path)
{
    // The file handler of a program would open it as a document, not run it.
    const QFileInfo file(path);
    if (file.isFile() && path.endsWith(QLatin1String(".desktop"))) {
        DesktopEntry entry;
        if (entry.load(path) && entry.isLaunchable()) {
            startEntry(path);
            return;
        }
    }
    if (file.isFile() && file.isExecutable()) {
        if (QProcess::startDetached(path, QStringList())) {
            qCInfo(lcSystem) << "started" << path;
        } else {
            qCWarning(lcSystem) << "cannot start" << path;
        }
        return;
    }
    openUrl(QUrl::fromLocalFile(path));
}
