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

const char* stepName(MainWindowPresenter::HttpStep step)
{
    static const char* const kNames[] = {
        "app version", "device list",     "device open time",    "ip address",    "ip info",
        "ip upload",   "calendar phrase", "device registration", "direct UI list"};
    return kNames[step];
}

// Steps that nothing else waits for: the address report and the calendar phrase.
bool isOptional(MainWindowPresenter::HttpStep step)
{
    return step == MainWindowPresenter::StepIpAddress || step == MainWindowPresenter::StepIpInfo ||
           step == MainWindowPresenter::StepUploadIpInfo || step == MainWindowPresenter::StepCalendarPhrases;
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
    const qint64 now = mClockMs();
    auto walk = [this, now](const Step& step) {
        if (mHttpGivenUp[step.step]) {
            return true;
        }
        if (!mHttpRequested[step.step] && now >= mHttpRetryAt[step.step]) {
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

// A failed step is asked again at once a couple of times, then every few seconds, so that a
// backend that is down is not asked ten times a second. The first failure of a streak is
// written; the ones after it only when the step is given up or answers again.
void MainWindowPresenter::httpStepFailed(HttpStep step, const QString& reason)
{
    if (!mHttpRequested[step]) {
        return;  // the error that follows a time-out: the same try
    }
    mHttpRequested[step] = false;
    const int failures = ++mHttpFailures[step];
    if (failures == 1) {
        qCWarning(lcConsole).noquote() << stepName(step) << "failed:" << reason << "- asking again";
    }
    if (failures > kHttpQuickRetries) {
        mHttpRetryAt[step] = mClockMs() + kHttpBackoffMs;
    }
    if (!isOptional(step) || failures < kOptionalStepTries) {
        return;
    }
    // Nothing waits for these: the registration goes out without an address id.
    qCWarning(lcConsole).noquote() << stepName(step) << "failed" << failures << "times:" << reason
                                   << "- given up for this run";
    if (step == StepCalendarPhrases) {
        mHttpGivenUp[step] = true;
        return;
    }
    for (HttpStep each : {StepIpAddress, StepIpInfo, StepUploadIpInfo}) {
        mHttpGivenUp[each] = true;  // each needs the one before
    }
}

void MainWindowPresenter::httpStepAnswered(HttpStep step)
{
    if (mHttpFailures[step] > 1) {
        qCInfo(lcConsole).noquote() << stepName(step) << "answered after" << mHttpFailures[step]
                                    << "failures";
    }
    mHttpFailures[step] = 0;
    mHttpRetryAt[step] = 0;
    mHttpAnswered[step] = true;
}

// Each request carries its own step: the open time is also asked by the device controller,
// out of the ladder's order.
HttpRequest::TimeoutFunc MainWindowPresenter::onHttpTimeout(HttpStep step)
{
    return guard(
        [this, step](QString message) { httpStepFailed(step, QStringLiteral("time-out ") + message); });
}

HttpRequest::ErrorFunc MainWindowPresenter::onHttpError(HttpStep step)
{
    return guard([this, step](QString message, QNetworkReply::NetworkError code) {
        httpStepFailed(step, QStringLiteral("error %1 %2").arg(QString::number(int(code)), message));
    });
}

void MainWindowPresenter::getAppVersion()
{
    mHttpRequested[StepAppVersion] = true;
    mHttpManager->getAppVersion(
        guard([this](bool ok, VersionInfo vi) {
            if (!ok) {
                httpStepFailed(StepAppVersion, QStringLiteral("refused"));
                return;
            }
            httpStepAnswered(StepAppVersion);
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
                                            httpStepFailed(StepDeviceList, QStringLiteral("refused"));
                                            return;
                                        }
                                        httpStepAnswered(StepDeviceList);
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
                                       httpStepFailed(StepIpAddress, QStringLiteral("refused"));
                                       return;
                                   }
                                   mIpAddress = ip;
                                   httpStepAnswered(StepIpAddress);
                               }),
                               onHttpTimeout(StepIpAddress), onHttpError(StepIpAddress));
}

void MainWindowPresenter::getIpInfo()
{
    mHttpRequested[StepIpInfo] = true;
    mHttpManager->getIpInfo(mIpAddress, guard([this](bool ok, IpInfo info) {
                                if (!ok) {
                                    httpStepFailed(StepIpInfo, QStringLiteral("refused"));
                                    return;
                                }
                                mIpInfo = info;
                                httpStepAnswered(StepIpInfo);
                            }),
                            onHttpTimeout(StepIpInfo), onHttpError(StepIpInfo));
}

void MainWindowPresenter::uploadIpInfo()
{
    mHttpRequested[StepUploadIpInfo] = true;
    mHttpManager->uploadIpInfo(mIpInfo, guard([this](bool ok, IpInfo info) {
                                   if (!ok) {
                                       httpStepFailed(StepUploadIpInfo, QStringLiteral("refused"));
                                       return;
                                   }
                                   mIpInfo = info;
                                   httpStepAnswered(StepUploadIpInfo);
                                   emit signalLocalIpId(info.id);
                                   storePreference(&UserPreferences::saveIpAddress, 1);
                               }),
                               onHttpTimeout(StepUploadIpInfo), onHttpError(StepUploadIpInfo));
}

void MainWindowPresenter::getCalendarPhrases()
{
    mHttpRequested[StepCalendarPhrases] = true;
    mHttpManager->getCalendarPhrases(guard([this](bool ok, CalendarPhrases phrases) {
                                         if (!ok) {
                                             httpStepFailed(StepCalendarPhrases, QStringLiteral("refused"));
                                             return;
                                         }
                                         if (userPreferences().calendarPhrases != 0) {
                                             mView->showCalendarPhrases(phrases);
                                         }
                                         httpStepAnswered(StepCalendarPhrases);
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
                                         httpStepFailed(StepRegisterDevice, QStringLiteral("refused"));
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
                                     httpStepAnswered(StepRegisterDevice);
                                     emit signalStartHeartbeat();
                                 }),
                                 onHttpTimeout(StepRegisterDevice), onHttpError(StepRegisterDevice));
}

void MainWindowPresenter::getDirectUIList()
{
    mHttpRequested[StepDirectUI] = true;
    mHttpManager->getDirectUIList(guard([this](bool ok, QList<DirectUI> list) {
                                      if (!ok) {
                                          httpStepFailed(StepDirectUI, QStringLiteral("refused"));
                                          return;
                                      }
                                      httpStepAnswered(StepDirectUI);
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
    mOfferedVersion = vi.version;
    mView->setDiscoverNewestVersionInfo(UpdatePresenter::releaseText(vi));
    mView->setUpdateView(1);
}

void MainWindowPresenter::onCheckVersion()
{
    if (mHttpManager == nullptr) {
        return;
    }
    mHttpManager->getAppVersion(guard([this](bool ok, VersionInfo vi) {
                                    if (ok && !vi.version.isEmpty() &&
                                        vi.version != QLatin1String(kAppVersion) &&
                                        vi.version != mDeclinedVersion) {
                                        offerUpdate(vi);
                                    }
                                }),
                                logTimeout, logError);
}

void MainWindowPresenter::recvUpdataSignalNoUpdata()
{
    mDeclinedVersion = mOfferedVersion;
}

void MainWindowPresenter::checkNewestAppVersion()
{
    if (mHttpManager == nullptr) {
        emit signalAppVersionUnknown();
        return;
    }
    // The user asked: a check that gets no answer says so, never that all is up to date.
    mHttpManager->getAppVersion(guard([this](bool ok, VersionInfo vi) {
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
                                }),
                                guard([this](QString message) {
                                    logTimeout(message);
                                    emit signalAppVersionUnknown();
                                }),
                                guard([this](QString message, QNetworkReply::NetworkError code) {
                                    logError(message, code);
                                    emit signalAppVersionUnknown();
                                }));
}
