// The device lifecycle of the console presenter: the controller ladder on its own thread,
// the message loop, opening, identification, plug events and Bluetooth.
#include "Hid/DeviceManager.h"
#include "Recorder/RecordManager.h"
#include "Utils/CustomTimer.h"
#include "Utils/Logging.h"
#include "WidgetPresenter/BackendLadder.h"
#include "WidgetPresenter/ConsoleNotices.h"
#include "WidgetPresenter/MainWindowPresenter.h"
#include "WidgetPresenter/MainWindowView.h"

#include <QTimer>

namespace {

int parseHex(const QString& text)
{
    bool ok = false;
    const int value = text.toInt(&ok, 16);
    return ok ? value : -1;
}

bool inUsbRange(int number)
{
    return number >= 1 && number <= 65535;
}

}  // namespace

// Each tick decides under the status lock and talks to the device after letting it go: a
// slow enumeration or write must not hold up the main thread's slots, which take the lock
// for every key and mouse event.
void MainWindowPresenter::onTimerDeviceController()
{
    std::vector<std::function<void()>> io;
    bool open = false;
    {
        const Lock lock(mStatusMutex);
        open = deviceControllerStep(&io);
        if (mControllerResting) {
            // Decided under the lock, so that a wake-up either comes after this stop or finds
            // the ladder still running.
            mTimerDeviceController->stop();
        }
    }
    if (open) {
        openDevice();
    }
    for (const auto& request : io) {
        request();
    }
}

// One tick of the ladder: true when the device is to be opened; requests go into io.
bool MainWindowPresenter::deviceControllerStep(std::vector<std::function<void()>>* io)
{
    DeviceStatus& s = mDeviceStatus;
    DeviceManager* d = mDeviceManager;
    auto ask = [io, d](void (DeviceManager::*request)()) {
        io->push_back([d, request] { (d->*request)(); });
    };
    if (!s.opened) {
        return true;
    }
    if (!s.connected) {
        if (++mOpenWaitCount > kOpenWaitTicks) {
            addErrorStatus(1);
            // From here each tick would only say "no device" again, until a receiver is plugged
            // in or Bluetooth connects: both wake the ladder.
            mControllerResting = true;
        }
        return false;
    }
    if (d->state() != 1) {
        qCInfo(lcConsole) << "device link lost";
        s = DeviceStatus();
        mDeviceInitialised = false;
        addErrorStatus(1);
        runOnMain([this] { mView->showMouseSettingsUnknown(); });
        return false;
    }
    if (!s.ready) {
        ask(&DeviceManager::deviceReady);
        return false;
    }
    if (!s.activeKnown) {
        ask(&DeviceManager::getActive);
        return false;
    }
    if (!s.mouseActive) {
        return false;  // waits for the mouse to wake
    }
    if (!s.moduleKnown) {
        ask(&DeviceManager::getModule);
    }
    if (!s.dongleIdKnown) {
        ask(&DeviceManager::getDongleFlashID);
        return false;
    }
    if (!s.remoteIdKnown) {
        ask(&DeviceManager::getRemoteFlashID);
        return false;
    }
    if (!s.levelValuesKnown && s.levelValueTries < kLevelValueTries) {
        ask(&DeviceManager::getDPILevelValue);
        ++s.levelValueTries;
        return false;
    }
    if (!s.dpiKnown) {
        if (mUserPreferences.dpiValue < 3 || !s.levelValuesKnown) {
            ask(&DeviceManager::getDpi);
        } else {
            ask(&DeviceManager::getCpi);
        }
        return false;
    }
    if (syncLowbatReport(io)) {
        return false;
    }
    if (syncSetting(s.shake, &DeviceManager::getShake, &DeviceManager::setShake, io) ||
        syncSetting(s.lamplight, &DeviceManager::getLamplight, &DeviceManager::setLamplight, io) ||
        syncSetting(s.soundEffect, &DeviceManager::getSoundEffect, &DeviceManager::setSoundEffect, io)) {
        return false;
    }
    if (!mDeviceInitialised) {
        mDeviceInitialised = true;
        qCInfo(lcConsole) << "device initialised";
        // The HTTP ladder rests while it waits for a device; this is what it waited for.
        runOnMain([this] { mLadder->resume(); });
    }
    return false;
}

