// ExpressionRepository: the process-wide table that shares identical
// sub-expressions. It maps the normalized expression of every function node
// the parser built, the display text of every literal, and the names given to
// getOrCreateUndefinedReference, to the one node that computes it. The table
// does not hold its nodes: an entry lasts as long as somebody (an
// expression, a published object, a parse in progress) holds the node, and
// a later parse of the same text after that simply builds it again.
//
// Made on first use by VXSingleton<ExpressionRepository>::INSTANCE() under
// FAST_MUTEX and never destroyed. The table itself is unlocked: every caller
// holds the engine lock.
#pragma once

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/singleton.h"
#include "host/runtime/string.h"
#include "sysevent/graph/node.h"

namespace VX::SysEvent {

class ExpressionRepository : public VXSingleton<ExpressionRepository> {
public:
    virtual ~ExpressionRepository() = default;

    // Lists `node` under `key` until the node dies. There is no check for an
    // existing entry (callers look up first); one would be replaced.
    void add(const String& key, Node* node);
    // The node stored under `key` (exact byte match), or null.
    VXLWPtr<Node> get(const String& key) const;
    // The node stored under node->getNormalizedExpression() if there is one
    // (the caller then drops `node`), else `node`, now stored under that key.
    VXLWPtr<Node> getOrAdd(Node* node);
    // getOrAdd on the instance.
    static VXLWPtr<Node> GET_OR_ADD(Node* node);
    // Replaces the contents of `keys` with every key.
    void getNames(VXVector<String>& keys) const;
    // The node stored under `name`; if none, re-targets the proxy of `name`
    // (made if missing) to a fresh "#N/A!" placeholder, stores the proxy
    // under `name` and returns it.
    VXLWPtr<Node> getOrCreateUndefinedReference(const String& name);

    // Called by a dying node listed here: drops its entry (looked up under
    // `key`, its own sharing key; any other entry of it is found by a scan).
    void unlist(Node* node, const String& key);
    // How many entries the table holds.
    size_t size() const { return m_nodes.size(); }

private:
    VXStringHashTable<Node*> m_nodes;  // not owned
};

}  // namespace VX::SysEvent
