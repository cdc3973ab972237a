// Two-phase propagation: values set from observers during a propagation,
// and observers that change their registration while called. (Recompute
// counts of diamonds, repeated arguments and every parent asked, unobserved
// chains going dirty, interest, equal values, and nothing traced below the
// monitor's level are in the engine_graph golden transcript, seen in the
// trace.)
#include <gtest/gtest.h>

#include "graph/graph_test_support.h"
#include "host/runtime/crit.h"
#include "host/runtime/monitor.h"

namespace VX::SysEvent::testing {
namespace {

using Propagation = GraphTest;

// Sets another node's value from inside a callback.
class SettingObserver : public NodeObserver {
public:
    explicit SettingObserver(Node* target) : target_(target) {}
    void onValueChanged(const Value&, const Value& n) override {
        returned = target_->setValue(Value(n.data.uint + 1000));
    }
    Node* target_;
    bool returned = false;
};

TEST_F(Propagation, ValueSetFromObserverIsStoredAndObservedButNotPropagated) {
    auto a = leaf("a", 1);
    auto s = make<TNEG>({a.get()});
    auto b = leaf("b", 0);
    auto t = make<TSUM>({b.get()});
    t->addInterest();
    SettingObserver setter(b.get());
    RecordingObserver onB;
    s->addObserver(&setter);
    b->addObserver(&onB);
    s->addInterest();

    RTD::CaptureMonitor monitor(3);
    setLogged(monitor, a.get(), 3);
    expectQuiescent({a.get(), b.get()});
    EXPECT_TRUE(setter.returned);
    EXPECT_EQ(b->peekLastEvent().value, Value(1097ULL));
    // b's observer saw both sets: the one made while s gained interest
    // (outside a propagation) and the one made during a's propagation.
    ASSERT_EQ(onB.changes.size(), 2u);
    EXPECT_EQ(onB.changes[1].newValue, Value(1097ULL));
    // t followed the first set only.
    EXPECT_EQ(t->computes, 2);
    EXPECT_EQ(t->peekLastEvent().value, Value(1099ULL));
    bool logged = false;
    for (const auto& line : monitor.lines())
        logged |= line.level == 3 && line.text == "VALUE SET WHILE UPDATE IN PROGRESS";
    EXPECT_TRUE(logged);

    // Outside a propagation the same set propagates.
    b->setValue(Value(5ULL));
    EXPECT_EQ(t->peekLastEvent().value, Value(5ULL));
    s->removeObserver(&setter);
    b->removeObserver(&onB);
}

// Removes itself from its node while being told of a change.
class SelfRemovingObserver : public NodeObserver {
public:
    explicit SelfRemovingObserver(Node* node) : node_(node) {}
    void onValueChanged(const Value&, const Value&) override {
        ++calls;
        node_->removeObserver(this);
    }
    Node* node_;
    int calls = 0;
};

TEST_F(Propagation, ObserversAreCalledPerRegistrationAndMayRemoveThemselves) {
    auto a = leaf("a", 1);
    SelfRemovingObserver first(a.get());
    RecordingObserver x, y;
    for (NodeObserver* o : std::initializer_list<NodeObserver*>{&first, &x, &y, &x})
        a->addObserver(o);
    // first's removal must not cost x, right behind it, its call.
    a->setValue(Value(2ULL));
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(x.changes.size(), 2u);
    EXPECT_EQ(y.changes.size(), 1u);
    a->removeObserver(&x);  // every registration of x
    a->setValue(Value(3ULL));
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(x.changes.size(), 2u);
    EXPECT_EQ(y.changes.size(), 2u);
    a->removeObserver(&y);
    EXPECT_TRUE(a->getObservers().empty());
}

}  // namespace
}  // namespace VX::SysEvent::testing
