// NameResolver: the process-wide default resolver.
#include "sysevent/language/name_resolver.h"

#include <atomic>

namespace VX::SysEvent {

namespace {

std::atomic<NameResolver*> s_defaultResolver{nullptr};

}  // namespace

NameResolver* NameResolver::GET_DEFAULT() {
    return s_defaultResolver.load(std::memory_order_acquire);
}

void NameResolver::SET_DEFAULT(NameResolver* resolver) {
    s_defaultResolver.store(resolver, std::memory_order_release);
}

}  // namespace VX::SysEvent