// Asks for a supported setting the mouse has not reported, else sends the user's choice.
bool MainWindowPresenter::syncSetting(DeviceStatus::Setting& setting, void (DeviceManager::*get)(),
                                      void (DeviceManager::*set)(bool),
                                      std::vector<std::function<void()>>* io)
{
    DeviceManager* d = mDeviceManager;
    if (!setting.supported) {
        return false;
    }
    if (!setting.known) {
        io->push_back([d, get] { (d->*get)(); });
        return true;
    }
    if (setting.status != setting.target) {
        const bool target = setting.target;
        io->push_back([d, set, target] { (d->*set)(target); });
        return true;
    }
    return false;
}

bool MainWindowPresenter::syncLowbatReport(std::vector<std::function<void()>>* io)
{
    DeviceStatus::Setting& report = mDeviceStatus.lowbatReport;
    report.supported = true;
    return syncSetting(report, &DeviceManager::getLowbatReport, &DeviceManager::setLowbatReport, io);
}

void MainWindowPresenter::onTimerDeviceMessage()
{
    if (mDeviceManager->state() == 0) {
        return;
    }
    std::vector<std::function<void()>> io;
    {
        const Lock lock(mStatusMutex);
        deviceMessageStep(&io);
    }
    for (const auto& request : io) {
        request();
    }
}

void MainWindowPresenter::deviceMessageStep(std::vector<std::function<void()>>* io)
{
    DeviceStatus& s = mDeviceStatus;
    DeviceManager* d = mDeviceManager;
    auto ask = [io, d](void (DeviceManager::*request)()) {
        io->push_back([d, request] { (d->*request)(); });
    };
    if (!s.moduleKnown) {
        ask(&DeviceManager::getModule);
    } else if (!s.activeKnown) {
        ask(&DeviceManager::getActive);
    } else if (mDeviceInitialised && s.mouseActive) {
        switch (s.messageTick % 5) {
            case 0:
                if (!s.levelValuesKnown && s.levelValueTries < kLevelValueTries) {
                    ask(&DeviceManager::getDPILevelValue);
                    ++s.levelValueTries;
                    return;
                }
                if (s.dpiKnown) {
                    syncDpi(io);
                } else if (mUserPreferences.dpiValue >= 3) {
                    ask(s.levelValuesKnown ? &DeviceManager::getCpi : &DeviceManager::getDpi);
                    return;
                } else {
                    ask(&DeviceManager::getDpi);
                }
                break;
            case 1:
                syncLowbatReport(io);
                break;
            case 2:
                if (s.shake.supported) {
                    syncSetting(s.shake, &DeviceManager::getShake, &DeviceManager::setShake, io);
                    break;
                }
                Q_FALLTHROUGH();
            case 3:
                if (s.lamplight.supported) {
                    syncSetting(s.lamplight, &DeviceManager::getLamplight, &DeviceManager::setLamplight, io);
                    break;
                }
                Q_FALLTHROUGH();
            default:
                syncSetting(s.soundEffect, &DeviceManager::getSoundEffect, &DeviceManager::setSoundEffect,
                            io);
                break;
        }
    }
    ++s.messageTick;
}

void MainWindowPresenter::syncDpi(std::vector<std::function<void()>>* io)
{
    const DeviceStatus& s = mDeviceStatus;
    if (s.dpiLevel.level000 == s.targetDpi) {
        return;
    }
    DeviceManager* d = mDeviceManager;
    const int target = s.targetDpi;
    if (target >= 3) {
        io->push_back([d, target] { d->setCpi(target); });
    } else {
        io->push_back([d, target] { d->setDpi(target); });
    }
}

