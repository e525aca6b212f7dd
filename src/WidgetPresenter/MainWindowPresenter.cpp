#include "WidgetPresenter/MainWindowPresenter.h"

#include "Database/DBManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HookManager.h"
#include "Http/HttpManager.h"
#include "Platform/AppAutoRunUtils.h"
#include "Platform/InternetUtils.h"
#include "Recorder/RecordManager.h"
#include "Utils/AppVersion.h"
#include "Utils/CustomTimer.h"
#include "Utils/LanguageRules.h"
#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/BackendLadder.h"
#include "WidgetPresenter/MainWindowView.h"
#include "WidgetPresenter/UpdatePresenter.h"

#include <QGuiApplication>
#include <QScreen>
#include <QThread>
#include <QTimer>

namespace {

int primaryScreenWidth()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->availableGeometry().width() : 0;
}

}  // namespace

MainWindowPresenter::Collaborators MainWindowPresenter::processWide()
{
    MainWindowPresenter::Collaborators c;
    c.device = DeviceManager::getInstance();
    c.db = DBManager::getInstance();
    c.http = HttpManager::getInstance();
    c.hook = HookManager::getInstance();
    c.internet = InternetUtils::getInstance();
    c.autoRun = AppAutoRunUtils::getInstance();
    c.record = RecordManager::getInstance();
    return c;
}

MainWindowPresenter::MainWindowPresenter(MainWindowView* view, QObject* parent)
    : MainWindowPresenter(view, processWide(), parent)
{
}

MainWindowPresenter::MainWindowPresenter(MainWindowView* view, const Collaborators& collaborators,
                                         QObject* parent)
    : QObject(parent), mView(view)
{
    initDatas(collaborators);
}

MainWindowPresenter::~MainWindowPresenter()
{
    // The controller's thread must be gone before the state it reads.
    joinDeviceController();
}

void MainWindowPresenter::joinDeviceController()
{
    if (mTimerDeviceController) {
        mTimerDeviceController->stop();
        mTimerDeviceController->wait();
    }
}

void MainWindowPresenter::shutDown()
{
    joinDeviceController();
    for (QTimer* timer : mTimers) {
        if (timer != nullptr) {
            timer->stop();
        }
    }
    mLadder->stop();
    if (mHookManager != nullptr) {
        mHookManager->stopHook();
    }
}

