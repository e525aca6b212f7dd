#include "Http/BaiduTranslate.h"
#include "Http/HttpManager.h"
#include "ServiceSet.h"
#include "SpeechRec/SpeechSynthesisWorker.h"
#include "Utils/AppConfig.h"

#include <QEventLoop>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

namespace {

QString buildDefault(AppConfig::Key key)
{
    return QString::fromUtf8(AppConfig::info(key).buildDefault);
}

// A request as it is, outside the application's clients: the HTTP status and the body.
QPair<int, QByteArray> exchange(const QUrl& url, const QByteArray& post = QByteArray(), bool isPost = false)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
    QNetworkReply* reply = isPost ? manager.post(request, post) : manager.get(request);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    loop.exec();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray body = reply->readAll();
    delete reply;
    return {status, body};
}

// What one request ended in: exactly one of the three callbacks, counted.
struct Outcome {
    int results = 0;
    int timeouts = 0;
    int errors = 0;
    bool ok = false;
    int calls() const { return results + timeouts + errors; }
};

}  // namespace

// The application's own HTTP clients against the stand-in services, over loopback.
class TestStandInHttp : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void backendRecords();
    void uploadsAreLogged();
    void downloads();
    void translation();
    void synthesis();
    void synthesisRefusesWhatTheServiceRefuses_data();
    void synthesisRefusesWhatTheServiceRefuses();
    void backendRefusesMalformedBodies_data();
    void backendRefusesMalformedBodies();
    void faults();

private:
    template <typename Record>
    HttpManager::ResultFunc<Record> into(Outcome* outcome, Record* record)
    {
        return [outcome, record](bool ok, Record r) {
            ++outcome->results;
            outcome->ok = ok;
            *record = r;
        };
    }
    static std::function<void(bool, QString)> doneInto(Outcome* outcome)
    {
        return [outcome](bool ok, QString) {
            ++outcome->results;
            outcome->ok = ok;
        };
    }
    HttpManager::TimeoutFunc timeoutInto(Outcome* outcome)
    {
        return [outcome](const QString&) { ++outcome->timeouts; };
    }
    HttpManager::ErrorFunc errorInto(Outcome* outcome)
    {
        return [outcome](const QString&, QNetworkReply::NetworkError) { ++outcome->errors; };
    }

    ServiceSet mServices;
    std::unique_ptr<HttpManager> mManager;
    std::unique_ptr<BaiduTranslate> mTranslator;
    QTemporaryDir mDir;
};

void TestStandInHttp::initTestCase()
{
    mServices.setAllPortsFree();
    mServices.setInstallerKib(300);
    QString error;
    QVERIFY2(mServices.start(&error), qPrintable(error));
    mManager = std::make_unique<HttpManager>(HttpRequest::getInstance(), mServices.url(ServiceSet::Backend),
                                             mServices.url(ServiceSet::IpLookup));
    mManager->setTimeout(3000);
    mTranslator = std::make_unique<BaiduTranslate>(mServices.url(ServiceSet::Translate),
                                                   buildDefault(AppConfig::TranslateAppId),
                                                   buildDefault(AppConfig::TranslateKey));
    mManager->setTranslator(mTranslator.get());
}

void TestStandInHttp::init()
{
    for (int id = 0; id < ServiceSet::Count; ++id) {
        mServices.fault(static_cast<ServiceSet::Id>(id)).clear();
    }
}

