// NOW and TODAY with their factory objects, and the per-class tick that both
// keep the same way.
#include "sysevent/functions/now_today.h"

#include <algorithm>

#include "host/runtime/clock.h"
#include "host/runtime/crit.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

constexpr unsigned TICK_PERIOD_MS = 10000;

// Adds `node` to its class's list and starts the class's tick if there is
// none. A failed start goes unreported: the nodes then still read the clock
// whenever they are recomputed.
template <typename F>
void joinTick(F* node) {
    F::s_instances.push_back(node);
    if (F::s_pTickEvent) return;
    F::s_pTickEvent = new _VXTimeoutEvent(EVENT_LOOP(), EventPrio::NORMAL, &F::ON_TICK, nullptr);
    (void)F::s_pTickEvent->start(TICK_PERIOD_MS, true);
}

// Removes `node` from its class's list; the last node ends the tick.
template <typename F>
void leaveTick(F* node) {
    std::erase(F::s_instances, node);
    if (F::s_instances.empty() && F::s_pTickEvent) {
        // Cleared before the release: destroying the event may run (or wait
        // for) code that looks at the pointer.
        VXLWPtr<_VXTimeoutEvent> tick = std::move(F::s_pTickEvent);
        F::s_pTickEvent = nullptr;
    }
}

// Triggers `event` on every node of the class, in list order. Each node is
// held for the duration, so that a node dropped by some observer during the
// tick dies only afterwards (its destructor may then end the tick from inside
// its own handler, which the loop allows).
template <typename F>
void tickAll(const Event& event) {
    const VXVector<VXLWPtr<F>> nodes(F::s_instances.begin(), F::s_instances.end());
    for (const VXLWPtr<F>& node : nodes) node->triggerEvent(event);
}

}  // namespace

VXVector<NOW*> NOW::s_instances;
VXLWPtr<_VXTimeoutEvent> NOW::s_pTickEvent;
VXVector<TODAY*> TODAY::s_instances;
VXLWPtr<_VXTimeoutEvent> TODAY::s_pTickEvent;

NOW::NOW(const String& functionName, const String& parameterText)
    : FunctionNode(functionName, parameterText) {
    joinTick(this);
}

NOW::~NOW() {
    leaveTick(this);
}

XCode NOW::verifyArguments() {
    return XCode::testExpression(getChildCount() == 0);
}

XCode NOW::compute(Event& result) {
    const VX::Clock clock = VX::Clock::NOW(0);
    result = Event(clock.toTime(), Value(clock, DST_ABS_DATE_TIME));
    return XCode();
}

void NOW::ON_TICK(void*) {
    const VX::Time t = VX::Clock::NOW(0).toTime();
    const Event event(t, Value(VX::Clock::NOW(0), DST_ABS_DATE_TIME));
    tickAll<NOW>(event);
}

TODAY::TODAY(const String& functionName, const String& parameterText)
    : FunctionNode(functionName, parameterText) {
    joinTick(this);
}

TODAY::~TODAY() {
    leaveTick(this);
}

XCode TODAY::verifyArguments() {
    return XCode::testExpression(getChildCount() == 0);
}

XCode TODAY::compute(Event& result) {
    const VX::Clock clock = VX::Clock::NOW(0);
    result = Event(clock.toTime(), Value(clock, DST_ABS_DATE));
    return result.value.correctTime();
}

void TODAY::ON_TICK(void*) {
    const VX::Time t = VX::Clock::NOW(0).toTime();
    Event event(t, Value(VX::Clock::NOW(0), DST_ABS_DATE));
    (void)event.value.correctTime();
    tickAll<TODAY>(event);
}

FunctionFactory::Factory<NOW> s_functionFactoryNOW("NOW", "", "Returns the current date/time");
FunctionFactory::Factory<TODAY> s_functionFactoryTODAY("TODAY", "", "Returns the current date");

}  // namespace VX::SysEvent
