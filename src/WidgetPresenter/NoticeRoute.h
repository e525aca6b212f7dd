#pragma once

#include <QObject>

#include <functional>

class DesktopNotifications;

// How a battery or device notice reaches the user: the desktop notification, the popup the view
// draws, or both, as the user's notice style and the notification server decide. The popup is
// handed in, to be drawn when wanted, also when a notification reached no server.
class NoticeRoute : public QObject {
    Q_OBJECT

public:
    // Without notifications the process-wide ones; not owned.
    explicit NoticeRoute(DesktopNotifications* notifications = nullptr, QObject* parent = nullptr);

    // The stored style (popup 0, notification 1, both 2).
    int style() const;

    void battery(int page, const std::function<void()>& popup);
    void deviceChange(bool insert, const std::function<void()>& popup);
    void bleConnected(const std::function<void()>& popup);

signals:
    void signalStyleChanged(int style);

private:
    DesktopNotifications* mNotifications;
};
