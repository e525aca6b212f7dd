#include "DesktopLauncher.h"

#include "DesktopEntry.h"
#include "Utils/Logging.h"

#include <QDesktopServices>
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
    DesktopEntry entry;
    entry.load(path);
    QStringList command = entry.command();
    const QString program = command.takeFirst();
    if (!QProcess::startDetached(program, command)) {
        qCWarning(lcSystem) << "cannot start" << program << "of" << path;
        return false;
    }
    qCInfo(lcSystem) << "started" << path;
    return true;
}
