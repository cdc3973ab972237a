// Eight clients share one namespace for a while (SYSEVENT_SOAK_SECONDS,
// default 10) and do random work on it, on the real clock: variables,
// constants, expressions (temporal ones with millisecond timers) and an
// expression set come and go, Observers of every delivery kind are attached
// and removed, and entries of the configuration database are inserted,
// updated and deleted under tracking. Checked while it runs and at the end:
// - outside a propagation no function node has updates pending;
// - an Observer's last delivered value of a name is the name's value;
// - a queued Observer receives exactly what its direct twin received, or a
//   prefix of it when its calls may be dropped at destruction;
// - a tracked "db." name holds its field's committed value;
// - with jemalloc, memory returns to its starting level.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "db/db_test_support.h"
#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "support/allocated_bytes.h"
#include "sysevent/database/database_tracker.h"
#include "sysevent/graph/proxy_node.h"
#include "sysevent/repository/observer.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {
namespace {

constexpr unsigned CLIENTS = 8, VARIABLES = 12, INTERFACES = 4;
// Interfaces 0 and 1 are tracked all the time; 2 and 3 now and then.
constexpr unsigned STEADY = 2;

const char* const FORMULAS[] = {"v0 + v1 * 2",
                                "DELAY(v2, 3ms)",
                                "STABLE(v3, 2ms)",
                                "WITHIN(v4 > 5, 4ms)",
                                "DEBOUNCE(v5 + k0, 2ms)",
                                "COUNT(soak.v%) + e0",
                                "IF(v6, e1, k1)",
                                "DEBOUNCEINC(v7 > 3, 1ms) || ONCE(v8 == 9)"};
constexpr unsigned EXPRESSIONS = std::size(FORMULAS);

const auto name = [](const char* k, unsigned i) { return String::Formatted("soak.%s%u", k, i); };
const auto dbName = [](unsigned i) { return String::Formatted("db.Interface:soak%u.mtu", i); };

// What one Observer received: the last value of each name, and the count and
// a running hash of every delivery in order.
struct Record {
    std::mutex mutex;
    std::map<String, String> last;
    unsigned long long count = 0, hash = 1469598103934665603ULL;

    // A destroyed name's last call carries "#N/A!", then the name is gone.
    void deliver(const String& n, const Value& v, bool destroyed = false) {
        std::lock_guard<std::mutex> held(mutex);
        const String text = n + "=" + v.toString() + ";";
        for (char c : text.str()) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
        ++count;
        destroyed ? (void)last.erase(n) : (void)(last[n] = v.toString());
    }
};

enum Kind { DIRECT, SYNC, QUEUED };

template <typename Callback, typename F>
Callback via(Kind kind, F f, bool keepQueued) {
    Callback callback(directCall(), f);
    if (kind != DIRECT)
        callback = Callback(EVENT_LOOP(), f, kind == SYNC ? Delivery::Sync : Delivery::Queued);
    callback.setDontCancelOnDestruction(keepQueued);
    return callback;
}

std::unique_ptr<Observer> observe(Kind k, const std::shared_ptr<Record>& r, const String& pattern,
                                  bool now, bool keep = false) {
    auto onChange = [r](String n, Value v) { r->deliver(n, v); };
    auto onDestroy = [r](String n) { r->deliver(n, Value(DST_UNDEF), true); };
    auto observer =
        std::make_unique<Observer>(via<Observer::ValueChangeCallback>(k, onChange, keep),
                                   via<Observer::DestroyCallback>(k, onDestroy, keep));
    observer->addTo(pattern, now);
    return observer;
}

// A queued Observer and its direct twin on the same pattern, made and
// destroyed together under the engine lock, so that both see the same changes.
struct Pair {
    std::shared_ptr<Record> direct{new Record}, queued{new Record};
    bool keepQueued = false;
    std::unique_ptr<Observer> directObserver{}, queuedObserver{};
};

// Under the engine lock: the value of every published name under "soak.",
// and, when asked, the node behind each.
std::map<String, String> published(Repository& repository, std::vector<Node*>* proxies = nullptr) {
    VXVector<VXPPtr<INode>> nodes;
    EXPECT_TRUE(repository.get("soak.%", nodes).isSuccess());
    std::map<String, String> values;
    for (const VXPPtr<INode>& node : nodes) {
        VXPPtr<IRead> read;
        if (node->queryIf(read).isSuccess()) values[read->getName()] = read->getValue().toString();
        if (proxies && node->getNode()) proxies->push_back(node->getNode().get());
    }
    return values;
}

// Under the engine lock: the Observer's last value of every published name is
// the name's value, and of every other name "#N/A!" (what a destroyed object
// reports last).
void checkView(Record& record) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    std::map<String, String> expected = published(*repository);
    std::lock_guard<std::mutex> held(record.mutex);
    std::map<String, String> seen = record.last;
    for (auto& [n, value] : record.last) expected.try_emplace(n, String("#N/A!"));
    for (auto& [n, value] : expected) seen.try_emplace(n, String("(never reported)"));
    EXPECT_EQ(seen, expected);
}

