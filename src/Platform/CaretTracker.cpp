#include "Platform/CaretTracker.h"

#include <pthread.h>

CaretTracker::CaretTracker(Lookup lookup, std::chrono::milliseconds wait, std::chrono::milliseconds maxAge)
    : mLookup(std::move(lookup)), mWait(wait), mMaxAge(maxAge), mWorker([this] { run(); })
{
}

CaretTracker::~CaretTracker()
{
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mStopping = true;
    }
    mChanged.notify_all();
    mWorker.join();
}

QPoint CaretTracker::caretPosition()
{
    std::unique_lock<std::mutex> lock(mMutex);
    const unsigned long long request = ++mRequested;
    mChanged.notify_all();
    if (mChanged.wait_for(lock, mWait, [&] { return mAnswered >= request; })) {
        return mLast;
    }
    if (mHasLast && Clock::now() - mLastAt <= mMaxAge) {
        return mLast;
    }
    return QPoint(0, 0);
}

void CaretTracker::run()
{
    // Named, so that one left running at quit is told apart from the main thread.
    pthread_setname_np(pthread_self(), "CaretTracker");
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;) {
        mChanged.wait(lock, [this] { return mStopping || mRequested > mAnswered; });
        if (mStopping) {
            return;
        }
        const unsigned long long answers = mRequested;
        lock.unlock();
        const QPoint found = mLookup();
        lock.lock();
        mLast = found;
        mLastAt = Clock::now();
        mHasLast = true;
        mAnswered = answers;
        mChanged.notify_all();
    }
}
