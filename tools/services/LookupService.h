#pragma once

#include "HttpService.h"

// The public IP lookup at /service/getIpInfo.php?ip=...: a fixed place for public addresses,
// "内网IP" for loopback and private ones, as the public service answers.
class LookupService : public HttpService {
public:
    explicit LookupService(const Fault* fault);

    static bool isPrivate(const QString& ip);

protected:
    void addRoutes(httplib::Server& server) override;
    QByteArray errorBody(int code) const override;
};
