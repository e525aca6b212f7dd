#include "FakeBleTransport.h"
#include "Hid/BLEManager.h"

#include <QSignalSpy>
#include <QtTest>

#include <thread>

namespace {
const QString kMouse = QStringLiteral("C8:47:8C:00:11:22");
const QString kOtherPointer = QStringLiteral("00:1A:7D:DA:71:13");
}  // namespace

class TestBleManager : public QObject {
    Q_OBJECT

private slots:
    void acceptedNamesAndAddresses();
    void attachToAKnownMouse();
    void refusalAndTimeout();
    void scanTriesCandidatesInTurn();
    void notificationsAndWrites();
    void writesFromAnotherThreadArriveHere();
    void reattachOnSystemReconnectAndWake();
    void serviceWithoutDescriptorStaysSilent();
};

void TestBleManager::acceptedNamesAndAddresses()
{
    QVERIFY(BLEManager::isAcceptedName(QStringLiteral("Sorbeta")));
    QVERIFY(!BLEManager::isAcceptedName(QStringLiteral("Sorbeta 2")));
    QVERIFY(BLEManager::isAcceptedAddress(QStringLiteral("22:18:3A:01:02:03")));
    QVERIFY(!BLEManager::isAcceptedAddress(kOtherPointer));
    FakeBleTransport transport;
    BLEManager ble(&transport, nullptr);
    transport.systemConnected = QStringList{kOtherPointer};
    QVERIFY(!ble.isConnected());
    transport.systemConnected << kMouse;
    QVERIFY(ble.isConnected());
}

void TestBleManager::attachToAKnownMouse()
{
    FakeBleTransport transport;
    transport.systemConnected = QStringList{kMouse};
    BLEManager ble(&transport, nullptr);
    QSignalSpy state(&ble, &BLEManager::signalConnectState);
    ble.openDevice(kMouse);
    QCOMPARE(ble.connectionMode(), int(BLEManager::ModeAttaching));
    QVERIFY(ble.connectTimer()->isActive());
    QVERIFY(transport.calls.contains(QStringLiteral("connect ") + kMouse));
    transport.answerAttach();
    QVERIFY(!ble.connectTimer()->isActive());
    // Only the mouse's service is opened.
    QCOMPARE(transport.calls.filter(QStringLiteral("service ")).size(), 1);
    QVERIFY(transport.calls.contains(QStringLiteral("notify")));
    QCOMPARE(state.size(), 1);
    QCOMPARE(state.at(0), QVariantList({true, kMouse}));
    QVERIFY(ble.isOpen());
    ble.closeDevice();
    QVERIFY(!ble.isOpen());
    QCOMPARE(ble.connectionMode(), int(BLEManager::ModeIdle));
}

void TestBleManager::refusalAndTimeout()
{
    FakeBleTransport transport;
    BLEManager ble(&transport, nullptr);
    QSignalSpy state(&ble, &BLEManager::signalConnectState);
    ble.openDevice(QString());
    transport.systemConnected = QStringList{kOtherPointer};  // no mouse held by the system
    ble.openDevice(kMouse);
    QCOMPARE(state.size(), 2);
    QCOMPARE(state.at(1), QVariantList({false, QString()}));
    QVERIFY(transport.calls.filter(QStringLiteral("connect")).isEmpty());

    // An attach that hangs ends after 6000 ms.
    transport.systemConnected = QStringList{kMouse};
    ble.openDevice(kMouse);
    QCOMPARE(ble.connectTimer()->interval(), 6000);
    ble.onConnectTimeout();
    QCOMPARE(state.size(), 3);
    QCOMPARE(state.at(2), QVariantList({false, QString()}));
    QVERIFY(!transport.hasLink());

    // An attach that fails reports once, and no later time-out repeats it.
    ble.openDevice(kMouse);
    emit transport.signalLinkError(QStringLiteral("refused"));
    QCOMPARE(state.size(), 4);
    QVERIFY(!ble.connectTimer()->isActive());
}

void TestBleManager::scanTriesCandidatesInTurn()
{
    FakeBleTransport transport;
    BLEManager ble(&transport, nullptr);
    QSignalSpy state(&ble, &BLEManager::signalConnectState);
    QSignalSpy finished(&ble, &BLEManager::signalScanFinished);
    ble.scanDevice();
    QVERIFY(ble.isScan());
    emit transport.signalDeviceDiscovered(
        {QStringLiteral("22:18:3A:00:00:01"), QStringLiteral("Sorbeta X"), true});
    emit transport.signalDeviceDiscovered(
        {QStringLiteral("22:18:3A:00:00:02"), QStringLiteral("Pelnica"), false});
    QVERIFY(transport.calls.filter(QStringLiteral("connect")).isEmpty());
    emit transport.signalDeviceDiscovered(
        {QStringLiteral("22:18:3A:00:00:03"), QStringLiteral("Sorbeta"), true});
    emit transport.signalDeviceDiscovered(
        {QStringLiteral("22:18:3A:00:00:04"), QStringLiteral("Pelnica"), true});
    // The first candidate is being tried; the second waits.
    QCOMPARE(transport.calls.filter(QStringLiteral("connect")),
             QStringList({QStringLiteral("connect 22:18:3A:00:00:03")}));
    emit transport.signalLinkError(QStringLiteral("refused"));
    QCOMPARE(transport.calls.filter(QStringLiteral("connect")).last(),
             QStringLiteral("connect 22:18:3A:00:00:04"));
    transport.answerAttach();
    QCOMPARE(state.size(), 1);
    QCOMPARE(state.at(0), QVariantList({true, QStringLiteral("22:18:3A:00:00:04")}));
    QVERIFY(transport.calls.contains(QStringLiteral("stop scan")));
    emit transport.signalDiscoveryFinished();
    QCOMPARE(finished.size(), 1);
    QVERIFY(!ble.isScan());
}

