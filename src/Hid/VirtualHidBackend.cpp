#include "Hid/VirtualHidBackend.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace {
// How long a fresh connection waits for the simulator's first interface list.
constexpr int kFirstListWaitMs = 500;
constexpr int kReportSize = 32;
constexpr size_t kMaxQueuedReports = 1024;
}  // namespace

VirtualHidBackend::VirtualHidBackend(const QString& socketPath)
    : mConnection(std::make_unique<VirtualDeviceConnection>(
          socketPath, [this](int channel, const QByteArray& payload) { onFrame(channel, payload); },
          [this] { onDisconnect(); }))
{
}

VirtualHidBackend::~VirtualHidBackend()
{
    // The reading thread calls back into this object: end it first.
    mConnection.reset();
}

QList<HidBackend::Interface> VirtualHidBackend::parseInterfaces(const QByteArray& payload)
{
    QList<Interface> list;
    if (payload.isEmpty()) {
        return list;
    }
    const auto* p = reinterpret_cast<const unsigned char*>(payload.constData());
    const int size = payload.size();
    const int count = p[0];
    int at = 1;
    for (int i = 0; i < count; ++i) {
        if (at + 7 > size) {
            break;
        }
        Interface entry;
        entry.vid = p[at] | (p[at + 1] << 8);
        entry.pid = p[at + 2] | (p[at + 3] << 8);
        entry.usagePage = p[at + 4] | (p[at + 5] << 8);
        const int pathLength = p[at + 6];
        at += 7;
        if (at + pathLength > size) {
            break;
        }
        entry.path = QString::fromUtf8(payload.constData() + at, pathLength);
        at += pathLength;
        list.append(entry);
    }
    return list;
}

void VirtualHidBackend::onFrame(int channel, const QByteArray& payload)
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        switch (channel) {
            case VirtualDeviceConnection::HidInterfaces:
                mInterfaces = parseInterfaces(payload);
                mHaveInterfaces = true;
                break;
            case VirtualDeviceConnection::HidInput:
                if (!mOpenPath.isEmpty() && mInput.size() < kMaxQueuedReports) {
                    // A block of its own: left() would share the reader's buffer, which the
                    // reader refills once the read thread lets go of it, a hand-over ordered
                    // by nothing but a relaxed read of Qt's reference count.
                    mInput.emplace_back(payload.constData(), std::min(payload.size(), kReportSize));
                }
                break;
            case VirtualDeviceConnection::HidGone:
                mGone = true;
                break;
            default:
                return;
        }
    }
    mChanged.notify_all();
}

void VirtualHidBackend::onDisconnect()
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        // No simulator, no receiver.
        mInterfaces.clear();
        mHaveInterfaces = false;
        mGone = !mOpenPath.isEmpty();
    }
    mChanged.notify_all();
}

bool VirtualHidBackend::init()
{
    // Like hid_init, this succeeds without any device; a missing simulator shows as no interfaces.
    mConnection->ensureConnected();
    return true;
}

QList<HidBackend::Interface> VirtualHidBackend::enumerate()
{
    if (!mConnection->ensureConnected()) {
        return {};
    }
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait_for(lock, std::chrono::milliseconds(kFirstListWaitMs), [this] { return mHaveInterfaces; });
    return mInterfaces;
}

HidBackend::Handle VirtualHidBackend::openPath(const QString& path)
{
    {
        std::unique_lock<std::mutex> lock(mMutex);
        bool present = false;
        for (const Interface& entry : mInterfaces) {
            present = present || entry.path == path;
        }
        if (!present) {
            return nullptr;
        }
        mOpenPath = path;
        mGone = false;
        mInput.clear();
    }
    if (!mConnection->send(VirtualDeviceConnection::HidOpen, path.toUtf8())) {
        return nullptr;
    }
    return &mHandleTag;
}

int VirtualHidBackend::readTimeout(Handle, unsigned char* buffer, int length, int milliseconds)
{
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait_for(lock, std::chrono::milliseconds(milliseconds),
                      [this] { return mGone || mWoken || !mInput.empty(); });
    mWoken = false;
    if (mGone) {
        return -1;
    }
    if (mInput.empty()) {
        return 0;
    }
    const QByteArray report = mInput.front();
    mInput.pop_front();
    const int count = std::min(length, static_cast<int>(report.size()));
    std::memcpy(buffer, report.constData(), static_cast<size_t>(count));
    return count;
}

void VirtualHidBackend::wake(Handle)
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mWoken = true;
    }
    mChanged.notify_all();
}

int VirtualHidBackend::write(Handle, const unsigned char* data, int length)
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (mGone || length < 1) {
            return -1;
        }
    }
    // Report number 0 is not sent on the wire; hidraw leaves it out too.
    const int skip = data[0] == 0 ? 1 : 0;
    const QByteArray payload(reinterpret_cast<const char*>(data) + skip, length - skip);
    return mConnection->send(VirtualDeviceConnection::HidOutput, payload) ? length : -1;
}

void VirtualHidBackend::close(Handle)
{
    QString path;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        path = mOpenPath;
        mOpenPath.clear();
        mInput.clear();
        mGone = false;
    }
    if (!path.isEmpty()) {
        mConnection->send(VirtualDeviceConnection::HidClose, path.toUtf8());
    }
}

QString VirtualHidBackend::error(Handle)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mGone ? QStringLiteral("device disconnected") : QString();
}
