#include "FloodHttpServer.h"
#include "Http/HttpManager.h"
#include "LocalHttpServer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QUrlQuery>
#include <QtTest>

class TestHttpManager : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void postsIndentedJsonUnderThePrefix();
    void feedbackBySubstring();
    void downloadsEndAtTheirLimits();
    void backendStringsStayInTheirQueryItem();

private:
    LocalHttpServer mBackend;
    LocalHttpServer mLookup;
    std::unique_ptr<HttpManager> mManager;
};

void TestHttpManager::initTestCase()
{
    QVERIFY(mBackend.start());
    QVERIFY(mLookup.start());
    mManager = std::make_unique<HttpManager>(HttpRequest::getInstance(), mBackend.url(QStringLiteral("/")),
                                             mLookup.url());
    mManager->setTimeout(8000);
}

void TestHttpManager::postsIndentedJsonUnderThePrefix()
{
    mBackend.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/textrecord/upload"),
                       {200, R"({"code":1,"msg":"ok"})", 0});
    TextRecord record;
    record.src = QStringLiteral("你好");
    int answer = -1;
    mManager->uploadRecoed(
        record, [&](bool ok) { answer = ok; }, nullptr, nullptr);
    QTRY_COMPARE(answer, 1);
    const LocalHttpServer::Request r = mBackend.requests().last();
    QCOMPARE(r.method, QByteArray("POST"));
    QCOMPARE(r.target, QByteArray("/BelmorZorvaneV2Mac/textrecord/upload"));
    const QJsonObject sent = QJsonDocument::fromJson(r.body).object();
    QCOMPARE(r.body, QJsonDocument(sent).toJson(QJsonDocument::Indented));
    QCOMPARE(sent.value(QLatin1String("src")).toString(), QStringLiteral("你好"));
}

void TestHttpManager::feedbackBySubstring()
{
    mBackend.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/feedback/upload"),
                       {200, "<html>反馈成功, thank you</html>", 0, "text/html"});
    int answer = -1;
    mManager->feedback(
        QStringLiteral("标题"), QStringLiteral("内容 text"), 999999, [&](bool ok) { answer = ok; }, nullptr,
        nullptr);
    QTRY_COMPARE(answer, 1);

    mBackend.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/feedback/upload"), {200, R"({"code":1})", 0});
    answer = -1;
    mManager->feedback(
        QStringLiteral("t"), QStringLiteral("c"), 999999, [&](bool ok) { answer = ok; }, nullptr, nullptr);
    QTRY_COMPARE(answer, 0);
}

void TestHttpManager::downloadsEndAtTheirLimits()
{
    // An installer is larger than any reply: 6 MiB arrive whole. A picture announcing 9 MiB
    // ends at its headers.
    QTemporaryDir dir;
    FloodHttpServer installer(6 * 1024 * 1024, 6 * 1024 * 1024);
    FloodHttpServer picture(9 * 1024 * 1024, 1024 * 1024);
    QVERIFY(installer.start() && picture.start());
    QString saved;
    HttpManager(HttpRequest::getInstance(), installer.url(QStringLiteral("/")), QUrl())
        .downloadApp(
            QStringLiteral("9.9"), dir.filePath(QStringLiteral("i")), nullptr,
            [&](bool, QString path) { saved = path; }, nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(QFileInfo(saved).size(), qint64(6 * 1024 * 1024), 20000);
    // What the system will install never comes over plain http from another machine.
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("not fetched over plain http")));
    QString refused;
    HttpManager(HttpRequest::getInstance(), QUrl(QStringLiteral("http://updates.example.invalid/")), QUrl())
        .downloadApp(
            QStringLiteral("9.9"), dir.filePath(QStringLiteral("j")), nullptr,
            [&](bool, QString) { saved.clear(); },
            [&](QString url, QNetworkReply::NetworkError) { refused = url; });
    QTRY_VERIFY(refused.startsWith(QLatin1String("http://updates.example.invalid/")));
    QVERIFY(!saved.isEmpty());

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("over the limit of 8388608 bytes")));
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    HttpManager(HttpRequest::getInstance(), picture.url(QStringLiteral("/")), QUrl())
        .downloadImage(QStringLiteral("home.png"), dir.filePath(QStringLiteral("p")), nullptr,
                       [&](QString, QNetworkReply::NetworkError e) { error = e; });
    QTRY_COMPARE(error, QNetworkReply::UnknownContentError);
}

void TestHttpManager::backendStringsStayInTheirQueryItem()
{
    // A picture name or a version with '&', '=', '#', '%' or '+' is one item of the query.
    mBackend.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/deviceInfo/download"),
                       {200, "png", 0, "image/png"});
    mBackend.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/version/appDownload"),
                       {200, "deb", 0, "text/plain"});
    const QString odd = QStringLiteral("a&b=c#d%e f+.png");
    QTemporaryDir dir;
    int done = 0;
    const int before = mBackend.requests().size();
    mManager->downloadImage(
        odd, dir.filePath(QStringLiteral("p")), [&](bool, QString) { ++done; }, nullptr);
    mManager->downloadApp(
        odd, dir.filePath(QStringLiteral("i")), nullptr, [&](bool, QString) { ++done; }, nullptr);
    QTRY_COMPARE(done, 2);
    const QList<LocalHttpServer::Request> requests = mBackend.requests().mid(before);
    QCOMPARE(requests.size(), 2);
    for (const LocalHttpServer::Request& r : requests) {
        const QUrlQuery query(QUrl::fromEncoded("http://backend" + r.target));
        QCOMPARE(query.queryItems(QUrl::FullyDecoded).size(), 1);
        QCOMPARE(query.queryItems(QUrl::FullyDecoded).first().second, odd);
    }
}

QTEST_GUILESS_MAIN(TestHttpManager)
#include "tst_httpmanager.moc"
