#pragma once

#include "Http/BackendRecords.h"
#include "WidgetPresenter/DeviceStatus.h"

#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class ConsoleNotices;
class CustomTimer;
class DeviceManager;
class PreferencesRecord;
class QTimer;
class RecordManager;

// The mouse's life in the console: finds and opens it (saved numbers, the backend's list,
// then Bluetooth), identifies it, keeps its speed, lamplight, shake, sound effect and
// low-battery report in step with the user's choice, and notices when it goes. It tells the
// presenter what to show through its signals.
//
// Threads: the controller ladder ticks on its own thread (onTimerDeviceController and what it
// calls); everything else, the device's replies and the message loop included, on the main
// thread. The state the two share is under mMutex, a plain mutex: no call out of this class
// is made while it is held on the main thread, and the controller thread only emits under
// it, which reaches the main thread queued. The preferences record's own lock nests inside.
class DeviceLifecycle : public QObject {
    Q_OBJECT

public:
    static constexpr int kControllerMs = 600;
    static constexpr int kMessageMs = 600;
    static constexpr int kOpenWaitTicks = 200;
    static constexpr int kLevelValueTries = 5;
    // Module replies with a customer code the backend's list lacks before the console stops
    // asking and keeps its own branding.
    static constexpr int kModuleTries = 5;

    enum Switch { SwitchLowbatReport, SwitchShake, SwitchLamplight, SwitchSoundEffect };
    Q_ENUM(Switch)
    enum TimerId { TimerDeviceMessage, TimerDeviceDelayOpen, TimerCount };

    struct Collaborators {
        DeviceManager* device = nullptr;
        RecordManager* record = nullptr;    // may be null
        ConsoleNotices* notices = nullptr;  // may be null
        PreferencesRecord* preferences = nullptr;
        std::function<int()> screenWidth;  // of the primary screen's available area
        std::function<bool()> online;      // whether the backend's list counts; main thread
        // The two ladders' cadence; tests run them faster.
        int controllerMs = kControllerMs;
        int messageMs = kMessageMs;
    };

    DeviceLifecycle(const Collaborators& collaborators, QObject* parent = nullptr);
    // Joins the controller's thread.
    ~DeviceLifecycle() override;

    // Starts the controller, once the presenter listens.
    void start();
    // At quit: the controller's thread joined, the timers stopped. Safe to call twice.
    void shutDown();

    DeviceStatus deviceStatus() const;
    DeviceInfo currentDeviceInfo() const;
    bool isDeviceInitialised() const;
    bool isDeviceControllerRunning() const;
    // The receiver's and mouse's ids as they replied; main thread.
    Device device() const { return mDevice; }
    QTimer* timer(TimerId id) const { return mTimers[id]; }
    // No link, and the Bluetooth attempt has had its answer: the pairing guidance may help.
    bool awaitsPairing() const;
    // Whether the open device is the Bluetooth one rather than the receiver; main thread.
    bool overBluetooth() const;

    // What the backend tells: the known mice, the open delay (or, without a backend, the saved one).
    void setDeviceList(const QList<DeviceInfo>& list);
    void setOpenTime(const DeviceOpenTime& openTime);
    void useSavedOpenDelay();

