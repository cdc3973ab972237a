// VX::ComponentManager: the object through which a host component receives
// the database's change notifications. A component registers its manager
// for tables with DB::REGISTER_CALLBACK and adds handlers to it; each
// committed change of a registered table then reaches every handler, for
// example a lambda that forwards to a tracker's onDatabaseEvent.
//
// Delivery is direct (handlers run on the committing thread, right after the
// commit) or queued (the change waits until the component's own thread calls
// processQueuedEvents), for components whose state belongs to one thread.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "host/containers.h"
#include "host/db_obj_read.h"
#include "host/db_types.h"
#include "host/lock.h"
#include "host/string.h"

namespace VX {

class ComponentEndpoint;

class ComponentManager {
public:
    using DatabaseHandler = std::function<void(DB::EventType_ type, DB::ObjRead& entry)>;
    enum Delivery { DELIVER_DIRECT, DELIVER_QUEUED };

    explicit ComponentManager(const String& name = String(), Delivery delivery = DELIVER_DIRECT);
    // Ends every database registration made with this manager: no handler
    // runs once this returns. If another thread is running a handler of this
    // manager, waits for it to return, so don't destroy a manager while
    // holding a lock that its handlers take.
    ~ComponentManager();
    ComponentManager(const ComponentManager&) = delete;
    ComponentManager& operator=(const ComponentManager&) = delete;

    const String& getName() const { return name_; }
    Delivery getDelivery() const { return delivery_; }

    // Adds a handler for database changes; returns its id (never 0). Handlers
    // run in the order they were added.
    unsigned addDatabaseHandler(DatabaseHandler handler);
    // False when there is no handler with that id.
    bool removeDatabaseHandler(unsigned id);

    // A change of a registered table: the database calls this after the
    // commit. Direct delivery runs the handlers now, each with its own copy of
    // the entry; queued delivery keeps a copy for processQueuedEvents.
    void onDatabaseEvent(DB::EventType_ type, const DB::ObjRead& entry);

    // Queued delivery: runs the handlers for every change queued so far, in
    // order, on the calling thread; returns how many changes were delivered.
    size_t processQueuedEvents();
    size_t getNumberOfQueuedEvents() const;

    // What databases hold on to instead of the manager itself: it outlives
    // the manager and knows whether the manager is still there.
    const std::shared_ptr<ComponentEndpoint>& getEndpoint() const { return endpoint_; }

private:
    void runHandlers(DB::EventType_ type, const DB::ObjRead& entry);

    String name_;
    Delivery delivery_;
    std::shared_ptr<ComponentEndpoint> endpoint_;
    // Guarded by the endpoint's lock.
    VXVector<std::pair<unsigned, DatabaseHandler>> handlers_;
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
    // Held while the manager's handlers and queue are used, so that the
    // manager's destructor waits for a delivery in progress. Re-entrant: a
    // handler may add or remove handlers.
    mutable VXLock lock_;
    ComponentManager* manager_ = nullptr;  // guarded by lock_; null once destroyed
    std::atomic<bool> alive_{true};
};

}  // namespace VX
