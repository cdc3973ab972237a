// Memory that comes back: a device creates and destroys names for months, so
// the sharing tables keep an entry only while somebody holds its node.
// Evaluating many distinct ad-hoc formulas, and creating then destroying
// many expressions under distinct names, leaves allocated memory (jemalloc's
// statistics) where it started.
#include <gtest/gtest.h>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "support/allocated_bytes.h"
#include "sysevent/graph/expression_repository.h"
#include "sysevent/graph/proxy_repository.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent::testing {
namespace {

// Both loops of a long-running device: `from` to `to` distinct formulas
// evaluated, and as many expressions created and destroyed.
void churn(Repository& repository, unsigned from, unsigned to) {
    VXVector<Value> out;
    for (unsigned i = from; i < to; ++i) {
        ASSERT_TRUE(
            repository.evaluateExpression("", String::Formatted("mem.x + %u", i), out).isSuccess());
        ASSERT_EQ(out.at(0), Value(3ULL + i));
    }
    for (unsigned i = from; i < to / 4; ++i) {
        const String name = String::Formatted("n%u", i);
        ASSERT_TRUE(
            repository.createExpression("mem", name, String::Formatted("x * %u", i)).isSuccess());
        repository.destroyExpression("mem", name);
    }
}

TEST(MemoryReturn, DistinctFormulasAndNamesLeaveNothingBehind) {
    VXAutoLock lock(LOCK());
    VXPtr<Repository> repository = Repository::INSTANCE();
    ASSERT_TRUE(repository->createVariable("mem.x", "", Value(3ULL)).isSuccess());
    churn(*repository, 0, 1000);  // the tables' and caches' first growth
    const size_t expressions = ExpressionRepository::INSTANCE()->size();
    const size_t proxies = ProxyRepository::INSTANCE()->size();
    const size_t before = allocatedBytes();
    // Fewer rounds where the sanitizers' allocator makes each one slow.
#ifdef SYSEVENT_WITH_JEMALLOC
    churn(*repository, 1000, 200000);
#else
    churn(*repository, 1000, 20000);
#endif
    const size_t after = allocatedBytes();
    EXPECT_LT(after, before + (1u << 20)) << "grew by " << (after - before) << " bytes";
    EXPECT_EQ(ExpressionRepository::INSTANCE()->size(), expressions);
    EXPECT_EQ(ProxyRepository::INSTANCE()->size(), proxies);
    repository->destroy("mem.x");
}

}  // namespace
}  // namespace VX::SysEvent::testing
