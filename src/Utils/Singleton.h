#pragma once

#include <atomic>
#include <mutex>
#include <utility>

// The process-wide instance idiom: created on first use under a mutex with a second
// test inside the lock, never deleted. Arguments count only on the first call (a
// dialog's parent). Derive as `class X : public QObject, public Singleton<X>` and
// befriend `Singleton<X>` when the constructor is private.
template <typename T>
class Singleton {
public:
    template <typename... Args>
    static T* getInstance(Args&&... args)
    {
        T* current = sInstance.load(std::memory_order_acquire);
        if (current == nullptr) {
            static std::mutex mutex;
            const std::lock_guard<std::mutex> lock(mutex);
            current = sInstance.load(std::memory_order_relaxed);
            if (current == nullptr) {
                current = new T(std::forward<Args>(args)...);
                sInstance.store(current, std::memory_order_release);
            }
        }
        return current;
    }

    // The instance if one was made, without making one: what is taken down at quit.
    static T* existingInstance() { return sInstance.load(std::memory_order_acquire); }

    // Tests only: drop the instance so that the next getInstance() starts afresh.
    static void resetInstanceForTest() { delete sInstance.exchange(nullptr, std::memory_order_acq_rel); }

protected:
    Singleton() = default;
    ~Singleton() = default;

private:
    static inline std::atomic<T*> sInstance{nullptr};
};
