// EQ, NEQ, LT, LE, GT and GE, with their factory objects.
#include "sysevent/functions/comparison.h"

#include <cstring>

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

// Copies of both arguments, numbers brought to one kind (which cannot fail
// for two numbers), compared with value equality.
bool argumentsEqual(const FunctionNode& node) {
    Value a = node.getArgument(0);
    Value b = node.getArgument(1);
    if (a.getDataType() == DT_NUMBER && b.getDataType() == DT_NUMBER) {
        (void)Value::NORMALIZE_NUMBERS(a, b);
    }
    return a == b;
}

// The two flags every ordering is derived from: less (a before b) and equal.
XCode order(Value a, Value b, bool& less, bool& equal) {
    const DataType type = a.getDataType();
    if (type != b.getDataType()) return failWith(DST_ERR_VAL);
    switch (type) {
        case DT_EMPTY:
            less = false;
            equal = true;
            return XCode();
        case DT_BOOL:
            less = !a.data.boolean && b.data.boolean;
            equal = a.data.boolean == b.data.boolean;
            return XCode();
        case DT_NUMBER:
            if (XCode rc = Value::NORMALIZE_NUMBERS(a, b); rc.isErr()) return rc;
            if (a.subtype == DST_UINT) {
                less = a.data.uint < b.data.uint;
                equal = a.data.uint == b.data.uint;
            } else {
                // Exact, no tolerance; with a NaN both flags are false.
                less = a.data.flp < b.data.flp;
                equal = a.data.flp == b.data.flp;
            }
            return XCode();
        case DT_TIME: {
            if (a.subtype != b.subtype) return failWith(DST_ERR_VAL);
            const VX::Time& ta = a.data.time;
            const VX::Time& tb = b.data.time;
            less = ta.getSeconds() < tb.getSeconds() || (ta.getSeconds() == tb.getSeconds() &&
                                                         ta.getNanoseconds() < tb.getNanoseconds());
            equal =
                ta.getSeconds() == tb.getSeconds() && ta.getNanoseconds() == tb.getNanoseconds();
            return XCode();
        }
        case DT_STRING: {
            const String& sa = a.data.string;
            const String& sb = b.data.string;
            less = std::strcmp(sa.c_str(), sb.c_str()) < 0;
            equal =
                sa.length() == sb.length() && std::memcmp(sa.data(), sb.data(), sa.length()) == 0;
            return XCode();
        }
        default:
            // Errors and undefined values are screened by the graph.
            return failWith(DST_ERR_VAL);
    }
}

}  // namespace

XCode EQ::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode EQ::compute(Value& result) {
    result = Value(argumentsEqual(*this));
    return XCode();
}

XCode NEQ::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode NEQ::compute(Value& result) {
    result = Value(!argumentsEqual(*this));
    return XCode();
}

XCode OrderingFunctionNode::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode OrderingFunctionNode::compute(Value& result) {
    bool less = false;
    bool equal = false;
    if (XCode rc = order(getArgument(0), getArgument(1), less, equal); rc.isErr()) return rc;
    bool holds = false;
    switch (m_relation) {
        case Relation::Less:
            holds = less && !equal;
            break;
        case Relation::LessOrEqual:
            holds = less || equal;
            break;
        case Relation::Greater:
            holds = !less && !equal;
            break;
        case Relation::GreaterOrEqual:
            holds = !less || equal;
            break;
    }
    result = Value(holds);
    return XCode();
}

FunctionFactory::Factory<EQ> s_functionFactoryEQ("EQ", "param1,param2",
                                                 "Returns true if the two arguments are equal");
FunctionFactory::Factory<NEQ> s_functionFactoryNEQ(
    "NEQ", "param1,param2", "Returns true if the two arguments are not equal");
FunctionFactory::Factory<LT> s_functionFactoryLT(
    "LT", "param1,param2", "Returns true if the first argument is less than the second");
FunctionFactory::Factory<LE> s_functionFactoryLE(
    "LE", "param1,param2",
    "Returns true if the first argument is less than or equal to the second");
FunctionFactory::Factory<GT> s_functionFactoryGT(
    "GT", "param1,param2", "Returns true if the first argument is greater than the second");
FunctionFactory::Factory<GE> s_functionFactoryGE(
    "GE", "param1,param2",
    "Returns true if the first argument is greater than or equal to the second");

}  // namespace VX::SysEvent
