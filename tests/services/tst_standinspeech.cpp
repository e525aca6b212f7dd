#include "BaiduSpeech/BaiduSpeech.h"
#include "EngineFactory.h"
#include "Fault.h"
#include "GatewayService.h"
#include "IFlyService.h"
#include "IFlySpeech/IFlyWebSpeech.h"
#include "RecordingNoticeSink.h"
#include "ScriptedEngine.h"
#include "Utils/AppConfig.h"
#include "Utils/Notice.h"

#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QUrlQuery>
#include <QtEndian>
#include <QtTest>

namespace {

// 20 ms of 16 kHz audio at a steady level.
QByteArray packet(int level)
{
    QByteArray bytes(640, '\0');
    for (int i = 0; i < 320; ++i) {
        qToLittleEndian(static_cast<qint16>(i % 2 ? level : -level), bytes.data() + 2 * i);
    }
    return bytes;
}

QStringList texts(const QSignalSpy& spy)
{
    QStringList list;
    for (const QList<QVariant>& args : spy) {
        list << args.at(0).toString();
    }
    return list;
}

QStringList finals(const QList<RecognitionEngine::Result>& results)
{
    QStringList list;
    for (const auto& r : results) {
        if (r.final) {
            list << r.text;
        }
    }
    return list;
}

// Speaks into a client as a mouse does: packet by packet, letting the sockets run between.
// A voice is never steady; the gateway client hears a steady level as a pause.
template <typename Client>
void speak(Client* client, int level, int packets)
{
    for (int i = 0; i < packets; ++i) {
        client->onAudioData(packet(level * (1 + i % 3)));
        QTest::qWait(2);
    }
}

IFlyService::Credentials defaultCredentials()
{
    return {QString::fromUtf8(AppConfig::info(AppConfig::IFlyAppId).buildDefault),
            QString::fromUtf8(AppConfig::info(AppConfig::IFlyApiKey).buildDefault),
            QString::fromUtf8(AppConfig::info(AppConfig::IFlyApiSecret).buildDefault)};
}

}  // namespace

class TestStandInSpeech : public QObject {
    Q_OBJECT

private slots:
    void scriptedEngine();
    void sphinxEngineHearsEnglish();
    void gatewaySession();
    void gatewayRefusalErrorsAndCuts();
    void iflySession();
    void iflyHandshakeChecks();
};

void TestStandInSpeech::scriptedEngine()
{
    QCOMPARE(ScriptedEngine::stagesOf(QStringLiteral("今天天气好")),
             QStringList({QStringLiteral("今天"), QStringLiteral("今天天气"), QStringLiteral("今天天气好")}));
    QCOMPARE(ScriptedEngine::stagesOf(QStringLiteral("Hello big world.")),
             QStringList({QStringLiteral("Hello"), QStringLiteral("Hello big"),
                          QStringLiteral("Hello big world"), QStringLiteral("Hello big world.")}));

    ScriptedEngine engine({QStringLiteral("我想|我想去北经|我想去北京。"), QStringLiteral("第二句")});
    QList<RecognitionEngine::Result> results;
    // Quiet before speech says nothing; odd-sized chunks are put together into windows.
    results << engine.feed(packet(0).repeated(10));
    QVERIFY(results.isEmpty());
    const QByteArray speech = packet(3000).repeated(40);  // 800 ms
    for (int at = 0; at < speech.size(); at += 999) {
        results << engine.feed(speech.mid(at, 999));
    }
    QVERIFY(finals(results).isEmpty());
    QStringList partials;
    for (const auto& r : results) {
        partials << r.text;
    }
    // The partials grow, and the last of them is revised by the final.
    QCOMPARE(partials, QStringList({QStringLiteral("我想"), QStringLiteral("我想去北经")}));
    // 580 ms of quiet keeps the sentence open, 600 ms closes it.
    results = engine.feed(packet(0).repeated(29));
    QVERIFY(finals(results).isEmpty());
    results = engine.feed(packet(0));
    QCOMPARE(finals(results), QStringList({QStringLiteral("我想去北京。")}));

    // The next stretch of speech is the next line; the end of the audio closes it.
    results = engine.feed(packet(3000).repeated(5));
    results << engine.finish();
    QCOMPARE(finals(results), QStringList({QStringLiteral("第二句")}));
    QVERIFY(engine.finish().isEmpty());
    // Past the last line the script starts over.
    results = engine.feed(packet(3000).repeated(5));
    results << engine.finish();
    QCOMPARE(finals(results), QStringList({QStringLiteral("我想去北京。")}));
}

