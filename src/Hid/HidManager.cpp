#include "Hid/HidManager.h"

#include "Hid/HidApiBackend.h"
#include "Hid/UsbChangeWorker.h"
#include "Hid/VirtualHidBackend.h"
#include "Utils/AppConfig.h"
#include "Utils/Logging.h"

#include <QTimer>

#include <cstring>

HidManager::HidManager() : HidManager(nullptr) {}

HidManager::HidManager(HidBackend* backend, QObject* parent) : QThread(parent), mBackend(backend)
{
    if (mBackend == nullptr) {
        const QString virtualSocket = AppConfig::getInstance()->deviceVirtualSocket();
        if (virtualSocket.isEmpty()) {
            mOwnedBackend = std::make_unique<HidApiBackend>();
        } else {
            qCInfo(lcDeviceHid) << "using the virtual receiver at" << virtualSocket;
            mOwnedBackend = std::make_unique<VirtualHidBackend>(virtualSocket);
        }
        mBackend = mOwnedBackend.get();
    }
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
    mPollTimer->start();
}

HidManager::~HidManager()
{
    mPollTimer->stop();
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
    {
        const std::lock_guard<std::mutex> lifecycle(mLifecycleMutex);
        mVid = vid;
        mPid = pid;
        if (!isOpen()) {
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
            qCInfo(lcDeviceHid) << "opened" << path;
        }
        if (isOpen() && !isRunning()) {
            mStopReading = false;
            start();
        }
    }
    return isOpen();
}

bool HidManager::isOpen()
{
    HidBackend::Handle handle = nullptr;
    {
        const std::lock_guard<std::mutex> lock(mHandleMutex);
        handle = mHidDevice;
    }
    if (handle == nullptr) {
        return false;
    }
    const QString error = mBackend->error(handle);
    if (error.isEmpty()) {
        return true;
    }
    qCWarning(lcDeviceHid) << "device error:" << error << "- closing the link";
    // From the read loop itself the loop's exit does the closing.
    if (QThread::currentThread() != this) {
        close();
    }
    return false;
}

void HidManager::close()
{
    const std::lock_guard<std::mutex> lifecycle(mLifecycleMutex);
    mStopReading = true;
    if (QThread::currentThread() != this) {
        // At most one read slice: the loop looks at the flag between reads.
        wait();
    }
    closeHandle();
}

void HidManager::closeHandle()
{
    const std::lock_guard<std::mutex> lock(mHandleMutex);
    if (mHidDevice != nullptr) {
        mBackend->close(mHidDevice);
        mHidDevice = nullptr;
        qCInfo(lcDeviceHid) << "closed";
    }
}

bool HidManager::write(void* msg)
{
    const std::lock_guard<std::mutex> lock(mHandleMutex);
    if (mHidDevice == nullptr || !mBackend->error(mHidDevice).isEmpty()) {
        return false;
    }
    unsigned char buffer[kReportSize + 1];
    buffer[0] = 0;  // report number 0: hidapi leaves it out, so 31 record bytes reach the device
    std::memcpy(buffer + 1, msg, kReportSize);
    return mBackend->write(mHidDevice, buffer, kReportSize) > 0;
}

void HidManager::onUSBChange(int vid, int pid, bool enable)
{
    emit signalUSBChange(vid, pid, enable);
}

void HidManager::run()
{
    unsigned char buffer[kReportSize];
    while (!mStopReading) {
        HidBackend::Handle handle = nullptr;
        {
            const std::lock_guard<std::mutex> lock(mHandleMutex);
            handle = mHidDevice;
        }
        // close() frees the handle only after this loop has left, so it stays valid here.
        if (handle == nullptr || !mBackend->error(handle).isEmpty()) {
            break;
        }
        std::memset(buffer, 0, sizeof(buffer));
        const int count = mBackend->readTimeout(handle, buffer, kReportSize, kReadSliceMs);
        if (count > 0) {
            // Listeners copy the record before this returns: the buffer is reused.
            emit signalReceiveMessage(buffer, kReportSize);
        } else if (count < 0) {
            // Pulled out: the plug detector reports it and the presenter closes the link.
            qCWarning(lcDeviceHid) << "read failed; leaving the read loop";
            break;
        }
    }
}
