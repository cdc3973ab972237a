// Every executable of the project runs on jemalloc (when built with it): the
// standard allocation functions must be jemalloc's, which counts the bytes
// malloc hands out.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>

namespace {

TEST(AllocatorTest, MallocIsJemallocWhenLinked) {
#ifndef SYSEVENT_WITH_JEMALLOC
    GTEST_SKIP() << "built without jemalloc";
#else
    using Mallctl = int (*)(const char*, void*, size_t*, void*, size_t);
    auto mallctl = reinterpret_cast<Mallctl>(dlsym(RTLD_DEFAULT, "mallctl"));
    ASSERT_NE(mallctl, nullptr);
    uint64_t before = 0, after = 0;
    size_t size = sizeof before;
    ASSERT_EQ(mallctl("thread.allocated", &before, &size, nullptr, 0), 0);
    void* volatile block = malloc(1 << 20);
    ASSERT_EQ(mallctl("thread.allocated", &after, &size, nullptr, 0), 0);
    free(block);
    EXPECT_GE(after - before, uint64_t{1} << 20);
#endif
}

}  // namespace
