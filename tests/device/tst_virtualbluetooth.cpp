#include "FakeHidBackend.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"
#include "Hid/VirtualBleTransport.h"
#include "Hid/VirtualDeviceConnection.h"
#include "MouseSimulator.h"

#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtMath>
#include <QtTest>

namespace {

QString runtimePath(const char* name)
{
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QLatin1Char('/') +
           QLatin1String(name);
}

// The application's Bluetooth side over the simulator's socket; no receiver is plugged in.
struct BleRig {
    explicit BleRig(const QString& socket) : transport(socket) {}
    FakeHidBackend noReceiver;
    HidManager hid{&noReceiver};
    VirtualBleTransport transport;
    BLEManager ble{&transport, nullptr};
    DeviceManager device{&hid, &ble};
};

}  // namespace

class TestVirtualBluetooth : public QObject {
    Q_OBJECT

private slots:
    void attachTalkListenAndLose();
    void scanFindsAndAttaches();
    void linkLostInMidAudio();
    void systemListAndScanAsTheSystemStackTellsThem();
};

void TestVirtualBluetooth::attachTalkListenAndLose()
{
    const QString socket = runtimePath("mouse-sim-ble");
    const QString address = QStringLiteral("C8:47:8C:5A:01:02");
    MouseSimulator sim(QStringLiteral(MOUSE_SIM_BINARY), socket, {QStringLiteral("--unplugged")});
    QVERIFY(sim.waitReady());
    BleRig rig(socket);
    DeviceManager& device = rig.device;
    QSignalSpy state(&device, &DeviceManager::signalBLEDeviceConnectState);

    // The system holds no connection to the mouse yet: refused at once.
    device.openBLEDevice(address);
    QCOMPARE(state.size(), 1);
    QCOMPARE(state.at(0).at(0).toBool(), false);

    // The mouse connecting to the system is picked up without another call.
    sim.command("ble-on");
    QTRY_COMPARE(state.size(), 2);
    QCOMPARE(state.at(1), QVariantList({true, address}));
    QVERIFY(sim.waitForLine(QStringLiteral("ble attached")));
    QCOMPARE(device.state(), 1);
    QVERIFY(device.isConnected());

    // A request and its reply travel the characteristic pair.
    QSignalSpy dpi(&device, &DeviceManager::signalDpi);
    sim.command("set dpi 1\necho set");
    QVERIFY(sim.waitForLine(QStringLiteral("set")));
    device.getDpi();
    QVERIFY(sim.waitForLine(QStringLiteral("out 01 00 00 00 00 06 02 01")));
    QTRY_COMPARE(dpi.size(), 1);
    QCOMPARE(dpi.at(0).at(0).toInt(), 1);

    // Holding the voice key: the mouse streams group D audio, decoded into PCM.
    QByteArray pcm(16000 * 2 / 5, '\0');
    for (int i = 0; i < pcm.size() / 2; ++i) {
        qToLittleEndian(static_cast<qint16>(6000 * std::sin(2 * M_PI * 440 * i / 16000.0)),
                        pcm.data() + 2 * i);
    }
    const QString raw = runtimePath("tone.pcm");
    {
        QFile file(raw);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(pcm);
    }
    QSignalSpy keys(&device, &DeviceManager::signalKeyEvent);
    QSignalSpy audio(&device, &DeviceManager::signalAudioData);
    sim.command("press 6");
    QTRY_COMPARE(keys.size(), 1);
    sim.command("audio " + raw.toLocal8Bit() + " D");
    QVERIFY(sim.waitForLine(QStringLiteral("audio done")));
    QTRY_VERIFY(audio.size() >= pcm.size() / 256 - 2);
    QVERIFY(device.isAudioActive());
    QByteArray heard;
    for (const QList<QVariant>& chunk : audio) {
        heard += chunk.at(0).toByteArray();
    }
    qint64 energy = 0;
    for (int i = 0; i < heard.size() / 2; ++i) {
        energy += std::abs(qFromLittleEndian<qint16>(heard.constData() + 2 * i));
    }
    QVERIFY2(energy / (heard.size() / 2) > 1000, "the decoded audio is silent");
    sim.command("release 6");
    QTRY_COMPARE(keys.size(), 2);
    QVERIFY(!device.isAudioActive());

    // The mouse leaves the system: the link goes down and the poll sees it.
    sim.command("ble-off");
    QVERIFY(sim.waitForLine(QStringLiteral("ble detached")));
    QTRY_COMPARE(device.state(), 0);
}

void TestVirtualBluetooth::scanFindsAndAttaches()
{
    const QString socket = runtimePath("mouse-sim-scan");
    MouseSimulator sim(QStringLiteral(MOUSE_SIM_BINARY), socket, {QStringLiteral("--unplugged")});
    QVERIFY(sim.waitReady());
    sim.command("ble-on\necho on");
    QVERIFY(sim.waitForLine(QStringLiteral("on")));
    BleRig rig(socket);
    DeviceManager& device = rig.device;
    QSignalSpy state(&device, &DeviceManager::signalBLEDeviceConnectState);
    QSignalSpy finished(&device, &DeviceManager::signalScanFinished);
    device.scanBleDevice();
    QCOMPARE(device.getDeviceType(), 1);
    QTRY_COMPARE(state.size(), 1);
    QCOMPARE(state.at(0), QVariantList({true, QStringLiteral("C8:47:8C:5A:01:02")}));
    QTRY_COMPARE(finished.size(), 1);
    QVERIFY(sim.waitForLine(QStringLiteral("ble attached")));
}

