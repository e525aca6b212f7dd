#pragma once

// The small windows the console presenter opens besides the console itself: the sliding
// strip on plugging and pulling the receiver, and the hint that the mouse has connected over
// Bluetooth. The widgets implement it; tests record. Main thread only.
class ConsoleNotices {
public:
    virtual ~ConsoleNotices() = default;

    // A new strip each call: "设备插入" or "设备拔出".
    virtual void showDeviceChange(bool insert) = 0;
    virtual void showBleConnected() = 0;
};
