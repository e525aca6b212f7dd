#include "Platform/AppAutoRunUtils.h"

#include "Utils/Logging.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

QString AppAutoRunUtils::autostartPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/zorvane.desktop");
}

QByteArray AppAutoRunUtils::desktopEntry(const QString& executable)
{
    // Quoted, with the characters that are special inside quotes escaped.
    QString quoted = executable;
    for (const QChar c : {QLatin1Char('\\'), QLatin1Char('"'), QLatin1Char('`'), QLatin1Char('$')}) {
        quoted.replace(c, QLatin1Char('\\') + QString(c));
    }
    const QString entry = QStringLiteral(
                              "[Desktop Entry]\n"
                              "Type=Application\n"
                              "Name=Zorvane\n"
                              "Comment=Voice mouse companion\n"
                              "Exec=\"%1\"\n"
                              "Terminal=false\n"
                              "X-GNOME-Autostart-enabled=true\n")
                              .arg(quoted);
    return entry.toUtf8();
}

bool AppAutoRunUtils::isAppAutoRun() const
{
    return QFileInfo::exists(autostartPath());
}

bool AppAutoRunUtils::setAppAutoRun(bool enable)
{
    const QString path = autostartPath();
    const bool before = isAppAutoRun();
    bool ok = true;
    if (enable) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QSaveFile file(path);
        ok = file.open(QIODevice::WriteOnly) &&
             file.write(desktopEntry(QCoreApplication::applicationFilePath())) >= 0 && file.commit();
    } else if (before) {
        ok = QFile::remove(path);
    }
    if (!ok) {
        qCWarning(lcSystem) << "cannot change the autostart entry" << path;
    }
    const bool after = isAppAutoRun();
    if (after != before) {
        emit signalChangeAutoRun(after);
    }
    return ok;
}
