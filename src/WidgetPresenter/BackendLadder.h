#pragma once

#include "Http/BackendRecords.h"
#include "Http/HttpRequest.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

#include <functional>

class HttpManager;
class QTimer;

// The console's backend work: the ladder of requests taken in order once per run (version,
// device list, open delay, address report, calendar phrase, then with a set-up device its
// registration and the direct UI list), each retried at once a couple of times, then after a
// pause, the optional ones given up after a few tries; then the heartbeat, and the version
// and picture fetches the presenter asks for.
//
// Threads: main thread only, replies included (the backend answers there), so it holds no
// lock. The device lifecycle's controller thread never calls it: its wishes come queued
// through the presenter.
class BackendLadder : public QObject {
    Q_OBJECT

public:
    static constexpr int kControllerMs = 100;
    static constexpr int kHeartbeatMs = 600000;
    static constexpr int kHttpTimeoutMs = 8000;
    // A failing step is asked again at once this many times, then every kBackoffMs.
    static constexpr int kQuickRetries = 2;
    static constexpr int kBackoffMs = 5000;
    // The address report and the calendar phrase are given up for the run after this many tries.
    static constexpr int kOptionalStepTries = 3;
    static constexpr char kNoDongleId[] = "0000000000000000";

    // The steps, in the order they are taken and retried.
    enum Step {
        StepAppVersion,
        StepDeviceList,
        StepDeviceOpenTime,
        StepIpAddress,
        StepIpInfo,
        StepUploadIpInfo,
        StepCalendarPhrases,
        StepRegisterDevice,
        StepDirectUI,
        StepCount
    };
    enum TimerId { TimerController, TimerHeartbeat, TimerCount };

    struct Collaborators {
        HttpManager* http = nullptr;  // none: the ladder stays quiet
        // A monotonic clock in milliseconds for the retry pauses; steady_clock when unset.
        std::function<qint64()> clockMs;
        // Whether the device is set up: the registration and what follows wait for it.
        std::function<bool()> deviceInitialised;
        // The ids the registration sends.
        std::function<Device()> device;
    };

    explicit BackendLadder(const Collaborators& collaborators, QObject* parent = nullptr);

    bool requested(Step step) const { return mRequested[step]; }
    bool answered(Step step) const { return mAnswered[step]; }
    bool givenUp(Step step) const { return mGivenUp[step]; }
    bool isComplete() const { return mComplete; }
    bool isOnline() const { return mOnline; }
    QTimer* timer(TimerId id) const { return mTimers[id]; }
    DeviceRecord deviceRecord() const { return mDeviceRecord; }

    // At quit: the timers stopped.
    void stop();
    // Online the ladder walks on; offline it rests and the registration is owed again.
    void setOnline(bool online);
    // The device is set up: what waited for it goes on.
    void resume();
    // Asks for the device's open delay unless asked already or pausing after failures; false
    // when there is no backend to ask (offline) or it has failed to answer, and the caller
    // takes its saved delay.
    bool requestOpenTime();
    // The newest version, for the presenter's offers: done(false, {}) when no answer came.
    void fetchVersion(std::function<void(bool, VersionInfo)> done);
    // A branding picture by the backend's name: show(path) with the local copy, now or once
    // downloaded; show({}) for no or a refused name.
    void fetchPicture(const QString& reference, std::function<void(QString)> show);

    // The steps' requests; the ladder's tick takes them in order.
    void getAppVersion();
    void getDeviceList();
    void getIpAddress();
    void getIpInfo();
    void uploadIpInfo();
    void getCalendarPhrases();
    void registerDevice();
    void getDirectUIList();

public slots:
    void onTimerController();
    void onTimerHeartbeat();

signals:
    void appVersion(VersionInfo vi);
    void deviceListArrived(QList<DeviceInfo> list);
    void openTimeArrived(DeviceOpenTime openTime);
    void ipIdKnown(int id);
    void calendarPhrasesArrived(CalendarPhrases phrases);
    void directUIsArrived(QList<DirectUI> directUIs);
    // A step the program needs has failed past its quick retries (false), or the backend has
    // answered again after that (true).
    void reachableChanged(bool reachable);

private:
    // A reply handler that does nothing once the ladder is gone: replies outlive it.
    template <typename Fn>
    auto guard(Fn fn)
    {
        QPointer<BackendLadder> self(this);
        return [self, fn](auto... args) {
            if (self) {
                fn(args...);
            }
        };
    }
    // The reply handler of a step: fn(value) once it answered, the failure counted if refused.
    template <typename T>
    std::function<void(bool, T)> onAnswer(Step step, std::function<void(T)> fn)
    {
        return guard([this, step, fn](bool ok, T value) {
            if (!ok) {
                stepFailed(step, QStringLiteral("refused"));
                return;
            }
            stepAnswered(step);
            fn(value);
        });
    }
    // The open delay's step; the device controller may have asked it first.
    void askOpenTime() { requestOpenTime(); }
    void stepFailed(Step step, const QString& reason);
    void stepAnswered(Step step);
    HttpRequest::TimeoutFunc onTimeout(Step step);
    HttpRequest::ErrorFunc onError(Step step);

    HttpManager* mHttp;
    std::function<qint64()> mClockMs;
    std::function<bool()> mDeviceInitialised;
    std::function<Device()> mDevice;
    QTimer* mTimers[TimerCount] = {};

    bool mOnline = true;
    bool mComplete = false;
    bool mRequested[StepCount] = {};
    bool mAnswered[StepCount] = {};
    bool mGivenUp[StepCount] = {};
    int mFailures[StepCount] = {};  // in a row, since the step last answered
    bool mUnreachable = false;      // said with reachableChanged(false)
    qint64 mRetryAt[StepCount] = {};
    QString mIpAddress;
    IpInfo mIpInfo;
    DeviceRecord mDeviceRecord;
    QSet<QString> mImageDownloads;  // pictures being fetched, by local path
};
