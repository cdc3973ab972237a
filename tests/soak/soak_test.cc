// Eight clients share one namespace for a while (SYSEVENT_SOAK_SECONDS,
// default 10) and do random work on it, on the real clock: variables,
// constants, expressions (temporal ones with millisecond timers) and an
// expression set come and go, Observers of every delivery kind are attached
// and removed, and entries of the configuration database change under
// tracking. Checked while it runs and at the end:
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
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "db/db_test_support.h"
#include "host/component/component_manager.h"
#include "host/runtime/crit.h"
#include "host/runtime/event_loop.h"
#include "host/runtime/function.h"
#include "support/allocated_bytes.h"
#include "sysevent/database/database_tracker.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/graph/proxy_node.h"
#include "sysevent/repository/observer.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {
namespace {

constexpr unsigned CLIENTS = 8;
constexpr unsigned VARIABLES = 12;
constexpr unsigned INTERFACES = 4;
// Interfaces 0 and 1 are tracked all the time; 2 and 3 now and then.
constexpr unsigned STEADY = 2;

const char* const FORMULAS[] = {
    "v0 + v1 * 2",
    "DELAY(v2, 3ms)",
    "STABLE(v3, 2ms)",
    "WITHIN(v4 > 5, 4ms)",
    "DEBOUNCE(v5 + k0, 2ms)",
    "COUNT(soak.v%) + e0",
    "IF(v6, e1, k1)",
    "DEBOUNCEINC(v7 > 3, 1ms) || ONCE(v8 == 9)",
};
constexpr unsigned EXPRESSIONS = std::size(FORMULAS);

String name(const char* kind, unsigned i) {
    return String::Formatted("soak.%s%u", kind, i);
}

String dbName(unsigned i) {
    return String::Formatted("db.Interface:soak%u.mtu", i);
}

// What one Observer received: the last value of each name, and the count and
// a running hash of every delivery in order.
struct Record {
    std::mutex mutex;
    std::map<String, String> last;
    unsigned long long count = 0;
    unsigned long long hash = 1469598103934665603ULL;

    void deliver(const String& n, const Value& v) {
        std::lock_guard<std::mutex> held(mutex);
        const String text = n + "=" + v.toString() + ";";
        for (char c : text.str()) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
        ++count;
        last[n] = v.toString();
    }
    void destroyed(const String& n) {
        deliver(n, Value(DST_UNDEF));
        std::lock_guard<std::mutex> held(mutex);
        last.erase(n);
    }
};

enum class Kind { Direct, Sync, Queued };

std::unique_ptr<Observer> observe(Kind kind, const std::shared_ptr<Record>& record,
                                  bool keepQueued) {
    auto onChange = [record](String n, Value v) { record->deliver(n, v); };
    auto onDestroy = [record](String n) { record->destroyed(n); };
    if (kind == Kind::Direct) {
        return std::make_unique<Observer>(Observer::ValueChangeCallback(directCall(), onChange),
                                          Observer::DestroyCallback(directCall(), onDestroy));
    }
    const Delivery delivery = kind == Kind::Sync ? Delivery::Sync : Delivery::Queued;
    Observer::ValueChangeCallback change(EVENT_LOOP(), onChange, delivery);
    Observer::DestroyCallback destroy(EVENT_LOOP(), onDestroy, delivery);
    change.setDontCancelOnDestruction(keepQueued);
    destroy.setDontCancelOnDestruction(keepQueued);
    return std::make_unique<Observer>(change, destroy);
}

// A queued Observer and its direct twin on the same pattern, made and
// destroyed together under the engine lock, so that both see the same changes.
struct Pair {
    std::shared_ptr<Record> direct = std::make_shared<Record>();
    std::shared_ptr<Record> queued = std::make_shared<Record>();
    bool keepQueued = false;
    std::unique_ptr<Observer> directObserver, queuedObserver;
};

// Returns the number of calls both received.
unsigned long long checkPair(const Pair& p) {
    std::scoped_lock held(p.direct->mutex, p.queued->mutex);
    if (p.keepQueued) {
        EXPECT_EQ(p.queued->count, p.direct->count);
        EXPECT_EQ(p.queued->hash, p.direct->hash);
    } else {
        EXPECT_LE(p.queued->count, p.direct->count);
    }
    return p.direct->count + p.queued->count;
}

// Under the engine lock: the Observer's last value of every published name
// under "soak." is the name's value, and of every other name "#N/A!" (what a
// destroyed object reports last).
void checkView(Record& record) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXVector<VXPPtr<INode>> nodes;
    ASSERT_TRUE(repository->get("soak.%", nodes).isSuccess());
    std::map<String, String> now;
    for (const VXPPtr<INode>& node : nodes) {
        VXPPtr<IRead> read;
        if (node->queryIf(read).isSuccess()) now[read->getName()] = read->getValue().toString();
    }
    std::lock_guard<std::mutex> held(record.mutex);
    for (auto& [name, value] : record.last) {
        if (!now.count(name)) {
            EXPECT_EQ(value, String("#N/A!")) << name.c_str() << " is gone";
        }
    }
    for (auto& [name, value] : now) {
        const auto seen = record.last.find(name);
        ASSERT_TRUE(seen != record.last.end()) << name.c_str() << " never reported";
        EXPECT_EQ(seen->second, value) << name.c_str();
    }
}

