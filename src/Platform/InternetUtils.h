#pragma once

#include "Utils/Singleton.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class QSocketNotifier;

// Whether the machine is on a network, told on every change. Event-driven: the kernel's
// route notifications (links and addresses coming and going) wake it, nothing polls.
class InternetUtils : public QObject, public Singleton<InternetUtils> {
    Q_OBJECT

public:
    // One interface as the decision sees it.
    struct Interface {
        QString name;
        bool up = false;
        bool running = false;
        bool loopback = false;
        bool hasGlobalAddress = false;  // an address beyond link-local
    };

    // Tests: a watcher that reads these interfaces instead of the machine's and listens to
    // nothing; refresh() looks again.
    explicit InternetUtils(std::function<QList<Interface>()> interfaces);
    ~InternetUtils() override;

    bool isOnline() const { return mOnline; }
    // Online: an interface that is up and running, not the loopback, with a usable address.
    static bool isOnline(const QList<Interface>& interfaces);
    static QList<Interface> currentInterfaces();

    // Looks again and tells a change; the route socket calls it, tests may too.
    void refresh();

signals:
    void signalInternetStateChange(bool online);

private:
    friend class Singleton<InternetUtils>;
    InternetUtils();
    void onRouteEvent();

    std::function<QList<Interface>()> mInterfaces = &InternetUtils::currentInterfaces;
    int mSocket = -1;
    QSocketNotifier* mNotifier = nullptr;
    bool mOnline = false;
};
