// The console presenter's backend work: the HTTP ladder, the address report, the device
// registration and heartbeat, the calendar phrase and the version checks.
#include "Http/HttpManager.h"
#include "Utils/Logging.h"
#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/MainWindowPresenter.h"
#include "WidgetPresenter/MainWindowView.h"
#include "WidgetPresenter/UpdatePresenter.h"

#include <QSysInfo>
#include <QTimer>

namespace {

void logTimeout(QString message)
{
    qCWarning(lcConsole).noquote() << "http timeout:" << message;
}

void logError(QString message, QNetworkReply::NetworkError code)
{
    qCWarning(lcConsole).noquote() << "http error:" << message << code;
}

}  // namespace

void MainWindowPresenter::onTimerHttpController()
{
    QTimer* controller = mTimers[TimerHttpController];
    if (!mIsInternet || mHttpManager == nullptr) {
        controller->stop();  // nothing to do offline; going online starts it again
        return;
    }
    using Request = void (MainWindowPresenter::*)();
    struct Step {
        HttpStep step;
        Request request;
    };
    static const Step kBeforeDevice[] = {
        {StepAppVersion, &MainWindowPresenter::getAppVersion},
        {StepDeviceList, &MainWindowPresenter::getDeviceList},
        {StepDeviceOpenTime, &MainWindowPresenter::getDeviceOpenTime},
        {StepIpAddress, &MainWindowPresenter::getIpAddress},
        {StepIpInfo, &MainWindowPresenter::getIpInfo},
        {StepUploadIpInfo, &MainWindowPresenter::uploadIpInfo},
        {StepCalendarPhrases, &MainWindowPresenter::getCalendarPhrases},
    };
    static const Step kWithDevice[] = {
        {StepRegisterDevice, &MainWindowPresenter::registerDevice},
        {StepDirectUI, &MainWindowPresenter::getDirectUIList},
    };
    auto walk = [this](const Step& step) {
        if (!mHttpRequested[step.step]) {
            (this->*step.request)();
        }
        return mHttpAnswered[step.step];
    };
    for (const Step& step : kBeforeDevice) {
        if (!walk(step)) {
            return;
        }
    }
    bool initialised = false;
    {
        const Lock lock(mStatusMutex);
        initialised = mDeviceInitialised;
    }
    if (!initialised) {
        controller->stop();  // the device controller starts it again once a device is set up
        return;
    }
    for (const Step& step : kWithDevice) {
        if (!walk(step)) {
            return;
        }
    }
    mConsoleDataComplete = true;
    controller->stop();
}

void MainWindowPresenter::httpStepFailed(HttpStep step)
{
    mHttpRequested[step] = false;
}

// A step that times out or fails is asked again on the next tick. Each request carries its
// own step: the open time is also asked by the device controller, out of the ladder's order.
HttpRequest::TimeoutFunc MainWindowPresenter::onHttpTimeout(HttpStep step)
{
    return guard([this, step](QString message) {
        logTimeout(message);
        httpStepFailed(step);
    });
}

HttpRequest::ErrorFunc MainWindowPresenter::onHttpError(HttpStep step)
{
    return guard([this, step](QString message, QNetworkReply::NetworkError code) {
        logError(message, code);
        httpStepFailed(step);
    });
}

void MainWindowPresenter::getAppVersion()
{
    mHttpRequested[StepAppVersion] = true;
    mHttpManager->getAppVersion(
        guard([this](bool ok, VersionInfo vi) {
            if (!ok) {
                httpStepFailed(StepAppVersion);
                return;
            }
            mHttpAnswered[StepAppVersion] = true;
            emit signalAppVersion(vi);
            if (userPreferences().checkUpdate != 0 && vi.version != QLatin1String(kAppVersion)) {
                offerUpdate(vi);
            }
        }),
        onHttpTimeout(StepAppVersion), onHttpError(StepAppVersion));
}

void MainWindowPresenter::getDeviceList()
{
    mHttpRequested[StepDeviceList] = true;
    mHttpManager->getDeviceInfoList(guard([this](bool ok, QList<DeviceInfo> list) {
                                        if (!ok) {
                                            httpStepFailed(StepDeviceList);
                                            return;
                                        }
                                        mHttpAnswered[StepDeviceList] = true;
                                        const Lock lock(mStatusMutex);
                                        mDeviceInfoList = list;
                                    }),
                                    onHttpTimeout(StepDeviceList), onHttpError(StepDeviceList));
}

void MainWindowPresenter::getIpAddress()
{
    mHttpRequested[StepIpAddress] = true;
    mHttpManager->getIpAddress(guard([this](bool ok, QString ip) {
                                   if (!ok) {
                                       httpStepFailed(StepIpAddress);
                                       return;
                                   }
                                   mIpAddress = ip;
                                   mHttpAnswered[StepIpAddress] = true;
                               }),
                               onHttpTimeout(StepIpAddress), onHttpError(StepIpAddress));
}

