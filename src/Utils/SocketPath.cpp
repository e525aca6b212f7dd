#include "Utils/SocketPath.h"

#include <QFile>

#include <sys/un.h>

static_assert(sizeof(sockaddr_un::sun_path) == SocketPath::kMaxBytes + 1, "sun_path size");

QString SocketPath::tooLong(const QString& path)
{
    const int bytes = QFile::encodeName(path).size();
    if (bytes <= kMaxBytes) {
        return QString();
    }
    return QStringLiteral(
               "socket path %1 is %2 bytes long, over the limit of %3 bytes for a Unix socket path")
        .arg(path, QString::number(bytes), QString::number(kMaxBytes));
}
