// What every fuzzer shares: an invariant check that stops the run with a
// readable message (libFuzzer keeps the input that got there), the engine on
// the manual clock, a sweep that destroys every published name, so that one
// input leaves nothing behind for the next, and a script of the tool's
// command language run in process on a database emptied for it.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <sstream>
#include <string>

#include "host/component/driver.h"
#include "host/component/driver_repository.h"
#include "host/db/db.h"
#include "host/runtime/clock.h"
#include "host/runtime/crit.h"
#include "host/runtime/manual_time.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/repository.h"
#include "tools/sysevent/bundled_schema.h"
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

// The clock at the same start for every input: timers then fire only when
// an input advances it, so a run repeats exactly and never waits.
inline void USE_MANUAL_TIME() {
    VX::Clock start;
    start.set("2024-01-01T00:00:00");
    VX::ManualTime::ENABLE(start.toTime());
}

// Every published name but those in `kept` is destroyed.
inline void DESTROY_ALL_NAMES(std::initializer_list<String> kept = {}) {
    VXLockPtr<VX::SysEvent::Repository> repository(VX::SysEvent::Repository::INSTANCE());
    VXVector<VXPPtr<IDriver>> drivers;
    DRIVER::GET_INTERFACES(VX::SysEvent::DID_Variable(), "var/", drivers);
    for (const VXPPtr<IDriver>& driver : drivers) {
        const String name = driver->getDriverName().substring(4);
        if (std::find(kept.begin(), kept.end(), name) == kept.end()) repository->destroy(name);
    }
}

// The in-memory database with the bundled schema, made once (making it took
// two thirds of each input) and emptied for every input in one transaction:
// its entries go (children with their parents), so that UIDs start again
// from 1. Nobody is registered for its changes then: the last input's
// tracker is gone. One whose schema an input changed is made afresh.
inline const VXPtr<DB::Database>& EMPTY_DATABASE() {
    static VXPtr<DB::Database> db;
    static VXPtr<const DB::Base> bundled;  // held, so that no other can take its address
    if (!db || db->getBase().get() != bundled.get()) {
        FUZZ_CHECK(DB::Database::OPEN_IN_MEMORY(db).isSuccess() &&
                       db->applySchema(SysEventTool::BUNDLED_SCHEMA).isSuccess(),
                   "no in-memory database");
        bundled = db->getBase();
    }
    DB::Transaction tx(DB::TRANSACTION_WRITE, db);
    FUZZ_CHECK(tx.start().isSuccess(), "cannot empty the database");
    for (uint16_t no = 1; no <= db->getBase()->getNumberOfStructs(); ++no) {
        DB::ObjRead entry(tx);
        entry.setStructNo(no);
        while (entry.readFirst().isSuccess()) {
            FUZZ_CHECK(DB::ObjWrite(tx).remove(entry.getStructName(), entry.getUID()).isSuccess(),
                       "a %s entry stays", entry.getStructName().c_str());
        }
    }
    FUZZ_CHECK(tx.commit().isSuccess(), "cannot empty the database");
    return db;
}

// As `sysevent run --manual-time --script` would, against the bundled schema
// in an empty in-memory database, output dropped; then every name is gone.
inline void RUN_SCRIPT(const std::string& text) {
    USE_MANUAL_TIME();
    static SysEventTool::Output output(fopen("/dev/null", "w"), fopen("/dev/null", "w"));
    {
        SysEventTool::Session session(output, true);
        session.useDatabase(EMPTY_DATABASE());
        std::istringstream script(text);
        SysEventTool::RUN_STREAM(session, output, script, "fuzz.se", false);
    }
    DESTROY_ALL_NAMES();
}

}  // namespace FuzzSupport
