#include "Http/BaiduTranslate.h"
#include "Http/HttpManager.h"
#include "Http/JsonUtils.h"
#include "LocalHttpServer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>
#include <QtTest>

class TestBaiduTranslate : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void signedUrl();
    void queryBreakingCharactersReachTheServiceAsSigned();
    void replyRules();
    void translationIsReportedAsATextRecord();
    void blockingFormFailsWithoutAService();

private:
    QString signFromServer(const QByteArray& target) const;

    LocalHttpServer mService;
    LocalHttpServer mBackend;
    std::unique_ptr<BaiduTranslate> mTranslate;
    std::unique_ptr<HttpManager> mManager;
};

void TestBaiduTranslate::initTestCase()
{
    QVERIFY(mService.start());
    QVERIFY(mBackend.start());
    mTranslate = std::make_unique<BaiduTranslate>(mService.url(), QStringLiteral("20260000000000001"),
                                                  QStringLiteral("StandInTranslateKey0"));
    mManager = std::make_unique<HttpManager>(HttpRequest::getInstance(), mBackend.url(), mBackend.url());
    mManager->setTranslator(mTranslate.get());
    mBackend.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/textrecord/upload"), {200, R"({"code":1})", 0});
}

// What the service checks: the md5 over appid, q as it reads it, salt and key.
QString TestBaiduTranslate::signFromServer(const QByteArray& target) const
{
    const QUrlQuery query(QUrl(QString::fromUtf8(target)).query(QUrl::FullyEncoded));
    const QString q = query.queryItemValue(QStringLiteral("q"), QUrl::FullyDecoded);
    return BaiduTranslate::MD5Encode(query.queryItemValue(QStringLiteral("appid"), QUrl::FullyDecoded) + q +
                                     query.queryItemValue(QStringLiteral("salt"), QUrl::FullyDecoded) +
                                     QStringLiteral("StandInTranslateKey0"));
}

void TestBaiduTranslate::signedUrl()
{
    const QString url = mTranslate->buildUrl(QStringLiteral("zh"), QStringLiteral("en"),
                                             QStringLiteral("你好"), QStringLiteral("1804289383"));
    const QString sign =
        BaiduTranslate::MD5Encode(QStringLiteral("20260000000000001你好1804289383StandInTranslateKey0"));
    QCOMPARE(sign.size(), 32);
    QCOMPARE(sign, sign.toLower());
    // q stays raw in the text of the URL; the parsing of the request encodes it.
    QCOMPARE(url, mService.url().toString() +
                      QStringLiteral("/api/trans/vip/translate?q=你好&from=zh&to=en"
                                     "&appid=20260000000000001&salt=1804289383&sign=") +
                      sign);
    QCOMPARE(BaiduTranslate::UrlEncode(QStringLiteral("a b/ü")), QStringLiteral("a%20b%2F%C3%BC"));
}

void TestBaiduTranslate::queryBreakingCharactersReachTheServiceAsSigned()
{
    mService.setAnswer(QStringLiteral("/api/trans/vip/translate"), {200, R"({"from":"en","to":"zh"})", 0});
    const QString text = QStringLiteral("50% off & more + C# =");
    bool done = false;
    mManager->baiduTranslate(
        3, QStringLiteral("en"), QStringLiteral("zh"), text,
        [&](bool, BaiduTranslateMessage) { done = true; }, nullptr, nullptr);
    QTRY_VERIFY(done);
    const QByteArray target = mService.requests().last().target;
    const QUrlQuery query(QUrl(QString::fromUtf8(target)).query(QUrl::FullyEncoded));
    QCOMPARE(query.queryItemValue(QStringLiteral("q"), QUrl::FullyDecoded), text);
    QCOMPARE(query.queryItemValue(QStringLiteral("sign")), signFromServer(target));
}

void TestBaiduTranslate::replyRules()
{
    BaiduTranslateMessage m;
    QVERIFY(JsonUtils::getBaiduTranslateResult("not json", &m));
    QVERIFY(!m.error);
    QVERIFY(m.result.isEmpty());

    BaiduTranslateMessage numeric;
    JsonUtils::getBaiduTranslateResult(R"({"error_code":54001})", &numeric);
    QVERIFY(!numeric.error);
    QVERIFY(numeric.errorCode.isEmpty());

    BaiduTranslateMessage text =
        JsonUtils::jsonParse(QStringLiteral(R"({"error_code":"54001","error_msg":"Invalid Sign"})"));
    QVERIFY(text.error);
    QCOMPARE(text.errorCode, QStringLiteral("54001"));
    QCOMPARE(text.errorMsg, QStringLiteral("Invalid Sign"));

    BaiduTranslateMessage lines;
    JsonUtils::getBaiduTranslateResult(
        R"({"from":"en","to":"zh","trans_result":[{"src":"a","dst":"甲"},7,{"src":"b","dst":"乙"}]})",
        &lines);
    QCOMPARE(lines.result.size(), 2);
    QCOMPARE(lines.result.at(1).dst, QStringLiteral("乙"));
}

void TestBaiduTranslate::translationIsReportedAsATextRecord()
{
    mService.setAnswer(
        QStringLiteral("/api/trans/vip/translate"),
        {200, R"({"from":"en","to":"zh","trans_result":[{"src":"one","dst":"一"},{"src":"two","dst":"二"}]})",
         0});
    // The upload of an earlier case may still be on its way: wait for this one's.
    QTRY_COMPARE(mBackend.requests().size(), 1);
    BaiduTranslateMessage got;
    mManager->baiduTranslate(
        12, QStringLiteral("auto"), QStringLiteral("zh"), QStringLiteral("one\ntwo"),
        [&](bool ok, BaiduTranslateMessage m) {
            QVERIFY(ok);
            got = m;
        },
        nullptr, nullptr);
    QTRY_COMPARE(got.result.size(), 2);
    QTRY_COMPARE(mBackend.requests().size(), 2);
    const QJsonObject record = QJsonDocument::fromJson(mBackend.requests().last().body).object();
    QCOMPARE(record.value(QLatin1String("ip")).toInt(), 12);
    QCOMPARE(record.value(QLatin1String("from")).toString(), QStringLiteral("en"));  // the reply's own codes
    QCOMPARE(record.value(QLatin1String("src")).toString(), QStringLiteral("one\ntwo"));
    QCOMPARE(record.value(QLatin1String("dst")).toString(), QStringLiteral("一\n二"));
    QCOMPARE(record.value(QLatin1String("type")).toInt(), 1);
}

void TestBaiduTranslate::blockingFormFailsWithoutAService()
{
    HttpManager unreachable(HttpRequest::getInstance(), mBackend.url(), mBackend.url());
    BaiduTranslate nowhere(QUrl(QStringLiteral("http://127.0.0.1:1")), QStringLiteral("1"),
                           QStringLiteral("k"));
    unreachable.setTranslator(&nowhere);
    BaiduTranslateMessage none;
    QVERIFY(!unreachable.syncBaiduTranslate(1, QStringLiteral("zh"), QStringLiteral("en"),
                                            QStringLiteral("x"), &none));
    QVERIFY(none.result.isEmpty());
}

QTEST_GUILESS_MAIN(TestBaiduTranslate)
#include "tst_baidutranslate.moc"
