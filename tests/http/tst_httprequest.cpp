#include "FloodHttpServer.h"
#include "Http/HttpRequest.h"
#include "LocalHttpServer.h"

#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <optional>
#include <thread>

#include <sys/resource.h>

class TestHttpRequest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void getAndPostReachHandleWithJsonHeader();
    void timeOutThenErrorAndNeverHandle();
    void overlappingCallsKeepTheirOwnCallbacks();
    void downloadReplacesFileWithProgressOnTheWay();
    void cancelAbortsDownloadsAndIsHarmlessWhenIdle();
    void downloadThatCannotBeKeptFails();
    void onlyA2xxBodyOverHttpsIsTaken();
    void syncCallsFromAWorkerThread();
    void bodiesPastTheirLimitAreDropped();
    void logsAndCallbacksCarryNoQuery();

private:
    LocalHttpServer mServer;
    HttpRequest* http = nullptr;
};

void TestHttpRequest::initTestCase()
{
    QVERIFY(mServer.start());
    http = HttpRequest::getInstance();
}

void TestHttpRequest::getAndPostReachHandleWithJsonHeader()
{
    mServer.setAnswer(QStringLiteral("/a"), {200, "{\"code\":1}", 0, "application/json"});
    QByteArray got;
    http->get(
        mServer.url(QStringLiteral("/a?x=1")).toString(), [&](const QByteArray& body) { got = body; }, 2000,
        nullptr, [](QString, QNetworkReply::NetworkError e) { QFAIL(qPrintable(QString::number(e))); });
    QTRY_COMPARE(got, QByteArray("{\"code\":1}"));

    QByteArray posted;
    http->post(
        mServer.url(QStringLiteral("/a")).toString(), "{\n    \"k\": 1\n}\n",
        [&](const QByteArray& body) { posted = body; }, 2000, nullptr, nullptr);
    QTRY_VERIFY(!posted.isEmpty());

    const QList<LocalHttpServer::Request> requests = mServer.requests();
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(0).method, QByteArray("GET"));
    QCOMPARE(requests.at(0).target, QByteArray("/a?x=1"));
    // The JSON content type goes along on a GET too.
    QCOMPARE(requests.at(0).headers.value("content-type"), QByteArray("application/json"));
    QCOMPARE(requests.at(1).method, QByteArray("POST"));
    QCOMPARE(requests.at(1).body, QByteArray("{\n    \"k\": 1\n}\n"));
}

void TestHttpRequest::timeOutThenErrorAndNeverHandle()
{
    mServer.setAnswer(QStringLiteral("/slow"), {200, "late", 600, "text/plain"});
    QStringList events;
    const QString url = mServer.url(QStringLiteral("/slow")).toString();
    http->get(
        url, [&](const QByteArray&) { events << QStringLiteral("handle"); }, 100,
        [&](QString u) { events << QStringLiteral("timeout ") + u; },
        [&](QString, QNetworkReply::NetworkError e) { events << QStringLiteral("error %1").arg(e); });
    QTRY_COMPARE(events.size(), 2);
    QCOMPARE(events.at(0), QStringLiteral("timeout ") + url);
    QCOMPARE(events.at(1), QStringLiteral("error %1").arg(QNetworkReply::OperationCanceledError));
    QTest::qWait(700);  // the late answer changes nothing
    QCOMPARE(events.size(), 2);
}

void TestHttpRequest::overlappingCallsKeepTheirOwnCallbacks()
{
    mServer.setAnswer(QStringLiteral("/one"), {200, "one", 200, "text/plain"});
    mServer.setAnswer(QStringLiteral("/two"), {200, "two", 0, "text/plain"});
    QByteArray first;
    QByteArray second;
    http->get(
        mServer.url(QStringLiteral("/one")).toString(), [&](const QByteArray& b) { first = b; }, 2000,
        nullptr, nullptr);
    http->get(
        mServer.url(QStringLiteral("/two")).toString(), [&](const QByteArray& b) { second = b; }, 2000,
        nullptr, nullptr);
    QTRY_COMPARE(second, QByteArray("two"));
    QVERIFY(first.isEmpty());
    QTRY_COMPARE(first, QByteArray("one"));
}

