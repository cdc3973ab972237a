// Every executable of the project runs on jemalloc (when built with it): the
// standard allocation functions must be jemalloc's.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

namespace {

using Mallctl = int (*)(const char*, void*, size_t*, void*, size_t);

TEST(AllocatorTest, MallocIsJemallocWhenLinked) {
#ifndef SYSEVENT_WITH_JEMALLOC
    GTEST_SKIP() << "built without jemalloc";
#else
    Mallctl mallctl = reinterpret_cast<Mallctl>(dlsym(RTLD_DEFAULT, "mallctl"));
    ASSERT_NE(mallctl, nullptr);
    const char* version = nullptr;
    size_t size = sizeof version;
    ASSERT_EQ(mallctl("version", &version, &size, nullptr, 0), 0);
    ASSERT_NE(version, nullptr);
    EXPECT_GT(strlen(version), 0u);

    // The bytes malloc hands out are counted by jemalloc: the thread's
    // allocation counter grows by at least the size of a fresh block.
    uint64_t before = 0, after = 0;
    size = sizeof before;
    ASSERT_EQ(mallctl("thread.allocated", &before, &size, nullptr, 0), 0);
    void* volatile block = malloc(1 << 20);
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(mallctl("thread.allocated", &after, &size, nullptr, 0), 0);
    free(block);
    EXPECT_GE(after - before, uint64_t{1} << 20);
#endif
}

}  // namespace
