#pragma once

#include "Database/CommandWord.h"
#include "Http/BackendRecords.h"
#include "Http/HttpRequest.h"
#include "Utils/AppVersion.h"
#include "Utils/UserPreferences.h"
#include "WidgetPresenter/DeviceStatus.h"

#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class AppAutoRunUtils;
class BackendLadder;
class ConsoleNotices;
class CustomTimer;
class DBManager;
class DeviceManager;
class HookManager;
class HttpManager;
class InternetUtils;
class MainWindowView;
class PathPicker;
class QTimer;
class RecordManager;

// The console's long-running brain: finds, opens, identifies and configures the mouse, keeps
// it in step with the user's settings, notices when it goes, fetches the backend's data,
// keeps the command words, and decides the battery notices, rest reminder and update offers.
//
// Threads: the device controller ladder runs on its own thread every 600 ms; everything else
// on the main thread. The device state, the current device row, the device list, the open
// time and the preferences are shared under one recursive lock (the view may call back into
// the presenter while a main-thread slot holds it). The controller never touches the view or
// a timer: it posts that work to the main thread.
class MainWindowPresenter : public QObject {
    Q_OBJECT

public:
    static constexpr int kDeviceControllerMs = 600;
    static constexpr int kDeviceMessageMs = 600;
    static constexpr int kVersionCheckMs = 1200000;
    static constexpr int kLowbatGateMs = 1500000;
    static constexpr int kMinLowbatGateMs = 600000;
    static constexpr int kWorkResetMs = 900000;
    static constexpr int kWarningHintMs = 1000;
    static constexpr int kLowbatBlinkMs = 500;
    static constexpr int kConnectionCheckMs = 1000;
    static constexpr int kOpenWaitTicks = 200;
    static constexpr int kLevelValueTries = 5;
    // Module replies with a customer code the backend's list lacks before the console stops
    // asking and keeps its own branding.
    static constexpr int kModuleTries = 5;

    // What the presenter talks to. The plain constructor takes the process-wide instances;
    // tests hand in their own (not owned). http, hook, internet, autoRun and record may be
    // null: the parts that need them then stay quiet.
    struct Collaborators {
        DeviceManager* device = nullptr;
        DBManager* db = nullptr;
        HttpManager* http = nullptr;
        HookManager* hook = nullptr;
        InternetUtils* internet = nullptr;
        AppAutoRunUtils* autoRun = nullptr;
        RecordManager* record = nullptr;
        ConsoleNotices* notices = nullptr;
        // The browse button's dialogs; without one the pickers do nothing.
        PathPicker* picker = nullptr;
        // Width of the primary screen's available area; the primary screen when unset.
        std::function<int()> screenWidth;
        // The two device ladders' cadence; tests run them faster.
        int deviceControllerMs = kDeviceControllerMs;
        int deviceMessageMs = kDeviceMessageMs;
        // A monotonic clock in milliseconds for the backend's retry pauses; steady_clock when unset.
        std::function<qint64()> clockMs;
    };

    enum TimerId {
        TimerDeviceMessage,
        TimerVersionCheck,
        TimerLowbatGate,
        TimerMinLowbatGate,
        TimerDeviceDelayOpen,
        TimerWorkReset,
        TimerWorkTime,
        TimerWarningHint,
        TimerLowbatBlink,
        TimerConnectionCheck,
        TimerCount
    };

    // The process-wide instances, which the plain constructor takes; the window adds its own.
    static Collaborators processWide();

    MainWindowPresenter(MainWindowView* view, QObject* parent = nullptr);
    MainWindowPresenter(MainWindowView* view, const Collaborators& collaborators, QObject* parent = nullptr);
    ~MainWindowPresenter() override;

    // At quit: the device controller's thread joined, every timer stopped, the input hook off.
    // Safe to call twice.
    void shutDown();

    // Tests: the state and the timers.
    DeviceStatus deviceStatus() const;
    DeviceInfo currentDeviceInfo() const;
    QList<int> errorStatus() const { return mErrorStatus; }
    BackendLadder* ladder() const { return mLadder; }
    bool isDeviceInitialised() const;
    bool isDeviceControllerRunning() const;
    QTimer* timer(TimerId id) const;
    UserPreferences userPreferences() const;
    Device device() const { return mDevice; }
    struct BatteryState {
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
    BatteryState batteryState() const { return mBattery; }

