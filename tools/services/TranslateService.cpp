#include "TranslateService.h"

#include <httplib.h>

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

TranslateService::TranslateService(const Fault* fault, const QString& appId, const QString& key)
    : HttpService(QStringLiteral("translate"), fault), mAppId(appId), mKey(key)
{
    const QPair<QString, QString> phrases[] = {
        {QStringLiteral("你好"), QStringLiteral("Hello")},
        {QStringLiteral("谢谢"), QStringLiteral("Thank you")},
        {QStringLiteral("早上好"), QStringLiteral("Good morning")},
        {QStringLiteral("今天天气很好"), QStringLiteral("The weather is nice today")},
        {QStringLiteral("我想去北京看看"), QStringLiteral("I want to visit Beijing")},
    };
    for (const auto& [zh, en] : phrases) {
        mZhToEn.insert(zh, en);
        mEnToZh.insert(en.toLower(), zh);
    }
}

QString TranslateService::sign(const QString& appId, const QString& q, const QString& salt,
                               const QString& key)
{
    return QString::fromLatin1(
        QCryptographicHash::hash((appId + q + salt + key).toUtf8(), QCryptographicHash::Md5).toHex());
}

QString TranslateService::detect(const QString& text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x4E00 && c.unicode() <= 0x9FFF) {
            return QStringLiteral("zh");
        }
    }
    return QStringLiteral("en");
}

QString TranslateService::translateLine(const QString& line, const QString& from, const QString& to)
{
    const QString source = from == QLatin1String("auto") ? detect(line) : from;
    if (source == to) {
        return line;
    }
    if (to == QLatin1String("cht") && (source == QLatin1String("zh") || source == QLatin1String("cht"))) {
        return mConverter.simplifiedToTraditional(line);
    }
    // The table holds sentences without their closing mark; the mark follows the target.
    QString bare = line.trimmed();
    QString mark;
    if (!bare.isEmpty() && bare.at(bare.size() - 1).isPunct()) {
        mark = bare.right(1);
        bare.chop(1);
    }
    if (source == QLatin1String("zh") && to == QLatin1String("en") && mZhToEn.contains(bare)) {
        return mZhToEn.value(bare) + (mark.isEmpty() ? QString() : QStringLiteral("."));
    }
    if (source == QLatin1String("en") && to == QLatin1String("zh") && mEnToZh.contains(bare.toLower())) {
        return mEnToZh.value(bare.toLower()) + (mark.isEmpty() ? QString() : QStringLiteral("。"));
    }
    return QStringLiteral("[%1] %2").arg(to, line);
}

QByteArray TranslateService::error(const QString& code, const QString& message)
{
    return QJsonDocument(
               QJsonObject{{QStringLiteral("error_code"), code}, {QStringLiteral("error_msg"), message}})
        .toJson(QJsonDocument::Compact);
}

QByteArray TranslateService::errorBody(int code) const
{
    return error(QString::number(code), QStringLiteral("stand-in error"));
}

void TranslateService::addRoutes(httplib::Server& server)
{
    server.Get("/api/trans/vip/translate", [this](const httplib::Request& req, httplib::Response& res) {
        const QString q = param(req, "q");
        const QString from = param(req, "from");
        const QString to = param(req, "to");
        const QString appId = param(req, "appid");
        const QString salt = param(req, "salt");
        if (q.isEmpty() || from.isEmpty() || to.isEmpty() || salt.isEmpty()) {
            answer(res, error(QStringLiteral("54000"), QStringLiteral("Required parameter is missing")),
                   "application/json");
            return;
        }
        if (appId != mAppId) {
            answer(res, error(QStringLiteral("52003"), QStringLiteral("UNAUTHORIZED USER")),
                   "application/json");
            return;
        }
        if (param(req, "sign") != sign(appId, q, salt, mKey)) {
            answer(res, error(QStringLiteral("54001"), QStringLiteral("Invalid Sign")), "application/json");
            return;
        }
        QJsonArray results;
        for (const QString& line : q.split(QLatin1Char('\n'))) {
            results.append(QJsonObject{{QStringLiteral("src"), line},
                                       {QStringLiteral("dst"), translateLine(line, from, to)}});
        }
        const QString reportedFrom = from == QLatin1String("auto") ? detect(q) : from;
        answer(res,
               QJsonDocument(QJsonObject{{QStringLiteral("from"), reportedFrom},
                                         {QStringLiteral("to"), to},
                                         {QStringLiteral("trans_result"), results}})
                   .toJson(QJsonDocument::Compact),
               "application/json");
    });
}
