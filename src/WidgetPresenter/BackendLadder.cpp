#include "WidgetPresenter/BackendLadder.h"

#include "Http/HttpManager.h"
#include "Utils/AppVersion.h"
#include "Utils/Logging.h"
#include "WidgetPresenter/PictureFiles.h"

#include <QFile>
#include <QMetaEnum>
#include <QSysInfo>
#include <QTimer>

#include <chrono>

namespace {

void logTimeout(QString message)
{
    qCWarning(lcConsole).noquote() << "http timeout:" << message;
}

void logError(QString message, QNetworkReply::NetworkError code)
{
    qCWarning(lcConsole).noquote() << "http error:" << message << code;
}

const char* stepName(BackendLadder::Step step)
{
    static const char* const kNames[] = {
        "app version", "device list",     "device open time",    "ip address",    "ip info",
        "ip upload",   "calendar phrase", "device registration", "direct UI list"};
    return kNames[step];
}

// Steps that nothing else waits for: the address report and the calendar phrase.
bool isOptional(BackendLadder::Step step)
{
    return step == BackendLadder::StepIpAddress || step == BackendLadder::StepIpInfo ||
           step == BackendLadder::StepUploadIpInfo || step == BackendLadder::StepCalendarPhrases;
}

}  // namespace

BackendLadder::BackendLadder(const Collaborators& collaborators, QObject* parent)
    : QObject(parent),
      mHttp(collaborators.http),
      mClockMs(collaborators.clockMs),
      mDeviceInitialised(collaborators.deviceInitialised),
      mDevice(collaborators.device)
{
    if (!mClockMs) {
        mClockMs = [] {
            return qint64(std::chrono::duration_cast<std::chrono::milliseconds>(
                              std::chrono::steady_clock::now().time_since_epoch())
                              .count());
        };
    }
    mDeviceRecord.appVersion = QString::fromLatin1(kAppVersion);
    if (mHttp != nullptr) {
        mHttp->setTimeout(kHttpTimeoutMs);
    }
    const int intervals[TimerCount] = {kControllerMs, kHeartbeatMs};
    for (int id = 0; id < TimerCount; ++id) {
        mTimers[id] = new QTimer(this);
        mTimers[id]->setInterval(intervals[id]);
    }
    connect(mTimers[TimerController], &QTimer::timeout, this, &BackendLadder::onTimerController);
    connect(mTimers[TimerHeartbeat], &QTimer::timeout, this, &BackendLadder::onTimerHeartbeat);
}

void BackendLadder::stop()
{
    for (QTimer* timer : mTimers) {
        timer->stop();
    }
}

void BackendLadder::setOnline(bool online)
{
    mOnline = online;
    if (online) {
        mTimers[TimerController]->start();
    } else {
        mRequested[StepRegisterDevice] = false;
        mAnswered[StepRegisterDevice] = false;
        mUnreachable = false;  // offline is said instead; online, the next failures say it again
    }
}

void BackendLadder::resume()
{
    if (mOnline && !mComplete) {
        mTimers[TimerController]->start();
    }
}

void BackendLadder::onTimerController()
{
    QTimer* controller = mTimers[TimerController];
    if (!mOnline || mHttp == nullptr) {
        controller->stop();  // nothing to do offline; going online starts it again
        return;
    }
    using Request = void (BackendLadder::*)();
    struct Entry {
        Step step;
        Request request;
    };
    static const Entry kBeforeDevice[] = {
        {StepAppVersion, &BackendLadder::getAppVersion},
        {StepDeviceList, &BackendLadder::getDeviceList},
        {StepDeviceOpenTime, &BackendLadder::askOpenTime},
        {StepIpAddress, &BackendLadder::getIpAddress},
        {StepIpInfo, &BackendLadder::getIpInfo},
        {StepUploadIpInfo, &BackendLadder::uploadIpInfo},
        {StepCalendarPhrases, &BackendLadder::getCalendarPhrases},
    };
    static const Entry kWithDevice[] = {
        {StepRegisterDevice, &BackendLadder::registerDevice},
        {StepDirectUI, &BackendLadder::getDirectUIList},
    };
    const qint64 now = mClockMs();
    auto walk = [this, now](const Entry& entry) {
        if (mGivenUp[entry.step]) {
            return true;
        }
        if (!mRequested[entry.step] && now >= mRetryAt[entry.step]) {
            (this->*entry.request)();
        }
        return mAnswered[entry.step];
    };
    for (const Entry& entry : kBeforeDevice) {
        if (!walk(entry)) {
            return;
        }
    }
    if (!mDeviceInitialised || !mDeviceInitialised()) {
        controller->stop();  // resume() starts it again once a device is set up
        return;
    }
    for (const Entry& entry : kWithDevice) {
        if (!walk(entry)) {
            return;
        }
    }
    mComplete = true;
    controller->stop();
}

