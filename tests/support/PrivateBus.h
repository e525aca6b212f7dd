#pragma once

#include <QString>

// The address a suite's own dbus-daemon listens on: a socket in the suite's runtime folder,
// which goes with the folder, instead of one in /tmp that a killed daemon leaves behind.
inline QString busInRuntimeFolder()
{
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return QStringLiteral("--address=unix:") +
           (folder.isEmpty() ? QStringLiteral("tmpdir=/tmp") : QStringLiteral("dir=") + folder);
}
