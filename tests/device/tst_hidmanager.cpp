#include "FakeHidBackend.h"
#include "Hid/DeviceMessage.h"
#include "Hid/HidManager.h"
#include "Hid/UsbChangeWorker.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <future>
#include <mutex>
#include <thread>

namespace {

constexpr int kVid = 0x3151;
constexpr int kPid = 0x4011;

// The receiver as it shows itself: a keyboard and mouse interface before the vendor one.
QList<HidBackend::Interface> receiver(const QString& prefix = QStringLiteral("/dev/hidraw"))
{
    return {{prefix + QLatin1Char('1'), kVid, kPid, 0x0001},
            {prefix + QLatin1Char('2'), kVid, kPid, 0x000C},
            {prefix + QLatin1Char('3'), kVid, kPid, 0xFF00}};
}

}  // namespace

class TestHidManager : public QObject {
    Q_OBJECT

private slots:
    void enumerateKeepsVendorPageOnly();
    void openTakesTheVendorInterfaceByPath();
    void writeSendsReportZeroAndLosesByte31();
    void readLoopDeliversWholeReportsAndLeavesOnClose();
    void pulledOutReceiverClosesTheLink();
    void readFailureClosesTheLinkThoughWritesGoThrough();
    void openRightAfterAListenerClosedTheLink();
    void plugDetection();
    void plugWatchFollowsTheDeviceFolder();
    void writesFromAnotherThreadWhileReadingAndClosing();
};

void TestHidManager::enumerateKeepsVendorPageOnly()
{
    FakeHidBackend backend;
    backend.setInterfaces(
        receiver() + QList<HidBackend::Interface>{{QStringLiteral("/dev/hidraw9"), 0x46d, 0xc52b, 0xFF00}});
    HidManager hid(&backend);
    const QList<HidDevice> list = hid.enumerate();
    QCOMPARE(list.size(), 2);
    QCOMPARE(list.at(0).vid, kVid);
    QCOMPARE(list.at(0).pid, kPid);
    QVERIFY(list.at(0).path.isEmpty());
    QCOMPARE(list.at(1).vid, 0x46d);

    backend.setInitFails(true);
    QVERIFY(hid.enumerate().isEmpty());
}

void TestHidManager::openTakesTheVendorInterfaceByPath()
{
    FakeHidBackend backend;
    backend.setInterfaces(receiver());
    HidManager hid(&backend);
    QVERIFY(!hid.open(kVid, kPid + 1));
    QVERIFY(!hid.isOpen());
    QVERIFY(hid.open(kVid, kPid));
    QCOMPARE(backend.openedPath(), QStringLiteral("/dev/hidraw3"));
    QVERIFY(hid.isRunning());
    // Opening again keeps the one handle.
    QVERIFY(hid.open(kVid, kPid));
    QCOMPARE(backend.openHandles(), 1);
    hid.close();
    QVERIFY(!hid.isOpen());
    QCOMPARE(backend.openHandles(), 0);

    // Without the vendor page nothing is opened.
    FakeHidBackend bare;
    bare.setInterfaces({{QStringLiteral("/dev/hidraw1"), kVid, kPid, 0x0001}});
    HidManager other(&bare);
    QVERIFY(!other.open(kVid, kPid));
    QCOMPARE(bare.openHandles(), 0);
}

void TestHidManager::writeSendsReportZeroAndLosesByte31()
{
    FakeHidBackend backend;
    backend.setInterfaces(receiver());
    HidManager hid(&backend);
    st_small_base_com_msg msg = DeviceMessage::setCpi(0x0640);
    msg.bytes[30] = 0xAB;
    msg.bytes[31] = 0xCD;
    QVERIFY(!hid.write(msg.bytes));
    QVERIFY(backend.writes().isEmpty());

    QVERIFY(hid.open(kVid, kPid));
    QVERIFY(hid.write(msg.bytes));
    QTRY_COMPARE(backend.writes().size(), 1);
    const QList<QByteArray> writes = backend.writes();
    QCOMPARE(writes.at(0).size(), 32);
    QCOMPARE(writes.at(0).at(0), '\0');
    QCOMPARE(writes.at(0).mid(1), msg.toByteArray(31));

    // The loop waits for input without a short slice: a write and a close cut the wait short.
    QTest::qWait(100);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(hid.write(msg.bytes));
    QTRY_COMPARE_WITH_TIMEOUT(backend.writes().size(), 2, 1000);
    hid.close();
    QVERIFY(clock.elapsed() < 1000);
}

