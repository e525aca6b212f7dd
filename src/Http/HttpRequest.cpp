#include "Http/HttpRequest.h"

#include "Utils/Logging.h"
#include "Utils/UrlRules.h"

#include <QEventLoop>
#include <QFile>
#include <QHostAddress>
#include <QMetaEnum>
#include <QPointer>
#include <QTimer>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <unistd.h>

namespace {

const char kOversizeProperty[] = "zorvaneOversize";
const char kWriteFailedProperty[] = "zorvaneWriteFailed";
const char kRedirectRefusedProperty[] = "zorvaneRedirectRefused";

QString partName(const QString& path)
{
    return path + QStringLiteral(".part");
}

// What a log line says of a failed request: the HTTP status of an error answer (Qt's own code
// for a 500 is 401, which reads as the wrong status), else Qt's name for the error.
QString failureOf(QNetworkReply* reply, QNetworkReply::NetworkError error)
{
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.toInt() >= 400) {
        return QStringLiteral("HTTP ") + QString::number(status.toInt());
    }
    return QString::fromLatin1(QMetaEnum::fromType<QNetworkReply::NetworkError>().valueToKey(error));
}

}  // namespace

HttpRequest::HttpRequest(QObject* parent) : QObject(parent)
{
    mRequest.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
}

void HttpRequest::get(const QString url, HandleFunc handle, int timeout, TimeoutFunc onTimeout,
                      ErrorFunc onError)
{
    send(url, nullptr, std::move(handle), timeout, std::move(onTimeout), std::move(onError));
}

void HttpRequest::post(const QString url, QByteArray data, HandleFunc handle, int timeout,
                       TimeoutFunc onTimeout, ErrorFunc onError)
{
    send(url, &data, std::move(handle), timeout, std::move(onTimeout), std::move(onError));
}

void HttpRequest::send(const QString& url, const QByteArray* body, HandleFunc handle, int timeout,
                       TimeoutFunc onTimeout, ErrorFunc onError)
{
    // Each call has its own manager and timer, so that calls overlap freely.
    auto* manager = new QNetworkAccessManager();
    auto* timer = new QTimer();
    timer->setSingleShot(true);
    timer->setInterval(timeout);

    QNetworkRequest request = mRequest;
    request.setUrl(QUrl::fromUserInput(url));
    followOnlyToHttps(&request);
    QNetworkReply* reply = body == nullptr ? manager->get(request) : manager->post(request, *body);
    guardRedirects(reply);
    auto received = std::make_shared<QByteArray>();
    limitBody(reply, kMaxReplyBytes, [received](const QByteArray& piece) { received->append(piece); });

    connect(timer, &QTimer::timeout, reply, [timer, reply, onTimeout] {
        timer->stop();
        timer->deleteLater();
        const QString replyUrl = UrlRules::forLog(reply->url());
        qCWarning(lcHttp) << "time-out" << replyUrl;
        if (onTimeout) {
            onTimeout(replyUrl);
        }
        // The abort finishes the reply: onError follows with OperationCanceledError.
        reply->abort();
        reply->deleteLater();
    });
    QPointer<QTimer> guardedTimer(timer);
    connect(reply, &QNetworkReply::finished, reply, [guardedTimer, reply, received, handle, onError] {
        const QNetworkReply::NetworkError error = errorOf(reply);
        if (error != QNetworkReply::NoError) {
            const QString replyUrl = UrlRules::forLog(reply->url());
            qCWarning(lcHttp).noquote() << "request failed" << replyUrl << failureOf(reply, error);
            if (onError) {
                onError(replyUrl, error);
            }
        } else if (handle) {
            received->append(reply->readAll());
            handle(*received);
        }
        if (guardedTimer) {
            guardedTimer->stop();
            guardedTimer->deleteLater();
        }
        reply->deleteLater();
    });
    connect(manager, &QNetworkAccessManager::finished, manager, &QObject::deleteLater);
    timer->start();
}

