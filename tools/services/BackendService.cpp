#include "BackendService.h"

#include "Fault.h"
#include "UploadLog.h"

#include <httplib.h>

#include <QJsonDocument>

namespace {

QJsonObject bodyOf(const httplib::Request& req)
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(req.body)).object();
}

}  // namespace

BackendService::BackendService(const Fault* fault, const BackendSeed* seed, UploadLog* uploads,
                               int installerKib)
    : HttpService(QStringLiteral("backend"), fault),
      mSeed(seed),
      mUploads(uploads),
      mInstallerKib(installerKib)
{
}

QByteArray BackendService::envelope(int code, const QString& msg, const QJsonValue& data)
{
    QJsonObject o{{QStringLiteral("code"), code}, {QStringLiteral("msg"), msg}};
    if (!data.isUndefined()) {
        o.insert(QStringLiteral("data"), data);
    }
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}

QByteArray BackendService::errorBody(int code) const
{
    return envelope(code, QStringLiteral("stand-in error"));
}

void BackendService::json(httplib::Response& res, const QJsonValue& data) const
{
    answer(res, envelope(1, QStringLiteral("success"), data), "application/json");
}

void BackendService::addRoutes(httplib::Server& server)
{
    const std::string p = kPrefix;
    server.Get(p + "/version/appVersion",
               [this](const httplib::Request&, httplib::Response& res) { json(res, mSeed->version()); });
    server.Get(p + "/deviceInfo/query",
               [this](const httplib::Request&, httplib::Response& res) { json(res, mSeed->deviceInfo()); });
    server.Get(p + "/directui/queryAll",
               [this](const httplib::Request&, httplib::Response& res) { json(res, mSeed->directUI()); });
    server.Get(p + "/deviceOpenTime/query",
               [this](const httplib::Request&, httplib::Response& res) { json(res, mSeed->openTime()); });
    server.Get(
        p + "/calendarPhrases/getCalendarPhrases",
        [this](const httplib::Request&, httplib::Response& res) { json(res, mSeed->calendarPhrase()); });
    server.Get(p + "/server/ipAddress", [this](const httplib::Request& req, httplib::Response& res) {
        answer(res, QByteArray::fromStdString(req.remote_addr) + '\n', "text/plain");
    });

    server.Post(p + "/device/register", [this](const httplib::Request& req, httplib::Response& res) {
        QJsonObject device = bodyOf(req);
        mUploads->add(QStringLiteral("/device/register"), device);
        device.insert(QStringLiteral("id"), mNextId++);
        json(res, device);
    });
    server.Post(p + "/heartbeat/heartbeat", [this](const httplib::Request& req, httplib::Response& res) {
        QJsonObject record = bodyOf(req);
        mUploads->add(QStringLiteral("/heartbeat/heartbeat"), record);
        record.insert(QStringLiteral("id"), mNextId++);
        record.insert(QStringLiteral("bootTime"), QStringLiteral("2026-11-23 08:00:00"));
        record.insert(QStringLiteral("shutdownTime"), QString());
        json(res, record);
    });
    server.Post(p + "/ipinfo/upload", [this](const httplib::Request& req, httplib::Response& res) {
        QJsonObject info = bodyOf(req);
        mUploads->add(QStringLiteral("/ipinfo/upload"), info);
        info.insert(QStringLiteral("id"), mNextId++);
        json(res, info);
    });
    server.Post(p + "/textrecord/upload", [this](const httplib::Request& req, httplib::Response& res) {
        mUploads->add(QStringLiteral("/textrecord/upload"), bodyOf(req));
        json(res, QJsonValue());
    });
    server.Post(p + "/semanticParsing/semanticParsing",
                [this](const httplib::Request& req, httplib::Response& res) {
                    const QJsonObject query = bodyOf(req);
                    json(res, mSeed->semanticParsing(query.value(QLatin1String("content")).toString()));
                });
    server.Get(p + "/feedback/upload", [this](const httplib::Request& req, httplib::Response& res) {
        mUploads->add(QStringLiteral("/feedback/upload"),
                      QJsonObject{{QStringLiteral("title"), param(req, "title")},
                                  {QStringLiteral("content"), param(req, "content")}});
        answer(res, envelope(1, QStringLiteral("反馈成功")), "application/json");
    });
    server.Get(p + "/deviceInfo/download", [this](const httplib::Request& req, httplib::Response& res) {
        const QString name = param(req, "image");
        if (!mSeed->imageNames().contains(name)) {
            res.status = 404;
            answer(res, envelope(0, QStringLiteral("no such image")), "application/json");
            return;
        }
        answer(res, BackendSeed::image(name), "image/png");
    });
    server.Get(p + "/version/appDownload", [this](const httplib::Request& req, httplib::Response& res) {
        const QString version = param(req, "version");
        if (version != mSeed->appVersion()) {
            res.status = 404;
            answer(res, envelope(0, QStringLiteral("no such version")), "application/json");
            return;
        }
        answer(res, BackendSeed::installer(version, mInstallerKib), "application/octet-stream");
    });
    server.Get("/__uploads", [this](const httplib::Request&, httplib::Response& res) {
        res.set_content(QJsonDocument(mUploads->entries()).toJson().toStdString(), "application/json");
    });
    // The product site and the contact page the application links to by default.
    server.Get("/", [this](const httplib::Request&, httplib::Response& res) {
        answer(res, page("Zorvane", "The product site of the stand-in services."),
               "text/html; charset=utf-8");
    });
    server.Get("/contact", [this](const httplib::Request&, httplib::Response& res) {
        answer(res, page("Contact", "The contact page of the stand-in services."),
               "text/html; charset=utf-8");
    });
}

QByteArray BackendService::page(const char* title, const char* text)
{
    return QByteArray("<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>") + title +
           "</title></head><body><h1>" + title + "</h1><p>" + text + "</p></body></html>\n";
}
