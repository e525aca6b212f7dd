#include "IFlySpeech/IFlyWebSpeech.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageAuthenticationCode>
#include <QSignalSpy>
#include <QUrlQuery>
#include <QWebSocketServer>
#include <QtEndian>
#include <QtTest>

namespace {

QByteArray packet(int level)
{
    QByteArray bytes(640, '\0');
    for (int i = 0; i < 320; ++i) {
        qToLittleEndian(static_cast<qint16>(level), bytes.data() + 2 * i);
    }
    return bytes;
}

QString reply(const QStringList& words, const QString& pgs, bool last = false, int code = 0)
{
    QJsonArray ws;
    for (const QString& w : words) {
        ws.append(QJsonObject{{QStringLiteral("bg"), 0},
                              {QStringLiteral("cw"), QJsonArray{QJsonObject{{QStringLiteral("sc"), 0},
                                                                            {QStringLiteral("w"), w}}}}});
    }
    const QJsonObject result{
        {QStringLiteral("pgs"), pgs}, {QStringLiteral("ls"), last}, {QStringLiteral("ws"), ws}};
    return QString::fromUtf8(QJsonDocument(QJsonObject{{QStringLiteral("code"), code},
                                                       {QStringLiteral("data"),
                                                        QJsonObject{{QStringLiteral("status"), last ? 2 : 1},
                                                                    {QStringLiteral("result"), result}}}})
                                 .toJson(QJsonDocument::Compact));
}

// The data part of a frame: its status, and its audio decoded.
int status(const QJsonObject& frame)
{
    return frame.value(QLatin1String("data")).toObject().value(QLatin1String("status")).toInt();
}
QByteArray audio(const QJsonObject& frame)
{
    return QByteArray::fromBase64(
        frame.value(QLatin1String("data")).toObject().value(QLatin1String("audio")).toString().toLatin1());
}

}  // namespace

// A dictation service on loopback: keeps every frame and every request URL.
class FakeDictation : public QObject {
public:
    QWebSocketServer server{QStringLiteral("dictation"), QWebSocketServer::NonSecureMode};
    QList<QJsonObject> frames;
    QList<QUrl> requests;
    QWebSocket* client = nullptr;

    FakeDictation()
    {
        connect(&server, &QWebSocketServer::newConnection, this, [this] {
            client = server.nextPendingConnection();
            requests << client->requestUrl();
            connect(client, &QWebSocket::textMessageReceived, this, [this](const QString& text) {
                frames << QJsonDocument::fromJson(text.toUtf8()).object();
            });
        });
        server.listen(QHostAddress::LocalHost, 0);
    }
    IFlyWebSpeech::Service service() const
    {
        return {QUrl(QStringLiteral("ws://127.0.0.1:%1/v2/iat").arg(server.serverPort())),
                QStringLiteral("5a1d0c3e"), QStringLiteral("0123456789abcdef0123456789abcdef"),
                QStringLiteral("fedcba9876543210fedcba9876543210")};
    }
    void send(const QString& text) { client->sendTextMessage(text); }
};

class TestIFlyWebSpeech : public QObject {
    Q_OBJECT

private slots:
    void signedUrl();
    void framesOfASession();
    void correctionsAndTheLastReply();
    void renewalAfter45Seconds();
    void stopBetweenRenewedConnections();
    void idleStopAndVolume();
    void oversizeReplyClosesTheConnection();

private:
    // Runs a session into a renewal whose last reply has just come.
    // The service takes no new connection from then on if told so.
    static bool renewUntilLastReply(IFlyWebSpeech& speech, FakeDictation& fake, bool holdNextConnection);
};

void TestIFlyWebSpeech::signedUrl()
{
    const IFlyWebSpeech::Service s{QUrl(QStringLiteral("ws://iat.example.com/v2/iat")), QStringLiteral("id"),
                                   QStringLiteral("key"), QStringLiteral("secret")};
    const QDateTime now(QDate(2026, 11, 23), QTime(3, 4, 5), Qt::UTC);
    const QUrl url = IFlyWebSpeech::buildAuthUrl(s, now);
    const QUrlQuery query(url);
    QCOMPARE(query.queryItems().at(0).first, QStringLiteral("authorization"));
    QCOMPARE(query.queryItems().at(1).first, QStringLiteral("date"));
    QCOMPARE(query.queryItemValue(QStringLiteral("date"), QUrl::FullyDecoded),
             QStringLiteral("Mon, 23 Nov 2026 03:04:05 UTC"));
    QCOMPARE(query.queryItemValue(QStringLiteral("host")), QStringLiteral("iat.example.com"));
    // The service checks the signature the same way.
    const QString origin =
        QStringLiteral("host: iat.example.com\ndate: Mon, 23 Nov 2026 03:04:05 UTC\nGET /v2/iat HTTP/1.1");
    const QByteArray signature = QMessageAuthenticationCode::hash(
                                     origin.toUtf8(), QByteArrayLiteral("secret"), QCryptographicHash::Sha256)
                                     .toBase64();
    const QString authorization = QString::fromUtf8(QByteArray::fromBase64(
        query.queryItemValue(QStringLiteral("authorization"), QUrl::FullyDecoded).toLatin1()));
    QCOMPARE(authorization,
             QStringLiteral("api_key=\"key\", algorithm=\"hmac-sha256\", headers=\"host date request-line\", "
                            "signature=\"") +
                 QString::fromLatin1(signature) + QLatin1Char('"'));
}

