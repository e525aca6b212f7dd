#include "Hid/VirtualDeviceConnection.h"

#include "Utils/Logging.h"
#include "Utils/PeerCredentials.h"
#include "Utils/SocketPath.h"

#include <QFile>

#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace {

bool readFully(int fd, char* buffer, size_t length)
{
    size_t done = 0;
    while (done < length) {
        const ssize_t n = ::recv(fd, buffer + done, length - done, 0);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

bool writeFully(int fd, const char* data, size_t length)
{
    size_t done = 0;
    while (done < length) {
        const ssize_t n = ::send(fd, data + done, length - done, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

VirtualDeviceConnection::VirtualDeviceConnection(const QString& socketPath, FrameHandler onFrame,
                                                 DisconnectHandler onDisconnect)
    : mSocketPath(socketPath), mOnFrame(std::move(onFrame)), mOnDisconnect(std::move(onDisconnect))
{
}

VirtualDeviceConnection::~VirtualDeviceConnection()
{
    std::thread reader;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (mFd >= 0) {
            ::shutdown(mFd, SHUT_RDWR);
        }
        reader = std::move(mReader);
    }
    if (reader.joinable()) {
        reader.join();
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mFd >= 0) {
        ::close(mFd);
        mFd = -1;
    }
}

QByteArray VirtualDeviceConnection::frame(int channel, const QByteArray& payload)
{
    QByteArray bytes;
    bytes.reserve(3 + payload.size());
    bytes.append(static_cast<char>(channel));
    bytes.append(static_cast<char>(payload.size() & 0xFF));
    bytes.append(static_cast<char>((payload.size() >> 8) & 0xFF));
    bytes.append(payload);
    return bytes;
}

bool VirtualDeviceConnection::ensureConnected()
{
    std::thread finished;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (mFd >= 0) {
            return true;
        }
        // A reader left over from a lost connection has ended or is ending.
        finished = std::move(mReader);
    }
    if (finished.joinable()) {
        finished.join();
    }

    const QByteArray path = QFile::encodeName(mSocketPath);
    sockaddr_un address{};
    const QString tooLong = SocketPath::tooLong(mSocketPath);
    if (path.isEmpty() || !tooLong.isEmpty()) {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!mFailureLogged) {
            qCWarning(lcDevice).noquote() << "cannot reach the virtual device:"
                                          << (path.isEmpty() ? QStringLiteral("no socket path") : tooLong);
            mFailureLogged = true;
        }
        return false;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return false;
    }
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(fd);
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!mFailureLogged) {
            qCWarning(lcDevice) << "no virtual device at" << mSocketPath << ":" << std::strerror(errno);
            mFailureLogged = true;
        }
        return false;
    }
    // The mouse is played by a program of the user; whatever another user listens with is not
    // given the user's keys and voice.
    if (!PeerCredentials::isSameUser(fd)) {
        const qint64 uid = PeerCredentials::peerUid(fd);
        ::close(fd);
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!mFailureLogged) {
            qCWarning(lcDevice) << "the virtual device at" << mSocketPath << "belongs to user" << uid
                                << "- not ours, closed";
            mFailureLogged = true;
        }
        return false;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mFd >= 0) {  // another thread was quicker
        ::close(fd);
        return true;
    }
    mFd = fd;
    mFailureLogged = false;
    mReader = std::thread(&VirtualDeviceConnection::readLoop, this, fd);
    qCInfo(lcDevice) << "connected to the virtual device at" << mSocketPath;
    return true;
}

bool VirtualDeviceConnection::send(int channel, const QByteArray& payload)
{
    if (payload.size() > 0xFFFF || !ensureConnected()) {
        return false;
    }
    const QByteArray bytes = frame(channel, payload);
    // Held across the write, so that the descriptor is not closed under it.
    const std::lock_guard<std::mutex> writing(mWriteMutex);
    int fd = -1;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        fd = mFd;
    }
    return fd >= 0 && writeFully(fd, bytes.constData(), static_cast<size_t>(bytes.size()));
}

void VirtualDeviceConnection::readLoop(int fd)
{
    // Else it bears the name of the thread that connected first (the plug detector's).
    pthread_setname_np(pthread_self(), "VirtualDevice");
    QByteArray payload;
    for (;;) {
        unsigned char header[3];
        if (!readFully(fd, reinterpret_cast<char*>(header), sizeof(header))) {
            break;
        }
        const int length = header[1] | (header[2] << 8);
        payload.resize(length);
        if (length > 0 && !readFully(fd, payload.data(), static_cast<size_t>(length))) {
            break;
        }
        mOnFrame(header[0], payload);
    }
    dropConnection();
    mOnDisconnect();
}

void VirtualDeviceConnection::dropConnection()
{
    const std::lock_guard<std::mutex> writing(mWriteMutex);
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mFd >= 0) {
        ::close(mFd);
        mFd = -1;
        qCWarning(lcDevice) << "the virtual device went away";
    }
}
