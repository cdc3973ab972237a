// The typed accessors: which value kinds each out type accepts, that nothing
// is converted or overwritten on a refusal, and SET_VALUE's creation on the
// fly.
#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "observer/observer_test_support.h"
#include "sysevent/repository/typed_accessors.h"

namespace VX::SysEvent::testing {
namespace {

using TypedAccessors = ObserverTest;

// What is compared: a Clock by its time.
VX::Time key(const VX::Clock& c) {
    return c.toTime();
}
template <typename T>
const T& key(const T& x) {
    return x;
}

// Reads `row`'s name into `out` and checks the outcome: accepted, `out`
// holds `want`; refused, the generic code with "INVALID DATA TYPE" and `out`
// as it was.
template <typename T, typename W>
void expectRead(const char* name, T out, bool accepted, const W& want) {
    const T before = out;
    const XCode rc = GET_VALUE(name, out);
    EXPECT_EQ(rc.isSuccess(), accepted) << typeid(T).name();
    if (accepted) {
        EXPECT_TRUE(key(out) == key(want)) << typeid(T).name();
    } else {
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
        EXPECT_EQ(rc.getString(), "INVALID DATA TYPE");
        EXPECT_TRUE(key(out) == key(before)) << typeid(T).name() << ": out changed on failure";
    }
}

struct Row {
    const char* name;
    Value value;
    const char* accepts;  // the out types that take it: Bool, Uint, Double, Clock, Time, String
};

TEST_F(TypedAccessors, EachOutTypeAcceptsExactlyItsKinds) {
    const Row rows[] = {
        {"ta.bool", Value(true), "B"},
        {"ta.uint", Value(7ULL), "U"},  // no float
        {"ta.flp", Value(2.5), "D"},    // no integer
        {"ta.datetime", Value(VX::Time(1700000000, 250000000), DST_ABS_DATE_TIME), "CT"},
        {"ta.date", Value(VX::Time(1699920000, 0), DST_ABS_DATE), "CT"},
        {"ta.timeofday", Value(VX::Time(3600, 0), DST_ABS_TIME), "CT"},
        {"ta.duration", Value(VX::Time(90, 0), DST_REL_TIME), "T"},  // a Time, not a Clock
        {"ta.string", Value("text"), "S"},
        {"ta.error", Value(DST_ERR_NA), ""},
        {"ta.empty", Value(DST_EMPTY), ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(Repository::CREATE_CONSTANT(row.name, "", row.value).isSuccess());
        const std::string accepts = row.accepts;
        auto takes = [&](char type) { return accepts.find(type) != std::string::npos; };
        const Data& d = row.value.data;
        // The payload's boolean is read only where it is one: the scalar kinds
        // share one word, and a number's bytes are no valid bool.
        const bool b = takes('B') && d.boolean;
        expectRead(row.name, !b, takes('B'), b);
        expectRead(row.name, 424242ULL, takes('U'), d.uint);
        expectRead(row.name, -1.0, takes('D'), d.flp);
        expectRead(row.name, VX::Clock(VX::Time(12345, 0)), takes('C'), d.time);
        expectRead(row.name, VX::Time(12345, 0), takes('T'), d.time);
        expectRead(row.name, String("sentinel"), takes('S'), d.string);
        destroy(row.name);
    }
}

TEST_F(TypedAccessors, UnknownNameFailsWithTheRepositoryTextAndLeavesOutAlone) {
    unsigned long long n = 99;
    EXPECT_EQ(GET_VALUE("ta.nothing.here", n).getString(),
              "VARIABLE DOES NOT EXIST: ta.nothing.here");
    EXPECT_EQ(n, 99u);
}

TEST_F(TypedAccessors, SetValueCreatesAVariableOnTheFlyAndThenChangesIt) {
    ASSERT_TRUE(SET_VALUE("ta.fresh", 41).isSuccess());
    VXPPtr<IRead> object = readOf("ta.fresh");
    ASSERT_TRUE(object);
    EXPECT_EQ(object->getType(), "variable");
    Recorder r;
    Observer observer(r.direct());
    observer.addTo("ta.fresh", false);
    ASSERT_TRUE(SET_VALUE("ta.fresh", 42).isSuccess());
    unsigned long long n = 0;
    EXPECT_TRUE(GET_VALUE("ta.fresh", n).isSuccess());
    EXPECT_EQ(n, 42u);
    EXPECT_EQ(r.seen(), std::vector<Seen>{changed("ta.fresh", "42")});
    destroy("ta.fresh");
}

}  // namespace
}  // namespace VX::SysEvent::testing
