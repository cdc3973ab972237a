// PRODUCT, with its factory object.
#include "sysevent/functions/product.h"

#include <cstdint>
#include <string>

#include "sysevent/functions/function_support.h"
#include "sysevent/graph/function_factory.h"

namespace VX::SysEvent {

namespace {

XCode multiplyNumbers(Value& acc, const Value& arg) {
    Value b = arg;
    if (XCode rc = Value::NORMALIZE_NUMBERS(acc, b); rc.isErr()) return rc;
    if (acc.subtype == DST_UINT) {
        acc.data.uint *= b.data.uint;  // wraps modulo 2^64 by design
    } else {
        acc = foldedFloat(acc.data.flp * b.data.flp);
    }
    return XCode();
}

// Only the low 32 bits of a factor scale a duration.
uint32_t durationFactor(unsigned long long n) {
    return static_cast<uint32_t>(n);
}

XCode scaleDuration(Value& acc, const Value& arg) {
    if (acc.subtype != DST_REL_TIME) return failWith(DST_ERR_NUM);
    if (XCode rc = requireNumber(arg); rc.isErr()) return rc;
    Value n = arg;
    if (XCode rc = n.toUIntStrict(); rc.isErr()) return rc;
    acc.data.time *= durationFactor(n.data.uint);
    return XCode();
}

XCode repeatText(Value& acc, const Value& arg) {
    if (XCode rc = requireNumber(arg); rc.isErr()) return rc;
    Value n = arg;
    if (XCode rc = n.toUIntStrict(); rc.isErr()) return rc;
    const std::string& text = acc.data.string.str();
    const unsigned long long count = n.data.uint;
    if (!text.empty() && count > PRODUCT::MAX_REPEATED_TEXT_LENGTH / text.size()) {
        return failWith(DST_ERR_NUM);
    }
    std::string repeated;
    if (!text.empty()) {
        repeated.reserve(text.size() * count);
        for (unsigned long long i = 0; i < count; ++i) repeated += text;
    }
    acc = Value(String(std::move(repeated)));
    return XCode();
}

XCode multiplyInto(Value& acc, const Value& arg) {
    switch (acc.getDataType()) {
        case DT_NUMBER:
            switch (arg.getDataType()) {
                case DT_NUMBER:
                    return multiplyNumbers(acc, arg);
                case DT_TIME: {
                    if (arg.subtype != DST_REL_TIME) return failWith(DST_ERR_NUM);
                    if (XCode rc = acc.toUIntStrict(); rc.isErr()) return rc;
                    Value scaled(arg.data.time, DST_REL_TIME);
                    scaled.data.time *= durationFactor(acc.data.uint);
                    acc = scaled;
                    return XCode();
                }
                default:
                    return failWith(DST_ERR_VAL);
            }
        case DT_TIME:
            return scaleDuration(acc, arg);
        case DT_STRING:
            return repeatText(acc, arg);
        default:
            return failWith(DST_ERR_VAL);
    }
}

}  // namespace

XCode PRODUCT::compute(Value& result) {
    return accumulate(*this, result, multiplyInto);
}

FunctionFactory::Factory<PRODUCT> s_functionFactoryPRODUCT(
    "PRODUCT", "[factor]*",
    "Computes the product of number arguments or repeats a string multiple times");

}  // namespace VX::SysEvent
