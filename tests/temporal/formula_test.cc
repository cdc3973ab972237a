// The timer-driven functions and WITHIN written as formulas and run through
// the parser, as one table of sequences: values set on named leaves at given
// moments and every change the formula shows. Parsed nodes are shared and
// kept for the life of the process, so each row binds its names to fresh
// leaves under a name prefix of its own and runs every timer to its end; NOW
// and TODAY are left to the tests that build their nodes directly (a parsed
// NOW() would keep its tick for good).
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "sysevent/language/name_resolver.h"
#include "sysevent/language/parser.h"
#include "temporal/temporal_test_support.h"

namespace VX::SysEvent::testing {
namespace {

using C = Watch::Change;

// Names of one row, each bound to a leaf of its own.
class Names : public NameResolver {
public:
    Names() : m_prefix(String::Formatted("formula%u.", ++s_rows)) {}

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
    static inline unsigned s_rows = 0;
    String m_prefix;
    std::map<std::string, VXLWPtr<Node>> m_nodes;
};

// The one root of `text`, or null after a failed expectation.
VXLWPtr<Node> parse(Names& names, const char* text) {
    Parser parser(&names);
    const XCode rc = parser.parse(text);
    EXPECT_TRUE(rc.isSuccess()) << text << ": " << rc.toString().c_str();
    if (rc.isErr() || parser.getRoots().size() != 1) return VXLWPtr<Node>();
    return parser.getRoots()[0];
}

using Formula = TemporalTest;

// A value set on a leaf `atMs` after T0.
struct Set {
    int64_t atMs;
    const char* name;
    Value value;
};

struct Sequence {
    const char* formula;
    std::vector<std::pair<const char*, Value>> leaves;  // initial values
    Value first;                                        // when first observed
    std::vector<Set> sets;
    std::vector<C> changes;  // every change up to 30 s
};

TEST_F(Formula, Sequences) {
    const Value T = truth(true), F = truth(false);
    const Sequence rows[] = {
        // 1 -> 2 -> 3 within the delay: only the last change, one delay later.
        {"DEBOUNCE(x, 2s) * 10",
         {{"x", num(1)}},
         num(10),
         {{500, "x", num(2)}, {1000, "x", num(3)}},
         {{3000, num(30)}}},
        // A change that comes back within the delay propagates nothing.
        {"DEBOUNCE(x, 2s)", {{"x", num(1)}}, num(1), {{100, "x", num(2)}, {200, "x", num(1)}}, {}},
        // Rises are held (and timed afresh), a fall goes through at once and
        // drops the pending rise; across data types nothing is a rise.
        {"DEBOUNCEINC(x, 1s500ms)",
         {{"x", num(5)}},
         num(5),
         {{0, "x", num(9)},
          {100, "x", num(8)},
          {1000, "x", num(3)},
          {1200, "x", num(4)},
          {5000, "x", text("abc")},
          {6000, "x", text("abd")}},
         {{1000, num(3)}, {2700, num(4)}, {5000, text("abc")}, {7500, text("abd")}}},
        {"DEBOUNCEDEC(x, 1s)",
         {{"x", num(5)}},
         num(5),
         {{0, "x", num(3)},
          {200, "x", num(9)},
          {300, "x", num(2)},
          {400, "x", text("abc")},
          {5000, "x", text("ab")}},
         {{200, num(9)}, {400, text("abc")}, {6000, text("ab")}}},
        // A false condition lets the pending value through at its recompute and
        // later changes at once; a non-empty text reads as true again.
        {"DEBOUNCEIF(x, 2s, c)",
         {{"x", num(1)}, {"c", T}},
         num(1),
         {{0, "x", num(2)},
          {500, "c", F},
          {600, "x", num(3)},
          {10000, "c", text("false")},
          {10000, "x", num(4)}},
         {{500, num(2)}, {600, num(3)}, {12000, num(4)}}},
        // A condition that is no boolean is the result; the pending value
        // still arrives.
        {"DEBOUNCEIF(x, 2s, c)",
         {{"x", num(1)}, {"c", T}},
         num(1),
         {{0, "x", num(2)}, {100, "c", Value(DST_EMPTY)}},
         {{100, Value(DST_ERR_VAL)}, {2000, num(2)}}},
        {"DELAY(x, 2s)",
         {{"x", num(0)}},
         num(0),
         {{0, "x", num(1)}, {1000, "x", num(2)}},
         {{2000, num(1)}, {3000, num(2)}}},
        // Shrinking the delay queues 1 again (due at 1100, before the first
        // 1 at 5000); whichever timer expires, the oldest value goes out.
        {"DELAY(x, d)",
         {{"x", num(0)}, {"d", duration(5000)}},
         num(0),
         {{0, "x", num(1)}, {100, "d", duration(1000)}, {200, "x", num(2)}},
         {{1100, num(1)}, {5000, num(2)}}},
        {"STABLE(x, 5s)",
         {{"x", num(1)}},
         F,
         {{6000, "x", num(2)}, {8000, "x", num(3)}},
         {{5000, T}, {6000, F}, {13000, T}}},
        // Recomputes with an unchanged input neither restart nor stop the wait.
        {"STABLE(x, d)",
         {{"x", num(1)}, {"d", duration(5000)}},
         F,
         {{2000, "d", duration(10000)}, {7000, "d", duration(1000)}},
         {{5000, T}}},
        // AND's event spans both arguments' times: 5 s apart is within, 12 s
        // is not.
        {"WITHIN(AND(a, b), 5s)",
         {{"a", F}, {"b", F}},
         F,
         {{1000, "a", T}, {6000, "b", T}, {7000, "b", F}, {13000, "b", T}},
         {{6000, T}, {7000, F}}},
    };
    for (const Sequence& row : rows) {
        SCOPED_TRACE(row.formula);
        VX::ManualTime::ENABLE(T0);
        Names names;
        for (const auto& [name, value] : row.leaves) names(name, value);
        VXLWPtr<Node> e = parse(names, row.formula);
        ASSERT_TRUE(e);
        Watch w(e.get());
        EXPECT_EQ(w.value(), row.first);
        for (const Set& set : row.sets) {
            advanceTo(set.atMs);
            names(set.name)->setValue(set.value);
        }
        advanceTo(30000);
        EXPECT_EQ(w.changes, row.changes);
    }
}

}  // namespace
}  // namespace VX::SysEvent::testing