void TestStandInHttp::backendRecords()
{
    Outcome o;
    VersionInfo version;
    mManager->getAppVersion(into(&o, &version), nullptr, nullptr);
    QTRY_COMPARE(o.results, 1);
    QVERIFY(o.ok);
    QCOMPARE(version.version, QStringLiteral(ZORVANE_APP_VERSION));
    QCOMPARE(version.enable, QString(QChar(1)));

    // The device list, direct UIs, open time, phrase and address report are walked by the
    // console's ladder suite against these services.

    // The parsing query passes the backend's body check and a seeded reply comes back.
    o = {};
    SemanticParsingResult parsed;
    mManager->analyzeWord(QStringLiteral("搜索天气"), 18, 0, QStringLiteral("2.0.0"), into(&o, &parsed),
                          nullptr, nullptr);
    QTRY_COMPARE(o.results, 1);
    QVERIFY(o.ok);
    QCOMPARE(parsed.searchWord, QStringLiteral("天气"));

    // The address comes back with its line feed, which the client drops.
    o = {};
    QString address;
    mManager->getIpAddress(into(&o, &address), nullptr, nullptr);
    QTRY_COMPARE(o.results, 1);
    QCOMPARE(address, QStringLiteral("127.0.0.1"));

    o = {};
    IpInfo info;
    mManager->getIpInfo(address, into(&o, &info), nullptr, nullptr);
    QTRY_COMPARE(o.results, 1);
    QVERIFY(o.ok);
    QCOMPARE(info.ip, address);
    o = {};
    // The lookup's own failure code is not read: an empty record comes back.
    mManager->getIpInfo(QStringLiteral("not-an-address"), into(&o, &info), nullptr, nullptr);
    QTRY_COMPARE(o.results, 1);
    QVERIFY(info.ip.isEmpty());
}

void TestStandInHttp::uploadsAreLogged()
{
    const int before = mServices.uploads().entries().size();
    Outcome o;
    DeviceRecord record;
    record.device = 7;
    record.appVersion = QStringLiteral("2.0.0");
    mManager->heartbeat(record, into(&o, &record), nullptr, nullptr);
    QTRY_COMPARE(o.results, 1);
    QVERIFY(o.ok);

    o = {};
    int feedback = -1;
    mManager->feedback(
        QStringLiteral("标题 & more #1"), QStringLiteral("内容 100% + 1"), 3000,
        [&](bool ok) { feedback = ok; }, nullptr, nullptr);
    QTRY_COMPARE(feedback, 1);

    TextRecord text;
    text.src = QStringLiteral("你好");
    text.type = 0;
    int uploaded = -1;
    mManager->uploadRecoed(
        text, [&](bool ok) { uploaded = ok; }, nullptr, nullptr);
    QTRY_COMPARE(uploaded, 1);

    QCOMPARE(mServices.uploads().entries().size(), before + 3);
    const QJsonArray feedbacks = mServices.uploads().entries(QStringLiteral("/feedback/upload"));
    const QJsonObject sent = feedbacks.last()[QLatin1String("body")].toObject();
    QCOMPARE(sent.value(QLatin1String("title")).toString(), QStringLiteral("标题 & more #1"));
    QCOMPARE(sent.value(QLatin1String("content")).toString(), QStringLiteral("内容 100% + 1"));
}

void TestStandInHttp::downloads()
{
    Outcome o;
    const QString image = mDir.filePath(QStringLiteral("home.png"));
    mManager->downloadImage(QStringLiteral("zorvane_home.png"), image, doneInto(&o), errorInto(&o));
    QTRY_COMPARE(o.calls(), 1);
    QVERIFY(o.ok);
    QVERIFY(!QImage(image).isNull());

    // A name the backend does not know ends in one failure, whichever way it is reported.
    o = {};
    mManager->downloadImage(QStringLiteral("nobody.png"), mDir.filePath(QStringLiteral("nobody.png")),
                            doneInto(&o), errorInto(&o));
    QTRY_VERIFY(o.calls() >= 1);
    QTest::qWait(100);
    QCOMPARE(o.calls(), 1);
    QVERIFY(!o.ok);

    // The installer, whole, with its length announced.
    o = {};
    QList<QPair<int, int>> progress;
    const QString installer = mDir.filePath(QStringLiteral("installer.run"));
    mManager->downloadApp(
        QStringLiteral(ZORVANE_APP_VERSION), installer,
        [&](int total, int received) {
            progress.append({total, received});
        },
        doneInto(&o), errorInto(&o));
    QTRY_COMPARE(o.calls(), 1);
    QVERIFY(o.ok);
    QCOMPARE(QFileInfo(installer).size(), 300 * 1024);
    QVERIFY(!progress.isEmpty());
    QCOMPARE(progress.last(), qMakePair(300 * 1024, 300 * 1024));
}

