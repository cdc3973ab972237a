// Locks. VXLock is re-entrant for its holder: the engine's single lock is a
// VXLock because member operations call static operations that take it again.
// VXMutex is a plain, non-re-entrant mutex. VXAutoLock holds either for a scope.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

class VXLock {
public:
    VXLock() = default;
    VXLock(const VXLock&) = delete;
    VXLock& operator=(const VXLock&) = delete;

    void lock() {
        mutex_.lock();
        if (depth_++ == 0) owner_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }
    bool tryLock() {
        if (!mutex_.try_lock()) return false;
        if (depth_++ == 0) owner_.store(std::this_thread::get_id(), std::memory_order_relaxed);
        return true;
    }
    void unlock() {
        if (--depth_ == 0) owner_.store(std::thread::id(), std::memory_order_relaxed);
        mutex_.unlock();
    }
    // True when the calling thread holds the lock (for assertions).
    bool isHeldByMe() const {
        return owner_.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    // BasicLockable spelling, so std::unique_lock and friends work too.
    bool try_lock() { return tryLock(); }

private:
    std::recursive_mutex mutex_;
    std::atomic<std::thread::id> owner_{};
    unsigned depth_ = 0;  // guarded by mutex_
};

class VXMutex {
public:
    void lock() { mutex_.lock(); }
    bool tryLock() { return mutex_.try_lock(); }
    bool try_lock() { return mutex_.try_lock(); }
    void unlock() { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

// Holds a VXLock or VXMutex from construction to destruction.
template <typename L>
class VXAutoLockT {
public:
    explicit VXAutoLockT(L& l) : lock_(l) { lock_.lock(); }
    ~VXAutoLockT() { lock_.unlock(); }
    VXAutoLockT(const VXAutoLockT&) = delete;
    VXAutoLockT& operator=(const VXAutoLockT&) = delete;

private:
    L& lock_;
};

using VXAutoLock = VXAutoLockT<VXLock>;
using VXAutoMutex = VXAutoLockT<VXMutex>;
