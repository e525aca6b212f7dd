#include "BaiduSpeech/BaiduSpeech.h"
#include "FakeSpeechGateway.h"
#include "RecordingNoticeSink.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QtEndian>
#include <QtTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr quint32 kParams = 0x5A5B6C10;
constexpr quint32 kData = 0x5A5B6C11;
constexpr quint32 kFinish = 0x5A5B6C12;
constexpr quint32 kEndAck = 0x5A5B6C13;

// 20 ms of 16 kHz audio at a steady level, each sample tagged by its packet number.
QByteArray packet(int level, int tag = 0)
{
    QByteArray bytes(640, '\0');
    for (int i = 0; i < 320; ++i) {
        qToLittleEndian(static_cast<qint16>(i == 0 ? tag : level), bytes.data() + 2 * i);
    }
    return bytes;
}

QString uid(const FakeSpeechGateway::Frame& params)
{
    return QJsonDocument::fromJson(params.payload).object().value(QLatin1String("uid")).toString();
}

QList<quint32> types(const QList<FakeSpeechGateway::Frame>& frames)
{
    QList<quint32> list;
    for (const auto& f : frames) {
        list << f.type;
    }
    return list;
}

}  // namespace

class TestBaiduSpeech : public QObject {
    Q_OBJECT

private slots:
    void selectionRules();
    void sessionStreamsInOrder();
    void stalledGatewayStillGetsEveryByte();
    void serversThatDoNotAcknowledgeAreLeft();
    void silenceBlockOncePerSentence();
    void stopSkipAndEnds();
    void repressDropsTheEarlierUtterance();
    void unreachableGatewayIsANotice();
    void linesAndTheListAcrossReads();
    void endlessLineClosesTheConnection();
};

void TestBaiduSpeech::selectionRules()
{
    auto s = [](int port, int count) { return SDKServer{port, count}; };
    QCOMPARE(BaiduSpeech::getPort({s(1, 5), s(2, 2), s(3, 2)}).port, 2);
    QCOMPARE(BaiduSpeech::getPort({s(1, 0), s(2, 3), s(3, 0)}).port, 3);
    QCOMPARE(BaiduSpeech::getPort({s(1, 0), s(2, 3)}).port, 1);
    QCOMPARE(BaiduSpeech::getPort({}).port, -1);

    QList<SDKServer> list = {s(1, 5), s(2, 2), s(3, 2)};
    BaiduSpeech::removeOne(&list, s(2, 9));
    QCOMPARE(list.size(), 2);
    QCOMPARE(list.at(1).port, 3);
    BaiduSpeech::removeOne(&list, s(7, 0));  // not listed: nothing goes
    QCOMPARE(list.size(), 2);

    const QString id = BaiduSpeech::buildID();
    QCOMPARE(id.size(), 64);
    QCOMPARE(id.mid(36), id.left(28));
    QVERIFY(!id.contains(QLatin1Char('{')));
    QVERIFY(BaiduSpeech::buildID() != id);
    QCOMPARE(BaiduSpeech::calcAvg(packet(1000)), 319000 / 320 / 2);  // both divisions whole numbers
    QCOMPARE(BaiduSpeech::calcAvg(QByteArray()), 0);
}

