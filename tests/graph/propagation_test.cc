// Two-phase propagation: recompute counts, lazy evaluation of unobserved
// nodes, interest, equal values, and values set from observers during a
// propagation.
#include <gtest/gtest.h>

#include "graph/graph_test_support.h"
#include "host/crit.h"
#include "host/manual_time.h"
#include "host/monitor.h"

namespace VX::SysEvent::testing {
namespace {

using Propagation = GraphTest;

TEST_F(Propagation, DiamondRecomputesItsTipOncePerChange) {
    auto a = leaf("a", 1);
    auto b = make<TSUM>({a.get()});
    auto c = make<TNEG>({a.get()});
    auto d = make<TSUM>({b.get(), c.get()});
    d->addInterest();
    EXPECT_EQ(d->computes, 1);  // gained interest while dirty
    RecordingObserver seen;
    d->addObserver(&seen);
    EXPECT_EQ(d->peekLastEvent().value, Value(100ULL));

    for (unsigned long long v : {2ULL, 3ULL, 40ULL}) {
        EXPECT_TRUE(a->setValue(Value(v)));
        expectQuiescent({a.get()});
    }
    EXPECT_EQ(b->computes, 4);
    EXPECT_EQ(c->computes, 4);
    // d's value is always 100: computed once per change, never changed.
    EXPECT_EQ(d->computes, 4);
    EXPECT_TRUE(seen.changes.empty());

    // An extra path from a to the tip is still one recompute.
    auto e = make<TSUM>({b.get(), a.get(), c.get()});
    e->addInterest();
    EXPECT_TRUE(a->setValue(Value(5ULL)));
    expectQuiescent({a.get()});
    EXPECT_EQ(e->computes, 2);
    EXPECT_EQ(e->peekLastEvent().value, Value(105ULL));
    d->removeObserver(&seen);
}

TEST_F(Propagation, SameArgumentTwiceCountsTwoUpdatesAndRecomputesOnce) {
    RTD::CaptureMonitor monitor(3);
    auto a = leaf("a", 1);
    auto inner = make<TSUM>({a.get()});
    for (Node* arg : {static_cast<Node*>(a.get()), static_cast<Node*>(inner.get())}) {
        auto s = make<TSUM>({arg, arg});
        ASSERT_EQ(arg->getParents().size(), arg == a.get() ? 3u : 2u);
        s->addInterest();
        const int before = s->computes;
        MON = &monitor;
        a->setValue(Value(a->getValue().data.uint + 1));
        MON = nullptr;
        expectQuiescent({a.get()});
        EXPECT_EQ(s->computes, before + 1);
        EXPECT_EQ(s->peekLastEvent().value, Value(2 * a->getValue().data.uint));
        const String prefix = "[" + s->getLogName() + "]";
        EXPECT_TRUE(monitor.contains(prefix + "   2 updates pending"));
        EXPECT_TRUE(monitor.contains(prefix + "   no recomputation yet, 1 updates pending"));
        EXPECT_TRUE(
            monitor.contains(prefix + "   recomputation required (2 updates with value changes)"));
        monitor.clear();
    }
}

TEST_F(Propagation, EveryParentIsAskedAndAnswersForItself) {
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
}

TEST_F(Propagation, ChangeStopsWhereAValueComesOutEqual) {
    auto a = leaf("a", 1);
    auto constant = make<TFAIL>({a.get()});  // succeeds with 7 whatever a is
    auto top = make<TSUM>({constant.get()});
    auto side = make<TSUM>({constant.get(), a.get()});
    top->addInterest();
    side->addInterest();
    for (unsigned long long v : {2ULL, 3ULL}) {
        a->setValue(Value(v));
        expectQuiescent({a.get()});
    }
    EXPECT_EQ(top->computes, 1);
    // side is told by a (changed) and by constant (unchanged): one recompute.
    EXPECT_EQ(side->computes, 3);
    EXPECT_EQ(side->peekLastEvent().value, Value(10ULL));
}

TEST_F(Propagation, UnobservedChainIsMarkedDirtyAndComputedWhenRead) {
    auto a = leaf("a", 1);
    auto n1 = make<TNEG>({a.get()});
    auto n2 = make<TNEG>({n1.get()});
    auto n3 = make<TSUM>({n2.get(), a.get()});
    EXPECT_EQ(n3->getValue(), Value(2ULL));
    EXPECT_EQ(n1->computes + n2->computes + n3->computes, 3);

    RTD::CaptureMonitor monitor(3);
    MON = &monitor;
    a->setValue(Value(10ULL));
    MON = nullptr;
    expectQuiescent({a.get()});
    EXPECT_EQ(n1->computes + n2->computes + n3->computes, 3);
    EXPECT_TRUE(n1->isDirty() && n2->isDirty() && n3->isDirty());
    EXPECT_TRUE(monitor.contains("[" + n3->getLogName() + "]   no; marked dirty"));

    // Once dirty, further changes stop at the first node.
    monitor.clear();
    MON = &monitor;
    a->setValue(Value(20ULL));
    MON = nullptr;
    EXPECT_FALSE(monitor.contains("[" + n2->getLogName() + "] Shall be updated?"));

    EXPECT_EQ(n3->getValue(), Value(40ULL));
    EXPECT_EQ(n1->computes + n2->computes + n3->computes, 6);
    EXPECT_FALSE(n1->isDirty() || n2->isDirty() || n3->isDirty());
}

TEST_F(Propagation, InterestedNodeUpdatesWhileItsUnobservedParentGoesDirty) {
    auto a = leaf("a", 1);
    auto p = make<TNEG>({a.get()});
    auto q = make<TSUM>({p.get(), p.get()});
    p->addInterest();
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
    a->setValue(Value(5ULL));
    EXPECT_TRUE(p->isDirty());
    EXPECT_EQ(p->computes, 2);
}

TEST_F(Propagation, GainingInterestWhileDirtyRecomputesAtOnce) {
    auto a = leaf("a", 1);
    auto n = make<TNEG>({a.get()});
    EXPECT_TRUE(n->isDirty());
    n->addInterest();
    EXPECT_FALSE(n->isDirty());
    EXPECT_EQ(n->computes, 1);
    EXPECT_EQ(n->peekLastEvent().value, Value(99ULL));
    n->addInterest();  // not dirty: nothing to do
    EXPECT_EQ(n->computes, 1);
    EXPECT_EQ(n->getInterestCount(), 2u);
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
    MON = &monitor;
    a->setValue(Value(3ULL));
    MON = nullptr;
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

TEST_F(Propagation, ObserversAreCalledInOrderPerRegistration) {
    auto a = leaf("a", 1);
    RecordingObserver x, y;
    a->addObserver(&x);
    a->addObserver(&y);
    a->addObserver(&x);
    a->setValue(Value(2ULL));
    EXPECT_EQ(x.changes.size(), 2u);
    EXPECT_EQ(y.changes.size(), 1u);
    a->removeObserver(&x);
    a->setValue(Value(3ULL));
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

TEST_F(Propagation, ObserverRemovingItselfDoesNotCostTheNextOneItsCall) {
    auto a = leaf("a", 1);
    SelfRemovingObserver first(a.get());
    RecordingObserver second, third;
    a->addObserver(&first);
    a->addObserver(&second);
    a->addObserver(&third);
    a->setValue(Value(2ULL));
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.changes.size(), 1u);
    EXPECT_EQ(third.changes.size(), 1u);
    a->setValue(Value(3ULL));
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.changes.size(), 2u);
    a->removeObserver(&second);
    a->removeObserver(&third);
}

}  // namespace
}  // namespace VX::SysEvent::testing
