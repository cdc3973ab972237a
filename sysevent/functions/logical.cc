// AND, OR, XOR, NOT and IF, with their factory objects. AND, OR and XOR share
// one accumulation over the arguments' truth values.
#include "sysevent/functions/logical.h"

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

enum class Junction { All, Any, Odd };

XCode combineTruths(const FunctionNode& node, Junction junction, Value& result) {
    const unsigned n = node.getChildCount();
    if (n == 0) {
        result = Value(DST_ERR_VAL);
        return XCode();
    }
    bool acc = junction == Junction::All;
    for (unsigned i = 0; i < n; ++i) {
        Value arg = node.getArgument(i);
        if (XCode rc = arg.toBoolean(); rc.isErr()) return rc;
        const bool b = arg.data.boolean;
        switch (junction) {
            case Junction::All:
                acc = acc && b;
                break;
            case Junction::Any:
                acc = acc || b;
                break;
            case Junction::Odd:
                acc = acc != b;
                break;
        }
    }
    result = Value(acc);
    return XCode();
}

}  // namespace

XCode AND::compute(Value& result) {
    return combineTruths(*this, Junction::All, result);
}

XCode OR::compute(Value& result) {
    return combineTruths(*this, Junction::Any, result);
}

XCode XOR::compute(Value& result) {
    return combineTruths(*this, Junction::Odd, result);
}

XCode NOT::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode NOT::compute(Value& result) {
    Value arg = getArgument(0);
    if (XCode rc = arg.toBoolean(); rc.isErr()) return rc;
    result = Value(!arg.data.boolean);
    return XCode();
}

XCode IF::verifyArguments() {
    return XCode::testExpression(getChildCount() == 3);
}

XCode IF::compute(Value& result) {
    Value condition = getArgument(0);
    if (XCode rc = condition.toBoolean(); rc.isErr()) return rc;
    result = getArgument(condition.data.boolean ? 1 : 2);
    return XCode();
}

FunctionFactory::Factory<AND> s_functionFactoryAND(
    "AND", "[bool]*", "Returns true if all of its arguments evaluate to true");
FunctionFactory::Factory<OR> s_functionFactoryOR(
    "OR", "[bool]*", "Returns true if at least one its arguments evaluate to true");
FunctionFactory::Factory<XOR> s_functionFactoryXOR(
    "XOR", "[bool]*", "Returns true if an odd number of arguments evaluate to true");
FunctionFactory::Factory<NOT> s_functionFactoryNOT(
    "NOT", "bool",
    "Returns true if the argument evaluates to false, returns false if it evaluates to true");
FunctionFactory::Factory<IF> s_functionFactoryIF(
    "IF", "condition,true-expr,false-expr",
    "Returns true-expr if the condition evaluates to true, else returns false-expr");

}  // namespace VX::SysEvent
