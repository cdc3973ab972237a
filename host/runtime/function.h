// VX::Function<R(Args...)>: a callback together with the way it is delivered.
// A Function holds a counted pointer to an implementation; copies share it.
// The implementation carries the callable and the delivery:
//
//   VX::Function<void(String, Value)>(VX::directCall(), callable)
//       FunctionImplDirect: runs at once, in the calling thread.
//   VX::Function<void(String, Value)>(loop, callable, VX::Delivery::Sync)
//       FunctionImplSync: runs at once, in the calling thread, while holding
//       the implementation's FunctionEventSync (the loop's lock).
//   VX::Function<void(String, Value)>(loop, callable, VX::Delivery::Queued)
//       FunctionImplAsync: each call's arguments are copied into a FIFO; the
//       loop is signalled and runs the oldest call on its thread (under
//       ManualTime: during ADVANCE), under the loop's lock. Calls not yet run
//       when the implementation is destroyed are dropped, unless
//       setDontCancelOnDestruction(true) was called: from then on each queued
//       call holds a reference on the implementation, released after it ran.
//       A queued call returns R() to its caller at once.
//
// A default-constructed Function is a direct one with no callable; calling a
// Function without a callable does nothing and returns R().
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "host/runtime/ref_counted.h"

// The loop's internals stay out of this header (function.cc uses them).
class VXEventLoop;

namespace VX {

// The context that selects direct delivery: VX::directCall().
struct DirectCall {};
inline DirectCall directCall() {
    return DirectCall();
}

// Delivery on an event loop.
enum class Delivery { Sync, Queued };

template <typename Signature>
class FunctionImpl;

// The shared part of every implementation: the callable and the call.
template <typename R, typename... Args>
class FunctionImpl<R(Args...)> : public RefCounted {
public:
    using Callable = std::function<R(Args...)>;

    bool hasCallable() const { return static_cast<bool>(callable_); }
    // Delivers one call as the implementation's kind prescribes. The
    // arguments were copied once by Function; from here on they are passed
    // on, not copied again at every layer.
    virtual R call(Args&&... args) = 0;
    // Only queued delivery has calls pending; the others ignore it.
    virtual void setDontCancelOnDestruction(bool) {}

protected:
    explicit FunctionImpl(Callable callable) : callable_(std::move(callable)) {}
    R invoke(Args&&... args) {
        if (!callable_) return R();
        return callable_(std::forward<Args>(args)...);
    }

    Callable callable_;
};

template <typename Signature>
class FunctionImplDirect;

template <typename R, typename... Args>
class FunctionImplDirect<R(Args...)> final : public FunctionImpl<R(Args...)> {
public:
    explicit FunctionImplDirect(typename FunctionImpl<R(Args...)>::Callable callable)
        : FunctionImpl<R(Args...)>(std::move(callable)) {}
    R call(Args&&... args) override { return this->invoke(std::forward<Args>(args)...); }
};

// The host lock bound to an event loop that a synchronous call holds: the
// loop's own lock, so the call excludes the loop's handlers.
class FunctionEventSync {
public:
    explicit FunctionEventSync(VXEventLoop& loop) : loop_(loop) {}
    void lock();
    void unlock();
    VXEventLoop& getEventLoop() const { return loop_; }

private:
    VXEventLoop& loop_;
};

template <typename Signature>
class FunctionImplSync;

template <typename R, typename... Args>
class FunctionImplSync<R(Args...)> final : public FunctionImpl<R(Args...)> {
public:
    FunctionImplSync(VXEventLoop& loop, typename FunctionImpl<R(Args...)>::Callable callable)
        : FunctionImpl<R(Args...)>(std::move(callable)), sync_(loop) {}
    R call(Args&&... args) override {
        std::lock_guard<FunctionEventSync> held(sync_);
        return this->invoke(std::forward<Args>(args)...);
    }

private:
    FunctionEventSync sync_;
};

// Signals an event loop that queued calls wait: each set() has the loop run
// `handle` once on its thread.
class FunctionEventAsync {
public:
    explicit FunctionEventAsync(VXEventLoop& loop) : loop_(loop) {}
    void set(std::function<void()> handle);
    VXEventLoop& getEventLoop() const { return loop_; }

private:
    VXEventLoop& loop_;
};

template <typename Signature>
class FunctionImplAsync;

template <typename R, typename... Args>
class FunctionImplAsync<R(Args...)> final : public FunctionImpl<R(Args...)> {
    static_assert(std::is_void_v<R> || std::is_default_constructible_v<R>,
                  "a queued call returns R() at once");

public:
    FunctionImplAsync(VXEventLoop& loop, typename FunctionImpl<R(Args...)>::Callable callable)
        : FunctionImpl<R(Args...)>(std::move(callable)),
          event_(loop),
          queue_(std::make_shared<Queue>(this->callable_)) {}