void TestStandInHttp::translation()
{
    Outcome o;
    BaiduTranslateMessage message;
    mManager->baiduTranslate(7, QStringLiteral("zh"), QStringLiteral("en"), QStringLiteral("你好\n谢谢"),
                             into(&o, &message), nullptr, nullptr);
    QTRY_COMPARE(o.results, 1);
    QVERIFY(o.ok);
    QCOMPARE(message.result.size(), 2);
    QCOMPARE(message.result.at(0).dst, QStringLiteral("Hello"));
    QCOMPARE(message.result.at(1).dst, QStringLiteral("Thank you"));

    // The service checks the sign over the text it decoded: '&' and '%' must arrive intact.
    BaiduTranslateMessage echoed;
    QVERIFY(mManager->syncBaiduTranslate(0, QStringLiteral("auto"), QStringLiteral("de"),
                                         QStringLiteral("fish & chips 100%+"), &echoed));
    QVERIFY(!echoed.error);
    QCOMPARE(echoed.result.size(), 1);
    QCOMPARE(echoed.result.at(0).src, QStringLiteral("fish & chips 100%+"));

    // A wrong key is the service's sign error, not a transport failure.
    BaiduTranslate wrongKey(mServices.url(ServiceSet::Translate), buildDefault(AppConfig::TranslateAppId),
                            QStringLiteral("not-the-key"));
    mManager->setTranslator(&wrongKey);
    BaiduTranslateMessage refused;
    const bool answered = mManager->syncBaiduTranslate(0, QStringLiteral("zh"), QStringLiteral("en"),
                                                       QStringLiteral("你好"), &refused);
    mManager->setTranslator(mTranslator.get());
    QVERIFY(answered);
    QVERIFY(refused.error);
    QCOMPARE(refused.errorCode, QStringLiteral("54001"));
    QVERIFY(refused.result.isEmpty());
}

void TestStandInHttp::synthesis()
{
    SpeechSynthesisWorker::Service service{
        mServices.url(ServiceSet::Token), mServices.url(ServiceSet::Synthesis),
        buildDefault(AppConfig::TokenClientId), buildDefault(AppConfig::TokenClientSecret),
        buildDefault(AppConfig::SynthesisCuid)};
    SpeechSynthesisWorker worker(service);
    QVERIFY(!worker.getToken().isEmpty());
    QSignalSpy audio(&worker, &SpeechSynthesisWorker::signalResult);
    worker.onSpeechSynthesis(QStringLiteral("你好"), 0, 5, 5, 5);
    worker.onSpeechSynthesis(QStringLiteral("Meet at 10:30; room [4]"), 3, 5, 5, 5);
    QTRY_COMPARE(audio.size(), 2);
    for (const QList<QVariant>& args : audio) {
        const QByteArray wav = args.at(0).toByteArray();
        QVERIFY(wav.startsWith("RIFF"));
        QCOMPARE(qFromLittleEndian<quint32>(wav.constData() + 4), static_cast<quint32>(wav.size() - 8));
        const int data = wav.indexOf("data", 12);
        QVERIFY(data > 0);
        QCOMPARE(qFromLittleEndian<quint32>(wav.constData() + data + 4),
                 static_cast<quint32>(wav.size() - data - 8));
        QVERIFY(wav.size() > 1000);
    }

    service.clientSecret = QStringLiteral("wrong");
    SpeechSynthesisWorker refused(service);
    QVERIFY(refused.getToken().isEmpty());
}

