#pragma once

#include "HttpService.h"

// The synthesis token service at /oauth/2.0/token: client credentials in, a token out. The
// token is derived from the credentials, so the synthesis service can check it on its own.
class TokenService : public HttpService {
public:
    TokenService(const Fault* fault, const QString& clientId, const QString& clientSecret);

    static QString tokenFor(const QString& clientId, const QString& clientSecret);

protected:
    void addRoutes(httplib::Server& server) override;
    QByteArray errorBody(int code) const override;

private:
    QString mClientId;
    QString mClientSecret;
};
