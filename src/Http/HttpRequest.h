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

    // Main thread. After a time-out the caller also gets onError with OperationCanceledError.
    void get(const QString url, HandleFunc handle, int timeout, TimeoutFunc onTimeout, ErrorFunc onError);
    void post(const QString url, QByteArray data, HandleFunc handle, int timeout, TimeoutFunc onTimeout,
              ErrorFunc onError);
    // Progress gets the total first, then the bytes received.
    void downloadFile(const QString url, const QString path, DownloadProgressFunc progress,
                      DownloadResultFunc result, ErrorFunc onError);
    // Aborts every download under way.
    void cancel();

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

    QNetworkAccessManager mManager;
    QNetworkRequest mRequest;
};
