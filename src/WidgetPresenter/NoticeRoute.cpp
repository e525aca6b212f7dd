#include "WidgetPresenter/NoticeRoute.h"

#include "Platform/DesktopNotifications.h"

NoticeRoute::NoticeRoute(DesktopNotifications* notifications, QObject* parent)
    : QObject(parent),
      mNotifications(notifications != nullptr ? notifications : DesktopNotifications::getInstance())
{
    connect(mNotifications, &DesktopNotifications::signalStyleChanged, this,
            &NoticeRoute::signalStyleChanged);
}

int NoticeRoute::style() const
{
    return mNotifications->style();
}

void NoticeRoute::battery(int page, const std::function<void()>& popup)
{
    // The notification is sent even while the panel stands: it replaces the last one.
    mNotifications->notifyBattery(page, popup);
    if (mNotifications->wantsPopup()) {
        popup();
    }
}

void NoticeRoute::deviceChange(bool insert, const std::function<void()>& popup)
{
    mNotifications->notifyDeviceChange(insert, popup);
    if (mNotifications->wantsPopup()) {
        popup();
    }
}

void NoticeRoute::bleConnected(const std::function<void()>& popup)
{
    mNotifications->notifyBleConnected(popup);
    if (mNotifications->wantsPopup()) {
        popup();
    }
}