void HttpRequest::limitBody(QNetworkReply* reply, qint64 maxBytes,
                            std::function<void(const QByteArray&)> take)
{
    auto drop = [reply, maxBytes](qint64 bytes) {
        qCWarning(lcHttp) << "reply of" << bytes << "bytes from" << UrlRules::forLog(reply->url())
                          << "is over the limit of" << maxBytes << "bytes - dropped";
        reply->setProperty(kOversizeProperty, true);
        reply->abort();
    };
    connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, maxBytes, drop] {
        const QVariant announced = reply->header(QNetworkRequest::ContentLengthHeader);
        if (announced.isValid() && announced.toLongLong() > maxBytes) {
            drop(announced.toLongLong());
        }
    });
    // Counted after decompression, as the body is read: a small compressed reply may unpack
    // into a large one.
    auto count = std::make_shared<qint64>(0);
    connect(reply, &QNetworkReply::readyRead, reply, [reply, maxBytes, take, count, drop] {
        if (reply->property(kOversizeProperty).toBool()) {
            return;
        }
        const QByteArray piece = reply->readAll();
        *count += piece.size();
        if (*count > maxBytes) {
            drop(*count);
            return;
        }
        take(piece);
    });
}

QNetworkReply::NetworkError HttpRequest::errorOf(QNetworkReply* reply)
{
    if (reply->property(kRedirectRefusedProperty).toBool()) {
        return QNetworkReply::InsecureRedirectError;
    }
    if (reply->property(kOversizeProperty).toBool()) {
        return QNetworkReply::UnknownContentError;
    }
    if (reply->error() != QNetworkReply::NoError) {
        return reply->error();
    }
    // A redirect not followed, or any other answer than 2xx: its body is not what was asked for.
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && (status.toInt() < 200 || status.toInt() > 299)) {
        qCWarning(lcHttp) << UrlRules::forLog(reply->url()) << "answered with status" << status.toInt();
        return QNetworkReply::UnknownContentError;
    }
    return QNetworkReply::NoError;
}

void HttpRequest::followOnlyToHttps(QNetworkRequest* request)
{
    request->setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                          QNetworkRequest::UserVerifiedRedirectPolicy);
    request->setMaximumRedirectsAllowed(kMaxRedirects);
}

void HttpRequest::guardRedirects(QNetworkReply* reply)
{
    // A redirect must not take the request off the secure channel. Plain http only between the
    // stand-in services on this machine.
    connect(reply, &QNetworkReply::redirected, reply, [reply](const QUrl& target) {
        if (target.scheme() == QLatin1String("https") ||
            (isLoopbackHttp(reply->url()) && isLoopbackHttp(target))) {
            emit reply->redirectAllowed();
            return;
        }
        qCWarning(lcHttp) << "redirect from" << UrlRules::forLog(reply->url()) << "to"
                          << UrlRules::forLog(target) << "refused";
        reply->setProperty(kRedirectRefusedProperty, true);
        reply->abort();
    });
}

bool HttpRequest::isLoopbackHttp(const QUrl& url)
{
    const QString host = url.host();
    return url.scheme() == QLatin1String("http") &&
           (host == QLatin1String("localhost") || QHostAddress(host).isLoopback());
}

