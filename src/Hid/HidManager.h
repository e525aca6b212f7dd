#pragma once

#include "Hid/HidBackend.h"
#include "Hid/HidDevice.h"
#include "Utils/Singleton.h"

#include <QList>
#include <QThread>

#include <atomic>
#include <memory>
#include <mutex>

class QTimer;
class UsbChangeWorker;

// The USB receiver link. The thread's run() is the read loop; records go out as 32-byte
// reports with report number 0. A second thread runs the plug detector once a second.
//
// open/close/write/isOpen may be called from the main thread and the device controller's
// thread. The handle is guarded; close() lets the read loop leave before the handle is freed.
class HidManager : public QThread, public Singleton<HidManager> {
    Q_OBJECT

public:
    static constexpr int kReportSize = 32;
    static constexpr int kVendorUsagePage = 0xFF00;
    static constexpr int kPlugPollMs = 1000;
    // How long a read waits before it looks whether the link is being closed.
    static constexpr int kReadSliceMs = 100;

    // Tests and the virtual receiver hand in their own backend; not owned.
    explicit HidManager(HidBackend* backend, QObject* parent = nullptr);
    ~HidManager() override;

    QList<HidDevice> enumerate();
    bool open(int vid, int pid);
    bool isOpen();
    void close();
    bool write(void* msg);

    // Tests: the plug detector, to call its check directly.
    UsbChangeWorker* changeWorker() const { return mWorker; }

signals:
    void signalReceiveMessage(void* msg, int length);
    void signalUSBChange(int vid, int pid, bool enable);

public slots:
    void onUSBChange(int vid, int pid, bool enable);

protected:
    void run() override;

private:
    friend class Singleton<HidManager>;
    HidManager();  // the backend the configuration names

    void closeHandle();

    std::unique_ptr<HidBackend> mOwnedBackend;
    HidBackend* mBackend;

    std::mutex mLifecycleMutex;  // open and close, one at a time
    std::mutex mHandleMutex;     // the handle against write and close
    HidBackend::Handle mHidDevice = nullptr;
    std::atomic<bool> mStopReading{false};
    int mVid = 0;
    int mPid = 0;

    QThread mWorkerThread;
    UsbChangeWorker* mWorker = nullptr;
    QTimer* mPollTimer = nullptr;
};
