#pragma once

#include <QString>
#include <QStringList>

// Where the process keeps its files, in the folders the XDG base directories name, each ending
// in "ZorvaneV2" (the application name set in main): settings in the configuration folder, the
// log in the state folder, downloaded pictures and spoken audio in the cache, the command words
// in the data folder. Every path of ours under those folders is made here.
namespace AppPaths {

inline constexpr char kApplicationName[] = "ZorvaneV2";

enum class Kind { Config, State, Cache, Data };

// The folder of a kind, created if missing. An unwritable location is logged once.
QString dir(Kind kind);
// A file in the folder of its kind: file(Kind::Config, "/preferences.ini").
QString file(Kind kind, const QString& nameWithSlash);

inline QString dataDir()
{
    return dir(Kind::Data);
}
inline QString dataFile(const QString& nameWithSlash)
{
    return file(Kind::Data, nameWithSlash);
}
inline QString configFile(const QString& nameWithSlash)
{
    return file(Kind::Config, nameWithSlash);
}
inline QString stateFile(const QString& nameWithSlash)
{
    return file(Kind::State, nameWithSlash);
}
inline QString cacheFile(const QString& nameWithSlash)
{
    return file(Kind::Cache, nameWithSlash);
}

// Earlier versions kept everything in the data folder. Moves what belongs elsewhere to its
// folder: a file already at its new place is never overwritten. Each file arrives whole or not
// at all (renamed, or copied under a temporary name and renamed), and its old copy goes only
// after that, so an interrupted move leaves it where it can be found next start. Returns what
// was done or left, for the log.
QStringList moveEarlierFiles();

}  // namespace AppPaths
