#pragma once

#include "Database/CommandWord.h"
#include "Http/BackendRecords.h"
#include "Platform/ApplicationCatalog.h"
#include "Utils/UserPreferences.h"
#include "WidgetPresenter/BatteryWatch.h"
#include "WidgetPresenter/CommandWords.h"
#include "WidgetPresenter/DeviceLifecycle.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class AppAutoRunUtils;
class BackendLadder;
class ConsoleNotices;
class DBManager;
class DeviceManager;
class HookManager;
class HttpManager;
class InternetUtils;
class MainWindowView;
class PathPicker;
class PreferencesRecord;
class QTimer;
class RecordManager;

// The console's rules: what its window shows of the mouse, the backend, the battery, the
// command words and the preferences, and what its clicks do. The work behind it is done by
// the objects it owns: the device lifecycle (with the controller's thread), the backend
// ladder, the battery watch and the command words; it wires them to each other and to the
// view. Main thread only: it holds no lock, and what the controller's thread tells it comes
// queued.
class MainWindowPresenter : public QObject {
    Q_OBJECT

public:
    static constexpr int kVersionCheckMs = 1200000;
    static constexpr int kWorkResetMs = 900000;
    static constexpr int kWarningHintMs = 1000;
    static constexpr int kConnectionCheckMs = 1000;

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
        // The two device ladders' cadence (0: the product's); tests run them faster.
        int deviceControllerMs = 0;
        int deviceMessageMs = 0;
        // A monotonic clock in milliseconds for the backend's retry pauses; steady_clock when unset.
        std::function<qint64()> clockMs;
    };

    enum TimerId {
        TimerVersionCheck,
        TimerWorkReset,
        TimerWorkTime,
        TimerWarningHint,
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

    DeviceLifecycle* lifecycle() const { return mLifecycle.get(); }
    BackendLadder* ladder() const { return mLadder; }
    BatteryWatch* battery() const { return mBattery; }
    QList<int> errorStatus() const { return mErrorStatus; }
    QTimer* timer(TimerId id) const { return mTimers[id]; }
    UserPreferences userPreferences() const;

    // Shows the mouse's three pictures, fetching those not here yet.
    void showPictures();
    void hide();
    // The console came up (shown, or back from minimised): the connection check, resting
    // while it was away, runs again.
    void onViewShown();
    // The user asked for the newest version.
    void checkNewestAppVersion();

    // Command words.
    int onAddCommandButtonSumbit() { return commandSubmit(false); }
    int onEditCommandButtonSumbit() { return commandSubmit(true); }
    void onButtonDeleteCommand();
    void loadUserCommand();
    QList<CommandWord> getCommandWords() const { return mCommands.words(); }
    bool getCurrentEditCommandId(int row) { return mCommands.select(row); }
    CommandWord currentEditCommand() const { return mCommands.editing(); }
    void setShortcutList(QList<int> keys) { mCommands.setShortcut(false, keys); }
    void setEditShortcutList(QList<int> keys) { mCommands.setShortcut(true, keys); }
    // The browse button: a file, a folder, an installed application for the page shown.
    void showDesktopFile();
    void showDesktopFolder();
    void showApplicationsFile();

    // The number on the fourth speed button for a resolution, which the view is given; 0 for a
    // label without one.
    static int cpiLabel(int value);
    // What the add page suggests for an application word.
    static ApplicationCatalog::Sample applicationExample() { return ApplicationCatalog::sampleApplication(); }

    // Whether Zorvane starts with the session; false without a way to ask.
    bool isAppAutoRun() const;
    // Whether the first start's question is due: not started with the session, never declined.
    bool asksAutoRunAtStart() const;
    // The product's site in the user's browser.
    void openProductSite();

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
    void signalShowBLEGuidanceDialog();
    void signalHideBLEGuidanceDialog();

public slots:
    void onInternetStateChange(bool state);
    void onPreferencesChange(UserPreferences preferences);
    void onTimerConnectionCheck();
    void onCheckVersion();

    // Preferences of the console's pages.
    void onCheckVoiceTranslateMode(bool checked) { store(&UserPreferences::voiceTranslateMode, checked); }
    void onCheckTextTranslateMode(bool checked) { store(&UserPreferences::textTranslateMode, checked); }
    void onCheckCalendarPhrasesOnOff(bool checked) { store(&UserPreferences::calendarPhrases, checked); }
    void onCheckUpdateHintOnOff(bool checked);
    void onCheckAutoRunOnOff(bool checked);
    void onComboChangeDictationLanguage(int index);
    void onComboChangeTranslateSrcLanguage(int index);
    void onComboChangeTranslateTarLanguage(int index);
    void onComboChangeTextTranslateLanguage(int index);
    void onPreferenceSettingCheckBoxClick(bool checked) { store(&UserPreferences::isClickMode, checked); }
    void onPreferenceSettingRadioButtonClickSend(bool checked);
    void onPreferenceSettingRadioButtonAutoSend(bool checked);
    void onPreferenceSettingCheckBoxEnterKeySend(bool checked)
    {
        store(&UserPreferences::isEnterSend, checked);
    }
    void onPreferenceSettingCheckBoxSpaceKeySend(bool checked)
    {
        store(&UserPreferences::isSpaceSend, checked);
    }
    void onPreferenceSettingCheckBoxDelAllSign(bool checked)
    {
        store(&UserPreferences::isDelAllSign, checked);
    }

    // The device page's clicks.
    void onRadioSelectDpi0(bool checked) { selectDpi(checked, 0); }
    void onRadioSelectDpi1(bool checked) { selectDpi(checked, 1); }
    void onRadioSelectDpi2(bool checked) { selectDpi(checked, 2); }
    void onRadioSelectDpi3(bool checked);
    void onCheckLowbatReport(bool checked) { choose(DeviceLifecycle::SwitchLowbatReport, checked); }
    void onCheckShake(bool checked) { choose(DeviceLifecycle::SwitchShake, checked); }
    void onCheckLamplight(bool checked) { choose(DeviceLifecycle::SwitchLamplight, checked); }
    void onCheckSoundEffect(bool checked) { choose(DeviceLifecycle::SwitchSoundEffect, checked); }

    // The battery notices' "no longer remind".
    void recvLowbatSignalNoLongerRemind() { mBattery->recvLowbatSignalNoLongerRemind(); }
    void recvMinLowbatSignalNoLongerRemind() { mBattery->recvMinLowbatSignalNoLongerRemind(); }
    // The user declined the offered version: the periodic check no longer offers it this run.
    void recvUpdataSignalNoUpdata();

    // Rest reminder.
    void onWorkInput();
    void onTimerWorkReset();
    void onTimerWorkTime();

private:
    void addErrorStatus(int status);
    void removeErrorStatus(int status);
    void store(int UserPreferences::*field, bool checked);
    void choose(DeviceLifecycle::Switch which, bool checked) { mLifecycle->chooseSetting(which, checked); }
    void initDatas(const Collaborators& collaborators);
    void connectLifecycle();
    void connectLadder();
    void connectBattery();
    // Applies a language box's rule and saves the record only when a language changed, so that
    // the boxes the save brings up to date settle instead of saving again.
    void changeLanguages(UserPreferences (*rule)(UserPreferences, int), int index);
    void offerUpdate(const VersionInfo& vi);
    void checkDpiButton(int level);
    void selectDpi(bool checked, int target);
    int commandSubmit(bool edit);
    void setPickedContent(const QString& path);

    MainWindowView* mView;
    HookManager* mHookManager = nullptr;
    AppAutoRunUtils* mAutoRun = nullptr;
    PathPicker* mPicker = nullptr;
    // Declared before the lifecycle, whose controller thread reads it: it goes after.
    std::unique_ptr<PreferencesRecord> mPreferences;
    std::unique_ptr<DeviceLifecycle> mLifecycle;
    BackendLadder* mLadder = nullptr;
    BatteryWatch* mBattery = nullptr;
    CommandWords mCommands;

    QList<int> mErrorStatus;
    bool mConnectionCheckResting = false;  // stopped while the console was away
    bool mGuidanceShown = false;
    bool mPowerHint = false;
    QString mOfferedVersion;
    QString mDeclinedVersion;
    QTimer* mTimers[TimerCount] = {};
};
