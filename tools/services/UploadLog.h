#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <mutex>

// Everything the application uploaded to the backend (text records, registrations, heartbeats,
// address reports, feedback), in order of arrival, for tests and for the person at the
// console. Written by the HTTP threads; optionally mirrored to a file, one JSON line each.
class UploadLog {
public:
    void setFile(const QString& path);
    // endpoint is the path below the prefix; body the parsed JSON body or the query items.
    void add(const QString& endpoint, const QJsonObject& body);
    QJsonArray entries() const;
    QJsonArray entries(const QString& endpoint) const;

private:
    mutable std::mutex mMutex;
    QJsonArray mEntries;
    QString mFile;
};