    // Device lifecycle.
    void openDevice();
    void getDeviceOpenTime();
    void deviceIn(int vid, int pid);
    void deviceOut(int vid, int pid);
    void deviceInsert(bool state);
    // Starts the device controller again if it rests.
    void wakeDeviceController();
    void addErrorStatus(int status);
    void removeErrorStatus(int status);
    void checkHomeImage();
    void checkExplainImage();
    void checkNavImage();
    void hide();
    // The console came up (shown, or back from minimised): the connection check, resting
    // while it was away, runs again.
    void onViewShown();

    // The user asked for the newest version.
    void checkNewestAppVersion();

    // Command words.
    int onAddCommandButtonSumbit();
    int onEditCommandButtonSumbit();
    void onButtonDeleteCommand();
    void loadUserCommand();
    QList<CommandWord> getCommandWords() const { return mCommandWords; }
    // Copies the row's word into the word being edited; false for a row the list lacks.
    bool getCurrentEditCommandId(int row);
    CommandWord currentEditCommand() const { return mEditCommand; }
    // The chord last captured in the add form and in the edit form; empty when none was since
    // the form opened or changed type.
    void setShortcutList(QList<int> keys) { mShortcutList = keys; }
    void setEditShortcutList(QList<int> keys) { mEditShortcutList = keys; }
    // The browse button: a file, a folder, an installed application for the page shown.
    void showDesktopFile();
    void showDesktopFolder();
    void showApplicationsFile();

    // The number on the fourth speed button for a resolution, which the view is given; 0 for a
    // label without one.
    static int cpiLabel(int value);

    // Whether Zorvane starts with the session; false without a way to ask.
    bool isAppAutoRun() const;

    // Rest reminder.
    void setWorkTime(int ms);
    void setRestEnable(bool enable);

signals:
    void signalAppVersion(VersionInfo vi);
    // A check the user asked for got no answer.
    void signalAppVersionUnknown();
    void signalLocalIpId(int id);
    void signalGetDeviceInfo(DeviceInfo info);
    void signalLoadUserCommandWord(QList<CommandWord> word);
    void signalDirectUIsToInput(QList<DirectUI> directUIs);
    void signalStartDeviceDelayOpen();
    void signalShowBLEGuidanceDialog();
    void signalHideBLEGuidanceDialog();
    void signalStartCheckDeviceConnectionTimer();

public slots:
    void onInternetStateChange(bool state);
    void onPreferencesChange(UserPreferences preferences);
    void onDeviceReady();
    void onDeviceDongleFlashID(QString id);
    void onDeviceRemoteFlashID(QString id);
    void onDeviceMouseActive(bool active);
    void onDeviceModule(int lamplightModule, int shakeModule, int soundEffectModule, int keyType,
                        QString customerCode, int mouseWriedType);
    void onUSBChange(int vid, int pid, bool enable);
    void onBLEDeviceConnectState(bool connected, QString uuid);
    void onTimerDeviceController();
    void onTimerDeviceMessage();
    void onTimerConnectionCheck();
    void onCheckVersion();

    // Preferences of the console's pages.
    void onCheckVoiceTranslateMode(bool checked);
    void onCheckTextTranslateMode(bool checked);
    void onCheckCalendarPhrasesOnOff(bool checked);
    void onCheckUpdateHintOnOff(bool checked);
    void onCheckAutoRunOnOff(bool checked);
    void onComboChangeDictationLanguage(int index);
    void onComboChangeTranslateSrcLanguage(int index);
    void onComboChangeTranslateTarLanguage(int index);
    void onComboChangeTextTranslateLanguage(int index);
    void onPreferenceSettingCheckBoxClick(bool checked);
    void onPreferenceSettingRadioButtonClickSend(bool checked);
    void onPreferenceSettingRadioButtonAutoSend(bool checked);
    void onPreferenceSettingCheckBoxEnterKeySend(bool checked);
    void onPreferenceSettingCheckBoxSpaceKeySend(bool checked);
    void onPreferenceSettingCheckBoxDelAllSign(bool checked);

    // Device settings.
    void onDeviceDpi(int level);
    void onChangeMouseDpiKey(int level);
    void onDeviceDpiLevelValue(int v1, int v2, int v3);
    void onDeviceCpi(int value);
    void onDeviceLowbatReport(bool enable);
    void onDeviceShake(bool enable);
    void onDeviceLamplight(int enable);
    void onDeviceSoundEffect(bool enable);
    void onRadioSelectDpi0(bool checked);
    void onRadioSelectDpi1(bool checked);
    void onRadioSelectDpi2(bool checked);
    void onRadioSelectDpi3(bool checked);
    void onCheckLowbatReport(bool checked);
    void onCheckShake(bool checked);
    void onCheckLamplight(bool checked);
    void onCheckSoundEffect(bool checked);
    void onShowTrayPowerValue();

