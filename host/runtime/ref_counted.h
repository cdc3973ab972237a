// Reference counting. VX::RefCounted keeps an intrusive count; the last
// release() runs the virtual callDtor(), which deletes the object. Each object
// names the lock that guards it (for the engine's objects: the engine lock),
// so that VXLockPtr can hold that lock while it uses the object.
//
// VXPtr, VXPPtr (interface pointers) and VXLWPtr (the engine's node handles)
// are one counted-pointer type under three names (see below for why).
#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

#include "host/runtime/lock.h"

namespace VX {

class RefCounted {
public:
    explicit RefCounted(VXLock* lock = nullptr) : lock_(lock) {}
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

    virtual void addRef() const { count_.fetch_add(1, std::memory_order_relaxed); }
    virtual void release() const {
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1)
            const_cast<RefCounted*>(this)->callDtor();
    }
    // The lock that guards this object (may be null).
    virtual VXLock* getLock() const { return lock_; }
    unsigned getRefCount() const { return count_.load(std::memory_order_relaxed); }

protected:
    virtual ~RefCounted() = default;
    virtual void callDtor() { delete this; }

private:
    mutable std::atomic<unsigned> count_{0};
    VXLock* lock_;
};

// Counted pointer: T needs addRef() and release().
template <typename T>
class CountedPtr {
public:
    CountedPtr() = default;
    CountedPtr(std::nullptr_t) {}  // NOLINT: implicit by design
    CountedPtr(T* p) : p_(p) {
        if (p_) p_->addRef();
    }  // NOLINT: implicit by design
    CountedPtr(const CountedPtr& o) : CountedPtr(o.p_) {}
    CountedPtr(CountedPtr&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
    template <typename U>
    CountedPtr(const CountedPtr<U>& o) : CountedPtr(o.get()) {}  // NOLINT: implicit upcast
    ~CountedPtr() {
        if (p_) p_->release();
    }

    CountedPtr& operator=(const CountedPtr& o) { return reset(o.p_); }
    CountedPtr& operator=(CountedPtr&& o) noexcept {
        if (this != &o) {
            T* old = std::exchange(p_, std::exchange(o.p_, nullptr));
            if (old) old->release();
        }
        return *this;
    }
    CountedPtr& operator=(T* p) { return reset(p); }

    // Takes a new reference on p and drops the old one (in that order, so that
    // assigning a pointer to itself is safe).
    CountedPtr& reset(T* p = nullptr) {
        if (p) p->addRef();
        T* old = std::exchange(p_, p);
        if (old) old->release();
        return *this;
    }

    T* get() const { return p_; }
    T* operator->() const { return p_; }
    T& operator*() const { return *p_; }
    explicit operator bool() const { return p_ != nullptr; }
    bool isNull() const { return p_ == nullptr; }

    friend bool operator==(const CountedPtr& a, const CountedPtr& b) { return a.p_ == b.p_; }
    friend bool operator==(const CountedPtr& a, const T* b) { return a.p_ == b; }

private:
    T* p_ = nullptr;
};

}  // namespace VX

// Three names, one type. The names are part of the interfaces clients and
// drivers are written against, and each says where a pointer comes from:
// VXPtr for engine objects handed to clients (the Repository, expressions),
// VXPPtr for component interfaces out of the driver repository, VXLWPtr for
// graph nodes. Keeping them aliases of one template (rather than three
// classes) lets a pointer pass between the layers without conversion code.
template <typename T>
using VXPtr = VX::CountedPtr<T>;
template <typename T>
using VXPPtr = VX::CountedPtr<T>;
template <typename T>
using VXLWPtr = VX::CountedPtr<T>;

// Holds a reference to an object and its lock (getLock()) for its lifetime.
template <typename T>
class VXLockPtr {
public:
    explicit VXLockPtr(T* p) : p_(p), lock_(p ? p->getLock() : nullptr) {
        if (lock_) lock_->lock();
    }
    explicit VXLockPtr(const VX::CountedPtr<T>& p) : VXLockPtr(p.get()) {}
    ~VXLockPtr() {
        if (lock_) lock_->unlock();
    }
    VXLockPtr(const VXLockPtr&) = delete;
    VXLockPtr& operator=(const VXLockPtr&) = delete;

    T* get() const { return p_.get(); }
    T* operator->() const { return p_.get(); }
    T& operator*() const { return *p_; }
    explicit operator bool() const { return static_cast<bool>(p_); }

private:
    VX::CountedPtr<T> p_;
    VXLock* lock_;
};
