// Two-phase propagation: every parent asked, interest, equal values, values
// set from observers during a propagation, and observers that change their
// registration while called. (Recompute counts of diamonds and repeated
// arguments, and unobserved chains going dirty, are in the engine_graph
// golden transcript, seen in the trace.)
#include <gtest/gtest.h>

#include "graph/graph_test_support.h"
#include "host/runtime/crit.h"
#include "host/runtime/manual_time.h"
#include "host/runtime/monitor.h"

namespace VX::SysEvent::testing {
namespace {

using Propagation = GraphTest;

TEST_F(Propagation, EveryParentAnswersForItselfAndChangeStopsAtAnEqualValue) {
    // x has parents p1, q (unobserved), p2: each is asked.
    auto a = leaf("a", 1);
    auto x = make<TNEG>({a.get()});
    auto p1 = make<TSUM>({x.get()});
    auto q = make<TSUM>({x.get()});
    auto p2 = make<TSUM>({x.get()});
    p1->addInterest();
    p2->addInterest();
    EXPECT_EQ(q->getValue(), Value(99ULL));
    a->setValue(Value(2ULL));
    expectQuiescent({a.get()});
    EXPECT_EQ(p1->peekLastEvent().value, Value(98ULL));
    EXPECT_EQ(p2->peekLastEvent().value, Value(98ULL));
    EXPECT_TRUE(q->isDirty());
    EXPECT_EQ(q->computes, 1);
    EXPECT_EQ(x->computes, 2);

    // constant is 7 whatever a is: top never recomputes, side once per
    // change though it is told by both a (changed) and constant (unchanged).
    auto constant = make<TFAIL>({a.get()});
    auto top = make<TSUM>({constant.get()});
    auto side = make<TSUM>({constant.get(), a.get()});
    top->addInterest();
    side->addInterest();
    for (unsigned long long v : {3ULL, 4ULL}) {
        a->setValue(Value(v));
        expectQuiescent({a.get()});
    }
    EXPECT_EQ(top->computes, 1);
    EXPECT_EQ(side->computes, 3);
    EXPECT_EQ(side->peekLastEvent().value, Value(11ULL));
}

TEST_F(Propagation, InterestRecomputesWhenGainedWhileDirtyAndLapsesAtTheNextChange) {
    auto a = leaf("a", 1);
    auto p = make<TNEG>({a.get()});
    auto q = make<TSUM>({p.get(), p.get()});
    EXPECT_TRUE(p->isDirty());
    p->addInterest();
    EXPECT_FALSE(p->isDirty());
    EXPECT_EQ(p->computes, 1);
    EXPECT_EQ(p->peekLastEvent().value, Value(99ULL));
    p->addInterest();  // not dirty: nothing to do
    EXPECT_EQ(p->computes, 1);
    EXPECT_EQ(p->getInterestCount(), 2u);

    // The interested node updates while its unobserved parent goes dirty.
    EXPECT_EQ(q->getValue(), Value(198ULL));
    RecordingObserver seen;
    p->addObserver(&seen);
    a->setValue(Value(4ULL));
    expectQuiescent({a.get()});
    ASSERT_EQ(seen.changes.size(), 1u);
    EXPECT_EQ(seen.changes[0].oldValue, Value(99ULL));
    EXPECT_EQ(seen.changes[0].newValue, Value(96ULL));
    EXPECT_TRUE(q->isDirty());
    EXPECT_EQ(q->computes, 1);
    EXPECT_EQ(q->getValue(), Value(192ULL));
    p->removeObserver(&seen);

    // Dropping interest takes effect at the next propagation.
    p->removeInterest();
    p->removeInterest();
    a->setValue(Value(5ULL));
    EXPECT_TRUE(p->isDirty());
    EXPECT_EQ(p->computes, 2);
}

TEST_F(Propagation, EqualValueStoresAndPropagatesNothing) {
    ManualTime::ENABLE(Time(1000000, 0));
    auto a = leaf("a", 1);
    auto n = make<TNEG>({a.get()});
    n->addInterest();
    RecordingObserver seen;
    a->addObserver(&seen);
    EXPECT_TRUE(a->setValue(Value(2ULL)));
    const Event before = a->peekLastEvent();
    ManualTime::ADVANCE(5000);
    EXPECT_FALSE(a->setValue(Value(2ULL)));
    EXPECT_FALSE(a->triggerEvent(Event(Time(1, 0), Time(2, 0), Value(2ULL))));
    expectQuiescent({a.get()});
    EXPECT_EQ(seen.changes.size(), 1u);
    EXPECT_EQ(n->computes, 2);
    EXPECT_EQ(a->peekLastEvent().start, before.start);
    EXPECT_EQ(a->peekLastEvent().end, before.end);
    a->removeObserver(&seen);
    ManualTime::DISABLE();
}

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

TEST_F(Propagation, NothingIsFormattedWithoutAnAdmittingMonitor) {
    RTD::CaptureMonitor monitor(2);
    MON = &monitor;
    auto a = leaf("a", 1);
    auto n = make<TNEG>({a.get()});
    n->addInterest();
    a->setValue(Value(2ULL));
    MON = nullptr;
    EXPECT_TRUE(monitor.lines().empty());
}

}  // namespace
}  // namespace VX::SysEvent::testing
