#include "Hid/HidApiBackend.h"

#include "Utils/Logging.h"

#include <hidapi/hidapi.h>

#include <mutex>

namespace {

hid_device* device(HidBackend::Handle handle)
{
    return static_cast<hid_device*>(handle);
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
    hid_device* handle = hid_open_path(path.toLocal8Bit().constData());
    if (handle == nullptr) {
        // Most often the permission on /dev/hidraw*: see packaging/ for the udev rule.
        qCWarning(lcDeviceHid) << "cannot open" << path << QString::fromWCharArray(hid_error(nullptr));
    }
    return handle;
}

int HidApiBackend::readTimeout(Handle handle, unsigned char* buffer, int length, int milliseconds)
{
    return hid_read_timeout(device(handle), buffer, static_cast<size_t>(length), milliseconds);
}

int HidApiBackend::write(Handle handle, const unsigned char* data, int length)
{
    return hid_write(device(handle), data, static_cast<size_t>(length));
}

void HidApiBackend::close(Handle handle)
{
    hid_close(device(handle));
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
