#include "ProcessLines.h"
#include "Widget/SingleApplication.h"

#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// This process is the first instance; the real program, started beside it, is the second.
class TestSingleApplication : public QObject {
    Q_OBJECT

public:
    explicit TestSingleApplication(SingleApplication* app) : mApp(app) {}

private slots:
    void staleSocketWasReplacedAndIsPrivate();
    void aSecondStartBringsTheWindowBack();
    void secondStartBeforeTheWindowExistsDoesNothing();
    void twoStartsAtOnceLeaveOne();

private:
    int startSecondInstance();
    // Stands in for the console: the guard only raises whatever window it was given.
    QWidget* mainWindow()
    {
        static QWidget window;
        return &window;
    }
    SingleApplication* mApp;
};

int TestSingleApplication::startSecondInstance()
{
    QProcess second;
    second.setProcessChannelMode(QProcess::ForwardedChannels);
    return runServingEvents(second, QStringLiteral(ZORVANE_BINARY), QStringList());
}

void TestSingleApplication::staleSocketWasReplacedAndIsPrivate()
{
    QVERIFY(!mApp->isRunning());
    const QFileInfo info(SingleApplication::socketPath());
    QVERIFY(info.exists());
    QCOMPARE(info.ownerId(), uint(getuid()));
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    QVERIFY2((info.permissions() & others) == 0, "the instance socket is open to other users");

    QLocalSocket probe;
    probe.connectToServer(SingleApplication::socketPath());
    QVERIFY(probe.waitForConnected(1000));
}

void TestSingleApplication::aSecondStartBringsTheWindowBack()
{
    QWidget* window = mainWindow();
    mApp->mainWindow = window;
    window->show();
    window->hide();
    // Still the first instance: the next start finds us.
    QCOMPARE(startSecondInstance(), 0);
    QTRY_VERIFY(window->isVisible());
    window->showMinimized();
    QTRY_VERIFY(window->windowState() & Qt::WindowMinimized);
    QCOMPARE(startSecondInstance(), 0);
    QTRY_VERIFY(!(window->windowState() & Qt::WindowMinimized));
}

void TestSingleApplication::secondStartBeforeTheWindowExistsDoesNothing()
{
    QWidget* window = mainWindow();
    window->hide();
    mApp->mainWindow = nullptr;
    QCOMPARE(startSecondInstance(), 0);
    QTest::qWait(100);
    QVERIFY(!window->isVisible());
}

void TestSingleApplication::twoStartsAtOnceLeaveOne()
{
    // Autostart and a menu click at the same moment, in a session of their own (this process
    // is the instance of ours): one runs on, the other leaves with 0.
    for (int round = 0; round < 4; ++round) {
        QTemporaryDir runtime(QDir::tempPath() + QStringLiteral("/pair-XXXXXX"));
        QVERIFY(runtime.isValid());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
        QProcess starts[2];
        for (QProcess& start : starts) {
            start.setProcessEnvironment(environment);
            start.setProcessChannelMode(QProcess::ForwardedChannels);
        }
        for (QProcess& start : starts) {
            start.start(QStringLiteral(ZORVANE_BINARY), QStringList());
        }
        QTRY_VERIFY_WITH_TIMEOUT(
            starts[0].state() == QProcess::NotRunning || starts[1].state() == QProcess::NotRunning, 20000);
        QProcess& loser = starts[0].state() == QProcess::NotRunning ? starts[0] : starts[1];
        QProcess& winner = &loser == &starts[0] ? starts[1] : starts[0];
        QCOMPARE(loser.exitStatus(), QProcess::NormalExit);
        QCOMPARE(loser.exitCode(), 0);
        QVERIFY2(winner.state() == QProcess::Running, qPrintable(QString::number(round)));
        winner.terminate();
        QVERIFY(winner.waitForFinished(20000));
    }
}

namespace {

// What a crash leaves: a socket file nobody listens on.
bool leaveStaleSocket(const QString& path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd < 0) {
        return false;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray bytes = path.toLocal8Bit();
    qstrncpy(address.sun_path, bytes.constData(), sizeof(address.sun_path));
    const bool bound = ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    ::close(fd);
    return bound && QFileInfo::exists(path);
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("ZorvaneV2"));
    if (!leaveStaleSocket(SingleApplication::socketPath())) {
        qCritical("could not leave a stale socket at %s", qPrintable(SingleApplication::socketPath()));
        return 1;
    }
    SingleApplication app(argc, argv);
    app.setQuitOnLastWindowClosed(false);
    TestSingleApplication test(&app);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_singleapplication.moc"