// Decides under the lock, enumerates and opens without it, records the outcome under it.
void MainWindowPresenter::openDevice()
{
    int savedVid = 0;
    int savedPid = 0;
    QString savedUuid;
    QList<DeviceInfo> rows;
    {
        const Lock lock(mStatusMutex);
        DeviceStatus& s = mDeviceStatus;
        if (mDeviceOpenTime.id == -1) {
            runOnMain([this] { getDeviceOpenTime(); });
            return;
        }
        if (!s.delayStarted) {
            // Counts as running from now: the timer itself starts on the main thread.
            mDelayOpenActive = true;
            emit signalStartDeviceDelayOpen();
            s.delayStarted = true;
            return;
        }
        if (mDelayOpenActive) {
            return;
        }
        savedVid = mUserPreferences.saveVid;
        savedPid = mUserPreferences.savePid;
        savedUuid = mUserPreferences.saveDeviceUuid;
        rows = mDeviceInfoList;
    }
    DeviceManager* d = mDeviceManager;
    if (d->state() == 1) {
        const Lock lock(mStatusMutex);
        mDeviceStatus.opened = true;
        return;
    }
    const QList<HidDevice> devices = d->enumerateHidDevice();
    auto tryOpen = [&devices, d](int vid, int pid) {
        for (const HidDevice& device : devices) {
            if (device.vid == vid && device.pid == pid && d->openHidDevice(vid, pid)) {
                return true;
            }
        }
        return false;
    };
    if (inUsbRange(savedPid) && inUsbRange(savedVid) && tryOpen(savedVid, savedPid)) {
        qCInfo(lcConsole) << "open device success!";
        const Lock lock(mStatusMutex);
        mCurDevInf.vid = QString::number(savedVid, 16);
        mCurDevInf.pid = QString::number(savedPid, 16);
        mCurDevInf.customerCode = mUserPreferences.saveCustomerCode;
        mCurDevInf.customerName = mUserPreferences.saveCustomerName;
        mCurDevInf.homeImage = mUserPreferences.saveHomeImage;
        mCurDevInf.explainImage = mUserPreferences.saveExplainImage;
        mCurDevInf.navImage = mUserPreferences.saveNavImage;
        openSucceeded();
        return;
    }
    if (rows.isEmpty()) {
        return;
    }
    for (const DeviceInfo& row : qAsConst(rows)) {
        if (row.enable != 0 && tryOpen(parseHex(row.vid), parseHex(row.pid))) {
            qCInfo(lcConsole) << "open device success!";
            const Lock lock(mStatusMutex);
            mCurDevInf = row;
            openSucceeded();
            return;
        }
    }
    emit signalStartCheckDeviceConnectionTimer();
    if (!savedUuid.isEmpty()) {
        d->openBLEDevice(savedUuid);
    }
    const Lock lock(mStatusMutex);
    if (savedUuid.isEmpty()) {
        mBleAnswered = true;
    }
    addErrorStatus(1);
    mDeviceStatus.opened = true;
}

void MainWindowPresenter::openSucceeded()
{
    mDeviceStatus.connected = true;
    mOpenWaitCount = 0;
    runOnMain([this] {
        mDeviceState.insert = true;
        removeErrorStatus(1);
        mView->setDeviceTypeIcon(0);
    });
}

void MainWindowPresenter::startDelayOpen(bool singleShot)
{
    QTimer* delay = mTimers[TimerDeviceDelayOpen];
    delay->setSingleShot(singleShot);
    mDelayOpenActive = true;
    delay->start();
}

void MainWindowPresenter::getDeviceOpenTime()
{
    if (mLadder->requestOpenTime()) {
        return;
    }
    const Lock lock(mStatusMutex);
    mDeviceOpenTime.id = 1;
    mDeviceOpenTime.time = mUserPreferences.delayOpenDeviceTime;
    mTimers[TimerDeviceDelayOpen]->setInterval(mDeviceOpenTime.time);
}

void MainWindowPresenter::onDeviceReady()
{
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.ready = true;
    }
    if (mLadder->isOnline()) {
        removeErrorStatus(0);
    }
    mTimers[TimerDeviceMessage]->start();
}

void MainWindowPresenter::onDeviceDongleFlashID(QString id)
{
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.dongleIdKnown = true;
    }
    mDevice.dongleFlashID = id;
}

void MainWindowPresenter::onDeviceRemoteFlashID(QString id)
{
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.remoteIdKnown = true;
    }
    mDevice.remoteFlashID = id;
}

void MainWindowPresenter::onDeviceMouseActive(bool active)
{
    const Lock lock(mStatusMutex);
    mDeviceStatus.activeKnown = true;
    mDeviceStatus.mouseActive = active;
}

