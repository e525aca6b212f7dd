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

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QUrlQuery>
#include <QWebSocket>
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

QStringList finals(const QList<RecognitionEngine::Result>& results, bool onlyFinal = true)
{
    QStringList list;
    for (const auto& r : results) {
        if (r.final || !onlyFinal) {
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

// The dictation stand-in with the build's credentials, listening on a free port.
struct IFlyStandIn {
    Fault fault;
    EngineFactory engines;
    IFlyService::Credentials credentials{
        QString::fromUtf8(AppConfig::info(AppConfig::IFlyAppId).buildDefault),
        QString::fromUtf8(AppConfig::info(AppConfig::IFlyApiKey).buildDefault),
        QString::fromUtf8(AppConfig::info(AppConfig::IFlyApiSecret).buildDefault)};
    IFlyService service{&fault, &engines, credentials};
    bool start()
    {
        QString error;
        return service.start(0, &error);
    }
};

// The three frames of a short dictation as the service expects them: first, continue, end.
QList<QJsonObject> dictationFrames(const QString& appId)
{
    const QString audio = QString::fromLatin1(packet(3000).toBase64());
    auto data = [&](int status, const QString& bytes) {
        return QJsonObject{{QStringLiteral("status"), status},
                           {QStringLiteral("format"), QStringLiteral("audio/L16;rate=16000")},
                           {QStringLiteral("encoding"), QStringLiteral("raw")},
                           {QStringLiteral("audio"), bytes}};
    };
    const QJsonObject business{{QStringLiteral("language"), QStringLiteral("zh_cn")},
                               {QStringLiteral("accent"), QStringLiteral("mandarin")},
                               {QStringLiteral("domain"), QStringLiteral("iat")},
                               {QStringLiteral("vad_eos"), 10000},
                               {QStringLiteral("rlang"), QStringLiteral("zh-hk")},
                               {QStringLiteral("dwa"), QStringLiteral("wpgs")}};
    return {QJsonObject{{QStringLiteral("common"), QJsonObject{{QStringLiteral("app_id"), appId}}},
                        {QStringLiteral("business"), business},
                        {QStringLiteral("data"), data(0, audio)}},
            QJsonObject{{QStringLiteral("data"), data(1, audio)}},
            QJsonObject{{QStringLiteral("data"), data(2, QString())}}};
}

// Sets (or with an invalid value removes) the member at a dotted path.
void setPath(QJsonObject* object, const QString& path, const QVariant& value)
{
    const int dot = path.indexOf(QLatin1Char('.'));
    if (dot >= 0) {
        QJsonObject inner = object->value(path.left(dot)).toObject();
        setPath(&inner, path.mid(dot + 1), value);
        object->insert(path.left(dot), inner);
    } else if (value.isValid()) {
        object->insert(path, QJsonValue::fromVariant(value));
    } else {
        object->remove(path);
    }
}

// Sends the frames over a signed connection, as raw text, and keeps every reply until the
// service closes.
QList<QJsonObject> converse(quint16 port, const IFlyService::Credentials& credentials,
                            const QList<QJsonObject>& frames)
{
    const IFlyWebSpeech::Service client{QUrl(QStringLiteral("ws://127.0.0.1:%1/v2/iat").arg(port)),
                                        credentials.appId, credentials.apiKey, credentials.apiSecret};
    QWebSocket socket;
    QList<QJsonObject> replies;
    QObject::connect(&socket, &QWebSocket::textMessageReceived, [&](const QString& text) {
        replies << QJsonDocument::fromJson(text.toUtf8()).object();
    });
    socket.open(IFlyWebSpeech::buildAuthUrl(client, QDateTime::currentDateTimeUtc()));
    if (!QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::ConnectedState; }, 5000)) {
        return {};
    }
    for (const QJsonObject& frame : frames) {
        socket.sendTextMessage(QString::fromUtf8(QJsonDocument(frame).toJson(QJsonDocument::Compact)));
        QTest::qWait(2);
    }
    (void)QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::UnconnectedState; }, 5000);
    return replies;
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
    void iflyFrameChecks_data();
    void iflyFrameChecks();
    void iflyCorrectionOnlyWhenAsked();
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
    // The partials grow, and the last of them is revised by the final.
    QCOMPARE(finals(results, false), QStringList({QStringLiteral("我想"), QStringLiteral("我想去北经")}));
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

    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.port());
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
        BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.port());
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
        BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.port());
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
        BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.port());
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
        BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.port());
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
        BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.port());
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
    IFlyStandIn ifly;
    QVERIFY(ifly.start());
    const IFlyService::Credentials& credentials = ifly.credentials;
    const IFlyWebSpeech::Service client{
        QUrl(QStringLiteral("ws://127.0.0.1:%1/v2/iat").arg(ifly.service.port())), credentials.appId,
        credentials.apiKey, credentials.apiSecret};

    IFlyWebSpeech speech(client, [] { return 1; });
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
    QCOMPARE(ifly.service.sessionCount(), 1);

    // A wrong secret is refused at the handshake: an error, never a beginning.
    IFlyWebSpeech::Service wrong = client;
    wrong.apiSecret = QStringLiteral("not-the-secret");
    IFlyWebSpeech refused(wrong, [] { return 1; });
    QSignalSpy refusedBegin(&refused, &IFlyWebSpeech::signalBegin);
    QSignalSpy refusedError(&refused, &IFlyWebSpeech::signalError);
    refused.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 0);
    QTRY_VERIFY(refusedError.size() >= 1);
    QCOMPARE(refusedBegin.size(), 0);
    refused.stop();
    QCOMPARE(ifly.service.sessionCount(), 1);
}