void MainWindowPresenter::initDatas(const Collaborators& collaborators)
{
    mDeviceManager = collaborators.device;
    mDBManager = collaborators.db;
    mHookManager = collaborators.hook;
    mAutoRun = collaborators.autoRun;
    mRecordManager = collaborators.record;
    mNotices = collaborators.notices;
    mPicker = collaborators.picker;
    mScreenWidth = collaborators.screenWidth ? collaborators.screenWidth : primaryScreenWidth;
    BackendLadder::Collaborators ladder;
    ladder.http = collaborators.http;
    ladder.clockMs = collaborators.clockMs;
    ladder.deviceInitialised = [this] { return isDeviceInitialised(); };
    ladder.device = [this] { return mDevice; };
    mLadder = new BackendLadder(ladder, this);
    connectLadder();

    auto makeTimer = [this](TimerId id, int interval, bool singleShot) {
        QTimer* timer = new QTimer(this);
        timer->setInterval(interval);
        timer->setSingleShot(singleShot);
        mTimers[id] = timer;
        return timer;
    };

    // 1. Flags.
    mDeviceOpenTime.id = -1;

    // 2, 3. Network state and preferences.
    if (collaborators.internet != nullptr) {
        connect(collaborators.internet, &InternetUtils::signalInternetStateChange, this,
                &MainWindowPresenter::onInternetStateChange);
    }
    PreferencesUtils* preferences = PreferencesUtils::getInstance();
    connect(preferences, &PreferencesUtils::signalPreferencesChange, this,
            &MainWindowPresenter::onPreferencesChange);
    onPreferencesChange(preferences->getUserPreferences());

    // 4. The device, and the command words that a change in the database reloads.
    connectDevice();
    if (mDBManager != nullptr) {
        connect(mDBManager, &DBManager::signalChangeCommand, this, &MainWindowPresenter::loadUserCommand);
    }

    // 5. No local audio recorder is opened on this platform, so status 2 never arises.

    // 7. The ladders and the version check.
    mTimerDeviceController = std::make_unique<CustomTimer>(collaborators.deviceControllerMs,
                                                           [this] { onTimerDeviceController(); });
    mTimerDeviceController->setObjectName(QStringLiteral("DeviceControl"));
    connect(makeTimer(TimerDeviceMessage, collaborators.deviceMessageMs, false), &QTimer::timeout, this,
            &MainWindowPresenter::onTimerDeviceMessage);
    connect(makeTimer(TimerVersionCheck, kVersionCheckMs, false), &QTimer::timeout, this,
            &MainWindowPresenter::onCheckVersion);
    if (mAutoRun != nullptr) {
        connect(mAutoRun, &AppAutoRunUtils::signalChangeAutoRun, this,
                [this](bool) { mView->setCheckAutoRunOnOffChecked(mAutoRun->isAppAutoRun()); });
    }
    if (userPreferences().checkUpdate != 0) {
        mTimers[TimerVersionCheck]->start();
    }

    // 8. The other timers, the input hook and the rest clock.
    makeTimer(TimerLowbatGate, kLowbatGateMs, true);
    makeTimer(TimerMinLowbatGate, kMinLowbatGateMs, true);
    QTimer* delayOpen = makeTimer(TimerDeviceDelayOpen, userPreferences().delayOpenDeviceTime, true);
    connect(delayOpen, &QTimer::timeout, this, [this, delayOpen] {
        if (delayOpen->isSingleShot()) {
            mDelayOpenActive = false;
        }
    });
    connect(this, &MainWindowPresenter::signalStartDeviceDelayOpen, this, [this, delayOpen] {
        // Queued from the controller's thread: an unplug may have parked the delay since, and
        // a single shot now would let the ladder try Bluetooth while the receiver is out.
        if (delayOpen->isActive() && !delayOpen->isSingleShot()) {
            return;
        }
        startDelayOpen(true);
    });
    connect(makeTimer(TimerWorkReset, kWorkResetMs, true), &QTimer::timeout, this,
            &MainWindowPresenter::onTimerWorkReset);
    connect(makeTimer(TimerWorkTime, userPreferences().workTime, true), &QTimer::timeout, this,
            &MainWindowPresenter::onTimerWorkTime);
    connect(makeTimer(TimerWarningHint, kWarningHintMs, true), &QTimer::timeout, this,
            [this] { mView->closeWarningHint(); });
    connect(makeTimer(TimerLowbatBlink, kLowbatBlinkMs, false), &QTimer::timeout, this, [this] {
        mBlinkStep = mBlinkStep == 3 ? 0 : 3;
        mView->setChargeUpTrayAnimationImage(mBlinkStep);
    });
    if (mHookManager != nullptr) {
        mHookManager->startHook();
        connect(mHookManager, &HookManager::signalMouseEvent, this, &MainWindowPresenter::onWorkInput);
        connect(mHookManager, &HookManager::signalKeyboardEvent, this, &MainWindowPresenter::onWorkInput);
        connect(mHookManager, &HookManager::signalShowTrayPowerValue, this,
                &MainWindowPresenter::onShowTrayPowerValue);
    }
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.levelValuesShown = false;
    }
    mView->setVipFunction(false);

    // 9. The network as it is now; the watcher tells each change.
    const bool online = collaborators.internet == nullptr || collaborators.internet->isOnline();
    mLadder->setOnline(online);
    if (!online) {
        addErrorStatus(3);
    }

    // 10. The Bluetooth guidance's check.
    QTimer* check = makeTimer(TimerConnectionCheck, kConnectionCheckMs, false);
    connect(check, &QTimer::timeout, this, &MainWindowPresenter::onTimerConnectionCheck);
    connect(this, &MainWindowPresenter::signalStartCheckDeviceConnectionTimer, check,
            qOverload<>(&QTimer::start));

    mTimerDeviceController->start();
}

