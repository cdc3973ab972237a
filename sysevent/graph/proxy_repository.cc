// ProxyRepository: one proxy node per name, made on first reference and
// listed while somebody holds it.
#include "sysevent/graph/proxy_repository.h"

namespace VX::SysEvent {

VXLWPtr<ProxyNode> ProxyRepository::getOrCreate(const String& name) {
    auto it = m_proxies.find(name);
    if (it != m_proxies.end()) return VXLWPtr<ProxyNode>(it->second);
    const VXLWPtr<Node> placeholder = ProxyNode::MAKE_PLACEHOLDER(name);
    VXLWPtr<ProxyNode> proxy(new ProxyNode(name, placeholder.get()));
    m_proxies.emplace(std::string_view(proxy->getReferencedName()), proxy.get());
    proxy->m_listings |= Node::LISTED_AS_PROXY;
    return proxy;
}

VXLWPtr<ProxyNode> ProxyRepository::getOrCreate(const String& name, VXLWPtr<Node> node) {
    VXLWPtr<ProxyNode> proxy = getOrCreate(name);
    // A refused binding (null, cycle) leaves the proxy on its old target;
    // callers that care use setNode themselves.
    proxy->setNode(node.get());
    return proxy;
}

VXLWPtr<ProxyNode> ProxyRepository::get(const String& name) const {
    auto it = m_proxies.find(name);
    return it == m_proxies.end() ? VXLWPtr<ProxyNode>() : VXLWPtr<ProxyNode>(it->second);
}

void ProxyRepository::unlist(Node* proxy, const String& name) {
    if (auto it = m_proxies.find(name); it != m_proxies.end() && it->second == proxy)
        m_proxies.erase(it);
}

void ProxyRepository::getNames(VXVector<String>& names) const {
    names.clear();
    names.reserve(m_proxies.size());
    for (const auto& entry : m_proxies) names.push_back(String(entry.first));
}

}  // namespace VX::SysEvent