    void deviceInsert(bool state);
    // Starts the device controller again if it rests.
    void wakeDeviceController();
    // The user's choice on the device page; the ladders send it.
    void chooseSetting(Switch which, bool checked);
    void selectDpi(int target);

public slots:
    void onTimerDeviceController();
    void onTimerDeviceMessage();
    void onDeviceReady();
    void onDeviceDongleFlashID(QString id);
    void onDeviceRemoteFlashID(QString id);
    void onDeviceMouseActive(bool active);
    void onDeviceModule(int lamplightModule, int shakeModule, int soundEffectModule, int keyType,
                        QString customerCode, int mouseWriedType);
    void onUSBChange(int vid, int pid, bool enable);
    void onBLEDeviceConnectState(bool connected, QString uuid);
    void onDeviceDpi(int level);
    void onChangeMouseDpiKey(int level);
    void onDeviceDpiLevelValue(int v1, int v2, int v3);
    void onDeviceCpi(int value);
    void onDeviceLowbatReport(bool enable);
    void onDeviceShake(bool enable);
    void onDeviceLamplight(int enable);
    void onDeviceSoundEffect(bool enable);

signals:
    // The tray's status codes: 0 ready, 1 no device.
    void errorRaised(int status);
    void errorCleared(int status);
    void linkLost();
    void unplugged();
    // 0 the receiver, 1 Bluetooth.
    void connected(int type);
    // The first module reply: what the mouse has.
    void modulesKnown(int lamplightModule, bool lamplight, bool shake, bool soundEffect, int keyType);
    void identified(DeviceInfo info);
    void unlisted(QString customerCode);
    // The speed the mouse is at and the user wants: a level (0 to 2), or the resolution.
    void speedShown(int level);
    void resolutionShown();
    void settingsEnabled();
    // The resolution that suits this screen, for the fourth speed button's label.
    void levelValuesKnown(int screenValue);
    void switchShown(DeviceLifecycle::Switch which, bool onOff, bool status);
    void bleConnected();
    void bleGuidanceWanted();
    void connectionCheckWanted();
    // Set up: what waited for a device (the backend's registration) may go on.
    void initialised();
    void openTimeWanted();
    // From the controller: the first open delay is to start on the main thread.
    void delayOpenWanted();
    // The device's own reports for the tray, passed on as they come (on the main thread).
    void deviceReady();
    void bleLinkChanged(bool connected);
    void mouseActive(bool active);
    void batteryFigure(int figure);

private:
    using Lock = std::lock_guard<std::mutex>;
    using Io = std::vector<std::function<void()>>;

    void connectDevice();
    // Runs fn on the main thread: now when already there, else queued.
    void runOnMain(std::function<void()> fn);
    void openDevice();
    void openSucceeded();
    void startDelayOpen(bool singleShot);
    bool deviceControllerStep(Io* io);
    void deviceMessageStep(Io* io);
    bool syncSetting(DeviceStatus::Setting& setting, void (DeviceManager::*get)(),
                     void (DeviceManager::*set)(bool), Io* io);
    bool syncLowbatReport(Io* io);
    void syncDpi(Io* io);
    bool deviceInsertStep(bool state);
    DeviceStatus::Setting& setting(Switch which);
    void firstSettingReply(Switch which, bool enable);
    // Under the lock: true when the module reply's customer code is given up on just now.
    bool unknownCustomerCode(const QString& customerCode);
    // Stores what the mouse was identified as and tells the console.
    void identify(const DeviceInfo& info, bool lookedUp, bool iFlySpeech);
    bool isOnline() const { return !mOnline || mOnline(); }

    DeviceManager* mDeviceManager;
    RecordManager* mRecordManager;
    ConsoleNotices* mNotices;
    PreferencesRecord* mPreferences;
    std::function<int()> mScreenWidth;
    std::function<bool()> mOnline;

    // Shared with the controller's thread, under mMutex.
    mutable std::mutex mMutex;
    DeviceStatus mDeviceStatus;
    DeviceInfo mCurDevInf;
    QList<DeviceInfo> mDeviceInfoList;
    bool mDeviceListKnown = false;
    DeviceOpenTime mDeviceOpenTime;
    int mOpenWaitCount = 0;
    // The controller stopped itself: past the open wait its tick only repeated "no device".
    // A plug or a Bluetooth link starts it again.
    bool mControllerResting = false;
    bool mDeviceInitialised = false;
    bool mBleAnswered = false;
    struct DeviceState {
        bool insert = false;
        bool insertChange = false;
    } mDeviceState;
    // Whether the device delay open timer runs or is about to: the controller reads it.
    std::atomic<bool> mDelayOpenActive{false};

    // Main thread only.
    Device mDevice;
    std::unique_ptr<CustomTimer> mTimerDeviceController;
    QTimer* mTimers[TimerCount] = {};
};