void TestStandInSpeech::sphinxEngineHearsEnglish()
{
    EngineFactory engines;
    QString error;
    if (!EngineFactory::sphinxAvailable()) {
        QVERIFY(!engines.setEngine(QStringLiteral("sphinx"), &error));
        QVERIFY(!error.isEmpty());
        QSKIP("built without pocketsphinx");
    }
    // Spoken by espeak-ng and brought to 16 kHz mono by sox, as a microphone would give it.
    QProcess speaker;
    speaker.start(
        QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("espeak-ng --stdout 'hello world' | sox -q -t wav - -r 16000 "
                                              "-c 1 -b 16 -e signed-integer -t raw -")});
    if (!speaker.waitForFinished(10000) || speaker.exitCode() != 0) {
        QSKIP("espeak-ng or sox is not installed");
    }
    const QByteArray pcm = speaker.readAllStandardOutput();
    QVERIFY(pcm.size() > 16000);

    QVERIFY(engines.setEngine(QStringLiteral("sphinx"), &error));
    const std::unique_ptr<RecognitionEngine> engine = engines.create();
    QList<RecognitionEngine::Result> results;
    const QByteArray audio = QByteArray(16000, '\0') + pcm + QByteArray(32000, '\0');
    for (int at = 0; at < audio.size(); at += 640) {
        results << engine->feed(audio.mid(at, 640));
    }
    results << engine->finish();
    const QStringList heard = finals(results);
    QVERIFY2(!heard.isEmpty(), "no final result");
    // Synthetic speech is not heard word for word; English words are what matters here.
    const QString text = heard.join(QLatin1Char(' '));
    QVERIFY2(QRegularExpression(QStringLiteral("^[a-z' ]*[a-z][a-z' ]*$")).match(text).hasMatch(),
             qPrintable(text));
}

void TestStandInSpeech::gatewaySession()
{
    Fault fault;
    EngineFactory engines;
    GatewayService gateway(&fault, &engines);
    QString error;
    QVERIFY2(gateway.start(0, &error), qPrintable(error));
    QCOMPARE(gateway.sdkPorts().size(), 3);  // counts 3, 1, 2: the client takes the second

    BaiduSpeech speech(nullptr, QStringLiteral("127.0.0.1"), gateway.port());
    QSignalSpy begin(&speech, &BaiduSpeech::signalBegin);
    QSignalSpy flush(&speech, &BaiduSpeech::signalFlushResult);
    QSignalSpy result(&speech, &BaiduSpeech::signalResult);
    QSignalSpy end(&speech, &BaiduSpeech::signalEnd);
    QSignalSpy failed(&speech, &BaiduSpeech::signalError);
    speech.start(1537);
    QTRY_COMPARE(begin.size(), 1);

    speak(&speech, 3000, 60);  // 1.2 s of speech
    speak(&speech, 0, 60);     // then quiet: the client adds its silence block
    QTRY_COMPARE(result.size(), 1);
    QCOMPARE(result.at(0).at(0).toString(), QStringLiteral("我想去北京看看。"));
    const QStringList partials = texts(flush);
    QVERIFY2(partials.size() >= 3, qPrintable(partials.join(QLatin1Char('/'))));
    QCOMPARE(partials.first(), QStringLiteral("我想"));
    QVERIFY(partials.contains(QStringLiteral("我想去北经")));

    // A second sentence, cut by the end of the session: the finish frame closes it.
    speak(&speech, 3000, 20);
    speech.stop();
    QTRY_COMPARE(end.size(), 1);
    QCOMPARE(result.size(), 2);
    QCOMPARE(result.at(1).at(0).toString(), QStringLiteral("今天天气很好。"));
    QTest::qWait(400);  // the tail's second finish frame brings no second end
    QCOMPARE(end.size(), 1);
    QCOMPARE(failed.size(), 0);
    QCOMPARE(gateway.sessionCount(), 1);
}

