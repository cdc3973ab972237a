// The public API of SysEvent in one include: what a client uses to publish
// named values, define expressions, observe changes and bind names to the
// configuration database. The graph, the formula parser and the event loop
// are the engine's own and are not installed.
#pragma once

// Host types the API is written in.
#include "host/component/driver_repository.h"
#include "host/component/info.h"
#include "host/component/unknown.h"
#include "host/component/uuid.h"
#include "host/runtime/clock.h"
#include "host/runtime/containers.h"
#include "host/runtime/crit.h"
#include "host/runtime/function.h"
#include "host/runtime/lock.h"
#include "host/runtime/manual_time.h"
#include "host/runtime/monitor.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/scheduler.h"
#include "host/runtime/string.h"
#include "host/runtime/time.h"
#include "host/runtime/xcode.h"

// The engine's client API.
#include "sysevent/database/database_tracker.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/observer.h"
#include "sysevent/repository/observer_event.h"
#include "sysevent/repository/read_observer.h"
#include "sysevent/repository/repository.h"
#include "sysevent/repository/typed_accessors.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"
