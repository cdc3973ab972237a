// Inputs far larger than a device normally sees: a name of 1 MB, a million
// published names, a pattern over all of them, a DELAY fed a million changes
// within its delay. Each works and, with jemalloc, within memory
// proportional to its size; none crashes or hangs (CTest's time-out).
#include <gtest/gtest.h>

#include <string>

#include "host/runtime/crit.h"
#include "host/runtime/manual_time.h"
#include "support/allocated_bytes.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {
namespace {

// A million where jemalloc counts the memory. Builds without it are the
// sanitizer builds, whose allocators multiply the cost of every allocation:
// there a tenth of it keeps the run within minutes; the families are the same.
constexpr unsigned long long MILLION = HAS_ALLOCATED_BYTES ? 1000000 : 100000;

Value valueOf(const String& name) {
    Value v(DST_UNDEF);
    EXPECT_TRUE(Repository::GET_VALUE(name, v).isSuccess()) << name.substring(0, 40).c_str();
    return v;
}

// Fails when what was allocated since `start` exceeds `perItem` bytes for
// each of `items` (checked only with jemalloc).
void expectProportional(size_t start, unsigned long long items, size_t perItem, const char* what) {
    const size_t now = allocatedBytes();
    if (start == 0 || now <= start) return;
    EXPECT_LE((now - start) / items, perItem) << what << ": " << (now - start) << " bytes";
}

TEST(SizeLimits, NameOfOneMegabyteAMillionNamesAndAPatternOverAll) {
    const size_t start = allocatedBytes();
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    const String big = "many." + String(std::string(1 << 20, 'n'));
    ASSERT_TRUE(repository->createVariable(big, "", Value(7ull)).isSuccess());
    ASSERT_TRUE(repository->createExpression("many", "big", big + " * 2").isSuccess());
    EXPECT_EQ(valueOf("many.big"), Value(14ull));
    for (unsigned long long i = 0; i < MILLION; ++i) {
        const XCode rc =
            repository->createVariable(String::Formatted("many.n%llu", i), "", Value(i));
        ASSERT_TRUE(rc.isSuccess()) << i << ": " << rc.toString().c_str();
    }
    expectProportional(start, MILLION, 2048, "published names");
    EXPECT_EQ(valueOf(String::Formatted("many.n%llu", MILLION - 1)), Value(MILLION - 1));
    ASSERT_TRUE(repository->createExpression("many", "count", "COUNT(many.n%)").isSuccess());
    EXPECT_EQ(valueOf("many.count"), Value(MILLION + 1));  // and the big name
    expectProportional(start, MILLION, 2048 + 512, "names and a pattern over them");

    for (const char* name : {"many.count", "many.big"}) repository->destroy(name);
    repository->destroy(big);
    for (unsigned long long i = 0; i < MILLION; ++i) {
        repository->destroy(String::Formatted("many.n%llu", i));
    }
    Value gone;
    EXPECT_FALSE(Repository::GET_VALUE("many.n0", gone).isSuccess());
}

TEST(SizeLimits, DelayFedAMillionChangesWithinItsDelay) {
    VX::ManualTime::ENABLE(VX::Time::fromSeconds(1700000000));
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        ASSERT_TRUE(repository->createVariable("late.in", "", Value(0ull)).isSuccess());
        ASSERT_TRUE(repository->createExpression("late", "out", "DELAY(in, 1h)").isSuccess());
    }
    const size_t start = allocatedBytes();
    for (unsigned long long i = 1; i <= MILLION; ++i) {
        ASSERT_TRUE(Repository::SET_VALUE("late.in", Value(i)).isSuccess());
        if (i % 1000 == 0) VX::ManualTime::ADVANCE(1);  // all within the hour
    }
    expectProportional(start, MILLION, 512, "changes waiting in DELAY");
    EXPECT_NE(valueOf("late.out"), Value(MILLION));
    VX::ManualTime::ADVANCE(3600 * 1000);
    EXPECT_EQ(valueOf("late.out"), Value(MILLION));
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        repository->destroy("late.out");
        repository->destroy("late.in");
    }
    VX::ManualTime::DISABLE();
}

}  // namespace
}  // namespace VX::SysEvent
