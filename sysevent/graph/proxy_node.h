// ProxyNode: the node of a name. Every reference to a name, from any
// expression or published object, is the one proxy node that the
// ProxyRepository keeps for it. The proxy has exactly one child, its target
// (a "#N/A!" placeholder, a value node or an expression's root), and copies
// the target's event. Binding a name swaps the target, so expressions over
// the name follow it without being parsed again.
#pragma once

#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/value/event.h"

namespace VX::SysEvent {

class ProxyNode : public FunctionNode {
public:
    // A proxy for `name` bound to `target` (which must not be null). The
    // function name is the name; the parameter text is empty.
    ProxyNode(const String& name, Node* target);

    // The referenced name: expressions over a name share their nodes whatever
    // the name is bound to.
    String getNormalizedExpression() const override;
    // Success with exactly one child, the generic failure code otherwise.
    XCode verifyArguments() override;
    // Copies the target's last event, times included.
    XCode compute(Event& result) override;

    // Re-targets the proxy to `node` and, on success, recomputes and
    // propagates at once (forceRecompute). Fails with the generic failure
    // code for null and with "CIRCULAR REFERENCE" when `node` depends on this
    // proxy; on failure the old target stays.
    virtual XCode setNode(Node* node);
    // Re-targets the proxy to a fresh "#N/A!" placeholder of its name.
    virtual XCode setInvalidReference();

    // The referenced name (same as getFunctionName()).
    const String& getReferencedName() const { return getFunctionName(); }
    // The current target.
    Node* getTarget() const { return getChildCount() ? getChild(0) : nullptr; }

    // A plain node named `name` holding "#N/A!" since now: the target of a
    // name that is not bound to a live object.
    static VXLWPtr<Node> MAKE_PLACEHOLDER(const String& name);
};

}  // namespace VX::SysEvent
