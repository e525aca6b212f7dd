// The device lifecycle of the console presenter: the controller ladder on its own thread,
// the message loop, opening, identification, plug events and Bluetooth.
#include "Hid/DeviceManager.h"
#include "Http/HttpManager.h"
#include "Recorder/RecordManager.h"
#include "Utils/AppPaths.h"
#include "Utils/Logging.h"
#include "WidgetPresenter/ConsoleNotices.h"
#include "WidgetPresenter/MainWindowPresenter.h"
#include "WidgetPresenter/MainWindowView.h"

#include <QFile>
#include <QFileInfo>
#include <QTimer>
#include <QUrl>

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

void MainWindowPresenter::onTimerDeviceController()
{
    const Lock lock(mStatusMutex);
    DeviceStatus& s = mDeviceStatus;
    DeviceManager* d = mDeviceManager;
    if (!s.opened) {
        openDevice();
        return;
    }
    if (!s.connected) {
        if (++mOpenWaitCount > kOpenWaitTicks) {
            addErrorStatus(1);
        }
        return;
    }
    if (d->state() != 1) {
        qCInfo(lcConsole) << "device link lost";
        s = DeviceStatus();
        mDeviceInitialised = false;
        addErrorStatus(1);
        return;
    }
    if (!s.ready) {
        if (d->state() == 1) {
            d->deviceReady();
        }
        return;
    }
    if (!s.activeKnown) {
        d->getActive();
        return;
    }
    if (!s.mouseActive) {
        return;  // waits for the mouse to wake
    }
    if (!s.moduleKnown) {
        d->getModule();
    }
    if (!s.dongleIdKnown) {
        d->getDongleFlashID();
        return;
    }
    if (!s.remoteIdKnown) {
        d->getRemoteFlashID();
        return;
    }
    if (!s.levelValuesKnown && s.levelValueTries < kLevelValueTries) {
        d->getDPILevelValue();
        ++s.levelValueTries;
        return;
    }
    if (!s.dpiKnown) {
        if (mUserPreferences.dpiValue < 3 || !s.levelValuesKnown) {
            d->getDpi();
        } else {
            d->getCpi();
        }
        return;
    }
    bool acted = false;
    syncLowbatReport(&acted);
    if (acted) {
        return;
    }
    syncSetting(s.shake, &DeviceManager::getShake, &DeviceManager::setShake, &acted);
    if (acted) {
        return;
    }
    syncSetting(s.lamplight, &DeviceManager::getLamplight, &DeviceManager::setLamplight, &acted);
    if (acted) {
        return;
    }
    syncSetting(s.soundEffect, &DeviceManager::getSoundEffect, &DeviceManager::setSoundEffect, &acted);
    if (acted) {
        return;
    }
    if (!mDeviceInitialised) {
        mDeviceInitialised = true;
        qCInfo(lcConsole) << "device initialised";
        // The HTTP ladder rests while it waits for a device; this is what it waited for.
        runOnMain([this] {
            if (mIsInternet && !mConsoleDataComplete) {
                mTimers[TimerHttpController]->start();
            }
        });
    }
}

// Asks for a supported setting the mouse has not reported, else sends the user's choice.
void MainWindowPresenter::syncSetting(DeviceStatus::Setting& setting, void (DeviceManager::*get)(),
                                      void (DeviceManager::*set)(bool), bool* acted)
{
    *acted = false;
    if (!setting.supported) {
        return;
    }
    if (!setting.known) {
        (mDeviceManager->*get)();
        *acted = true;
    } else if (setting.status != setting.target) {
        (mDeviceManager->*set)(setting.target);
        *acted = true;
    }
}

void MainWindowPresenter::syncLowbatReport(bool* acted)
{
    DeviceStatus::Setting& report = mDeviceStatus.lowbatReport;
    report.supported = true;
    syncSetting(report, &DeviceManager::getLowbatReport, &DeviceManager::setLowbatReport, acted);
}

