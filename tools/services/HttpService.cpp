#include "HttpService.h"

#include "Fault.h"
#include "ServicesLog.h"

#include <httplib.h>

#include <chrono>

HttpService::HttpService(const QString& name, const Fault* fault) : mFault(fault), mName(name) {}

HttpService::~HttpService()
{
    stop();
}

bool HttpService::start(quint16 port, QString* error)
{
    stop();
    auto server = std::make_unique<httplib::Server>();
    // One request per connection: a stop never waits on an idle keep-alive connection.
    server->set_keep_alive_max_count(1);
    server->new_task_queue = [] { return new httplib::ThreadPool(4); };
    server->set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
        qCInfo(lcServices).noquote() << mName + QLatin1Char(':') << QString::fromStdString(req.method)
                                     << QString::fromStdString(req.path);
        if (const int delay = mFault->delayMs; delay > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay));
        }
        if (const int status = mFault->httpStatus; status != 0) {
            res.status = status;
            return httplib::Server::HandlerResponse::Handled;
        }
        if (const int code = mFault->errorCode; code != 0) {
            answer(res, errorBody(code), "application/json");
            return httplib::Server::HandlerResponse::Handled;
        }
        return httplib::Server::HandlerResponse::Unhandled;
    });
    addRoutes(*server);
    const int bound = port == 0 ? server->bind_to_any_port("127.0.0.1")
                                : (server->bind_to_port("127.0.0.1", port) ? port : -1);
    if (bound <= 0) {
        *error = QStringLiteral("%1 port %2: cannot listen").arg(mName).arg(port);
        return false;
    }
    mPort = static_cast<quint16>(bound);
    mServer = std::move(server);
    httplib::Server* s = mServer.get();
    mThread = std::thread([s] { s->listen_after_bind(); });
    return true;
}

void HttpService::stop()
{
    if (!mServer) {
        return;
    }
    mServer->stop();
    mThread.join();
    mServer.reset();
}

void HttpService::answer(httplib::Response& res, const QByteArray& body, const char* contentType) const
{
    const QByteArray sent = mFault->malformed ? body.left(body.size() / 2) : body;
    if (mFault->closeMidStream) {
        // The headers promise the whole body; half of it comes, then the connection ends.
        const std::string text = sent.toStdString();
        res.set_content_provider(text.size(), contentType, [text](size_t, size_t, httplib::DataSink& sink) {
            sink.write(text.data(), text.size() / 2);
            return false;
        });
        return;
    }
    res.set_content(sent.toStdString(), contentType);
}

QString HttpService::param(const httplib::Request& req, const char* key)
{
    return QString::fromStdString(req.get_param_value(key));
}
