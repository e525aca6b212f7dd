#pragma once

#include "Utils/Singleton.h"
#include "Utils/UserPreferences.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>

// Battery and device notices as desktop notifications (org.freedesktop.Notifications), and the
// user's choice between those and the popup windows. Each kind of notice keeps one
// notification on the screen: a new one replaces the last of its kind instead of stacking.
// Calls are asynchronous, so a slow or missing notification service never holds up the
// window. "Notification" (the default) means one notice: the desktop's where a server runs or
// can be started, the popup where none does, and the popup also for a notice whose call failed.
class DesktopNotifications : public QObject, public Singleton<DesktopNotifications> {
    Q_OBJECT

public:
    enum Style { StylePopup = 0, StyleNotification = 1, StyleBoth = 2 };
    // Whether a notification server answers on the bus; unknown until the bus has told.
    enum Server { ServerUnknown, ServerPresent, ServerAbsent };
    // Shows the popup of a notice that was to be a notification only and reached no server.
    using Undelivered = std::function<void()>;
    enum Kind { KindBattery, KindDevice, KindTyping, KindCount };
    enum Urgency { UrgencyLow = 0, UrgencyNormal = 1, UrgencyCritical = 2 };

    // The icon name of the installed desktop entry; the notification server looks it up in the theme.
    static constexpr char kAppIcon[] = "zorvane";

    // A notifier on the given bus with a fixed style: tests use a private bus.
    explicit DesktopNotifications(const QDBusConnection& bus, int style = StyleNotification,
                                  QObject* parent = nullptr);

    int style() const { return mStyle; }
    // Values the console does not know count as the default, notification.
    void setStyle(int style);
    Server server() const { return mServer; }
    bool wantsPopup() const;
    bool wantsNotification() const;

    // Sends a notification when wanted; replaces the kind's previous one. A call that fails
    // while no popup was wanted runs `undelivered`.
    void notify(Kind kind, const QString& summary, const QString& body, Urgency urgency = UrgencyNormal,
                Undelivered undelivered = {});
    // The battery panel's pages: 0 low, 1 critical, 2 shut down, 3 charging; other pages send nothing.
    void notifyBattery(int page, Undelivered undelivered = {});
    void notifyDeviceChange(bool insert, Undelivered undelivered = {});
    void notifyBleConnected(Undelivered undelivered = {});

    // The id the server gave the kind's last notification; 0 before any answer.
    uint lastId(Kind kind) const { return mLastId[kind]; }

signals:
    void signalStyleChanged(int style);
    void signalServerChanged(int server);
    // The server answered a Notify call (tests wait on it).
    void signalSent(int kind, uint id);

private:
    friend class Singleton<DesktopNotifications>;
    // The process-wide notifier: the session bus, the style of the stored preferences, and
    // every later change of them.
    DesktopNotifications();

    void onPreferencesChange(const UserPreferences& preferences);
    void send(Kind kind, const QString& summary, const QString& body, Urgency urgency,
              Undelivered undelivered);
    void failed(const QString& reason);
    // Follows the server's coming and going; asks the bus once whether one runs or can start.
    void watchServer();
    void setServer(Server server);

    // A notice of a kind whose last Notify is still unanswered waits for that answer: sent
    // at once it would carry no id to replace and stack a second notification.
    struct Waiting {
        bool valid = false;
        QString summary;
        QString body;
        Urgency urgency = UrgencyNormal;
        Undelivered undelivered;
    };

    QDBusConnection mBus;
    int mStyle = StyleNotification;
    Server mServer = ServerUnknown;
    bool mActivatable = false;
    uint mLastId[KindCount] = {};
    bool mInFlight[KindCount] = {};
    Waiting mWaiting[KindCount];
    bool mFailureLogged = false;
};