void MainWindowPresenter::onTimerDeviceMessage()
{
    if (mDeviceManager->state() == 0) {
        return;
    }
    const Lock lock(mStatusMutex);
    DeviceStatus& s = mDeviceStatus;
    if (!s.moduleKnown) {
        mDeviceManager->getModule();
    } else if (!s.activeKnown) {
        mDeviceManager->getActive();
    } else if (mDeviceInitialised && s.mouseActive) {
        bool acted = false;
        switch (s.messageTick % 5) {
            case 0:
                if (!s.levelValuesKnown && s.levelValueTries < kLevelValueTries) {
                    mDeviceManager->getDPILevelValue();
                    ++s.levelValueTries;
                    return;
                }
                if (s.dpiKnown) {
                    syncDpi();
                } else if (mUserPreferences.dpiValue >= 3) {
                    if (!s.levelValuesKnown) {
                        mDeviceManager->getDpi();
                    } else {
                        mDeviceManager->getCpi();
                    }
                    return;
                } else {
                    mDeviceManager->getDpi();
                }
                break;
            case 1:
                syncLowbatReport(&acted);
                break;
            case 2:
                if (s.shake.supported) {
                    syncSetting(s.shake, &DeviceManager::getShake, &DeviceManager::setShake, &acted);
                    break;
                }
                Q_FALLTHROUGH();
            case 3:
                if (s.lamplight.supported) {
                    syncSetting(s.lamplight, &DeviceManager::getLamplight, &DeviceManager::setLamplight,
                                &acted);
                    break;
                }
                Q_FALLTHROUGH();
            default:
                syncSetting(s.soundEffect, &DeviceManager::getSoundEffect, &DeviceManager::setSoundEffect,
                            &acted);
                break;
        }
    }
    ++s.messageTick;
}

void MainWindowPresenter::syncDpi()
{
    const DeviceStatus& s = mDeviceStatus;
    if (s.dpiLevel.level000 == s.targetDpi) {
        return;
    }
    if (s.targetDpi >= 3) {
        mDeviceManager->setCpi(s.targetDpi);
    } else {
        mDeviceManager->setDpi(s.targetDpi);
    }
}