void MainWindowPresenter::connectLadder()
{
    BackendLadder* l = mLadder;
    connect(l, &BackendLadder::appVersion, this, [this](VersionInfo vi) {
        emit signalAppVersion(vi);
        if (userPreferences().checkUpdate != 0 && vi.version != QLatin1String(kAppVersion)) {
            offerUpdate(vi);
        }
    });
    connect(l, &BackendLadder::deviceListArrived, this, [this](QList<DeviceInfo> list) {
        const Lock lock(mStatusMutex);
        mDeviceInfoList = list;
    });
    connect(l, &BackendLadder::openTimeArrived, this, [this](DeviceOpenTime openTime) {
        const Lock lock(mStatusMutex);
        mDeviceOpenTime = openTime;
        mUserPreferences.delayOpenDeviceTime = openTime.time;
        mTimers[TimerDeviceDelayOpen]->setInterval(openTime.time);
    });
    connect(l, &BackendLadder::ipIdKnown, this, [this](int id) {
        emit signalLocalIpId(id);
        storePreference(&UserPreferences::saveIpAddress, 1);
    });
    connect(l, &BackendLadder::calendarPhrasesArrived, this, [this](CalendarPhrases phrases) {
        if (userPreferences().calendarPhrases != 0) {
            mView->showCalendarPhrases(phrases);
        }
    });
    connect(l, &BackendLadder::directUIsArrived, this, &MainWindowPresenter::signalDirectUIsToInput);
}

void MainWindowPresenter::connectDevice()
{
    DeviceManager* d = mDeviceManager;
    connect(d, &DeviceManager::signalBLEDeviceConnectState, this,
            &MainWindowPresenter::onBLEDeviceConnectState);
    connect(d, &DeviceManager::signalDeviceReady, this, &MainWindowPresenter::onDeviceReady);
    connect(d, &DeviceManager::signalDongleFlashID, this, &MainWindowPresenter::onDeviceDongleFlashID);
    connect(d, &DeviceManager::signalRemoteFlashID, this, &MainWindowPresenter::onDeviceRemoteFlashID);
    connect(d, &DeviceManager::signalMouseActive, this, &MainWindowPresenter::onDeviceMouseActive);
    connect(d, &DeviceManager::signalModule, this, &MainWindowPresenter::onDeviceModule);
    connect(d, &DeviceManager::signalDpi, this, &MainWindowPresenter::onDeviceDpi);
    connect(d, &DeviceManager::signalChangeMouseDpiKey, this, &MainWindowPresenter::onChangeMouseDpiKey);
    connect(d, &DeviceManager::signalDpiLevelValue, this, &MainWindowPresenter::onDeviceDpiLevelValue);
    connect(d, &DeviceManager::signalCpi, this, &MainWindowPresenter::onDeviceCpi);
    connect(d, &DeviceManager::signalLamplight, this, &MainWindowPresenter::onDeviceLamplight);
    connect(d, &DeviceManager::signalLowbatReport, this, &MainWindowPresenter::onDeviceLowbatReport);
    connect(d, &DeviceManager::signalLowbat, this, &MainWindowPresenter::onDeviceLowbat);
    connect(d, &DeviceManager::signalMinLowbat, this, &MainWindowPresenter::onDeviceMinLowbat);
    connect(d, &DeviceManager::signalDevicePowerPlugIn, this, &MainWindowPresenter::onDevicePowerPlusIn);
    connect(d, &DeviceManager::signalShake, this, &MainWindowPresenter::onDeviceShake);
    connect(d, &DeviceManager::signalSoundEffect, this, &MainWindowPresenter::onDeviceSoundEffect);
    connect(d, &DeviceManager::signalMouseShutdown, this, &MainWindowPresenter::onMouseShutdown);
    connect(d, &DeviceManager::signalBatteryValue, this, &MainWindowPresenter::onDeviceBatteryValue);
    connect(d, &DeviceManager::signalUSBChange, this, &MainWindowPresenter::onUSBChange);
}

