// ONCE(x): x's event, passed through as it is (errors and undefined values
// included), until x first counts as true; from then on, for ever, the event
// that latched. A number latches at the number itself, not at true. There is
// no reset: the node is shared by every ONCE(x) of the same x and lives as
// long as the expression repository, that is, for the life of the process.
#pragma once

#include "sysevent/graph/function_node.h"
#include "sysevent/value/event.h"

namespace VX::SysEvent {

class ONCE : public FunctionNode {
public:
    using FunctionNode::FunctionNode;

    // Exactly one argument.
    XCode verifyArguments() override;
    // True: errors pass through and never latch.
    bool handlesErrorsManually() const override;
    // The latched event if latched; otherwise the argument's last event,
    // latching it when its value converts to true.
    XCode compute(Event& result) override;

    // The pending state for explaining the node's value (see FunctionNode).
    void describeState(VXVector<FunctionState>& out) const override;
    bool isLatched() const { return m_latched; }

private:
    Event m_latchedEvent;
    bool m_latched = false;
};

}  // namespace VX::SysEvent
