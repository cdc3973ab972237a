// NonTemporalFunctionNode: functions that compute a value only; the graph
// gives their result the span of their arguments' times.
#include "sysevent/graph/function_node.h"

namespace VX::SysEvent {

bool NonTemporalFunctionNode::handlesTimeManually() const {
    return false;
}

XCode NonTemporalFunctionNode::compute(Event& result) {
    return compute(result.value);
}

}  // namespace VX::SysEvent
