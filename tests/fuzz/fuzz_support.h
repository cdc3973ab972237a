// What every fuzzer shares: an invariant check that stops the run with a
// readable message (libFuzzer keeps the input that got there), the engine on
// the manual clock, a sweep that destroys every published name, so that one
// input leaves nothing behind for the next, and a script of the tool's
// command language run in process.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "host/component/driver.h"
#include "host/component/driver_repository.h"
#include "host/runtime/clock.h"
#include "host/runtime/crit.h"
#include "host/runtime/manual_time.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/repository.h"
#include "tools/sysevent/script_runner.h"
#include "tools/sysevent/session.h"

#define FUZZ_CHECK(cond, ...)                                                              \
    do {                                                                                   \
        if (!(cond)) {                                                                     \
            fprintf(stderr, "%s:%d: invariant broken: %s\n  ", __FILE__, __LINE__, #cond); \
            fprintf(stderr, __VA_ARGS__);                                                  \
            fputc('\n', stderr);                                                           \
            abort();                                                                       \
        }                                                                                  \
    } while (0)

namespace FuzzSupport {

// Timers then fire only when an input advances the clock, so a run repeats
// exactly and never waits.
inline void USE_MANUAL_TIME() {
    if (VX::ManualTime::IS_ENABLED()) return;
    VX::Clock start;
    start.set("2024-01-01T00:00:00");
    VX::ManualTime::ENABLE(start.toTime());
}

inline void DESTROY_ALL_NAMES() {
    VXLockPtr<VX::SysEvent::Repository> repository(VX::SysEvent::Repository::INSTANCE());
    VXVector<VXPPtr<IDriver>> drivers;
    DRIVER::GET_INTERFACES(VX::SysEvent::DID_Variable(), "var/", drivers);
    for (const VXPPtr<IDriver>& driver : drivers) {
        repository->destroy(driver->getDriverName().substring(4));
    }
}

// As `sysevent run --manual-time --script` would, against the bundled schema
// in a fresh in-memory database, output dropped; then every name is gone.
inline void RUN_SCRIPT(const std::string& text) {
    USE_MANUAL_TIME();
    static FILE* sink = fopen("/dev/null", "w");
    static SysEventTool::Output output(sink, sink);
    {
        SysEventTool::Session session(output, true);
        FUZZ_CHECK(session.openDatabase("").isSuccess(), "no in-memory database");
        std::istringstream script(text);
        SysEventTool::RUN_STREAM(session, output, script, "fuzz.se", false);
    }
    DESTROY_ALL_NAMES();
}

}  // namespace FuzzSupport
