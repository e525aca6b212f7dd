#include "Hid/HidManager.h"

#include "Hid/UsbChangeWorker.h"
#include "Utils/Logging.h"

#include <QFileSystemWatcher>
#include <QTimer>

#include <cstring>

HidManager::HidManager() : QThread(nullptr)
{
    qFatal("HidManager asked for before the program made it");
}

HidManager::HidManager(std::unique_ptr<HidBackend> backend) : HidManager(backend.get())
{
    mOwnedBackend = std::move(backend);
}

HidManager::HidManager(HidBackend* backend, QObject* parent) : QThread(parent), mBackend(backend)
{
    qRegisterMetaType<HidDevice>();
    // Named, so that the thread start does not look the name up from the class.
    setObjectName(QStringLiteral("HidManager read"));

    mWorker = new UsbChangeWorker(mBackend);
    connect(mWorker, &UsbChangeWorker::signalChange, this, &HidManager::onUSBChange);
    mWorker->moveToThread(&mWorkerThread);
    connect(&mWorkerThread, &QThread::finished, mWorker, &QObject::deleteLater);

    mPollTimer = new QTimer(this);
    mPollTimer->setInterval(kPlugPollMs);
    connect(mPollTimer, &QTimer::timeout, mWorker, &UsbChangeWorker::onCheck);

    mWorkerThread.setObjectName(QStringLiteral("UsbChangeWorker"));
    mWorkerThread.start();
    // A receiver coming or going adds or removes its node: each change of the folder is a
    // check, as a tick of the poll was, and nothing runs in between. The first check still
    // comes at once, to learn what is there.
    const QString folder = mBackend->deviceFolder();
    if (!folder.isEmpty()) {
        mDeviceFolderWatch = new QFileSystemWatcher(this);
        if (mDeviceFolderWatch->addPath(folder)) {
            connect(mDeviceFolderWatch, &QFileSystemWatcher::directoryChanged, mWorker,
                    &UsbChangeWorker::onCheck);
            QMetaObject::invokeMethod(mWorker, "onCheck", Qt::QueuedConnection);
            return;
        }
        delete mDeviceFolderWatch;
        mDeviceFolderWatch = nullptr;
    }
    mPollTimer->start();
}

HidManager::~HidManager()
{
    shutDown();
}

void HidManager::shutDown()
{
    mPollTimer->stop();
    delete mDeviceFolderWatch;
    mDeviceFolderWatch = nullptr;
    mWorkerThread.quit();
    mWorkerThread.wait();
    close();
}

QList<HidDevice> HidManager::enumerate()
{
    QList<HidDevice> list;
    if (!mBackend->init()) {
        return list;
    }
    for (const HidBackend::Interface& entry : mBackend->enumerate()) {
        if (entry.usagePage == kVendorUsagePage) {
            // The path is the plug detector's business.
            list.append(HidDevice{QString(), entry.vid, entry.pid});
        }
    }
    return list;
}

bool HidManager::open(int vid, int pid)
{
    const std::lock_guard<std::mutex> lifecycle(mLifecycleMutex);
    mVid = vid;
    mPid = pid;
    if (!isOpenLocked()) {
        if (!mBackend->init()) {
            return false;
        }
        // The receiver shows several interfaces; records travel on the vendor page one.
        QString path;
        for (const HidBackend::Interface& entry : mBackend->enumerate()) {
            if (entry.vid == vid && entry.pid == pid && entry.usagePage == kVendorUsagePage) {
                path = entry.path;
                break;
            }
        }
        if (path.isEmpty()) {
            return false;
        }
        HidBackend::Handle handle = mBackend->openPath(path);
        if (handle == nullptr) {
            return false;
        }
        const std::lock_guard<std::mutex> lock(mHandleMutex);
        mHidDevice = handle;
        mLinkFailed = false;
        qCInfo(lcDeviceHid) << "opened" << path;
    }
    if (isRunning() && mStopReading && QThread::currentThread() != this) {
        // A loop told to stop from its own thread is still on its way out.
        wait();
    }
    if (!isRunning()) {
        mStopReading = false;
        start();
    }
    return isOpenLocked();
}

bool HidManager::isOpen()
{
    {
        const std::lock_guard<std::mutex> lock(mHandleMutex);
        if (mHidDevice == nullptr) {
            return false;
        }
    }
    if (!mLinkFailed) {
        return true;
    }
    // From the read loop itself the handle is closed by the next caller from outside.
    if (QThread::currentThread() != this) {
        const std::lock_guard<std::mutex> lifecycle(mLifecycleMutex);
        isOpenLocked();
    }
    return false;
}

