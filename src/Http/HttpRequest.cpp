#include "Http/HttpRequest.h"

#include "Utils/Logging.h"

#include <QEventLoop>
#include <QFile>
#include <QPointer>
#include <QTimer>

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

    mRequest.setUrl(QUrl::fromUserInput(url));
    QNetworkReply* reply = body == nullptr ? manager->get(mRequest) : manager->post(mRequest, *body);

    connect(timer, &QTimer::timeout, reply, [timer, reply, onTimeout] {
        timer->stop();
        timer->deleteLater();
        const QString replyUrl = reply->url().toString();
        qCWarning(lcHttp) << "time-out" << replyUrl;
        if (onTimeout) {
            onTimeout(replyUrl);
        }
        // The abort finishes the reply: onError follows with OperationCanceledError.
        reply->abort();
        reply->deleteLater();
    });
    QPointer<QTimer> guardedTimer(timer);
    connect(reply, &QNetworkReply::finished, reply, [guardedTimer, reply, handle, onError] {
        if (reply->error() != QNetworkReply::NoError) {
            qCWarning(lcHttp) << "request failed" << reply->url().toString() << int(reply->error());
            if (onError) {
                onError(reply->url().toString(), reply->error());
            }
        } else if (handle) {
            handle(reply->readAll());
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

void HttpRequest::downloadFile(const QString url, const QString path, DownloadProgressFunc progress,
                               DownloadResultFunc result, ErrorFunc onError)
{
    auto* file = new QFile(path);
    mRequest.setUrl(QUrl::fromUserInput(url));
    if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        // Nothing to keep the download in: failed before it starts, as the caller learns of
        // any failure, instead of a success with no file behind it.
        qCWarning(lcHttp) << "cannot write" << path << file->errorString();
        delete file;
        const QString target = mRequest.url().toString();
        QTimer::singleShot(0, this, [target, onError] {
            if (onError) {
                onError(target, QNetworkReply::UnknownContentError);
            }
        });
        return;
    }
    QNetworkReply* reply = mManager.get(mRequest);
    connect(this, &HttpRequest::signalCancelDownload, reply, &QNetworkReply::abort);
    // A write that falls short (a full disk) fails the download rather than leave a cut file.
    auto keep = [reply, file] {
        const QByteArray bytes = reply->readAll();
        if (file->isOpen() && file->write(bytes) != bytes.size()) {
            qCWarning(lcHttp) << "cannot write" << file->fileName() << file->errorString();
            file->close();
            reply->setProperty("writeFailed", true);
            reply->abort();
        }
    };
    connect(reply, &QNetworkReply::readyRead, reply, keep);
    connect(reply, &QNetworkReply::downloadProgress, reply, [progress](qint64 received, qint64 total) {
        if (progress) {
            progress(static_cast<int>(total), static_cast<int>(received));
        }
    });
    connect(reply, &QNetworkReply::finished, reply, [reply, file, result, onError, keep] {
        keep();
        const bool written = file->isOpen() && file->flush();
        file->close();
        QNetworkReply::NetworkError error = reply->error();
        if (reply->property("writeFailed").toBool() || (error == QNetworkReply::NoError && !written)) {
            error = QNetworkReply::UnknownContentError;
        }
        if (error != QNetworkReply::NoError) {
            qCWarning(lcHttp) << "download failed" << reply->url().toString() << int(error);
            if (onError) {
                onError(reply->url().toString(), error);
            }
        } else if (result) {
            result(true, file->fileName());
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
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(kSyncTimeoutMs);
    loop.exec(QEventLoop::ExcludeUserInputEvents);

    if (!timer.isActive()) {
        // Still running at the limit: abort and release it; the answer stays false.
        qCWarning(lcHttp) << "time-out" << reply->url().toString();
        reply->disconnect();
        reply->abort();
        delete reply;
        return false;
    }
    timer.stop();
    const bool ok = reply->error() == QNetworkReply::NoError;
    if (ok) {
        data->append(reply->readAll());
    } else {
        qCWarning(lcHttp) << "request failed" << reply->url().toString() << int(reply->error());
    }
    delete reply;
    return ok;
}

bool HttpRequest::syncGet(QString url, QByteArray* data)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(QUrl::fromUserInput(url));
    return runBlocking(manager.get(request), data);
}

bool HttpRequest::syncPost(QString url, QByteArray body, QByteArray* data)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(QUrl::fromUserInput(url));
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    return runBlocking(manager.post(request, body), data);
}
