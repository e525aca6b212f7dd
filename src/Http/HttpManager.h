#pragma once

#include "Http/BackendRecords.h"
#include "Http/BaiduTranslateMessage.h"
#include "Http/HttpRequest.h"
#include "Utils/Singleton.h"

#include <QUrl>

class BaiduTranslate;

#include <functional>

// The typed face of the vendor backend: builds each call's URL and JSON body, sends it through
// HttpRequest and hands the parsed record to the result function. Main thread only.
class HttpManager : public Singleton<HttpManager> {
public:
    static constexpr char kPathPrefix[] = "/BelmorZorvaneV2Mac";
    static constexpr int kDefaultTimeoutMs = 5000;
    // The branding pictures are a few hundred kilobytes; the installer, with the libraries it
    // carries, some tens of megabytes.
    static constexpr qint64 kMaxPictureBytes = 8 * 1024 * 1024;
    static constexpr qint64 kMaxInstallerBytes = 512 * 1024 * 1024;

    template <typename Record>
    using ResultFunc = std::function<void(bool, Record)>;
    using BoolFunc = std::function<void(bool)>;
    using TimeoutFunc = HttpRequest::TimeoutFunc;
    using ErrorFunc = HttpRequest::ErrorFunc;

    // Tests point it at their own servers; getInstance() takes the configured hosts.
    HttpManager(HttpRequest* request, const QUrl& backendBase, const QUrl& ipLookupBase);

    void setTimeout(int timeout);
    int timeout() const { return mTimeout; }

    void registerDevice(Device device, ResultFunc<Device> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void heartbeat(DeviceRecord record, ResultFunc<DeviceRecord> result, TimeoutFunc onTimeout,
                   ErrorFunc onError);
    void getAppVersion(ResultFunc<VersionInfo> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void getDeviceInfoList(ResultFunc<QList<DeviceInfo>> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void getDirectUIList(ResultFunc<QList<DirectUI>> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void getDeviceOpenTime(ResultFunc<DeviceOpenTime> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void getIpAddress(ResultFunc<QString> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void getIpInfo(QString ip, ResultFunc<IpInfo> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void uploadIpInfo(IpInfo info, ResultFunc<IpInfo> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void uploadRecoed(TextRecord record, BoolFunc result, TimeoutFunc onTimeout, ErrorFunc onError);
    void analyzeWord(QString content, int serviceCategory, int ip, QString version,
                     ResultFunc<SemanticParsingResult> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void feedback(QString title, QString content, int timeout, BoolFunc result, TimeoutFunc onTimeout,
                  ErrorFunc onError);
    void getCalendarPhrases(ResultFunc<CalendarPhrases> result, TimeoutFunc onTimeout, ErrorFunc onError);
    void downloadImage(QString image, QString path, HttpRequest::DownloadResultFunc result,
                       ErrorFunc onError);
    void downloadApp(QString version, QString path, HttpRequest::DownloadProgressFunc progress,
                     HttpRequest::DownloadResultFunc result, ErrorFunc onError);
    void cancelDownload();

    // Translation; every reply is also reported to the backend as a TextRecord of type 1.
    void baiduTranslate(int ip, QString from, QString to, QString text,
                        ResultFunc<BaiduTranslateMessage> result, TimeoutFunc onTimeout, ErrorFunc onError);
    // Blocking (a local event loop, at most 5000 ms); true if an answer arrived.
    bool syncBaiduTranslate(int ip, QString from, QString to, QString text, BaiduTranslateMessage* message);
    // Tests: the signer to use instead of the configured one; not owned.
    void setTranslator(BaiduTranslate* translator) { mTranslator = translator; }

    // A backend URL: base, prefix, then path (with its query).
    QString backendUrl(const QString& path) const;

private:
    friend class Singleton<HttpManager>;
    HttpManager();

    template <typename Record>
    void getRecord(const QString& path, bool (*parse)(const QByteArray&, Record*), ResultFunc<Record> result,
                   TimeoutFunc onTimeout, ErrorFunc onError);
    template <typename Record>
    void postRecord(const QString& path, const QByteArray& body, bool (*parse)(const QByteArray&, Record*),
                    ResultFunc<Record> result, TimeoutFunc onTimeout, ErrorFunc onError);

    BaiduTranslate* translator();
    void uploadTranslation(int ip, const QString& text, const BaiduTranslateMessage& message);

    HttpRequest* mRequest;
    BaiduTranslate* mTranslator = nullptr;
    QUrl mBackendBase;
    QUrl mIpLookupBase;
    int mTimeout = kDefaultTimeoutMs;
};
