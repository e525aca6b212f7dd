#include "Widget/Notices/WidgetConsoleNotices.h"

#include "Widget/Notices/BLEConnectedDialog.h"
#include "Widget/Notices/USBChangeMessageDialog.h"

void WidgetConsoleNotices::showDeviceChange(bool insert)
{
    // Deletes itself when it has slid out.
    auto* strip = new USBChangeMessageDialog(mParent);
    strip->showMessage(insert);
}

void WidgetConsoleNotices::showBleConnected()
{
    BLEConnectedDialog::getInstance(mParent)->showHint();
}