void TestHidManager::readLoopDeliversWholeReportsAndLeavesOnClose()
{
    FakeHidBackend backend;
    backend.setInterfaces(receiver());
    HidManager hid(&backend);
    std::mutex mutex;
    QList<QByteArray> received;
    QList<int> lengths;
    // Direct, as the device manager connects: the pointer is only good during the call.
    connect(
        &hid, &HidManager::signalReceiveMessage, this,
        [&](void* msg, int length) {
            const std::lock_guard<std::mutex> lock(mutex);
            received.append(QByteArray(static_cast<const char*>(msg), HidManager::kReportSize));
            lengths.append(length);
        },
        Qt::DirectConnection);
    QVERIFY(hid.open(kVid, kPid));
    backend.pushReport(DeviceMessage::getDpi().toByteArray());
    backend.pushReport(QByteArray::fromHex("0b000000107a01"));  // a short read is padded
    QTRY_VERIFY([&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return received.size() == 2;
    }());
    {
        const std::lock_guard<std::mutex> lock(mutex);
        QCOMPARE(received.at(0), DeviceMessage::getDpi().toByteArray());
        QCOMPARE(received.at(1), QByteArray::fromHex("0b000000107a01") + QByteArray(25, '\0'));
        QCOMPARE(lengths, QList<int>({32, 32}));
    }

    QElapsedTimer clock;
    clock.start();
    hid.close();
    QVERIFY(clock.elapsed() < 1000);
    QVERIFY(hid.isFinished());

    // A later open starts the loop again.
    QVERIFY(hid.open(kVid, kPid));
    QVERIFY(hid.isRunning());
    backend.pushReport(DeviceMessage::getCpi().toByteArray());
    QTRY_VERIFY([&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return received.size() == 3;
    }());
}

void TestHidManager::pulledOutReceiverClosesTheLink()
{
    FakeHidBackend backend;
    backend.setInterfaces(receiver());
    HidManager hid(&backend);
    QVERIFY(hid.open(kVid, kPid));
    backend.pullOut();
    QTRY_VERIFY(hid.isFinished());
    QVERIFY(!hid.write(DeviceMessage::getDpi().bytes));

    // Plugged in again: the controller's next attempt closes the failed handle and opens anew.
    backend.setInterfaces(receiver());
    auto attempt = std::async(std::launch::async, [&] { return hid.open(kVid, kPid); });
    if (attempt.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        qFatal("open() hangs on a link that failed");
    }
    QVERIFY(attempt.get());
    QCOMPARE(backend.openHandles(), 1);
    QVERIFY(hid.isRunning());
}

void TestHidManager::readFailureClosesTheLinkThoughWritesGoThrough()
{
    FakeHidBackend backend;
    backend.setInterfaces(receiver());
    HidManager hid(&backend);
    std::atomic<int> received{0};
    connect(
        &hid, &HidManager::signalReceiveMessage, this, [&](void*, int) { ++received; }, Qt::DirectConnection);
    QVERIFY(hid.open(kVid, kPid));
    backend.failNextRead();
    QTRY_VERIFY(hid.isFinished());
    // The receiver still takes writes, and a write leaves no error string behind; with no
    // reader the link counts as closed all the same, so the next attempt opens it anew.
    hid.write(DeviceMessage::getDpi().bytes);
    QVERIFY(!hid.isOpen());
    QCOMPARE(backend.openHandles(), 0);
    QVERIFY(hid.open(kVid, kPid));
    backend.pushReport(DeviceMessage::getCpi().toByteArray());
    QTRY_COMPARE(received.load(), 1);
}

