// Test support for the function library (see function_test_support.h).
#include "function_test_support.h"

#include <cmath>
#include <cstdio>

#include "host/runtime/clock.h"
#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/node.h"
#include "sysevent/language/parser.h"

namespace VX::SysEvent {

void PrintTo(const Value& v, std::ostream* os) {
    *os << "[" << static_cast<int>(v.subtype) << "] ";
    if (v.subtype == DST_FLP) {
        char text[40];
        std::snprintf(text, sizeof text, "%.17g", v.data.flp);
        *os << text;
    } else {
        *os << v.toString().str();
    }
}

}  // namespace VX::SysEvent

namespace VX::SysEvent::FunctionTest {

namespace {

Value calendarValue(const String& text, DataSubType kind) {
    VX::Clock clock;
    XCode rc = clock.set(text, 0);
    EXPECT_TRUE(rc.isSuccess()) << text.str();
    return Value(clock, kind);
}

}  // namespace

Value Duration(int32_t seconds, int32_t nanoseconds) {
    return Value(VX::Time(seconds, nanoseconds), DST_REL_TIME);
}

Value DateTime(const char* text) {
    return calendarValue(text, DST_ABS_DATE_TIME);
}

Value DateOf(const char* text) {
    return calendarValue(String(text) + "T00:00:00", DST_ABS_DATE);
}

Value TimeOfDay(const char* text) {
    return calendarValue(String("1970-01-01T") + text, DST_ABS_TIME);
}

Value EVAL(const char* formula) {
    VXAutoLock lock(LOCK());
    Parser parser(nullptr);
    XCode rc = parser.parse(formula);
    if (rc.isErr() || parser.getRoots().size() != 1) {
        ADD_FAILURE() << "cannot parse " << formula << ": " << rc.toString().str();
        return Value();
    }
    return parser.getRoots()[0]->getValue();
}

String PARSE_ERROR(const char* formula) {
    VXAutoLock lock(LOCK());
    Parser parser(nullptr);
    XCode rc = parser.parse(formula);
    return rc.isErr() ? rc.getString() : String();
}

Value APPLY(const char* name, const std::vector<Value>& args) {
    VXAutoLock lock(LOCK());
    VXLWPtr<FunctionNode> node = FunctionFactory::CREATE(name);
    if (!node) {
        ADD_FAILURE() << "no function " << name;
        return Value();
    }
    for (const Value& arg : args) {
        XCode rc = node->addArgument(new Node("literal", arg));
        EXPECT_TRUE(rc.isSuccess()) << rc.toString().str();
    }
    return node->getValue();
}

::testing::AssertionResult SAME(const Value& actual, const Value& expected) {
    const bool bothNaN = actual.subtype == DST_FLP && expected.subtype == DST_FLP &&
                         std::isnan(actual.data.flp) && std::isnan(expected.data.flp);
    if (actual.subtype == expected.subtype && (bothNaN || actual == expected)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "got " << ::testing::PrintToString(actual)
                                         << ", expected " << ::testing::PrintToString(expected);
}

void CHECK_ROWS(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_TRUE(SAME(EVAL(row.formula), row.expected)) << row.formula;
    }
}

}  // namespace VX::SysEvent::FunctionTest
