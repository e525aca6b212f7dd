#include "WidgetPresenter/MainWindowPresenter.h"

#include "Database/DBManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HookManager.h"
#include "Http/HttpManager.h"
#include "Platform/AppAutoRunUtils.h"
#include "Platform/DesktopLauncher.h"
#include "Platform/InternetUtils.h"
#include "Recorder/RecordManager.h"
#include "Utils/AppConfig.h"
#include "Utils/AppVersion.h"
#include "Utils/LanguageRules.h"
#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/BackendLadder.h"
#include "WidgetPresenter/DeviceLifecycle.h"
#include "WidgetPresenter/MainWindowView.h"
#include "WidgetPresenter/PreferencesRecord.h"
#include "WidgetPresenter/UpdatePresenter.h"

#include <QGuiApplication>
#include <QScreen>
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
    : QObject(parent), mView(view), mCommands(collaborators.db)
{
    initDatas(collaborators);
}

// The lifecycle goes first of the members and joins its thread.
MainWindowPresenter::~MainWindowPresenter() = default;

void MainWindowPresenter::shutDown()
{
    mLifecycle->shutDown();
    for (QTimer* timer : mTimers) {
        timer->stop();
    }
    mLadder->stop();
    mBattery->stop();
    if (mHookManager != nullptr) {
        mHookManager->stopHook();
    }
}

void MainWindowPresenter::initDatas(const Collaborators& collaborators)
{
    mHookManager = collaborators.hook;
    mAutoRun = collaborators.autoRun;
    mPicker = collaborators.picker;

    // The preferences, then the network watch.
    mPreferences = std::make_unique<PreferencesRecord>();
    connect(PreferencesUtils::getInstance(), &PreferencesUtils::signalPreferencesChange, this,
            &MainWindowPresenter::onPreferencesChange);
    onPreferencesChange(mPreferences->get());
    if (collaborators.internet != nullptr) {
        connect(collaborators.internet, &InternetUtils::signalInternetStateChange, this,
                &MainWindowPresenter::onInternetStateChange);
    }

    // The objects that do the work.
    BackendLadder::Collaborators backend;
    backend.http = collaborators.http;
    backend.clockMs = collaborators.clockMs;
    backend.deviceInitialised = [this] { return mLifecycle->isDeviceInitialised(); };
    backend.device = [this] { return mLifecycle->device(); };
    mLadder = new BackendLadder(backend, this);
    auto online = [this] { return mLadder->isOnline(); };
    DeviceLifecycle::Collaborators device;
    device.device = collaborators.device;
    device.record = collaborators.record;
    device.notices = collaborators.notices;
    device.preferences = mPreferences.get();
    device.screenWidth = collaborators.screenWidth ? collaborators.screenWidth : primaryScreenWidth;
    device.online = online;
    if (collaborators.deviceControllerMs > 0) {
        device.controllerMs = collaborators.deviceControllerMs;
    }
    if (collaborators.deviceMessageMs > 0) {
        device.messageMs = collaborators.deviceMessageMs;
    }
    mLifecycle = std::make_unique<DeviceLifecycle>(device);
    // The power figure, which the hook's key shows, before the battery watch hears it.
    connect(collaborators.device, &DeviceManager::signalBatteryValue, this, [this](int value) {
        if (mPowerHint) {
            const Device ids = mLifecycle->device();
            mView->setZorvaneMessage(tr("电量:%1; 音量:%2\nRID:%3\nDID:%4")
                                         .arg(value)
                                         .arg(mView->getCurVolume())
                                         .arg(ids.remoteFlashID, ids.dongleFlashID));
        }
    });
    mBattery = new BatteryWatch(collaborators.device, online, this);

    // The presenter's own timers.
    const int intervals[TimerCount] = {kVersionCheckMs, kWorkResetMs, userPreferences().workTime,
                                       kWarningHintMs, kConnectionCheckMs};
    for (int id = 0; id < TimerCount; ++id) {
        mTimers[id] = new QTimer(this);
        mTimers[id]->setInterval(intervals[id]);
        mTimers[id]->setSingleShot(id == TimerWorkReset || id == TimerWorkTime || id == TimerWarningHint);
    }
    connect(mTimers[TimerVersionCheck], &QTimer::timeout, this, &MainWindowPresenter::onCheckVersion);
    connect(mTimers[TimerWorkReset], &QTimer::timeout, this, &MainWindowPresenter::onTimerWorkReset);
    connect(mTimers[TimerWorkTime], &QTimer::timeout, this, &MainWindowPresenter::onTimerWorkTime);
    connect(mTimers[TimerWarningHint], &QTimer::timeout, this, [this] { mView->closeWarningHint(); });
    connect(mTimers[TimerConnectionCheck], &QTimer::timeout, this,
            &MainWindowPresenter::onTimerConnectionCheck);
    connectLifecycle();
    connectLadder();
    connectBattery();

    // The command words, which a change in the database reloads.
    if (collaborators.db != nullptr) {
        connect(collaborators.db, &DBManager::signalChangeCommand, this,
                &MainWindowPresenter::loadUserCommand);
    }
    if (mAutoRun != nullptr) {
        connect(mAutoRun, &AppAutoRunUtils::signalChangeAutoRun, this,
                [this](bool) { mView->setCheckAutoRunOnOffChecked(mAutoRun->isAppAutoRun()); });
    }
    if (userPreferences().checkUpdate != 0) {
        mTimers[TimerVersionCheck]->start();
    }
    // The input hook, for the rest clock and the power figure's key.
    if (mHookManager != nullptr) {
        mHookManager->startHook();
        connect(mHookManager, &HookManager::signalMouseEvent, this, &MainWindowPresenter::onWorkInput);
        connect(mHookManager, &HookManager::signalKeyboardEvent, this, &MainWindowPresenter::onWorkInput);
        connect(mHookManager, &HookManager::signalShowTrayPowerValue, this,
                [this] { mPowerHint = !mPowerHint; });
    }
    mView->setVipFunction(false);

    // The network as it is now; the watcher tells each change. No local audio recorder is
    // opened on this platform, so status 2 never arises.
    const bool isOnline = collaborators.internet == nullptr || collaborators.internet->isOnline();
    mLadder->setOnline(isOnline);
    if (!isOnline) {
        addErrorStatus(3);
    }
    mLifecycle->start();
}

