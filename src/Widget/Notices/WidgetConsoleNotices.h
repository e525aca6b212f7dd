#pragma once

#include "WidgetPresenter/ConsoleNotices.h"

class DesktopNotifications;
class QWidget;

// The console presenter's notices as windows (a new plug strip for each change of the
// receiver, the one Bluetooth hint), as desktop notifications, or both, as the user chose:
// by default one of them, the window where no notification reaches the desktop.
class WidgetConsoleNotices : public ConsoleNotices {
public:
    // Without a notifier the process-wide one is used.
    explicit WidgetConsoleNotices(QWidget* parent = nullptr, DesktopNotifications* notifications = nullptr)
        : mParent(parent), mNotifications(notifications)
    {
    }

    void showDeviceChange(bool insert) override;
    void showBleConnected() override;

private:
    DesktopNotifications* notifications();

    QWidget* mParent;
    DesktopNotifications* mNotifications;
};
