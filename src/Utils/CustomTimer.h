#pragma once

#include <QThread>

#include <condition_variable>
#include <functional>
#include <mutex>

// A thread that calls a function, then waits the interval, until stopped; or once. The
// interval runs from the end of one call to the start of the next. stop() wakes the wait,
// so the thread leaves at once after the call in progress; nothing is ever terminated.
class CustomTimer : public QThread {
    Q_OBJECT

public:
    CustomTimer(int ms, std::function<void()> fn, QObject* parent = nullptr);
    ~CustomTimer() override;

    void start();
    void stop();
    void setSingleShot(bool singleShot);
    bool isActive() const;

protected:
    void run() override;

private:
    void runLoop();

    const int mInterval;
    const std::function<void()> mFunction;
    mutable std::mutex mMutex;
    std::condition_variable mWake;
    bool mRunning = false;
    bool mSingleShot = false;
};
