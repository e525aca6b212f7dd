#pragma once

#include <QString>

// Copies of the user's files that the program sets aside instead of losing them: a file it
// cannot read (moved, so that a fresh one can take its place) and the state before a
// migration (copied). Each copy is "<file>.<tag>-<yyyyMMdd-HHmmss-zzz>" beside the file; of
// each tag the newest kKeptCopies stay, so that a file that keeps breaking cannot fill the disk.
namespace FileAside {

inline constexpr int kKeptCopies = 3;

// Renames path to the copy's name. The copy's path, or empty when the file could not be moved.
QString moveAside(const QString& path, const QString& tag);

// Copies path to the copy's name. The copy's path, or empty when there was nothing to copy or
// the copy failed.
QString copyAside(const QString& path, const QString& tag);

}  // namespace FileAside
