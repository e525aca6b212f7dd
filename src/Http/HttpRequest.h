#pragma once

#include "Utils/Singleton.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>

#include <functional>

// The one generic HTTP client: callback requests with a time limit, downloads with progress
// and cancellation, and blocking requests for worker threads. It does not judge bodies.
class HttpRequest : public QObject, public Singleton<HttpRequest> {
    Q_OBJECT

public:
    using HandleFunc = std::function<void(const QByteArray&)>;
    using TimeoutFunc = std::function<void(QString)>;
    using ErrorFunc = std::function<void(QString, QNetworkReply::NetworkError)>;
    using DownloadProgressFunc = std::function<void(int, int)>;
    using DownloadResultFunc = std::function<void(bool, QString)>;

    static constexpr int kSyncTimeoutMs = 5000;
    // A body past its limit is dropped: the reply is aborted once its announced length or the
    // bytes received pass it, a log line says so, and the caller gets onError with
    // UnknownContentError. JSON replies carry a few kilobytes; the blocking calls also fetch
    // synthesised speech, a few megabytes for the longest piece.
    static constexpr qint64 kMaxReplyBytes = 4 * 1024 * 1024;
    static constexpr qint64 kMaxSyncReplyBytes = 32 * 1024 * 1024;
    static constexpr int kMaxRedirects = 5;

    // Main thread. After a time-out the caller also gets onError with OperationCanceledError.
    // Only a 2xx answer reaches handle; redirects are followed as for downloads.
    // The URL handed to onTimeout and onError is the one UrlRules::forLog gives: callers log it.
    void get(const QString url, HandleFunc handle, int timeout, TimeoutFunc onTimeout, ErrorFunc onError);
    void post(const QString url, QByteArray data, HandleFunc handle, int timeout, TimeoutFunc onTimeout,
              ErrorFunc onError);
    // Progress gets the total first, then the bytes received. The body is written to path
    // with ".part" added and renamed to path once whole; a download that fails (over maxBytes,
    // cancelled, a status other than 2xx, a redirect off https) removes it and leaves path as
    // it was. Redirects are followed only to https (http only from and to this machine).
    void downloadFile(const QString url, const QString path, DownloadProgressFunc progress,
                      DownloadResultFunc result, ErrorFunc onError, qint64 maxBytes = kMaxReplyBytes);
    // Aborts every download under way.
    void cancel();

    // Plain http to this machine (the stand-in services); anywhere else only https is trusted.
    static bool isLoopbackHttp(const QUrl& url);

    // Any thread: a local event loop, at most 5000 ms. *data is appended to, not cleared.
    bool syncGet(QString url, QByteArray* data);
    bool syncPost(QString url, QByteArray body, QByteArray* data);

signals:
    void signalCancelDownload();

private:
    friend class Singleton<HttpRequest>;
    explicit HttpRequest(QObject* parent = nullptr);

    void send(const QString& url, const QByteArray* body, HandleFunc handle, int timeout,
              TimeoutFunc onTimeout, ErrorFunc onError);
    // Waits for the reply on a local loop; the reply's manager must outlive the call.
    static bool runBlocking(QNetworkReply* reply, QByteArray* data);
    // Hands each piece of the body to take as it arrives, and aborts the reply once the
    // announced length or the bytes so far pass maxBytes.
    static void limitBody(QNetworkReply* reply, qint64 maxBytes, std::function<void(const QByteArray&)> take);
    // The reply's error: UnknownContentError for a body that limitBody dropped or a status
    // other than 2xx, InsecureRedirectError for a redirect refused.
    static QNetworkReply::NetworkError errorOf(QNetworkReply* reply);
    // Redirects are followed only where guardRedirects lets them: to https, or http from and to
    // this machine.
    static void followOnlyToHttps(QNetworkRequest* request);
    static void guardRedirects(QNetworkReply* reply);

    QNetworkAccessManager mManager;
    QNetworkRequest mRequest;
};