void MainWindowPresenter::openDevice()
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
    DeviceManager* d = mDeviceManager;
    if (d->state() == 1) {
        s.opened = true;
        return;
    }
    const QList<HidDevice> devices = d->enumerateHidDevice();
    const int savedPid = mUserPreferences.savePid;
    const int savedVid = mUserPreferences.saveVid;
    if (inUsbRange(savedPid) && inUsbRange(savedVid)) {
        for (const HidDevice& device : devices) {
            if (device.vid == savedVid && device.pid == savedPid && d->openHidDevice(savedVid, savedPid)) {
                qCInfo(lcConsole) << "open device success!";
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
        }
    }
    if (mDeviceInfoList.isEmpty()) {
        return;
    }
    for (const DeviceInfo& row : qAsConst(mDeviceInfoList)) {
        if (row.enable == 0) {
            continue;
        }
        const int vid = parseHex(row.vid);
        const int pid = parseHex(row.pid);
        for (const HidDevice& device : devices) {
            if (device.vid == vid && device.pid == pid && d->openHidDevice(vid, pid)) {
                qCInfo(lcConsole) << "open device success!";
                mCurDevInf = row;
                openSucceeded();
                return;
            }
        }
    }
    emit signalStartCheckDeviceConnectionTimer();
    if (!mUserPreferences.saveDeviceUuid.isEmpty()) {
        d->openBLEDevice(mUserPreferences.saveDeviceUuid);
    } else {
        mBleAnswered = true;
    }
    addErrorStatus(1);
    s.opened = true;
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
    if (mIsInternet && mHttpManager != nullptr) {
        // The ladder and the controller both ask: one request at a time, and the pause after
        // failures holds for both.
        if (mHttpRequested[StepDeviceOpenTime] || mClockMs() < mHttpRetryAt[StepDeviceOpenTime]) {
            return;
        }
        mHttpRequested[StepDeviceOpenTime] = true;
        mHttpManager->getDeviceOpenTime(guard([this](bool ok, DeviceOpenTime openTime) {
                                            if (!ok) {
                                                httpStepFailed(StepDeviceOpenTime, QStringLiteral("refused"));
                                                return;
                                            }
                                            httpStepAnswered(StepDeviceOpenTime);
                                            const Lock lock(mStatusMutex);
                                            mDeviceOpenTime = openTime;
                                            mUserPreferences.delayOpenDeviceTime = openTime.time;
                                            mTimers[TimerDeviceDelayOpen]->setInterval(openTime.time);
                                        }),
                                        onHttpTimeout(StepDeviceOpenTime), onHttpError(StepDeviceOpenTime));
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
    if (mIsInternet) {
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
    const Lock lock(mStatusMutex);
    DeviceStatus& s = mDeviceStatus;
    mUserPreferences.keyType = keyType;
    persistPreferences();
    s.keyType = keyType;
    s.lamplight.supported = lamplightModule != 0;
    s.shake.supported = shakeModule != 0;
    s.soundEffect.supported = soundEffectModule != 0;

    mView->showLamplightModule(lamplightModule);
    mView->setCheckLightingEffectOnOffEnabled(s.lamplight.supported);
    mView->setCheckLightingEffectStatusChecked(s.lamplight.supported);
    mView->setCheckShakeOnOffEnabled(s.shake.supported);
    mView->setCheckShakeStatusChecked(s.shake.supported);
    mView->setCheckSoundEffectOnOffEnabled(s.soundEffect.supported);
    mView->setCheckSoundEffectStatusChecked(s.soundEffect.supported);
    mView->setSignalClickModeEnable(keyType == 0);

    mDeviceManager->setLowbatReport(true);
    mView->setExplain(true);

    UserPreferences& p = mUserPreferences;
    if (mIsInternet) {
        const auto row =
            std::find_if(mDeviceInfoList.cbegin(), mDeviceInfoList.cend(),
                         [&](const DeviceInfo& info) { return info.customerCode == customerCode; });
        if (row == mDeviceInfoList.cend()) {
            qCWarning(lcConsole) << "打开设备后无法匹配客户编码????" << customerCode;
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
    persistPreferences();
    emit signalGetDeviceInfo(mCurDevInf);
    s.moduleKnown = true;
    checkHomeImage();
    checkExplainImage();
    checkNavImage();
    mView->setExplain(true);
}

void MainWindowPresenter::checkImage(const QString& reference, std::function<void(QString)> setImage,
                                     bool defaultIfEmpty)
{
    if (reference.isEmpty()) {
        if (defaultIfEmpty) {
            mView->setDefaultHomeImage();
        }
        return;
    }
    // URL-safe Base64: the standard alphabet's "/" would make a folder of the name.
    const QString fileName = QFileInfo(QUrl(reference).path()).fileName();
    const QString name = QString::fromLatin1(
        fileName.toUtf8().toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
    const QString path = AppPaths::dataFile(QLatin1Char('/') + name);
    if (QFile::exists(path)) {
        setImage(path);
        return;
    }
    if (mHttpManager == nullptr) {
        return;
    }
    mHttpManager->downloadImage(reference, path, guard([setImage](bool ok, QString saved) {
                                    if (ok) {
                                        setImage(saved);
                                    }
                                }),
                                [](QString url, QNetworkReply::NetworkError code) {
                                    qCWarning(lcConsole).noquote() << "image download failed:" << url << code;
                                });
}

void MainWindowPresenter::checkHomeImage()
{
    checkImage(
        currentDeviceInfo().homeImage, [this](QString path) { mView->setHomeImage(path); }, true);
}

void MainWindowPresenter::checkExplainImage()
{
    checkImage(
        currentDeviceInfo().explainImage, [this](QString path) { mView->setExplainImage(path); }, false);
}

void MainWindowPresenter::checkNavImage()
{
    checkImage(
        currentDeviceInfo().navImage, [this](QString path) { mView->setNavImage(path); }, false);
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
        return;
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
        mDeviceManager->close();
        mTimers[TimerDeviceMessage]->stop();
        mDeviceStatus = DeviceStatus();
        mDeviceInitialised = false;
        mView->setVipFunction(false);
        mView->setExplain(false);
        // Repeating: openDevice() stays parked until the next insertion.
        startDelayOpen(false);
        mDeviceStatus.delayStarted = true;
        if (mRecordManager != nullptr) {
            mRecordManager->destroyRecorder();
        }
    }
}

void MainWindowPresenter::onBLEDeviceConnectState(bool connected, QString uuid)
{
    const Lock lock(mStatusMutex);
    if (connected) {
        emit signalHideBLEGuidanceDialog();
        if (mNotices != nullptr) {
            mNotices->showBleConnected();
        }
        mUserPreferences.saveDeviceUuid = uuid;
        persistPreferences();
        mDeviceStatus.connected = true;
        mView->setDeviceTypeIcon(1);
    } else if (!mBleAnswered) {
        emit signalShowBLEGuidanceDialog();
    }
    mBleAnswered = true;
}

void MainWindowPresenter::onTimerConnectionCheck()
{
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

void MainWindowPresenter::onGetPlugIn()
{
    mDeviceManager->getDevicePowerPlugIn();
}
