#pragma once

#include "Utils/Singleton.h"

#include <QObject>
#include <QUrl>

// Builds the signed URL of the translation service. The credentials and host come from
// the configuration.
class BaiduTranslate : public QObject, public Singleton<BaiduTranslate> {
    Q_OBJECT

public:
    // Tests hand in their own host and credentials.
    BaiduTranslate(const QUrl& base, const QString& appId, const QString& key, QObject* parent = nullptr);

    QString buildUrl(QString from, QString to, QString q);
    // With a chosen salt, so that a URL can be checked.
    QString buildUrl(const QString& from, const QString& to, const QString& q, const QString& salt) const;

    static QString UrlEncode(QString text);
    static QString MD5Encode(QString text);
    // Only the characters that would change what the query says; the rest (Chinese text
    // included) is encoded when the URL is parsed.
    static QString protectQueryText(const QString& q);

private:
    friend class Singleton<BaiduTranslate>;
    BaiduTranslate();

    QUrl mBase;
    QString mAppId;
    QString mKey;
};
