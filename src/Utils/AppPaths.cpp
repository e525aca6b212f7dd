#include "Utils/AppPaths.h"

#include "Utils/Logging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>

namespace AppPaths {

namespace {

// Qt 5 has no state location: the XDG rule by hand (an unset or relative value is ignored),
// and the test mode's own folder as Qt gives one for the other kinds.
QString stateHome()
{
    if (QStandardPaths::isTestModeEnabled()) {
        return QDir::homePath() + QStringLiteral("/.qttest/state");
    }
    const QString fromEnv = qEnvironmentVariable("XDG_STATE_HOME");
    return QDir::isAbsolutePath(fromEnv) ? fromEnv : QDir::homePath() + QStringLiteral("/.local/state");
}

QString path(Kind kind)
{
    QString home;
    switch (kind) {
        case Kind::Config:
            home = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
            break;
        case Kind::State:
            home = stateHome();
            break;
        case Kind::Cache:
            home = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
            break;
        case Kind::Data:
            home = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
            break;
    }
    return home + QLatin1Char('/') + QLatin1String(kApplicationName);
}

// What earlier versions kept in the data folder and where it belongs now. A settings file
// takes its set-aside copies ("<name>.corrupt-<time>") along.
struct Earlier {
    const char* name;
    Kind kind;
};
const Earlier kEarlier[] = {
    {"preferences.ini", Kind::Config}, {"user_habit_ini", Kind::Config},  {"autostart.ini", Kind::Config},
    {"ZorvaneLog.txt", Kind::State},   {"ZorvaneLog.txt.1", Kind::State}, {"pictures", Kind::Cache},
};

// The last text read aloud and its audio, which earlier versions left behind after reading.
const Earlier kLeftovers[] = {{"text.txt", Kind::Data}, {"tts.mp3", Kind::Data}, {"tts.mp3", Kind::Cache}};

bool sameContent(const QString& a, const QString& b)
{
    QFile fa(a);
    QFile fb(b);
    return fa.open(QIODevice::ReadOnly) && fb.open(QIODevice::ReadOnly) && fa.size() == fb.size() &&
           fa.readAll() == fb.readAll();
}

// Renames without ever replacing what is at `to`. False with errno set otherwise.
bool renameNoReplace(const QString& from, const QString& to)
{
    const QByteArray f = QFile::encodeName(from);
    const QByteArray t = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, f.constData(), AT_FDCWD, t.constData(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // A file system without the flag: checked just before, which is as good for one user.
    if (QFileInfo::exists(to) || QFileInfo(to).isSymLink()) {
        errno = EEXIST;
        return false;
    }
    return std::rename(f.constData(), t.constData()) == 0;
}

// Another file system: a whole copy under a temporary name, renamed into place, then the old
// one removed. Killed in between, the old file is still there and the new one absent or whole.
bool copyThenRemove(const QString& from, const QString& to, QString* error)
{
    QFile source(from);
    QSaveFile target(to);
    if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly)) {
        *error = source.isOpen() ? target.errorString() : source.errorString();
        return false;
    }
    while (!source.atEnd()) {
        const QByteArray block = source.read(1 << 16);
        if (block.isEmpty() || target.write(block) != block.size()) {
            *error = source.error() != QFile::NoError ? source.errorString() : target.errorString();
            target.cancelWriting();  // nothing reaches `to`
            return false;
        }
    }
    if (!target.commit()) {
        *error = target.errorString();
        return false;
    }
    QFile::setPermissions(to, source.permissions());
    source.close();
    if (!QFile::remove(from)) {
        *error = QStringLiteral("copied, but the old file could not be removed");
        return false;
    }
    return true;
}

void moveEntry(const QString& from, const QString& to, QStringList* report)
{
    const QFileInfo info(from);
    if (info.isDir() && !info.isSymLink()) {
        if (renameNoReplace(from, to)) {
            *report << QStringLiteral("moved %1 to %2").arg(from, to);
            return;
        }
        // Already there in part, or on another file system: file by file.
        QDir().mkpath(to);
        const QStringList children =
            QDir(from).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
        for (const QString& child : children) {
            moveEntry(from + QLatin1Char('/') + child, to + QLatin1Char('/') + child, report);
        }
        QDir().rmdir(from);  // only when nothing was left behind
        return;
    }
    if (renameNoReplace(from, to)) {
        *report << QStringLiteral("moved %1 to %2").arg(from, to);
        return;
    }
    const int reason = errno;
    QString error;
    if (reason == EEXIST) {
        // The new place wins; an identical old copy is a move that was cut short.
        if (info.isFile() && sameContent(from, to) && QFile::remove(from)) {
            *report << QStringLiteral("removed %1, already at %2").arg(from, to);
        } else {
            *report << QStringLiteral("left %1: %2 exists").arg(from, to);
        }
        return;
    }
    if (reason == EXDEV && copyThenRemove(from, to, &error)) {
        *report << QStringLiteral("moved %1 to %2 (copied)").arg(from, to);
        return;
    }
    *report << QStringLiteral("cannot move %1 to %2: %3")
                   .arg(from, to, error.isEmpty() ? QString::fromLocal8Bit(std::strerror(reason)) : error);
}

}  // namespace

QString dir(Kind kind)
{
    const QString folder = path(kind);
    if (!QFileInfo::exists(folder) && !QDir().mkpath(folder)) {
        static std::atomic_bool warned[4]{};
        if (!warned[int(kind)].exchange(true)) {
            qCWarning(lcApp) << "cannot create the folder" << folder;
        }
    }
    return folder;
}

QString file(Kind kind, const QString& nameWithSlash)
{
    return dir(kind) + nameWithSlash;
}

QStringList moveEarlierFiles()
{
    QStringList report;
    const QString earlier = path(Kind::Data);
    const QStringList names =
        QDir(earlier).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const Earlier& e : kEarlier) {
        const QString name = QLatin1String(e.name);
        const QString aside = name + QStringLiteral(".corrupt-");
        for (const QString& found : names) {
            if (found == name || found.startsWith(aside)) {
                moveEntry(earlier + QLatin1Char('/') + found, dir(e.kind) + QLatin1Char('/') + found,
                          &report);
            }
        }
    }
    for (const Earlier& l : kLeftovers) {
        const QString found = path(l.kind) + QLatin1Char('/') + QLatin1String(l.name);
        if (QFileInfo::exists(found) && QFile::remove(found)) {
            report << QStringLiteral("removed %1").arg(found);
        }
    }
    return report;
}

}  // namespace AppPaths