// Under the engine lock: no propagation runs and no function node reachable
// from a published name waits for an update.
void checkQuiet() {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    EXPECT_FALSE(Node::s_updateInProgress);
    std::vector<Node*> todo;
    published(*repository, &todo);
    for (size_t seen = 0; !todo.empty() && seen < 100000; ++seen) {
        auto* f = dynamic_cast<FunctionNode*>(todo.back());
        todo.pop_back();
        if (!f) continue;
        EXPECT_EQ(f->getPendingUpdates() + f->getChangedUpdates(), 0u)
            << f->getNormalizedExpression().c_str();
        for (const VXLWPtr<Node>& c : f->getChildren()) todo.push_back(c.get());
    }
}

// Runs `job` on the event loop's thread, after everything queued before it.
template <typename Job>
void onLoop(Job job) {
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> ran = done->get_future();
    EVENT_LOOP().post([&job, done] { job(), done->set_value(); });
    ran.wait();
}

// The objects a client makes and destroys by name: the name's kind, how many
// there are, 1 in `odds` of destroying rather than making, and how one is made.
struct Family {
    const char* kind;
    unsigned count, odds;
    XCode (*make)(Repository&, const String& n, unsigned i, const Value& v);
};
const Family FAMILIES[] = {
    {"v", VARIABLES, 3, [](auto& r, auto& n, auto, auto& v) { return r.createVariable(n, "", v); }},
    {"k", 2, 2, [](auto& r, auto& n, auto, auto& v) { return r.createConstant(n, "", v); }},
    {"e", EXPRESSIONS, 3, [](auto& r, auto&, auto i, auto&) {
         return r.setExpression("soak", String::Formatted("e%u", i), FORMULAS[i]);
     }}};

struct Client {
    std::mt19937 rng;
    std::vector<Pair> pairs;
    unsigned pick(unsigned n) { return static_cast<unsigned>(rng() % n); }
};

struct Soak {
    explicit Soak(std::chrono::steady_clock::time_point until) : until(until) {
        manager.addDatabaseHandler([this](DB::EventType_ type, DB::ObjRead& entry) {
            EXPECT_TRUE(tracker.onDatabaseEvent(type, entry).isSuccess());
        });
        VXAutoLock engine(LOCK());
        for (Kind k : {DIRECT, SYNC, QUEUED})
            observers[k] = observe(k, records[k], "soak.%", true, k == QUEUED);
    }