void MainWindowPresenter::getIpInfo()
{
    mHttpRequested[StepIpInfo] = true;
    mHttpManager->getIpInfo(mIpAddress, guard([this](bool ok, IpInfo info) {
                                if (!ok) {
                                    httpStepFailed(StepIpInfo);
                                    return;
                                }
                                mIpInfo = info;
                                mHttpAnswered[StepIpInfo] = true;
                            }),
                            onHttpTimeout(StepIpInfo), onHttpError(StepIpInfo));
}

void MainWindowPresenter::uploadIpInfo()
{
    mHttpRequested[StepUploadIpInfo] = true;
    mHttpManager->uploadIpInfo(mIpInfo, guard([this](bool ok, IpInfo info) {
                                   if (!ok) {
                                       httpStepFailed(StepUploadIpInfo);
                                       return;
                                   }
                                   mIpInfo = info;
                                   mHttpAnswered[StepUploadIpInfo] = true;
                                   emit signalLocalIpId(info.id);
                                   storePreference(&UserPreferences::saveIpAddress, info.id);
                               }),
                               onHttpTimeout(StepUploadIpInfo), onHttpError(StepUploadIpInfo));
}

void MainWindowPresenter::getCalendarPhrases()
{
    mHttpRequested[StepCalendarPhrases] = true;
    mHttpManager->getCalendarPhrases(guard([this](bool ok, CalendarPhrases phrases) {
                                         if (!ok) {
                                             httpStepFailed(StepCalendarPhrases);
                                             return;
                                         }
                                         if (userPreferences().calendarPhrases != 0) {
                                             mView->showCalendarPhrases(phrases);
                                         }
                                         mHttpAnswered[StepCalendarPhrases] = true;
                                     }),
                                     onHttpTimeout(StepCalendarPhrases), onHttpError(StepCalendarPhrases));
}

void MainWindowPresenter::registerDevice()
{
    mHttpRequested[StepRegisterDevice] = true;
    if (mDevice.dongleFlashID == QLatin1String(kNoDongleId)) {
        mHttpAnswered[StepRegisterDevice] = true;  // a receiver without an id is not registered
        return;
    }
    mHttpManager->registerDevice(mDevice, guard([this](bool ok, Device device) {
                                     if (!ok) {
                                         qCWarning(lcConsole) << "登录失败...";
                                         httpStepFailed(StepRegisterDevice);
                                         return;
                                     }
                                     mDevice.id = device.id;
                                     mDeviceRecord.device = device.id;
                                     mDeviceRecord.dongleFlashID = mDevice.dongleFlashID;
                                     mDeviceRecord.remoteFlashID = mDevice.remoteFlashID;
                                     mDeviceRecord.ip = mIpInfo.id;
                                     mDeviceRecord.systemVersion =
                                         QString(QSysInfo::prettyProductName() + QLatin1Char('(') +
                                                 QSysInfo::kernelVersion() + QLatin1Char(')'));
                                     mHttpAnswered[StepRegisterDevice] = true;
                                     emit signalStartHeartbeat();
                                 }),
                                 onHttpTimeout(StepRegisterDevice), onHttpError(StepRegisterDevice));
}

void MainWindowPresenter::getDirectUIList()
{
    mHttpRequested[StepDirectUI] = true;
    mHttpManager->getDirectUIList(guard([this](bool ok, QList<DirectUI> list) {
                                      if (!ok) {
                                          httpStepFailed(StepDirectUI);
                                          return;
                                      }
                                      mHttpAnswered[StepDirectUI] = true;
                                      emit signalDirectUIsToInput(list);
                                  }),
                                  onHttpTimeout(StepDirectUI), onHttpError(StepDirectUI));
}

void MainWindowPresenter::onTimerHeartbeat()
{
    if (!mIsInternet || mHttpManager == nullptr) {
        return;
    }
    mHttpManager->heartbeat(
        mDeviceRecord,
        [](bool ok, DeviceRecord) {
            if (!ok) {
                qCWarning(lcConsole) << "heartbeat refused";
            }
        },
        logTimeout, logError);
}

void MainWindowPresenter::offerUpdate(const VersionInfo& vi)
{
    mView->setDiscoverNewestVersionInfo(UpdatePresenter::releaseText(vi));
    mView->setUpdateView(1);
}

void MainWindowPresenter::onCheckVersion()
{
    if (mHttpManager == nullptr) {
        return;
    }
    mHttpManager->getAppVersion(
        guard([this](bool ok, VersionInfo vi) {
            if (ok && !vi.version.isEmpty() && vi.version != QLatin1String(kAppVersion)) {
                offerUpdate(vi);
            }
        }),
        logTimeout, logError);
}

void MainWindowPresenter::checkNewestAppVersion()
{
    if (mHttpManager == nullptr) {
        return;
    }
    mHttpManager->getAppVersion(guard([this](bool ok, VersionInfo vi) {
                                    if (!ok) {
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
                                }),
                                logTimeout, logError);
}
