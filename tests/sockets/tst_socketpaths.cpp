#include "Hid/VirtualDeviceConnection.h"
#include "ProcessLines.h"
#include "Utils/PeerCredentials.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <grp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>

// Each user of a Unix socket refuses a path over 107 bytes with a message that names the
// path and the limit, instead of an error that says nothing about why; and talks only to
// processes of its own user.
class TestSocketPaths : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void simulatorRefusesToListen();
    void deviceConnectionRefusesOnceAndLogsOnce();
    void singleInstanceGuardSaysWhyItIsOff();
    void peersOfAnotherUserAreTurnedAway();

private:
    // A message naming this path and the limit.
    QRegularExpression namesPathAndLimit(const QString& path) const;

    QTemporaryDir mTemp;
    QString mLongDir;  // 100 more bytes below the temporary folder
};

void TestSocketPaths::initTestCase()
{
    QVERIFY(mTemp.isValid());
    mLongDir = mTemp.path() + QLatin1Char('/') + QString(100, QLatin1Char('d'));
    QVERIFY(QDir().mkpath(mLongDir));
    QVERIFY(QFile::setPermissions(mLongDir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QVERIFY(mLongDir.size() + 4 > 107);
}

QRegularExpression TestSocketPaths::namesPathAndLimit(const QString& path) const
{
    return QRegularExpression(QRegularExpression::escape(path) + QStringLiteral(".*\\b107\\b"));
}

void TestSocketPaths::simulatorRefusesToListen()
{
    const QString path = mLongDir + QStringLiteral("/mouse-sim");
    QProcess sim;
    sim.start(QStringLiteral(MOUSE_SIM_BINARY), {path});
    QVERIFY(sim.waitForFinished(10000));
    QCOMPARE(sim.exitCode(), 1);
    const QString error = QString::fromLocal8Bit(sim.readAllStandardError());
    QVERIFY2(namesPathAndLimit(path).match(error).hasMatch(), qPrintable(error));
    QVERIFY(!QFile::exists(path));
}

void TestSocketPaths::deviceConnectionRefusesOnceAndLogsOnce()
{
    const QString path = mLongDir + QStringLiteral("/mouse-sim");
    VirtualDeviceConnection connection(
        path, [](int, const QByteArray&) {}, [] {});
    QTest::ignoreMessage(QtWarningMsg, namesPathAndLimit(path));
    QVERIFY(!connection.ensureConnected());
    // The link retries every tick; the reason is written once, not on every try.
    QVERIFY(!connection.send(VirtualDeviceConnection::HidInterfaces, QByteArray()));
}

void TestSocketPaths::singleInstanceGuardSaysWhyItIsOff()
{
    const QString data = mTemp.path() + QStringLiteral("/data");
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), mLongDir);
    env.insert(QStringLiteral("XDG_DATA_HOME"), data);
    env.insert(QStringLiteral("XDG_STATE_HOME"), data);
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    QProcess app;
    app.setProcessEnvironment(env);
    app.setProcessChannelMode(QProcess::ForwardedChannels);
    app.start(QStringLiteral(ZORVANE_BINARY), QStringList());
    QVERIFY(app.waitForStarted());

    // The program keeps running without the guard; its log tells why.
    const QRegularExpression expected = namesPathAndLimit(mLongDir + QStringLiteral("/Zorvane"));
    const QString text = waitForLog(
        app, data + QStringLiteral("/ZorvaneV2/ZorvaneLog.txt"),
        [&expected](const QString& log) { return expected.match(log).hasMatch(); }, 30000);
    const bool stillRunning = app.state() == QProcess::Running;
    app.kill();
    app.waitForFinished();
    QVERIFY2(expected.match(text).hasMatch(), qPrintable(text));
    QVERIFY(stillRunning);
}

void TestSocketPaths::peersOfAnotherUserAreTurnedAway()
{
    // The kernel's word on the peer: this user at both ends of a pair, nobody at the end of a
    // pipe or of no descriptor at all.
    int pair[2];
    int pipeEnds[2];
    QCOMPARE(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    QCOMPARE(::pipe(pipeEnds), 0);
    QCOMPARE(PeerCredentials::peerUid(pair[0]), qint64(::geteuid()));
    QVERIFY(PeerCredentials::isSameUser(pair[1]));
    QCOMPARE(PeerCredentials::peerUid(pipeEnds[0]), qint64(-1));
    QVERIFY(!PeerCredentials::isSameUser(pipeEnds[0]));
    QVERIFY(!PeerCredentials::isSameUser(-1));
    for (int fd : {pair[0], pair[1], pipeEnds[0], pipeEnds[1]}) {
        ::close(fd);
    }

    // A virtual device that another user listens with. Only root can be another user here.
    if (::geteuid() != 0) {
        QSKIP("a listener of another user needs root to make");
    }
    QTemporaryDir shared;
    QVERIFY(QFile::setPermissions(shared.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                     QFile::ReadOther | QFile::WriteOther | QFile::ExeOther));
    const QString path = shared.filePath(QStringLiteral("mouse-sim"));
    const QByteArray bytes = QFile::encodeName(path);
    const pid_t child = ::fork();
    if (child == 0) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, bytes.constData(), sizeof(address.sun_path));
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0 ||
            ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 || ::listen(fd, 4) != 0) {
            ::_exit(1);
        }
        ::sleep(30);
        ::_exit(0);
    }
    QVERIFY(child > 0);
    QTRY_VERIFY(QFile::exists(path));
    VirtualDeviceConnection connection(
        path, [](int, const QByteArray&) {}, [] {});
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("belongs to user 65534 - not ours")));
    const bool connected = connection.ensureConnected();
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    QVERIFY(!connected);
}

QTEST_GUILESS_MAIN(TestSocketPaths)
#include "tst_socketpaths.moc"