void HttpRequest::downloadFile(const QString url, const QString path, DownloadProgressFunc progress,
                               DownloadResultFunc result, ErrorFunc onError, qint64 maxBytes)
{
    // The body goes to a name of its own and takes the file's name only once whole: a download
    // cut short (killed, cancelled, over its limit) never passes for the file.
    auto* file = new QFile(partName(path));
    QNetworkRequest request = mRequest;
    request.setUrl(QUrl::fromUserInput(url));
    followOnlyToHttps(&request);
    if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        // Nothing to keep the download in: failed before it starts, as the caller learns of
        // any failure, instead of a success with no file behind it.
        qCWarning(lcHttp) << "cannot write" << file->fileName() << file->errorString();
        delete file;
        const QString target = UrlRules::forLog(request.url());
        QTimer::singleShot(0, this, [target, onError] {
            if (onError) {
                onError(target, QNetworkReply::UnknownContentError);
            }
        });
        return;
    }
    QNetworkReply* reply = mManager.get(request);
    connect(this, &HttpRequest::signalCancelDownload, reply, &QNetworkReply::abort);
    guardRedirects(reply);
    // A write that falls short (a full disk) fails the download rather than leave a cut file.
    limitBody(reply, maxBytes, [reply, file](const QByteArray& piece) {
        if (file->isOpen() && file->write(piece) != piece.size()) {
            qCWarning(lcHttp) << "cannot write" << file->fileName() << file->errorString();
            file->close();
            reply->setProperty(kWriteFailedProperty, true);
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::downloadProgress, reply, [progress](qint64 received, qint64 total) {
        if (progress) {
            progress(static_cast<int>(total), static_cast<int>(received));
        }
    });
    connect(reply, &QNetworkReply::finished, reply, [reply, file, path, result, onError] {
        QNetworkReply::NetworkError error = errorOf(reply);
        if (error == QNetworkReply::NoError && file->isOpen()) {
            const QByteArray rest = reply->readAll();
            if (file->write(rest) != rest.size()) {
                reply->setProperty(kWriteFailedProperty, true);
            }
        }
        // On disk before it takes the name, so that a power cut cannot leave an empty file there.
        const bool written = file->isOpen() && file->flush() && ::fsync(file->handle()) == 0;
        file->close();
        if (reply->property(kWriteFailedProperty).toBool() || (error == QNetworkReply::NoError && !written)) {
            error = QNetworkReply::UnknownContentError;
        }
        // rename() replaces an older file in one step, unlike QFile::rename.
        if (error == QNetworkReply::NoError && std::rename(QFile::encodeName(file->fileName()).constData(),
                                                           QFile::encodeName(path).constData()) != 0) {
            qCWarning(lcHttp) << "cannot rename" << file->fileName() << "to" << path << std::strerror(errno);
            error = QNetworkReply::UnknownContentError;
        }
        if (error != QNetworkReply::NoError) {
            file->remove();
            const QString replyUrl = UrlRules::forLog(reply->url());
            qCWarning(lcHttp) << "download failed" << replyUrl << int(error);
            if (onError) {
                onError(replyUrl, error);
            }
        } else if (result) {
            result(true, path);
        }
        file->deleteLater();
        reply->deleteLater();
    });
}

void HttpRequest::cancel()
{
    emit signalCancelDownload();
}

bool HttpRequest::runBlocking(QNetworkReply* reply, QByteArray* data)
{
    QByteArray received;
    limitBody(reply, kMaxSyncReplyBytes, [&received](const QByteArray& piece) { received.append(piece); });
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(kSyncTimeoutMs);
    if (!reply->isFinished()) {
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }

    if (!timer.isActive()) {
        // Still running at the limit: abort and release it; the answer stays false.
        qCWarning(lcHttp) << "time-out" << UrlRules::forLog(reply->url());
        reply->disconnect();
        reply->abort();
        delete reply;
        return false;
    }
    timer.stop();
    const QNetworkReply::NetworkError error = errorOf(reply);
    if (error == QNetworkReply::NoError) {
        data->append(received + reply->readAll());
    } else {
        qCWarning(lcHttp).noquote() << "request failed" << UrlRules::forLog(reply->url())
                                    << failureOf(reply, error);
    }
    delete reply;
    return error == QNetworkReply::NoError;
}

bool HttpRequest::syncGet(QString url, QByteArray* data)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(QUrl::fromUserInput(url));
    followOnlyToHttps(&request);
    QNetworkReply* reply = manager.get(request);
    guardRedirects(reply);
    return runBlocking(reply, data);
}

bool HttpRequest::syncPost(QString url, QByteArray body, QByteArray* data)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(QUrl::fromUserInput(url));
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    followOnlyToHttps(&request);
    QNetworkReply* reply = manager.post(request, body);
    guardRedirects(reply);
    return runBlocking(reply, data);
}
