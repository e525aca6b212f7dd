#include "Widget/Notices/WidgetConsoleNotices.h"

#include "Widget/Notices/BLEConnectedDialog.h"
#include "Widget/Notices/USBChangeMessageDialog.h"
#include "WidgetPresenter/NoticeRoute.h"

#include <QPointer>

WidgetConsoleNotices::WidgetConsoleNotices(QWidget* parent, DesktopNotifications* notifications)
    : mParent(parent), mNotifications(notifications)
{
}

WidgetConsoleNotices::~WidgetConsoleNotices() = default;

NoticeRoute* WidgetConsoleNotices::route()
{
    if (!mRoute) {
        mRoute = std::make_unique<NoticeRoute>(mNotifications);
    }
    return mRoute.get();
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
    route()->deviceChange(insert, strip);
}

void WidgetConsoleNotices::showBleConnected()
{
    const QPointer<QWidget> parent = mParent;
    const auto hint = [parent] { BLEConnectedDialog::getInstance(parent)->showHint(); };
    route()->bleConnected(hint);
}