// Under the engine lock: no propagation runs and no function node reachable
// from a published name waits for an update.
void checkQuiet() {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    EXPECT_FALSE(Node::s_updateInProgress);
    VXVector<VXPPtr<INode>> nodes;
    ASSERT_TRUE(repository->get("soak.%", nodes).isSuccess());
    std::vector<Node*> todo;
    for (const VXPPtr<INode>& n : nodes) {
        VXLWPtr<ProxyNode> proxy = n->getNode();
        if (proxy) todo.push_back(proxy.get());
    }
    for (size_t seen = 0; !todo.empty() && seen < 100000; ++seen) {
        auto* f = dynamic_cast<FunctionNode*>(todo.back());
        todo.pop_back();
        if (!f) continue;
        EXPECT_EQ(f->getPendingUpdates(), 0u) << f->getNormalizedExpression().c_str();
        EXPECT_EQ(f->getChangedUpdates(), 0u) << f->getNormalizedExpression().c_str();
        for (const VXLWPtr<Node>& c : f->getChildren()) todo.push_back(c.get());
    }
}

// Runs on the event loop's thread, after everything queued before it.
void onLoop(const std::function<void()>& job) {
    std::mutex m;
    std::condition_variable cv;
    bool done = false;
    EVENT_LOOP().post([&] {
        job();
        std::lock_guard<std::mutex> held(m);
        done = true;
        cv.notify_one();
    });
    std::unique_lock<std::mutex> held(m);
    cv.wait(held, [&] { return done; });
}

struct Totals {
    std::atomic<unsigned long long> operations{0}, failures{0}, delivered{0};
};

// Under the engine lock: creates the name with `create` or destroys it.
XCode createOrDestroy(bool make, const String& n, const std::function<XCode(Repository&)>& create) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    if (make) return create(*repository);
    repository->destroy(n);
    return XCode();
}

class Soak {
public:
    explicit Soak(std::chrono::steady_clock::time_point until) : until_(until) {
        manager_.addDatabaseHandler([this](DB::EventType_ type, DB::ObjRead& entry) {
            EXPECT_TRUE(tracker_.onDatabaseEvent(type, entry).isSuccess());
        });
    }

