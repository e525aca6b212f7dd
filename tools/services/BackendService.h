#pragma once

#include "BackendSeed.h"
#include "HttpService.h"

#include <atomic>

class UploadLog;

// The vendor backend under /BelmorZorvaneV2Mac: the seed data, the uploads kept in the log
// (also served at /__uploads as a JSON array), image and installer downloads. Every POST body
// must be a JSON object with exactly the endpoint's keys, each of its type; any other body is
// answered with HTTP 400 and an envelope whose msg names the first fault.
class BackendService : public HttpService {
public:
    static constexpr const char* kPrefix = "/BelmorZorvaneV2Mac";

    BackendService(const Fault* fault, const BackendSeed* seed, UploadLog* uploads, int installerKib = 512);

    // What is wrong with a POST body for the endpoint (the path below the prefix), or empty.
    static QString checkBody(const QString& endpoint, const QByteArray& body);

protected:
    void addRoutes(httplib::Server& server) override;
    QByteArray errorBody(int code) const override;

private:
    static QByteArray envelope(int code, const QString& msg, const QJsonValue& data = QJsonValue());
    static QByteArray page(const char* title, const char* text);
    void json(httplib::Response& res, const QJsonValue& data) const;
    // Answers the error and returns false for a body the endpoint refuses.
    bool accept(const httplib::Request& req, httplib::Response& res, const QString& endpoint) const;

    const BackendSeed* mSeed;
    UploadLog* mUploads;
    int mInstallerKib;
    std::atomic<int> mNextId{100};
};
