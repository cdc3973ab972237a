// allocatedBytes(): the bytes the process holds in live allocations, as
// jemalloc counts them, for the tests that check memory comes back and the
// benchmarks that weigh one object. This thread's cache is flushed and the
// statistics refreshed first, or a reading lags behind frees just made.
// Without jemalloc there is no such figure: it reads 0, and callers check
// memory only when HAS_ALLOCATED_BYTES holds.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef SYSEVENT_WITH_JEMALLOC
#include <jemalloc/jemalloc.h>
#endif

#ifdef SYSEVENT_WITH_JEMALLOC
inline constexpr bool HAS_ALLOCATED_BYTES = true;

inline size_t allocatedBytes() {
    mallctl("thread.tcache.flush", nullptr, nullptr, nullptr, 0);
    uint64_t epoch = 1;
    size_t size = sizeof epoch;
    mallctl("epoch", &epoch, &size, &epoch, size);
    size_t allocated = 0;
    size = sizeof allocated;
    if (mallctl("stats.allocated", &allocated, &size, nullptr, 0) != 0) return 0;
    return allocated;
}
#else
inline constexpr bool HAS_ALLOCATED_BYTES = false;

inline size_t allocatedBytes() {
    return 0;
}
#endif
