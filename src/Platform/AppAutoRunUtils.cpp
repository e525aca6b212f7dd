#include "Platform/AppAutoRunUtils.h"

#include "Platform/DesktopEntry.h"
#include "Utils/AppPaths.h"
#include "Utils/Logging.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QStandardPaths>

namespace {

QString declinedPath()
{
    return AppPaths::configFile(QStringLiteral("/autostart.ini"));
}

}  // namespace

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

QString AppAutoRunUtils::installedProgram()
{
    const QString entry =
        QStandardPaths::locate(QStandardPaths::ApplicationsLocation, QStringLiteral("zorvane.desktop"));
    if (entry.isEmpty()) {
        return QString();
    }
    DesktopEntry packaged;
    if (!packaged.load(entry) || packaged.command().isEmpty()) {
        return QString();
    }
    const QString program = packaged.command().first();
    return QFileInfo(program).isAbsolute() ? (QFileInfo(program).isExecutable() ? program : QString())
                                           : QStandardPaths::findExecutable(program);
}

QString AppAutoRunUtils::loginProgram()
{
    const QString installed = installedProgram();
    return installed.isEmpty() ? QCoreApplication::applicationFilePath() : installed;
}

bool AppAutoRunUtils::isQuestionDeclined()
{
    return QSettings(declinedPath(), QSettings::IniFormat)
        .value(QStringLiteral("question/declined"))
        .toBool();
}

void AppAutoRunUtils::declineQuestion()
{
    QSettings settings(declinedPath(), QSettings::IniFormat);
    settings.setValue(QStringLiteral("question/declined"), true);
    settings.sync();
    if (settings.status() != QSettings::NoError) {
        qCWarning(lcSystem) << "cannot keep the declined autostart question in" << declinedPath();
    }
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
        ok =
            file.open(QIODevice::WriteOnly) && file.write(desktopEntry(loginProgram())) >= 0 && file.commit();
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
