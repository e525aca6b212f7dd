#include "FakePlayback.h"
#include "LocalHttpServer.h"
#include "SpeechRec/SpeechSynthesisUtils.h"

#include <QFile>
#include <QSignalSpy>
#include <QtTest>

class TestSpeechSynthesis : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void piecesPlayInOrderThroughOneFile();
    void requestsCarryTokenAndEncodedText();
    void textArrivesWhole_data();
    void textArrivesWhole();
    void withoutNetworkNothingPlays();

private:
    LocalHttpServer mServer;
    SpeechSynthesisWorker::Service mService;
};

void TestSpeechSynthesis::initTestCase()
{
    QCoreApplication::setApplicationName(QStringLiteral("ZorvaneV2"));
    QVERIFY(mServer.start());
    LocalHttpServer::Answer token;
    token.body = R"({"access_token":"tok123","expires_in":2592000})";
    mServer.setAnswer(QStringLiteral("/oauth/2.0/token"), token);
    LocalHttpServer::Answer audio;
    audio.echoTarget = true;  // each piece's "audio" is its own request
    audio.contentType = "audio/mp3";
    mServer.setAnswer(QStringLiteral("/text2audio"), audio);
    mService = {mServer.url(), mServer.url(), QStringLiteral("StandInClientId000000000"),
                QStringLiteral("StandInClientSecret0000000000000"), QStringLiteral("zorvanecu")};
}

void TestSpeechSynthesis::piecesPlayInOrderThroughOneFile()
{
    FakePlayback player;
    SpeechSynthesisUtils tts(mService, &player);
    QSignalSpy over(&tts, &SpeechSynthesisUtils::speechSynthesisOver);
    emit tts.speechSynthesis(QStringLiteral("one"), 0, 5, 5, 5);
    emit tts.speechSynthesis(QStringLiteral("two"), 0, 5, 5, 5);
    emit tts.speechSynthesis(QStringLiteral("three"), 0, 5, 5, 5);
    QTRY_COMPARE(player.played.size(), 1);
    QVERIFY(tts.isPlaying());
    QTest::qWait(300);  // the others arrive meanwhile and wait
    QCOMPARE(player.played.size(), 1);
    player.finish();
    QCOMPARE(player.played.size(), 2);
    QCOMPARE(over.size(), 1);  // told at the end of each piece, also when the next has begun
    player.finish();
    player.finish();
    QCOMPARE(over.size(), 3);
    QCOMPARE(player.played.size(), 3);
    QVERIFY2(player.played.at(0).contains("tex=one&"),
             player.played.join(" | ").constData());  // in the order asked
    QVERIFY(player.played.at(1).contains("tex=two&"));
    QVERIFY(player.played.at(2).contains("tex=three&"));
    QCOMPARE(QSet<QString>(player.files.begin(), player.files.end()).size(), 1);
    QVERIFY(player.files.first().endsWith(QStringLiteral("/ZorvaneV2/tts.mp3")));
    QVERIFY(!QFile::exists(player.files.first()));  // heard, then gone from disk

    // Nothing playing: a result starts at once.
    tts.onSpeechSynthesisResult("direct");
    QCOMPARE(player.played.last(), QByteArray("direct"));
    player.finish();

    // A long text read in pieces stops whole: nothing waiting or still fetched plays after.
    player.played.clear();
    for (const QString& piece : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}) {
        emit tts.speechSynthesis(piece, 0, 5, 5, 5);
    }
    QTRY_COMPARE(player.played.size(), 1);
    tts.stop();
    QVERIFY(!QFile::exists(player.files.first()));
    QTest::qWait(300);
    QCOMPARE(player.played.size(), 1);
    QVERIFY(!tts.isPlaying());
    emit tts.speechSynthesis(QStringLiteral("again"), 0, 5, 5, 5);
    QTRY_COMPARE(player.played.size(), 2);
    QVERIFY(player.played.last().contains("tex=again&"));
}

void TestSpeechSynthesis::requestsCarryTokenAndEncodedText()
{
    FakePlayback player;
    SpeechSynthesisUtils tts(mService, &player);
    emit tts.speechSynthesis(QStringLiteral("你好 a&b"), 3, 5, 6, 7);
    QTRY_COMPARE(player.played.size(), 1);
    // Encoded once: the service reads back exactly the text.
    QCOMPARE(player.played.at(0),
             QByteArray("/text2audio?tex=%E4%BD%A0%E5%A5%BD%20a%26b&lan=zh&cuid=zorvanecu"
                        "&ctp=1&tok=tok123&per=3&spd=5&pit=6&vol=7"));
    const QByteArray tokenRequest = mServer.requests().at(mServer.requests().size() - 2).target;
    QCOMPARE(
        tokenRequest,
        QByteArray("/oauth/2.0/token?grant_type=client_credentials"
                   "&client_id=StandInClientId000000000&client_secret=StandInClientSecret0000000000000"));
    QCOMPARE(SpeechSynthesisWorker::parseToken("not json"), QString());
}

void TestSpeechSynthesis::textArrivesWhole_data()
{
    QTest::addColumn<QString>("text");
    // Escapes such as %3A or %5B inside the encoded text look like placeholders to QString::arg.
    QTest::newRow("time") << QStringLiteral("Meet at 10:30");
    QTest::newRow("punctuation") << QStringLiteral("a;b=c+d [1]^{2}|3 } 4");
    QTest::newRow("percent and digits") << QStringLiteral("100% %1 %2%3 50%4A");
    QTest::newRow("chinese") << QStringLiteral("下午3:45，第2次");
}

void TestSpeechSynthesis::textArrivesWhole()
{
    QFETCH(QString, text);
    SpeechSynthesisWorker worker(mService);
    QSignalSpy audio(&worker, &SpeechSynthesisWorker::signalResult);
    worker.onSpeechSynthesis(text, 4, 15, 0, 9);
    QCOMPARE(audio.size(), 1);
    // Read as a web server reads a query: split at '&' and '=', '+' a blank, escapes decoded.
    const QByteArray target = audio.at(0).at(0).toByteArray();
    QHash<QByteArray, QString> values;
    for (const QByteArray& pair : target.mid(target.indexOf('?') + 1).split('&')) {
        const int equals = pair.indexOf('=');
        values.insert(
            pair.left(equals),
            QString::fromUtf8(QByteArray::fromPercentEncoding(pair.mid(equals + 1).replace('+', ' '))));
    }
    QCOMPARE(values.value("tex"), text);
    QCOMPARE(values.size(), 9);
}

void TestSpeechSynthesis::withoutNetworkNothingPlays()
{
    FakePlayback player;
    SpeechSynthesisWorker::Service nowhere = mService;
    nowhere.tokenUrl = QUrl(QStringLiteral("http://127.0.0.1:1"));
    nowhere.synthesisUrl = QUrl(QStringLiteral("http://127.0.0.1:1"));
    SpeechSynthesisUtils tts(nowhere, &player);
    QSignalSpy over(&tts, &SpeechSynthesisUtils::speechSynthesisOver);
    emit tts.speechSynthesis(QStringLiteral("lost"), 0, 5, 5, 5);
    QTest::qWait(500);
    QVERIFY(player.played.isEmpty());
    QCOMPARE(over.size(), 0);
}

QTEST_GUILESS_MAIN(TestSpeechSynthesis)
#include "tst_speechsynthesis.moc"
