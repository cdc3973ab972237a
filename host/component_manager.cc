// VX::ComponentManager: handlers, direct and queued delivery, and the
// endpoint through which databases reach a manager that may be gone.
#include "host/component_manager.h"

namespace VX {

ComponentManager::ComponentManager(const String& name, Delivery delivery)
    : name_(name), delivery_(delivery), endpoint_(std::make_shared<ComponentEndpoint>()) {
    endpoint_->manager_ = this;
}

ComponentManager::~ComponentManager() {
    VXAutoLock guard(endpoint_->lock_);
    endpoint_->manager_ = nullptr;
    endpoint_->alive_.store(false, std::memory_order_release);
}

unsigned ComponentManager::addDatabaseHandler(DatabaseHandler handler) {
    VXAutoLock guard(endpoint_->lock_);
    unsigned id = nextId_++;
    handlers_.emplace_back(id, std::move(handler));
    return id;
}

bool ComponentManager::removeDatabaseHandler(unsigned id) {
    VXAutoLock guard(endpoint_->lock_);
    return std::erase_if(handlers_, [id](const auto& h) { return h.first == id; }) > 0;
}

void ComponentManager::onDatabaseEvent(DB::EventType_ type, const DB::ObjRead& entry) {
    VXAutoLock guard(endpoint_->lock_);
    if (delivery_ == DELIVER_QUEUED) {
        queue_.emplace_back(type, entry);
    } else {
        runHandlers(type, entry);
    }
}

size_t ComponentManager::processQueuedEvents() {
    VXAutoLock guard(endpoint_->lock_);
    size_t delivered = 0;
    // One at a time: a handler may cause further changes, which queue behind.
    while (!queue_.empty()) {
        auto change = std::move(queue_.front());
        queue_.pop_front();
        runHandlers(change.first, change.second);
        ++delivered;
    }
    return delivered;
}

size_t ComponentManager::getNumberOfQueuedEvents() const {
    VXAutoLock guard(endpoint_->lock_);
    return queue_.size();
}

void ComponentManager::runHandlers(DB::EventType_ type, const DB::ObjRead& entry) {
    // A copy, because a handler may add or remove handlers.
    auto handlers = handlers_;
    for (auto& h : handlers) {
        DB::ObjRead copy(entry);
        h.second(type, copy);
    }
}

void ComponentEndpoint::deliver(DB::EventType_ type, const DB::ObjRead& entry) {
    VXAutoLock guard(lock_);
    if (manager_) manager_->onDatabaseEvent(type, entry);
}

}  // namespace VX
