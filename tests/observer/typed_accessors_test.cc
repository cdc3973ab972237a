// The typed accessors: which value kinds each out type accepts, that nothing
// is converted or overwritten on a refusal, and SET_VALUE's creation on the
// fly.
#include <gtest/gtest.h>

#include "observer/observer_test_support.h"
#include "sysevent/repository/typed_accessors.h"

namespace VX::SysEvent::testing {
namespace {

using TypedAccessors = ObserverTest;

template <typename T>
bool same(const T& a, const T& b) {
    return a == b;
}
bool same(const VX::Clock& a, const VX::Clock& b) {
    return a.toTime() == b.toTime();
}

// True when `name` reads into `out`; a refusal must be the generic code with
// "INVALID DATA TYPE" and leave `out` as it was.
template <typename T>
bool reads(const char* name, T& out) {
    const T before = out;
    XCode rc = GET_VALUE(name, out);
    if (rc.isSuccess()) return true;
    EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE) << name;
    EXPECT_EQ(rc.getString(), "INVALID DATA TYPE") << name;
    EXPECT_TRUE(same(out, before)) << name << ": out changed on failure";
    return false;
}

struct Row {
    const char* name;
    Value value;
    bool asBool, asUInt, asDouble, asClock, asTime, asString;
};

TEST_F(TypedAccessors, EachOutTypeAcceptsExactlyItsKinds) {
    const Row rows[] = {
        {"ta.bool", Value(true), true, false, false, false, false, false},
        {"ta.uint", Value(7ULL), false, true, false, false, false, false},  // no float
        {"ta.flp", Value(2.5), false, false, true, false, false, false},    // no integer
        {"ta.datetime", Value(VX::Time(1700000000, 250000000), DST_ABS_DATE_TIME), false, false,
         false, true, true, false},
        {"ta.date", Value(VX::Time(1699920000, 0), DST_ABS_DATE), false, false, false, true, true,
         false},
        {"ta.timeofday", Value(VX::Time(3600, 0), DST_ABS_TIME), false, false, false, true, true,
         false},
        // A duration is a Time, not a Clock.
        {"ta.duration", Value(VX::Time(90, 0), DST_REL_TIME), false, false, false, false, true,
         false},
        {"ta.string", Value("text"), false, false, false, false, false, true},
        {"ta.error", Value(DST_ERR_NA), false, false, false, false, false, false},
        {"ta.empty", Value(DST_EMPTY), false, false, false, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(Repository::CREATE_CONSTANT(row.name, "", row.value).isSuccess());
        bool b = !row.value.data.boolean;
        unsigned long long u = 424242;
        double d = -1.0;
        VX::Clock c(VX::Time(12345, 0));
        VX::Time t(12345, 0);
        String s = "sentinel";
        EXPECT_EQ(reads(row.name, b), row.asBool);
        EXPECT_EQ(reads(row.name, u), row.asUInt);
        EXPECT_EQ(reads(row.name, d), row.asDouble);
        EXPECT_EQ(reads(row.name, c), row.asClock);
        EXPECT_EQ(reads(row.name, t), row.asTime);
        EXPECT_EQ(reads(row.name, s), row.asString);
        if (row.asBool) {
            EXPECT_EQ(b, row.value.data.boolean);
        }
        if (row.asUInt) {
            EXPECT_EQ(u, row.value.data.uint);
        }
        if (row.asDouble) {
            EXPECT_EQ(d, row.value.data.flp);
        }
        if (row.asClock) {
            EXPECT_TRUE(c.toTime() == row.value.data.time);
        }
        if (row.asTime) {
            EXPECT_TRUE(t == row.value.data.time);
        }
        if (row.asString) {
            EXPECT_EQ(s, row.value.data.string);
        }
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
    EXPECT_EQ(object->getDescription(), "");
    object = nullptr;

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
