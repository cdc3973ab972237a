// DIV, QUOTIENT and MOD, with their factory objects.
#include "sysevent/functions/division.h"

#include <cmath>
#include <cstdint>

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

// The float quotient of two numbers (already checked to be numbers); fails
// with "#DIV/0!" when it is not finite.
XCode floatQuotient(Value a, Value b, double& q) {
    if (XCode rc = a.toFloat(); rc.isErr()) return rc;
    if (XCode rc = b.toFloat(); rc.isErr()) return rc;
    q = a.data.flp / b.data.flp;
    if (!std::isfinite(q)) return failWith(DST_ERR_DIV0);
    return XCode();
}

}  // namespace

XCode DIV::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode DIV::compute(Value& result) {
    const Value& a = getArgument(0);
    Value b = getArgument(1);
    switch (a.getDataType()) {
        case DT_NUMBER: {
            if (XCode rc = requireNumber(b); rc.isErr()) return rc;
            double q = 0.0;
            if (XCode rc = floatQuotient(a, b, q); rc.isErr()) return rc;
            result = foldedFloat(q);
            return XCode();
        }
        case DT_TIME: {
            if (a.subtype != DST_REL_TIME) return failWith(DST_ERR_NUM);
            if (XCode rc = requireNumber(b); rc.isErr()) return rc;
            if (XCode rc = b.toUIntStrict(); rc.isErr()) return rc;
            // Only the low 32 bits of the divisor divide a duration.
            const uint32_t n = static_cast<uint32_t>(b.data.uint);
            if (n == 0) return failWith(DST_ERR_DIV0);
            Value r = a;
            r.data.time /= n;
            result = r;
            return XCode();
        }
        default:
            return failWith(DST_ERR_VAL);
    }
}

XCode QUOTIENT::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode QUOTIENT::compute(Value& result) {
    const Value& a = getArgument(0);
    const Value& b = getArgument(1);
    if (XCode rc = requireNumber(a); rc.isErr()) return rc;
    if (XCode rc = requireNumber(b); rc.isErr()) return rc;
    double q = 0.0;
    if (XCode rc = floatQuotient(a, b, q); rc.isErr()) return rc;
    double whole = 0.0;
    (void)std::modf(q, &whole);
    result = foldedFloat(whole);
    return XCode();
}

XCode MOD::verifyArguments() {
    return XCode::testExpression(getChildCount() == 2);
}

XCode MOD::compute(Value& result) {
    Value a = getArgument(0);
    Value b = getArgument(1);
    if (XCode rc = requireNumber(a); rc.isErr()) return rc;
    if (XCode rc = requireNumber(b); rc.isErr()) return rc;
    if (XCode rc = a.toUIntStrict(); rc.isErr()) return rc;
    if (XCode rc = b.toUIntStrict(); rc.isErr()) return rc;
    if (b.data.uint == 0) return failWith(DST_ERR_DIV0);
    result = Value(a.data.uint % b.data.uint);
    return XCode();
}

FunctionFactory::Factory<DIV> s_functionFactoryDIV("DIV", "dividend,divisor",
                                                   "Divides the dividend by the divisor");
FunctionFactory::Factory<QUOTIENT> s_functionFactoryQUOTIENT(
    "QUOTIENT", "numerator,denominator", "Returns the integral part of the division");
FunctionFactory::Factory<MOD> s_functionFactoryMOD("MOD", "dividend,divisor",
                                                   "Returns the remainder from integer division");

}  // namespace VX::SysEvent