// What the device lifecycle tells, as the window shows it.
void MainWindowPresenter::connectLifecycle()
{
    DeviceLifecycle* d = mLifecycle.get();
    MainWindowView* v = mView;
    connect(d, &DeviceLifecycle::errorRaised, this, &MainWindowPresenter::addErrorStatus);
    connect(d, &DeviceLifecycle::errorCleared, this, &MainWindowPresenter::removeErrorStatus);
    connect(d, &DeviceLifecycle::linkLost, this, [v] { v->showMouseSettingsUnknown(); });
    connect(d, &DeviceLifecycle::unplugged, this, [v] {
        v->setVipFunction(false);
        v->showMouseSettingsUnknown();
        v->setExplain(false);
    });
    connect(d, &DeviceLifecycle::connected, this, [v](int type) { v->setDeviceTypeIcon(type); });
    connect(d, &DeviceLifecycle::modulesKnown, this,
            [v](int lamplightModule, bool lamplight, bool shake, bool soundEffect, int keyType) {
                // The switches stay in their unknown look until the mouse reports each setting.
                v->showLamplightModule(lamplightModule);
                v->setCheckLightingEffectOnOffEnabled(lamplight);
                v->setCheckShakeOnOffEnabled(shake);
                v->setCheckSoundEffectOnOffEnabled(soundEffect);
                v->setDeviceSettingsEnabled(true);
                v->setSignalClickModeEnable(keyType == 0);
                v->setExplain(true);
            });
    connect(d, &DeviceLifecycle::identified, this, [this](DeviceInfo info) {
        emit signalGetDeviceInfo(info);
        showPictures();
        mView->setExplain(true);
    });
    connect(d, &DeviceLifecycle::unlisted, this,
            [this](QString code) { mView->setDeviceName(tr("未识别的鼠标（客户编码 %1）").arg(code)); });
    connect(d, &DeviceLifecycle::speedShown, this, &MainWindowPresenter::checkDpiButton);
    connect(d, &DeviceLifecycle::resolutionShown, this, [v] { v->setDeviceRadioLevel3Checked(true); });
    connect(d, &DeviceLifecycle::settingsEnabled, this, [v] { v->setDeviceSettingsEnabled(true); });
    connect(d, &DeviceLifecycle::levelValuesKnown, this, [v](int screenValue) {
        v->setCpiValue(cpiLabel(screenValue));
        v->setVipFunction(true);
    });
    connect(d, &DeviceLifecycle::switchShown, this,
            [v](DeviceLifecycle::Switch which, bool onOff, bool status) {
                using Set = void (MainWindowView::*)(bool);
                static const Set kOnOff[] = {&MainWindowView::setCheckLowbatOnOffChecked,
                                             &MainWindowView::setCheckShakeOnOffChecked,
                                             &MainWindowView::setCheckLightingEffectOnOffChecked,
                                             &MainWindowView::setCheckSoundEffectOnOffChecked};
                static const Set kStatus[] = {&MainWindowView::setCheckLowbatStatusChecked,
                                              &MainWindowView::setCheckShakeStatusChecked,
                                              &MainWindowView::setCheckLightingEffectStatusChecked,
                                              &MainWindowView::setCheckSoundEffectStatusChecked};
                (v->*kOnOff[which])(onOff);
                (v->*kStatus[which])(status);
            });
    connect(d, &DeviceLifecycle::bleConnected, this, [this] {
        emit signalHideBLEGuidanceDialog();
        mView->setDeviceTypeIcon(1);
    });
    connect(d, &DeviceLifecycle::bleGuidanceWanted, this, &MainWindowPresenter::signalShowBLEGuidanceDialog);
    connect(d, &DeviceLifecycle::connectionCheckWanted, mTimers[TimerConnectionCheck],
            qOverload<>(&QTimer::start));
    // The backend's registration waited for a set-up device.
    connect(d, &DeviceLifecycle::initialised, mLadder, &BackendLadder::resume);
    connect(d, &DeviceLifecycle::openTimeWanted, this, [this] {
        if (!mLadder->requestOpenTime()) {
            mLifecycle->useSavedOpenDelay();
        }
    });
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
    connect(l, &BackendLadder::deviceListArrived, mLifecycle.get(), &DeviceLifecycle::setDeviceList);
    connect(l, &BackendLadder::openTimeArrived, mLifecycle.get(), &DeviceLifecycle::setOpenTime);
    connect(l, &BackendLadder::reachableChanged, this, [this](bool reachable) {
        if (reachable) {
            removeErrorStatus(7);
        } else {
            addErrorStatus(7);
        }
    });
    connect(l, &BackendLadder::ipIdKnown, this, [this](int id) {
        emit signalLocalIpId(id);
        mPreferences->store(&UserPreferences::saveIpAddress, 1);
    });
    connect(l, &BackendLadder::calendarPhrasesArrived, this, [this](CalendarPhrases phrases) {
        if (userPreferences().calendarPhrases != 0) {
            mView->showCalendarPhrases(phrases);
        }
    });
    connect(l, &BackendLadder::directUIsArrived, this, &MainWindowPresenter::signalDirectUIsToInput);
}

