#include "Hid/DeviceMessage.h"

#include <QtTest>

namespace DM = DeviceMessage;

Q_DECLARE_METATYPE(st_small_base_com_msg)

class TestDeviceMessage : public QObject {
    Q_OBJECT

private slots:
    void requestBytes_data();
    void requestBytes();
    void switchSensesOnTheWire();
    void shortAndLongPackets();
    void audioIsToldApartByFirstByte();
};

void TestDeviceMessage::requestBytes_data()
{
    QTest::addColumn<st_small_base_com_msg>("msg");
    // Bytes 0, 5, 6, 7, 8, 9: everything else must stay zero.
    QTest::addColumn<QByteArray>("expected");
    auto row = [](const char* name, const st_small_base_com_msg& msg, std::initializer_list<int> head) {
        QByteArray expected(32, '\0');
        const int offsets[] = {0, 5, 6, 7, 8, 9};
        int i = 0;
        for (int value : head) {
            expected[offsets[i++]] = static_cast<char>(value);
        }
        QTest::newRow(name) << msg << expected;
    };
    row("getDpi", DM::getDpi(), {1, 6, 2, 1});
    row("setDpi keeps low 8 bits", DM::setDpi(0x103), {1, 6, 2, 0, 0x03});
    row("getCpi", DM::getCpi(), {1, 6, 9, 1});
    row("setCpi 16 bits", DM::setCpi(1600), {1, 6, 9, 0, 1600 & 0xFF, 1600 >> 8});
    row("getLowbatReport", DM::getLowbatReport(), {1, 6, 3, 1});
    row("setLowbatReport on", DM::setLowbatReport(true), {1, 6, 3, 0, 1});
    row("setLowbatReport off", DM::setLowbatReport(false), {1, 6, 3, 0, 0});
    row("getShake", DM::getShake(), {1, 6, 4, 1});
    row("getLamplight", DM::getLamplight(), {1, 6, 5, 1});
    row("getSoundEffect", DM::getSoundEffect(), {1, 6, 6, 1});
    row("responseAck", DM::responseAck(3), {1, 6, 7, 0, 3});
    row("getDPILevelValue", DM::getDPILevelValue(), {1, 6, 10, 1});
    row("getBLEAudioMode", DM::getBLEAudioMode(), {1, 6, 11, 1});
    row("setBLEAudioMode 0", DM::setBLEAudioMode(0), {1, 6, 11, 0, 0x01});
    row("setBLEAudioMode 1", DM::setBLEAudioMode(1), {1, 6, 11, 0, 0x07});
    row("setBLEAudioMode 2 is like 0", DM::setBLEAudioMode(2), {1, 6, 11, 0, 0x01});
    row("getModule", DM::getModule(), {1, 4, 10, 1});
    row("getRemoteFlashID", DM::getRemoteFlashID(), {1, 4, 11, 1});
    row("getAudioVolume", DM::getAudioVolume(), {1, 3, 24, 1});
    row("setAudioVolume", DM::setAudioVolume(33), {1, 3, 24, 0, 33});
    row("getDongleFlashID", DM::getDongleFlashID(), {6, 2, 11, 1});
    row("getActive", DM::getActive(), {6, 3, 10, 1});
    row("getDevicePowerPlugIn has no read flag", DM::getDevicePowerPlugIn(), {6, 8, 2, 0});
    row("getAudioEnable", DM::getAudioEnable(), {6, 8, 4, 1});
    row("setAudioEnable on", DM::setAudioEnable(true), {6, 8, 6, 0, 1, 0});
    row("setAudioEnable off", DM::setAudioEnable(false), {6, 8, 6, 0, 0, 0});
}

void TestDeviceMessage::requestBytes()
{
    QFETCH(st_small_base_com_msg, msg);
    QFETCH(QByteArray, expected);
    QCOMPARE(msg.toByteArray().toHex(' '), expected.toHex(' '));
}

void TestDeviceMessage::switchSensesOnTheWire()
{
    // Writing "on" is bit 0 = 0 for shake, lamplight and sound; the low-battery report is the
    // other way round.
    QCOMPARE(DM::setShake(true).bytes[8], quint8(0));
    QCOMPARE(DM::setShake(false).bytes[8], quint8(1));
    QCOMPARE(DM::setLamplight(true).bytes[8], quint8(0));
    QCOMPARE(DM::setLamplight(false).bytes[8], quint8(1));
    QCOMPARE(DM::setSoundEffect(true).bytes[8], quint8(0));
    QCOMPARE(DM::setSoundEffect(false).bytes[8], quint8(1));
    QCOMPARE(DM::setLowbatReport(true).bytes[8], quint8(1));
}

void TestDeviceMessage::shortAndLongPackets()
{
    const QByteArray shortPacket = QByteArray::fromHex("0b000000107a01");
    const st_small_base_com_msg msg = st_small_base_com_msg::fromBytes(shortPacket);
    QCOMPARE(msg.route(), 11);
    QCOMPARE(msg.interactiveType(), 16);
    QCOMPARE(msg.u8(5), 0x7a);
    for (int i = 7; i < 32; ++i) {
        QCOMPARE(msg.u8(i), 0);
    }
    QCOMPARE(st_small_base_com_msg::fromBytes(QByteArray(64, '\x05')).toByteArray(), QByteArray(32, '\x05'));
    QCOMPARE(st_small_base_com_msg::fromBytes(nullptr, 12).toByteArray(), QByteArray(32, '\0'));
    QCOMPARE(DM::getDpi().toByteArray(20).size(), 20);
}

void TestDeviceMessage::audioIsToldApartByFirstByte()
{
    // 38 reads as route 6 but is audio; 6 itself is a record.
    QList<int> audio;
    for (int b = 0; b < 256; ++b) {
        if (DM::isAudioPacket(static_cast<quint8>(b))) {
            audio << b;
        }
    }
    QCOMPARE(audio, QList<int>({7, 14, 15, 18, 38, 46, 50, 78, 82, 114}));
}

QTEST_GUILESS_MAIN(TestDeviceMessage)
#include "tst_devicemessage.moc"
