#include "Hid/ClickClassifier.h"

ClickClassifier::Results ClickClassifier::buildClickType(int key, int status, bool reportDoubleClickRelease)
{
    Results results;
    const std::lock_guard<std::mutex> lock(mMutex);
    auto it = mKeys.find(key);
    if (status != 0) {
        if (it == mKeys.end()) {
            KeyEvent event;
            event.key = key;
            event.pressCount = 1;
            mKeys.insert(key, event);
        } else if (it->ticks < kDoubleClickTicks) {
            it->state = 3;
            it->pressCount += 1;
            results.append({key, Kind::DoubleClick, 1});
        }
        // A press at or after the window's end changes nothing; the click is still due.
        return results;
    }

    if (it == mKeys.end()) {
        return results;
    }
    if (it->state == 2) {
        mKeys.erase(it);
        results.append({key, Kind::LongClick, 0});
    } else if (it->state == 3) {
        mKeys.erase(it);
        if (reportDoubleClickRelease) {
            results.append({key, Kind::DoubleClick, 0});
        }
    } else {
        it->releaseCount += 1;
    }
    return results;
}

ClickClassifier::Results ClickClassifier::onKeyCheck()
{
    Results results;
    const std::lock_guard<std::mutex> lock(mMutex);
    for (auto it = mKeys.begin(); it != mKeys.end();) {
        it->ticks += 1;
        if (it->pressCount == 1) {
            if (it->releaseCount == 1) {
                if (it->ticks > kDoubleClickTicks) {
                    results.append({it->key, Kind::Click, 0});
                    it = mKeys.erase(it);
                    continue;
                }
            } else if (it->ticks == kLongPressTicks) {
                it->state = 2;
                results.append({it->key, Kind::LongClick, 1});
            }
        }
        ++it;
    }
    return results;
}

bool ClickClassifier::isIdle() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mKeys.isEmpty();
}

bool ClickClassifier::entry(int key, KeyEvent* out) const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto it = mKeys.constFind(key);
    if (it == mKeys.constEnd()) {
        return false;
    }
    *out = *it;
    return true;
}
