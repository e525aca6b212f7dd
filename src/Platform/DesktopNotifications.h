#pragma once

#include "Utils/Singleton.h"
#include "Utils/UserPreferences.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

// Battery and device notices as desktop notifications (org.freedesktop.Notifications), and the
// user's choice between those and the popup windows. Each kind of notice keeps one
// notification on the screen: a new one replaces the last of its kind instead of stacking.
// Calls are asynchronous, so a slow or missing notification service never holds up the
// window; without one the notices still reach the popups the user chose.
class DesktopNotifications : public QObject, public Singleton<DesktopNotifications> {
    Q_OBJECT

public:
    enum Style { StylePopup = 0, StyleNotification = 1, StyleBoth = 2 };
    enum Kind { KindBattery, KindDevice, KindTyping, KindCount };
    enum Urgency { UrgencyLow = 0, UrgencyNormal = 1, UrgencyCritical = 2 };

    // The icon name of the installed desktop entry; the notification server looks it up in the theme.
    static constexpr char kAppIcon[] = "zorvane";

    // A notifier on the given bus with a fixed style: tests use a private bus.
    explicit DesktopNotifications(const QDBusConnection& bus, int style = StyleBoth,
                                  QObject* parent = nullptr);

    int style() const { return mStyle; }
    // Values the console does not know count as both, the default.
    void setStyle(int style);
    bool wantsPopup() const { return mStyle != StyleNotification; }
    bool wantsNotification() const { return mStyle != StylePopup; }

    // Sends a notification unless the style is popup only; replaces the kind's previous one.
    void notify(Kind kind, const QString& summary, const QString& body, Urgency urgency = UrgencyNormal);
    // The battery panel's pages: 0 low, 1 critical, 2 shut down, 3 charging; other pages send nothing.
    void notifyBattery(int page);
    void notifyDeviceChange(bool insert);
    void notifyBleConnected();

    // The id the server gave the kind's last notification; 0 before any answer.
    uint lastId(Kind kind) const { return mLastId[kind]; }

signals:
    void signalStyleChanged(int style);
    // The server answered a Notify call (tests wait on it).
    void signalSent(int kind, uint id);

private:
    friend class Singleton<DesktopNotifications>;
    // The process-wide notifier: the session bus, the style of the stored preferences, and
    // every later change of them.
    DesktopNotifications();

    void onPreferencesChange(const UserPreferences& preferences);
    void send(Kind kind, const QString& summary, const QString& body, Urgency urgency);
    void failed(const QString& reason);

    // A notice of a kind whose last Notify is still unanswered waits for that answer: sent
    // at once it would carry no id to replace and stack a second notification.
    struct Waiting {
        bool valid = false;
        QString summary;
        QString body;
        Urgency urgency = UrgencyNormal;
    };

    QDBusConnection mBus;
    int mStyle = StyleBoth;
    uint mLastId[KindCount] = {};
    bool mInFlight[KindCount] = {};
    Waiting mWaiting[KindCount];
    bool mFailureLogged = false;
};