void TestIFlyWebSpeech::framesOfASession()
{
    FakeDictation fake;
    IFlyWebSpeech speech(fake.service(), [] { return 1; });
    QSignalSpy begin(&speech, &IFlyWebSpeech::signalBegin);
    speech.onAudioData(packet(100));  // not running: dropped
    speech.start(QStringLiteral("zh_cn"), QStringLiteral("cantonese"), 0);
    QTRY_COMPARE(begin.size(), 1);
    QCOMPARE(fake.requests.size(), 1);
    QVERIFY(fake.requests.at(0).query().contains(QStringLiteral("authorization=")));
    speech.onAudioData(packet(100));
    speech.onAudioData(packet(200));
    speech.stop();
    QTRY_COMPARE(fake.frames.size(), 3);
    const QJsonObject first = fake.frames.at(0);
    QCOMPARE(first.value(QLatin1String("common")).toObject().value(QLatin1String("app_id")).toString(),
             QStringLiteral("5a1d0c3e"));
    const QJsonObject business = first.value(QLatin1String("business")).toObject();
    QCOMPARE(business.value(QLatin1String("accent")).toString(), QStringLiteral("cantonese"));
    QCOMPARE(business.value(QLatin1String("vad_eos")).toInt(), 10000);
    QVERIFY(!business.contains(QLatin1String("rlang")));  // mode 0
    QCOMPARE(status(first), 0);
    QCOMPARE(audio(first), packet(100));
    QVERIFY(!fake.frames.at(1).contains(QLatin1String("business")));
    QCOMPARE(status(fake.frames.at(1)), 1);
    QCOMPARE(status(fake.frames.at(2)), 2);
    QVERIFY(audio(fake.frames.at(2)).isEmpty());
}

void TestIFlyWebSpeech::correctionsAndTheLastReply()
{
    FakeDictation fake;
    IFlyWebSpeech speech(fake.service(), [] { return 1; });
    QSignalSpy flush(&speech, &IFlyWebSpeech::signalFlushResult);
    QSignalSpy result(&speech, &IFlyWebSpeech::signalResult);
    QSignalSpy end(&speech, &IFlyWebSpeech::signalEnd);
    speech.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 1);
    QTRY_VERIFY(fake.client != nullptr);
    QTRY_VERIFY(speech.isRunning());
    fake.send(reply({QStringLiteral("今天")}, QStringLiteral("apd")));
    fake.send(reply({QStringLiteral("金天")}, QStringLiteral("rpl")));
    fake.send(reply({QStringLiteral("天气")}, QStringLiteral("apd")));
    fake.send(reply({QStringLiteral("ignored")}, QStringLiteral("apd"), false, 10105));  // an error code
    fake.send(QStringLiteral("not json"));
    QTRY_COMPARE(flush.size(), 3);
    QCOMPARE(flush.at(0).at(0).toString(), QStringLiteral("今天"));
    QCOMPARE(flush.at(1).at(0).toString(), QStringLiteral("金天"));
    QCOMPARE(flush.at(2).at(0).toString(), QStringLiteral("金天天气"));
    // The last reply, without text: the text so far, no flush, and the end.
    fake.send(reply({}, QStringLiteral("apd"), true));
    QTRY_COMPARE(result.size(), 1);
    QCOMPARE(result.at(0).at(0).toString(), QStringLiteral("金天天气"));
    QCOMPARE(flush.size(), 3);
    QCOMPARE(end.size(), 1);
    QVERIFY(!speech.isRunning());
}

void TestIFlyWebSpeech::renewalAfter45Seconds()
{
    FakeDictation fake;
    IFlyWebSpeech speech(fake.service(), [] { return 1; });
    QSignalSpy begin(&speech, &IFlyWebSpeech::signalBegin);
    QSignalSpy result(&speech, &IFlyWebSpeech::signalResult);
    QSignalSpy end(&speech, &IFlyWebSpeech::signalEnd);
    speech.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 2);
    QTRY_COMPARE(begin.size(), 1);
    // Quiet, but within the first 45 s: no renewal.
    for (int i = 0; i < 80; ++i) {
        speech.onAudioData(packet(0));
    }
    QVERIFY(!speech.isRestarting());
    speech.addConnectionAge(46000);
    for (int i = 0; i < 50; ++i) {
        speech.onAudioData(packet(4000));  // loud: the mean stays high
    }
    QVERIFY(!speech.isRestarting());
    int quiet = 0;
    while (!speech.isRestarting() && quiet < 200) {
        speech.onAudioData(packet(0));
        ++quiet;
    }
    QVERIFY(speech.isRestarting());
    QVERIFY(quiet > 1);             // the mean had to come down first
    speech.onAudioData(packet(7));  // held back while renewing
    fake.send(reply({QStringLiteral("第一段")}, QStringLiteral("apd"), true));
    QTRY_COMPARE(result.size(), 1);
    QCOMPARE(end.size(), 0);
    QTRY_COMPARE(fake.requests.size(), 2);  // a new connection, newly signed
    QTRY_VERIFY(!speech.isRestarting());
    QCOMPARE(begin.size(), 1);  // no second begin
    const int before = fake.frames.size();
    speech.onAudioData(packet(9));
    QTRY_COMPARE(fake.frames.size(), before + 2);
    // The held-back packet opens the new connection's first frame.
    const QJsonObject first = fake.frames.at(before);
    QCOMPARE(first.value(QLatin1String("business")).toObject().value(QLatin1String("rlang")).toString(),
             QStringLiteral("zh-hk"));
    QCOMPARE(audio(first), packet(7));
}

