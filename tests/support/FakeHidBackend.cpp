#include "FakeHidBackend.h"

#include <QtGlobal>

#include <chrono>
#include <cstring>
#include <cwchar>

FakeHidBackend::~FakeHidBackend()
{
    delete[] mLastError;
}

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

void FakeHidBackend::failNextRead()
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mFailNextRead = true;
    }
    mReportReady.notify_all();
}

QList<QByteArray> FakeHidBackend::writes() const
{
    // A list of its own: a shared one would be grown by the read thread while the test drops
    // its reference, and Qt's sharing count is not ordered for that.
    const std::lock_guard<std::mutex> lock(mMutex);
    QList<QByteArray> copy;
    copy.reserve(mWrites.size());
    for (const QByteArray& write : mWrites) {
        copy.append(write);
    }
    return copy;
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

void FakeHidBackend::enter()
{
    if (mCallsInFlight.fetch_add(1) != 0) {
        qFatal("two calls on one HID handle at the same time");
    }
}

void FakeHidBackend::leave()
{
    mCallsInFlight.fetch_sub(1);
}

void FakeHidBackend::setError(const wchar_t* text)
{
    // Freed and replaced, as the library does with its string.
    delete[] mLastError;
    mLastError = nullptr;
    if (text != nullptr) {
        mLastError = new wchar_t[std::wcslen(text) + 1];
        std::wcscpy(mLastError, text);
    }
}

void FakeHidBackend::wake(Handle)
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mWoken = true;
    }
    mReportReady.notify_all();
}

int FakeHidBackend::readTimeout(Handle, unsigned char* buffer, int length, int milliseconds)
{
    enter();
    setError(nullptr);
    int result = 0;
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mReportReady.wait_for(lock, std::chrono::milliseconds(milliseconds),
                              [this] { return mPulledOut || mFailNextRead || mWoken || !mReports.empty(); });
        mWoken = false;
        if (mPulledOut || mFailNextRead) {
            // The descriptor reported an error: no string is left for it.
            mFailNextRead = false;
            result = -1;
        } else if (!mReports.empty()) {
            const QByteArray report = mReports.front();
            mReports.pop_front();
            result = std::min(length, static_cast<int>(report.size()));
            std::memcpy(buffer, report.constData(), static_cast<size_t>(result));
        }
    }
    leave();
    return result;
}

int FakeHidBackend::write(Handle, const unsigned char* data, int length)
{
    enter();
    setError(nullptr);
    bool gone = false;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        gone = mPulledOut;
        if (!gone) {
            mWrites.append(QByteArray(reinterpret_cast<const char*>(data), length));
        }
    }
    if (gone) {
        setError(L"No such device");
    }
    leave();
    return gone ? -1 : length;
}

void FakeHidBackend::close(Handle)
{
    enter();
    setError(nullptr);
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        --mOpenHandles;
    }
    leave();
}

QString FakeHidBackend::error(Handle)
{
    enter();
    const QString text = mLastError != nullptr ? QString::fromWCharArray(mLastError) : QString();
    leave();
    return text;
}