void TestBaiduSpeech::sessionStreamsInOrder()
{
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({5, 2, 2}));
    gateway.setParamsAnswer(FakeSpeechGateway::Silent);
    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.controlPort());
    QSignalSpy begin(&speech, &BaiduSpeech::signalBegin);
    QSignalSpy flush(&speech, &BaiduSpeech::signalFlushResult);
    QSignalSpy result(&speech, &BaiduSpeech::signalResult);
    speech.start(1537);
    speech.start(1737);  // while running: nothing, not even the language
    // The lowest count wins: the second port.
    QTRY_COMPARE(gateway.frames.size(), 1);
    QCOMPARE(gateway.sdkConnections, QList<quint16>({gateway.sdkPorts().at(1)}));
    const QJsonObject params = QJsonDocument::fromJson(gateway.frames.at(0).payload).object();
    QCOMPARE(gateway.frames.at(0).type, kParams);
    QCOMPARE(params.value(QLatin1String("language")).toString(), QStringLiteral("1537"));
    QCOMPARE(uid(gateway.frames.at(0)).size(), 64);

    // Audio before the acknowledgement waits; afterwards one frame per packet drains it.
    QByteArray sent;
    for (int i = 0; i < 10; ++i) {
        speech.onAudioData(packet(300, i));
        sent += packet(300, i);
    }
    QTest::qWait(50);
    QCOMPARE(gateway.frames.size(), 1);
    gateway.sendEvent(56, 1);
    QTRY_VERIFY(!speech.timerStart()->isActive());
    for (int i = 10; i < 14; ++i) {
        speech.onAudioData(packet(300, i));
        sent += packet(300, i);
    }
    QTRY_COMPARE(gateway.frames.size(), 3);
    QCOMPARE(gateway.frames.at(1).type, kData);
    QCOMPARE(gateway.frames.at(1).payload.size(), 4096);
    QCOMPARE(gateway.frames.at(1).payload + gateway.frames.at(2).payload, sent.left(8192));

    gateway.sendEvent(48);
    gateway.sendEvent(51, 0, FakeSpeechGateway::result(QStringLiteral("你")));
    gateway.sendEvent(51, 0, FakeSpeechGateway::result(QStringLiteral("你好")));
    gateway.sendEvent(52, 0, FakeSpeechGateway::result(QStringLiteral("你好。")));
    QTRY_COMPARE(result.size(), 1);
    QCOMPARE(begin.size(), 1);
    QCOMPARE(flush.size(), 2);
    QCOMPARE(flush.at(1).at(0).toString(), QStringLiteral("你好"));
    QCOMPARE(result.at(0).at(0).toString(), QStringLiteral("你好。"));

    // Another error than -3001 is a recognition error; the session goes on.
    QSignalSpy error(&speech, &BaiduSpeech::signalError);
    gateway.sendEvent(54, -2000);
    QTRY_COMPARE(error.size(), 1);
    QCOMPARE(error.at(0), QVariantList({404, QStringLiteral("识别错误")}));
}

void TestBaiduSpeech::stalledGatewayStillGetsEveryByte()
{
    // 16 MB of audio while the gateway reads nothing (nothing runs its event loop): the kernel
    // stops taking frames part of the way through one, and the rest must wait in the client
    // and still arrive whole and in order.
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({5, 2}));
    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.controlPort());
    speech.start(1537);
    QTRY_COMPARE(gateway.frames.size(), 1);
    QTRY_VERIFY(!speech.timerStart()->isActive());

    constexpr int kPackets = 4096;
    QByteArray sent;
    sent.reserve(kPackets * BaiduSpeech::kFrameBytes);
    QByteArray audio(BaiduSpeech::kFrameBytes, '\x11');
    for (int i = 0; i < kPackets; ++i) {
        qToBigEndian(static_cast<quint32>(i), audio.data());
        qToBigEndian(~static_cast<quint32>(i), audio.data() + BaiduSpeech::kFrameBytes - 4);
        speech.onAudioData(audio);
        sent += audio;
    }
    qint64 waiting = 0;
    for (const QTcpSocket* socket : speech.findChildren<QTcpSocket*>()) {
        waiting += socket->bytesToWrite();
    }
    QVERIFY2(waiting > 0, "the kernel took everything: the case was not reached");

    QTRY_COMPARE_WITH_TIMEOUT(gateway.frames.size(), 1 + kPackets, 30000);
    QByteArray received;
    received.reserve(sent.size());
    for (int i = 1; i < gateway.frames.size(); ++i) {
        QCOMPARE(gateway.frames.at(i).type, kData);
        received += gateway.frames.at(i).payload;
    }
    QVERIFY(received == sent);
}

void TestBaiduSpeech::serversThatDoNotAcknowledgeAreLeft()
{
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({1, 2, 3, 4}));
    gateway.setParamsAnswer(FakeSpeechGateway::Silent);
    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.controlPort());
    // The test says when 500 ms have passed; a loaded machine must not say it as well.
    speech.timerStart()->setInterval(60000);
    // The best of the whole list first (no server is left out before it was tried).
    speech.start(1537);
    QTRY_COMPARE(gateway.sdkConnections.size(), 1);
    QCOMPARE(gateway.sdkConnections.last(), gateway.sdkPorts().at(0));
    QTRY_VERIFY(speech.timerStart()->isActive());
    speech.onStartTimeout();  // 500 ms without acknowledgement
    QTRY_COMPARE(gateway.sdkConnections.size(), 2);
    QCOMPARE(gateway.sdkConnections.last(), gateway.sdkPorts().at(1));
    // Refusals move on as well: ports 3 and 4, then the list is asked for once more and used
    // up but for the server just left, then the tries end with a notice.
    RecordingNoticeSink sink;
    Notice::setSink(&sink);
    gateway.setParamsAnswer(FakeSpeechGateway::Refuse);
    speech.onStartTimeout();
    QTRY_COMPARE(sink.notices.size(), 1);
    Notice::setSink(nullptr);
    QCOMPARE(gateway.controlRequests, 2);
    const QList<quint16> p = gateway.sdkPorts();
    QCOMPARE(gateway.sdkConnections, QList<quint16>({p[0], p[1], p[2], p[3], p[0], p[1], p[2]}));
}

