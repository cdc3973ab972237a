// BITAND, BITOR, BITXOR, BITNOT, BITLSHIFT and BITRSHIFT, with their factory
// objects.
#include "sysevent/functions/bit.h"

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

XCode BitwiseFunctionNode::compute(Value& result) {
    const Operation operation = m_operation;
    return accumulate(*this, result, [operation](Value& acc, const Value& arg) -> XCode {
        if (acc.getDataType() != DT_NUMBER) return failWith(DST_ERR_VAL);
        if (XCode rc = requireNumber(arg); rc.isErr()) return rc;
        if (XCode rc = acc.toUIntStrict(); rc.isErr()) return rc;
        Value b = arg;
        if (XCode rc = b.toUIntStrict(); rc.isErr()) return rc;
        switch (operation) {
            case Operation::And:
                acc.data.uint &= b.data.uint;
                break;
            case Operation::Or:
                acc.data.uint |= b.data.uint;
                break;
            case Operation::Xor:
                acc.data.uint ^= b.data.uint;
                break;
        }
        return XCode();
    });
}

XCode BITNOT::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode BITNOT::compute(Value& result) {
    Value x = getArgument(0);
    if (XCode rc = requireNumber(x); rc.isErr()) return rc;
    if (XCode rc = x.toUInt(); rc.isErr()) return rc;
    result = Value(~x.data.uint);
    return XCode();
}

XCode ShiftFunctionNode::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode ShiftFunctionNode::compute(Value& result) {
    Value x = getArgument(0);
    Value bits = getArgument(1);
    if (XCode rc = requireNumber(x); rc.isErr()) return rc;
    if (XCode rc = requireNumber(bits); rc.isErr()) return rc;
    if (XCode rc = x.toUIntStrict(); rc.isErr()) return rc;
    if (XCode rc = bits.toUIntStrict(); rc.isErr()) return rc;
    const unsigned long long count = bits.data.uint;
    unsigned long long shifted = 0;
    if (count < 64) shifted = m_left ? x.data.uint << count : x.data.uint >> count;
    result = Value(shifted);
    return XCode();
}

FunctionFactory::Factory<BITAND> s_functionFactoryBITAND(
    "BITAND", "[number]*",
    "Performs the logical AND operation on the corresponding bits of all arguments");
FunctionFactory::Factory<BITOR> s_functionFactoryBITOR(
    "BITOR", "[number]",
    "Performs the logical OR operation on the corresponding bits of all arguments");
FunctionFactory::Factory<BITXOR> s_functionFactoryBITXOR(
    "BITXOR", "[number]*",
    "Performs the logical XOR operation on the corresponding bits of all arguments");
FunctionFactory::Factory<BITNOT> s_functionFactoryBITNOT(
    "BITNOT", "number", "Returns the binary complement of the positive integral number");
FunctionFactory::Factory<BITLSHIFT> s_functionFactoryBITLSHIFT(
    "BITLSHIFT", "number,bits", "Returns the positive integral number shifted left by shift bits");
FunctionFactory::Factory<BITRSHIFT> s_functionFactoryBITRSHIFT(
    "BITRSHIFT", "number,bits", "Returns the positive integral number shifted right by shift bits");

}  // namespace VX::SysEvent