// A failed step is asked again at once a couple of times, then every few seconds, so that a
// backend that is down is not asked ten times a second. The first failure of a streak is
// written; the ones after it only when the step is given up or answers again.
void BackendLadder::stepFailed(Step step, const QString& reason)
{
    if (!mRequested[step]) {
        return;  // the error that follows a time-out: the same try
    }
    mRequested[step] = false;
    const int failures = ++mFailures[step];
    if (failures == 1) {
        qCWarning(lcConsole).noquote() << stepName(step) << "failed:" << reason << "- asking again";
    }
    if (failures > kQuickRetries) {
        mRetryAt[step] = mClockMs() + kBackoffMs;
        if (!isOptional(step) && !mUnreachable) {
            mUnreachable = true;
            emit reachableChanged(false);
        }
    }
    if (!isOptional(step) || failures < kOptionalStepTries) {
        return;
    }
    // Nothing waits for these: the registration goes out without an address id.
    qCWarning(lcConsole).noquote() << stepName(step) << "failed" << failures << "times:" << reason
                                   << "- given up for this run";
    if (step == StepCalendarPhrases) {
        mGivenUp[step] = true;
        return;
    }
    for (Step each : {StepIpAddress, StepIpInfo, StepUploadIpInfo}) {
        mGivenUp[each] = true;  // each needs the one before
    }
}

void BackendLadder::stepAnswered(Step step)
{
    if (mFailures[step] > 1) {
        qCInfo(lcConsole).noquote() << stepName(step) << "answered after" << mFailures[step] << "failures";
    }
    mFailures[step] = 0;
    mRetryAt[step] = 0;
    mAnswered[step] = true;
    if (mUnreachable) {
        mUnreachable = false;
        emit reachableChanged(true);
    }
}

// Each request carries its own step: the open time is also asked out of the ladder's order.
HttpRequest::TimeoutFunc BackendLadder::onTimeout(Step step)
{
    return guard([this, step](QString message) { stepFailed(step, QStringLiteral("time-out ") + message); });
}

HttpRequest::ErrorFunc BackendLadder::onError(Step step)
{
    return guard([this, step](QString message, QNetworkReply::NetworkError code) {
        const char* name = QMetaEnum::fromType<QNetworkReply::NetworkError>().valueToKey(code);
        stepFailed(step, QStringLiteral("%1 %2").arg(QString::fromLatin1(name ? name : "error"), message));
    });
}

void BackendLadder::getAppVersion()
{
    mRequested[StepAppVersion] = true;
    mHttp->getAppVersion(
        onAnswer<VersionInfo>(StepAppVersion, [this](VersionInfo vi) { emit appVersion(vi); }),
        onTimeout(StepAppVersion), onError(StepAppVersion));
}

void BackendLadder::getDeviceList()
{
    mRequested[StepDeviceList] = true;
    mHttp->getDeviceInfoList(
        onAnswer<QList<DeviceInfo>>(StepDeviceList,
                                    [this](QList<DeviceInfo> list) { emit deviceListArrived(list); }),
        onTimeout(StepDeviceList), onError(StepDeviceList));
}

bool BackendLadder::requestOpenTime()
{
    if (!mOnline || mHttp == nullptr) {
        return false;
    }
    // The ladder and the controller both ask: one request at a time, and the pause after
    // failures holds for both.
    if (!mRequested[StepDeviceOpenTime] && mClockMs() >= mRetryAt[StepDeviceOpenTime]) {
        mRequested[StepDeviceOpenTime] = true;
        mHttp->getDeviceOpenTime(
            onAnswer<DeviceOpenTime>(StepDeviceOpenTime,
                                     [this](DeviceOpenTime time) { emit openTimeArrived(time); }),
            onTimeout(StepDeviceOpenTime), onError(StepDeviceOpenTime));
    }
    // Once the backend has failed to say, the saved delay opens the mouse: a backend that is
    // down must not keep the mouse shut. A later answer still sets the delay.
    return mFailures[StepDeviceOpenTime] == 0;
}

void BackendLadder::getIpAddress()
{
    mRequested[StepIpAddress] = true;
    mHttp->getIpAddress(onAnswer<QString>(StepIpAddress, [this](QString ip) { mIpAddress = ip; }),
                        onTimeout(StepIpAddress), onError(StepIpAddress));
}

