#include "Widget/SingleApplication.h"

#include "Utils/Logging.h"
#include "Utils/PeerCredentials.h"
#include "Utils/SocketPath.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QTextStream>
#include <QThread>
#include <QWidget>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {
constexpr int kConnectTimeoutMs = 500;
constexpr int kWriteTimeoutMs = 30000;
constexpr int kReadTimeoutMs = 1000;
// How long a start that lost the lock waits for the winner to listen.
constexpr int kStartingInstanceMs = 10000;
constexpr int kRetryMs = 50;
}  // namespace

SingleApplication::SingleApplication(int& argc, char** argv)
    : QApplication(argc, argv), mServerName(QStringLiteral("Zorvane"))
{
    initLocalConnection();
}

bool SingleApplication::isRunning()
{
    return mIsRunning;
}

QString SingleApplication::socketPath()
{
    QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (dir.isEmpty()) {
        // No runtime folder: a per-user name in the shared temporary folder.
        return QDir::tempPath() + QStringLiteral("/Zorvane-%1").arg(getuid());
    }
    return dir + QStringLiteral("/Zorvane");
}

void SingleApplication::initLocalConnection()
{
    mIsRunning = false;
    const QString tooLong = SocketPath::tooLong(socketPath());
    if (!tooLong.isEmpty()) {
        // Neither side could use the socket: say why instead of failing on each start.
        qCWarning(lcApp).noquote() << tooLong << "- running without the single-instance guard";
        return;
    }
    const QByteArray lockPath = (socketPath() + QStringLiteral(".lock")).toLocal8Bit();
    mLock = ::open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (mLock >= 0 && ::flock(mLock, LOCK_EX | LOCK_NB) != 0) {
        // Another instance holds it, perhaps started this very moment and not listening yet.
        ::close(mLock);
        mLock = -1;
        mIsRunning = true;
        if (!pokeRunningInstance(kStartingInstanceMs)) {
            qCWarning(lcApp) << "another instance holds" << lockPath << "but does not answer";
        }
        return;
    }
    if (mLock < 0) {
        // Only where there is no runtime folder and another user left a lock in the shared
        // folder: the socket alone decides, as well as it can.
        qCInfo(lcApp) << "cannot lock" << lockPath << "- deciding by the socket";
        if (pokeRunningInstance(kConnectTimeoutMs)) {
            mIsRunning = true;
            return;
        }
    }
    newLocalServer();
}

bool SingleApplication::pokeRunningInstance(int waitMs)
{
    QElapsedTimer clock;
    clock.start();
    QLocalSocket socket;
    do {
        socket.connectToServer(socketPath(), QIODevice::ReadWrite);
        if (socket.waitForConnected(kConnectTimeoutMs)) {
            break;
        }
        QThread::msleep(kRetryMs);
    } while (clock.elapsed() < waitMs);
    if (socket.state() != QLocalSocket::ConnectedState) {
        return false;
    }
    if (!PeerCredentials::isSameUser(socket.socketDescriptor())) {
        // Another user's socket in the shared folder is no instance of ours: told nothing.
        qCWarning(lcApp) << "the instance socket" << socketPath() << "belongs to user"
                         << PeerCredentials::peerUid(socket.socketDescriptor()) << "- not ours";
        socket.abort();
        return false;
    }
    QTextStream stream(&socket);
    const QStringList args = QCoreApplication::arguments();
    stream << (args.size() < 2 ? QString() : args.last());
    stream.flush();
    socket.waitForBytesWritten(kWriteTimeoutMs);
    qCInfo(lcApp) << "another instance is running; asked it to come to the front";
    return true;
}

void SingleApplication::newLocalServer()
{
    mLocalServer = new QLocalServer(this);
    mLocalServer->setSocketOptions(QLocalServer::UserAccessOption);
    connect(mLocalServer, &QLocalServer::newConnection, this, &SingleApplication::newLocalConnection);
    const QString path = socketPath();
    if (mLocalServer->listen(path)) {
        return;
    }
    if (mLocalServer->serverError() == QAbstractSocket::AddressInUseError) {
        // Left behind by a crash: we hold the lock (or nobody answered), so the file is stale.
        qCInfo(lcApp) << "removing the stale instance socket" << path;
        QLocalServer::removeServer(path);
        if (mLocalServer->listen(path)) {
            return;
        }
    }
    qCWarning(lcApp) << "cannot listen on" << path << ":" << mLocalServer->errorString()
                     << "- running without the single-instance guard";
}

void SingleApplication::newLocalConnection()
{
    QLocalSocket* socket = mLocalServer->nextPendingConnection();
    if (socket == nullptr) {
        return;
    }
    // The socket is the user's own (owner-only file in the user's runtime folder); a peer of
    // another user is turned away all the same.
    if (!PeerCredentials::isSameUser(socket->socketDescriptor())) {
        qCWarning(lcApp) << "a connection from user" << PeerCredentials::peerUid(socket->socketDescriptor())
                         << "to the instance socket - closed";
        delete socket;
        return;
    }
    socket->waitForReadyRead(kReadTimeoutMs);
    QTextStream stream(socket);
    delete socket;
    qCInfo(lcApp) << "a second start asked for the main window";
    bringToFront(mainWindow);
}

void SingleApplication::bringToFront(QWidget* window)
{
    if (window == nullptr) {
        return;
    }
    window->raise();
    window->activateWindow();
    window->setWindowState((window->windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    window->show();
}
