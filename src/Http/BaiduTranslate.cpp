#include "Http/BaiduTranslate.h"

#include "Utils/AppConfig.h"

#include <QCryptographicHash>

#include <cstdlib>

BaiduTranslate::BaiduTranslate()
    : BaiduTranslate(AppConfig::getInstance()->translateUrl(),
                     AppConfig::getInstance()->credential(AppConfig::TranslateAppId),
                     AppConfig::getInstance()->credential(AppConfig::TranslateKey))
{
}

BaiduTranslate::BaiduTranslate(const QUrl& base, const QString& appId, const QString& key, QObject* parent)
    : QObject(parent), mBase(base), mAppId(appId), mKey(key)
{
}

QString BaiduTranslate::UrlEncode(QString text)
{
    return QString::fromLatin1(text.toUtf8().toPercentEncoding());
}

QString BaiduTranslate::MD5Encode(QString text)
{
    return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
}

QString BaiduTranslate::protectQueryText(const QString& q)
{
    // A raw '&' would end q, '%' start an escape, '+' read as a blank and '#' cut the query:
    // the service would then translate and check another text than the one signed.
    QString out;
    out.reserve(q.size());
    for (const QChar c : q) {
        switch (c.unicode()) {
            case '%':
                out += QLatin1String("%25");
                break;
            case '&':
                out += QLatin1String("%26");
                break;
            case '+':
                out += QLatin1String("%2B");
                break;
            case '#':
                out += QLatin1String("%23");
                break;
            default:
                out += c;
        }
    }
    return out;
}

QString BaiduTranslate::buildUrl(QString from, QString to, QString q)
{
    return buildUrl(from, to, q, QString::number(std::rand()));
}

QString BaiduTranslate::buildUrl(const QString& from, const QString& to, const QString& q,
                                 const QString& salt) const
{
    // Signed over q as it is, not encoded.
    const QString sign = MD5Encode(UrlEncode(mAppId) + q + UrlEncode(salt) + UrlEncode(mKey));
    QString base = mBase.toString();
    while (base.endsWith(QLatin1Char('/'))) {
        base.chop(1);
    }
    return base + QStringLiteral("/api/trans/vip/translate?q=%1&from=%2&to=%3&appid=%4&salt=%5&sign=%6")
                      .arg(protectQueryText(q), UrlEncode(from), UrlEncode(to), UrlEncode(mAppId),
                           UrlEncode(salt), UrlEncode(sign));
}