    void client(unsigned seed) {
        std::mt19937 rng(seed);
        auto pick = [&](unsigned n) { return static_cast<unsigned>(rng() % n); };
        std::vector<Pair> pairs;
        while (std::chrono::steady_clock::now() < until_) {
            XCode rc;
            switch (pick(12)) {
                case 0:
                case 1:
                    rc = Repository::SET_VALUE(name("v", pick(VARIABLES)), Value(0ULL + pick(10)));
                    break;
                case 2: {
                    Value v;
                    rc = Repository::GET_VALUE(name(pick(2) ? "v" : "e", pick(EXPRESSIONS)), v);
                    break;
                }
                case 3: {
                    const String n = name("v", pick(VARIABLES));
                    const Value v(0ULL + pick(10));
                    rc = createOrDestroy(pick(3), n,
                                         [&](Repository& r) { return r.createVariable(n, "", v); });
                    break;
                }
                case 4: {
                    const String n = name("k", pick(2));
                    const Value v(0ULL + pick(5));
                    rc = createOrDestroy(pick(2), n,
                                         [&](Repository& r) { return r.createConstant(n, "", v); });
                    break;
                }
                case 5: {
                    const unsigned i = pick(EXPRESSIONS);
                    rc = createOrDestroy(pick(3), name("e", i), [&](Repository& r) {
                        return r.setExpression("soak", String::Formatted("e%u", i), FORMULAS[i]);
                    });
                    break;
                }
                case 6: {
                    VXLockPtr<Repository> repository(Repository::INSTANCE());
                    const String member = String::Formatted("soak.g%u.x", pick(3));
                    if (pick(2)) {
                        rc = repository->setValue(member, Value(0ULL + pick(4)));
                        if (rc.isSuccess() && pick(2)) {
                            rc = repository->createExpression("soak.g%", "y", "x * 10 + v0");
                        }
                    } else if (pick(2)) {
                        repository->destroy(member);
                    } else {
                        repository->destroyExpression("soak.g%", "y");
                    }
                    break;
                }
                case 7: {
                    VXAutoLock engine(LOCK());
                    if (pairs.size() < 3 && pick(2)) {
                        Pair p;
                        p.keepQueued = pick(2);
                        p.directObserver =
                            observe(pick(2) ? Kind::Direct : Kind::Sync, p.direct, false);
                        p.queuedObserver = observe(Kind::Queued, p.queued, p.keepQueued);
                        const String pattern = pick(2) ? String("soak.%") : name("v", pick(4));
                        const bool now = pick(2);
                        p.directObserver->addTo(pattern, now);
                        p.queuedObserver->addTo(pattern, now);
                        pairs.push_back(std::move(p));
                    } else if (!pairs.empty()) {
                        retire(std::move(pairs.back()));
                        pairs.pop_back();
                    }
                    break;
                }
                case 8:
                    rc = changeDatabase(pick(INTERFACES), pick(3), 1000 + pick(9000));
                    break;
                case 9:
                    checkView(*direct_);
                    checkView(*sync_);
                    break;
                default:
                    checkQuiet();
                    break;
            }
            ++totals_.operations;
            if (rc.isErr()) ++totals_.failures;
        }
        VXAutoLock engine(LOCK());
        for (Pair& p : pairs) retire(std::move(p));
    }

    // The component that owns the tracker: delivers the database's changes
    // and starts and stops tracking, all on its own thread.
    void component() {
        std::mt19937 rng(99);
        while (std::chrono::steady_clock::now() < until_) {
            manager_.processQueuedEvents();
            if (rng() % 16 == 0) {
                const unsigned i = STEADY + rng() % (INTERFACES - STEADY);
                if (rng() % 2) {
                    track(i);
                } else {
                    untrack(i);
                }
            }
            std::this_thread::yield();
        }
        manager_.processQueuedEvents();
    }

    void run() {
        DB::Database::SET_DEFAULT(db_);
        for (unsigned i = 0; i < INTERFACES; ++i) track(i);
        {
            VXAutoLock engine(LOCK());
            direct_observer_ = observe(Kind::Direct, direct_, false);
            sync_observer_ = observe(Kind::Sync, sync_, false);
            queued_observer_ = observe(Kind::Queued, queued_, true);
            for (Observer* o :
                 {direct_observer_.get(), sync_observer_.get(), queued_observer_.get()}) {
                o->addTo("soak.%", true);
            }
        }
        std::vector<std::thread> threads;
        for (unsigned c = 0; c < CLIENTS; ++c) threads.emplace_back([this, c] { client(c + 1); });
        threads.emplace_back([this] { component(); });
        for (std::thread& t : threads) t.join();
        // A client's last change may have come after the component's last
        // round; the component's thread is gone, this one takes over.
        manager_.processQueuedEvents();
        // Changes made while a variable was not tracked are not its to know:
        // those come back fresh, made again on the fly and read afresh.
        for (unsigned i = STEADY; i < INTERFACES; ++i) {
            untrack(i);
            VXLockPtr<Repository>(Repository::INSTANCE())->destroy(dbName(i));
            track(i);
        }

        // Every queued call made so far has run once this job runs, and no
        // change can come between the check and the values it reads.
        onLoop([this] {
            checkView(*queued_);
            totals_.delivered += direct_->count + sync_->count + queued_->count;
        });
        checkView(*direct_);
        checkQuiet();
        // Every tracked field holds what the database holds. The engine lock
        // comes before the database's: the fields are read, and the
        // transaction ended, before the engine is asked.
        std::map<String, String> fields;
        {
            DB::Transaction tx(DB::TRANSACTION_READ, db_);
            ASSERT_TRUE(tx.start().isSuccess());
            DB::ObjRead entry(tx);
            ASSERT_TRUE(entry.setStructNo(db_->getBase()->getStructNo("Interface")).isSuccess());
            for (XCode rc = entry.readFirst(); rc.isSuccess(); rc = entry.readNext()) {
                String key, mtu;
                ASSERT_TRUE(entry.get("name", key).isSuccess());
                ASSERT_TRUE(entry.getAsString("mtu", mtu).isSuccess());
                fields[key] = mtu;
            }
        }
        for (unsigned i = 0; i < INTERFACES; ++i) {
            Value tracked;
            ASSERT_TRUE(Repository::GET_VALUE(dbName(i), tracked).isSuccess());
            const auto field = fields.find(String::Formatted("soak%u", i));
            EXPECT_EQ(tracked.toString(), field == fields.end() ? String("#N/A!") : field->second)
                << dbName(i).c_str();
        }
    }

