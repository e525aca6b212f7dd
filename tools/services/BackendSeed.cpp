#include "BackendSeed.h"

#include <QBuffer>
#include <QColor>
#include <QCryptographicHash>
#include <QImage>

namespace {

QJsonObject intent(int category, int model, int isSearch, int enableUrl, const QString& website,
                   const QString& searchUrl, const QString& searchWord, int saveService = 0)
{
    return QJsonObject{{QStringLiteral("structure"), QStringLiteral("stand-in")},
                       {QStringLiteral("serviceCategory"), category},
                       {QStringLiteral("serviceModel"), model},
                       {QStringLiteral("saveService"), saveService},
                       {QStringLiteral("isSearch"), isSearch},
                       {QStringLiteral("enableUrl"), enableUrl},
                       {QStringLiteral("website"), website},
                       {QStringLiteral("searchUrl"), searchUrl},
                       {QStringLiteral("searchWord"), searchWord},
                       {QStringLiteral("hintContent"), QString()}};
}

}  // namespace

BackendSeed::BackendSeed(const QString& searchBase, const QString& appVersion)
    : mSearch(searchBase), mAppVersion(appVersion)
{
    const QString s = mSearch;
    // Local programs and folders (categories 19 and 20), a page opened by the application
    // itself (21), tickets (23) and nothing understood (0).
    mSemantic.insert(QStringLiteral("打开计算器"),
                     intent(19, 0, 0, 0, QStringLiteral("/usr/bin/gnome-calculator"), QString(), QString()));
    mSemantic.insert(QStringLiteral("打开下载文件夹"),
                     intent(20, 0, 0, 0, QStringLiteral("/tmp"), QString(), QString()));
    mSemantic.insert(QStringLiteral("打开设置"), intent(21, 0, 0, 0, QString(), QString(), QString()));
    mSemantic.insert(
        QStringLiteral("查询明天从北京到上海的火车票"),
        intent(23, 0, 1, 1, QString(), s + QStringLiteral("/tickets?from=*from*&to=*to*&date=*date*"),
               QStringLiteral("北京#,#上海#,#明天")));
    mSemantic.insert(QStringLiteral("随便说说"), intent(0, 1, 0, 0, QString(), QString(), QString()));
    // Model 1: the general search theme.
    mSemantic.insert(QStringLiteral("搜索天气"),
                     intent(1, 1, 1, 0, s, s + QStringLiteral("/s?wd=*"), QStringLiteral("天气")));
    mSemantic.insert(QStringLiteral("打开新闻网站"),
                     intent(2, 1, 0, 0, s + QStringLiteral("/news"), QString(), QString()));
    // Model 2: switching to a theme, with and without the record's own URLs.
    mSemantic.insert(QStringLiteral("我想看视频"), intent(5, 2, 0, 1, s + QStringLiteral("/video"),
                                                          s + QStringLiteral("/video?q=*"), QString()));
    mSemantic.insert(QStringLiteral("搜索猫的视频"),
                     intent(5, 2, 1, 0, s + QStringLiteral("/video"),
                            s + QStringLiteral("/video?q=*&again=*"), QStringLiteral("猫")));
    // Model 3: keeping the theme; the first one also saves it as the user's habit.
    mSemantic.insert(QStringLiteral("用购物网站搜索耳机"),
                     intent(6, 3, 1, 0, s + QStringLiteral("/shop"), s + QStringLiteral("/shop?k=*"),
                            QStringLiteral("耳机"), 1));
    mSemantic.insert(QStringLiteral("去购物网站"),
                     intent(6, 3, 0, 0, s + QStringLiteral("/shop"), QString(), QString()));
}

