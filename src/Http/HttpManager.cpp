#include "Http/HttpManager.h"

#include "Http/BaiduTranslate.h"
#include "Http/JsonUtils.h"
#include "Utils/AppConfig.h"
#include "Utils/Logging.h"
#include "Utils/UrlRules.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

namespace {

QString trimSlash(const QUrl& url)
{
    QString text = url.toString();
    while (text.endsWith(QLatin1Char('/'))) {
        text.chop(1);
    }
    return text;
}

// What the system will install must come over https; plain http only from this machine (the
// stand-in services).
bool isTrustedDownload(const QUrl& url)
{
    return url.scheme() == QLatin1String("https") || HttpRequest::isLoopbackHttp(url);
}

// A backend string inside a query: an '&', '#' or '%' in it would end the item or cut the query.
QString queryValue(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

// Bodies go in the indented form.
QByteArray body(const QJsonObject& object)
{
    return QJsonDocument(object).toJson();
}

template <typename Record>
HttpRequest::HandleFunc parsing(bool (*parse)(const QByteArray&, Record*),
                                HttpManager::ResultFunc<Record> result)
{
    return [parse, result](const QByteArray& reply) {
        Record record;
        const bool ok = parse(reply, &record);
        if (result) {
            result(ok, record);
        }
    };
}

}  // namespace

HttpManager::HttpManager()
    : HttpManager(HttpRequest::getInstance(), AppConfig::getInstance()->backendUrl(),
                  AppConfig::getInstance()->ipLookupUrl())
{
}

HttpManager::HttpManager(HttpRequest* request, const QUrl& backendBase, const QUrl& ipLookupBase)
    : mRequest(request), mBackendBase(backendBase), mIpLookupBase(ipLookupBase)
{
}

void HttpManager::setTimeout(int timeout)
{
    mTimeout = timeout;
}

QString HttpManager::backendUrl(const QString& path) const
{
    return trimSlash(mBackendBase) + QLatin1String(kPathPrefix) + path;
}

template <typename Record>
void HttpManager::getRecord(const QString& path, bool (*parse)(const QByteArray&, Record*),
                            ResultFunc<Record> result, TimeoutFunc onTimeout, ErrorFunc onError)
{
    mRequest->get(backendUrl(path), parsing(parse, std::move(result)), mTimeout, std::move(onTimeout),
                  std::move(onError));
}

template <typename Record>
void HttpManager::postRecord(const QString& path, const QByteArray& data,
                             bool (*parse)(const QByteArray&, Record*), ResultFunc<Record> result,
                             TimeoutFunc onTimeout, ErrorFunc onError)
{
    mRequest->post(backendUrl(path), data, parsing(parse, std::move(result)), mTimeout, std::move(onTimeout),
                   std::move(onError));
}

void HttpManager::registerDevice(Device device, ResultFunc<Device> result, TimeoutFunc onTimeout,
                                 ErrorFunc onError)
{
    const QJsonObject o{{QStringLiteral("dongleFlashID"), device.dongleFlashID},
                        {QStringLiteral("remoteFlashID"), device.remoteFlashID},
                        {QStringLiteral("customerCode"), device.customerCode},
                        {QStringLiteral("createDate"), device.createDate},
                        {QStringLiteral("online"), device.online}};
    postRecord(QStringLiteral("/device/register"), body(o), &JsonUtils::getDevice, std::move(result),
               std::move(onTimeout), std::move(onError));
}

void HttpManager::heartbeat(DeviceRecord record, ResultFunc<DeviceRecord> result, TimeoutFunc onTimeout,
                            ErrorFunc onError)
{
    const QJsonObject o{{QStringLiteral("device"), record.device},
                        {QStringLiteral("dongleFlashID"), record.dongleFlashID},
                        {QStringLiteral("remoteFlashID"), record.remoteFlashID},
                        {QStringLiteral("ip"), record.ip},
                        {QStringLiteral("appVersion"), record.appVersion},
                        {QStringLiteral("systemVersion"), record.systemVersion}};
    postRecord(QStringLiteral("/heartbeat/heartbeat"), body(o), &JsonUtils::getDeviceRecord,
               std::move(result), std::move(onTimeout), std::move(onError));
}

void HttpManager::getAppVersion(ResultFunc<VersionInfo> result, TimeoutFunc onTimeout, ErrorFunc onError)
{
    getRecord(QStringLiteral("/version/appVersion"), &JsonUtils::getVersionInfo, std::move(result),
              std::move(onTimeout), std::move(onError));
}

void HttpManager::getDeviceInfoList(ResultFunc<QList<DeviceInfo>> result, TimeoutFunc onTimeout,
                                    ErrorFunc onError)
{
    getRecord(QStringLiteral("/deviceInfo/query"), &JsonUtils::getDeviceInfoList, std::move(result),
              std::move(onTimeout), std::move(onError));
}

void HttpManager::getDirectUIList(ResultFunc<QList<DirectUI>> result, TimeoutFunc onTimeout,
                                  ErrorFunc onError)
{
    getRecord(QStringLiteral("/directui/queryAll"), &JsonUtils::getDirectUIList, std::move(result),
              std::move(onTimeout), std::move(onError));
}

void HttpManager::getDeviceOpenTime(ResultFunc<DeviceOpenTime> result, TimeoutFunc onTimeout,
                                    ErrorFunc onError)
{
    getRecord(QStringLiteral("/deviceOpenTime/query"), &JsonUtils::getDeviceOpenTime, std::move(result),
              std::move(onTimeout), std::move(onError));
}

void HttpManager::getIpAddress(ResultFunc<QString> result, TimeoutFunc onTimeout, ErrorFunc onError)
{
    mRequest->get(
        backendUrl(QStringLiteral("/server/ipAddress")),
        [result](const QByteArray& reply) {
            if (result) {
                result(true, QString::fromUtf8(reply).remove(QLatin1Char('\n')));
            }
        },
        mTimeout, std::move(onTimeout), std::move(onError));
}

void HttpManager::getIpInfo(QString ip, ResultFunc<IpInfo> result, TimeoutFunc onTimeout, ErrorFunc onError)
{
    const QString url =
        trimSlash(mIpLookupBase) + QStringLiteral("/service/getIpInfo.php?ip=%1").arg(queryValue(ip));
    mRequest->get(url, parsing(&JsonUtils::getIpInfo, std::move(result)), mTimeout, std::move(onTimeout),
                  std::move(onError));
}

void HttpManager::uploadIpInfo(IpInfo info, ResultFunc<IpInfo> result, TimeoutFunc onTimeout,
                               ErrorFunc onError)
{
    const QJsonObject o{{QStringLiteral("ip"), info.ip},
                        {QStringLiteral("country"), info.country},
                        {QStringLiteral("country_id"), info.country_id},
                        {QStringLiteral("area"), info.area},
                        {QStringLiteral("area_id"), info.area_id},
                        {QStringLiteral("region"), info.region},
                        {QStringLiteral("region_id"), info.region_id},
                        {QStringLiteral("city"), info.city},
                        {QStringLiteral("city_id"), info.city_id},
                        {QStringLiteral("county"), info.county},
                        {QStringLiteral("county_id"), info.county_id},
                        {QStringLiteral("isp"), info.isp},
                        {QStringLiteral("isp_id"), info.isp_id}};
    postRecord(QStringLiteral("/ipinfo/upload"), body(o), &JsonUtils::getIpInfo, std::move(result),
               std::move(onTimeout), std::move(onError));
}

void HttpManager::uploadRecoed(TextRecord record, BoolFunc result, TimeoutFunc onTimeout, ErrorFunc onError)
{
    mRequest->post(
        backendUrl(QStringLiteral("/textrecord/upload")), JsonUtils::textRecordBody(record),
        [result](const QByteArray& reply) {
            if (result) {
                result(JsonUtils::parseBaseMsg(reply).code == 1);
            }
        },
        mTimeout, std::move(onTimeout), std::move(onError));
}

void HttpManager::analyzeWord(QString content, int serviceCategory, int ip, QString version,
                              ResultFunc<SemanticParsingResult> result, TimeoutFunc onTimeout,
                              ErrorFunc onError)
{
    const QJsonObject o{{QStringLiteral("content"), content},
                        {QStringLiteral("serviceCategory"), serviceCategory},
                        {QStringLiteral("ip"), ip},
                        {QStringLiteral("version"), version}};
    postRecord(QStringLiteral("/semanticParsing/semanticParsing"), body(o),
               &JsonUtils::parseSemanticParsingResult, std::move(result), std::move(onTimeout),
               std::move(onError));
}

void HttpManager::feedback(QString title, QString content, int timeout, BoolFunc result,
                           TimeoutFunc onTimeout, ErrorFunc onError)
{
    const QString url = backendUrl(
        QStringLiteral("/feedback/upload?title=%1&content=%2").arg(queryValue(title), queryValue(content)));
    mRequest->get(
        url,
        [result](const QByteArray& reply) {
            if (result) {
                result(QString::fromUtf8(reply).contains(QStringLiteral("反馈成功")));
            }
        },
        timeout, std::move(onTimeout), std::move(onError));
}

void HttpManager::getCalendarPhrases(ResultFunc<CalendarPhrases> result, TimeoutFunc onTimeout,
                                     ErrorFunc onError)
{
    getRecord(QStringLiteral("/calendarPhrases/getCalendarPhrases"), &JsonUtils::getCalendarPhrases,
              std::move(result), std::move(onTimeout), std::move(onError));
}

void HttpManager::downloadImage(QString image, QString path, HttpRequest::DownloadResultFunc result,
                                ErrorFunc onError)
{
    mRequest->downloadFile(backendUrl(QStringLiteral("/deviceInfo/download?image=%1").arg(queryValue(image))),
                           path, nullptr, std::move(result), std::move(onError), kMaxPictureBytes);
}

void HttpManager::downloadApp(QString version, QString path, HttpRequest::DownloadProgressFunc progress,
                              HttpRequest::DownloadResultFunc result, ErrorFunc onError)
{
    const QString url =
        backendUrl(QStringLiteral("/version/appDownload?version=%1").arg(queryValue(version)));
    if (!isTrustedDownload(QUrl::fromUserInput(url))) {
        qCWarning(lcHttp) << "the update is not fetched over plain http:" << UrlRules::forLog(url);
        QTimer::singleShot(0, mRequest, [url, onError] {
            if (onError) {
                onError(UrlRules::forLog(url), QNetworkReply::ProtocolUnknownError);
            }
        });
        return;
    }
    mRequest->downloadFile(url, path, std::move(progress), std::move(result), std::move(onError),
                           kMaxInstallerBytes);
}

void HttpManager::cancelDownload()
{
    mRequest->cancel();
}

BaiduTranslate* HttpManager::translator()
{
    return mTranslator != nullptr ? mTranslator : BaiduTranslate::getInstance();
}

void HttpManager::uploadTranslation(int ip, const QString& text, const BaiduTranslateMessage& message)
{
    TextRecord record;
    record.ip = ip;
    record.from = message.from;
    record.to = message.to;
    record.src = text;
    QStringList lines;
    for (const BaiduTranslateResult& r : message.result) {
        lines << r.dst;
    }
    record.dst = lines.join(QLatin1Char('\n'));
    record.type = 1;
    uploadRecoed(record, nullptr, nullptr, nullptr);
}

void HttpManager::baiduTranslate(int ip, QString from, QString to, QString text,
                                 ResultFunc<BaiduTranslateMessage> result, TimeoutFunc onTimeout,
                                 ErrorFunc onError)
{
    mRequest->get(
        translator()->buildUrl(from, to, text),
        [this, ip, text, result](const QByteArray& reply) {
            BaiduTranslateMessage message;
            JsonUtils::getBaiduTranslateResult(reply, &message);
            if (result) {
                result(true, message);
            }
            uploadTranslation(ip, text, message);
        },
        mTimeout, std::move(onTimeout), std::move(onError));
}

bool HttpManager::syncBaiduTranslate(int ip, QString from, QString to, QString text,
                                     BaiduTranslateMessage* message)
{
    QByteArray reply;
    if (!mRequest->syncGet(translator()->buildUrl(from, to, text), &reply)) {
        return false;
    }
    JsonUtils::getBaiduTranslateResult(reply, message);
    uploadTranslation(ip, text, *message);
    return true;
}
