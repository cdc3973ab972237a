// No depth limit: the graph's walks run on explicit stacks, so a chain of
// 100,000 levels gets through on a 256 KiB thread stack (what device
// processes often give their threads), instrumented builds included. A
// published chain (through formula text and the Repository) is created,
// read cold, observed, changed and destroyed; a chain of bare function
// nodes covers the walks that published names cut short (the sharing key,
// the cycle check) and one release of the whole chain.
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

#include "graph/graph_test_support.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/read_observer.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent::testing {
namespace {

constexpr unsigned DEPTH = 100000;
constexpr size_t STACK_SIZE = 256u << 10;

// Runs `body` on a thread with exactly STACK_SIZE of stack.
void onSmallStack(const std::function<void()>& body) {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    ASSERT_EQ(pthread_attr_setstacksize(&attr, STACK_SIZE), 0);
    pthread_t thread;
    auto run = [](void* arg) -> void* {
        (*static_cast<const std::function<void()>*>(arg))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attr, run, const_cast<std::function<void()>*>(&body)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
}

class LastValue : public IReadObserver {
public:
    void onValueChanged(VXPPtr<IRead>&, const Value&, const Value& newValue) override {
        last = newValue;
        ++changes;
    }
    Value last;
    unsigned changes = 0;
};

String link(unsigned i) {
    return String::Formatted("e%u", i);
}

TEST(StackDepth, PublishedChainOfAHundredThousandOnA256KiBStack) {
    onSmallStack([] {
        VXAutoLock lock(LOCK());
        VXPtr<Repository> repository = Repository::INSTANCE();
        ASSERT_TRUE(repository->createVariable("deep.v", "", Value(0ULL)).isSuccess());
        ASSERT_TRUE(repository->createExpression("deep", link(1), "v + 1").isSuccess());
        for (unsigned i = 2; i <= DEPTH; ++i) {
            const XCode rc = repository->createExpression(
                "deep", link(i), String::Formatted("%s + 1", link(i - 1).c_str()));
            ASSERT_TRUE(rc.isSuccess()) << i << ": " << rc.toString().c_str();
        }
        const String tail = "deep." + link(DEPTH);
        Value v;
        ASSERT_TRUE(repository->getValue(tail, v).isSuccess());  // cold: the whole chain
        EXPECT_EQ(v, Value(static_cast<unsigned long long>(DEPTH)));

        ASSERT_TRUE(repository->setValue("deep.v", Value(5ULL)).isSuccess());  // marks dirty
        LastValue observer;
        VXPPtr<IRead> object;
        ASSERT_TRUE(repository->get(tail, object).isSuccess());
        ASSERT_TRUE(object->addValueObserver(&observer, false).isSuccess());
        ASSERT_TRUE(repository->setValue("deep.v", Value(7ULL)).isSuccess());  // both phases
        EXPECT_EQ(observer.last, Value(DEPTH + 7ULL));

        repository->destroy("deep.v");  // "#N/A!" travels the whole chain
        EXPECT_EQ(observer.last, Value(DST_ERR_NA));
        EXPECT_EQ(observer.changes, 3u);  // brought up to date by the interest, 7, "#N/A!"
        object->removeValueObserver(&observer);
        object = nullptr;
        for (unsigned i = 1; i <= DEPTH; ++i) repository->destroyExpression("deep", link(i));
        EXPECT_FALSE(repository->get(tail, object).isSuccess());
    });
}

TEST(StackDepth, BareChainOfAHundredThousandOnA256KiBStack) {
    onSmallStack([] {
        VXAutoLock lock(LOCK());
        VXLWPtr<Node> bottom = leaf("leaf", 1);
        VXLWPtr<FunctionNode> top;
        FunctionNode* lowest = nullptr;
        for (unsigned i = 0; i < DEPTH; ++i) {
            VXLWPtr<FunctionNode> f = make<TSUM>({top ? top.get() : bottom.get()}, "F");
            if (!lowest) lowest = f.get();
            top = f;
        }
        EXPECT_EQ(top->getValue(), Value(1ULL));
        EXPECT_EQ(top->getNormalizedExpression().length(), 3u * DEPTH + 4);
        EXPECT_TRUE(top->isDescendant(bottom.get()));
        EXPECT_EQ(lowest->addChild(top.get()).getString(), "CIRCULAR REFERENCE");
        top = nullptr;  // releases every level
        EXPECT_TRUE(bottom->getParents().empty());
    });
}

}  // namespace
}  // namespace VX::SysEvent::testing
