#include "Utils/AppPaths.h"

#include "Utils/Logging.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <atomic>

namespace AppPaths {

QString dataDir()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (!QFileInfo::exists(dir) && !QDir().mkpath(dir)) {
        static std::atomic_bool warned{false};
        if (!warned.exchange(true)) {
            qCWarning(lcApp) << "cannot create the data folder" << dir;
        }
    }
    return dir;
}

QString dataFile(const QString& nameWithSlash)
{
    return dataDir() + nameWithSlash;
}

}  // namespace AppPaths