    // Battery.
    void onDeviceLowbat();
    void onDeviceMinLowbat();
    void onDevicePowerPlusIn(bool plugged);
    void onMouseShutdown();
    void onDeviceBatteryValue(int value);
    void recvLowbatSignalNoLongerRemind();
    void recvMinLowbatSignalNoLongerRemind();
    // The user declined the offered version: the periodic check no longer offers it this run.
    void recvUpdataSignalNoUpdata();

    // Rest reminder.
    void onWorkInput();
    void onTimerWorkReset();
    void onTimerWorkTime();

private:
    void joinDeviceController();
    using Lock = std::lock_guard<std::recursive_mutex>;

    void initDatas(const Collaborators& collaborators);
    void connectDevice();
    // Runs fn on the main thread: now when already there, else queued.
    void runOnMain(std::function<void()> fn);
    void openSucceeded();
    void startDelayOpen(bool singleShot);
    void connectLadder();
    void persistPreferences();
    void storePreference(int UserPreferences::*field, int value);
    // Applies a language box's rule and saves the record only when a language changed, so that
    // the boxes the save brings up to date settle instead of saving again.
    void changeLanguages(UserPreferences (*rule)(UserPreferences, int), int index);
    void unknownCustomerCode(const QString& customerCode);
    void offerUpdate(const VersionInfo& vi);
    void checkDpiButton(int level);
    bool deviceInsertStep(bool state);
    bool deviceControllerStep(std::vector<std::function<void()>>* io);
    void deviceMessageStep(std::vector<std::function<void()>>* io);
    bool syncSetting(DeviceStatus::Setting& setting, void (DeviceManager::*get)(),
                     void (DeviceManager::*set)(bool), std::vector<std::function<void()>>* io);
    bool syncLowbatReport(std::vector<std::function<void()>>* io);
    void syncDpi(std::vector<std::function<void()>>* io);
    void firstSettingReply(DeviceStatus::Setting& setting, bool enable,
                           void (MainWindowView::*setOnOff)(bool), void (MainWindowView::*setStatus)(bool));
    void chooseSetting(DeviceStatus::Setting& setting, bool checked, void (MainWindowView::*setOnOff)(bool),
                       void (MainWindowView::*setStatus)(bool));
    void selectDpi(int target);
    void batteryBackToNormal();
    int commandSubmit(bool edit);
    void showCommandWarning(bool edit, const QString& text);
    void setPickedContent(const QString& path);

    MainWindowView* mView;
    DeviceManager* mDeviceManager = nullptr;
    DBManager* mDBManager = nullptr;
    HookManager* mHookManager = nullptr;
    AppAutoRunUtils* mAutoRun = nullptr;
    RecordManager* mRecordManager = nullptr;
    ConsoleNotices* mNotices = nullptr;
    PathPicker* mPicker = nullptr;
    std::function<int()> mScreenWidth;

    // Shared with the device controller's thread, under mStatusMutex.
    mutable std::recursive_mutex mStatusMutex;
    UserPreferences mUserPreferences;
    DeviceStatus mDeviceStatus;
    DeviceInfo mCurDevInf;
    QList<DeviceInfo> mDeviceInfoList;
    DeviceOpenTime mDeviceOpenTime;
    int mOpenWaitCount = 0;
    // The controller stopped itself: past the open wait its tick only repeated "no device".
    // Under the status lock; a plug or a Bluetooth link starts it again.
    bool mControllerResting = false;
    bool mConnectionCheckResting = false;  // stopped while the console was away
    bool mDeviceInitialised = false;
    bool mBleAnswered = false;
    // Whether the device delay open timer runs or is about to: the controller reads it.
    std::atomic<bool> mDelayOpenActive{false};

    // Main thread only.
    struct DeviceState {
        bool insert = false;
        bool connected = false;
        bool insertChange = false;
    } mDeviceState;
    Device mDevice;
    QList<int> mErrorStatus;
    bool mGuidanceShown = false;
    bool mPowerHint = false;
    QString mOfferedVersion;
    QString mDeclinedVersion;
    BatteryState mBattery;
    int mBlinkStep = 0;

    QList<CommandWord> mCommandWords;
    CommandWord mEditCommand;
    QList<int> mShortcutList;
    QList<int> mEditShortcutList;

    std::unique_ptr<CustomTimer> mTimerDeviceController;
    QTimer* mTimers[TimerCount] = {};
    BackendLadder* mLadder = nullptr;
};
