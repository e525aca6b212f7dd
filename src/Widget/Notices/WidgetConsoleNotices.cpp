#include "Widget/Notices/WidgetConsoleNotices.h"

#include "Platform/DesktopNotifications.h"
#include "Widget/Notices/BLEConnectedDialog.h"
#include "Widget/Notices/USBChangeMessageDialog.h"

#include <QPointer>

DesktopNotifications* WidgetConsoleNotices::notifications()
{
    return mNotifications != nullptr ? mNotifications : DesktopNotifications::getInstance();
}

void WidgetConsoleNotices::showDeviceChange(bool insert)
{
    const QPointer<QWidget> parent = mParent;
    const bool hasParent = mParent != nullptr;
    const auto strip = [parent, hasParent, insert] {
        if (hasParent && parent == nullptr) {
            return;  // the console is gone: the program is ending
        }
        // Deletes itself when it has slid out.
        (new USBChangeMessageDialog(parent))->showMessage(insert);
    };
    DesktopNotifications* n = notifications();
    n->notifyDeviceChange(insert, strip);
    if (n->wantsPopup()) {
        strip();
    }
}

void WidgetConsoleNotices::showBleConnected()
{
    const QPointer<QWidget> parent = mParent;
    const auto hint = [parent] { BLEConnectedDialog::getInstance(parent)->showHint(); };
    DesktopNotifications* n = notifications();
    n->notifyBleConnected(hint);
    if (n->wantsPopup()) {
        hint();
    }
}