    // Drops the calls still queued (none hold a reference, or this would not
    // run). Handlings already signalled find the queue empty.
    ~FunctionImplAsync() override {
        std::deque<Pending> dropped;
        std::lock_guard<std::mutex> guard(queue_->mutex);
        dropped.swap(queue_->calls);
    }

    R call(Args&&... args) override {
        {
            std::lock_guard<std::mutex> guard(queue_->mutex);
            queue_->calls.push_back(
                Pending{std::tuple<std::decay_t<Args>...>(std::forward<Args>(args)...),
                        dontCancel_.load() ? VXPtr<FunctionImplAsync>(this) : nullptr});
        }
        // The handling holds the queue, not the implementation: a handling
        // that outlives the implementation finds the queue empty.
        event_.set([queue = queue_] { queue->runOldest(); });
        return R();
    }

    void setDontCancelOnDestruction(bool on) override { dontCancel_.store(on); }

private:
    struct Pending {
        std::tuple<std::decay_t<Args>...> args;
        VXPtr<FunctionImplAsync> keepAlive;  // set when calls must survive us
    };
    // Shared with every signalled handling. Holds its own copy of the callable
    // so that a call taken just before the implementation died can still run.
    struct Queue {
        explicit Queue(typename FunctionImpl<R(Args...)>::Callable c) : callable(std::move(c)) {}
        void runOldest() {
            std::optional<Pending> pending;
            {
                std::lock_guard<std::mutex> guard(mutex);
                if (calls.empty()) return;
                pending.emplace(std::move(calls.front()));
                calls.pop_front();
            }
            if (callable) std::apply(callable, std::move(pending->args));
            // pending->keepAlive is released here, after the call.
        }

        std::mutex mutex;
        std::deque<Pending> calls;  // guarded by mutex
        const typename FunctionImpl<R(Args...)>::Callable callable;
    };

    FunctionEventAsync event_;
    std::shared_ptr<Queue> queue_;
    std::atomic<bool> dontCancel_{false};
};

template <typename Signature>
class Function;

template <typename R, typename... Args>
class Function<R(Args...)> {
public:
    using Impl = FunctionImpl<R(Args...)>;

    // Direct, without a callable.
    Function() : impl_(new FunctionImplDirect<R(Args...)>(nullptr)) {}
    // Runs `callable` at once in the calling thread.
    template <typename F>
    requires std::is_invocable_r_v<R, F&, Args...> Function(DirectCall, F&& callable)
        : impl_(new FunctionImplDirect<R(Args...)>(std::forward<F>(callable))) {}
    // Runs `callable` synchronously under the loop's lock, or queued on the loop.
    template <typename F>
    requires std::is_invocable_r_v<R, F&, Args...> Function(VXEventLoop& loop, F&& callable,
                                                            Delivery delivery) {
        if (delivery == Delivery::Sync) {
            impl_ = new FunctionImplSync<R(Args...)>(loop, std::forward<F>(callable));
        } else {
            impl_ = new FunctionImplAsync<R(Args...)>(loop, std::forward<F>(callable));
        }
    }
    // Shares an implementation made elsewhere (null: direct, no callable).
    explicit Function(VXPtr<Impl> impl)
        : impl_(impl ? std::move(impl) : VXPtr<Impl>(new FunctionImplDirect<R(Args...)>(nullptr))) {
    }

    // Delivers one call; see the file comment for what each kind returns.
    R operator()(Args... args) const { return impl_->call(std::forward<Args>(args)...); }
    R call(Args... args) const { return impl_->call(std::forward<Args>(args)...); }

    bool hasCallable() const { return impl_->hasCallable(); }
    // For queued delivery: let calls still queued run after the last Function
    // sharing the implementation is gone. No effect on the other kinds.
    void setDontCancelOnDestruction(bool on) const { impl_->setDontCancelOnDestruction(on); }
    const VXPtr<Impl>& getImpl() const { return impl_; }

private:
    VXPtr<Impl> impl_;  // never null
};

}  // namespace VX
