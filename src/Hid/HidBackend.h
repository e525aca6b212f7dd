#pragma once

#include <QList>
#include <QString>

// The HID calls the USB link makes, so that the same link runs on hidapi or on the virtual
// receiver. init, enumerate and openPath come from several threads at once (the plug worker,
// the callers of open) and must allow that. Calls on one handle never overlap: hidapi keeps
// per-handle state (its error string) without a lock, so the link makes one call at a time.
class HidBackend {
public:
    struct Interface {
        QString path;
        int vid = 0;
        int pid = 0;
        int usagePage = 0;
    };
    using Handle = void*;

    virtual ~HidBackend() = default;

    // hid_init: false when the library cannot start.
    virtual bool init() = 0;
    // hid_enumerate(0, 0): every HID interface.
    virtual QList<Interface> enumerate() = 0;
    // hid_open_path: null when it fails.
    virtual Handle openPath(const QString& path) = 0;
    // hid_read_timeout: bytes read, 0 on time-out, below 0 on error.
    virtual int readTimeout(Handle handle, unsigned char* buffer, int length, int milliseconds) = 0;
    // hid_write: bytes written or below 0.
    virtual int write(Handle handle, const unsigned char* data, int length) = 0;
    virtual void close(Handle handle) = 0;
    // hid_error: empty when the handle has no error to report.
    virtual QString error(Handle handle) = 0;

    // The folder whose entries come and go with the devices (the hidraw nodes in /dev): the
    // plug watch follows its changes instead of polling. Empty: it polls.
    virtual QString deviceFolder() const { return QString(); }
    // Whether wake() can cut a read on the handle short: the read loop then waits for input as
    // long as it likes instead of reading in short slices, and wakes no more than input does.
    virtual bool canWake(Handle) { return false; }
    // Makes the read in progress on the handle, or the next one, return 0 at once. Any thread,
    // at the same time as a read.
    virtual void wake(Handle) {}
};
