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

QString AppAutoRunUtils::execArgument(const QString& executable)
{
    // Quoting is needed only for the reserved characters; inside quotes four characters are
    // escaped with a backslash. '%' would start a field code anywhere, so it is doubled.
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    bool needsQuotes = false;
    for (const QChar c : executable) {
        needsQuotes = needsQuotes || reserved.contains(c);
    }
    QString argument = executable;
    argument.replace(QLatin1Char('%'), QStringLiteral("%%"));
    if (!needsQuotes) {
        return argument;
    }
    QString quoted;
    for (const QChar c : qAsConst(argument)) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('"') || c == QLatin1Char('`') ||
            c == QLatin1Char('$')) {
            quoted += QLatin1Char('\\');
        }
        quoted += c;
    }
    // The value is a string before it is a command line: its own escapes come on top, so a
    // literal backslash ends up as four.
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    quoted.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
    quoted.replace(QLatin1Char('\t'), QStringLiteral("\\t"));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QByteArray AppAutoRunUtils::desktopEntry(const QString& executable)
{
    const QString entry = QStringLiteral(
                              "[Desktop Entry]\n"
                              "Type=Application\n"
                              "Name=Zorvane\n"
                              "Comment=Voice mouse companion\n"
                              "Exec=%1\n"
                              "Terminal=false\n"
                              "X-GNOME-Autostart-enabled=true\n")
                              .arg(execArgument(executable));
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
