#pragma once

#include <QString>

// The pairing wizard as its presenter sees it. Pages: 0 pairing in progress, 1 model choice,
// 2 the chosen model's instructions, 3 a mouse is already connected, 4 first pairing,
// 5 the saved mouse did not answer.
class BleGuidanceView {
public:
    virtual ~BleGuidanceView() = default;

    // Sizes and places the window for the page, then shows it.
    virtual void setPage(int page) = 0;
    virtual int currentPage() = 0;
    virtual bool isHidden() = 0;
    virtual void toShow() = 0;
    virtual void toClose() = 0;
    // Page 0: the failure text and retry button instead of the progress text.
    virtual void setRegisterFailed(bool failed) = 0;
    virtual void setModelBackground(QString picture) = 0;
    // No Bluetooth settings of the desktop could be started.
    virtual void showSettingsMissing() = 0;
};

// The part of the mouse link the wizard drives.
class BleGuidanceDevice {
public:
    virtual ~BleGuidanceDevice() = default;
    virtual bool isConnected() = 0;
    virtual void scanBleDevice() = 0;
    virtual void cancelScan() = 0;
};
