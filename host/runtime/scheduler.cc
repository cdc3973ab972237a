// VX::RealScheduler: the real clock.
#include "host/runtime/scheduler.h"

#include <ctime>

namespace VX {

Time RealScheduler::now() {
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    // Seconds wrap like every VX::Time (32-bit, two's complement).
    return Time(static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(ts.tv_sec))),
                static_cast<int32_t>(ts.tv_nsec));
}

}  // namespace VX