void TestHttpRequest::downloadReplacesFileWithProgressOnTheWay()
{
    // A server that sends a quarter of the body, in two writes (Qt reports progress at most
    // every 100 ms), and waits before the rest.
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QTcpSocket* client = nullptr;
    connect(&server, &QTcpServer::newConnection, [&] {
        client = server.nextPendingConnection();
        connect(client, &QTcpSocket::readyRead, [&] {
            if (client->readAll().contains("\r\n\r\n")) {
                client->write(
                    "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
                    "Content-Length: 40000\r\nConnection: close\r\n\r\n" +
                    QByteArray(5000, 'a'));
                QTimer::singleShot(200, client, [&] { client->write(QByteArray(5000, 'a')); });
            }
        });
    });
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("installer")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(100000, 'o'));  // an older, longer download
    file.close();
    QList<QPair<int, int>> progress;
    bool done = false;
    http->downloadFile(
        QStringLiteral("http://127.0.0.1:%1/installer").arg(server.serverPort()), file.fileName(),
        [&](int total, int received) {
            progress.append({total, received});
        },
        [&](bool ok, QString name) { done = ok && name == file.fileName(); }, nullptr);
    QTRY_VERIFY(!progress.isEmpty() && qMin(progress.last().first, progress.last().second) == 10000);
    QVERIFY(!done);
    // Killed now, the program would find the older download whole, not a part of this one.
    QCOMPARE(QFileInfo(file.fileName()).size(), qint64(100000));
    // The total comes first, the bytes so far second.
    QCOMPARE(progress.last(), qMakePair(40000, 10000));
    client->write(QByteArray(30000, 'b'));
    client->disconnectFromHost();
    QTRY_VERIFY(done);
    QCOMPARE(progress.last(), qMakePair(40000, 40000));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray(10000, 'a') + QByteArray(30000, 'b'));
}

void TestHttpRequest::cancelAbortsDownloadsAndIsHarmlessWhenIdle()
{
    http->cancel();
    QTemporaryDir dir;
    mServer.setAnswer(QStringLiteral("/big"), {200, QByteArray(1000, 'z'), 500, "application/octet-stream"});
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    bool done = false;
    http->downloadFile(
        mServer.url(QStringLiteral("/big")).toString(), dir.filePath(QStringLiteral("f")), nullptr,
        [&](bool, QString) { done = true; }, [&](QString, QNetworkReply::NetworkError e) { error = e; });
    QTest::qWait(50);
    http->cancel();
    QTRY_COMPARE(error, QNetworkReply::OperationCanceledError);
    QVERIFY(!done);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());
}

// No success without the file behind it: a folder that is not there fails before anything is
// fetched, a disk that fills up (a file size limit on this process) fails the download.
void TestHttpRequest::downloadThatCannotBeKeptFails()
{
    mServer.setAnswer(QStringLiteral("/inst"), {200, QByteArray(200000, 'i'), 0, "application/octet-stream"});
    QTemporaryDir dir;
    const int asked = mServer.requests().size();
    struct FileSizeLimit {
        rlimit before{};
        void (*handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
        FileSizeLimit()
        {
            getrlimit(RLIMIT_FSIZE, &before);
            rlimit small = before;
            small.rlim_cur = 64 * 1024;
            setrlimit(RLIMIT_FSIZE, &small);
        }
        ~FileSizeLimit()
        {
            setrlimit(RLIMIT_FSIZE, &before);
            std::signal(SIGXFSZ, handler);
        }
    };
    for (const QString& path :
         {dir.filePath(QStringLiteral("missing/installer")), dir.filePath(QStringLiteral("full"))}) {
        std::optional<FileSizeLimit> limit;
        if (path.endsWith(QLatin1String("full"))) {
            limit.emplace();
        }
        QList<QNetworkReply::NetworkError> errors;
        bool succeeded = false;
        http->downloadFile(
            mServer.url(QStringLiteral("/inst")).toString(), path, nullptr,
            [&](bool, QString) { succeeded = true; },
            [&](QString, QNetworkReply::NetworkError e) { errors << e; });
        QTRY_COMPARE(errors, QList<QNetworkReply::NetworkError>{QNetworkReply::UnknownContentError});
        QTest::qWait(100);
        QVERIFY(!succeeded);
        QCOMPARE(errors.size(), 1);
    }
    QCOMPARE(mServer.requests().size(), asked + 1);  // only the full disk was asked for
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());
}

