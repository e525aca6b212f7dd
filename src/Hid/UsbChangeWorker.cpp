#include "Hid/UsbChangeWorker.h"

#include "Hid/HidBackend.h"
#include "Hid/HidManager.h"

UsbChangeWorker::UsbChangeWorker(HidBackend* backend, QObject* parent) : QObject(parent), mBackend(backend) {}

bool UsbChangeWorker::devExist(const QList<HidDevice>& list, const HidDevice& device)
{
    for (const HidDevice& entry : list) {
        if (entry.path == device.path && entry.vid == device.vid && entry.pid == device.pid) {
            return true;
        }
    }
    return false;
}

void UsbChangeWorker::onCheck()
{
    if (!mBackend->init()) {
        return;
    }
    QList<HidDevice> current;
    for (const HidBackend::Interface& entry : mBackend->enumerate()) {
        if (entry.usagePage == HidManager::kVendorUsagePage) {
            current.append(HidDevice{entry.path, entry.vid, entry.pid});
        }
    }
    // What is there at start is found by the first open attempt, not announced.
    if (!mFirstScanTaken) {
        mPrevious = current;
        mFirstScanTaken = true;
        return;
    }
    for (const HidDevice& device : mPrevious) {
        if (!devExist(current, device)) {
            emit signalChange(device.vid, device.pid, false);
        }
    }
    for (const HidDevice& device : current) {
        if (!devExist(mPrevious, device)) {
            emit signalChange(device.vid, device.pid, true);
        }
    }
    mPrevious = current;
}
