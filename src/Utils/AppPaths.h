#pragma once

#include <QString>

// Where the process keeps its files. The data folder ends in "ZorvaneV2" (the
// application name set in main); the folder an installed binary lies in is not writable.
namespace AppPaths {

inline constexpr char kApplicationName[] = "ZorvaneV2";

// The application data folder, created if missing. An unwritable location is logged once.
QString dataDir();

// A file in the data folder: dataFile("/preferences.ini").
QString dataFile(const QString& nameWithSlash);

}  // namespace AppPaths
