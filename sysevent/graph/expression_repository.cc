// ExpressionRepository: the sharing table of sub-expressions and literals,
// keyed by normalized expression text; an entry lives as long as its node.
#include "sysevent/graph/expression_repository.h"

#include "sysevent/graph/proxy_node.h"
#include "sysevent/graph/proxy_repository.h"

namespace VX::SysEvent {

void ExpressionRepository::add(const String& key, Node* node) {
    if (!node) return;
    m_nodes.insert_or_assign(key, node);
    node->m_listings |= Node::LISTED_AS_EXPRESSION;
}

VXLWPtr<Node> ExpressionRepository::get(const String& key) const {
    auto it = m_nodes.find(key);
    return it == m_nodes.end() ? VXLWPtr<Node>() : VXLWPtr<Node>(it->second);
}

VXLWPtr<Node> ExpressionRepository::getOrAdd(Node* node) {
    auto [it, added] = m_nodes.try_emplace(node->getNormalizedExpression(), node);
    if (added) node->m_listings |= Node::LISTED_AS_EXPRESSION;
    return VXLWPtr<Node>(it->second);
}

void ExpressionRepository::unlist(Node* node, const String& key) {
    if (auto it = m_nodes.find(key); it != m_nodes.end() && it->second == node) {
        m_nodes.erase(it);
        return;
    }
    // Listed under a key other than its own (add takes any key): rare.
    std::erase_if(m_nodes, [node](const auto& entry) { return entry.second == node; });
}

VXLWPtr<Node> ExpressionRepository::GET_OR_ADD(Node* node) {
    return INSTANCE()->getOrAdd(node);
}

void ExpressionRepository::getNames(VXVector<String>& keys) const {
    keys.clear();
    keys.reserve(m_nodes.size());
    for (const auto& entry : m_nodes) keys.push_back(entry.first);
}

VXLWPtr<Node> ExpressionRepository::getOrCreateUndefinedReference(const String& name) {
    if (VXLWPtr<Node> existing = get(name)) return existing;
    VXLWPtr<Node> proxy =
        ProxyRepository::INSTANCE()->getOrCreate(name, ProxyNode::MAKE_PLACEHOLDER(name));
    add(name, proxy.get());
    return proxy;
}

}  // namespace VX::SysEvent
