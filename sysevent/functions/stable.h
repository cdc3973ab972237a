// STABLE(expr,time): false from every change of its input until the input
// has stayed unchanged for the delay, true from then on. Each change restarts
// the one timer; its expiry sets true on the node itself, which propagates
// like a value set at a leaf.
#pragma once

#include "sysevent/functions/event_timeout.h"
#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

class STABLE : public NonTemporalFunctionNode {
public:
    STABLE(const String& functionName, const String& parameterText);

    // Exactly two arguments.
    XCode verifyArguments() override;
    // Checks the delay (argument 2). An input equal to the watched one leaves
    // the output and the timer alone (only the delay changed, say); any other
    // input becomes the watched one, the result is false and the timer
    // restarts. A failed start is logged and is the result.
    XCode compute(Value& result) override;

    // setValue(true) on this node, whatever `value` is.
    void onStabilized(const Value& value);
    // The timer's expiry: onStabilized(watched value).
    void onTimeout();

    // The pending state for explaining the node's value (see FunctionNode).
    void describeState(VXVector<FunctionState>& out) const override;
    bool isTimerRunning() const { return m_timer.isRunning(); }

protected:
    // Destroys the timer with the node: nothing expires afterwards.
    ~STABLE() override = default;

private:
    VXEventTimeout<STABLE> m_timer;
    Value m_watchedValue;  // the input whose stability is being timed
};

}  // namespace VX::SysEvent
