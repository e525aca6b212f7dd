#include "FakeHidBackend.h"

#include <chrono>
#include <cstring>

void FakeHidBackend::setInterfaces(const QList<Interface>& interfaces)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mInterfaces = interfaces;
}

void FakeHidBackend::setInitFails(bool fails)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mInitFails = fails;
}

void FakeHidBackend::pushReport(const QByteArray& report)
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mReports.push_back(report);
    }
    mReportReady.notify_all();
}

void FakeHidBackend::pullOut()
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mPulledOut = true;
        mInterfaces.clear();
    }
    mReportReady.notify_all();
}

QList<QByteArray> FakeHidBackend::writes() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mWrites;
}

QString FakeHidBackend::openedPath() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mOpenedPath;
}

int FakeHidBackend::openHandles() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mOpenHandles;
}

bool FakeHidBackend::readInProgressOnClose() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mClosedDuringRead;
}

bool FakeHidBackend::init()
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return !mInitFails;
}

QList<HidBackend::Interface> FakeHidBackend::enumerate()
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mInterfaces;
}

HidBackend::Handle FakeHidBackend::openPath(const QString& path)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    for (const Interface& entry : mInterfaces) {
        if (entry.path == path) {
            mOpenedPath = path;
            mPulledOut = false;
            ++mOpenHandles;
            return &mHandleTag;
        }
    }
    return nullptr;
}

int FakeHidBackend::readTimeout(Handle, unsigned char* buffer, int length, int milliseconds)
{
    std::unique_lock<std::mutex> lock(mMutex);
    ++mReadsInProgress;
    mReportReady.wait_for(lock, std::chrono::milliseconds(milliseconds),
                          [this] { return mPulledOut || !mReports.empty(); });
    int result = 0;
    if (mPulledOut) {
        result = -1;
    } else if (!mReports.empty()) {
        const QByteArray report = mReports.front();
        mReports.pop_front();
        result = std::min(length, static_cast<int>(report.size()));
        std::memcpy(buffer, report.constData(), static_cast<size_t>(result));
    }
    --mReadsInProgress;
    return result;
}

int FakeHidBackend::write(Handle, const unsigned char* data, int length)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mPulledOut) {
        return -1;
    }
    mWrites.append(QByteArray(reinterpret_cast<const char*>(data), length));
    return length;
}

void FakeHidBackend::close(Handle)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mReadsInProgress > 0) {
        mClosedDuringRead = true;
    }
    --mOpenHandles;
}

QString FakeHidBackend::error(Handle)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mPulledOut ? QStringLiteral("device disconnected") : QString();
}
