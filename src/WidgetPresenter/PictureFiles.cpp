#include "PictureFiles.h"

#include "Utils/AppPaths.h"
#include "Utils/Logging.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>

namespace PictureFiles {

QString folder()
{
    const QString dir = AppPaths::cacheFile(QStringLiteral("/pictures"));
    if (!QFileInfo::exists(dir) && !QDir().mkpath(dir)) {
        qCWarning(lcConsole) << "cannot create the picture folder" << dir;
    }
    return dir;
}

QString localPath(const QString& reference)
{
    const QUrl url(reference);
    const QString fileName = QFileInfo(url.path()).fileName();
    const bool control =
        std::any_of(reference.begin(), reference.end(), [](QChar c) { return c.unicode() < 0x20; });
    if (reference.contains(QLatin1String("..")) || reference.contains(QLatin1Char('\\')) ||
        reference.startsWith(QLatin1Char('/')) || !url.scheme().isEmpty() || control || fileName.isEmpty()) {
        qCWarning(lcConsole) << "picture name from the backend refused:" << reference;
        return QString();
    }
    const QString name = QString::fromLatin1(
        fileName.toUtf8().toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
    const QString dir = folder();
    const QFileInfo file(dir + QLatin1Char('/') + name);
    // The name cannot hold a separator; a link put in the folder must not lead elsewhere either.
    if (file.absolutePath() != QDir(dir).absolutePath() || file.isSymLink()) {
        qCWarning(lcConsole) << "picture file outside the picture folder refused:" << file.filePath();
        return QString();
    }
    return file.filePath();
}

}  // namespace PictureFiles
