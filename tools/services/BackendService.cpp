#include "BackendService.h"

#include "Fault.h"
#include "ServicesLog.h"
#include "UploadLog.h"

#include <httplib.h>

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

QJsonObject bodyOf(const httplib::Request& req)
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(req.body)).object();
}

// The keys of each POST body; true: a whole number, false: a string.
const QHash<QString, QList<QPair<QString, bool>>>& postBodies()
{
    static const QHash<QString, QList<QPair<QString, bool>>> bodies = [] {
        QHash<QString, QList<QPair<QString, bool>>> b;
        auto text = [](const char* key) { return qMakePair(QString::fromLatin1(key), false); };
        auto number = [](const char* key) { return qMakePair(QString::fromLatin1(key), true); };
        b.insert(QStringLiteral("/device/register"),
                 {text("dongleFlashID"), text("remoteFlashID"), text("customerCode"), text("createDate"),
                  number("online")});
        b.insert(QStringLiteral("/heartbeat/heartbeat"),
                 {number("device"), text("dongleFlashID"), text("remoteFlashID"), number("ip"),
                  text("appVersion"), text("systemVersion")});
        b.insert(QStringLiteral("/ipinfo/upload"),
                 {text("ip"), text("country"), text("country_id"), text("area"), text("area_id"),
                  text("region"), text("region_id"), text("city"), text("city_id"), text("county"),
                  text("county_id"), text("isp"), text("isp_id")});
        b.insert(QStringLiteral("/textrecord/upload"),
                 {number("ip"), text("from"), text("to"), text("src"), text("dst"), number("type")});
        b.insert(QStringLiteral("/semanticParsing/semanticParsing"),
                 {text("content"), number("serviceCategory"), number("ip"), text("version")});
        return b;
    }();
    return bodies;
}

}  // namespace

QString BackendService::checkBody(const QString& endpoint, const QByteArray& body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        return QStringLiteral("body is no JSON object");
    }
    const QJsonObject object = document.object();
    const QList<QPair<QString, bool>> keys = postBodies().value(endpoint);
    for (const auto& key : keys) {
        const QJsonValue value = object.value(key.first);
        if (value.isUndefined()) {
            return QStringLiteral("missing key ") + key.first;
        }
        const double number = value.toDouble();
        const bool wholeNumber =
            value.isDouble() && std::trunc(number) == number && std::abs(number) <= INT_MAX;
        if (key.second ? !wholeNumber : !value.isString()) {
            return QStringLiteral("key %1 must be %2")
                .arg(key.first, key.second ? QStringLiteral("an integer") : QStringLiteral("a string"));
        }
    }
    for (auto it = object.begin(); it != object.end(); ++it) {
        const bool known = std::any_of(
            keys.begin(), keys.end(), [&](const QPair<QString, bool>& key) { return key.first == it.key(); });
        if (!known) {
            return QStringLiteral("unknown key ") + it.key();
        }
    }
    return QString();
}

bool BackendService::accept(const httplib::Request& req, httplib::Response& res,
                            const QString& endpoint) const
{
    const QString fault = checkBody(endpoint, QByteArray::fromStdString(req.body));
    if (fault.isEmpty()) {
        return true;
    }
    qCWarning(lcServices).noquote() << "backend: refused" << endpoint + QLatin1Char(':') << fault;
    res.status = 400;
    answer(res, envelope(400, fault), "application/json");
    return false;
}

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
    server.Get(p + "/version/appVersion", [this](const httplib::Request&, httplib::Response& res) {
        // The record's members are read only when present: a digest of the package rides along.
        QJsonObject record = mSeed->version();
        const QByteArray package = BackendSeed::installer(mSeed->appVersion(), mInstallerKib);
        record.insert(
            QStringLiteral("sha256"),
            QString::fromLatin1(QCryptographicHash::hash(package, QCryptographicHash::Sha256).toHex()));
        json(res, record);
    });
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
        if (!accept(req, res, QStringLiteral("/device/register"))) {
            return;
        }
        QJsonObject device = bodyOf(req);
        mUploads->add(QStringLiteral("/device/register"), device);
        device.insert(QStringLiteral("id"), mNextId++);
        json(res, device);
    });
    server.Post(p + "/heartbeat/heartbeat", [this](const httplib::Request& req, httplib::Response& res) {
        if (!accept(req, res, QStringLiteral("/heartbeat/heartbeat"))) {
            return;
        }
        QJsonObject record = bodyOf(req);
        mUploads->add(QStringLiteral("/heartbeat/heartbeat"), record);
        record.insert(QStringLiteral("id"), mNextId++);
        record.insert(QStringLiteral("bootTime"), QStringLiteral("2026-11-23 08:00:00"));
        record.insert(QStringLiteral("shutdownTime"), QString());
        json(res, record);
    });
    server.Post(p + "/ipinfo/upload", [this](const httplib::Request& req, httplib::Response& res) {
        if (!accept(req, res, QStringLiteral("/ipinfo/upload"))) {
            return;
        }
        QJsonObject info = bodyOf(req);
        mUploads->add(QStringLiteral("/ipinfo/upload"), info);
        info.insert(QStringLiteral("id"), mNextId++);
        json(res, info);
    });
    server.Post(p + "/textrecord/upload", [this](const httplib::Request& req, httplib::Response& res) {
        if (!accept(req, res, QStringLiteral("/textrecord/upload"))) {
            return;
        }
        mUploads->add(QStringLiteral("/textrecord/upload"), bodyOf(req));
        json(res, QJsonValue());
    });
    server.Post(p + "/semanticParsing/semanticParsing",
                [this](const httplib::Request& req, httplib::Response& res) {
                    if (!accept(req, res, QStringLiteral("/semanticParsing/semanticParsing"))) {
                        return;
                    }
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
        answer(res, BackendSeed::installer(version, mInstallerKib), "application/vnd.debian.binary-package");
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
