#include "WidgetPresenter/DeviceLifecycle.h"

#include "Hid/DeviceManager.h"
#include "Recorder/RecordManager.h"
#include "Utils/CustomTimer.h"
#include "Utils/Logging.h"
#include "WidgetPresenter/ConsoleNotices.h"
#include "WidgetPresenter/PreferencesRecord.h"

#include <QThread>
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

DeviceLifecycle::DeviceLifecycle(const Collaborators& collaborators, QObject* parent)
    : QObject(parent),
      mDeviceManager(collaborators.device),
      mRecordManager(collaborators.record),
      mNotices(collaborators.notices),
      mPreferences(collaborators.preferences),
      mScreenWidth(collaborators.screenWidth),
      mOnline(collaborators.online)
{
    mDeviceOpenTime.id = -1;
    mTimerDeviceController =
        std::make_unique<CustomTimer>(collaborators.controllerMs, [this] { onTimerDeviceController(); });
    mTimerDeviceController->setObjectName(QStringLiteral("DeviceControl"));
    for (QTimer*& timer : mTimers) {
        timer = new QTimer(this);
    }
    QTimer* message = mTimers[TimerDeviceMessage];
    message->setInterval(collaborators.messageMs);
    connect(message, &QTimer::timeout, this, &DeviceLifecycle::onTimerDeviceMessage);
    QTimer* delayOpen = mTimers[TimerDeviceDelayOpen];
    delayOpen->setInterval(mPreferences->get().delayOpenDeviceTime);
    delayOpen->setSingleShot(true);
    connect(delayOpen, &QTimer::timeout, this, [this, delayOpen] {
        if (delayOpen->isSingleShot()) {
            mDelayOpenActive = false;
        }
    });
    connect(this, &DeviceLifecycle::delayOpenWanted, this, [this, delayOpen] {
        // Queued from the controller's thread: an unplug may have parked the delay since, and
        // a single shot now would let the ladder try Bluetooth while the receiver is out.
        if (delayOpen->isActive() && !delayOpen->isSingleShot()) {
            return;
        }
        startDelayOpen(true);
    });
    connectDevice();
}

DeviceLifecycle::~DeviceLifecycle()
{
    // The controller's thread must be gone before the state it reads.
    shutDown();
}

void DeviceLifecycle::start()
{
    mTimerDeviceController->start();
}

void DeviceLifecycle::shutDown()
{
    mTimerDeviceController->stop();
    mTimerDeviceController->wait();
    for (QTimer* timer : mTimers) {
        timer->stop();
    }
}

void DeviceLifecycle::connectDevice()
{
    DeviceManager* d = mDeviceManager;
    connect(d, &DeviceManager::signalBLEDeviceConnectState, this, &DeviceLifecycle::onBLEDeviceConnectState);
    connect(d, &DeviceManager::signalDeviceReady, this, &DeviceLifecycle::onDeviceReady);
    connect(d, &DeviceManager::signalDongleFlashID, this, &DeviceLifecycle::onDeviceDongleFlashID);
    connect(d, &DeviceManager::signalRemoteFlashID, this, &DeviceLifecycle::onDeviceRemoteFlashID);
    connect(d, &DeviceManager::signalMouseActive, this, &DeviceLifecycle::onDeviceMouseActive);
    connect(d, &DeviceManager::signalModule, this, &DeviceLifecycle::onDeviceModule);
    connect(d, &DeviceManager::signalDpi, this, &DeviceLifecycle::onDeviceDpi);
    connect(d, &DeviceManager::signalChangeMouseDpiKey, this, &DeviceLifecycle::onChangeMouseDpiKey);
    connect(d, &DeviceManager::signalDpiLevelValue, this, &DeviceLifecycle::onDeviceDpiLevelValue);
    connect(d, &DeviceManager::signalCpi, this, &DeviceLifecycle::onDeviceCpi);
    connect(d, &DeviceManager::signalLamplight, this, &DeviceLifecycle::onDeviceLamplight);
    connect(d, &DeviceManager::signalLowbatReport, this, &DeviceLifecycle::onDeviceLowbatReport);
    connect(d, &DeviceManager::signalShake, this, &DeviceLifecycle::onDeviceShake);
    connect(d, &DeviceManager::signalSoundEffect, this, &DeviceLifecycle::onDeviceSoundEffect);
    connect(d, &DeviceManager::signalUSBChange, this, &DeviceLifecycle::onUSBChange);
    // Passed on for the tray: the view reaches the device only through this class.
    connect(d, &DeviceManager::signalDeviceReady, this, &DeviceLifecycle::deviceReady);
    connect(d, &DeviceManager::signalBLEDeviceConnectState, this,
            [this](bool connected, const QString&) { emit bleLinkChanged(connected); });
    connect(d, &DeviceManager::signalMouseActive, this, &DeviceLifecycle::mouseActive);
    connect(d, &DeviceManager::signalBatteryValue, this, &DeviceLifecycle::batteryFigure);
}

