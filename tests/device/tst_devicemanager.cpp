#include "FakeBleTransport.h"
#include "FakeHidBackend.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"

#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace DM = DeviceMessage;

Q_DECLARE_METATYPE(st_small_base_com_msg)

namespace {

constexpr int kVid = 0x3151;
constexpr int kPid = 0x4011;

st_small_base_com_msg reply(int route, int cls, int type, std::initializer_list<int> payload,
                            bool result = true)
{
    st_small_base_com_msg msg = DM::request(route, cls, type, false);
    msg.bytes[7] = result ? 0x10 : 0;
    int at = 8;
    for (int b : payload) {
        msg.bytes[at++] = static_cast<quint8>(b);
    }
    return msg;
}

st_small_base_com_msg deviceEvent(int type, std::initializer_list<int> payload)
{
    st_small_base_com_msg msg;
    msg.bytes[0] = 11;
    msg.bytes[4] = static_cast<quint8>(type);
    int at = 5;
    for (int b : payload) {
        msg.bytes[at++] = static_cast<quint8>(b);
    }
    return msg;
}

// The links of one device manager, over fakes.
struct Rig {
    FakeHidBackend hidBackend;
    FakeBleTransport bleTransport;
    HidManager hid{&hidBackend};
    BLEManager ble{&bleTransport, nullptr};
    DeviceManager device{&hid, &ble};

    Rig()
    {
        hidBackend.setInterfaces({HidBackend::Interface{QStringLiteral("/dev/hidraw3"), kVid, kPid, 0xFF00}});
    }
    // Records that reached the receiver, as the device reads them.
    QList<st_small_base_com_msg> hidWrites() const
    {
        QList<st_small_base_com_msg> records;
        for (const QByteArray& w : hidBackend.writes()) {
            records << st_small_base_com_msg::fromBytes(w.mid(1));
        }
        return records;
    }
    void attachBle()
    {
        bleTransport.systemConnected = QStringList{QStringLiteral("C8:47:8C:00:11:22")};
        device.openBLEDevice(QStringLiteral("C8:47:8C:00:11:22"));
        bleTransport.answerAttach();
    }
};

}  // namespace

class TestDeviceManager : public QObject {
    Q_OBJECT

private slots:
    void replies_data();
    void replies();
    void volumeFollowsTheReportedRange();
    void deviceEventsAndTheOneAcknowledgement();
    void keyPassThrough();
    void bluetoothAudioHoldsTheChannel();
    void readyAndLinkState();
    void readThreadAndControllerThreadTogether();
    void bluetoothStateFromTheControllerThread();
    void anyRecordIsSafe();
};

void TestDeviceManager::replies_data()
{
    QTest::addColumn<st_small_base_com_msg>("record");
    QTest::addColumn<QString>("signalName");
    QTest::addColumn<QVariantList>("arguments");
    QTest::newRow("dpi") << reply(1, 6, 2, {3}) << "signalDpi" << QVariantList{3};
    QTest::newRow("lowbat report") << reply(1, 6, 3, {1}) << "signalLowbatReport" << QVariantList{true};
    QTest::newRow("shake read 1 is on") << reply(1, 6, 4, {1}) << "signalShake" << QVariantList{true};
    QTest::newRow("lamplight read 0 is on") << reply(1, 6, 5, {0}) << "signalLamplight" << QVariantList{1};
    QTest::newRow("lamplight read 1 is off") << reply(1, 6, 5, {1}) << "signalLamplight" << QVariantList{0};
    QTest::newRow("sound read 1 is on") << reply(1, 6, 6, {1}) << "signalSoundEffect" << QVariantList{true};
    QTest::newRow("cpi") << reply(1, 6, 9, {0x40, 0x06}) << "signalCpi" << QVariantList{1600};
    QTest::newRow("level values") << reply(1, 6, 10, {0x20, 0x03, 0x40, 0x06, 0x60, 0x09})
                                  << "signalDpiLevelValue" << QVariantList{800, 1600, 2400};
    QTest::newRow("no level values") << reply(1, 6, 10, {}, false) << "signalDpiThreeLevelFunction"
                                     << QVariantList{};
    QTest::newRow("packet mode bit 1")
        << reply(1, 6, 11, {0x02}) << "signalAudioPacketMode" << QVariantList{1};
    QTest::newRow("packet mode bit 0 only")
        << reply(1, 6, 11, {0x01}) << "signalAudioPacketMode" << QVariantList{0};
    QTest::newRow("remote flash") << reply(1, 4, 11, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x8a})
                                  << "signalRemoteFlashID"
                                  << QVariantList{QStringLiteral("112233445566778A")};
    QTest::newRow("dongle flash") << reply(6, 2, 11, {1, 2, 3, 4, 5, 6, 7, 0xff}) << "signalDongleFlashID"
                                  << QVariantList{QStringLiteral("01020304050607FF")};
    QTest::newRow("rf link 0") << reply(6, 3, 10, {0}, false) << "signalMouseActive" << QVariantList{true};
    QTest::newRow("rf link 1") << reply(6, 3, 10, {1}) << "signalMouseActive" << QVariantList{true};
    QTest::newRow("audio enable") << reply(6, 8, 6, {1, 0}) << "signalAudioEnable" << QVariantList{true};
    QTest::newRow("module") << reply(1, 4, 10, {0x0a, 0x0b, 0x0c, 0x2b, 2, 20, 50}) << "signalModule"
                            << QVariantList{1, 1, 0, 2, QStringLiteral("0A0B0C"), 1};
    QTest::newRow("module shake only") << reply(1, 4, 10, {0, 0, 0, 0x01}) << "signalModule"
                                       << QVariantList{0, 1, 0, 0, QStringLiteral("000000"), 0};
    QTest::newRow("module lamplight only") << reply(1, 4, 10, {0, 0, 0, 0x02}) << "signalModule"
                                           << QVariantList{1, 0, 0, 0, QStringLiteral("000000"), 0};
    QTest::newRow("active notice") << deviceEvent(11, {0}) << "signalMouseActive" << QVariantList{false};
    QTest::newRow("power plug") << deviceEvent(111, {0, 0, 0x08}) << "signalDevicePowerPlugIn"
                                << QVariantList{true};
    QTest::newRow("battery unaligned")
        << deviceEvent(123, {0x34, 0x0C}) << "signalBatteryValue" << QVariantList{0x0C34};
    QTest::newRow("low battery 1") << deviceEvent(124, {1, 0}) << "signalLowbat" << QVariantList{};
    QTest::newRow("low battery 2") << deviceEvent(124, {2, 0, 0}) << "signalMinLowbat" << QVariantList{};
    QTest::newRow("shutdown") << deviceEvent(124, {2, 0, 0x04}) << "signalMouseShutdown" << QVariantList{};
}

