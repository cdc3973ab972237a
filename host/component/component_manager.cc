// VX::ComponentManager: handlers, direct and queued delivery, and the
// endpoint through which databases reach a manager that may be gone.
#include "host/component/component_manager.h"

#include <algorithm>

namespace VX {

ComponentManager::ComponentManager(const String& name, Delivery delivery)
    : name_(name), delivery_(delivery), endpoint_(std::make_shared<ComponentEndpoint>()) {
    endpoint_->manager_ = this;
}

ComponentManager::~ComponentManager() {
    ComponentEndpoint& ep = *endpoint_;
    std::unique_lock<std::mutex> lock(ep.mutex_);
    ep.manager_ = nullptr;
    ep.alive_.store(false, std::memory_order_release);
    // A handler on this thread is the caller itself (a handler destroying its
    // manager); only other threads' runs can be waited for.
    std::thread::id me = std::this_thread::get_id();
    ep.idle_.wait(lock, [&] {
        return std::all_of(ep.running_.begin(), ep.running_.end(),
                           [me](std::thread::id t) { return t == me; });
    });
}

unsigned ComponentManager::addDatabaseHandler(DatabaseHandler handler) {
    std::lock_guard<std::mutex> lock(endpoint_->mutex_);
    unsigned id = nextId_++;
    handlers_.emplace_back(id, std::move(handler));
    return id;
}

bool ComponentManager::removeDatabaseHandler(unsigned id) {
    std::lock_guard<std::mutex> lock(endpoint_->mutex_);
    return std::erase_if(handlers_, [id](const auto& h) { return h.first == id; }) > 0;
}

void ComponentManager::onDatabaseEvent(DB::EventType_ type, const DB::ObjRead& entry) {
    endpoint_->deliver(type, entry);
}

size_t ComponentManager::processQueuedEvents() {
    ComponentEndpoint& ep = *endpoint_;
    size_t delivered = 0;
    for (;;) {
        Handlers handlers;
        std::pair<DB::EventType_, DB::ObjRead> change;
        {
            std::lock_guard<std::mutex> lock(ep.mutex_);
            if (queue_.empty()) break;
            change = std::move(queue_.front());
            queue_.pop_front();
            handlers = handlers_;
            ep.running_.push_back(std::this_thread::get_id());
        }
        // The handlers may destroy this manager; from here on only the
        // endpoint (kept by `endpoint`) and the copies are used.
        std::shared_ptr<ComponentEndpoint> endpoint = endpoint_;
        ++delivered;
        endpoint->run(handlers, change.first, change.second);
        if (!endpoint->isAlive()) break;
    }
    return delivered;
}

size_t ComponentManager::getNumberOfQueuedEvents() const {
    std::lock_guard<std::mutex> lock(endpoint_->mutex_);
    return queue_.size();
}

void ComponentEndpoint::deliver(DB::EventType_ type, const DB::ObjRead& entry) {
    ComponentManager::Handlers handlers;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!manager_) return;
        if (manager_->delivery_ == ComponentManager::DELIVER_QUEUED) {
            manager_->queue_.emplace_back(type, entry);
            return;
        }
        handlers = manager_->handlers_;
        running_.push_back(std::this_thread::get_id());
    }
    run(handlers, type, entry);
}

void ComponentEndpoint::run(const ComponentManager::Handlers& handlers, DB::EventType_ type,
                            const DB::ObjRead& entry) {
    for (const auto& h : handlers) {
        if (!isAlive()) break;  // the manager's destruction has begun
        DB::ObjRead copy(entry);
        h.second(type, copy);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    running_.erase(std::find(running_.begin(), running_.end(), std::this_thread::get_id()));
    idle_.notify_all();
}

}  // namespace VX