void TestHidManager::openRightAfterAListenerClosedTheLink()
{
    FakeHidBackend backend;
    backend.setInterfaces(receiver());
    HidManager hid(&backend);
    std::atomic<int> received{0};
    std::atomic<bool> closed{false};
    connect(
        &hid, &HidManager::signalReceiveMessage, this,
        [&](void*, int) {
            if (++received == 1) {
                hid.close();
                closed = true;
                // The loop is still on its way out when the next open comes.
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
        },
        Qt::DirectConnection);
    QVERIFY(hid.open(kVid, kPid));
    backend.pushReport(DeviceMessage::getCpi().toByteArray());
    QTRY_VERIFY(closed);
    QVERIFY(hid.open(kVid, kPid));
    backend.pushReport(DeviceMessage::getCpi().toByteArray());
    QTRY_COMPARE(received.load(), 2);
}

void TestHidManager::plugDetection()
{
    FakeHidBackend backend;
    backend.setInterfaces(receiver());
    UsbChangeWorker worker(&backend);
    QSignalSpy changes(&worker, &UsbChangeWorker::signalChange);

    // What is there at the first look is not announced.
    worker.onCheck();
    QVERIFY(changes.isEmpty());

    // A second receiver of the same kind on other paths is another device.
    backend.setInterfaces(receiver() + receiver(QStringLiteral("/dev/hidraw-b")));
    worker.onCheck();
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0).at(2), QVariant(true));
    changes.clear();

    // Moving to another port: the removal comes first.
    backend.setInterfaces(receiver(QStringLiteral("/dev/hidraw-c")) +
                          receiver(QStringLiteral("/dev/hidraw-b")));
    worker.onCheck();
    QCOMPARE(changes.size(), 2);
    QCOMPARE(changes.at(0).at(2), QVariant(false));
    QCOMPARE(changes.at(1), QVariantList({kVid, kPid, true}));
    changes.clear();

    // No change, no event; a failing library ends the tick quietly.
    worker.onCheck();
    backend.setInitFails(true);
    backend.setInterfaces({});
    worker.onCheck();
    QVERIFY(changes.isEmpty());
    backend.setInitFails(false);
    worker.onCheck();
    QCOMPARE(changes.size(), 2);
    QVERIFY(!changes.at(0).at(2).toBool() && !changes.at(1).at(2).toBool());

    // Paths compare exactly.
    QVERIFY(!UsbChangeWorker::devExist({HidDevice{QStringLiteral("/dev/HIDRAW3"), kVid, kPid}},
                                       HidDevice{QStringLiteral("/dev/hidraw3"), kVid, kPid}));
}

void TestHidManager::plugWatchFollowsTheDeviceFolder()
{
    // A backend whose nodes live in a folder: a change there is a check, and nothing polls.
    class FolderBackend : public FakeHidBackend {
    public:
        QString folder;
        QString deviceFolder() const override { return folder; }
    };
    QTemporaryDir dev;
    FolderBackend backend;
    backend.folder = dev.path();
    HidManager hid(&backend);
    QSignalSpy changes(&hid, &HidManager::signalUSBChange);
    QVERIFY(QMetaObject::invokeMethod(
        hid.changeWorker(), [] {}, Qt::BlockingQueuedConnection));
    backend.setInterfaces(receiver());
    QTest::qWait(1500);  // a poll would have looked by now
    QVERIFY(changes.isEmpty());
    QFile node(dev.filePath(QStringLiteral("hidraw0")));
    QVERIFY(node.open(QIODevice::WriteOnly));
    QTRY_COMPARE(changes.size(), 1);
    QCOMPARE(changes.at(0), QVariantList({kVid, kPid, true}));
    backend.setInterfaces({});
    QVERIFY(node.remove());
    QTRY_COMPARE(changes.size(), 2);
    QCOMPARE(changes.at(1).at(2), QVariant(false));
}

void TestHidManager::writesFromAnotherThreadWhileReadingAndClosing()
{
    FakeHidBackend backend;
    backend.setInterfaces(receiver());
    HidManager hid(&backend);
    std::atomic<int> received{0};
    connect(
        &hid, &HidManager::signalReceiveMessage, this,
        [&](void*, int) {
            ++received;
            // Answering from the read thread, as the acknowledgement of a device event does.
            st_small_base_com_msg ack = DeviceMessage::responseAck(1);
            hid.write(ack.bytes);
        },
        Qt::DirectConnection);
    QVERIFY(hid.open(kVid, kPid));
    std::atomic<bool> stop{false};
    std::thread controller([&] {
        st_small_base_com_msg msg = DeviceMessage::getDpi();
        while (!stop) {
            hid.write(msg.bytes);
            hid.isOpen();
        }
    });
    for (int round = 0; round < 5; ++round) {
        for (int i = 0; i < 20; ++i) {
            backend.pushReport(DeviceMessage::getCpi().toByteArray());
        }
        QTest::qWait(20);
        hid.close();
        QVERIFY(hid.open(kVid, kPid));
    }
    stop = true;
    controller.join();
    hid.close();
    QVERIFY(received > 0);
    QCOMPARE(backend.openHandles(), 0);
}

QTEST_GUILESS_MAIN(TestHidManager)
#include "tst_hidmanager.moc"