void MainWindowPresenter::onDeviceModule(int lamplightModule, int shakeModule, int soundEffectModule,
                                         int keyType, QString customerCode, int mouseWriedType)
{
    Q_UNUSED(mouseWriedType);
    DeviceStatus::Setting lamplight;
    DeviceStatus::Setting shake;
    DeviceStatus::Setting soundEffect;
    bool first = false;
    {
        const Lock lock(mStatusMutex);
        DeviceStatus& s = mDeviceStatus;
        mUserPreferences.keyType = keyType;
        s.keyType = keyType;
        s.lamplight.supported = lamplightModule != 0;
        s.shake.supported = shakeModule != 0;
        s.soundEffect.supported = soundEffectModule != 0;
        lamplight = s.lamplight;
        shake = s.shake;
        soundEffect = s.soundEffect;
        first = !s.moduleAnswered;
        s.moduleAnswered = true;
    }
    // The file is written with the lock let go (as everywhere): the controller waits for it.
    persistPreferences();

    if (first) {
        // Once per mouse: later replies must not undo what the user set on the page since.
        // The switches stay in their unknown look until the mouse reports each setting.
        mView->showLamplightModule(lamplightModule);
        mView->setCheckLightingEffectOnOffEnabled(lamplight.supported);
        mView->setCheckShakeOnOffEnabled(shake.supported);
        mView->setCheckSoundEffectOnOffEnabled(soundEffect.supported);
        mView->setDeviceSettingsEnabled(true);
        mView->setSignalClickModeEnable(keyType == 0);
        mDeviceManager->setLowbatReport(true);
        mView->setExplain(true);
    }

    DeviceInfo current;
    {
        const Lock lock(mStatusMutex);
        UserPreferences& p = mUserPreferences;
        if (mLadder->isOnline()) {
            const auto row =
                std::find_if(mDeviceInfoList.cbegin(), mDeviceInfoList.cend(),
                             [&](const DeviceInfo& info) { return info.customerCode == customerCode; });
            if (row == mDeviceInfoList.cend()) {
                unknownCustomerCode(customerCode);
                return;
            }
            mCurDevInf = *row;
            p.isIFlySpeech = row->isIFlySpeech != 0;
            mDevice.customerCode = customerCode;
        }
        p.savePid = qMax(0, parseHex(mCurDevInf.pid));
        p.saveVid = qMax(0, parseHex(mCurDevInf.vid));
        p.saveCustomerCode = mCurDevInf.customerCode;
        p.saveCustomerName = mCurDevInf.customerName;
        p.saveHomeImage = mCurDevInf.homeImage;
        p.saveExplainImage = mCurDevInf.explainImage;
        p.saveNavImage = mCurDevInf.navImage;
        current = mCurDevInf;
    }
    persistPreferences();
    emit signalGetDeviceInfo(current);
    {
        const Lock lock(mStatusMutex);
        mDeviceStatus.moduleKnown = true;
    }
    checkHomeImage();
    checkExplainImage();
    checkNavImage();
    mView->setExplain(true);
}

// Under the status lock. A mouse the backend does not list is asked again a few times (the
// list may have been refreshed meanwhile), then taken as it is: the ladders go on to its
// settings with the console's own branding.
void MainWindowPresenter::unknownCustomerCode(const QString& customerCode)
{
    DeviceStatus& s = mDeviceStatus;
    // Before the list has come there is nothing to match against yet.
    if (s.moduleKnown || !mLadder->answered(BackendLadder::StepDeviceList)) {
        return;
    }
    if (++s.moduleTries < kModuleTries) {
        qCInfo(lcConsole) << "打开设备后无法匹配客户编码????" << customerCode;
        return;
    }
    s.moduleKnown = true;
    qCWarning(lcConsole).noquote() << "customer code" << customerCode
                                   << "is not in the backend's device list;"
                                   << "asked" << kModuleTries << "times, going on without its branding";
    mView->setDeviceName(tr("未识别的鼠标（客户编码 %1）").arg(customerCode));
}

void MainWindowPresenter::checkHomeImage()
{
    mLadder->fetchPicture(currentDeviceInfo().homeImage, [this](QString path) {
        if (path.isEmpty()) {
            mView->setDefaultHomeImage();
        } else {
            mView->setHomeImage(path);
        }
    });
}

void MainWindowPresenter::checkExplainImage()
{
    mLadder->fetchPicture(currentDeviceInfo().explainImage, [this](QString path) {
        if (!path.isEmpty()) {
            mView->setExplainImage(path);
        }
    });
}

void MainWindowPresenter::checkNavImage()
{
    mLadder->fetchPicture(currentDeviceInfo().navImage, [this](QString path) {
        if (!path.isEmpty()) {
            mView->setNavImage(path);
        }
    });
}

void MainWindowPresenter::onUSBChange(int vid, int pid, bool enable)
{
    if (enable) {
        deviceIn(vid, pid);
    } else {
        deviceOut(vid, pid);
    }
}

