// DATE, TIME, DATETIME, EPOCH and the date-part family, evaluated from
// formulas.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "function_test_support.h"

namespace VX::SysEvent::FunctionTest {
namespace {

TEST(DateConstruction, FromPartsAndCalendarValues) {
    CHECK_ROWS({
        {"DATE(2021, 3, 7)", DateOf("2021-03-07")},
        {"DATE(2020, 2, 29)", DateOf("2020-02-29")},
        {"DATE(2021.0, 3, 7)", DateOf("2021-03-07")},
        {"DATE(1969, 12, 31)", DateOf("1969-12-31")},
        {"DATE(2021, 2, 29)", kNum},
        {"DATE(2021, 13, 1)", kNum},
        {"DATE(2021, 3, 0)", kNum},
        {"DATE(2040, 1, 1)", kNum},  // beyond the 32-bit seconds
        {"DATE(2021, 3, 7.5)", kNum},
        {"DATE('2021', 3, 7)", kVal},
        {"DATE(2021, true, 7)", kVal},
        {"TIME(9, 5, 0)", TimeOfDay("09:05:00")},
        {"TIME(23, 59, 59)", TimeOfDay("23:59:59")},
        {"TIME(24, 0, 0)", kNum},
        {"TIME(9, 60, 0)", kNum},
        {"TIME(9, 5, 0.5)", kNum},
        {"TIME(9, 5, 1s)", kVal},
        {"EPOCH()", DateTime("1970-01-01T00:00:00")},
        // From calendar values.
        {"DATE(2021-03-07T09:05:00)", DateOf("2021-03-07")},
        {"DATE(2021-03-07)", DateOf("2021-03-07")},
        {"DATE(09:05:00)", DateOf("1970-01-01")},
        {"TIME(2021-03-07T09:05:00)", TimeOfDay("09:05:00")},
        {"TIME(2021-03-07)", TimeOfDay("00:00:00")},
        {"DATE(5s)", kNum},
        {"TIME(5s)", kNum},
        {"DATE(5)", kVal},
        {"TIME('09:05:00')", kVal},
        {"DATETIME(2021-03-07, 09:05:00)", DateTime("2021-03-07T09:05:00")},
        {"DATETIME(2021-03-07T10:00:00, 08:00:00)", DateTime("2021-03-07T08:00:00")},
        {"DATETIME(2021-03-07T10:00:00, 2021-01-01T08:30:00)", DateTime("2021-03-07T08:30:00")},
        {"DATETIME(09:05:00, 2021-03-07)", kVal},
        {"DATETIME(2021-03-07, 2021-03-08)", kVal},
        {"DATETIME(2021-03-07, 5s)", kVal},
        {"DATETIME(1, 2)", kVal},
    });
}

TEST(DateConstruction, ArityIsCheckedByTheParser) {
    EXPECT_NE(PARSE_ERROR("DATE(2021, 3)")
                  .str()
                  .find("Invalid number of arguments: DATE("
                        "year,month,day)"),
              std::string::npos);
    EXPECT_NE(PARSE_ERROR("TIME(9, 5)").str().find("TIME(hour,minute,second)"), std::string::npos);
    EXPECT_NE(PARSE_ERROR("EPOCH(1)").str().find("EPOCH()"), std::string::npos);
    EXPECT_EQ(PARSE_ERROR("DATE(2021-03-07)"), "");
}

struct PartRow {
    const char* function;
    Value ofDateTime;   // 2021-03-07T09:05:00, a Sunday
    Value ofTimeOfDay;  // 09:05:00 on Thursday 1970-01-01
    Value ofDuration;   // 1d2h3m4s500ms
};

TEST(DateParts, OfCalendarValuesAndDurations) {
    const PartRow rows[] = {
        {"SECOND", U(0), U(0), U(4)},     {"MINUTE", U(5), U(5), U(3)},
        {"HOUR", U(9), U(9), U(2)},       {"DAY", U(7), U(1), U(1)},
        {"WEEKDAY", U(1), U(5), kNum},    {"MONTH", U(3), U(1), kNum},
        {"YEAR", U(2021), U(1970), kNum},
    };
    for (const PartRow& row : rows) {
        const std::string f = row.function;
        EXPECT_TRUE(SAME(EVAL((f + "(2021-03-07T09:05:00)").c_str()), row.ofDateTime)) << f;
        EXPECT_TRUE(SAME(EVAL((f + "(09:05:00)").c_str()), row.ofTimeOfDay)) << f;
        EXPECT_TRUE(SAME(EVAL((f + "(1d2h3m4s500ms)").c_str()), row.ofDuration)) << f;
        EXPECT_TRUE(SAME(EVAL((f + "(5)").c_str()), kVal)) << f;
        EXPECT_TRUE(SAME(EVAL((f + "('2021-03-07')").c_str()), kVal)) << f;
    }
}

TEST(DateParts, MoreFieldsAndDurationsOfTwoToThe31Seconds) {
    const unsigned long long s = 0xFFFFFFFF80000000ULL;
    CHECK_ROWS({
        {"SECOND(2021-12-31T23:59:58)", U(58)},
        {"WEEKDAY(2021-03-13)", U(7)},  // a Saturday
        {"MONTH(2021-12-31)", U(12)},
        {"DAY(2020-02-29)", U(29)},
        {"HOUR(2020-02-29)", U(0)},
        {"YEAR(1969-12-31T23:59:59)", U(1969)},
        {"WEEKDAY(EPOCH())", U(5)},
        {"DAY(100d)", U(100)},
        {"HOUR(25h)", U(1)},
        {"MINUTE(0s)", U(0)},
        // 2^31 s wraps to a negative count; widened with its sign and divided
        // as unsigned, it gives large parts rather than an error.
        {"DAY(PRODUCT(2147483648, 1s))", U(s / 86400)},
        {"SECOND(PRODUCT(2147483648, 1s))", U(s % 60)},
    });
}

}  // namespace
}  // namespace VX::SysEvent::FunctionTest
