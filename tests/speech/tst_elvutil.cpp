#include "BaiduSpeech/ElvUtil.h"

#include <QtTest>

class TestElvUtil : public QObject {
    Q_OBJECT

private slots:
    void lengthCutsOrPads();
    void parameterObjectIsIndentedText();
    void serverListAndSocketLines();
};

void TestElvUtil::lengthCutsOrPads()
{
    const QByteArray data("abcdef");
    const QByteArray cut = ElvUtil::dataUpload(data, 4);
    QCOMPARE(cut.mid(4, 4).toHex(), QByteArray("00000004"));
    QCOMPARE(cut.mid(8), QByteArray("abcd"));
    const QByteArray padded = ElvUtil::dataUpload(data, 9);
    QCOMPARE(padded.size(), 17);
    QCOMPARE(padded.mid(8), QByteArray("abcdef\0\0\0", 9));
    QCOMPARE(ElvUtil::encode(0x5A5B6C10, data, -1).mid(4, 4).toHex(), QByteArray("00000006"));
}

void TestElvUtil::parameterObjectIsIndentedText()
{
    const QString uid(64, QLatin1Char('a'));
    const QString params = ElvUtil::buildParams(1537, uid);
    QCOMPARE(params, QStringLiteral("{\n    \"language\": \"1537\",\n    \"uid\": \"") + uid +
                         QStringLiteral("\"\n}\n"));
    const QByteArray frame = ElvUtil::paramUpload(params);
    QCOMPARE(frame.left(4).toHex(), QByteArray("5a5b6c10"));
    QCOMPARE(frame.mid(8), params.toLatin1());
}

void TestElvUtil::serverListAndSocketLines()
{
    const QList<SDKServer> servers =
        ElvUtil::parseServerList(R"([{"port":8001,"count":3},{"port":"8002","count":1},{"count":2},7])");
    QCOMPARE(servers.size(), 4);
    QCOMPARE(servers.at(0).port, 8001);
    QCOMPARE(servers.at(0).count, 3);
    QCOMPARE(servers.at(1).port, 0);  // not a number
    QCOMPARE(servers.at(2).port, 0);
    QCOMPARE(servers.at(3).count, 0);
    QVERIFY(ElvUtil::parseServerList("not json").isEmpty());
    // Past its limits, a list is dropped whole.
    QByteArray many = "[";
    for (int i = 0; i <= ElvUtil::kMaxServers; ++i) {
        many += "{\"port\":8001,\"count\":1},";
    }
    many.chop(1);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("257 servers is over the limit")));
    QVERIFY(ElvUtil::parseServerList(many + "]").isEmpty());
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("bytes is over the limit of 65536")));
    QVERIFY(ElvUtil::parseServerList("[" + QByteArray(70000, ' ') + R"({"port":8001,"count":1}])").isEmpty());
    // The list ends where its document closes, wherever the reads were cut: brackets inside
    // strings don't count, and what a server sends after the list is not part of it.
    const QByteArray reply = R"( [{"port":8001,"count":1,"name":"a]\"}"}]junk)";
    QCOMPARE(ElvUtil::serverListEnd(reply.left(reply.size() - 5)), -1);
    QCOMPARE(ElvUtil::serverListEnd(reply), reply.size() - 4);
    QCOMPARE(ElvUtil::parseServerList(reply).size(), 1);
    QCOMPARE(ElvUtil::serverListEnd("x[]"), 0);

    const QByteArray lines =
        "{\"type\":56,\"code\":1}\n\n"
        "{\"type\":51,\"data\":\"{\\\"results_recognition\\\":[\\\"你好\\\",\\\"你号\\\"]}\",\"ack\":4}\n"
        "garbage\n"
        "{\"type\":57,\"data\":\"" +
        QByteArray(ElvUtil::kMaxLineBytes, 'x') +
        "\"}\n"
        "{\"type\":54,\"code\":-3001}";
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("line of \\d+ bytes is over the limit")));
    const QList<SocketMessage> messages = ElvUtil::parseSocketMessages(lines);
    QCOMPARE(messages.size(), 3);
    QCOMPARE(messages.at(0).type, int(ElvUtil::ON_PARAMS_ACK));
    QCOMPARE(messages.at(0).code, 1);
    QCOMPARE(messages.at(0).data, QString());
    QCOMPARE(messages.at(1).ack, 4);
    QCOMPARE(ElvUtil::recognitionText(messages.at(1).data), QStringLiteral("你好"));
    QCOMPARE(messages.at(2).code, -3001);
    QCOMPARE(ElvUtil::recognitionText(QStringLiteral("{}")), QString());
}

QTEST_GUILESS_MAIN(TestElvUtil)
#include "tst_elvutil.moc"
