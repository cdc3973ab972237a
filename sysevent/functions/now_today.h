// NOW() and TODAY(): the current date-time and the current date (zone 0).
// Both read the clock whenever they are recomputed, and each class keeps one
// repeating 10-second tick, shared by all of its nodes, that pushes the new
// reading into every node of the class as a triggered event. The class's
// first node starts the tick and its last node ends it.
//
// A TODAY tick changes nothing except on the first tick after midnight, so
// TODAY's output changes once a day, within 10 seconds of midnight. The
// times of both nodes' events are the moment of reading.
//
// The instance lists and tick pointers are touched only under the engine
// lock: nodes are built and destroyed under it, and ticks run on the engine's
// event loop, which holds it.
#pragma once

#include "host/runtime/containers.h"
#include "host/runtime/event_loop.h"
#include "host/runtime/ref_counted.h"
#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

class NOW : public FunctionNode {
public:
    // Joins the class's instance list, starting the tick if there is none.
    NOW(const String& functionName, const String& parameterText);

    // No argument.
    XCode verifyArguments() override;
    // The clock's reading as a DST_ABS_DATE_TIME value, with start and end
    // at that moment.
    XCode compute(Event& result) override;

    // The tick: one reading, triggered on every node in list order.
    static void ON_TICK(void* unused);

    // Every live NOW node, in order of construction. Not owned.
    static VXVector<NOW*> s_instances;
    // The tick; null while no NOW node exists.
    static VXLWPtr<_VXTimeoutEvent> s_pTickEvent;

protected:
    // Leaves the instance list; the last node releases the tick.
    ~NOW() override;
};

class TODAY : public FunctionNode {
public:
    // Joins the class's instance list, starting the tick if there is none.
    TODAY(const String& functionName, const String& parameterText);

    // No argument.
    XCode verifyArguments() override;
    // The clock's date as a DST_ABS_DATE value (midnight of the day), with
    // start and end at the moment of reading.
    XCode compute(Event& result) override;

    // The tick: one reading, triggered on every node in list order; it
    // propagates only when the date has changed.
    static void ON_TICK(void* unused);

    // Every live TODAY node, in order of construction. Not owned.
    static VXVector<TODAY*> s_instances;
    // The tick; null while no TODAY node exists.
    static VXLWPtr<_VXTimeoutEvent> s_pTickEvent;

protected:
    // Leaves the instance list; the last node releases the tick.
    ~TODAY() override;
};

}  // namespace VX::SysEvent
