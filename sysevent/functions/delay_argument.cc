// The delay argument check shared by the timer-driven functions.
#include "sysevent/functions/delay_argument.h"

#include <cstdint>
#include <limits>

namespace VX::SysEvent {

XCode delayMilliseconds(const Value& delay, unsigned& ms) {
    if (delay.getDataType() != DT_TIME) return errToXCode(DST_ERR_VAL);
    if (delay.subtype != DST_REL_TIME) return errToXCode(DST_ERR_NUM);
    // Counted in 64 bits: a negative duration is refused, and so is one whose
    // millisecond count does not fit a signed 32-bit number (about 24.8 days),
    // rather than letting it wrap into some unrelated delay.
    const int64_t count = static_cast<int64_t>(delay.data.time.getSeconds()) * 1000 +
                          delay.data.time.getNanoseconds() / 1000000;
    if (count < 0 || count > std::numeric_limits<int32_t>::max()) return errToXCode(DST_ERR_NUM);
    ms = static_cast<unsigned>(count);
    return XCode();
}

}  // namespace VX::SysEvent