void TestStandInSpeech::iflyHandshakeChecks()
{
    const IFlyService::Credentials credentials = IFlyStandIn().credentials;
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

void TestStandInSpeech::iflyFrameChecks_data()
{
    QTest::addColumn<int>("frame");  // 0 first, 1 continue, 2 end
    QTest::addColumn<QString>("path");
    QTest::addColumn<QVariant>("value");  // invalid: the member is left out
    QTest::addColumn<int>("code");
    // One member changed from a dictation the service takes; any refusal is 10163 but the app id's.
    const auto row = [](const char* name, int frame, const char* path, const QVariant& value,
                        int code = 10163) {
        QTest::newRow(name) << frame << QString::fromLatin1(path) << value << code;
    };
    row("as sent", 0, "data.status", 0, 0);
    row("without rlang", 0, "business.rlang", QVariant(), 0);
    row("app id", 0, "common.app_id", QStringLiteral("other"), 10105);
    row("no business", 0, "business", QVariant());
    row("language", 0, "business.language", QStringLiteral("fr_fr"));
    row("no accent", 0, "business.accent", QVariant());
    row("domain", 0, "business.domain", QStringLiteral("tts"));
    row("vad_eos as text", 0, "business.vad_eos", QStringLiteral("10000"));
    row("vad_eos too long", 0, "business.vad_eos", 20000);
    row("dwa", 0, "business.dwa", QStringLiteral("wpg"));
    row("rlang", 0, "business.rlang", QStringLiteral("zh-tw"));
    row("unknown parameter", 0, "business.vad_eso", 10000);
    row("first with status 1", 0, "data.status", 1);
    row("format", 0, "data.format", QStringLiteral("audio/L16;rate=8000"));
    row("encoding", 0, "data.encoding", QStringLiteral("lame"));
    row("continue with business", 1, "business.domain", QStringLiteral("iat"));
    row("continue with status 0", 1, "data.status", 0);
    row("audio not Base64", 1, "data.audio", QStringLiteral("@@"));
    row("end with audio", 2, "data.audio", QStringLiteral("AAAA"));
    row("end with status 3", 2, "data.status", 3);
}

void TestStandInSpeech::iflyFrameChecks()
{
    QFETCH(int, frame);
    QFETCH(QString, path);
    QFETCH(QVariant, value);
    QFETCH(int, code);
    IFlyStandIn ifly;
    QVERIFY(ifly.start());
    QList<QJsonObject> frames = dictationFrames(ifly.credentials.appId);
    setPath(&frames[frame], path, value);
    const QList<QJsonObject> replies = converse(ifly.service.port(), ifly.credentials, frames);
    QVERIFY(!replies.isEmpty());
    // A refused frame ends the conversation with the error as the last word.
    QCOMPARE(replies.last().value(QLatin1String("code")).toInt(), code);
    if (code == 0) {
        QVERIFY(replies.last()[QLatin1String("data")][QLatin1String("result")][QLatin1String("ls")].toBool());
    } else {
        QVERIFY(!replies.last().value(QLatin1String("message")).toString().isEmpty());
    }
}

void TestStandInSpeech::iflyCorrectionOnlyWhenAsked()
{
    // With dwa the real client's session (above) gets partials and revisions; without it
    // 1.2 s of speech and a pause come back as the one sentence, with no pgs.
    IFlyStandIn ifly;
    QVERIFY(ifly.start());
    QList<QJsonObject> frames = dictationFrames(ifly.credentials.appId);
    setPath(&frames[0], QStringLiteral("business.dwa"), QVariant());
    QJsonObject speech = frames.takeAt(1);
    for (int i = 0; i < 100; ++i) {
        setPath(&speech, QStringLiteral("data.audio"),
                QString::fromLatin1(packet(i < 60 ? 3000 * (1 + i % 3) : 0).toBase64()));
        frames.insert(1 + i, speech);
    }
    QString text;
    for (const QJsonObject& reply : converse(ifly.service.port(), ifly.credentials, frames)) {
        const QJsonObject result = reply[QLatin1String("data")][QLatin1String("result")].toObject();
        QVERIFY(!result.contains(QLatin1String("pgs")));
        for (const QJsonValue& ws : result.value(QLatin1String("ws")).toArray()) {
            text += ws[QLatin1String("cw")][0][QLatin1String("w")].toString();
        }
    }
    QCOMPARE(text, QStringLiteral("我想去北京看看。"));
}

QTEST_GUILESS_MAIN(TestStandInSpeech)
#include "tst_standinspeech.moc"