void MainWindowPresenter::runOnMain(std::function<void()> fn)
{
    if (QThread::currentThread() == thread()) {
        fn();
    } else {
        QMetaObject::invokeMethod(this, std::move(fn), Qt::QueuedConnection);
    }
}

DeviceStatus MainWindowPresenter::deviceStatus() const
{
    const Lock lock(mStatusMutex);
    return mDeviceStatus;
}

DeviceInfo MainWindowPresenter::currentDeviceInfo() const
{
    const Lock lock(mStatusMutex);
    return mCurDevInf;
}

UserPreferences MainWindowPresenter::userPreferences() const
{
    const Lock lock(mStatusMutex);
    return mUserPreferences;
}

bool MainWindowPresenter::isDeviceInitialised() const
{
    const Lock lock(mStatusMutex);
    return mDeviceInitialised;
}

bool MainWindowPresenter::isDeviceControllerRunning() const
{
    return mTimerDeviceController && mTimerDeviceController->isActive();
}

QTimer* MainWindowPresenter::timer(TimerId id) const
{
    return mTimers[id];
}

void MainWindowPresenter::persistPreferences()
{
    PreferencesUtils::getInstance()->setUserPreferences(userPreferences());
}

// ---- error status

void MainWindowPresenter::addErrorStatus(int status)
{
    runOnMain([this, status] {
        if (!mErrorStatus.contains(status)) {
            mErrorStatus.append(status);
        }
        mView->updateSystemTray(mErrorStatus.last());
    });
}

void MainWindowPresenter::removeErrorStatus(int status)
{
    runOnMain([this, status] {
        mErrorStatus.removeAll(status);
        mView->updateSystemTray(mErrorStatus.isEmpty() ? 0 : mErrorStatus.last());
    });
}

// ---- preferences

void MainWindowPresenter::onPreferencesChange(UserPreferences preferences)
{
    {
        const Lock lock(mStatusMutex);
        mUserPreferences = preferences;
    }
    const UserPreferences& p = preferences;
    mView->setComboDictationLanguageCurrentIndex(p.recognitionLanguage);
    mView->setComboVoiceTranslateSrcLanguageCurrentIndex(p.voiceTranslateSourceLanguage);
    mView->setComboVoiceTranslateTarLanguageCurrentIndex(p.voiceTranslateTargetLanguage);
    mView->setComboTextTranslateLanguageCurrentIndex(p.textTranslateLanguage);
    mView->setCheckCalendarPhrasesOnOffChecked(p.calendarPhrases != 0);
    mView->setCheckUpdateHintOnOffChecked(p.checkUpdate != 0);
    mView->setCheckTextTranslateOnOffChecked(p.textTranslateMode != 0);
    mView->setCheckVoiceTranslateOnOffChecked(p.voiceTranslateMode != 0);
    int restRow = -1;
    if (p.restRemind == 0) {
        restRow = 4;
    } else if (p.workTime == 10800000) {
        restRow = 0;
    } else if (p.workTime == 9000000) {
        restRow = 1;
    } else if (p.workTime == 7200000) {
        restRow = 2;
    } else if (p.workTime == 3600000) {
        restRow = 3;
    }
    if (restRow >= 0) {
        mView->setComboRestTime(restRow);
    }
    mView->setPreferenceSettingCheckBoxClick(p.isClickMode != 0);
    mView->setPreferenceSettingRadioButtonAutoSend(p.isAutoSendMode != 0);
    mView->setPreferenceSettingRadioButtonClickSend(p.isAutoSendMode == 0);
    mView->setPreferenceSettingCheckBoxEnterKeySend(p.isEnterSend != 0);
    mView->setPreferenceSettingCheckBoxSpaceKeySend(p.isSpaceSend != 0);
    mView->setPreferenceSettingCheckBoxDelAllSign(p.isDelAllSign != 0);
}

