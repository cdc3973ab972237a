// DELAY and its factory object: the record queue, its free list and the
// ordered delivery of queued values.
#include "sysevent/functions/delay.h"

#include "host/runtime/crit.h"
#include "host/runtime/log.h"
#include "sysevent/functions/delay_argument.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

DELAY::DELAY(const String& functionName, const String& parameterText)
    : NonTemporalFunctionNode(functionName, parameterText) {}

DELAY::~DELAY() {
    while (Info* info = m_pQueueHead) {
        m_pQueueHead = info->pNext;
        delete info;
    }
    for (Info* info : m_freeList) delete info;
}

XCode DELAY::verifyArguments() {
    if (getChildCount() == 2) return XCode();
    return XCode(XCode::GENERIC_FAILURE, "expr,time");
}

XCode DELAY::compute(Value& result) {
    unsigned ms = 0;
    if (XCode rc = delayMilliseconds(getArgument(1), ms); rc.isErr()) return rc;
    const Value input = getArgument(0);
    // The stored output, read without the lazy update of getValue(): compute
    // runs inside this node's own recompute.
    const Value& current = peekLastEvent().value;
    if (current.getDataType() == DT_UNDEF) {
        result = input;
        return XCode();
    }
    SYSEVENT_LOG(3, "[%s] Delaying %s by %llu ms", getName().c_str(), input.toString().c_str(),
                 static_cast<unsigned long long>(ms));
    delayValue(input, ms);
    result = current;
    return XCode();
}

void DELAY::delayValue(const Value& value, unsigned int ms) {
    Info* info;
    if (!m_freeList.empty()) {
        info = m_freeList.back();
        m_freeList.pop_back();
    } else {
        info = new Info(this);
        ++m_recordsMade;
    }
    info->value = value;
    info->pNext = nullptr;
    Info* const previousTail = m_pQueueTail;
    if (previousTail)
        previousTail->pNext = info;
    else
        m_pQueueHead = info;
    m_pQueueTail = info;
    ++m_queueLength;

    if (XCode rc = info->timer.start(ms); rc.isErr()) {
        SYSEVENT_LOG(3, "[%s] CANNOT DELAY VALUE %s: %s", getName().c_str(),
                     value.toString().c_str(), rc.toString().c_str());
        // Undo the append: the record was the tail.
        m_pQueueTail = previousTail;
        if (previousTail)
            previousTail->pNext = nullptr;
        else
            m_pQueueHead = nullptr;
        --m_queueLength;
        m_freeList.push_back(info);
    }
}

void DELAY::onDelayedValue(const Value& value) {
    setValue(value);
}

void DELAY::onTimeout() {
    // Every queued record has its timer armed, so an expiry finds the queue
    // non-empty; the check only guards against that invariant breaking.
    Info* info = m_pQueueHead;
    if (!info) return;
    m_pQueueHead = info->pNext;
    if (!m_pQueueHead) m_pQueueTail = nullptr;
    --m_queueLength;
    info->pNext = nullptr;
    // The record is back on the free list before the value goes out, so that
    // the propagation finds the queue and the list consistent.
    const Value value = info->value;
    m_freeList.push_back(info);
    onDelayedValue(value);
}

FunctionFactory::Factory<DELAY> s_functionFactoryDELAY(
    "DELAY", "expr,time", "Delays changes of the first argument by the specified time difference");

void DELAY::describeState(VXVector<FunctionState>& out) const {
    if (!m_pQueueHead) out.push_back(FunctionState("queue empty"));
    for (const Info* info = m_pQueueHead; info; info = info->pNext) {
        out.push_back(FunctionState("queued", info->value, true, info->timer.getDueTime()));
    }
}

}  // namespace VX::SysEvent