void TestDeviceManager::replies()
{
    QFETCH(st_small_base_com_msg, record);
    QFETCH(QString, signalName);
    QFETCH(QVariantList, arguments);
    Rig rig;
    // Every signal of the class, to see that exactly the one expected fires.
    std::vector<std::pair<QString, std::unique_ptr<QSignalSpy>>> spies;
    const QMetaObject* meta = rig.device.metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod m = meta->method(i);
        if (m.methodType() == QMetaMethod::Signal) {
            const QByteArray signature = QByteArray("2") + m.methodSignature();
            spies.emplace_back(QString::fromLatin1(m.name()),
                               std::make_unique<QSignalSpy>(&rig.device, signature.constData()));
        }
    }
    rig.device.handleMessage(record);
    for (const auto& spy : spies) {
        if (spy.first == signalName) {
            QCOMPARE(spy.second->size(), 1);
            QCOMPARE(spy.second->at(0), arguments);
        } else if (spy.first != QLatin1String("signalVolumeAdjust")) {
            QVERIFY2(spy.second->isEmpty(), qPrintable(spy.first));
        }
        spy.second->clear();
    }
    // Without its result flag a reply says nothing, but for the missing level values and the
    // link status.
    if (record.route() != 11 && record.resultFlag() && !(record.route() == 6 && record.configClass() == 3)) {
        st_small_base_com_msg flagless = record;
        flagless.bytes[7] = 0;
        rig.device.handleMessage(flagless);
        for (const auto& spy : spies) {
            if (!(record.configClass() == 6 && record.configType() == 10)) {
                QVERIFY2(spy.second->isEmpty(), qPrintable(spy.first));
            }
        }
    }
}

void TestDeviceManager::volumeFollowsTheReportedRange()
{
    Rig rig;
    QVERIFY(rig.device.openHidDevice(kVid, kPid));
    QSignalSpy volume(&rig.device, &DeviceManager::signalAudioVolume);
    QSignalSpy adjust(&rig.device, &DeviceManager::signalVolumeAdjust);
    for (int v : {27, 28, 40, 41}) {
        rig.device.handleMessage(reply(1, 3, 24, {v}));
    }
    QCOMPARE(volume.size(), 2);
    rig.device.setAudioVolume(41);
    rig.device.setAudioVolume(34);
    QTRY_COMPARE(rig.hidWrites().size(), 1);
    QCOMPARE(rig.hidWrites().at(0).u8(8), 34);

    // The mouse reports adjustment from 10 to 60: that range holds from now on.
    rig.device.handleMessage(reply(1, 4, 10, {0, 0, 0, 0x08, 1, 10, 60}));
    QCOMPARE(adjust.size(), 1);
    QCOMPARE(adjust.at(0), QVariantList({true, 60, 10}));
    volume.clear();
    for (int v : {9, 10, 41, 60, 61}) {
        rig.device.handleMessage(reply(1, 3, 24, {v}));
    }
    QCOMPARE(volume.size(), 3);
    rig.device.setAudioVolume(55);
    QTRY_COMPARE(rig.hidWrites().size(), 2);
}

