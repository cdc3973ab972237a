// Name patterns matched against published names: node lists, whole-name
// tests, the distinct prefixes a pattern covers, and a client Observer
// attached through the Repository to what a pattern matches now.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "host/runtime/function.h"
#include "repository/repository_test_support.h"
#include "sysevent/graph/proxy_node.h"
#include "sysevent/repository/observer.h"

namespace VX::SysEvent::testing {
namespace {

using Patterns = RepositoryTest;

VXVector<String> namesOf(const VXVector<VXPPtr<INode>>& nodes) {
    VXVector<String> names;
    for (const VXPPtr<INode>& node : nodes) names.push_back(node->getNode()->getReferencedName());
    return names;
}

TEST_F(Patterns, GetListsMatchingObjectsInRegistrationOrder) {
    for (const char* name : {"line2.up", "line1.up", "line1.alarm", "line10.up", "lineX.up.more"}) {
        var(name, Value(true));
    }
    ASSERT_OK(repo->createExpression(N("line3"), "up", "true"));
    const VXVector<String> numbered = {N("line2.up"), N("line1.up"), N("line10.up"), N("line3.up")};
    struct Case {
        String pattern;
        VXVector<String> names;
    };
    const Case cases[] = {
        {N("line%.up"), numbered},
        {N("line{[0-9]+}.up"), numbered},  // a regular expression in braces
        {N("line1{0?}.%"), {N("line1.up"), N("line1.alarm"), N("line10.up")}},
        {N("port%.up"), {}},               // nothing matches: success, empty
        {N("line1.up"), {N("line1.up")}},  // a plain name is an exact look-up
    };
    for (const Case& c : cases) {
        VXVector<VXPPtr<INode>> nodes{VXPPtr<INode>()};
        ASSERT_OK(Repository::GET(c.pattern, nodes));
        EXPECT_EQ(namesOf(nodes), c.names) << c.pattern.c_str();
    }
}

TEST(PatternMatching, WholeNames) {
    struct Case {
        const char* pattern;
        const char* name;
        bool matches;
    };
    const Case cases[] = {
        {"line%.up", "line1.up", true},
        {"line%.up", "line1.up.x", false},
        {"line%.up", "line.up", false},
        {"line%.up", "line1.2.up", false},
        {"line%", "line1", true},
        {"line{[0-9]%}", "line12", true},
        {"line{[0-9]%}", "lineA", false},
        {"plain", "plain", true},
        {"plain", "plainer", false},
        {"a:%", "a:b", true},
        {"x{[}", "x", false},  // an invalid regular expression matches nothing
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Repository::IS_MATCHING_NAME_REG_EX(c.pattern, c.name), c.matches)
            << c.pattern << " ~ " << c.name;
    }
}

TEST_F(Patterns, PrefixesAreDistinctInOrderOfFirstAppearance) {
    for (const char* name : {"port2.rx", "port1.rx", "port2.tx", "port3.a.b", "portal"}) {
        var(name, U(0));
    }
    VXVector<String> prefixes{"stale"};
    ASSERT_OK(Repository::GET_MATCHING_NAME_PREFIXES(N("port%"), prefixes));
    EXPECT_EQ(prefixes, (VXVector<String>{N("port2"), N("port1"), N("port3"), N("portal")}));
    ASSERT_OK(Repository::GET_MATCHING_NAME_PREFIXES(N("port{[0-9]}.%"), prefixes));
    EXPECT_EQ(prefixes,
              (VXVector<String>{N("port2.rx"), N("port1.rx"), N("port2.tx"), N("port3.a")}));
    ASSERT_OK(Repository::GET_MATCHING_NAME_PREFIXES(N("none%"), prefixes));
    EXPECT_TRUE(prefixes.empty());
}

TEST_F(Patterns, ObserverAttachedByPatternUntilDetachedByNameOrAll) {
    var("p1.v", U(1));
    var("p2.v", U(2));
    using Heard = std::vector<std::pair<String, Value>>;
    Heard heard;
    Observer observer(Observer::ValueChangeCallback(
        VX::directCall(), [&heard](String name, Value value) { heard.emplace_back(name, value); }));
    ASSERT_OK(repo->addObserver(observer, N("p%.v"), true));
    EXPECT_EQ(heard, (Heard{{N("p1.v"), U(1)}, {N("p2.v"), U(2)}}));

    heard.clear();
    ASSERT_OK(repo->setValue(N("p1.v"), U(5)));
    EXPECT_EQ(heard, (Heard{{N("p1.v"), U(5)}}));

    heard.clear();
    repo->removeObserver(observer, N("p1.v"));
    ASSERT_OK(repo->setValue(N("p1.v"), U(6)));
    ASSERT_OK(repo->setValue(N("p2.v"), U(7)));
    EXPECT_EQ(heard, (Heard{{N("p2.v"), U(7)}}));

    heard.clear();
    repo->removeObserver(observer, "");  // an empty pattern detaches all
    ASSERT_OK(repo->setValue(N("p2.v"), U(8)));
    EXPECT_TRUE(heard.empty());
}

}  // namespace
}  // namespace VX::SysEvent::testing