void TestStandInSpeech::gatewayRefusalErrorsAndCuts()
{
    Fault fault;
    EngineFactory engines;
    GatewayService gateway(&fault, &engines);
    // The client gives up the first entry of the list, then takes the lowest count: the second
    // port, which refuses.
    gateway.setCounts({5, 1, 5});
    gateway.setParamsAnswers({GatewaySession::Accept, GatewaySession::Refuse, GatewaySession::Accept});
    QString error;
    QVERIFY(gateway.start(0, &error));

    // The client moves on to the third port and the session still begins.
    {
        BaiduSpeech speech(nullptr, QStringLiteral("127.0.0.1"), gateway.port());
        QSignalSpy begin(&speech, &BaiduSpeech::signalBegin);
        QSignalSpy result(&speech, &BaiduSpeech::signalResult);
        speech.start(1537);
        QTRY_COMPARE(begin.size(), 1);
        QCOMPARE(gateway.sessionCount(), 2);
        speak(&speech, 3000, 20);
        speech.stop();
        QTRY_COMPARE(result.size(), 1);
    }

    // The gateway's own error after the parameters reaches the caller as one recognition error.
    gateway.setParamsAnswers({});
    QVERIFY(fault.apply(QStringLiteral("error=-3005"), &error));
    {
        BaiduSpeech speech(nullptr, QStringLiteral("127.0.0.1"), gateway.port());
        QSignalSpy failed(&speech, &BaiduSpeech::signalError);
        speech.start(1537);
        QTRY_COMPARE(failed.size(), 1);
        QCOMPARE(failed.at(0).at(0).toInt(), 404);
    }
    fault.clear();

    // A cut server list leaves the client with no port to try: the notice, and no session.
    QVERIFY(fault.apply(QStringLiteral("malformed"), &error));
    {
        RecordingNoticeSink sink;
        Notice::setSink(&sink);
        BaiduSpeech speech(nullptr, QStringLiteral("127.0.0.1"), gateway.port());
        QSignalSpy begin(&speech, &BaiduSpeech::signalBegin);
        const int sessions = gateway.sessionCount();
        speech.start(1537);
        QTRY_COMPARE(sink.notices, QStringList({QStringLiteral("无法连接到服务!")}));
        Notice::setSink(nullptr);
        QCOMPARE(begin.size(), 0);
        QCOMPARE(gateway.sessionCount(), sessions);
    }
    fault.clear();

    // Cut result lines are dropped, not half-read.
    {
        BaiduSpeech speech(nullptr, QStringLiteral("127.0.0.1"), gateway.port());
        QSignalSpy begin(&speech, &BaiduSpeech::signalBegin);
        QSignalSpy flush(&speech, &BaiduSpeech::signalFlushResult);
        QSignalSpy result(&speech, &BaiduSpeech::signalResult);
        speech.start(1537);
        QTRY_COMPARE(begin.size(), 1);
        QVERIFY(fault.apply(QStringLiteral("malformed"), &error));
        speak(&speech, 3000, 30);
        speech.stop();
        QTest::qWait(600);
        QCOMPARE(flush.size() + result.size(), 0);
    }
    fault.clear();

    // The connection ends after the first result: nothing more comes, nothing crashes.
    QVERIFY(fault.apply(QStringLiteral("close"), &error));
    {
        BaiduSpeech speech(nullptr, QStringLiteral("127.0.0.1"), gateway.port());
        QSignalSpy flush(&speech, &BaiduSpeech::signalFlushResult);
        QSignalSpy result(&speech, &BaiduSpeech::signalResult);
        QSignalSpy end(&speech, &BaiduSpeech::signalEnd);
        speech.start(1537);
        speak(&speech, 3000, 40);
        QTRY_COMPARE(flush.size(), 1);
        speech.stop();
        QTest::qWait(400);
        QCOMPARE(flush.size(), 1);
        QCOMPARE(result.size(), 0);
        QCOMPARE(end.size(), 0);
        speech.onEndTimeout();  // the client's own limit still ends the session
        QCOMPARE(end.size(), 1);
    }
}

