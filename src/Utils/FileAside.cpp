#include "Utils/FileAside.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace FileAside {

namespace {

QString freeName(const QString& path, const QString& tag)
{
    const QString base = path + QLatin1Char('.') + tag + QLatin1Char('-') +
                         QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz"));
    QString name = base;
    for (int n = 2; QFileInfo::exists(name); ++n) {
        name = base + QLatin1Char('-') + QString::number(n);
    }
    return name;
}

// Removes all but the newest kKeptCopies copies of the tag.
void prune(const QString& path, const QString& tag)
{
    const QFileInfo file(path);
    QDir dir = file.dir();
    const QString prefix = file.fileName() + QLatin1Char('.') + tag + QLatin1Char('-');
    // The time in the name sorts them oldest first.
    QStringList copies = dir.entryList({prefix + QLatin1Char('*')}, QDir::Files | QDir::System);
    copies.sort();
    for (int i = 0; i < copies.size() - kKeptCopies; ++i) {
        dir.remove(copies.at(i));
    }
}

}  // namespace

QString moveAside(const QString& path, const QString& tag)
{
    const QString aside = freeName(path, tag);
    if (!QFile::rename(path, aside)) {
        return QString();
    }
    prune(path, tag);
    return aside;
}

QString copyAside(const QString& path, const QString& tag)
{
    if (!QFileInfo(path).isFile()) {
        return QString();
    }
    const QString aside = freeName(path, tag);
    if (!QFile::copy(path, aside)) {
        return QString();
    }
    prune(path, tag);
    return aside;
}

}  // namespace FileAside
