// The typed accessors: which value kinds each out type accepts, that nothing
// is converted or overwritten on a refusal, and SET_VALUE's creation on the
// fly.
#include <gtest/gtest.h>

#include <functional>

#include "observer/observer_test_support.h"
#include "sysevent/repository/typed_accessors.h"

namespace VX::SysEvent::testing {
namespace {

using TypedAccessors = ObserverTest;

// One published constant per value kind.
struct Kind {
    const char* name;
    Value value;
};

// Reads `name` into a sentinel of each out type; true when the read was
// accepted. A refused read must fail with "INVALID DATA TYPE" and leave the
// sentinel as it was.
struct OutType {
    const char* label;
    std::function<bool(const char* name, const Value& expected)> read;
};

template <typename T>
bool same(const T& a, const T& b) {
    return a == b;
}
bool same(const VX::Clock& a, const VX::Clock& b) {
    return a.toTime() == b.toTime();
}

template <typename T>
bool readInto(const char* name, T sentinel, std::function<bool(const T&)> holds) {
    T out = sentinel;
    XCode rc = GET_VALUE(name, out);
    if (rc.isErr()) {
        EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE) << name;
        EXPECT_EQ(rc.getString(), "INVALID DATA TYPE") << name;
        EXPECT_TRUE(same(out, sentinel)) << name << ": out changed on failure";
        return false;
    }
    EXPECT_TRUE(holds(out)) << name << ": wrong payload";
    return true;
}

TEST_F(TypedAccessors, EachOutTypeAcceptsExactlyItsKinds) {
    const VX::Time t(1700000000, 250000000);
    const Kind kinds[] = {
        {"ta.bool", Value(true)},
        {"ta.uint", Value(7ULL)},
        {"ta.flp", Value(2.5)},
        {"ta.datetime", Value(t, DST_ABS_DATE_TIME)},
        {"ta.date", Value(VX::Time(1699920000, 0), DST_ABS_DATE)},
        {"ta.timeofday", Value(VX::Time(3600, 0), DST_ABS_TIME)},
        {"ta.duration", Value(VX::Time(90, 0), DST_REL_TIME)},
        {"ta.string", Value("text")},
        {"ta.error", Value(DST_ERR_NA)},
        {"ta.empty", Value(DST_EMPTY)},
    };
    for (const Kind& k : kinds) {
        XCode rc = Repository::CREATE_CONSTANT(k.name, "", k.value);
        ASSERT_TRUE(rc.isSuccess()) << k.name << " " << rc.toString().str();
    }

    const OutType outs[] = {
        {"bool",
         [](const char* n, const Value& v) {
             return readInto<bool>(n, !v.data.boolean,
                                   [&](const bool& b) { return b == v.data.boolean; });
         }},
        {"uint",
         [](const char* n, const Value& v) {
             return readInto<unsigned long long>(
                 n, 424242, [&](const unsigned long long& u) { return u == v.data.uint; });
         }},
        {"double",
         [](const char* n, const Value& v) {
             return readInto<double>(n, -1.0, [&](const double& d) { return d == v.data.flp; });
         }},
        {"Clock",
         [](const char* n, const Value& v) {
             return readInto<VX::Clock>(n, VX::Clock(VX::Time(12345, 0)), [&](const VX::Clock& c) {
                 return c.toTime() == v.data.time;
             });
         }},
        {"Time",
         [](const char* n, const Value& v) {
             return readInto<VX::Time>(n, VX::Time(12345, 0),
                                       [&](const VX::Time& x) { return x == v.data.time; });
         }},
        {"String",
         [](const char* n, const Value& v) {
             return readInto<String>(n, String("sentinel"),
                                     [&](const String& s) { return s == v.data.string; });
         }},
    };
    // Rows: kinds in the order above; columns: bool, uint, double, Clock, Time,
    // String.
    const bool accepted[][6] = {
        {true, false, false, false, false, false},   // bool
        {false, true, false, false, false, false},   // uint: no float, no time
        {false, false, true, false, false, false},   // flp: no integer
        {false, false, false, true, true, false},    // date-time
        {false, false, false, true, true, false},    // date
        {false, false, false, true, true, false},    // time of day
        {false, false, false, false, true, false},   // duration: a Time, not a Clock
        {false, false, false, false, false, true},   // string
        {false, false, false, false, false, false},  // "#N/A!"
        {false, false, false, false, false, false},  // empty
    };
    for (size_t k = 0; k < std::size(kinds); ++k) {
        for (size_t o = 0; o < std::size(outs); ++o) {
            EXPECT_EQ(outs[o].read(kinds[k].name, kinds[k].value), accepted[k][o])
                << kinds[k].name << " into " << outs[o].label;
        }
    }
    for (const Kind& k : kinds) destroy(k.name);
}

TEST_F(TypedAccessors, UnknownNameFailsWithTheRepositoryTextAndLeavesOutAlone) {
    unsigned long long n = 99;
    XCode rc = GET_VALUE("ta.nothing.here", n);
    EXPECT_EQ(rc.getString(), "VARIABLE DOES NOT EXIST: ta.nothing.here");
    EXPECT_EQ(n, 99u);
    String s = "kept";
    EXPECT_TRUE(GET_VALUE("ta.nothing.here", s).isErr());
    EXPECT_EQ(s, "kept");
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
