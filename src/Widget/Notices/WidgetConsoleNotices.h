#pragma once

#include "WidgetPresenter/ConsoleNotices.h"

#include <memory>

class DesktopNotifications;
class NoticeRoute;
class QWidget;

// The console presenter's notices as windows (a new plug strip for each change of the
// receiver, the one Bluetooth hint), as desktop notifications, or both, as the user chose:
// by default one of them, the window where no notification reaches the desktop.
class WidgetConsoleNotices : public ConsoleNotices {
public:
    // Without a notifier the process-wide one is used.
    explicit WidgetConsoleNotices(QWidget* parent = nullptr, DesktopNotifications* notifications = nullptr);
    ~WidgetConsoleNotices() override;

    void showDeviceChange(bool insert) override;
    void showBleConnected() override;

private:
    // Made on first use, so that the notifier is reached only once there is a notice.
    NoticeRoute* route();

    QWidget* mParent;
    DesktopNotifications* mNotifications;
    std::unique_ptr<NoticeRoute> mRoute;
};
