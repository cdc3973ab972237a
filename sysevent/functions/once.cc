// ONCE and its factory object.
#include "sysevent/functions/once.h"

#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

XCode ONCE::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

bool ONCE::handlesErrorsManually() const {
    return true;
}

XCode ONCE::compute(Event& result) {
    if (m_latched) {
        result = m_latchedEvent;
        return XCode();
    }
    result = getArgumentEvent(0);
    // An error or undefined value fails to convert, so it never latches.
    Value truth = result.value;
    if (truth.toBoolean().isSuccess() && truth.data.boolean) {
        m_latchedEvent = result;
        m_latched = true;
    }
    return XCode();
}

FunctionFactory::Factory<ONCE> s_functionFactoryONCE(
    "ONCE", "", "True if the argument is true; never switches back to false");

void ONCE::describeState(VXVector<FunctionState>& out) const {
    if (!m_latched) {
        out.push_back(FunctionState("not latched"));
        return;
    }
    out.push_back(FunctionState("latched", m_latchedEvent.value, false, m_latchedEvent.start));
}

}  // namespace VX::SysEvent
