// DEBOUNCE, DEBOUNCEIF, DEBOUNCEINC and DEBOUNCEDEC, with their factory
// objects (one group, in that order), and the order that the INC and DEC
// variants go by.
#include "sysevent/functions/debounce.h"

#include <cstring>

#include "host/runtime/crit.h"
#include "host/runtime/log.h"
#include "sysevent/functions/delay_argument.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

DEBOUNCE::DEBOUNCE(const String& functionName, const String& parameterText)
    : NonTemporalFunctionNode(functionName, parameterText), m_timer(this) {}

XCode DEBOUNCE::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode DEBOUNCE::compute(Value& result) {
    unsigned ms = 0;
    if (XCode rc = delayMilliseconds(getArgument(1), ms); rc.isErr()) return rc;
    const Value input = getArgument(0);
    // The stored output, read without the lazy update of getValue(): compute
    // runs inside this node's own recompute.
    const Value current = peekLastEvent().value;

    if (current.getDataType() == DT_UNDEF) {
        m_timer.stop();
        result = input;
        return XCode();
    }
    bool flag = false;
    if (XCode rc = shallDebounce(flag, current, input); rc.isErr()) return rc;
    if (!flag) {
        m_timer.stop();
        result = input;
        return XCode();
    }
    SYSEVENT_LOG(3, "[%s] Debouncing %s by %llu ms", getName().c_str(), input.toString().c_str(),
                 static_cast<unsigned long long>(ms));
    debounceValue(input, ms);
    result = current;
    return XCode();
}

XCode DEBOUNCE::shallDebounce(bool& flag, const Value&, const Value&) {
    flag = true;
    return XCode();
}

void DEBOUNCE::debounceValue(const Value& value, unsigned int ms) {
    m_pendingValue = value;
    if (XCode rc = m_timer.start(ms); rc.isErr()) {
        SYSEVENT_LOG(3, "[%s] CANNOT DEBOUNCE VALUE %s: %s", getName().c_str(),
                     value.toString().c_str(), rc.toString().c_str());
    }
}

void DEBOUNCE::onDebouncedValue(const Value& value) {
    setValue(value);
}

void DEBOUNCE::onTimeout() {
    onDebouncedValue(m_pendingValue);
}

XCode DEBOUNCEIF::verifyArguments() {
    return XCode::testExpression(getChildCount() == 3);
}

XCode DEBOUNCEIF::shallDebounce(bool& flag, const Value&, const Value&) {
    Value condition = getArgument(2);
    if (XCode rc = condition.toBoolean(); rc.isErr()) return rc;
    flag = condition.data.boolean;
    return XCode();
}

XCode DEBOUNCEINC::shallDebounce(bool& flag, const Value& current, const Value& input) {
    return liesBeyond(flag, current, input, true);
}

XCode DEBOUNCEDEC::shallDebounce(bool& flag, const Value& current, const Value& input) {
    return liesBeyond(flag, current, input, false);
}

XCode liesBeyond(bool& flag, const Value& current, const Value& input, bool rise) {
    flag = false;
    if (current.getDataType() != input.getDataType()) return XCode();
    // Negative: input below current; positive: above; zero: neither (equal or
    // not comparable).
    int order = 0;
    switch (input.getDataType()) {
        case DT_NUMBER: {
            Value a = current;
            Value b = input;
            if (XCode rc = Value::NORMALIZE_NUMBERS(a, b); rc.isErr()) return rc;
            if (a.subtype == DST_UINT && b.subtype == DST_UINT)
                order = b.data.uint < a.data.uint ? -1 : (b.data.uint > a.data.uint ? 1 : 0);
            else if (a.subtype == DST_FLP && b.subtype == DST_FLP)
                order = b.data.flp < a.data.flp ? -1 : (b.data.flp > a.data.flp ? 1 : 0);
            break;
        }
        case DT_BOOL:
            order = static_cast<int>(input.data.boolean) - static_cast<int>(current.data.boolean);
            break;
        case DT_TIME:
            if (current.subtype == input.subtype) {
                const auto c = input.data.time <=> current.data.time;
                order = c < 0 ? -1 : (c > 0 ? 1 : 0);
            }
            break;
        case DT_STRING:
            // strcmp compares as unsigned bytes and stops at the first zero.
            order = std::strcmp(input.data.string.c_str(), current.data.string.c_str());
            break;
        default:
            break;
    }
    flag = rise ? order > 0 : order < 0;
    return XCode();
}

FunctionFactory::Factory<DEBOUNCE> s_functionFactoryDEBOUNCE(
    "DEBOUNCE", "expr,time",
    "Delays changes of the first argument to the output by the specified time difference");
FunctionFactory::Factory<DEBOUNCEIF> s_functionFactoryDEBOUNCEIF(
    "DEBOUNCEIF", "expr,time,condition",
    "Delays changes of the first argument to the output by the specified time difference if the "
    "condition is true");
FunctionFactory::Factory<DEBOUNCEINC> s_functionFactoryDEBOUNCEINC(
    "DEBOUNCEINC", "expr,time",
    "Only delays increments of the first argument to the output by the specified time "
    "difference");
FunctionFactory::Factory<DEBOUNCEDEC> s_functionFactoryDEBOUNCEDEC(
    "DEBOUNCEDEC", "expr,time",
    "Only delays decrements of the first argument to the output by the specified time "
    "difference");

void DEBOUNCE::describeState(VXVector<FunctionState>& out) const {
    // A stopped timer leaves its last pending value behind: it is no state.
    if (!m_timer.isRunning()) {
        out.push_back(FunctionState("idle"));
        return;
    }
    out.push_back(FunctionState("pending", m_pendingValue, true, m_timer.getDueTime()));
}

}  // namespace VX::SysEvent
