#include "LookupService.h"

#include <httplib.h>

#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>

LookupService::LookupService(const Fault* fault) : HttpService(QStringLiteral("iplookup"), fault) {}

bool LookupService::isPrivate(const QString& ip)
{
    const QHostAddress address(ip);
    return address.isLoopback() ||
           address.isInSubnet(QHostAddress::parseSubnet(QStringLiteral("10.0.0.0/8"))) ||
           address.isInSubnet(QHostAddress::parseSubnet(QStringLiteral("172.16.0.0/12"))) ||
           address.isInSubnet(QHostAddress::parseSubnet(QStringLiteral("192.168.0.0/16")));
}

QByteArray LookupService::errorBody(int code) const
{
    return QJsonDocument(
               QJsonObject{{QStringLiteral("code"), code}, {QStringLiteral("data"), QStringLiteral("error")}})
        .toJson(QJsonDocument::Compact);
}

void LookupService::addRoutes(httplib::Server& server)
{
    server.Get("/service/getIpInfo.php", [this](const httplib::Request& req, httplib::Response& res) {
        const QString ip = param(req, "ip").trimmed();
        if (QHostAddress(ip).isNull()) {
            answer(res,
                   QJsonDocument(QJsonObject{{QStringLiteral("code"), 1},
                                             {QStringLiteral("data"), QStringLiteral("invalid ip.")}})
                       .toJson(QJsonDocument::Compact),
                   "application/json");
            return;
        }
        const bool inner = isPrivate(ip);
        auto place = [inner](const char* publicValue) {
            return inner ? QStringLiteral("XX") : QString::fromUtf8(publicValue);
        };
        const QJsonObject data{
            {QStringLiteral("ip"), ip},
            {QStringLiteral("country"), inner ? QStringLiteral("XX") : QStringLiteral("中国")},
            {QStringLiteral("country_id"), place("CN")},
            {QStringLiteral("area"), QString()},
            {QStringLiteral("area_id"), QString()},
            {QStringLiteral("region"), place("广东")},
            {QStringLiteral("region_id"), place("440000")},
            {QStringLiteral("city"), inner ? QStringLiteral("内网IP") : QStringLiteral("深圳")},
            {QStringLiteral("city_id"), inner ? QStringLiteral("local") : QStringLiteral("440300")},
            {QStringLiteral("county"), place("")},
            {QStringLiteral("county_id"), place("")},
            {QStringLiteral("isp"), inner ? QStringLiteral("内网IP") : QStringLiteral("电信")},
            {QStringLiteral("isp_id"), inner ? QStringLiteral("local") : QStringLiteral("100017")}};
        answer(res,
               QJsonDocument(QJsonObject{{QStringLiteral("code"), 0}, {QStringLiteral("data"), data}})
                   .toJson(QJsonDocument::Compact),
               "application/json");
    });
}
