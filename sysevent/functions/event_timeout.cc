// The process-wide state of VXEventTimeout (see event_timeout.h).
#include "sysevent/functions/event_timeout.h"

namespace VX::SysEvent {

XCode EventTimeouts::s_injectedStartFailure;
unsigned EventTimeouts::s_live = 0;

}  // namespace VX::SysEvent