void TestBaiduSpeech::silenceBlockOncePerSentence()
{
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({5, 2}));
    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.controlPort());
    QSignalSpy debug(&speech, &BaiduSpeech::signalDebugLog);
    speech.start(1537);
    QTRY_VERIFY(!gateway.frames.isEmpty());
    QTest::qWait(50);  // the acknowledgement comes back
    auto zeroFrames = [&gateway] {
        int n = 0;
        for (const auto& f : gateway.frames) {
            n += (f.type == kData && f.payload == QByteArray(1280, '\0')) ? 1 : 0;
        }
        return n;
    };
    // Quiet audio before any partial result: no silence block.
    for (int i = 0; i < 40; ++i) {
        speech.onAudioData(packet(100));
    }
    QTest::qWait(50);
    QCOMPARE(zeroFrames(), 0);

    gateway.sendEvent(51, 0, FakeSpeechGateway::result(QStringLiteral("开")));
    QTest::qWait(50);
    for (int i = 0; i < 40; ++i) {  // 800 ms of even volume
        speech.onAudioData(packet(120));
    }
    QTRY_COMPARE(zeroFrames(), 25);
    QCOMPARE(debug.at(0).at(0).toString(), QStringLiteral("触发静音..."));
    QVERIFY(debug.size() > 1);  // the volume judgment's lines follow

    // A final result arms it again, for the next sentence only after a partial result.
    gateway.sendEvent(52, 0, FakeSpeechGateway::result(QStringLiteral("开始")));
    gateway.sendEvent(51, 0, FakeSpeechGateway::result(QStringLiteral("好")));
    QTest::qWait(50);
    for (int i = 0; i < 40; ++i) {
        speech.onAudioData(packet(120));
    }
    QTRY_COMPARE(zeroFrames(), 50);
}

void TestBaiduSpeech::stopSkipAndEnds()
{
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({5, 2}));
    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.controlPort());
    QSignalSpy end(&speech, &BaiduSpeech::signalEnd);
    QSignalSpy result(&speech, &BaiduSpeech::signalResult);
    speech.stop();  // idle: nothing is sent
    QCOMPARE(gateway.controlRequests, 0);

    speech.start(1537);
    QTRY_COMPARE(gateway.frames.size(), 1);
    QTest::qWait(50);
    speech.onAudioData(packet(300));
    speech.stop();
    QVERIFY(!speech.isRunning());
    QVERIFY(speech.timerTail()->isActive());
    speech.onAudioData(packet(300));  // the tail still arrives and waits
    speech.onTailTimeout();
    QVERIFY(speech.timerEnd()->isActive());
    QTRY_COMPARE(types(gateway.frames), QList<quint32>({kParams, kData, kFinish, kData, kFinish}));
    QCOMPARE(gateway.frames.at(1).payload.size(), 640);
    // Results still come after the stop; the long-speech end closes the SDK side.
    gateway.sendEvent(52, 0, FakeSpeechGateway::result(QStringLiteral("好")));
    gateway.sendEvent(57);
    gateway.sendEvent(53);
    QTRY_COMPARE(end.size(), 1);
    QCOMPARE(result.size(), 1);
    QVERIFY(!speech.timerEnd()->isActive());
    QTRY_COMPARE(gateway.frames.last().type, kEndAck);

    // A new session asks the control port again, with a new uid.
    speech.start(1537);
    QTRY_COMPARE(gateway.controlRequests, 2);
    QTRY_COMPARE(types(gateway.frames).count(kParams), 2);
    QVERIFY(uid(gateway.frames.first()) != uid(gateway.frames.last()));

    // Skipped: results are dropped, and the end comes only from the timer.
    speech.skip();
    gateway.sendEvent(52, 0, FakeSpeechGateway::result(QStringLiteral("丢")));
    gateway.sendEvent(53);
    QTest::qWait(100);
    QCOMPARE(result.size(), 1);
    QCOMPARE(end.size(), 1);
    speech.onEndTimeout();
    QCOMPARE(end.size(), 2);
}

