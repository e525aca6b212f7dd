#include "Utils/CustomTimer.h"

#include <chrono>

CustomTimer::CustomTimer(int ms, std::function<void()> fn, QObject* parent)
    : QThread(parent), mInterval(ms), mFunction(std::move(fn))
{
}

CustomTimer::~CustomTimer()
{
    stop();
    wait();
    // The thread's last step takes the lock too: taking it here orders everything the thread
    // did before the members go (the join inside QThread::wait is not a visible one).
    const std::lock_guard<std::mutex> lock(mMutex);
}

void CustomTimer::start()
{
    // A thread still leaving after a stop would swallow the new start.
    if (isRunning() && QThread::currentThread() != this) {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            if (mRunning) {
                return;
            }
        }
        wait();
    }
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mRunning = true;
    }
    QThread::start(QThread::InheritPriority);
}

void CustomTimer::stop()
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mRunning = false;
    }
    mWake.notify_all();
    quit();
}

void CustomTimer::setSingleShot(bool singleShot)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mSingleShot = singleShot;
}

bool CustomTimer::isActive() const
{
    return isRunning();
}

void CustomTimer::run()
{
    runLoop();
    const std::lock_guard<std::mutex> lock(mMutex);
}

void CustomTimer::runLoop()
{
    bool singleShot = false;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        singleShot = mSingleShot;
    }
    if (singleShot) {
        if (mFunction) {
            mFunction();
        }
        stop();
        return;
    }
    for (;;) {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            if (!mRunning) {
                return;
            }
        }
        if (mFunction) {
            mFunction();
        }
        std::unique_lock<std::mutex> lock(mMutex);
        mWake.wait_for(lock, std::chrono::milliseconds(mInterval), [this] { return !mRunning; });
        if (!mRunning) {
            return;
        }
    }
}