void TestStandInSpeech::iflySession()
{
    Fault fault;
    EngineFactory engines;
    const IFlyService::Credentials credentials = defaultCredentials();
    IFlyService service(&fault, &engines, credentials);
    QString error;
    QVERIFY2(service.start(0, &error), qPrintable(error));
    const IFlyWebSpeech::Service client{QUrl(QStringLiteral("ws://127.0.0.1:%1/v2/iat").arg(service.port())),
                                        credentials.appId, credentials.apiKey, credentials.apiSecret};

    IFlyWebSpeech speech(nullptr, client, [] { return 1; });
    QSignalSpy begin(&speech, &IFlyWebSpeech::signalBegin);
    QSignalSpy flush(&speech, &IFlyWebSpeech::signalFlushResult);
    QSignalSpy result(&speech, &IFlyWebSpeech::signalResult);
    QSignalSpy end(&speech, &IFlyWebSpeech::signalEnd);
    speech.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 0);
    QTRY_COMPARE(begin.size(), 1);
    speak(&speech, 3000, 60);
    speak(&speech, 0, 40);
    speak(&speech, 3000, 20);
    QTRY_VERIFY(texts(flush).contains(QStringLiteral("我想去北京看看。今天")));
    speech.stop();
    QTRY_COMPARE(end.size(), 1);
    // The first sentence settled when the second began; the second was revised in place.
    QCOMPARE(result.size(), 1);
    QCOMPARE(result.at(0).at(0).toString(), QStringLiteral("我想去北京看看。今天天气很好。"));
    QVERIFY(texts(flush).contains(QStringLiteral("我想去北经")));
    QCOMPARE(service.sessionCount(), 1);

    // A wrong secret is refused at the handshake: an error, never a beginning.
    IFlyWebSpeech::Service wrong = client;
    wrong.apiSecret = QStringLiteral("not-the-secret");
    IFlyWebSpeech refused(nullptr, wrong, [] { return 1; });
    QSignalSpy refusedBegin(&refused, &IFlyWebSpeech::signalBegin);
    QSignalSpy refusedError(&refused, &IFlyWebSpeech::signalError);
    refused.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 0);
    QTRY_VERIFY(refusedError.size() >= 1);
    QCOMPARE(refusedBegin.size(), 0);
    refused.stop();

    // A wrong app id passes the handshake and is answered by the service's own code.
    IFlyWebSpeech::Service otherApp = client;
    otherApp.appId = QStringLiteral("someone-else");
    IFlyWebSpeech foreign(nullptr, otherApp, [] { return 1; });
    QSignalSpy foreignFlush(&foreign, &IFlyWebSpeech::signalFlushResult);
    foreign.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 0);
    speak(&foreign, 3000, 30);
    QTest::qWait(300);
    QCOMPARE(foreignFlush.size(), 0);
    foreign.stop();
    QCOMPARE(service.sessionCount(), 2);
}

void TestStandInSpeech::iflyHandshakeChecks()
{
    const IFlyService::Credentials credentials = defaultCredentials();
    const IFlyWebSpeech::Service client{QUrl(QStringLiteral("ws://127.0.0.1:9723/v2/iat")), credentials.appId,
                                        credentials.apiKey, credentials.apiSecret};
    const QDateTime now = QDateTime::currentDateTimeUtc();
    auto check = [&](const QUrl& url, const QString& host, const QDateTime& at) {
        const QString target = url.path() + QLatin1Char('?') + url.query(QUrl::FullyEncoded);
        QString reason;
        const int status = IFlyService::checkHandshake(QUrl(target), host, credentials, at, &reason);
        if (status != 0) {
            [&] { QVERIFY(!reason.isEmpty()); }();
        }
        return status;
    };
    const QUrl signedNow = IFlyWebSpeech::buildAuthUrl(client, now);
    QCOMPARE(check(signedNow, QStringLiteral("127.0.0.1:9723"), now), 0);
    // Five minutes of clock difference either way pass; more does not.
    QCOMPARE(check(signedNow, QStringLiteral("127.0.0.1:9723"), now.addSecs(299)), 0);
    QCOMPARE(check(signedNow, QStringLiteral("127.0.0.1:9723"), now.addSecs(-299)), 0);
    QCOMPARE(check(signedNow, QStringLiteral("127.0.0.1:9723"), now.addSecs(-302)), 403);
    QCOMPARE(check(signedNow, QStringLiteral("127.0.0.1:9723"), now.addSecs(302)), 403);
    // The signature covers the host: the same URL presented to another host fails.
    QCOMPARE(check(signedNow, QStringLiteral("localhost:9723"), now), 401);
    QUrl otherPath = signedNow;
    otherPath.setPath(QStringLiteral("/v2/tts"));
    QCOMPARE(check(otherPath, QStringLiteral("127.0.0.1:9723"), now), 404);
    QUrl noAuthorization = signedNow;
    QUrlQuery query(noAuthorization);
    query.removeQueryItem(QStringLiteral("authorization"));
    noAuthorization.setQuery(query);
    QCOMPARE(check(noAuthorization, QStringLiteral("127.0.0.1:9723"), now), 401);
}

QTEST_GUILESS_MAIN(TestStandInSpeech)
#include "tst_standinspeech.moc"