void MainWindowPresenter::storePreference(int UserPreferences::*field, int value)
{
    {
        const Lock lock(mStatusMutex);
        mUserPreferences.*field = value;
    }
    persistPreferences();
}

void MainWindowPresenter::changeLanguages(UserPreferences (*rule)(UserPreferences, int), int index)
{
    if (index < 0) {
        return;  // a box being cleared
    }
    {
        const Lock lock(mStatusMutex);
        const UserPreferences before = mUserPreferences;
        const UserPreferences after = rule(before, index);
        if (after.recognitionLanguage == before.recognitionLanguage &&
            after.voiceTranslateSourceLanguage == before.voiceTranslateSourceLanguage &&
            after.voiceTranslateTargetLanguage == before.voiceTranslateTargetLanguage &&
            after.lastVoiceTranslateSourceLanguage == before.lastVoiceTranslateSourceLanguage &&
            after.lastVoiceTranslateTargetLanguage == before.lastVoiceTranslateTargetLanguage &&
            after.textTranslateLanguage == before.textTranslateLanguage) {
            return;
        }
        mUserPreferences = after;
    }
    persistPreferences();
}

void MainWindowPresenter::onComboChangeDictationLanguage(int index)
{
    changeLanguages(&LanguageRules::changeDictationLanguage, index);
}

void MainWindowPresenter::onComboChangeTranslateSrcLanguage(int index)
{
    changeLanguages(&LanguageRules::changeTranslateSource, index);
}

void MainWindowPresenter::onComboChangeTranslateTarLanguage(int index)
{
    changeLanguages(&LanguageRules::changeTranslateTarget, index);
}

void MainWindowPresenter::onComboChangeTextTranslateLanguage(int index)
{
    changeLanguages(&LanguageRules::changeTextTranslateLanguage, index);
}

bool MainWindowPresenter::isAppAutoRun() const
{
    return mAutoRun != nullptr && mAutoRun->isAppAutoRun();
}

void MainWindowPresenter::onCheckVoiceTranslateMode(bool checked)
{
    storePreference(&UserPreferences::voiceTranslateMode, int(checked));
}

void MainWindowPresenter::onCheckTextTranslateMode(bool checked)
{
    storePreference(&UserPreferences::textTranslateMode, int(checked));
}

void MainWindowPresenter::onCheckCalendarPhrasesOnOff(bool checked)
{
    storePreference(&UserPreferences::calendarPhrases, int(checked));
}

void MainWindowPresenter::onCheckUpdateHintOnOff(bool checked)
{
    storePreference(&UserPreferences::checkUpdate, int(checked));
    QTimer* check = mTimers[TimerVersionCheck];
    if (checked) {
        check->start();
    } else if (check->isActive()) {
        check->stop();
    }
}

void MainWindowPresenter::onCheckAutoRunOnOff(bool checked)
{
    storePreference(&UserPreferences::checkAppAutoRun, int(checked));
    if (mAutoRun != nullptr && !mAutoRun->setAppAutoRun(checked)) {
        QTimer::singleShot(500, this,
                           [this] { mView->setCheckAutoRunOnOffChecked(mAutoRun->isAppAutoRun()); });
    }
}

void MainWindowPresenter::onPreferenceSettingCheckBoxClick(bool checked)
{
    storePreference(&UserPreferences::isClickMode, int(checked));
}

void MainWindowPresenter::onPreferenceSettingRadioButtonClickSend(bool checked)
{
    if (checked && userPreferences().isAutoSendMode != 0) {
        storePreference(&UserPreferences::isAutoSendMode, int(0));
    }
}

