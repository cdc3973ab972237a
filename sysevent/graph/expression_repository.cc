// ExpressionRepository: the sharing table of sub-expressions and literals,
// keyed by normalized expression text; entries live as long as the process.
#include "sysevent/graph/expression_repository.h"

#include "sysevent/graph/proxy_node.h"
#include "sysevent/graph/proxy_repository.h"

namespace VX::SysEvent {

void ExpressionRepository::add(const String& key, Node* node) {
    m_nodes.insert_or_assign(key, VXLWPtr<Node>(node));
}

VXLWPtr<Node> ExpressionRepository::get(const String& key) const {
    auto it = m_nodes.find(key);
    return it == m_nodes.end() ? VXLWPtr<Node>() : it->second;
}

VXLWPtr<Node> ExpressionRepository::getOrAdd(Node* node) {
    const String key = node->getNormalizedExpression();
    auto it = m_nodes.find(key);
    if (it != m_nodes.end()) return it->second;
    VXLWPtr<Node> stored(node);
    m_nodes.emplace(key, stored);
    return stored;
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