void TestBaiduSpeech::repressDropsTheEarlierUtterance()
{
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({5, 2}));
    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.controlPort());
    QSignalSpy end(&speech, &BaiduSpeech::signalEnd);
    QSignalSpy result(&speech, &BaiduSpeech::signalResult);
    speech.start(1537);
    QTRY_COMPARE(gateway.frames.size(), 1);
    speech.stop();
    // Pressed again before the final: the old connection stays up while the new utterance
    // asks for a server (here in vain, so that nothing replaces it).
    gateway.closeControl();
    RecordingNoticeSink sink;
    Notice::setSink(&sink);
    speech.start(1537);
    QVERIFY(!speech.timerTail()->isActive());
    gateway.sendEvent(52, 0, FakeSpeechGateway::result(QStringLiteral("旧的")));
    gateway.sendEvent(53);
    QTRY_COMPARE(gateway.frames.last().type, kEndAck);
    QCOMPARE(result.size(), 0);
    QCOMPARE(end.size(), 0);
    QVERIFY(speech.isRunning());
    Notice::setSink(nullptr);
}

void TestBaiduSpeech::unreachableGatewayIsANotice()
{
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({1}));
    const quint16 port = gateway.controlPort();
    gateway.closeControl();
    RecordingNoticeSink sink;
    Notice::setSink(&sink);
    BaiduSpeech refused(QStringLiteral("127.0.0.1"), port);
    refused.start(1537);
    QTRY_COMPARE(sink.notices, QStringList({QStringLiteral("无法连接到服务!")}));
    QVERIFY(refused.isRunning());

    // A gateway that never answers the connection (its queue full, the handshake dropped): the
    // press does not wait for it, the notice comes once the time is up.
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    QVERIFY(::bind(listener, reinterpret_cast<sockaddr*>(&address), size) == 0 && ::listen(listener, 0) == 0);
    QVERIFY(::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) == 0);
    QList<QTcpSocket*> queue;
    for (int i = 0; i < 3; ++i) {
        queue << new QTcpSocket(this);
        queue.last()->connectToHost(QHostAddress::LocalHost, ntohs(address.sin_port));
    }
    QTest::qWait(100);  // let the queue fill
    BaiduSpeech blackHoled(QStringLiteral("127.0.0.1"), ntohs(address.sin_port));
    QElapsedTimer clock;
    clock.start();
    blackHoled.start(1537);
    QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
    QTRY_COMPARE_WITH_TIMEOUT(sink.notices.size(), 2, 3 * BaiduSpeech::kConnectTimeoutMs);
    QVERIFY2(clock.elapsed() >= BaiduSpeech::kConnectTimeoutMs * 9 / 10,
             qPrintable(QString::number(clock.elapsed())));
    Notice::setSink(nullptr);
    qDeleteAll(queue);
    ::close(listener);
}

void TestBaiduSpeech::linesAndTheListAcrossReads()
{
    // Everything the gateway sends arrives in two reads: the list, the acknowledgement, a final.
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({5, 2}));
    gateway.setSplitWrites(true);
    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.controlPort());
    QSignalSpy result(&speech, &BaiduSpeech::signalResult);
    speech.start(1537);
    QTRY_VERIFY(!gateway.frames.isEmpty());
    QCOMPARE(gateway.sdkConnections, QList<quint16>({gateway.sdkPorts().at(1)}));
    QTRY_VERIFY(!speech.timerStart()->isActive());
    gateway.sendEvent(52, 0, FakeSpeechGateway::result(QStringLiteral("你好。")));
    QTRY_COMPARE(result.size(), 1);
    QCOMPARE(result.at(0).at(0).toString(), QStringLiteral("你好。"));
}

void TestBaiduSpeech::endlessLineClosesTheConnection()
{
    FakeSpeechGateway gateway;
    QVERIFY(gateway.start({5, 2}));
    BaiduSpeech speech(QStringLiteral("127.0.0.1"), gateway.controlPort());
    QSignalSpy error(&speech, &BaiduSpeech::signalError);
    speech.start(1537);
    QTRY_VERIFY(!gateway.frames.isEmpty());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("a line of over 65536 bytes")));
    // A line that never ends, written in pieces: the client hangs up once it passes the limit.
    const QByteArray piece(8 * 1024, 'x');
    int written = 0;
    QTRY_VERIFY_WITH_TIMEOUT(!gateway.sendRaw(piece) || (++written, false), 10000);
    QVERIFY2(written * piece.size() <= ElvUtil::kMaxLineBytes + 4 * piece.size(),
             qPrintable(QString::number(written)));
    QTRY_COMPARE(error.size(), 1);
    QCOMPARE(error.at(0).at(0).toInt(), 404);
}

QTEST_GUILESS_MAIN(TestBaiduSpeech)
#include "tst_baiduspeech.moc"
