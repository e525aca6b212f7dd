#include "Hid/DeviceMessage.h"
#include "Hid/HidManager.h"
#include "Hid/UsbChangeWorker.h"
#include "Hid/VirtualHidBackend.h"

#include "MouseSimulator.h"

#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

#include <memory>
#include <mutex>

namespace DM = DeviceMessage;

class TestVirtualReceiver : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void requestsAndRepliesTravelTheSocket();
    void unplugAndPlugAreSeenInOrder();
    void noSimulatorMeansNoReceiver();

private:
    QString mSocketPath;
};

void TestVirtualReceiver::initTestCase()
{
    mSocketPath =
        QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/mouse-sim");
}

void TestVirtualReceiver::requestsAndRepliesTravelTheSocket()
{
    MouseSimulator sim(QStringLiteral(MOUSE_SIM_BINARY), mSocketPath);
    QVERIFY(sim.waitReady());
    VirtualHidBackend backend(mSocketPath);
    HidManager hid(&backend);

    const QList<HidDevice> devices = hid.enumerate();
    QCOMPARE(devices.size(), 1);  // only the vendor-page interface counts
    QCOMPARE(devices.at(0).vid, 0x3151);
    QCOMPARE(devices.at(0).pid, 0x4011);

    std::mutex mutex;
    QList<QByteArray> received;
    connect(
        &hid, &HidManager::signalReceiveMessage, this,
        [&](void* msg, int) {
            const std::lock_guard<std::mutex> lock(mutex);
            received << QByteArray(static_cast<const char*>(msg), 32);
        },
        Qt::DirectConnection);
    auto receivedCount = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return received.size();
    };
    auto record = [&](int i) {
        const std::lock_guard<std::mutex> lock(mutex);
        return st_small_base_com_msg::fromBytes(received.at(i));
    };

    QVERIFY(hid.open(0x3151, 0x4011));
    QVERIFY(sim.waitForLine(QStringLiteral("open")));
    sim.command("set dpi 3");
    sim.command("echo dpi set");
    QVERIFY(sim.waitForLine(QStringLiteral("dpi set")));
    st_small_base_com_msg request = DM::getDpi();
    QVERIFY(hid.write(request.bytes));
    // The receiver gets 31 bytes: the report number is not on the wire.
    QVERIFY(
        sim.waitForLine(QStringLiteral("out ") + QString::fromLatin1(request.toByteArray(31).toHex(' '))));
    QTRY_COMPARE(receivedCount(), 1);
    const st_small_base_com_msg reply = record(0);
    QCOMPARE(reply.route(), 1);
    QCOMPARE(reply.configType(), int(DM::CFG_SET_REMOTE_MOUSE_DPI));
    QVERIFY(reply.resultFlag());
    QCOMPARE(reply.u8(8), 3);

    // A click with its timing: press and release 150 ms apart.
    sim.command("click 6 150");
    QTRY_COMPARE(receivedCount(), 3);
    QCOMPARE(record(1).interactiveType(), int(DM::TYPE_PC_KEY_PASSTHROUGH));
    QCOMPARE(record(1).u8(5), 6);
    QCOMPARE(record(1).u8(6), 1);
    QCOMPARE(record(2).u8(6), 0);
    hid.close();
    QVERIFY(sim.waitForLine(QStringLiteral("closed")));
}

void TestVirtualReceiver::unplugAndPlugAreSeenInOrder()
{
    MouseSimulator sim(QStringLiteral(MOUSE_SIM_BINARY), mSocketPath);
    QVERIFY(sim.waitReady());
    VirtualHidBackend backend(mSocketPath);
    HidManager hid(&backend);
    UsbChangeWorker* worker = hid.changeWorker();
    QSignalSpy changes(&hid, &HidManager::signalUSBChange);

    // The worker lives on its own thread; its check is called there as the poll does.
    auto check = [worker] {
        QMetaObject::invokeMethod(worker, &UsbChangeWorker::onCheck, Qt::BlockingQueuedConnection);
    };
    check();
    QVERIFY(hid.open(0x3151, 0x4011));
    QVERIFY(sim.waitForLine(QStringLiteral("open")));

    sim.command("unplug");
    // Reads fail and the read loop leaves; the link reports itself closed.
    QTRY_VERIFY(hid.isFinished());
    QVERIFY(!hid.isOpen());
    check();
    QTRY_COMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0), QVariantList({0x3151, 0x4011, false}));

    sim.command("plug");
    QTRY_VERIFY([&] {
        check();
        QCoreApplication::processEvents();
        return changes.size() == 2;
    }());
    QCOMPARE(changes.at(1), QVariantList({0x3151, 0x4011, true}));
    QVERIFY(hid.open(0x3151, 0x4011));
}

void TestVirtualReceiver::noSimulatorMeansNoReceiver()
{
    VirtualHidBackend backend(mSocketPath + QStringLiteral(".absent"));
    HidManager hid(&backend);
    QVERIFY(hid.enumerate().isEmpty());
    QVERIFY(!hid.open(0x3151, 0x4011));
    QVERIFY(!hid.write(DM::getDpi().bytes));
}

QTEST_GUILESS_MAIN(TestVirtualReceiver)
#include "tst_virtualreceiver.moc"
