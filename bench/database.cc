// Cost of following the configuration database. A committed update of one
// field travels: write transaction, commit, the component manager, the
// DatabaseTracker, the tracked "db." variable, an expression over it, and a
// client Observer's callback. Measured here:
//   - that whole path for one update (BM_UpdateToCallback);
//   - the same write to a database nobody registered with, the floor the
//     database alone sets (BM_UpdateUntracked);
//   - the engine's half alone, a value written into the tracked variable
//     (BM_TrackedVariableToCallback);
//   - 10,000 updates, committed one by one or in one transaction, over one
//     tracked entry, spread over 100, or in the unregistered database
//     (BM_TenThousandUpdates, items/s).
// Each benchmark counts the callbacks it caused and skips with an error when
// they are not one per update, or when the last value seen is not the one
// written: a path that lost notifications must not look fast.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/component/component_manager.h"
#include "host/db/db.h"
#include "host/runtime/function.h"
#include "sysevent/database/database_tracker.h"
#include "sysevent/repository/observer.h"
#include "sysevent/repository/repository.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {
namespace {

// Tracked entries: Port 1 .. kPorts, each with the expression
// dbbench.p<number> = db.Port:<number>.vlan + 1 observed by one Observer.
constexpr unsigned kPorts = 100;
// vlan runs through 1 .. kVlanCycle, so every write changes the value (an
// update that changes nothing is not notified). Values written straight into
// the variable stay above it, so the next database write changes it again.
constexpr unsigned kVlanCycle = 4093;
constexpr unsigned long long kDirectBase = 100000;

// The device schema the configuration component ships, beside this tree.
String schemaPath() {
    std::string here = __FILE__;  // .../bench/database.cc
    return String(here.substr(0, here.rfind("/bench/")) + "/examples/network_device.sql");
}

// Everything the benchmarks share, built once on first use and never torn
// down: published objects live for the whole process anyway, and the
// manager's registrations must outlast every commit.
struct Setup {
    XCode status;  // the first failure while building, if any
    VXPtr<DB::Database> db;
    VX::ComponentManager* manager = nullptr;
    DatabaseTracker* tracker = nullptr;
    Observer* observer = nullptr;
    std::vector<uint64_t> portUid;  // by port index 0 .. kPorts-1 (number = index + 1)
    std::vector<unsigned> vlan;     // the value last written to the database, per port
    // The reference: a second database with the same schema and Port 1,
    // for which no component registered, so its writes notify nobody.
    VXPtr<DB::Database> plain;
    uint64_t plainUid = 0;
    unsigned plainVlan = 1;

    // What the Observer saw; touched only on the committing thread.
    unsigned long long callbacks = 0;
    Value lastValue;

    Setup() { status = build(); }

    XCode build() {
        XCode rc = DB::Database::OPEN_IN_MEMORY(db);
        if (rc.isSuccess()) rc = db->applySchemaFile(schemaPath());
        if (rc.isSuccess()) rc = DB::Database::OPEN_IN_MEMORY(plain);
        if (rc.isSuccess()) rc = plain->applySchemaFile(schemaPath());
        if (rc.isSuccess()) {
            rc = inWrite(plain, [&](DB::ObjWrite& w) {
                return w.insert("Port", {{"number", "1"}}, &plainUid);
            });
        }
        if (rc.isErr()) return rc;
        DB::Database::SET_DEFAULT(db);

        manager = new VX::ComponentManager("dbbench", VX::ComponentManager::DELIVER_DIRECT);
        tracker = new DatabaseTracker(manager);
        manager->addDatabaseHandler([this](DB::EventType_ type, DB::ObjRead& entry) {
            tracker->onDatabaseEvent(type, entry);
        });
        observer = new Observer(
            Observer::ValueChangeCallback(VX::directCall(), [this](String, Value value) {
                ++callbacks;
                lastValue = value;
            }));

        portUid.resize(kPorts);
        vlan.assign(kPorts, 1);
        rc = inWrite(db, [&](DB::ObjWrite& w) {
            XCode r;
            for (unsigned i = 0; i < kPorts && r.isSuccess(); ++i) {
                r = w.insert("Port", {{"number", String::stringOf(i + 1)}}, &portUid[i]);
            }
            return r;
        });
        if (rc.isErr()) return rc;

        for (unsigned i = 0; i < kPorts; ++i) {
            const String variable = String::Formatted("db.Port:%u.vlan", i + 1);
            const String expression = String::Formatted("p%u", i + 1);
            VXLockPtr<Repository> repository(Repository::INSTANCE());
            VXPPtr<IRead> read;
            rc = repository->get(variable, read);
            if (rc.isSuccess()) rc = tracker->startTracking(read);
            if (rc.isSuccess()) {
                rc = repository->createExpression("dbbench", expression, variable + " + 1");
            }
            if (rc.isErr()) return rc;
            observer->addTo("dbbench." + expression, false);
        }
        // The expressions must already follow the database before anything
        // is timed.
        Value v;
        rc = Repository::GET_VALUE("dbbench.p1", v);
        if (rc.isSuccess() && v != Value(2ULL)) {
            rc = XCode(XCode::GENERIC_FAILURE, "dbbench.p1 is " + v.toString() + ", not 2");
        }
        return rc;
    }

