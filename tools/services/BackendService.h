#pragma once

#include "BackendSeed.h"
#include "HttpService.h"

#include <atomic>

class UploadLog;

// The vendor backend under /BelmorZorvaneV2Mac: the seed data, the uploads kept in the log
// (also served at /__uploads as a JSON array), image and installer downloads.
class BackendService : public HttpService {
public:
    static constexpr const char* kPrefix = "/BelmorZorvaneV2Mac";

    BackendService(const Fault* fault, const BackendSeed* seed, UploadLog* uploads, int installerKib = 512);

protected:
    void addRoutes(httplib::Server& server) override;
    QByteArray errorBody(int code) const override;

private:
    static QByteArray envelope(int code, const QString& msg, const QJsonValue& data = QJsonValue());
    static QByteArray page(const char* title, const char* text);
    void json(httplib::Response& res, const QJsonValue& data) const;

    const BackendSeed* mSeed;
    UploadLog* mUploads;
    int mInstallerKib;
    std::atomic<int> mNextId{100};
};
