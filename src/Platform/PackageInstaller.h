#pragma once

#include <QString>
#include <QStringList>

// How a downloaded Debian package reaches the system's package installer: a package manager
// the desktop associates with .deb files, else apt behind the desktop's password prompt.
namespace PackageInstaller {

inline constexpr char kDebMimeType[] = "application/vnd.debian.binary-package";

struct Command {
    QStringList arguments;  // program first; empty when this desktop has no installer
    // The installer ends when the package is in (apt); a graphical one takes over instead.
    bool waitForIt = false;
};

Command installCommand(const QString& debPath);
// What the user can type to install it by hand.
QString manualCommand(const QString& debPath);

}  // namespace PackageInstaller