void TestStandInHttp::synthesisRefusesWhatTheServiceRefuses_data()
{
    // One parameter changed (an empty value: left out) from a query the service takes.
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("errorNumber");  // 0: audio
    QTest::newRow("as sent") << QString() << QString() << 0;
    QTest::newRow("time in the text") << QStringLiteral("tex") << QStringLiteral("Meet at 10:30") << 0;
    QTest::newRow("no text") << QStringLiteral("tex") << QString() << 501;
    QTest::newRow("text over 1024") << QStringLiteral("tex") << QString(1025, QLatin1Char('a')) << 501;
    QTest::newRow("language") << QStringLiteral("lan") << QStringLiteral("en") << 501;
    QTest::newRow("client type") << QStringLiteral("ctp") << QStringLiteral("2") << 501;
    QTest::newRow("voice 2") << QStringLiteral("per") << QStringLiteral("2") << 501;
    QTest::newRow("speed 16") << QStringLiteral("spd") << QStringLiteral("16") << 501;
    QTest::newRow("pitch -1") << QStringLiteral("pit") << QStringLiteral("-1") << 501;
    QTest::newRow("volume not a number") << QStringLiteral("vol") << QStringLiteral("%7") << 501;
    QTest::newRow("volume 5.0") << QStringLiteral("vol") << QStringLiteral("5.0") << 501;
    QTest::newRow("token") << QStringLiteral("tok") << QStringLiteral("24.other") << 502;
    QTest::newRow("client id") << QStringLiteral("cuid") << QStringLiteral("someone") << 500;
}

void TestStandInHttp::synthesisRefusesWhatTheServiceRefuses()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(int, errorNumber);
    SpeechSynthesisWorker worker({mServices.url(ServiceSet::Token), mServices.url(ServiceSet::Synthesis),
                                  buildDefault(AppConfig::TokenClientId),
                                  buildDefault(AppConfig::TokenClientSecret), QString()});
    QList<QPair<QString, QString>> items{{QStringLiteral("tex"), QStringLiteral("hello")},
                                         {QStringLiteral("lan"), QStringLiteral("zh")},
                                         {QStringLiteral("cuid"), buildDefault(AppConfig::SynthesisCuid)},
                                         {QStringLiteral("ctp"), QStringLiteral("1")},
                                         {QStringLiteral("tok"), worker.getToken()},
                                         {QStringLiteral("per"), QStringLiteral("4")},
                                         {QStringLiteral("spd"), QStringLiteral("15")},
                                         {QStringLiteral("pit"), QStringLiteral("0")},
                                         {QStringLiteral("vol"), QStringLiteral("5")}};
    QByteArray query;
    for (const auto& item : items) {
        const QString v = item.first == key ? value : item.second;
        if (!v.isEmpty()) {
            query += (query.isEmpty() ? "" : "&") + item.first.toLatin1() + '=' + QUrl::toPercentEncoding(v);
        }
    }
    QUrl url = mServices.url(ServiceSet::Synthesis);
    url.setPath(QStringLiteral("/text2audio"));
    url.setQuery(QString::fromLatin1(query), QUrl::StrictMode);
    const QPair<int, QByteArray> reply = exchange(url);
    QCOMPARE(reply.first, 200);
    if (errorNumber == 0) {
        QVERIFY2(reply.second.startsWith("RIFF"), reply.second.left(200).constData());
    } else {
        QCOMPARE(QJsonDocument::fromJson(reply.second).object().value(QLatin1String("err_no")).toInt(),
                 errorNumber);
    }
}

void TestStandInHttp::backendRefusesMalformedBodies_data()
{
    QTest::addColumn<QString>("endpoint");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("fault");
    const auto row = [](const char* name, const char* endpoint, const QByteArray& body, const char* fault) {
        QTest::newRow(name) << QString::fromLatin1(endpoint) << body << QString::fromLatin1(fault);
    };
    const QByteArray ids = R"("dongleFlashID":"a","remoteFlashID":"b",)";
    row("register without online", "/device/register", "{" + ids + R"("customerCode":"c","createDate":"d"})",
        "missing key online");
    row("register online as text", "/device/register",
        "{" + ids + R"("customerCode":"c","createDate":"d","online":"1"})", "key online must be an integer");
    row("heartbeat device as text", "/heartbeat/heartbeat",
        "{" + ids + R"("device":"7","ip":0,"appVersion":"2","systemVersion":"x"})",
        "key device must be an integer");
    row("heartbeat without ip", "/heartbeat/heartbeat",
        "{" + ids + R"("device":7,"appVersion":"2","systemVersion":"x"})", "missing key ip");
    row("address with a numeric id", "/ipinfo/upload",
        R"({"ip":"1.2.3.4","country":"","country_id":"","area":"","area_id":"","region":"",)"
        R"("region_id":"","city":"","city_id":"","county":"","county_id":"","isp":"","isp_id":9})",
        "key isp_id must be a string");
    const QByteArray text = R"({"ip":0,"from":"zh","to":"en","src":"a","dst":"b",)";
    row("text record type 1.5", "/textrecord/upload", text + R"("type":1.5})", "key type must be an integer");
    row("text record with a stray key", "/textrecord/upload", text + R"("type":0,"lang":"x"})",
        "unknown key lang");
    const char* parsing = "/semanticParsing/semanticParsing";
    row("parsing without content", parsing, R"({"serviceCategory":18,"ip":0,"version":"2.0.0"})",
        "missing key content");
    row("parsing of a form", parsing, "content=x&ip=0", "body is no JSON object");
    row("parsing of an array", parsing, "[1]", "body is no JSON object");
}

