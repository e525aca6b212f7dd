#pragma once

#include <QObject>

#include <functional>

class DeviceManager;
class QTimer;

// The battery notices: which of the mouse's battery reports reaches the user, how often, and
// when the battery counts as recovered. It tells the presenter what to show through its
// signals. Main thread only (the device's reports arrive there queued), so it holds no lock.
class BatteryWatch : public QObject {
    Q_OBJECT

public:
    static constexpr int kLowbatGateMs = 1500000;
    static constexpr int kMinLowbatGateMs = 600000;
    static constexpr int kLowbatBlinkMs = 500;
    enum TimerId { TimerLowbatGate, TimerMinLowbatGate, TimerLowbatBlink, TimerCount };

    struct State {
        bool powerPlugged = false;
        bool lowbatSeen = false;
        bool minLowbatSeen = false;
        bool shutdown = false;
        bool lowbatNoLongerRemind = false;
        bool minLowbatNoLongerRemind = false;
        bool recoveryWatch = false;
        int watchBase = 0;
        int lastValue = 0;
        int reportCount = 0;
    };

    // online tells whether back to normal means "ready" or "no internet".
    BatteryWatch(DeviceManager* device, std::function<bool()> online, QObject* parent = nullptr);

    State state() const { return mState; }
    QTimer* timer(TimerId id) const { return mTimers[id]; }
    void stop();

public slots:
    void onDeviceLowbat();
    void onDeviceMinLowbat();
    void onDevicePowerPlusIn(bool plugged);
    void onMouseShutdown();
    void onDeviceBatteryValue(int value);
    void recvLowbatSignalNoLongerRemind();
    void recvMinLowbatSignalNoLongerRemind();

signals:
    // 0 low, 1 critical, 2 shut down, 3 charging.
    void noticeShown(int kind);
    void deviceEnabled(bool enabled);
    // The tray's status codes: 4 low, 5 critical, 6 charging; 0 or 3 when back to normal.
    void errorRaised(int status);
    void errorCleared(int status);
    // The tray's picture while the battery is critical.
    void blinkImage(int image);

private:
    void backToNormal();

    std::function<bool()> mOnline;
    State mState;
    int mBlinkStep = 0;
    QTimer* mTimers[TimerCount] = {};
};
