// ProxyRepository: the process-wide table of name -> ProxyNode. Every
// reference to a name is the one proxy listed here. The table does not hold
// the proxies: a proxy lives while an expression uses it or a published
// object or caller holds it, so a name outlives the objects bound to it and
// can be bound again without re-parsing the expressions that use it, while
// the proxy of a destroyed name that nobody uses goes.
//
// Made on first use by VXSingleton<ProxyRepository>::INSTANCE() under
// FAST_MUTEX and never destroyed. The table itself is unlocked: every caller
// holds the engine lock.
#pragma once

#include <string_view>
#include <unordered_map>

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/singleton.h"
#include "host/runtime/string.h"
#include "sysevent/graph/node.h"
#include "sysevent/graph/proxy_node.h"

namespace VX::SysEvent {

class ProxyRepository : public VXSingleton<ProxyRepository> {
public:
    virtual ~ProxyRepository() = default;

    // The proxy of `name`; a new one bound to a "#N/A!" placeholder if the
    // name has none yet. Never re-targets an existing proxy.
    VXLWPtr<ProxyNode> getOrCreate(const String& name);
    // The proxy of `name` (made if missing), re-targeted to `node`. A failing
    // re-target (null, cycle) is ignored: the proxy keeps its old target.
    VXLWPtr<ProxyNode> getOrCreate(const String& name, VXLWPtr<Node> node);
    // The proxy of `name`, or null if the name was never referenced.
    VXLWPtr<ProxyNode> get(const String& name) const;
    // Replaces the contents of `names` with every name that has a proxy.
    void getNames(VXVector<String>& names) const;

    // Called by a dying proxy: drops its entry.
    void unlist(Node* proxy, const String& name);
    // How many names have a proxy.
    size_t size() const { return m_proxies.size(); }

private:
    // Keyed by a view of the proxy's own name (its function name, fixed for
    // its life): the name is not stored a second time. A plain (uncached)
    // hash keeps each entry at three words.
    struct NameHash {
        size_t operator()(std::string_view name) const noexcept {
            return std::hash<std::string_view>()(name);
        }
    };
    std::unordered_map<std::string_view, ProxyNode*, NameHash> m_proxies;  // not owned
};

}  // namespace VX::SysEvent