    // The next vlan of port `i`, always different from its current one.
    String nextVlan(unsigned i) {
        vlan[i] = vlan[i] % kVlanCycle + 1;
        return String::stringOf(vlan[i]);
    }

    // One update of port `i`'s vlan in an open write transaction.
    XCode updatePort(DB::ObjWrite& w, unsigned i) {
        return w.update("Port", portUid[i], {{"vlan", nextVlan(i)}});
    }

    // The same update in the reference database.
    XCode updatePlain(DB::ObjWrite& w) {
        plainVlan = plainVlan % kVlanCycle + 1;
        return w.update("Port", plainUid, {{"vlan", String::stringOf(plainVlan)}});
    }

    // Runs `ops` in a write transaction of its own on `on` and commits.
    template <typename F>
    static XCode inWrite(const VXPtr<DB::Database>& on, F ops) {
        DB::Transaction tx(DB::TRANSACTION_WRITE, on);
        XCode rc = tx.start();
        if (rc.isErr()) return rc;
        DB::ObjWrite w(tx);
        rc = ops(w);
        if (rc.isErr()) return rc;
        return tx.commit();
    }
};

Setup& setup() {
    static Setup* s = new Setup();
    return *s;
}

// False, with the benchmark skipped, when `rc` is a failure.
bool ok(benchmark::State& state, const XCode& rc, const char* what) {
    if (rc.isSuccess()) return true;
    state.SkipWithError((String(what) + ": " + rc.toString()).c_str());
    return false;
}

// Checks that `expected` callbacks arrived since `before`, that the last one
// carried `value`, and that the expression `name` reads it too.
void verify(benchmark::State& state, unsigned long long before, unsigned long long expected,
            const String& name, const Value& value) {
    Setup& s = setup();
    Value now;
    XCode rc = Repository::GET_VALUE(name, now);
    if (s.callbacks - before != expected) {
        state.SkipWithError(
            String::Formatted("%llu callbacks for %llu updates", s.callbacks - before, expected)
                .c_str());
    } else if (rc.isErr() || !(now == value) || !(s.lastValue == value)) {
        state.SkipWithError(
            String::Formatted("expected %s, callback saw %s, %s reads %s", value.toString().c_str(),
                              s.lastValue.toString().c_str(), name.c_str(), now.toString().c_str())
                .c_str());
    }
}

// One committed update of a tracked field, through to the Observer.
void BM_UpdateToCallback(benchmark::State& state) {
    Setup& s = setup();
    if (!ok(state, s.status, "setup")) return;
    const unsigned long long before = s.callbacks;
    for (auto _ : state) {
        if (!ok(state, s.inWrite(s.db, [&](DB::ObjWrite& w) { return s.updatePort(w, 0); }),
                "update")) {
            return;
        }
    }
    verify(state, before, state.iterations(), "dbbench.p1", Value(s.vlan[0] + 1ULL));
}
BENCHMARK(BM_UpdateToCallback)->Unit(benchmark::kMicrosecond);

// The same write (same table, same entry) to a database no component
// registered with: nothing is delivered, so this is the database's share of
// the above.
void BM_UpdateUntracked(benchmark::State& state) {
    Setup& s = setup();
    if (!ok(state, s.status, "setup")) return;
    const unsigned long long before = s.callbacks;
    for (auto _ : state) {
        if (!ok(state, s.inWrite(s.plain, [&](DB::ObjWrite& w) { return s.updatePlain(w); }),
                "update")) {
            return;
        }
    }
    if (s.callbacks != before) state.SkipWithError("an untracked table reached the Observer");
}
BENCHMARK(BM_UpdateUntracked)->Unit(benchmark::kMicrosecond);

// The engine's share: a value written into the tracked variable the way the
// tracker writes it (look-up by name, then setValue under the variable's
// lock), through the expression to the Observer.
void BM_TrackedVariableToCallback(benchmark::State& state) {
    Setup& s = setup();
    if (!ok(state, s.status, "setup")) return;
    const unsigned long long before = s.callbacks;
    static unsigned long long n = 0;
    for (auto _ : state) {
        n = (n + 1) % kVlanCycle;
        VXPPtr<IWrite> writable;
        if (!ok(state, Repository::GET("db.Port:2.vlan", writable), "get")) return;
        VXLockPtr<IWrite> locked(writable);
        if (!ok(state, locked->setValue(Value(kDirectBase + n)), "set")) return;
    }
    verify(state, before, state.iterations(), "dbbench.p2", Value(kDirectBase + n + 1));
}
BENCHMARK(BM_TrackedVariableToCallback)->Unit(benchmark::kMicrosecond);

// `count` updates committed one by one (one_tx = 0) or in one transaction
// (one_tx = 1): of vlan, round robin over `entries` tracked entries, each of
// which must reach the Observer; or, with entries = 0, of the same field in
// the reference database, which notifies nobody (the database's share).
void BM_TenThousandUpdates(benchmark::State& state) {
    Setup& s = setup();
    if (!ok(state, s.status, "setup")) return;
    const unsigned count = static_cast<unsigned>(state.range(0));
    const unsigned ports = static_cast<unsigned>(state.range(1));
    const bool oneTransaction = state.range(2) != 0;
    const unsigned long long before = s.callbacks;
    const VXPtr<DB::Database>& target = ports == 0 ? s.plain : s.db;
    unsigned last = 0;
    auto one = [&](DB::ObjWrite& w, unsigned k) {
        if (ports == 0) return s.updatePlain(w);
        last = k % ports;
        return s.updatePort(w, last);
    };
    for (auto _ : state) {
        XCode rc;
        if (oneTransaction) {
            rc = s.inWrite(target, [&](DB::ObjWrite& w) {
                XCode r;
                for (unsigned k = 0; k < count && r.isSuccess(); ++k) r = one(w, k);
                return r;
            });
        } else {
            for (unsigned k = 0; k < count && rc.isSuccess(); ++k) {
                rc = s.inWrite(target, [&](DB::ObjWrite& w) { return one(w, k); });
            }
        }
        if (!ok(state, rc, "update")) return;
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * count);
    if (ports == 0) {
        if (s.callbacks != before) state.SkipWithError("an untracked table reached the Observer");
        return;
    }
    verify(state, before, static_cast<unsigned long long>(state.iterations()) * count,
           String::Formatted("dbbench.p%u", last + 1), Value(s.vlan[last] + 1ULL));
}
BENCHMARK(BM_TenThousandUpdates)
    ->ArgNames({"updates", "entries", "one_tx"})
    ->Args({10000, 1, 0})
    ->Args({10000, 1, 1})
    ->Args({10000, kPorts, 0})
    ->Args({10000, kPorts, 1})
    ->Args({10000, 0, 0})
    ->Args({10000, 0, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace VX::SysEvent
