#pragma once

#include "Hid/HidBackend.h"
#include "Hid/HidDevice.h"
#include "Utils/Singleton.h"

#include <QList>
#include <QThread>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

class QFileSystemWatcher;
class QTimer;
class UsbChangeWorker;

// The USB receiver link. The thread's run() is the read loop; records go out as 32-byte
// reports with report number 0. A second thread runs the plug detector once a second.
//
// open/close/write/isOpen may be called from the main thread and the device controller's
// thread. The library keeps one error string per handle that reads and writes replace and
// free, so no two calls on the handle may overlap: while the read loop runs it alone calls
// the library on the handle, and writes from other threads wait in a queue that it sends
// between read slices. A read or write that fails ends the link: it then counts as closed,
// whatever the library's error string says afterwards. close() lets the read loop leave
// before the handle is freed.
class HidManager : public QThread, public Singleton<HidManager> {
    Q_OBJECT

public:
    static constexpr int kReportSize = 32;
    static constexpr int kVendorUsagePage = 0xFF00;
    static constexpr int kPlugPollMs = 1000;
    // How long a read waits before it sends queued writes and looks whether the link is
    // being closed: the longest a write waits.
    static constexpr int kReadSliceMs = 20;
    // With a backend whose reads wake() cuts short: the longest wait for input.
    static constexpr int kWakeableReadSliceMs = 10000;
    // Writes waiting for the read loop; more in one slice than a device takes are lost, as a
    // write on a closed link is.
    static constexpr size_t kMaxQueuedWrites = 64;

    // Tests and the virtual receiver hand in their own backend; not owned.
    explicit HidManager(HidBackend* backend, QObject* parent = nullptr);
    // The program's: the backend its configuration chose, owned.
    explicit HidManager(std::unique_ptr<HidBackend> backend);
    ~HidManager() override;

    QList<HidDevice> enumerate();
    bool open(int vid, int pid);
    bool isOpen();
    void close();
    bool write(void* msg);
    // At quit: the link closed, the read loop and the plug detector's thread joined. Safe to
    // call twice; the destructor calls it.
    void shutDown();

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
    HidManager();  // never: the program makes it with its backend first

    using Report = std::array<unsigned char, kReportSize + 1>;

    bool isOpenLocked();
    void closeLocked();
    bool writeReport(HidBackend::Handle handle, const Report& report);
    void sendQueuedWrites(HidBackend::Handle handle);
    void linkFailed(const char* what, const QString& error);

    std::unique_ptr<HidBackend> mOwnedBackend;
    HidBackend* mBackend;

    std::mutex mLifecycleMutex;  // open and close, one at a time; taken before mHandleMutex
    std::mutex mHandleMutex;     // the handle and the write queue
    HidBackend::Handle mHidDevice = nullptr;
    std::vector<Report> mWriteQueue;
    std::atomic<bool> mLinkFailed{false};
    std::atomic<bool> mStopReading{false};
    int mVid = 0;
    int mPid = 0;

    QThread mWorkerThread;
    UsbChangeWorker* mWorker = nullptr;
    QTimer* mPollTimer = nullptr;
    // Where the backend's device nodes come and go; null when the plug watch polls instead.
    QFileSystemWatcher* mDeviceFolderWatch = nullptr;
};
