// VXSingleton<T>: a process-wide object made on first use under FAST_MUTEX and
// never destroyed (so it outlives every static that might still use it).
#pragma once

#include <atomic>

#include "host/runtime/lock.h"

// The host's mutex for singleton creation.
VXMutex& FAST_MUTEX();

template <typename T>
class VXSingleton {
public:
    static T* INSTANCE() {
        T* p = s_instance.load(std::memory_order_acquire);
        if (p) return p;
        VXAutoMutex guard(FAST_MUTEX());
        p = s_instance.load(std::memory_order_relaxed);
        if (!p) {
            p = new T();
            s_instance.store(p, std::memory_order_release);
        }
        return p;
    }

private:
    static inline std::atomic<T*> s_instance{nullptr};
};
