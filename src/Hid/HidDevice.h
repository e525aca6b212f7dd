#pragma once

#include <QMetaType>
#include <QString>

// A vendor-page HID interface. The path is filled by the plug detector only.
struct HidDevice {
    QString path;
    int vid = 0;
    int pid = 0;
};
Q_DECLARE_METATYPE(HidDevice)
