#include "Hid/HidApiBackend.h"

#include <QElapsedTimer>
#include <QtTest>

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

// The USB read loop's wait, over two socket pairs standing in for hidapi's descriptor and the
// watch on the same node (hidraw hands each report to every reader, one report per read).
class TestHidApiBackend : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void noReportWaitsForTheNext();

private:
    void report(char id, bool watched);

    int mHid[2] = {-1, -1};
    int mWatch[2] = {-1, -1};
    HidReportWait mWait;
};

void TestHidApiBackend::init()
{
    QCOMPARE(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, mHid), 0);
    QCOMPARE(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, mWatch), 0);
    mWait.watch = mWatch[0];
    mWait.wakeup = eventfd(0, EFD_NONBLOCK);
}

void TestHidApiBackend::cleanup()
{
    for (int fd : {mHid[0], mHid[1], mWatch[0], mWatch[1], mWait.wakeup}) {
        ::close(fd);
    }
    mWait = HidReportWait();
}

void TestHidApiBackend::report(char id, bool watched)
{
    QCOMPARE(::send(mHid[1], &id, 1, 0), ssize_t(1));
    if (watched) {
        QCOMPARE(::send(mWatch[1], &id, 1, 0), ssize_t(1));
    }
}

void TestHidApiBackend::noReportWaitsForTheNext()
{
    const HidReportWait::Take take = [this](unsigned char* buffer, int length) {
        const ssize_t n = ::recv(mHid[0], buffer, static_cast<size_t>(length), MSG_DONTWAIT);
        return n < 0 ? 0 : static_cast<int>(n);
    };
    unsigned char buffer[8] = {};
    auto next = [&](int ms) { return mWait.read(take, buffer, sizeof(buffer), ms) == 1 ? buffer[0] : 0; };
    // A report came between hidapi's open and the watch's: hidapi is one ahead. Each report is
    // still read when it comes, not when the next one does.
    report('a', false);
    report('b', true);
    QCOMPARE(next(1000), 'a');
    QCOMPARE(next(100), 'b');
    report('c', true);
    QCOMPARE(next(1000), 'c');
    // Nothing left, and a wake returns at once with nothing.
    QCOMPARE(next(0), 0);
    const std::uint64_t one = 1;
    QCOMPARE(::write(mWait.wakeup, &one, sizeof(one)), ssize_t(sizeof(one)));
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(next(10000), 0);
    QVERIFY(clock.elapsed() < 5000);
}

QTEST_GUILESS_MAIN(TestHidApiBackend)
#include "tst_hidapibackend.moc"