void TestVirtualBluetooth::linkLostInMidAudio()
{
    const QString socket = runtimePath("mouse-sim-drop");
    const QString raw = runtimePath("long.pcm");
    {
        QFile file(raw);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(16000 * 2 * 2, '\x10'));  // 2 s
    }
    MouseSimulator sim(QStringLiteral(MOUSE_SIM_BINARY), socket, {QStringLiteral("--unplugged")});
    QVERIFY(sim.waitReady());
    sim.command("ble-on\necho on");
    QVERIFY(sim.waitForLine(QStringLiteral("on")));
    BleRig rig(socket);
    DeviceManager& device = rig.device;
    QSignalSpy state(&device, &DeviceManager::signalBLEDeviceConnectState);
    QTRY_VERIFY(device.isConnected());
    device.openBLEDevice(QStringLiteral("C8:47:8C:5A:01:02"));
    QTRY_COMPARE(state.size(), 1);
    QVERIFY(sim.waitForLine(QStringLiteral("ble attached")));
    QSignalSpy audio(&device, &DeviceManager::signalAudioData);
    sim.command("press 5\naudio " + raw.toLocal8Bit() + " B");
    QTRY_VERIFY(audio.size() > 10);
    QVERIFY(device.isAudioActive());

    // The mouse leaves while it streams: the link goes down, nothing more arrives.
    sim.command("ble-off");
    QTRY_COMPARE(device.state(), 0);
    QTest::qWait(100);
    const int heard = audio.size();
    QTest::qWait(200);
    QCOMPARE(audio.size(), heard);

    // Back again, attached anew by itself: the channel is free for requests.
    sim.command("ble-on");
    QTRY_COMPARE(state.size(), 2);
    QVERIFY(sim.waitForLine(QStringLiteral("ble attached")));
    QVERIFY(!device.isAudioActive());
    device.getDpi();
    QVERIFY(sim.waitForLine(QStringLiteral("out 01 00 00 00 00 06 02 01")));

    // The simulator vanishes in mid-stream: the link goes down, the application carries on.
    sim.command("press 5\naudio " + raw.toLocal8Bit() + " C");
    QTRY_VERIFY(device.isAudioActive());
    sim.kill();
    QTRY_COMPARE(device.state(), 0);
    QVERIFY(!device.isConnected());
}

void TestVirtualBluetooth::systemListAndScanAsTheSystemStackTellsThem()
{
    // A stand-in for the simulator, to send exactly these frames.
    QTemporaryDir dir;
    QLocalServer server;
    QVERIFY(server.listen(dir.filePath(QStringLiteral("sim"))));
    VirtualBleTransport transport(dir.filePath(QStringLiteral("sim")));
    QVERIFY(server.waitForNewConnection(3000));
    QLocalSocket* sim = server.nextPendingConnection();
    auto send = [sim](int channel, const char* payload) {
        sim->write(VirtualDeviceConnection::frame(channel, QByteArray(payload)));
        sim->flush();
    };
    QSignalSpy connected(&transport, &BleTransport::signalSystemDeviceConnected);
    QSignalSpy found(&transport, &BleTransport::signalDeviceDiscovered);
    QSignalSpy finished(&transport, &BleTransport::signalDiscoveryFinished);

    // The list comes again on every change: only an address new to it is a connection.
    send(VirtualDeviceConnection::BleSystemDevices, "C8:47:8C:00:00:01");
    send(VirtualDeviceConnection::BleSystemDevices, "C8:47:8C:00:00:01\nC8:47:8C:00:00:02");
    send(VirtualDeviceConnection::BleSystemDevices, "C8:47:8C:00:00:02\nC8:47:8C:00:00:01");
    send(VirtualDeviceConnection::BleSystemDevices, "C8:47:8C:00:00:02");
    send(VirtualDeviceConnection::BleSystemDevices, "C8:47:8C:00:00:02\nC8:47:8C:00:00:01");
    QTRY_COMPARE(connected.size(), 3);
    QCOMPARE(connected.at(2).at(0).toString(), QStringLiteral("C8:47:8C:00:00:01"));

    // A scan that runs its course.
    transport.startDiscovery();
    send(VirtualDeviceConnection::BleAdvert, "C8:47:8C:5A:01:02\nSorbeta");
    send(VirtualDeviceConnection::BleScanDone, "");
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(found.size(), 1);

    // A cancelled scan ends at once, and what was still on its way for it is not told.
    transport.startDiscovery();
    transport.stopDiscovery();
    QCOMPARE(finished.size(), 2);
    transport.stopDiscovery();
    send(VirtualDeviceConnection::BleAdvert, "C8:47:8C:5A:01:02\nSorbeta");
    send(VirtualDeviceConnection::BleScanDone, "");
    send(VirtualDeviceConnection::BleSystemDevices, "C8:47:8C:00:00:03");
    QTRY_COMPARE(connected.size(), 4);
    QCOMPARE(found.size(), 1);
    QCOMPARE(finished.size(), 2);
}

QTEST_GUILESS_MAIN(TestVirtualBluetooth)
#include "tst_virtualbluetooth.moc"
