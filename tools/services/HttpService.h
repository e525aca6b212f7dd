#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <thread>

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

struct Fault;

// An HTTP stand-in on loopback, served by cpp-httplib on its own threads. The faults apply
// to every request: a delay first, then a bare HTTP status, then the service's own error
// form; malformed bodies and connections closed halfway apply to the answers themselves.
class HttpService {
public:
    HttpService(const QString& name, const Fault* fault);
    virtual ~HttpService();
    HttpService(const HttpService&) = delete;
    HttpService& operator=(const HttpService&) = delete;

    // Binds 127.0.0.1:port (0 picks a free one) and serves on a thread of its own.
    bool start(quint16 port, QString* error);
    void stop();
    bool isListening() const { return mServer != nullptr; }
    quint16 port() const { return mPort; }
    QString name() const { return mName; }

protected:
    virtual void addRoutes(httplib::Server& server) = 0;
    // The service's own way of saying that something went wrong, with the fault's code.
    virtual QByteArray errorBody(int code) const = 0;

    // Sets the answer, with the malformed and close-halfway faults applied.
    void answer(httplib::Response& res, const QByteArray& body, const char* contentType) const;
    static QString param(const httplib::Request& req, const char* key);

    const Fault* mFault;

private:
    QString mName;
    std::unique_ptr<httplib::Server> mServer;
    std::thread mThread;
    quint16 mPort = 0;
};
