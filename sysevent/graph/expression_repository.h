// ExpressionRepository: the process-wide table that shares identical
// sub-expressions. It maps the normalized expression of every function node
// the parser built, the display text of every literal, and the names given to
// getOrCreateUndefinedReference, to the one node that computes it. Entries
// are never removed: everything ever parsed stays and is reused by later
// parses of the same text.
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

    // Stores `node` (taking a reference) under `key`. There is no check for an
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

private:
    VXStringHashTable<VXLWPtr<Node>> m_nodes;
};

}  // namespace VX::SysEvent