void TestStandInHttp::backendRefusesMalformedBodies()
{
    QFETCH(QString, endpoint);
    QFETCH(QByteArray, body);
    QFETCH(QString, fault);
    const int uploads = mServices.uploads().entries().size();
    QUrl url = mServices.url(ServiceSet::Backend);
    url.setPath(QStringLiteral("/BelmorZorvaneV2Mac") + endpoint);
    const QPair<int, QByteArray> reply = exchange(url, body, true);
    QCOMPARE(reply.first, 400);
    const QJsonObject envelope = QJsonDocument::fromJson(reply.second).object();
    QVERIFY(envelope.value(QLatin1String("code")).toInt() != 1);
    QCOMPARE(envelope.value(QLatin1String("msg")).toString(), fault);
    QCOMPARE(mServices.uploads().entries().size(), uploads);  // nothing kept of it
}

void TestStandInHttp::faults()
{
    Fault& backend = mServices.fault(ServiceSet::Backend);
    // Asks for the version with the switch on; what the one request ended in.
    auto ask = [&](const QString& fault, int timeoutMs = 3000) {
        QString error;
        [&] { QVERIFY(fault.isEmpty() || backend.apply(fault, &error)); }();
        Outcome o;
        VersionInfo version;
        mManager->setTimeout(timeoutMs);
        mManager->getAppVersion(into(&o, &version), timeoutInto(&o), errorInto(&o));
        [&] { QTRY_VERIFY_WITH_TIMEOUT(o.calls() >= 1, 5000); }();
        QTest::qWait(50);  // room for a second, wrong callback
        mManager->setTimeout(3000);
        backend.clear();
        return o;
    };

    // The limit passes: the time-out, then the error of the aborted reply, and no result.
    Outcome o = ask(QStringLiteral("delay=800"), 200);
    QCOMPARE(o.timeouts, 1);
    QCOMPARE(o.errors, 1);
    QCOMPARE(o.results, 0);
    o = ask(QStringLiteral("delay=800"));  // the same delay inside the limit is only slow
    QCOMPARE(o.results, 1);
    QVERIFY(o.ok);

    o = ask(QStringLiteral("status=500"));
    QCOMPARE(o.calls(), 1);
    QCOMPARE(o.errors, 1);
    o = ask(QStringLiteral("malformed"));
    QCOMPARE(o.calls(), 1);
    QCOMPARE(o.results, 1);
    QVERIFY(!o.ok);
    o = ask(QStringLiteral("error=500"));
    QCOMPARE(o.results, 1);
    QVERIFY(!o.ok);  // the backend's own failure code
    o = ask(QStringLiteral("close"));
    QCOMPARE(o.calls(), 1);
    QVERIFY(o.errors == 1 || (o.results == 1 && !o.ok));

    mServices.setRefused(ServiceSet::Backend, true);
    o = ask(QString());
    mServices.setRefused(ServiceSet::Backend, false);
    QCOMPARE(o.calls(), 1);
    QCOMPARE(o.errors, 1);
    o = ask(QString());  // listening again on the same port
    QCOMPARE(o.results, 1);
    QVERIFY(o.ok);
}

QTEST_GUILESS_MAIN(TestStandInHttp)
#include "tst_standinhttp.moc"
