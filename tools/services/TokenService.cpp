#include "TokenService.h"

#include <httplib.h>

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>

TokenService::TokenService(const Fault* fault, const QString& clientId, const QString& clientSecret)
    : HttpService(QStringLiteral("token"), fault), mClientId(clientId), mClientSecret(clientSecret)
{
}

QString TokenService::tokenFor(const QString& clientId, const QString& clientSecret)
{
    const QByteArray hash = QCryptographicHash::hash((clientId + QLatin1Char(':') + clientSecret).toUtf8(),
                                                     QCryptographicHash::Sha256);
    return QStringLiteral("24.%1.2592000.standin").arg(QString::fromLatin1(hash.toHex().left(32)));
}

QByteArray TokenService::errorBody(int code) const
{
    return QJsonDocument(QJsonObject{{QStringLiteral("error"), QStringLiteral("stand-in error %1").arg(code)},
                                     {QStringLiteral("error_description"), QStringLiteral("stand-in error")}})
        .toJson(QJsonDocument::Compact);
}

void TokenService::addRoutes(httplib::Server& server)
{
    server.Get("/oauth/2.0/token", [this](const httplib::Request& req, httplib::Response& res) {
        if (param(req, "grant_type") != QLatin1String("client_credentials")) {
            res.status = 400;
            answer(res,
                   QJsonDocument(
                       QJsonObject{{QStringLiteral("error"), QStringLiteral("unsupported_grant_type")}})
                       .toJson(QJsonDocument::Compact),
                   "application/json");
            return;
        }
        if (param(req, "client_id") != mClientId || param(req, "client_secret") != mClientSecret) {
            res.status = 401;
            answer(res,
                   QJsonDocument(QJsonObject{{QStringLiteral("error"), QStringLiteral("invalid_client")},
                                             {QStringLiteral("error_description"),
                                              QStringLiteral("unknown client id or wrong secret")}})
                       .toJson(QJsonDocument::Compact),
                   "application/json");
            return;
        }
        answer(res,
               QJsonDocument(QJsonObject{{QStringLiteral("access_token"), tokenFor(mClientId, mClientSecret)},
                                         {QStringLiteral("expires_in"), 2592000},
                                         {QStringLiteral("scope"), QStringLiteral("audio_tts_post")}})
                   .toJson(QJsonDocument::Compact),
               "application/json");
    });
}