void BackendLadder::getIpInfo()
{
    mRequested[StepIpInfo] = true;
    mHttp->getIpInfo(mIpAddress, onAnswer<IpInfo>(StepIpInfo, [this](IpInfo info) { mIpInfo = info; }),
                     onTimeout(StepIpInfo), onError(StepIpInfo));
}

void BackendLadder::uploadIpInfo()
{
    mRequested[StepUploadIpInfo] = true;
    mHttp->uploadIpInfo(mIpInfo,
                        onAnswer<IpInfo>(StepUploadIpInfo,
                                         [this](IpInfo info) {
                                             mIpInfo = info;
                                             emit ipIdKnown(info.id);
                                         }),
                        onTimeout(StepUploadIpInfo), onError(StepUploadIpInfo));
}

void BackendLadder::getCalendarPhrases()
{
    mRequested[StepCalendarPhrases] = true;
    mHttp->getCalendarPhrases(
        onAnswer<CalendarPhrases>(StepCalendarPhrases,
                                  [this](CalendarPhrases phrases) { emit calendarPhrasesArrived(phrases); }),
        onTimeout(StepCalendarPhrases), onError(StepCalendarPhrases));
}

void BackendLadder::registerDevice()
{
    mRequested[StepRegisterDevice] = true;
    const Device device = mDevice ? mDevice() : Device();
    if (device.dongleFlashID == QLatin1String(kNoDongleId)) {
        mAnswered[StepRegisterDevice] = true;  // a receiver without an id is not registered
        return;
    }
    mHttp->registerDevice(device, guard([this, device](bool ok, Device registered) {
                              if (!ok) {
                                  qCWarning(lcConsole) << "登录失败...";
                                  stepFailed(StepRegisterDevice, QStringLiteral("refused"));
                                  return;
                              }
                              mDeviceRecord.device = registered.id;
                              mDeviceRecord.dongleFlashID = device.dongleFlashID;
                              mDeviceRecord.remoteFlashID = device.remoteFlashID;
                              mDeviceRecord.ip = mIpInfo.id;
                              mDeviceRecord.systemVersion =
                                  QString(QSysInfo::prettyProductName() + QLatin1Char('(') +
                                          QSysInfo::kernelVersion() + QLatin1Char(')'));
                              stepAnswered(StepRegisterDevice);
                              mTimers[TimerHeartbeat]->start();
                          }),
                          onTimeout(StepRegisterDevice), onError(StepRegisterDevice));
}

void BackendLadder::getDirectUIList()
{
    mRequested[StepDirectUI] = true;
    mHttp->getDirectUIList(onAnswer<QList<DirectUI>>(
                               StepDirectUI, [this](QList<DirectUI> list) { emit directUIsArrived(list); }),
                           onTimeout(StepDirectUI), onError(StepDirectUI));
}

void BackendLadder::onTimerHeartbeat()
{
    if (!mOnline || mHttp == nullptr) {
        return;
    }
    mHttp->heartbeat(
        mDeviceRecord,
        [](bool ok, DeviceRecord) {
            if (!ok) {
                qCWarning(lcConsole) << "heartbeat refused";
            }
        },
        logTimeout, logError);
}

void BackendLadder::fetchVersion(std::function<void(bool, VersionInfo)> done)
{
    if (mHttp == nullptr) {
        done(false, VersionInfo());
        return;
    }
    mHttp->getAppVersion(guard(done), guard([done](QString message) {
                             logTimeout(message);
                             done(false, VersionInfo());
                         }),
                         guard([done](QString message, QNetworkReply::NetworkError code) {
                             logError(message, code);
                             done(false, VersionInfo());
                         }));
}

void BackendLadder::fetchPicture(const QString& reference, std::function<void(QString)> show)
{
    // A refused name counts as none.
    const QString path = reference.isEmpty() ? QString() : PictureFiles::localPath(reference);
    if (path.isEmpty()) {
        show(QString());
        return;
    }
    if (QFile::exists(path)) {
        show(path);
        return;
    }
    // Module replies come again while the first download runs: fetch each picture once.
    if (mHttp == nullptr || mImageDownloads.contains(path)) {
        return;
    }
    mImageDownloads.insert(path);
    mHttp->downloadImage(reference, path, guard([this, show, path](bool ok, QString saved) {
                             mImageDownloads.remove(path);
                             if (ok) {
                                 show(saved);
                             }
                         }),
                         guard([this, path](QString url, QNetworkReply::NetworkError code) {
                             mImageDownloads.remove(path);
                             qCWarning(lcConsole).noquote() << "image download failed:" << url << code;
                         }));
}