void MainWindowPresenter::connectBattery()
{
    BatteryWatch* b = mBattery;
    MainWindowView* v = mView;
    connect(b, &BatteryWatch::noticeShown, this, [v](int kind) { v->showLowbatView(kind); });
    connect(b, &BatteryWatch::deviceEnabled, this, [v](bool enabled) { v->setDeviceEnable(enabled); });
    connect(b, &BatteryWatch::errorRaised, this, &MainWindowPresenter::addErrorStatus);
    connect(b, &BatteryWatch::errorCleared, this, &MainWindowPresenter::removeErrorStatus);
    connect(b, &BatteryWatch::blinkImage, this, [v](int image) { v->setChargeUpTrayAnimationImage(image); });
}

UserPreferences MainWindowPresenter::userPreferences() const
{
    return mPreferences->get();
}

void MainWindowPresenter::store(int UserPreferences::*field, bool checked)
{
    mPreferences->store(field, int(checked));
}

// ---- error status

void MainWindowPresenter::addErrorStatus(int status)
{
    if (!mErrorStatus.contains(status)) {
        mErrorStatus.append(status);
    }
    mView->updateSystemTray(mErrorStatus.last());
}

void MainWindowPresenter::removeErrorStatus(int status)
{
    mErrorStatus.removeAll(status);
    mView->updateSystemTray(mErrorStatus.isEmpty() ? 0 : mErrorStatus.last());
}

// ---- the device page

void MainWindowPresenter::checkDpiButton(int level)
{
    // Level 2 is the first button, 0 the second, 1 the third.
    switch (level) {
        case 2:
            mView->setDeviceRadioLevel0Checked(true);
            break;
        case 0:
            mView->setDeviceRadioLevel1Checked(true);
            break;
        case 1:
            mView->setDeviceRadioLevel2Checked(true);
            break;
        default:
            break;
    }
}

void MainWindowPresenter::selectDpi(bool checked, int target)
{
    if (checked) {
        mLifecycle->selectDpi(target);
    }
}

void MainWindowPresenter::onRadioSelectDpi3(bool checked)
{
    selectDpi(checked, mLifecycle->deviceStatus().bestCpiValue);
}

int MainWindowPresenter::cpiLabel(int value)
{
    // Each label is the best value of a common screen width.
    static const int kLabels[][2] = {{854, 853}, {1067, 1066}, {1139, 1138}, {1201, 1200}, {1334, 1333}};
    for (const auto& label : kLabels) {
        if (value < label[0]) {
            return label[1];
        }
    }
    return value <= 1400 ? 1400 : 0;
}

