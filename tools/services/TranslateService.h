#pragma once

#include "HttpService.h"

#include "Platform/ChineseConverter.h"

#include <QHash>

// Text translation at /api/trans/vip/translate: checks the app id and the MD5 sign over
// appid + q + salt + key (q as the service reads it, decoded), and answers one trans_result
// entry per line of q: from a small phrase table, through OpenCC for Traditional Chinese, and
// otherwise as an echo marked with the target language, "[en] ...".
class TranslateService : public HttpService {
public:
    TranslateService(const Fault* fault, const QString& appId, const QString& key);

    static QString sign(const QString& appId, const QString& q, const QString& salt, const QString& key);
    // One line in the target language; from is a language code or "auto".
    QString translateLine(const QString& line, const QString& from, const QString& to);
    static QString detect(const QString& text);

protected:
    void addRoutes(httplib::Server& server) override;
    QByteArray errorBody(int code) const override;

private:
    static QByteArray error(const QString& code, const QString& message);

    QString mAppId;
    QString mKey;
    QHash<QString, QString> mZhToEn;
    QHash<QString, QString> mEnToZh;
    ChineseConverter mConverter;
};
