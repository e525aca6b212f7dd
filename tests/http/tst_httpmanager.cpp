#include "FloodHttpServer.h"
#include "Http/HttpManager.h"
#include "LocalHttpServer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

class TestHttpManager : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void postsIndentedJsonUnderThePrefix();
    void feedbackBySubstring();
    void downloadsEndAtTheirLimits();

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
    // A picture announcing 9 MiB and an installer announcing 600 MiB end at their headers.
    QTemporaryDir dir;
    const struct {
        qint64 announced;
        bool installer;
    } cases[] = {{9 * 1024 * 1024, false}, {600 * 1024 * 1024, true}};
    for (const auto& c : cases) {
        FloodHttpServer server(c.announced, 1024 * 1024);
        QVERIFY(server.start());
        HttpManager manager(HttpRequest::getInstance(), server.url(QStringLiteral("/")),
                            server.url(QString()));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("over the limit")));
        QNetworkReply::NetworkError error = QNetworkReply::NoError;
        bool done = false;
        auto onDone = [&](bool, QString) { done = true; };
        auto onError = [&](QString, QNetworkReply::NetworkError e) { error = e; };
        if (c.installer) {
            manager.downloadApp(QStringLiteral("9.9"), dir.filePath(QStringLiteral("i")), nullptr, onDone,
                                onError);
        } else {
            manager.downloadImage(QStringLiteral("home.png"), dir.filePath(QStringLiteral("p")), onDone,
                                  onError);
        }
        QTRY_COMPARE(error, QNetworkReply::UnknownContentError);
        QVERIFY(!done);
    }
}

QTEST_GUILESS_MAIN(TestHttpManager)
#include "tst_httpmanager.moc"