// Only a 2xx body becomes the file or the answer. Redirects lead only to https (plain http only
// between the stand-ins on this machine); one that leaves it, or a 3xx not followed, leaves no
// file and hands on no answer.
void TestHttpRequest::onlyA2xxBodyOverHttpsIsTaken()
{
    LocalHttpServer mirror;
    QVERIFY(mirror.start());
    mirror.setAnswer(QStringLiteral("/pkg"), {200, "the package", 0, "application/octet-stream"});
    mServer.setAnswer(QStringLiteral("/moved"), {302, "<a>moved</a>", 0, "text/html", false,
                                                 mirror.url(QStringLiteral("/pkg")).toEncoded()});
    mServer.setAnswer(QStringLiteral("/away"),
                      {301, "<a>moved</a>", 0, "text/html", false, "http://mirror.example.invalid/pkg"});
    mServer.setAnswer(QStringLiteral("/choose"), {300, "<a>choose one</a>", 0, "text/html"});
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("pkg"));
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    auto fetch = [&](const QString& from) {
        bool done = false;
        error = QNetworkReply::NoError;
        http->downloadFile(
            mServer.url(from).toString(), path, nullptr, [&](bool, QString) { done = true; },
            [&](QString, QNetworkReply::NetworkError e) {
                error = e;
                done = true;
            });
        QTRY_VERIFY(done);
    };
    fetch(QStringLiteral("/moved"));
    QCOMPARE(error, QNetworkReply::NoError);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("the package"));
    QVERIFY(file.remove());

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("redirect from .* refused")));
    fetch(QStringLiteral("/away"));
    QCOMPARE(error, QNetworkReply::InsecureRedirectError);
    fetch(QStringLiteral("/choose"));
    QCOMPARE(error, QNetworkReply::UnknownContentError);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());

    // The API calls likewise, the blocking ones from a worker thread.
    QStringList outcomes;
    auto handle = [&](const QByteArray& body) { outcomes << QString::fromUtf8(body); };
    auto onError = [&](QString, QNetworkReply::NetworkError e) { outcomes << QString::number(e); };
    const QRegularExpression refusal(QStringLiteral("redirect from .* refused"));
    for (int i = 0; i < 2; ++i) {
        QTest::ignoreMessage(QtWarningMsg, refusal);
    }
    for (const QString& path :
         {QStringLiteral("/moved"), QStringLiteral("/away"), QStringLiteral("/choose")}) {
        const int before = outcomes.size();
        http->get(mServer.url(path).toString(), handle, 5000, nullptr, onError);
        http->post(mServer.url(path).toString(), "{}", handle, 5000, nullptr, onError);
        QTRY_COMPARE(outcomes.size(), before + 2);
    }
    const QString refused = QString::number(QNetworkReply::InsecureRedirectError);
    const QString notAnAnswer = QString::number(QNetworkReply::UnknownContentError);
    QCOMPARE(outcomes, QStringList({QStringLiteral("the package"), QStringLiteral("the package"), refused,
                                    refused, notAnAnswer, notAnAnswer}));
    QByteArray data;
    bool taken = true;
    std::atomic<bool> finished{false};
    QTest::ignoreMessage(QtWarningMsg, refusal);
    std::thread worker([&] {
        taken = http->syncGet(mServer.url(QStringLiteral("/away")).toString(), &data);
        finished = true;
    });
    QTRY_VERIFY(finished.load());
    worker.join();
    QVERIFY(!taken && data.isEmpty());
}

