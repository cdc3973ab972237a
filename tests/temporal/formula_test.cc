// The main sequences of the timer-driven functions and WITHIN, written as
// formulas and run through the parser. Parsed
// nodes are shared and kept for the life of the process, so every test binds
// its names to fresh leaves under a name prefix of its own, runs each timer
// to its end, and leaves NOW and TODAY to the tests that build their nodes
// directly (a parsed NOW() would keep its tick for good).
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "sysevent/language/name_resolver.h"
#include "sysevent/language/parser.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using C = Watch::Change;

// Names of one test, each bound to a leaf of its own.
class Names : public NameResolver {
public:
    Names() : m_prefix(String::Formatted("formula%u.", ++s_tests)) {}

    // The leaf named `name` (made with `initial` on first use).
    Node* operator()(const char* name, const Value& initial = Value(0ULL)) {
        VXLWPtr<Node>& node = m_nodes[name];
        if (!node) node = leaf(initial, (m_prefix + name).c_str());
        return node.get();
    }
    XCode resolve(const String& name, VXVector<VXLWPtr<Node>>& nodes) override {
        nodes.clear();
        auto it = m_nodes.find(name.str());
        if (it == m_nodes.end()) return XCode::Failure("VARIABLE DOES NOT EXIST: " + name);
        nodes.push_back(it->second);
        return XCode();
    }

private:
    static inline unsigned s_tests = 0;
    String m_prefix;
    std::map<std::string, VXLWPtr<Node>> m_nodes;
};

class Formula : public TemporalTest {
protected:
    // The one root of `text`, or null after a failed expectation.
    VXLWPtr<Node> parse(const char* text) {
        Parser parser(&names);
        const XCode rc = parser.parse(text);
        EXPECT_TRUE(rc.isSuccess()) << text << ": " << rc.toString().c_str();
        if (rc.isErr() || parser.getRoots().size() != 1) return VXLWPtr<Node>();
        return parser.getRoots()[0];
    }
    // The parse error of `text`.
    String error(const char* text) {
        Parser parser(&names);
        const XCode rc = parser.parse(text);
        EXPECT_TRUE(rc.isErr()) << text;
        return rc.getString();
    }

    Names names;
};

TEST_F(Formula, DebounceHoldsBackAllButTheLastChange) {
    Node* x = names("x", num(1));
    VXLWPtr<Node> e = parse("DEBOUNCE(x, 2s) * 10");
    ASSERT_TRUE(e);
    Watch w(e.get());
    EXPECT_EQ(w.value(), num(10));
    advanceTo(500);
    x->setValue(num(2));
    advanceTo(1000);
    x->setValue(num(3));
    advanceTo(10000);
    EXPECT_EQ(w.changes, (std::vector<C>{{3000, num(30)}}));
}

TEST_F(Formula, DebounceIncHoldsRisesAndLetsFallsThrough) {
    Node* x = names("x", num(5));
    VXLWPtr<Node> e = parse("DEBOUNCEINC(x, 1s500ms)");
    ASSERT_TRUE(e);
    Watch w(e.get());
    x->setValue(num(9));  // a rise: held back
    advanceTo(100);
    x->setValue(num(8));  // still above 5: held, timed afresh
    advanceTo(1000);
    x->setValue(num(3));  // a fall: through at once, the 8 is dropped
    advanceTo(1200);
    x->setValue(num(4));  // a rise again
    advanceTo(10000);
    EXPECT_EQ(w.changes, (std::vector<C>{{1000, num(3)}, {2700, num(4)}}));
}

TEST_F(Formula, DebounceIfFollowsItsCondition) {
    Node* x = names("x", num(1));
    Node* busy = names("busy", truth(true));
    VXLWPtr<Node> e = parse("DEBOUNCEIF(x, 2s, busy)");
    ASSERT_TRUE(e);
    Watch w(e.get());
    x->setValue(num(2));
    advanceTo(700);
    busy->setValue(truth(false));
    advanceTo(10000);
    EXPECT_EQ(w.changes, (std::vector<C>{{700, num(2)}}));
}

TEST_F(Formula, DelayReplaysEveryChange) {
    Node* x = names("x", num(0));
    VXLWPtr<Node> e = parse("DELAY(x, 2s)");
    ASSERT_TRUE(e);
    Watch w(e.get());
    x->setValue(num(1));
    advanceTo(1000);
    x->setValue(num(2));
    advanceTo(10000);
    EXPECT_EQ(w.changes, (std::vector<C>{{2000, num(1)}, {3000, num(2)}}));
}

TEST_F(Formula, StableIsFalseAfterEveryChangeAndTrueOneDelayAfterTheLast) {
    Node* x = names("x", num(1));
    VXLWPtr<Node> e = parse("STABLE(x, 5s)");
    ASSERT_TRUE(e);
    Watch w(e.get());
    EXPECT_EQ(w.value(), truth(false));
    advanceTo(6000);
    x->setValue(num(2));
    advanceTo(8000);
    x->setValue(num(3));
    advanceTo(20000);
    EXPECT_EQ(w.changes,
              (std::vector<C>{{5000, truth(true)}, {6000, truth(false)}, {13000, truth(true)}}));
}

TEST_F(Formula, DelayArgumentsOfTheWrongKind) {
    names("x", num(1));
    const struct {
        const char* text;
        DataSubType result;
    } rows[] = {
        {"DEBOUNCE(x, 5)", DST_ERR_VAL},
        {"DELAY(x, 'soon')", DST_ERR_VAL},
        {"STABLE(x, 2024-01-15)", DST_ERR_NUM},
        {"DEBOUNCEINC(x, 2024-01-15T08:30:00)", DST_ERR_NUM},
        {"DEBOUNCEDEC(x, 08:30:00)", DST_ERR_NUM},
        {"WITHIN(x, 5)", DST_ERR_VAL},
        {"WITHIN(x, 08:30:00)", DST_ERR_NUM},
    };
    for (const auto& row : rows) {
        VXLWPtr<Node> e = parse(row.text);
        ASSERT_TRUE(e) << row.text;
        Watch w(e.get());
        EXPECT_EQ(w.value().subtype, row.result) << row.text;
    }
    VXLWPtr<Node> zero = parse("DEBOUNCE(x, 0s)");
    ASSERT_TRUE(zero);
    EXPECT_EQ(zero->getValue(), num(1));
}

TEST_F(Formula, WithinTellsWhetherBothChangedCloseTogether) {
    Node* a = names("a", truth(false));
    Node* b = names("b", truth(false));
    VXLWPtr<Node> e = parse("WITHIN(AND(a, b), 5s)");
    ASSERT_TRUE(e);
    Watch w(e.get());
    advanceTo(1000);
    a->setValue(truth(true));
    advanceTo(6000);
    b->setValue(truth(true));  // exactly 5 s apart: within
    EXPECT_EQ(w.value(), truth(true));
    advanceTo(7000);
    b->setValue(truth(false));
    advanceTo(13000);
    b->setValue(truth(true));  // 12 s after a
    EXPECT_EQ(w.value(), truth(false));
}

}  // namespace
}  // namespace VX::SysEvent::testing
