// VX::ComponentManager: the object through which a host component receives
// the database's change notifications. A component registers its manager
// for tables with DB::REGISTER_CALLBACK and adds handlers to it; each
// committed change of a registered table then reaches every handler, for
// example a lambda that forwards to a tracker's onDatabaseEvent.
//
// Delivery is direct (handlers run on the committing thread, right after the
// commit) or queued (the change waits until the component's own thread calls
// processQueuedEvents), for components whose state belongs to one thread.
//
// No lock of the manager is held while a handler runs, so handlers may take
// any lock (the engine lock) and may write to the database, add or remove
// handlers, or destroy the manager.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "host/db/obj_read.h"
#include "host/db/types.h"
#include "host/runtime/containers.h"
#include "host/runtime/string.h"

namespace VX {

class ComponentEndpoint;

class ComponentManager {
public:
    using DatabaseHandler = std::function<void(DB::EventType_ type, DB::ObjRead& entry)>;
    enum Delivery { DELIVER_DIRECT, DELIVER_QUEUED };

    explicit ComponentManager(const String& name = String(), Delivery delivery = DELIVER_DIRECT);
    // Ends every database registration made with this manager: no handler
    // starts once this has begun. Waits for handlers of this manager that are
    // running on other threads, so don't destroy a manager while holding a
    // lock that its handlers take if other threads may be delivering to it.
    ~ComponentManager();
    ComponentManager(const ComponentManager&) = delete;
    ComponentManager& operator=(const ComponentManager&) = delete;

    const String& getName() const { return name_; }
    Delivery getDelivery() const { return delivery_; }

    // Adds a handler for database changes; returns its id (never 0). Handlers
    // run in the order they were added. Adding or removing a handler does not
    // affect a change whose delivery has begun.
    unsigned addDatabaseHandler(DatabaseHandler handler);
    // False when there is no handler with that id.
    bool removeDatabaseHandler(unsigned id);

    // A change of a registered table: the database calls this after the
    // commit. Direct delivery runs the handlers now, each with its own copy of
    // the entry; queued delivery keeps a copy for processQueuedEvents.
    void onDatabaseEvent(DB::EventType_ type, const DB::ObjRead& entry);

    // Queued delivery: runs the handlers for every change queued so far, and
    // for those queued meanwhile, in order, on the calling thread; returns
    // how many changes were delivered.
    size_t processQueuedEvents();
    size_t getNumberOfQueuedEvents() const;

    // What databases hold on to instead of the manager itself: it outlives
    // the manager and knows whether the manager is still there.
    const std::shared_ptr<ComponentEndpoint>& getEndpoint() const { return endpoint_; }

private:
    friend class ComponentEndpoint;
    using Handlers = VXVector<std::pair<unsigned, DatabaseHandler>>;

    String name_;
    Delivery delivery_;
    std::shared_ptr<ComponentEndpoint> endpoint_;
    // Guarded by the endpoint's mutex.
    Handlers handlers_;
    unsigned nextId_ = 1;
    VXList<std::pair<DB::EventType_, DB::ObjRead>> queue_;
};

class ComponentEndpoint {
public:
    // Passes a change to the manager, unless the manager has been destroyed.
    void deliver(DB::EventType_ type, const DB::ObjRead& entry);
    // Lock-free, so that a database may ask while holding its own locks.
    bool isAlive() const { return alive_.load(std::memory_order_acquire); }

private:
    friend class ComponentManager;

    // Runs `handlers` outside the mutex, counted in running_ meanwhile.
    void run(const ComponentManager::Handlers& handlers, DB::EventType_ type,
             const DB::ObjRead& entry);

    // Guards manager_, running_ and the manager's handlers and queue. Never
    // held while a handler runs.
    mutable std::mutex mutex_;
    std::condition_variable idle_;         // signalled when a thread leaves running_
    ComponentManager* manager_ = nullptr;  // null once the manager is destroyed
    VXVector<std::thread::id> running_;    // one element per handler run in progress
    std::atomic<bool> alive_{true};
};

}  // namespace VX