bool HidManager::isOpenLocked()
{
    {
        const std::lock_guard<std::mutex> lock(mHandleMutex);
        if (mHidDevice == nullptr) {
            return false;
        }
    }
    if (!mLinkFailed) {
        return true;
    }
    // A failed link has no reader any more: closed, so that the next open makes a new one.
    closeLocked();
    return false;
}

void HidManager::close()
{
    const std::lock_guard<std::mutex> lifecycle(mLifecycleMutex);
    closeLocked();
}

void HidManager::closeLocked()
{
    mStopReading = true;
    if (QThread::currentThread() != this) {
        {
            // A wait for input is cut short; else at most one read slice.
            const std::lock_guard<std::mutex> lock(mHandleMutex);
            if (mHidDevice != nullptr) {
                mBackend->wake(mHidDevice);
            }
        }
        wait();
    }
    const std::lock_guard<std::mutex> lock(mHandleMutex);
    mWriteQueue.clear();
    mLinkFailed = false;
    if (mHidDevice != nullptr) {
        mBackend->close(mHidDevice);
        mHidDevice = nullptr;
        qCInfo(lcDeviceHid) << "closed";
    }
}

bool HidManager::write(void* msg)
{
    Report report;
    report[0] = 0;  // report number 0: hidapi leaves it out, so 31 record bytes reach the device
    std::memcpy(report.data() + 1, msg, kReportSize);
    if (QThread::currentThread() == this) {
        // A listener of the read loop: the loop is between two calls on the handle.
        HidBackend::Handle handle = nullptr;
        {
            const std::lock_guard<std::mutex> lock(mHandleMutex);
            handle = mHidDevice;
        }
        if (handle == nullptr || mLinkFailed || mStopReading) {
            return false;
        }
        return writeReport(handle, report);
    }
    const std::lock_guard<std::mutex> lock(mHandleMutex);
    if (mHidDevice == nullptr || mLinkFailed || mWriteQueue.size() >= kMaxQueuedWrites) {
        return false;
    }
    mWriteQueue.push_back(report);
    // The loop may be waiting for input with no time limit: it sends the queue now.
    mBackend->wake(mHidDevice);
    return true;
}

bool HidManager::writeReport(HidBackend::Handle handle, const Report& report)
{
    const int written = mBackend->write(handle, report.data(), kReportSize);
    if (written < 0) {
        linkFailed("write", mBackend->error(handle));
        return false;
    }
    return written > 0;
}

void HidManager::sendQueuedWrites(HidBackend::Handle handle)
{
    std::vector<Report> writes;
    {
        const std::lock_guard<std::mutex> lock(mHandleMutex);
        writes.swap(mWriteQueue);
    }
    for (const Report& report : writes) {
        if (!writeReport(handle, report)) {
            break;
        }
    }
}

void HidManager::linkFailed(const char* what, const QString& error)
{
    // The library's error string is read at once: the next call on the handle replaces it.
    qCWarning(lcDeviceHid) << what
                           << "failed:" << (error.isEmpty() ? QStringLiteral("no reason given") : error)
                           << "- the link counts as closed";
    mLinkFailed = true;
}

void HidManager::onUSBChange(int vid, int pid, bool enable)
{
    emit signalUSBChange(vid, pid, enable);
}

void HidManager::run()
{
    HidBackend::Handle handle = nullptr;
    {
        const std::lock_guard<std::mutex> lock(mHandleMutex);
        handle = mHidDevice;
    }
    // close() frees the handle only after this loop has left, so it stays valid here.
    unsigned char buffer[kReportSize];
    const int slice = handle != nullptr && mBackend->canWake(handle) ? kWakeableReadSliceMs : kReadSliceMs;
    while (handle != nullptr && !mStopReading && !mLinkFailed) {
        sendQueuedWrites(handle);
        if (mLinkFailed) {
            break;
        }
        std::memset(buffer, 0, sizeof(buffer));
        const int count = mBackend->readTimeout(handle, buffer, kReportSize, slice);
        if (count > 0) {
            // Listeners copy the record before this returns: the buffer is reused.
            emit signalReceiveMessage(buffer, kReportSize);
        } else if (count < 0) {
            // Pulled out, or a descriptor in error: nobody reads any more.
            linkFailed("read", mBackend->error(handle));
        }
    }
    // Whoever frees the handle next takes this lock after the loop's last call on it.
    const std::lock_guard<std::mutex> lock(mHandleMutex);
}