    void client(unsigned seed) {
        // Two sets for one read.
        auto setOrRead = [](Soak&, Client& c) {
            Value v(0ULL + c.pick(10));
            if (c.pick(3)) return Repository::SET_VALUE(name("v", c.pick(VARIABLES)), v);
            return Repository::GET_VALUE(name(c.pick(2) ? "v" : "e", c.pick(EXPRESSIONS)), v);
        };
        auto make = [](Soak&, Client& c) {
            const Family& f = FAMILIES[c.pick(std::size(FAMILIES))];
            const unsigned i = c.pick(f.count);
            VXLockPtr<Repository> r(Repository::INSTANCE());
            if (c.pick(f.odds)) return f.make(*r, name(f.kind, i), i, Value(0ULL + c.pick(10)));
            r->destroy(name(f.kind, i));
            return XCode();
        };
        auto group = [](Soak&, Client& c) {
            VXLockPtr<Repository> r(Repository::INSTANCE());
            const String member = String::Formatted("soak.g%u.x", c.pick(3));
            const unsigned op = c.pick(4);
            XCode rc = op < 2 ? r->setValue(member, Value(0ULL + c.pick(4))) : XCode();
            if (op == 0 && rc.isSuccess()) rc = r->createExpression("soak.g%", "y", "x * 10 + v0");
            if (op == 2) r->destroy(member);
            if (op == 3) r->destroyExpression("soak.g%", "y");
            return rc;
        };
        auto attach = [](Soak& s, Client& c) {
            VXAutoLock engine(LOCK());
            if (c.pairs.size() < 3 && c.pick(2)) {
                Pair& p = c.pairs.emplace_back(Pair{.keepQueued = c.pick(2) == 1});
                const String pattern = c.pick(2) ? String("soak.%") : name("v", c.pick(4));
                const bool now = c.pick(2);
                p.directObserver = observe(c.pick(2) ? DIRECT : SYNC, p.direct, pattern, now);
                p.queuedObserver = observe(QUEUED, p.queued, pattern, now, p.keepQueued);
            } else if (!c.pairs.empty()) {
                s.retire(std::move(c.pairs.back()));
                c.pairs.pop_back();
            }
            return XCode();
        };
        auto database = [](Soak& s, Client& c) { return s.changeDatabase(c); };
        auto view = [](Soak& s, Client& c) { return checkView(*s.records[c.pick(2)]), XCode(); };
        auto quiet = [](Soak&, Client&) { return checkQuiet(), XCode(); };
        // Equally likely entries: the repeats weigh their operation.
        using Operation = XCode (*)(Soak&, Client&);
        const Operation table[] = {setOrRead, setOrRead, setOrRead, make, make,  make, group,
                                   attach,    database,  view,      view, quiet, quiet};
        Client c{std::mt19937(seed), {}};
        while (std::chrono::steady_clock::now() < until) {
            ++operations;
            if (table[c.pick(std::size(table))](*this, c).isErr()) ++failures;
        }
        VXAutoLock engine(LOCK());
        for (Pair& p : c.pairs) retire(std::move(p));
    }

    // The component that owns the tracker: delivers the database's changes
    // and starts and stops tracking, all on its own thread.
    void component() {
        std::mt19937 rng(99);
        while (std::chrono::steady_clock::now() < until) {
            manager.processQueuedEvents();
            if (rng() % 16 == 0) track(STEADY + rng() % (INTERFACES - STEADY), rng() % 2);
            std::this_thread::yield();
        }
        manager.processQueuedEvents();
    }

    void run() {
        DB::Database::SET_DEFAULT(db);
        for (unsigned i = 0; i < INTERFACES; ++i) track(i);
        std::vector<std::thread> threads;
        for (unsigned c = 0; c < CLIENTS; ++c) threads.emplace_back([this, c] { client(c + 1); });
        threads.emplace_back([this] { component(); });
        for (std::thread& t : threads) t.join();
        // A client's last change may have come after the component's last
        // round; the component's thread is gone, this one takes over.
        manager.processQueuedEvents();
        // Changes made while a variable was not tracked are not its to know:
        // those come back fresh, made again on the fly and read afresh.
        for (unsigned i = STEADY; i < INTERFACES; ++i) {
            track(i, false);
            VXLockPtr<Repository>(Repository::INSTANCE())->destroy(dbName(i));
            track(i);
        }
        // Every queued call made so far has run once this job runs, and no
        // change can come between the check and the values it reads.
        onLoop([this] {
            checkView(*records[QUEUED]);
            for (auto& r : records) delivered += r->count;
        });
        checkView(*records[DIRECT]);
        checkQuiet();
        for (unsigned i = 0; i < INTERFACES; ++i) {
            Value tracked;
            ASSERT_TRUE(Repository::GET_VALUE(dbName(i), tracked).isSuccess());
            EXPECT_EQ(tracked.toString(),
                      committed.count(i) ? committed[i].second : String("#N/A!"))
                << "soak" << i;
        }
    }

