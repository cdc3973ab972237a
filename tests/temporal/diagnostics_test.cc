// What DEBOUNCE, DELAY and STABLE tell the monitor, and what becomes of a
// change whose timer cannot start: DEBOUNCE keeps its output, DELAY drops the
// value (its record goes back to the free list), STABLE makes the failure
// its result.
#include <gtest/gtest.h>

#include "sysevent/functions/delay.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using Diagnostics = TemporalTest;

TEST_F(Diagnostics, TracesHeldBackValuesAtLevelThreeOnly) {
    const struct {
        const char* fn;
        Value input;
        const char* line;
    } rows[] = {
        {"DEBOUNCE", Value("up"), "Debouncing 'up' by 2500 ms"},
        {"DELAY", num(9), "Delaying 9 by 2500 ms"},
        {"STABLE", Value("on"), "Waiting 2500 ms for 'on' to stabilize"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fn);
        RTD::CaptureMonitor mon(2);
        MON = &mon;
        VXLWPtr<Node> x = leaf(num(0));
        VXLWPtr<FunctionNode> f = apply(row.fn, {x.get(), leaf(duration(2500)).get()});
        Watch w(f.get());
        const String line = String::Formatted("[%s] %s", f->getName().c_str(), row.line);
        x->setValue(row.input);
        EXPECT_FALSE(mon.contains(line));
        mon.setVerbosity(3);
        x->setValue(num(1));
        x->setValue(row.input);
        EXPECT_TRUE(mon.contains(line)) << line.c_str();
        MON = nullptr;
    }
}

TEST_F(Diagnostics, TimerThatCannotStart) {
    const XCode noLoop = XCode::Failure("NO LOOP");
    const struct {
        const char* fn;
        XCode fault;
        const char* verb;
        Value result;  // after the failure, and still 5 s later
    } rows[] = {
        {"DEBOUNCE", noLoop, "DEBOUNCE", num(1)},
        {"DELAY", noLoop, "DELAY", num(1)},
        {"STABLE", noLoop, "STABILIZE", Value(DST_ERR_GENERIC)},
        {"STABLE", errToXCode(DST_ERR_NA), "STABILIZE", Value(DST_ERR_NA)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fn);
        RTD::CaptureMonitor mon(3);
        MON = &mon;
        VXLWPtr<Node> x = leaf(num(1));
        VXLWPtr<FunctionNode> f = apply(row.fn, {x.get(), leaf(duration(1000)).get()});
        Watch w(f.get());
        clock_.refusal = row.fault;
        x->setValue(num(2));
        clock_.refusal = XCode();
        EXPECT_TRUE(
            mon.contains(String::Formatted("[%s] CANNOT %s VALUE 2: %s", f->getName().c_str(),
                                           row.verb, row.fault.toString().c_str())));
        EXPECT_EQ(w.value(), row.result);
        advanceTo(nowMs() + 5000);
        EXPECT_EQ(w.value(), row.result);
        EXPECT_EQ(w.changes.size(), row.result.isError() ? 1u : 0u);
        if (DELAY* d = dynamic_cast<DELAY*>(f.get())) {
            EXPECT_EQ(d->getQueueLength(), 0u);
            EXPECT_EQ(d->getFreeRecordCount(), 1u);
            x->setValue(num(3));  // reuses the returned record
            EXPECT_EQ(d->getRecordCount(), 1u);
        }
        MON = nullptr;
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