void TestDeviceManager::deviceEventsAndTheOneAcknowledgement()
{
    Rig rig;
    QVERIFY(rig.device.openHidDevice(kVid, kPid));
    QSignalSpy dpiKey(&rig.device, &DeviceManager::signalChangeMouseDpiKey);
    QSignalSpy lamplight(&rig.device, &DeviceManager::signalLamplight);
    rig.device.handleMessage(deviceEvent(120, {1, 2}));
    rig.device.handleMessage(deviceEvent(120, {3, 1}));
    rig.device.handleMessage(deviceEvent(120, {9, 9}));
    rig.device.handleMessage(deviceEvent(123, {50, 0}));  // not acknowledged
    QCOMPARE(dpiKey.at(0), QVariantList({2}));
    QCOMPARE(lamplight.at(0), QVariantList({1}));  // raw, not inverted
    QTRY_COMPARE(rig.hidWrites().size(), 3);
    QList<int> acknowledged;
    for (const st_small_base_com_msg& ack : rig.hidWrites()) {
        QCOMPARE(ack.configType(), 7);
        acknowledged << ack.u8(8);
    }
    QCOMPARE(acknowledged, QList<int>({1, 3, 9}));
}

void TestDeviceManager::keyPassThrough()
{
    Rig rig;
    QSignalSpy keys(&rig.device, &DeviceManager::signalKeyEvent);
    QSignalSpy others(&rig.device, &DeviceManager::signalForeFinishKeyEvent);
    QSignalSpy clicks(&rig.device, &DeviceManager::signalClickListener);
    QVERIFY(!rig.device.isKeyTimerActive());
    for (int key : {2, 7}) {
        rig.device.handleMessage(deviceEvent(16, {key, 1}));
    }
    QCOMPARE(others.size(), 2);
    QCOMPARE(keys.size(), 0);
    QCoreApplication::processEvents();
    QVERIFY(!rig.device.isKeyTimerActive());

    rig.device.handleMessage(deviceEvent(16, {6, 1}));
    rig.device.handleMessage(deviceEvent(16, {6, 0}));
    QCOMPARE(keys.size(), 2);
    QCOMPARE(keys.at(0), QVariantList({6, 1}));
    QTRY_VERIFY(rig.device.isKeyTimerActive());
    for (int i = 0; i < 46; ++i) {
        rig.device.onKeyCheck();
    }
    QCOMPARE(clicks.size(), 1);
    QVERIFY(!rig.device.isKeyTimerActive());  // nothing in progress: no ticks

    // The press asked for audio on the Bluetooth path, which is closed here: nothing sent.
    QVERIFY(rig.bleTransport.writes.isEmpty());
}

void TestDeviceManager::bluetoothAudioHoldsTheChannel()
{
    Rig rig;
    rig.attachBle();
    QCOMPARE(rig.device.getDeviceType(), 1);
    QVERIFY(rig.device.state() == 1);
    QSignalSpy audio(&rig.device, &DeviceManager::signalAudioData);

    rig.device.getDpi();
    QTRY_COMPARE(rig.bleTransport.writes.size(), 1);
    QCOMPARE(rig.bleTransport.writes.at(0).size(), 20);

    // Voice key down: audio is enabled; then a frame of audio arrives.
    emit rig.bleTransport.signalNotification(QString(), deviceEvent(16, {6, 1}).toByteArray(20));
    QCOMPARE(rig.bleTransport.writes.size(), 2);
    QCOMPARE(st_small_base_com_msg::fromBytes(rig.bleTransport.writes.at(1)).configType(), 6);
    QByteArray silence(20, '\0');
    silence[0] = 38;
    emit rig.bleTransport.signalNotification(QString(), silence);
    QCOMPARE(audio.size(), 1);
    QVERIFY(rig.device.isAudioActive());
    rig.device.getDpi();  // lost while audio streams
    rig.device.setAudioEnable(true);
    QCOMPARE(rig.bleTransport.writes.size(), 2);

    // Release: the channel is free again.
    emit rig.bleTransport.signalNotification(QString(), deviceEvent(16, {6, 0}).toByteArray(20));
    QVERIFY(!rig.device.isAudioActive());
    rig.device.getDpi();
    QCOMPARE(rig.bleTransport.writes.size(), 3);

    // A record after audio is still a record.
    QSignalSpy dpi(&rig.device, &DeviceManager::signalDpi);
    emit rig.bleTransport.signalNotification(QString(), reply(1, 6, 2, {2}).toByteArray(20));
    QCOMPARE(dpi.size(), 1);
}