bool TestIFlyWebSpeech::renewUntilLastReply(IFlyWebSpeech& speech, FakeDictation& fake,
                                            bool holdNextConnection)
{
    QSignalSpy begin(&speech, &IFlyWebSpeech::signalBegin);
    QSignalSpy result(&speech, &IFlyWebSpeech::signalResult);
    speech.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 0);
    if (!begin.wait(5000)) {
        return false;
    }
    speech.addConnectionAge(46000);
    for (int i = 0; i < 60 && !speech.isRestarting(); ++i) {
        speech.onAudioData(packet(0));
    }
    if (holdNextConnection) {
        fake.server.pauseAccepting();
    }
    fake.send(reply({QStringLiteral("第一段")}, QStringLiteral("apd"), true));
    // Returns at the reply, before the reconnection that follows it has run.
    return speech.isRestarting() && result.wait(5000);
}

void TestIFlyWebSpeech::stopBetweenRenewedConnections()
{
    // Stopped in the short wait before the new connection, the session ends there; stopped
    // while the new connection is being made, that connection is dropped when it stands.
    for (bool whileConnecting : {false, true}) {
        FakeDictation fake;
        IFlyWebSpeech speech(fake.service(), [] { return 1; });
        QSignalSpy begin(&speech, &IFlyWebSpeech::signalBegin);
        QSignalSpy end(&speech, &IFlyWebSpeech::signalEnd);
        QVERIFY(renewUntilLastReply(speech, fake, whileConnecting));
        if (whileConnecting) {
            QTest::qWait(150);
        }
        speech.stop();
        QTRY_COMPARE(end.size(), 1);
        fake.server.resumeAccepting();
        QTest::qWait(300);
        if (!whileConnecting) {
            QCOMPARE(fake.requests.size(), 1);
        }
        QCOMPARE(begin.size(), 1);
        QCOMPARE(end.size(), 1);
        QVERIFY(!speech.isRunning());
    }
}

void TestIFlyWebSpeech::idleStopAndVolume()
{
    FakeDictation fake;
    IFlyWebSpeech speech(fake.service(), [] { return 1; });
    QSignalSpy volume(&speech, &IFlyWebSpeech::signalVolume);
    QSignalSpy begin(&speech, &IFlyWebSpeech::signalBegin);
    speech.start(QStringLiteral("en_us"), QStringLiteral("mandarin"), 0);
    QTRY_COMPARE(begin.size(), 1);
    QCOMPARE(speech.idleTimer()->interval(), 10000);
    speech.onAudioData(packet(1000));
    QTRY_COMPARE(volume.size(), 1);
    QCOMPARE(volume.at(0).at(0).toInt(), 500);  // not divided further
    QVERIFY(speech.idleTimer()->isActive());
    QMetaObject::invokeMethod(speech.idleTimer(), "timeout", Qt::DirectConnection);
    QVERIFY(!speech.isRunning());
    QTRY_COMPARE(fake.frames.size(), 2);  // the audio, then the end frame
    QCOMPARE(status(fake.frames.last()), 2);
}

void TestIFlyWebSpeech::oversizeReplyClosesTheConnection()
{
    FakeDictation fake;
    IFlyWebSpeech speech(fake.service(), [] { return 1; });
    QSignalSpy flush(&speech, &IFlyWebSpeech::signalFlushResult);
    QSignalSpy error(&speech, &IFlyWebSpeech::signalError);
    speech.start(QStringLiteral("zh_cn"), QStringLiteral("mandarin"), 0);
    QTRY_VERIFY(fake.client != nullptr);
    QTRY_VERIFY(fake.client->state() == QAbstractSocket::ConnectedState);
    QSignalSpy gone(fake.client, &QWebSocket::disconnected);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("a reply over 262144 bytes")));
    fake.send(reply({QString(300 * 1024, QLatin1Char('x'))}, QStringLiteral("apd")));
    QTRY_COMPARE(error.size(), 1);
    QCOMPARE(error.at(0).at(0).toInt(), int(QWebSocketProtocol::CloseCodeTooMuchData));
    QTRY_COMPARE(gone.size(), 1);
    QCOMPARE(flush.size(), 0);
}

QTEST_GUILESS_MAIN(TestIFlyWebSpeech)
#include "tst_iflywebspeech.moc"
