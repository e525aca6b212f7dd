#pragma once

#include <QString>

// Where the console keeps the branding pictures the backend names: a folder of their own in
// the cache folder, so that no name the backend sends can reach the preferences, the command
// words or the log.
namespace PictureFiles {

// <cache folder>/pictures, created if missing.
QString folder();

// The local file of a picture reference: the URL-safe Base64 of its file name (the standard
// alphabet's "/" would make a folder of it) in folder(). Empty, after a log line, for a
// reference that is no plain name: with "..", a backslash, a scheme, an absolute path, control
// characters or no file name at all.
QString localPath(const QString& reference);

}  // namespace PictureFiles
