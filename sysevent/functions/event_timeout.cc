// The process-wide timer-start fault of VXEventTimeout (see event_timeout.h).
#include "sysevent/functions/event_timeout.h"

namespace VX::SysEvent {

XCode TimerStartFault::s_injected;

}  // namespace VX::SysEvent