void TestDeviceManager::readyAndLinkState()
{
    Rig rig;
    QSignalSpy ready(&rig.device, &DeviceManager::signalDeviceReady);
    QCOMPARE(rig.device.state(), 0);
    QVERIFY(rig.device.openHidDevice(kVid, kPid));
    QCOMPARE(rig.device.state(), 1);
    QVERIFY(!rig.device.isConnected());  // asks the Bluetooth side alone
    rig.device.deviceReady();
    QVERIFY(rig.device.isReady());
    QCOMPARE(ready.size(), 1);
    // The audio mode goes out on Bluetooth only.
    QTest::qWait(50);
    QCOMPARE(rig.hidWrites().size(), 0);
    rig.device.close();
    QVERIFY(!rig.device.isReady());
    QCOMPARE(rig.device.state(), 0);

    rig.attachBle();
    rig.device.deviceReady();
    const st_small_base_com_msg mode = st_small_base_com_msg::fromBytes(rig.bleTransport.writes.last());
    QCOMPARE(mode.configType(), 11);
    QCOMPARE(mode.u8(8), 0x01);
    rig.device.close();
    QCOMPARE(rig.device.state(), 0);
    QCOMPARE(rig.device.getDeviceType(), 1);  // stays at the last link chosen
}

void TestDeviceManager::readThreadAndControllerThreadTogether()
{
    Rig rig;
    QVERIFY(rig.device.openHidDevice(kVid, kPid));
    std::atomic<int> keyEvents{0};
    connect(&rig.device, &DeviceManager::signalKeyEvent, this, [&](int, int) { ++keyEvents; });
    std::atomic<bool> stop{false};
    // The device controller's thread keeps asking while records pour in on the read thread.
    std::thread controller([&] {
        while (!stop) {
            rig.device.getDpi();
            rig.device.setAudioVolume(30);
            rig.device.state();
            rig.device.isReady();
        }
    });
    for (int i = 0; i < 200; ++i) {
        rig.hidBackend.pushReport(deviceEvent(16, {3 + i % 4, i % 2 == 0 ? 1 : 0}).toByteArray());
        rig.hidBackend.pushReport(deviceEvent(120, {1, 1}).toByteArray());
        if (i % 20 == 0) {
            QCoreApplication::processEvents();
            rig.device.onKeyCheck();
        }
    }
    QTRY_COMPARE_WITH_TIMEOUT(keyEvents.load(), 200, 10000);
    stop = true;
    controller.join();
    rig.device.close();
}

void TestDeviceManager::bluetoothStateFromTheControllerThread()
{
    // The controller polls state() while the main thread attaches and lets go of the link.
    Rig rig;
    rig.attachBle();
    std::atomic<bool> stop{false};
    std::atomic<int> polls{0};
    std::thread controller([&] {
        while (!stop) {
            rig.device.state();
            ++polls;
        }
    });
    for (int i = 0; i < 100; ++i) {
        rig.device.close();
        rig.attachBle();
    }
    QTRY_VERIFY(polls > 100);
    stop = true;
    controller.join();
    QCOMPARE(rig.bleTransport.offThreadCalls.load(), 0);
    QCOMPARE(rig.device.state(), 1);
    rig.device.close();
    QCOMPARE(rig.device.state(), 0);
}

void TestDeviceManager::anyRecordIsSafe()
{
    // Every route, class, type and interactive type, with noise in the payload and cut to every
    // length, on both paths, under the address and undefined-behaviour sanitizers.
    Rig rig;
    quint32 noise = 12345;
    for (int route = 0; route < 32; ++route) {
        for (int type = 0; type < 256; type += 3) {
            st_small_base_com_msg msg;
            for (quint8& b : msg.bytes) {
                noise = noise * 1103515245u + 12345u;
                b = static_cast<quint8>(noise >> 24);
            }
            msg.bytes[0] = static_cast<quint8>(route);
            msg.bytes[4] = static_cast<quint8>(type);
            msg.bytes[6] = static_cast<quint8>(type);
            rig.device.handleMessage(msg);
            rig.device.handleBlePacket(msg.toByteArray(1 + type % 32));
        }
    }
    rig.device.handleBlePacket(QByteArray());
    rig.device.handleBlePacket(QByteArray(300, '\x0b'));
    for (int i = 0; i < 60; ++i) {
        rig.device.onKeyCheck();
    }
    // Still answering afterwards.
    QSignalSpy dpi(&rig.device, &DeviceManager::signalDpi);
    rig.device.handleMessage(reply(1, 6, 2, {2}));
    QCOMPARE(dpi.size(), 1);
}

QTEST_GUILESS_MAIN(TestDeviceManager)
#include "tst_devicemanager.moc"
