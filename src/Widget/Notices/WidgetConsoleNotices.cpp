#include "Widget/Notices/WidgetConsoleNotices.h"

#include "Platform/DesktopNotifications.h"
#include "Widget/Notices/BLEConnectedDialog.h"
#include "Widget/Notices/USBChangeMessageDialog.h"

DesktopNotifications* WidgetConsoleNotices::notifications()
{
    return mNotifications != nullptr ? mNotifications : DesktopNotifications::getInstance();
}

void WidgetConsoleNotices::showDeviceChange(bool insert)
{
    DesktopNotifications* n = notifications();
    n->notifyDeviceChange(insert);
    if (n->wantsPopup()) {
        // Deletes itself when it has slid out.
        auto* strip = new USBChangeMessageDialog(mParent);
        strip->showMessage(insert);
    }
}

void WidgetConsoleNotices::showBleConnected()
{
    DesktopNotifications* n = notifications();
    n->notifyBleConnected();
    if (n->wantsPopup()) {
        BLEConnectedDialog::getInstance(mParent)->showHint();
    }
}