void MainWindowPresenter::onPreferenceSettingRadioButtonAutoSend(bool checked)
{
    if (checked && userPreferences().isAutoSendMode == 0) {
        storePreference(&UserPreferences::isAutoSendMode, int(1));
    }
}

void MainWindowPresenter::onPreferenceSettingCheckBoxEnterKeySend(bool checked)
{
    storePreference(&UserPreferences::isEnterSend, int(checked));
}

void MainWindowPresenter::onPreferenceSettingCheckBoxSpaceKeySend(bool checked)
{
    storePreference(&UserPreferences::isSpaceSend, int(checked));
}

void MainWindowPresenter::onPreferenceSettingCheckBoxDelAllSign(bool checked)
{
    storePreference(&UserPreferences::isDelAllSign, int(checked));
}

// ---- network

void MainWindowPresenter::onInternetStateChange(bool state)
{
    mLadder->setOnline(state);
    if (state) {
        removeErrorStatus(3);
    } else {
        addErrorStatus(3);
    }
}

// ---- version offers

void MainWindowPresenter::offerUpdate(const VersionInfo& vi)
{
    mOfferedVersion = vi.version;
    mView->setDiscoverNewestVersionInfo(UpdatePresenter::releaseText(vi));
    mView->setUpdateView(1);
}

void MainWindowPresenter::onCheckVersion()
{
    mLadder->fetchVersion([this](bool ok, VersionInfo vi) {
        if (ok && !vi.version.isEmpty() && vi.version != QLatin1String(kAppVersion) &&
            vi.version != mDeclinedVersion) {
            offerUpdate(vi);
        }
    });
}

void MainWindowPresenter::recvUpdataSignalNoUpdata()
{
    mDeclinedVersion = mOfferedVersion;
}

void MainWindowPresenter::checkNewestAppVersion()
{
    // The user asked: a check that gets no answer says so, never that all is up to date.
    mLadder->fetchVersion([this](bool ok, VersionInfo vi) {
        if (!ok) {
            emit signalAppVersionUnknown();
            return;
        }
        emit signalAppVersion(vi);
        if (userPreferences().checkUpdate == 0) {
            return;
        }
        if (vi.version != QLatin1String(kAppVersion)) {
            offerUpdate(vi);
        } else {
            mView->setUpdateView(0);
        }
    });
}

// ---- rest reminder

void MainWindowPresenter::onWorkInput()
{
    if (userPreferences().restRemind == 0) {
        return;
    }
    mTimers[TimerWorkReset]->start();
    if (!mTimers[TimerWorkTime]->isActive()) {
        mTimers[TimerWorkTime]->start();
    }
}

void MainWindowPresenter::onTimerWorkReset()
{
    if (userPreferences().restRemind == 0) {
        return;
    }
    mTimers[TimerWorkTime]->stop();
}

void MainWindowPresenter::onTimerWorkTime()
{
    if (userPreferences().restRemind == 0) {
        return;
    }
    mView->showRestDialog();
    mTimers[TimerWorkTime]->stop();
    mTimers[TimerWorkReset]->stop();
}

void MainWindowPresenter::setWorkTime(int ms)
{
    {
        const Lock lock(mStatusMutex);
        mUserPreferences.workTime = ms;
    }
    mTimers[TimerWorkTime]->setInterval(ms);
    mTimers[TimerWorkTime]->stop();
    mTimers[TimerWorkReset]->stop();
    persistPreferences();
}

void MainWindowPresenter::setRestEnable(bool enable)
{
    if (!enable) {
        mTimers[TimerWorkTime]->stop();
        mTimers[TimerWorkReset]->stop();
    }
    {
        const Lock lock(mStatusMutex);
        mUserPreferences.restRemind = enable ? 1 : 0;
    }
    persistPreferences();
}