QJsonArray BackendSeed::deviceInfo() const
{
    // The virtual mouse: vid 3151, pid 4011 (hex, as mouse-sim defaults), customer code 0A0B0C.
    auto row = [](int id, const QString& code, const QString& name, const QString& prefix, int ifly,
                  int enable) {
        return QJsonObject{{QStringLiteral("id"), id},
                           {QStringLiteral("vid"), QStringLiteral("3151")},
                           {QStringLiteral("pid"), QStringLiteral("4011")},
                           {QStringLiteral("customerName"), name},
                           {QStringLiteral("customerCode"), code},
                           {QStringLiteral("homeImage"), QString(prefix + QStringLiteral("_home.png"))},
                           {QStringLiteral("explainImage"), QString(prefix + QStringLiteral("_explain.png"))},
                           {QStringLiteral("navImage"), QString(prefix + QStringLiteral("_nav.png"))},
                           {QStringLiteral("url"), QString()},
                           {QStringLiteral("enable"), enable},
                           {QStringLiteral("isIFlySpeech"), ifly}};
    };
    return QJsonArray{
        row(1, QStringLiteral("0A0B0C"), QStringLiteral("Zorvane"), QStringLiteral("zorvane"), 0, 1),
        row(2, QStringLiteral("0D0E0F"), QStringLiteral("Zorvane HK"), QStringLiteral("zorvanehk"), 1, 1),
        row(3, QStringLiteral("010203"), QStringLiteral("Retired"), QStringLiteral("retired"), 0, 0)};
}

QStringList BackendSeed::imageNames() const
{
    QStringList names;
    for (const QJsonValue& v : deviceInfo()) {
        const QJsonObject o = v.toObject();
        names << o.value(QLatin1String("homeImage")).toString()
              << o.value(QLatin1String("explainImage")).toString()
              << o.value(QLatin1String("navImage")).toString();
    }
    return names;
}

QJsonArray BackendSeed::directUI() const
{
    auto row = [](int id, const char* software, const char* ui, int edit) {
        return QJsonObject{{QStringLiteral("id"), id},
                           {QStringLiteral("softwareName"), QLatin1String(software)},
                           {QStringLiteral("uiName"), QLatin1String(ui)},
                           {QStringLiteral("edit"), edit}};
    };
    return QJsonArray{row(1, "gedit", "text view", 1), row(2, "org.gnome.TextEditor", "text view", 1),
                      row(3, "firefox-esr", "address bar", 1), row(4, "eog", "image", 0)};
}

QJsonObject BackendSeed::version() const
{
    return QJsonObject{{QStringLiteral("id"), 1},
                       {QStringLiteral("version"), mAppVersion},
                       {QStringLiteral("description"), QStringLiteral("1. 提升识别速度#2. 修复已知问题")},
                       {QStringLiteral("file"), QStringLiteral("zorvane_%1_amd64.deb").arg(mAppVersion)},
                       {QStringLiteral("date"), QStringLiteral("2026-11-01")},
                       {QStringLiteral("enable"), 1},
                       {QStringLiteral("user"), QStringLiteral("stand-in")}};
}

QJsonObject BackendSeed::openTime() const
{
    return QJsonObject{{QStringLiteral("id"), 1}, {QStringLiteral("time"), 1000}};
}

QJsonObject BackendSeed::calendarPhrase() const
{
    return QJsonObject{{QStringLiteral("id"), 1},
                       {QStringLiteral("title"), QStringLiteral("休息一下")},
                       {QStringLiteral("content"), QStringLiteral("起来走走，看看远处。")},
                       {QStringLiteral("link"), QString(mSearch + QStringLiteral("/rest"))},
                       {QStringLiteral("level"), 1}};
}

QJsonObject BackendSeed::semanticParsing(const QString& content) const
{
    QString key = content.trimmed();
    while (!key.isEmpty() && key.at(key.size() - 1).isPunct()) {
        key.chop(1);
    }
    return mSemantic.value(key, intent(0, 0, 0, 0, QString(), QString(), QString()));
}

QByteArray BackendSeed::image(const QString& name)
{
    const QByteArray hash = QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Md5);
    QImage picture(64, 64, QImage::Format_RGB32);
    picture.fill(
        QColor(static_cast<quint8>(hash[0]), static_cast<quint8>(hash[1]), static_cast<quint8>(hash[2])));
    for (int y = 16; y < 48; ++y) {
        for (int x = 16; x < 48; ++x) {
            picture.setPixel(x, y, qRgb(255, 255, 255));
        }
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return png;
}

QByteArray BackendSeed::installer(const QString& version, int kib)
{
    QByteArray bytes = "#!/bin/sh\necho 'Zorvane " + version.toUtf8() + " (stand-in installer)'\nexit 0\n";
    const int size = qMax(kib * 1024, bytes.size());
    bytes.reserve(size);
    while (bytes.size() < size) {
        bytes.append("# padding so that the download takes a while and shows its progress\n");
    }
    bytes.truncate(size);
    return bytes;
}
