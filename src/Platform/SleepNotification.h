#pragma once

#include <QDBusConnection>
#include <QObject>

// Sleep and wake of the machine, from logind's PrepareForSleep signal on the system bus
// (true before sleeping, false after waking). Without a system bus it stays quiet.
class SleepNotification : public QObject {
    Q_OBJECT

public:
    explicit SleepNotification(QObject* parent = nullptr);
    // Tests listen on a private bus.
    SleepNotification(const QDBusConnection& bus, QObject* parent = nullptr);

    bool isWatching() const { return mWatching; }

    void sleep();
    void wake();

signals:
    void signalSleepApp();
    void signalWakeApp();

private slots:
    void onPrepareForSleep(bool start);

private:
    bool mWatching = false;
};
