#include "UploadLog.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>

void UploadLog::setFile(const QString& path)
{
    std::lock_guard<std::mutex> lock(mMutex);
    mFile = path;
}

void UploadLog::add(const QString& endpoint, const QJsonObject& body)
{
    const QJsonObject entry{
        {QStringLiteral("endpoint"), endpoint},
        {QStringLiteral("time"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
        {QStringLiteral("body"), body}};
    std::lock_guard<std::mutex> lock(mMutex);
    mEntries.append(entry);
    if (!mFile.isEmpty()) {
        QFile file(mFile);
        if (file.open(QIODevice::Append)) {
            file.write(QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n');
        }
    }
}

QJsonArray UploadLog::entries() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return mEntries;
}

QJsonArray UploadLog::entries(const QString& endpoint) const
{
    QJsonArray picked;
    for (const QJsonValue& v : entries()) {
        if (v.toObject().value(QLatin1String("endpoint")).toString() == endpoint) {
            picked.append(v);
        }
    }
    return picked;
}