void MainWindowPresenter::deviceIn(int vid, int pid)
{
    const DeviceInfo current = currentDeviceInfo();
    if (parseHex(current.vid) == vid && parseHex(current.pid) == pid) {
        deviceInsert(true);
        return;
    }
    QList<DeviceInfo> rows;
    {
        const Lock lock(mStatusMutex);
        rows = mDeviceInfoList;
    }
    for (const DeviceInfo& row : qAsConst(rows)) {
        if (parseHex(row.vid) == vid && parseHex(row.pid) == pid) {
            deviceInsert(true);
        }
    }
}

void MainWindowPresenter::deviceOut(int vid, int pid)
{
    const DeviceInfo current = currentDeviceInfo();
    if (parseHex(current.vid) == vid && parseHex(current.pid) == pid) {
        deviceInsert(false);
    }
}

void MainWindowPresenter::deviceInsert(bool state)
{
    if (deviceInsertStep(state)) {
        // Outside the lock: closing joins the link's threads.
        mDeviceManager->close();
        if (mRecordManager != nullptr) {
            mRecordManager->destroyRecorder();
        }
    }
    wakeDeviceController();
}

void MainWindowPresenter::wakeDeviceController()
{
    {
        const Lock lock(mStatusMutex);
        if (!mControllerResting) {
            return;
        }
        mControllerResting = false;
    }
    if (mTimerDeviceController) {
        mTimerDeviceController->start();
    }
}

// True when the device is to be closed.
bool MainWindowPresenter::deviceInsertStep(bool state)
{
    const Lock lock(mStatusMutex);
    mOpenWaitCount = 0;
    if (state) {
        if (!mDeviceState.insert) {
            mDeviceState.insertChange = true;
            mDeviceState.insert = true;
        }
        if (mDeviceState.insertChange && mDeviceState.insert) {
            if (mNotices != nullptr) {
                mNotices->showDeviceChange(true);
            }
            mDeviceState.insertChange = false;
            startDelayOpen(true);
            mDeviceStatus.delayStarted = true;
            // An attempt that ended without any link (receiver absent, Bluetooth not there)
            // opens again once the new delay has run.
            if (mDeviceStatus.opened && !mDeviceStatus.connected) {
                mDeviceStatus.opened = false;
            }
        }
        return false;
    }
    if (mDeviceState.insert) {
        mDeviceState.insertChange = true;
        mDeviceState.insert = false;
        mDeviceState.connected = false;
    }
    if (mDeviceState.insertChange && !mDeviceState.insert) {
        if (mNotices != nullptr) {
            mNotices->showDeviceChange(false);
        }
        mDeviceState.insertChange = false;
        addErrorStatus(1);
        mTimers[TimerDeviceMessage]->stop();
        mDeviceStatus = DeviceStatus();
        mDeviceInitialised = false;
        mView->setVipFunction(false);
        mView->showMouseSettingsUnknown();
        mView->setExplain(false);
        // Repeating: openDevice() stays parked until the next insertion.
        startDelayOpen(false);
        mDeviceStatus.delayStarted = true;
        return true;
    }
    return false;
}

void MainWindowPresenter::onBLEDeviceConnectState(bool connected, QString uuid)
{
    bool answered = false;
    {
        const Lock lock(mStatusMutex);
        answered = mBleAnswered;
        mBleAnswered = true;
        if (connected) {
            mUserPreferences.saveDeviceUuid = uuid;
            mDeviceStatus.connected = true;
        }
    }
    wakeDeviceController();
    if (connected) {
        emit signalHideBLEGuidanceDialog();
        if (mNotices != nullptr) {
            mNotices->showBleConnected();
        }
        persistPreferences();
        mView->setDeviceTypeIcon(1);
    } else if (!answered) {
        emit signalShowBLEGuidanceDialog();
    }
}

void MainWindowPresenter::onTimerConnectionCheck()
{
    if (!mView->isShow()) {
        // Only a console on the screen shows the guidance: the check rests until it is back.
        mConnectionCheckResting = true;
        mTimers[TimerConnectionCheck]->stop();
        return;
    }
    bool answered = false;
    {
        const Lock lock(mStatusMutex);
        answered = mBleAnswered;
    }
    if (mView->isShow() && mDeviceManager->state() != 1 && answered && !mGuidanceShown) {
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
