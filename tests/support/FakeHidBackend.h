#pragma once

#include "Hid/HidBackend.h"

#include <QByteArray>
#include <QList>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

// An in-memory receiver for the USB link: a list of interfaces, reports queued for the read
// loop, every write kept. The test thread may drive the device side at any time.
//
// The handle behaves as the hidraw library's does: it keeps one error string that each read
// and each write replace (a read or a successful write leaves none), and it has no lock of
// its own. Two calls on the handle at once (a close during a read among them) would corrupt
// the library's state; here they end the test at once.
class FakeHidBackend : public HidBackend {
public:
    ~FakeHidBackend() override;

    void setInterfaces(const QList<Interface>& interfaces);
    void setInitFails(bool fails);
    // The next read returns this report (up to 32 bytes).
    void pushReport(const QByteArray& report);
    // The receiver is pulled out: reads fail without a word (the descriptor hung up), writes
    // fail with an error string.
    void pullOut();
    // The next read fails without an error string while the receiver stays: later writes
    // go through and clear whatever string there was.
    void failNextRead();

    QList<QByteArray> writes() const;  // what the link passed to write, as passed
    QString openedPath() const;
    int openHandles() const;

    bool init() override;
    QList<Interface> enumerate() override;
    Handle openPath(const QString& path) override;
    int readTimeout(Handle handle, unsigned char* buffer, int length, int milliseconds) override;
    int write(Handle handle, const unsigned char* data, int length) override;
    void close(Handle handle) override;
    QString error(Handle handle) override;
    bool canWake(Handle) override { return true; }
    void wake(Handle handle) override;

private:
    // Marks a call on the handle; a second one at the same time is fatal.
    void enter();
    void leave();
    void setError(const wchar_t* text);

    // The device side, guarded as the kernel guards its queues.
    mutable std::mutex mMutex;
    std::condition_variable mReportReady;
    QList<Interface> mInterfaces;
    std::deque<QByteArray> mReports;
    QList<QByteArray> mWrites;
    QString mOpenedPath;
    bool mInitFails = false;
    bool mWoken = false;
    bool mPulledOut = false;
    bool mFailNextRead = false;
    int mOpenHandles = 0;
    int mHandleTag = 0;  // the address handed out as a handle

    // The handle's own state: unguarded, as in the library.
    wchar_t* mLastError = nullptr;
    std::atomic<int> mCallsInFlight{0};
};
