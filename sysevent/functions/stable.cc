// STABLE and its factory object.
#include "sysevent/functions/stable.h"

#include "host/runtime/crit.h"
#include "host/runtime/log.h"
#include "sysevent/functions/delay_argument.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

STABLE::STABLE(const String& functionName, const String& parameterText)
    : NonTemporalFunctionNode(functionName, parameterText), m_timer(this) {}

XCode STABLE::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode STABLE::compute(Value& result) {
    unsigned ms = 0;
    if (XCode rc = delayMilliseconds(getArgument(1), ms); rc.isErr()) return rc;
    const Value& input = getArgument(0);
    if (input == m_watchedValue) {
        // Read without the lazy update of getValue(): compute runs inside this
        // node's own recompute.
        result = peekLastEvent().value;
        return XCode();
    }
    result = Value(false);
    SYSEVENT_LOG(3, "[%s] Waiting %llu ms for %s to stabilize", getName().c_str(),
                 static_cast<unsigned long long>(ms), input.toString().c_str());
    m_watchedValue = input;
    XCode rc = m_timer.start(ms);
    if (rc.isErr()) {
        SYSEVENT_LOG(3, "[%s] CANNOT STABILIZE VALUE %s: %s", getName().c_str(),
                     input.toString().c_str(), rc.toString().c_str());
    }
    return rc;
}

void STABLE::onStabilized(const Value&) {
    setValue(Value(true));
}

void STABLE::onTimeout() {
    onStabilized(m_watchedValue);
}

FunctionFactory::Factory<STABLE> s_functionFactorySTABLE(
    "STABLE", "expr,time",
    "True if the first argument does not change for the specified time difference");

void STABLE::describeState(VXVector<FunctionState>& out) const {
    if (m_timer.isRunning()) {
        out.push_back(FunctionState("watching", m_watchedValue, true, m_timer.getDueTime()));
    } else {
        out.push_back(FunctionState("watching", m_watchedValue));
    }
}

}  // namespace VX::SysEvent
