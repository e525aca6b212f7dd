#include "Http/JsonUtils.h"

#include <QtTest>

class TestJsonUtils : public QObject {
    Q_OBJECT

private slots:
    void answerTable_data();
    void answerTable();
    void recordsAreRead();
    void listsAndOddElements();
    void versionEnableIsACharacter();
};

namespace {

// What each parser answers for one reply.
struct Answers {
    bool version, openTime, directUi, deviceInfo, device, record, analyze, calendar, semantic, ip;
};

Answers run(const QByteArray& reply)
{
    VersionInfo v;
    DeviceOpenTime t;
    QList<DirectUI> u;
    QList<DeviceInfo> i;
    Device d;
    DeviceRecord r;
    AnalyzeResult a;
    CalendarPhrases c;
    SemanticParsingResult s;
    IpInfo ip;
    return {JsonUtils::getVersionInfo(reply, &v),
            JsonUtils::getDeviceOpenTime(reply, &t),
            JsonUtils::getDirectUIList(reply, &u),
            JsonUtils::getDeviceInfoList(reply, &i),
            JsonUtils::getDevice(reply, &d),
            JsonUtils::getDeviceRecord(reply, &r),
            JsonUtils::getAnalyzeResult(reply, &a),
            JsonUtils::getCalendarPhrases(reply, &c),
            JsonUtils::parseSemanticParsingResult(reply, &s),
            JsonUtils::getIpInfo(reply, &ip)};
}

}  // namespace

void TestJsonUtils::answerTable_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("expected");  // the ten answers in the order of run()
    QTest::newRow("invalid JSON") << QByteArray("{code:1") << QStringLiteral("0000000000");
    QTest::newRow("array") << QByteArray("[1,2]") << QStringLiteral("1110000001");
    QTest::newRow("no code") << QByteArray("{\"data\":{}}") << QStringLiteral("0000000001");
    QTest::newRow("code 0") << QByteArray("{\"code\":0,\"data\":{}}") << QStringLiteral("0000000001");
    QTest::newRow("code as text") << QByteArray("{\"code\":\"1\"}") << QStringLiteral("0000000001");
    QTest::newRow("code 1 without data") << QByteArray("{\"code\":1}") << QStringLiteral("1111111111");
}

void TestJsonUtils::answerTable()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, expected);
    const Answers a = run(reply);
    const bool got[] = {a.version, a.openTime, a.directUi, a.deviceInfo, a.device,
                        a.record,  a.analyze,  a.calendar, a.semantic,   a.ip};
    QString text;
    for (bool b : got) {
        text += b ? QLatin1Char('1') : QLatin1Char('0');
    }
    QCOMPARE(text, expected);
}

void TestJsonUtils::recordsAreRead()
{
    Device device;
    QVERIFY(JsonUtils::getDevice(
        R"({"code":1,"data":{"id":7,"dongleFlashID":"AB","remoteFlashID":"CD","customerCode":"0A0B0C","online":1}})",
        &device));
    QCOMPARE(device.id, 7);
    QCOMPARE(device.remoteFlashID, QStringLiteral("CD"));
    QCOMPARE(device.customerCode, QStringLiteral("0A0B0C"));
    QCOMPARE(device.online, 0);  // not read from the reply

    // A failing code leaves the record empty.
    Device untouched;
    QVERIFY(!JsonUtils::getDevice(R"({"code":0,"data":{"id":7}})", &untouched));
    QCOMPARE(untouched.id, 0);

    SemanticParsingResult s;
    QVERIFY(JsonUtils::parseSemanticParsingResult(
        R"({"code":1,"data":{"serviceCategory":19,"website":"w","isSearch":"yes","hintContent":"提示"}})",
        &s));
    QCOMPARE(s.serviceCategory, 19);
    QCOMPARE(s.website, QStringLiteral("w"));
    QCOMPARE(s.isSearch, 0);  // a string in an integer member reads 0
    QCOMPARE(s.hintContent, QStringLiteral("提示"));

    IpInfo ip;
    QVERIFY(JsonUtils::getIpInfo(R"({"code":0,"data":{"id":3,"ip":"1.2.3.4","isp_id":"x"}})", &ip));
    QCOMPARE(ip.id, 3);
    QCOMPARE(ip.ip, QStringLiteral("1.2.3.4"));
    QCOMPARE(ip.isp_id, QStringLiteral("x"));

    const HttpResult base = JsonUtils::parseBaseMsg(R"({"code":1,"msg":"ok"})");
    QCOMPARE(base.code, 1);
    QCOMPARE(base.msg, QStringLiteral("ok"));
    QCOMPARE(JsonUtils::parseBaseMsg("garbage").code, 0);
}

void TestJsonUtils::listsAndOddElements()
{
    QList<DeviceInfo> infos;
    QVERIFY(JsonUtils::getDeviceInfoList(
        R"({"code":1,"data":[{"vid":"3151","pid":"4011","enable":1,"isIFlySpeech":1},5,{"customerCode":"X"}]})",
        &infos));
    QCOMPARE(infos.size(), 3);
    QCOMPARE(infos.at(0).vid, QStringLiteral("3151"));
    QCOMPARE(infos.at(0).isIFlySpeech, 1);
    QCOMPARE(infos.at(1).vid, QString());  // not an object: an empty record
    QCOMPARE(infos.at(2).customerCode, QStringLiteral("X"));
}

void TestJsonUtils::versionEnableIsACharacter()
{
    VersionInfo v;
    QVERIFY(JsonUtils::getVersionInfo(R"({"code":1,"data":{"version":"2.1.0","enable":1}})", &v));
    QCOMPARE(v.enable, QString(QChar(1)));  // the character 1, not the digit
    QCOMPARE(v.version, QStringLiteral("2.1.0"));
    VersionInfo wide;
    QVERIFY(JsonUtils::getVersionInfo(R"({"code":1,"data":{"enable":305}})", &wide));
    QCOMPARE(wide.enable.at(0).unicode(), ushort(305 & 0xFF));
}

QTEST_GUILESS_MAIN(TestJsonUtils)
#include "tst_jsonutils.moc"