void TestHttpRequest::syncCallsFromAWorkerThread()
{
    mServer.setAnswer(QStringLiteral("/token"), {200, "{\"access_token\":\"t\"}", 0, "application/json"});
    mServer.setAnswer(QStringLiteral("/never"), {200, "late", 6000, "text/plain"});
    const QString tokenUrl = mServer.url(QStringLiteral("/token")).toString();
    const QString neverUrl = mServer.url(QStringLiteral("/never")).toString();
    bool getOk = false;
    bool postOk = true;
    bool slowOk = true;
    QByteArray data = "kept:";
    QByteArray slowData = "unchanged";
    // The server answers on this thread's loop, so it has to keep running meanwhile.
    std::atomic<bool> finished{false};
    std::thread worker([&] {
        getOk = http->syncGet(tokenUrl, &data);
        postOk = http->syncPost(mServer.url(QStringLiteral("/missing")).toString(), "a=1", &data);
        slowOk = http->syncGet(neverUrl, &slowData);
        finished = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(finished.load(), 10000);
    worker.join();
    QVERIFY(getOk);
    QCOMPARE(data, QByteArray("kept:{\"access_token\":\"t\"}"));  // appended, not replaced
    QVERIFY(!postOk);
    QVERIFY(!slowOk);
    QCOMPARE(slowData, QByteArray("unchanged"));
    const QList<LocalHttpServer::Request> requests = mServer.requests();
    QVERIFY(std::any_of(requests.begin(), requests.end(), [](const LocalHttpServer::Request& r) {
        return r.method == "POST" && r.target == "/missing" && r.body == "a=1" &&
               r.headers.value("content-type") == "application/x-www-form-urlencoded";
    }));
}

void TestHttpRequest::bodiesPastTheirLimitAreDropped()
{
    constexpr qint64 kSlack = 24 * 1024 * 1024;  // what the socket buffers on both sides hold
    // An endless chunked reply and one that announces 50 MB: neither reaches handle, and the
    // client hangs up long before the flood ends.
    for (const qint64 announced : {qint64(-1), qint64(50 * 1000 * 1000)}) {
        FloodHttpServer flood(announced);
        QVERIFY(flood.start());
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("over the limit of 4194304 bytes")));
        bool handled = false;
        QNetworkReply::NetworkError error = QNetworkReply::NoError;
        http->get(
            flood.url(QStringLiteral("/json")).toString(), [&](const QByteArray&) { handled = true; }, 60000,
            nullptr, [&](QString, QNetworkReply::NetworkError e) { error = e; });
        QTRY_COMPARE_WITH_TIMEOUT(error, QNetworkReply::UnknownContentError, 30000);
        QVERIFY(!handled);
        QTRY_VERIFY(flood.clientHungUp());
        QVERIFY2(flood.bytesSent() < HttpRequest::kMaxReplyBytes + kSlack,
                 qPrintable(QString::number(flood.bytesSent())));
    }

    // A download ends at the limit it was given: no result, and no part of it kept.
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("picture"));
    FloodHttpServer flood;
    QVERIFY(flood.start());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("over the limit of 262144 bytes")));
    bool done = false;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    http->downloadFile(
        flood.url(QStringLiteral("/picture")).toString(), path, nullptr, [&](bool, QString) { done = true; },
        [&](QString, QNetworkReply::NetworkError e) { error = e; }, 256 * 1024);
    QTRY_COMPARE_WITH_TIMEOUT(error, QNetworkReply::UnknownContentError, 30000);
    QVERIFY(!done);
    QVERIFY(!QFile::exists(path) && !QFile::exists(path + QStringLiteral(".part")));
    QTRY_VERIFY(flood.clientHungUp());

    // The blocking form, from a worker thread, at its own larger limit.
    FloodHttpServer syncFlood;
    QVERIFY(syncFlood.start());
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("over the limit of 33554432 bytes")));
    QByteArray data = "unchanged";
    std::atomic<bool> finished{false};
    bool ok = true;
    std::thread worker([&] {
        ok = http->syncGet(syncFlood.url(QStringLiteral("/speech")).toString(), &data);
        finished = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(finished.load(), 30000);
    worker.join();
    QVERIFY(!ok);
    QCOMPARE(data, QByteArray("unchanged"));
    QVERIFY(syncFlood.bytesSent() < HttpRequest::kMaxSyncReplyBytes + kSlack);
}

void TestHttpRequest::logsAndCallbacksCarryNoQuery()
{
    // Queries carry signatures, client secrets and what the user said.
    static QStringList lines;
    lines.clear();
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { lines << text; });
    QStringList urls;
    const QString url = mServer.url(QStringLiteral("/gone?client_secret=s3cret&q=%E4%BD%A0")).toString();
    http->get(url, nullptr, 2000, nullptr, [&](QString u, QNetworkReply::NetworkError) { urls << u; });
    QTRY_COMPARE(urls.size(), 1);
    QByteArray data;
    QVERIFY(!http->syncGet(mServer.url(QStringLiteral("/gone?tok=s3cret")).toString(), &data));
    qInstallMessageHandler(previous);
    QCOMPARE(urls.first(), mServer.url(QStringLiteral("/gone")).toString());
    QVERIFY(!lines.isEmpty());
    for (const QString& line : qAsConst(lines)) {
        QVERIFY2(!line.contains(QStringLiteral("s3cret")) && !line.contains(QStringLiteral("%E4")),
                 qPrintable(line));
    }
}

QTEST_GUILESS_MAIN(TestHttpRequest)
#include "tst_httprequest.moc"