void MainWindowPresenter::showPictures()
{
    MainWindowView* v = mView;
    mLadder->fetchPicture(mLifecycle->currentDeviceInfo().homeImage, [v](QString path) {
        if (path.isEmpty()) {
            v->setDefaultHomeImage();
        } else {
            v->setHomeImage(path);
        }
    });
    mLadder->fetchPicture(mLifecycle->currentDeviceInfo().explainImage, [v](QString path) {
        if (!path.isEmpty()) {
            v->setExplainImage(path);
        }
    });
    mLadder->fetchPicture(mLifecycle->currentDeviceInfo().navImage, [v](QString path) {
        if (!path.isEmpty()) {
            v->setNavImage(path);
        }
    });
}

// ---- the Bluetooth guidance

void MainWindowPresenter::onTimerConnectionCheck()
{
    if (!mView->isShow()) {
        // Only a console on the screen shows the guidance: the check rests until it is back.
        mConnectionCheckResting = true;
        mTimers[TimerConnectionCheck]->stop();
        return;
    }
    if (mLifecycle->awaitsPairing() && !mGuidanceShown) {
        mGuidanceShown = true;
        emit signalShowBLEGuidanceDialog();
    }
}

void MainWindowPresenter::hide()
{
    mGuidanceShown = false;
}

void MainWindowPresenter::onViewShown()
{
    if (mConnectionCheckResting) {
        mConnectionCheckResting = false;
        mTimers[TimerConnectionCheck]->start();
    }
}

// ---- preferences

void MainWindowPresenter::onPreferencesChange(UserPreferences preferences)
{
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

void MainWindowPresenter::changeLanguages(UserPreferences (*rule)(UserPreferences, int), int index)
{
    if (index < 0) {
        return;  // a box being cleared
    }
    const UserPreferences before = mPreferences->get();
    const UserPreferences after = rule(before, index);
    if (after.recognitionLanguage == before.recognitionLanguage &&
        after.voiceTranslateSourceLanguage == before.voiceTranslateSourceLanguage &&
        after.voiceTranslateTargetLanguage == before.voiceTranslateTargetLanguage &&
        after.lastVoiceTranslateSourceLanguage == before.lastVoiceTranslateSourceLanguage &&
        after.lastVoiceTranslateTargetLanguage == before.lastVoiceTranslateTargetLanguage &&
        after.textTranslateLanguage == before.textTranslateLanguage) {
        return;
    }
    mPreferences->change([&after](UserPreferences& p) { p = after; });
    mPreferences->save();
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

bool MainWindowPresenter::asksAutoRunAtStart() const
{
    return !isAppAutoRun() && !AppAutoRunUtils::isQuestionDeclined();
}

void MainWindowPresenter::openProductSite()
{
    DesktopLauncher().openUrl(AppConfig::getInstance()->productSiteUrl());
}

void MainWindowPresenter::onCheckUpdateHintOnOff(bool checked)
{
    mPreferences->store(&UserPreferences::checkUpdate, int(checked));
    QTimer* check = mTimers[TimerVersionCheck];
    if (checked) {
        check->start();
    } else if (check->isActive()) {
        check->stop();
    }
}

void MainWindowPresenter::onCheckAutoRunOnOff(bool checked)
{
    mPreferences->store(&UserPreferences::checkAppAutoRun, int(checked));
    if (mAutoRun != nullptr && !mAutoRun->setAppAutoRun(checked)) {
        QTimer::singleShot(500, this,
                           [this] { mView->setCheckAutoRunOnOffChecked(mAutoRun->isAppAutoRun()); });
    }
}

void MainWindowPresenter::onPreferenceSettingRadioButtonClickSend(bool checked)
{
    if (checked && userPreferences().isAutoSendMode != 0) {
        mPreferences->store(&UserPreferences::isAutoSendMode, int(0));
    }
}

void MainWindowPresenter::onPreferenceSettingRadioButtonAutoSend(bool checked)
{
    if (checked && userPreferences().isAutoSendMode == 0) {
        mPreferences->store(&UserPreferences::isAutoSendMode, int(1));
    }
}

// ---- network and version offers

void MainWindowPresenter::onInternetStateChange(bool state)
{
    mLadder->setOnline(state);
    if (state) {
        removeErrorStatus(3);
    } else {
        removeErrorStatus(7);
        addErrorStatus(3);
    }
}

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
    mPreferences->change([ms](UserPreferences& p) { p.workTime = ms; });
    mTimers[TimerWorkTime]->setInterval(ms);
    mTimers[TimerWorkTime]->stop();
    mTimers[TimerWorkReset]->stop();
    mPreferences->save();
}

void MainWindowPresenter::setRestEnable(bool enable)
{
    if (!enable) {
        mTimers[TimerWorkTime]->stop();
        mTimers[TimerWorkReset]->stop();
    }
    mPreferences->change([enable](UserPreferences& p) { p.restRemind = enable ? 1 : 0; });
    mPreferences->save();
}