    // Inserts, updates or deletes the entry "soak<i>" in its own transaction.
    XCode changeDatabase(unsigned i, unsigned what, unsigned mtu) {
        std::lock_guard<std::mutex> held(dbMutex_);
        const String key = String::Formatted("soak%u", i);
        const String text = String::stringOf(mtu);
        return dbtest::inWrite(db_, [&](DB::ObjWrite& w) {
            auto uid = uids_.find(i);
            if (what == 0 || uid == uids_.end()) {
                uint64_t made = 0;
                XCode rc = w.insert("Interface", {{"name", key}, {"mtu", text}}, &made);
                if (rc.isSuccess()) uids_[i] = made;
                return rc;
            }
            if (what == 1) return w.update("Interface", uid->second, {{"mtu", text}});
            XCode rc = w.remove("Interface", uid->second);
            if (rc.isSuccess()) uids_.erase(uid);
            return rc;
        });
    }

    void track(unsigned i) {
        VXPPtr<IRead> variable;
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        ASSERT_TRUE(repository->get(dbName(i), variable).isSuccess());
        tracker_.startTracking(variable);  // already tracked: nothing to do
    }

    void untrack(unsigned i) {
        VXPPtr<IRead> variable;
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        if (repository->get(dbName(i), variable).isSuccess()) tracker_.stopTracking(variable);
    }

    // The pair is checked on the loop after every queued call it was made
    // (each posted before the check), then let go: a long run keeps none.
    void retire(Pair&& p) {
        p.directObserver.reset();
        p.queuedObserver.reset();
        auto retired = std::make_shared<Pair>(std::move(p));
        EVENT_LOOP().post([this, retired] { totals_.delivered += checkPair(*retired); });
    }

    Totals totals_;

private:
    const std::chrono::steady_clock::time_point until_;
    VXPtr<DB::Database> db_ = dbtest::openExample();
    ComponentManager manager_{"soak", ComponentManager::DELIVER_QUEUED};
    DatabaseTracker tracker_{&manager_};
    std::shared_ptr<Record> direct_ = std::make_shared<Record>();
    std::shared_ptr<Record> sync_ = std::make_shared<Record>();
    std::shared_ptr<Record> queued_ = std::make_shared<Record>();
    std::unique_ptr<Observer> direct_observer_, sync_observer_, queued_observer_;
    std::mutex dbMutex_;
    std::map<unsigned, uint64_t> uids_;
};

void destroyEverything() {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    repository->destroyExpression("soak.g%", "y");
    VXVector<VXPPtr<INode>> nodes;
    repository->get("soak.%", nodes);
    for (const VXPPtr<INode>& node : nodes) {
        VXPPtr<IRead> read;
        if (node->queryIf(read).isSuccess()) repository->destroy(read->getName());
    }
    for (unsigned i = 0; i < INTERFACES; ++i) repository->destroy(dbName(i));
}

// One round of the soak, with everything it made destroyed afterwards.
std::array<unsigned long long, 3> soakFor(std::chrono::milliseconds duration) {
    std::array<unsigned long long, 3> figures;
    {
        Soak soak(std::chrono::steady_clock::now() + duration);
        soak.run();
        destroyEverything();
        figures = {soak.totals_.operations, soak.totals_.failures, soak.totals_.delivered};
    }
    DB::Database::SET_DEFAULT(nullptr);
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
