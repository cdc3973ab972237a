// The whole public API of SysEvent in one include.
#pragma once

#include "host/clock.h"
#include "host/crit.h"
#include "host/manual_time.h"
#include "host/monitor.h"
#include "host/string.h"
#include "host/time.h"
#include "host/xcode.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"
