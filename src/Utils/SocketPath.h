#pragma once

#include <QString>

// Unix socket paths: sun_path holds 108 bytes, the last of them the terminating NUL. A longer
// path cannot be bound or reached, and the system's own error for it says little.
namespace SocketPath {

inline constexpr int kMaxBytes = 107;

// Empty when the path fits; otherwise a message naming the path, its length and the limit.
QString tooLong(const QString& path);

}  // namespace SocketPath
