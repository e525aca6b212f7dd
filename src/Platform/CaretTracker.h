#pragma once

#include <QPoint>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

// Keeps the caret search off the caller's thread. The search asks other applications over the
// accessibility bus and can take as long as the slowest of them; the voice key's press must
// not. Each request wakes a worker thread that searches afresh; the caller waits for that
// result at most `wait`, else takes the last one found if it is no older than `maxAge`, else
// (0, 0), the "caret unknown" answer. Requests made while a search runs share the next search.
// Any thread.
class CaretTracker {
public:
    using Lookup = std::function<QPoint()>;

    explicit CaretTracker(Lookup lookup, std::chrono::milliseconds wait = std::chrono::milliseconds(15),
                          std::chrono::milliseconds maxAge = std::chrono::milliseconds(1000));
    // Waits for a search under way.
    ~CaretTracker();
    CaretTracker(const CaretTracker&) = delete;
    CaretTracker& operator=(const CaretTracker&) = delete;

    QPoint caretPosition();

private:
    using Clock = std::chrono::steady_clock;

    void run();

    const Lookup mLookup;
    const std::chrono::milliseconds mWait;
    const std::chrono::milliseconds mMaxAge;

    std::mutex mMutex;
    std::condition_variable mChanged;
    unsigned long long mRequested = 0;  // requests made
    unsigned long long mAnswered = 0;   // requests the last result answers
    bool mHasLast = false;
    QPoint mLast;
    Clock::time_point mLastAt;
    bool mStopping = false;
    std::thread mWorker;  // last: starts once the state above exists
};
