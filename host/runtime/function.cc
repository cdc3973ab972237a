// The event-loop side of VX::Function deliveries, out of line so that
// function.h does not carry the loop's internals to its users.
#include "host/runtime/function.h"

#include "host/runtime/event_loop.h"

namespace VX {

void FunctionEventSync::lock() {
    loop_.getLock().lock();
}

void FunctionEventSync::unlock() {
    loop_.getLock().unlock();
}

void FunctionEventAsync::set(std::function<void()> handle) {
    loop_.post(std::move(handle));
}

}  // namespace VX
