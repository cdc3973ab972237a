// Attaching a client Observer through the Repository: the objects a pattern
// matches now are subscribed (with their current value at once on request),
// a plain unknown name is an error, and an empty pattern detaches all.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "host/function.h"
#include "repository/repository_test_support.h"
#include "sysevent/repository/observer.h"

namespace VX::SysEvent::testing {
namespace {

TEST(RepositoryObservers, AttachByPatternAndDetachEverything) {
    ASSERT_TRUE(Repository::SET_VALUE(N("p1.v"), U(1)).isSuccess());
    ASSERT_TRUE(Repository::SET_VALUE(N("p2.v"), U(2)).isSuccess());
    std::vector<std::pair<String, Value>> heard;
    Observer observer(Observer::ValueChangeCallback(
        VX::directCall(), [&heard](String name, Value value) { heard.emplace_back(name, value); }));

    VXLockPtr<Repository> repository(Repository::INSTANCE());
    ASSERT_TRUE(repository->addObserver(observer, N("p%.v"), true).isSuccess());
    EXPECT_EQ(heard, (std::vector<std::pair<String, Value>>{{N("p1.v"), U(1)}, {N("p2.v"), U(2)}}));

    heard.clear();
    ASSERT_TRUE(repository->setValue(N("p1.v"), U(5)).isSuccess());
    EXPECT_EQ(heard, (std::vector<std::pair<String, Value>>{{N("p1.v"), U(5)}}));

    EXPECT_EQ(repository->addObserver(observer, N("nothing"), true).getString(),
              "VARIABLE DOES NOT EXIST: " + N("nothing"));

    heard.clear();
    repository->removeObserver(observer, N("p1.v"));
    ASSERT_TRUE(repository->setValue(N("p1.v"), U(6)).isSuccess());
    ASSERT_TRUE(repository->setValue(N("p2.v"), U(7)).isSuccess());
    EXPECT_EQ(heard, (std::vector<std::pair<String, Value>>{{N("p2.v"), U(7)}}));

    heard.clear();
    repository->removeObserver(observer, "");
    ASSERT_TRUE(repository->setValue(N("p2.v"), U(8)).isSuccess());
    EXPECT_TRUE(heard.empty());
}

}  // namespace
}  // namespace VX::SysEvent::testing
