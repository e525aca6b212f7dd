#pragma once

#include "Hid/HidBackend.h"

#include <QByteArray>
#include <QList>

#include <condition_variable>
#include <deque>
#include <mutex>

// An in-memory receiver for the USB link: a list of interfaces, reports queued for the read
// loop, every write kept. Safe to drive from the test thread while the link reads.
class FakeHidBackend : public HidBackend {
public:
    void setInterfaces(const QList<Interface>& interfaces);
    void setInitFails(bool fails);
    // The next read returns this report (up to 32 bytes).
    void pushReport(const QByteArray& report);
    // Reads fail and the handle reports an error, as when the receiver is pulled out.
    void pullOut();

    QList<QByteArray> writes() const;  // what the link passed to write, as passed
    QString openedPath() const;
    int openHandles() const;
    bool readInProgressOnClose() const;

    bool init() override;
    QList<Interface> enumerate() override;
    Handle openPath(const QString& path) override;
    int readTimeout(Handle handle, unsigned char* buffer, int length, int milliseconds) override;
    int write(Handle handle, const unsigned char* data, int length) override;
    void close(Handle handle) override;
    QString error(Handle handle) override;

private:
    mutable std::mutex mMutex;
    std::condition_variable mReportReady;
    QList<Interface> mInterfaces;
    std::deque<QByteArray> mReports;
    QList<QByteArray> mWrites;
    QString mOpenedPath;
    bool mInitFails = false;
    bool mPulledOut = false;
    int mOpenHandles = 0;
    int mReadsInProgress = 0;
    bool mClosedDuringRead = false;
    int mHandleTag = 0;  // the address handed out as a handle
};
