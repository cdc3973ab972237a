// DELAY(expr,time): replays every change of its input one delay later, in
// the order of the changes. Each change is queued in a record with its own
// timer; every expiry delivers the oldest queued value, so values come out
// strictly in order even when the delay changes while some are queued.
//
// Records are never freed before the node: a delivered record goes to a free
// list and is reused by the next change, so a steady stream of changes
// allocates nothing once the queue has reached its longest. The queue is
// linked through the records themselves for the same reason.
#pragma once

#include <cstddef>

#include "host/runtime/containers.h"
#include "sysevent/functions/event_timeout.h"
#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

class DELAY : public NonTemporalFunctionNode {
public:
    // One queued change: its value and the timer that delivers it.
    struct Info {
        explicit Info(DELAY* owner) : timer(owner) {}
        VXEventTimeout<DELAY> timer;
        Value value;
        Info* pNext = nullptr;  // the next younger record in the queue
    };

    DELAY(const String& functionName, const String& parameterText);

    // Exactly two arguments; the failure carries the text "expr,time".
    XCode verifyArguments() override;
    // Checks the delay (argument 2). The first computation lets the input
    // through; every later one queues it and leaves the output as it is.
    XCode compute(Value& result) override;

    // Queues `value` in a record (reused from the free list when there is
    // one) whose timer expires in `ms`. A failed start is logged and the
    // record goes back to the free list: that value is then never delivered.
    void delayValue(const Value& value, unsigned int ms);
    // setValue(value) on this node.
    void onDelayedValue(const Value& value);
    // Any record's expiry: delivers the oldest queued value and frees its
    // record.
    void onTimeout();

    // The pending state for explaining the node's value (see FunctionNode).
    void describeState(VXVector<FunctionState>& out) const override;
    // Values queued and not delivered yet.
    size_t getQueueLength() const { return m_queueLength; }
    // Records waiting on the free list.
    size_t getFreeRecordCount() const { return m_freeList.size(); }
    // Records made over the node's life (queued + free).
    size_t getRecordCount() const { return m_recordsMade; }

protected:
    // Destroys every record, queued or free, with its timer: nothing expires
    // afterwards.
    ~DELAY() override;

private:
    // The queue, oldest first; owned. Linked through Info::pNext.
    Info* m_pQueueHead = nullptr;
    Info* m_pQueueTail = nullptr;
    size_t m_queueLength = 0;
    VXVector<Info*> m_freeList;  // owned; the last one is reused first
    size_t m_recordsMade = 0;
};

}  // namespace VX::SysEvent
