// Running out of memory inside the engine: the process's allocation functions
// are replaced here by ones that fail the n-th allocation after arming, and
// every operation that builds something is run with n = 0, 1, 2, ... until it
// gets through. Each run either succeeds or fails with the generic code; none
// throws, and a failed one leaves no trace: the name is not published, its
// value is not half-changed, and the same operation then succeeds.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

#include "host/runtime/crit.h"
#include "support/print.h"
#include "sysevent/repository/repository.h"

namespace {

// Allocations left before the one that fails; negative: none fails.
std::atomic<long> s_left{-1};
std::atomic<bool> s_failed{false};

bool failNow() {
    if (s_left.load(std::memory_order_relaxed) < 0 || s_left.fetch_sub(1) != 0) return false;
    return s_failed = true;
}

void* allocate(size_t size) {
    return malloc(size ? size : 1);
}

}  // namespace

// These are the process's allocation functions, so new and free do match
// here; GCC at -O3 cannot see that and warns.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size) {
    void* p = failNow() ? nullptr : allocate(size);
    if (!p) throw std::bad_alloc();
    return p;
}
void* operator new[](size_t size) {
    return operator new(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return failNow() ? nullptr : allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return failNow() ? nullptr : allocate(size);
}
void operator delete(void* p) noexcept {
    free(p);
}
void operator delete[](void* p) noexcept {
    free(p);
}
void operator delete(void* p, size_t) noexcept {
    free(p);
}
void operator delete[](void* p, size_t) noexcept {
    free(p);
}
// Called when a constructor throws after a nothrow new.
void operator delete(void* p, const std::nothrow_t&) noexcept {
    free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
    free(p);
}
#pragma GCC diagnostic pop

namespace VX::SysEvent {

namespace {

Value U(unsigned long long n) {
    return Value(n);
}

Value valueOf(const String& name) {
    Value v(DST_UNDEF);
    Repository::GET_VALUE(name, v);
    return v;
}

struct Operation {
    const char* what;
    std::function<XCode(Repository&)> run;
    // After a failed run: the state is as before. After a successful one:
    // the state is the intended one.
    std::function<void(bool succeeded)> check;
    std::function<void(Repository&)> undo;
};

TEST(AllocationFailure, EveryBuildingOperationFailsCleanly) {
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        ASSERT_TRUE(repository->createVariable("oom.a", "", U(2)).isSuccess());
        ASSERT_TRUE(repository->createExpression("oom", "double", "a * 2").isSuccess());
    }
    const Operation operations[] = {
        {"variable", [](Repository& r) { return r.createVariable("oom.v", "", U(5)); },
         [](bool ok) { EXPECT_EQ(valueOf("oom.v"), ok ? U(5) : Value(DST_UNDEF)); },
         [](Repository& r) { r.destroy("oom.v"); }},
        {"expression",
         [](Repository& r) { return r.createExpression("oom", "e", "a * 10 + double"); },
         [](bool ok) { EXPECT_EQ(valueOf("oom.e"), ok ? U(24) : Value(DST_UNDEF)); },
         [](Repository& r) { r.destroy("oom.e"); }},
        {"expression set", [](Repository& r) { return r.createExpression("oom.a%", "s", "a + 1"); },
         [](bool) {}, [](Repository& r) { r.destroyExpression("oom.a%", "s"); }},
        {"changed value", [](Repository& r) { return r.setValue("oom.a", U(3)); },
         [](bool ok) {
             // Running out of memory while the change is told to observers
             // comes after the value was taken: the graph is consistent
             // either way, and a success means the new value.
             const Value a = valueOf("oom.a");
             EXPECT_TRUE(a == U(3) || (!ok && a == U(2))) << a.toString().c_str();
             EXPECT_EQ(valueOf("oom.double"), U(a.data.uint * 2));
         },
         [](Repository& r) { r.setValue("oom.a", U(2)); }},
        {"new formula", [](Repository& r) { return r.setExpression("oom", "double", "a * 3"); },
         [](bool ok) {
             // The old formula or the new one, whole; a success is the new one.
             const Value d = valueOf("oom.double");
             EXPECT_TRUE(d == U(6) || (!ok && d == U(4))) << d.toString().c_str();
         },
         [](Repository& r) { r.setExpression("oom", "double", "a * 2"); }},
    };
    for (const Operation& op : operations) {
        bool through = false;
        for (long n = 0; n < 100000 && !through; ++n) {
            SCOPED_TRACE(::testing::Message() << op.what << ", allocation " << n);
            VXLockPtr<Repository> repository(Repository::INSTANCE());
            XCode rc;
            s_failed = false;
            s_left = n;
            try {
                rc = op.run(*repository);
            } catch (const std::exception& e) {
                s_left = -1;
                ADD_FAILURE() << "an exception escaped: " << e.what();
                break;
            }
            s_left = -1;
            through = !s_failed;
            // Only an allocation that failed may fail the operation.
            EXPECT_EQ(rc.getValue(), s_failed && rc.isErr() ? XCode::GENERIC_FAILURE : 0u)
                << rc.toString().c_str();
            op.check(rc.isSuccess());
            op.undo(*repository);
            if (rc.isErr()) {
                SCOPED_TRACE("not armed");
                XCode again = op.run(*repository);  // the engine is whole again
                EXPECT_TRUE(again.isSuccess()) << again.toString().c_str();
                op.check(again.isSuccess());
                op.undo(*repository);
            }
            if (HasFailure()) break;  // one report is enough
        }
        EXPECT_TRUE(through) << op.what;
    }
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    repository->destroy("oom.double");
    repository->destroy("oom.a");
}

}  // namespace
}  // namespace VX::SysEvent