    // Inserts, updates or deletes one entry "soak<i>" in its own transaction,
    // and keeps what the transaction committed.
    XCode changeDatabase(Client& c) {
        const unsigned i = c.pick(INTERFACES), what = c.pick(3);
        const String text = String::stringOf(1000 + c.pick(9000));
        std::lock_guard<std::mutex> held(dbMutex);
        const bool exists = committed.count(i), removing = exists && what == 2;
        uint64_t uid = exists ? committed[i].first : 0;
        const XCode rc = dbtest::inWrite(db, [&](DB::ObjWrite& w) {
            if (exists && what == 1) return w.update("Interface", uid, {{"mtu", text}});
            if (removing) return w.remove("Interface", uid);
            return w.insert("Interface", {{"name", String::Formatted("soak%u", i)}, {"mtu", text}},
                            &uid);
        });
        if (rc.isSuccess())
            removing ? (void)committed.erase(i) : (void)(committed[i] = {uid, text});
        return rc;
    }

    // Starts or stops tracking the entry's "db." name (made on first use).
    void track(unsigned i, bool on = true) {
        VXPPtr<IRead> variable;
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        ASSERT_TRUE(repository->get(dbName(i), variable).isSuccess()) << dbName(i).c_str();
        // Already in that state: nothing to do.
        on ? tracker.startTracking(variable) : tracker.stopTracking(variable);
    }

    // The pair is checked on the loop after every queued call it was made
    // (each posted before the check), then let go: a long run keeps none.
    void retire(Pair&& p) {
        p.directObserver.reset();
        p.queuedObserver.reset();
        auto twins = std::make_shared<Pair>(std::move(p));
        // Equal hashes: the same calls in the same order.
        EVENT_LOOP().post([this, twins] {
            std::scoped_lock held(twins->direct->mutex, twins->queued->mutex);
            EXPECT_LE(twins->queued->count, twins->direct->count);
            EXPECT_TRUE(!twins->keepQueued || twins->queued->hash == twins->direct->hash);
            delivered += twins->direct->count + twins->queued->count;
        });
    }

    ~Soak() {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        repository->destroyExpression("soak.g%", "y");
        for (const auto& entry : published(*repository)) repository->destroy(entry.first);
        for (unsigned i = 0; i < INTERFACES; ++i) repository->destroy(dbName(i));
        DB::Database::SET_DEFAULT(nullptr);
    }

    std::atomic<unsigned long long> operations{0}, failures{0}, delivered{0};
    const std::chrono::steady_clock::time_point until;
    VXPtr<DB::Database> db = dbtest::openExample();
    ComponentManager manager{"soak", ComponentManager::DELIVER_QUEUED};
    DatabaseTracker tracker{&manager};
    std::shared_ptr<Record> records[3] = {std::make_shared<Record>(), std::make_shared<Record>(),
                                          std::make_shared<Record>()};
    std::unique_ptr<Observer> observers[3];
    std::mutex dbMutex;
    // Entry "soak<i>" as last committed: its UID and its mtu.
    std::map<unsigned, std::pair<uint64_t, String>> committed;
};

// One round of the soak, with everything it made destroyed afterwards.
std::array<unsigned long long, 3> soakFor(std::chrono::milliseconds duration) {
    auto soak = std::make_unique<Soak>(std::chrono::steady_clock::now() + duration);
    soak->run();
    std::array<unsigned long long, 3> figures = {soak->operations, soak->failures, soak->delivered};
    soak.reset();
    onLoop([] {});
    return figures;
}

TEST(Soak, EightClientsOnOneNamespace) {
    const char* env = getenv("SYSEVENT_SOAK_SECONDS");
    const auto duration = std::chrono::seconds(env ? atoi(env) : 10);
    // A first short round makes what stays for the life of the process
    // (parsed formulas, the event loop's thread, caches), so that the
    // second round starts and must end at the same level.
    soakFor(std::chrono::milliseconds(300));
    const size_t before = allocatedBytes();
    const auto [operations, failures, delivered] = soakFor(duration);
    const size_t after = allocatedBytes();
    printf(
        "soak: %llu operations (%llu refused), %llu callbacks delivered in %lld s; "
        "allocated %zu -> %zu bytes\n",
        operations, failures, delivered, static_cast<long long>(duration.count()), before, after);
    EXPECT_GT(operations, 0u);
    EXPECT_LT(after, before + (1u << 20));
}

}  // namespace
}  // namespace VX::SysEvent
