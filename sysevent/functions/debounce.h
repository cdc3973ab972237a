// The debounce functions: DEBOUNCE holds every change of its input back until
// the input has been quiet for the delay; DEBOUNCEIF only while its condition
// is true; DEBOUNCEINC only rises and DEBOUNCEDEC only falls, letting changes
// the other way through at once.
//
// A node is idle, or holds one pending value with its timer running. A new
// held-back input replaces the pending value and restarts the timer; an input
// let through stops it, dropping the pending value. The expiry sets the
// pending value on the node itself, which propagates like a value set at a
// leaf (nothing happens if it equals the output). The first input passes at
// once.
//
// While an argument is an error or undefined the graph gives the node that
// error without calling compute, and a running timer keeps running: its
// expiry still delivers the pending value.
#pragma once

#include "sysevent/functions/event_timeout.h"
#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

// DEBOUNCE(expr,time): every change is held back.
class DEBOUNCE : public NonTemporalFunctionNode {
public:
    DEBOUNCE(const String& functionName, const String& parameterText);

    // Exactly two arguments (DEBOUNCEIF: three).
    XCode verifyArguments() override;
    // Checks the delay (argument 2), then lets the input through or holds it
    // back as shallDebounce decides; the first computation always lets it
    // through. A held-back input leaves the result at the current output.
    XCode compute(Value& result) override;
    // Sets `flag` to whether the change from `current` (the node's output) to
    // `input` is to be held back. DEBOUNCE: always.
    virtual XCode shallDebounce(bool& flag, const Value& current, const Value& input);

    // Makes `value` the pending value and (re)starts the timer with `ms`. A
    // failed start is logged; the output then stays as it is.
    void debounceValue(const Value& value, unsigned int ms);
    // setValue(value) on this node.
    void onDebouncedValue(const Value& value);
    // The timer's expiry: onDebouncedValue(pending value).
    void onTimeout();

    // The pending state for explaining the node's value (see FunctionNode).
    void describeState(VXVector<FunctionState>& out) const override;
    bool isTimerRunning() const { return m_timer.isRunning(); }

protected:
    // Destroys the timer with the node: nothing expires afterwards.
    ~DEBOUNCE() override = default;

private:
    VXEventTimeout<DEBOUNCE> m_timer;
    Value m_pendingValue;  // delivered by the next expiry
};

// DEBOUNCEIF(expr,time,condition): held back while the condition (argument 3,
// read as a boolean) is true; a condition that cannot be read as a boolean
// makes the result that conversion's error.
class DEBOUNCEIF : public DEBOUNCE {
public:
    using DEBOUNCE::DEBOUNCE;
    XCode verifyArguments() override;
    XCode shallDebounce(bool& flag, const Value& current, const Value& input) override;
};

// DEBOUNCEINC(expr,time): only rises are held back (see liesBeyond).
class DEBOUNCEINC : public DEBOUNCE {
public:
    using DEBOUNCE::DEBOUNCE;
    XCode shallDebounce(bool& flag, const Value& current, const Value& input) override;
};

// DEBOUNCEDEC(expr,time): only falls are held back (see liesBeyond).
class DEBOUNCEDEC : public DEBOUNCE {
public:
    using DEBOUNCE::DEBOUNCE;
    XCode shallDebounce(bool& flag, const Value& current, const Value& input) override;
};

// The order DEBOUNCEINC and DEBOUNCEDEC go by. Sets `flag` to whether `input`
// lies above `current` (rise true) or below it (rise false):
// - values of different data types are neither;
// - numbers are compared after Value::NORMALIZE_NUMBERS (whose failure is
//   returned), as unsigned integers or as doubles (NaN is neither);
// - false < true;
// - times only within one subtype, by seconds, then nanoseconds, signed;
// - texts byte by byte as unsigned values up to the first zero byte, a proper
//   prefix being the smaller;
// - empty, undefined and error values are neither.
XCode liesBeyond(bool& flag, const Value& current, const Value& input, bool rise);

}  // namespace VX::SysEvent
