#include "Hid/HidApiBackend.h"

#include "Utils/Logging.h"

#include <hidapi/hidapi.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <mutex>

namespace {

// What a handle stands for: hidapi's device, and the descriptors the read loop waits on.
struct Device {
    hid_device* hid = nullptr;
    HidReportWait wait;  // watch: the same hidraw node, read only to learn that a report came
};

Device* handleOf(HidBackend::Handle handle)
{
    return static_cast<Device*>(handle);
}

hid_device* device(HidBackend::Handle handle)
{
    return handleOf(handle)->hid;
}

// hid_init and hid_enumerate keep library-wide state; the plug worker and the callers'
// threads must not run them at the same time.
std::mutex& libraryMutex()
{
    static std::mutex mutex;
    return mutex;
}

}  // namespace

HidApiBackend::~HidApiBackend() = default;

bool HidApiBackend::init()
{
    const std::lock_guard<std::mutex> lock(libraryMutex());
    if (hid_init() != 0) {
        qCWarning(lcDeviceHid) << "hid_init failed";
        return false;
    }
    return true;
}

QList<HidBackend::Interface> HidApiBackend::enumerate()
{
    const std::lock_guard<std::mutex> lock(libraryMutex());
    QList<Interface> list;
    hid_device_info* all = hid_enumerate(0, 0);
    for (hid_device_info* info = all; info != nullptr; info = info->next) {
        Interface entry;
        entry.path = QString::fromLocal8Bit(info->path);
        entry.vid = info->vendor_id;
        entry.pid = info->product_id;
        entry.usagePage = info->usage_page;
        list.append(entry);
    }
    hid_free_enumeration(all);
    return list;
}

HidBackend::Handle HidApiBackend::openPath(const QString& path)
{
    const std::lock_guard<std::mutex> lock(libraryMutex());
    hid_device* hid = hid_open_path(path.toLocal8Bit().constData());
    if (hid == nullptr) {
        // Most often the permission on /dev/hidraw*: see packaging/ for the udev rule.
        qCWarning(lcDeviceHid) << "cannot open" << path << QString::fromWCharArray(hid_error(nullptr));
        return nullptr;
    }
    auto* handle = new Device;
    handle->hid = hid;
    HidReportWait& wait = handle->wait;
    wait.watch = ::open(path.toLocal8Bit().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    wait.wakeup = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (wait.watch < 0 || wait.wakeup < 0) {
        // Reads in short slices then, as hidapi alone allows.
        qCInfo(lcDeviceHid) << "cannot wait on" << path << "- reading in slices";
        if (wait.watch >= 0) {
            ::close(wait.watch);
        }
        wait.watch = -1;
    }
    return handle;
}

int HidReportWait::read(const Take& take, unsigned char* buffer, int length, int milliseconds)
{
    if (mayHoldMore) {
        const int result = take(buffer, length);
        mayHoldMore = result > 0;
        if (result != 0) {
            return result;
        }
    }
    pollfd fds[2] = {{watch, POLLIN, 0}, {wakeup, POLLIN, 0}};
    if (::poll(fds, 2, milliseconds) < 0) {
        return errno == EINTR ? 0 : take(buffer, length);
    }
    if ((fds[1].revents & POLLIN) != 0) {
        std::uint64_t count = 0;
        const ssize_t taken = ::read(wakeup, &count, sizeof(count));
        Q_UNUSED(taken)
    }
    if ((fds[0].revents & POLLIN) != 0) {
        // The same reports wait on hidapi's descriptor: the copies here only said they came.
        unsigned char copy[256];
        while (::read(watch, copy, sizeof(copy)) > 0) {
        }
        const int result = take(buffer, length);
        mayHoldMore = result > 0;
        return result;
    }
    if ((fds[0].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) {
        // Pulled out: hidapi sees it on its own descriptor; never wait on a hung-up one again.
        const int result = take(buffer, length);
        return result != 0 ? result : -1;
    }
    return 0;
}

int HidApiBackend::readTimeout(Handle handle, unsigned char* buffer, int length, int milliseconds)
{
    Device* d = handleOf(handle);
    if (d->wait.watch < 0) {
        return hid_read_timeout(d->hid, buffer, static_cast<size_t>(length), milliseconds);
    }
    return d->wait.read([d](unsigned char* out,
                            int size) { return hid_read_timeout(d->hid, out, static_cast<size_t>(size), 0); },
                        buffer, length, milliseconds);
}

int HidApiBackend::write(Handle handle, const unsigned char* data, int length)
{
    return hid_write(device(handle), data, static_cast<size_t>(length));
}

void HidApiBackend::close(Handle handle)
{
    Device* d = handleOf(handle);
    hid_close(d->hid);
    for (int fd : {d->wait.watch, d->wait.wakeup}) {
        if (fd >= 0) {
            ::close(fd);
        }
    }
    delete d;
}

QString HidApiBackend::deviceFolder() const
{
    return QStringLiteral("/dev");
}

bool HidApiBackend::canWake(Handle handle)
{
    return handleOf(handle)->wait.watch >= 0;
}

void HidApiBackend::wake(Handle handle)
{
    const std::uint64_t one = 1;
    const ssize_t written = ::write(handleOf(handle)->wait.wakeup, &one, sizeof(one));
    Q_UNUSED(written)
}

QString HidApiBackend::error(Handle handle)
{
    const wchar_t* text = hid_error(device(handle));
    if (text == nullptr) {
        return QString();
    }
    const QString message = QString::fromWCharArray(text);
    // hidapi answers "Success" when there is nothing to report.
    return message == QLatin1String("Success") ? QString() : message;
}