void TestBleManager::notificationsAndWrites()
{
    FakeBleTransport transport;
    transport.systemConnected = QStringList{kMouse};
    BLEManager ble(&transport, nullptr);
    QSignalSpy messages(&ble, &BLEManager::signalReceiverMessage);
    ble.openDevice(kMouse);
    transport.answerAttach();
    const QByteArray packet = QByteArray::fromHex("0b000000107a01");
    emit transport.signalNotification(QLatin1String(BLEManager::kReadCharacteristic), packet);
    emit transport.signalNotification(QStringLiteral("other"), QByteArray("\x26\x00", 2));
    QCOMPARE(messages.size(), 2);
    QCOMPARE(messages.at(0).at(0).toByteArray(), packet);

    ble.serviceWriteMessage(QByteArray(20, '\x01'));
    ble.serviceWriteMessage(QByteArray());
    QCOMPARE(transport.writes.size(), 1);

    // Closed: notifications are dropped and writes go nowhere.
    ble.closeDevice();
    emit transport.signalNotification(QLatin1String(BLEManager::kReadCharacteristic), packet);
    ble.serviceWriteMessage(QByteArray(20, '\x02'));
    QCOMPARE(messages.size(), 2);
    QCOMPARE(transport.writes.size(), 1);
}

void TestBleManager::writesFromAnotherThreadArriveHere()
{
    FakeBleTransport transport;
    transport.systemConnected = QStringList{kMouse};
    BLEManager ble(&transport, nullptr);
    ble.openDevice(kMouse);
    transport.answerAttach();
    std::thread controller([&ble] {
        for (int i = 0; i < 50; ++i) {
            ble.serviceWriteMessage(QByteArray(20, static_cast<char>(i)));
        }
    });
    controller.join();
    QTRY_COMPARE(transport.writes.size(), 50);
    for (int i = 0; i < 50; ++i) {
        QCOMPARE(transport.writes.at(i).at(0), static_cast<char>(i));  // in order
        QCOMPARE(transport.writeThreads.at(i), QThread::currentThread());
    }
}

void TestBleManager::reattachOnSystemReconnectAndWake()
{
    FakeBleTransport transport;
    transport.systemConnected = QStringList{kMouse};
    BLEManager ble(&transport, nullptr);
    int deviceType = 0;
    ble.setDeviceTypeSource([&deviceType] { return deviceType; });
    ble.openDevice(kMouse);
    transport.answerAttach();
    ble.onSleep();  // device type 0: not ours to close
    QVERIFY(ble.isOpen());

    deviceType = 1;
    ble.onSleep();
    QVERIFY(!ble.isOpen());
    transport.calls.clear();
    ble.onWake();
    QVERIFY(transport.calls.contains(QStringLiteral("connect ") + kMouse));

    // The mouse reconnecting to the system is picked up; another pointer is not.
    transport.calls.clear();
    emit transport.signalSystemDeviceConnected(kOtherPointer);
    QVERIFY(transport.calls.isEmpty());
    emit transport.signalSystemDeviceConnected(kMouse);
    QVERIFY(transport.calls.contains(QStringLiteral("connect ") + kMouse));

    // While scanning, reconnects are ignored.
    ble.scanDevice();
    transport.calls.clear();
    emit transport.signalSystemDeviceConnected(kMouse);
    QVERIFY(transport.calls.filter(QStringLiteral("connect")).isEmpty());
}

void TestBleManager::serviceWithoutDescriptorStaysSilent()
{
    FakeBleTransport transport;
    transport.systemConnected = QStringList{kMouse};
    transport.hasNotifyDescriptor = false;
    BLEManager ble(&transport, nullptr);
    QSignalSpy state(&ble, &BLEManager::signalConnectState);
    ble.openDevice(kMouse);
    QTest::ignoreMessage(QtWarningMsg, "the mouse's notify characteristic has no configuration descriptor");
    transport.answerAttach();
    QCOMPARE(state.size(), 0);
    QVERIFY(ble.isOpen());
    QVERIFY(!ble.connectTimer()->isActive());
}

QTEST_GUILESS_MAIN(TestBleManager)
#include "tst_blemanager.moc"
