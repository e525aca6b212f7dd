#pragma once

#include "Hid/HidDevice.h"

#include <QList>
#include <QObject>

class HidBackend;

// Plug detection: on each check, compares the vendor-page HID interfaces with the last
// check and reports removals, then insertions. Lives on its own thread.
class UsbChangeWorker : public QObject {
    Q_OBJECT

public:
    explicit UsbChangeWorker(HidBackend* backend, QObject* parent = nullptr);

    static bool devExist(const QList<HidDevice>& list, const HidDevice& device);

signals:
    void signalChange(int vid, int pid, bool enable);

public slots:
    void onCheck();

private:
    HidBackend* mBackend;
    QList<HidDevice> mPrevious;
    bool mFirstScanTaken = false;
};