bool DeviceLifecycle::overBluetooth() const
{
    return mDeviceManager != nullptr && mDeviceManager->getDeviceType() == DeviceManager::DeviceTypeBle;
}

void DeviceLifecycle::runOnMain(std::function<void()> fn)
{
    if (QThread::currentThread() == thread()) {
        fn();
    } else {
        QMetaObject::invokeMethod(this, std::move(fn), Qt::QueuedConnection);
    }
}

DeviceStatus DeviceLifecycle::deviceStatus() const
{
    const Lock lock(mMutex);
    return mDeviceStatus;
}

DeviceInfo DeviceLifecycle::currentDeviceInfo() const
{
    const Lock lock(mMutex);
    return mCurDevInf;
}

bool DeviceLifecycle::isDeviceInitialised() const
{
    const Lock lock(mMutex);
    return mDeviceInitialised;
}

bool DeviceLifecycle::isDeviceControllerRunning() const
{
    return mTimerDeviceController->isActive();
}

bool DeviceLifecycle::awaitsPairing() const
{
    {
        const Lock lock(mMutex);
        if (!mBleAnswered) {
            return false;
        }
    }
    return mDeviceManager->state() != 1;
}

// ---- the controller ladder, on its own thread

// Each tick decides under the lock and talks to the device after letting it go: a slow
// enumeration or write must not hold up the main thread's slots.
void DeviceLifecycle::onTimerDeviceController()
{
    Io io;
    bool open = false;
    {
        const Lock lock(mMutex);
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
bool DeviceLifecycle::deviceControllerStep(Io* io)
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
            emit errorRaised(1);
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
        emit errorRaised(1);
        emit linkLost();
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
        if (mPreferences->get().dpiValue < 3 || !s.levelValuesKnown) {
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
        emit initialised();
    }
    return false;
}

// Asks for a supported setting the mouse has not reported, else sends the user's choice.
bool DeviceLifecycle::syncSetting(DeviceStatus::Setting& setting, void (DeviceManager::*get)(),
                                  void (DeviceManager::*set)(bool), Io* io)
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

bool DeviceLifecycle::syncLowbatReport(Io* io)
{
    DeviceStatus::Setting& report = mDeviceStatus.lowbatReport;
    report.supported = true;
    return syncSetting(report, &DeviceManager::getLowbatReport, &DeviceManager::setLowbatReport, io);
}

// Decides under the lock, enumerates and opens without it, records the outcome under it.
void DeviceLifecycle::openDevice()
{
    UserPreferences saved;
    QList<DeviceInfo> rows;
    {
        const Lock lock(mMutex);
        DeviceStatus& s = mDeviceStatus;
        if (mDeviceOpenTime.id == -1) {
            emit openTimeWanted();
            return;
        }
        if (!s.delayStarted) {
            // Counts as running from now: the timer itself starts on the main thread.
            mDelayOpenActive = true;
            emit delayOpenWanted();
            s.delayStarted = true;
            return;
        }
        if (mDelayOpenActive) {
            return;
        }
        saved = mPreferences->get();
        rows = mDeviceInfoList;
    }
    DeviceManager* d = mDeviceManager;
    if (d->state() == 1) {
        const Lock lock(mMutex);
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
    if (inUsbRange(saved.savePid) && inUsbRange(saved.saveVid) && tryOpen(saved.saveVid, saved.savePid)) {
        qCInfo(lcConsole) << "open device success!";
        const Lock lock(mMutex);
        mCurDevInf.vid = QString::number(saved.saveVid, 16);
        mCurDevInf.pid = QString::number(saved.savePid, 16);
        mCurDevInf.customerCode = saved.saveCustomerCode;
        mCurDevInf.customerName = saved.saveCustomerName;
        mCurDevInf.homeImage = saved.saveHomeImage;
        mCurDevInf.explainImage = saved.saveExplainImage;
        mCurDevInf.navImage = saved.saveNavImage;
        openSucceeded();
        return;
    }
    if (rows.isEmpty()) {
        return;
    }
    for (const DeviceInfo& row : qAsConst(rows)) {
        if (row.enable != 0 && tryOpen(parseHex(row.vid), parseHex(row.pid))) {
            qCInfo(lcConsole) << "open device success!";
            const Lock lock(mMutex);
            mCurDevInf = row;
            openSucceeded();
            return;
        }
    }
    emit connectionCheckWanted();
    if (!saved.saveDeviceUuid.isEmpty()) {
        d->openBLEDevice(saved.saveDeviceUuid);
    }
    const Lock lock(mMutex);
    if (saved.saveDeviceUuid.isEmpty()) {
        mBleAnswered = true;
    }
    emit errorRaised(1);
    mDeviceStatus.opened = true;
}

// Under the lock, on the controller's thread.
void DeviceLifecycle::openSucceeded()
{
    mDeviceStatus.connected = true;
    mOpenWaitCount = 0;
    runOnMain([this] {
        {
            const Lock lock(mMutex);
            mDeviceState.insert = true;
        }
        emit errorCleared(1);
        emit connected(0);
    });
}

// ---- the message loop and the device's replies, on the main thread

void DeviceLifecycle::onTimerDeviceMessage()
{
    if (mDeviceManager->state() == 0) {
        return;
    }
    Io io;
    {
        const Lock lock(mMutex);
        deviceMessageStep(&io);
    }
    for (const auto& request : io) {
        request();
    }
}

void DeviceLifecycle::deviceMessageStep(Io* io)
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
                } else if (mPreferences->get().dpiValue >= 3) {
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

void DeviceLifecycle::syncDpi(Io* io)
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

void DeviceLifecycle::setDeviceList(const QList<DeviceInfo>& list)
{
    bool found = false;
    QString unlistedCode;
    DeviceInfo current;
    {
        const Lock lock(mMutex);
        mDeviceInfoList = list;
        mDeviceListKnown = true;
        const DeviceStatus& s = mDeviceStatus;
        // A mouse taken by its saved branding while the list was missing is named now.
        if (!s.moduleKnown || s.lookedUp || s.customerCode.isEmpty()) {
            return;
        }
        const auto row = std::find_if(list.cbegin(), list.cend(), [&](const DeviceInfo& info) {
            return info.customerCode == s.customerCode;
        });
        if (row == list.cend()) {
            unlistedCode = s.customerCode;
        } else {
            mCurDevInf = *row;
            current = *row;
            found = true;
        }
    }
    if (found) {
        identify(current, true, current.isIFlySpeech != 0);
        return;
    }
    qCWarning(lcConsole).noquote() << "customer code" << unlistedCode
                                   << "is not in the backend's device list; going on without its branding";
    {
        const Lock lock(mMutex);
        mDeviceStatus.lookedUp = true;  // said once
    }
    emit unlisted(unlistedCode);
}

void DeviceLifecycle::setOpenTime(const DeviceOpenTime& openTime)
{
    {
        const Lock lock(mMutex);
        mDeviceOpenTime = openTime;
    }
    mPreferences->change([&openTime](UserPreferences& p) { p.delayOpenDeviceTime = openTime.time; });
    mTimers[TimerDeviceDelayOpen]->setInterval(openTime.time);
}

void DeviceLifecycle::useSavedOpenDelay()
{
    DeviceOpenTime openTime;
    openTime.id = 1;
    openTime.time = mPreferences->get().delayOpenDeviceTime;
    setOpenTime(openTime);
}

void DeviceLifecycle::startDelayOpen(bool singleShot)
{
    QTimer* delay = mTimers[TimerDeviceDelayOpen];
    delay->setSingleShot(singleShot);
    mDelayOpenActive = true;
    delay->start();
}

void DeviceLifecycle::onDeviceReady()
{
    {
        const Lock lock(mMutex);
        mDeviceStatus.ready = true;
    }
    if (isOnline()) {
        emit errorCleared(0);
    }
    mTimers[TimerDeviceMessage]->start();
}

void DeviceLifecycle::onDeviceDongleFlashID(QString id)
{
    {
        const Lock lock(mMutex);
        mDeviceStatus.dongleIdKnown = true;
    }
    mDevice.dongleFlashID = id;
}

void DeviceLifecycle::onDeviceRemoteFlashID(QString id)
{
    {
        const Lock lock(mMutex);
        mDeviceStatus.remoteIdKnown = true;
    }
    mDevice.remoteFlashID = id;
}

void DeviceLifecycle::onDeviceMouseActive(bool active)
{
    const Lock lock(mMutex);
    mDeviceStatus.activeKnown = true;
    mDeviceStatus.mouseActive = active;
}

void DeviceLifecycle::onDeviceModule(int lamplightModule, int shakeModule, int soundEffectModule, int keyType,
                                     QString customerCode, int mouseWriedType)
{
    Q_UNUSED(mouseWriedType);
    bool first = false;
    {
        const Lock lock(mMutex);
        DeviceStatus& s = mDeviceStatus;
        s.keyType = keyType;
        s.lamplight.supported = lamplightModule != 0;
        s.shake.supported = shakeModule != 0;
        s.soundEffect.supported = soundEffectModule != 0;
        first = !s.moduleAnswered;
        s.moduleAnswered = true;
    }
    // The file is written with the lock let go (as everywhere): the controller waits for it.
    mPreferences->store(&UserPreferences::keyType, keyType);

    if (first) {
        // Once per mouse: later replies must not undo what the user set on the page since.
        emit modulesKnown(lamplightModule, lamplightModule != 0, shakeModule != 0, soundEffectModule != 0,
                          keyType);
        mDeviceManager->setLowbatReport(true);
    }

    // Until the backend's list has come (offline, or the backend is down) the mouse is taken as
    // the one saved last time; the list, when it comes, names it properly.
    const bool online = isOnline();
    bool unmatched = false;
    bool givenUp = false;
    bool lookedUp = false;
    bool iFlySpeech = false;
    DeviceInfo current;
    {
        const Lock lock(mMutex);
        if (online && mDeviceListKnown) {
            const auto row =
                std::find_if(mDeviceInfoList.cbegin(), mDeviceInfoList.cend(),
                             [&](const DeviceInfo& info) { return info.customerCode == customerCode; });
            if (row == mDeviceInfoList.cend()) {
                unmatched = true;
                givenUp = unknownCustomerCode(customerCode);
            } else {
                mCurDevInf = *row;
                lookedUp = true;
                iFlySpeech = row->isIFlySpeech != 0;
            }
        }
        if (!unmatched) {
            mDeviceStatus.customerCode = customerCode;
        }
        current = mCurDevInf;
    }
    if (unmatched) {
        if (givenUp) {
            emit unlisted(customerCode);
        }
        return;
    }
    identify(current, lookedUp, iFlySpeech);
}

void DeviceLifecycle::identify(const DeviceInfo& info, bool lookedUp, bool iFlySpeech)
{
    QString customerCode;
    {
        const Lock lock(mMutex);
        customerCode = mDeviceStatus.customerCode;
    }
    // The registration names the mouse by what it says, whichever branding the console shows.
    mDevice.customerCode = customerCode;
    mPreferences->change([&](UserPreferences& p) {
        if (lookedUp) {
            p.isIFlySpeech = iFlySpeech;
        }
        p.savePid = qMax(0, parseHex(info.pid));
        p.saveVid = qMax(0, parseHex(info.vid));
        p.saveCustomerCode = info.customerCode;
        p.saveCustomerName = info.customerName;
        p.saveHomeImage = info.homeImage;
        p.saveExplainImage = info.explainImage;
        p.saveNavImage = info.navImage;
    });
    mPreferences->save();
    {
        const Lock lock(mMutex);
        mDeviceStatus.moduleKnown = true;
        mDeviceStatus.lookedUp = lookedUp;
    }
    emit identified(info);
}

// A mouse the backend does not list is asked again a few times (the list may have been
// refreshed meanwhile), then taken as it is: the ladders go on to its settings with the
// console's own branding.
bool DeviceLifecycle::unknownCustomerCode(const QString& customerCode)
{
    DeviceStatus& s = mDeviceStatus;
    if (s.moduleKnown) {
        return false;
    }
    if (++s.moduleTries < kModuleTries) {
        qCInfo(lcConsole) << "打开设备后无法匹配客户编码????" << customerCode;
        return false;
    }
    s.moduleKnown = true;
    s.lookedUp = true;
    qCWarning(lcConsole).noquote() << "customer code" << customerCode
                                   << "is not in the backend's device list;"
                                   << "asked" << kModuleTries << "times, going on without its branding";
    return true;
}

void DeviceLifecycle::onUSBChange(int vid, int pid, bool enable)
{
    QList<DeviceInfo> rows;
    DeviceInfo current;
    {
        const Lock lock(mMutex);
        rows = mDeviceInfoList;
        current = mCurDevInf;
    }
    auto matches = [vid, pid](const DeviceInfo& info) {
        return parseHex(info.vid) == vid && parseHex(info.pid) == pid;
    };
    if (matches(current)) {
        deviceInsert(enable);
        return;
    }
    if (!enable) {
        return;
    }
    for (const DeviceInfo& row : qAsConst(rows)) {
        if (matches(row)) {
            deviceInsert(true);
        }
    }
}

void DeviceLifecycle::deviceInsert(bool state)
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

void DeviceLifecycle::wakeDeviceController()
{
    {
        const Lock lock(mMutex);
        if (!mControllerResting) {
            return;
        }
        mControllerResting = false;
    }
    mTimerDeviceController->start();
}

// True when the device is to be closed.
bool DeviceLifecycle::deviceInsertStep(bool state)
{
    bool changed = false;
    {
        const Lock lock(mMutex);
        mOpenWaitCount = 0;
        if (mDeviceState.insert != state) {
            mDeviceState.insertChange = true;
            mDeviceState.insert = state;
        }
        if (mDeviceState.insertChange) {
            changed = true;
            mDeviceState.insertChange = false;
            if (state) {
                startDelayOpen(true);
                // An attempt that ended without any link (receiver absent, Bluetooth not there)
                // opens again once the new delay has run.
                if (mDeviceStatus.opened && !mDeviceStatus.connected) {
                    mDeviceStatus.opened = false;
                }
            } else {
                mTimers[TimerDeviceMessage]->stop();
                mDeviceStatus = DeviceStatus();
                mDeviceInitialised = false;
                // Repeating: openDevice() stays parked until the next insertion.
                startDelayOpen(false);
            }
            mDeviceStatus.delayStarted = true;
        }
    }
    if (!changed) {
        return false;
    }
    if (mNotices != nullptr) {
        mNotices->showDeviceChange(state);
    }
    if (state) {
        return false;
    }
    emit errorRaised(1);
    emit unplugged();
    return true;
}

void DeviceLifecycle::onBLEDeviceConnectState(bool connected, QString uuid)
{
    bool answered = false;
    {
        const Lock lock(mMutex);
        answered = mBleAnswered;
        mBleAnswered = true;
        if (connected) {
            mDeviceStatus.connected = true;
        }
    }
    if (connected) {
        mPreferences->change([&uuid](UserPreferences& p) { p.saveDeviceUuid = uuid; });
    }
    wakeDeviceController();
    if (connected) {
        emit bleConnected();
        if (mNotices != nullptr) {
            mNotices->showBleConnected();
        }
        mPreferences->save();
    } else if (!answered) {
        emit bleGuidanceWanted();
    }
}

// ---- the device page's settings: what the mouse reported and what the user wants

void DeviceLifecycle::onDeviceDpi(int level)
{
    bool first = false;
    bool show = false;
    {
        const Lock lock(mMutex);
        DeviceStatus& s = mDeviceStatus;
        s.dpiLevel.level000 = level;
        if (!s.dpiKnown) {
            const int saved = mPreferences->get().dpiValue;
            s.dpiKnown = true;
            s.targetDpi = saved < 3 ? saved : 0;
            first = true;
        } else {
            show = level == s.targetDpi;
        }
    }
    if (first) {
        emit settingsEnabled();
    }
    if (first || show) {
        emit speedShown(level);
    }
}

void DeviceLifecycle::onDeviceCpi(int value)
{
    bool first = false;
    bool reached = false;
    {
        const Lock lock(mMutex);
        DeviceStatus& s = mDeviceStatus;
        s.dpiLevel.level000 = value;
        if (!s.dpiKnown) {
            s.dpiKnown = true;
            s.targetDpi = s.bestCpiValue;
            first = true;
        } else {
            reached = value == s.targetDpi;
        }
    }
    if (first) {
        emit settingsEnabled();
    }
    if (first || reached) {
        emit resolutionShown();
    }
    if (reached) {
        mPreferences->store(&UserPreferences::dpiValue, value);
    }
}

void DeviceLifecycle::onChangeMouseDpiKey(int level)
{
    {
        const Lock lock(mMutex);
        DeviceStatus& s = mDeviceStatus;
        s.dpiLevel.level000 = level;
        s.targetDpi = level;
        s.dpiKnown = true;
    }
    emit speedShown(level);
    mPreferences->store(&UserPreferences::dpiValue, level);
}

void DeviceLifecycle::selectDpi(int target)
{
    {
        const Lock lock(mMutex);
        mDeviceStatus.targetDpi = target;
    }
    mPreferences->store(&UserPreferences::dpiValue, target);
}

void DeviceLifecycle::onDeviceDpiLevelValue(int v1, int v2, int v3)
{
    // The divisors are the nominal resolutions of the three levels.
    const float factor = (float(v1) / 1000.0f + float(v2) / 1200.0f + float(v3) / 1600.0f) / 3.0f;
    const int width = mScreenWidth ? mScreenWidth() : 0;
    {
        const Lock lock(mMutex);
        mDeviceStatus.levelValuesKnown = true;
        mDeviceStatus.bestCpiValue = int(float(width) / 1.2f * factor);
        mDeviceStatus.levelValuesShown = true;
    }
    emit levelValuesKnown(int(float(width) / 1.2f));
}

DeviceStatus::Setting& DeviceLifecycle::setting(Switch which)
{
    DeviceStatus::Setting* const settings[] = {&mDeviceStatus.lowbatReport, &mDeviceStatus.shake,
                                               &mDeviceStatus.lamplight, &mDeviceStatus.soundEffect};
    return *settings[which];
}

void DeviceLifecycle::firstSettingReply(Switch which, bool enable)
{
    bool show = false;
    bool target = false;
    {
        const Lock lock(mMutex);
        DeviceStatus::Setting& s = setting(which);
        s.status = enable;
        if (!s.known) {
            // A switch the user flipped while the mouse had not yet said is what the user
            // wants: the ladder sends it, rather than the reply undoing the click.
            if (!s.chosen) {
                s.target = enable;
            }
            target = s.target;
            s.known = true;
            show = true;
        }
    }
    if (show) {
        emit switchShown(which, target, enable);
    }
}

void DeviceLifecycle::chooseSetting(Switch which, bool checked)
{
    {
        const Lock lock(mMutex);
        DeviceStatus::Setting& s = setting(which);
        s.target = checked;
        s.chosen = true;
    }
    // The switch leaves its unknown look for the user's choice.
    emit switchShown(which, checked, checked);
    if (which == SwitchLowbatReport) {
        mDeviceManager->setLowbatReport(checked);
    }
}

void DeviceLifecycle::onDeviceLowbatReport(bool enable)
{
    firstSettingReply(SwitchLowbatReport, enable);
}

void DeviceLifecycle::onDeviceShake(bool enable)
{
    firstSettingReply(SwitchShake, enable);
}

void DeviceLifecycle::onDeviceLamplight(int enable)
{
    firstSettingReply(SwitchLamplight, enable != 0);
}

void DeviceLifecycle::onDeviceSoundEffect(bool enable)
{
    firstSettingReply(SwitchSoundEffect, enable);
}
