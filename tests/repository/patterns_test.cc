// Name patterns matched against published names: node lists, whole-name
// tests and the distinct prefixes a pattern covers.
#include <gtest/gtest.h>

#include "repository/repository_test_support.h"

namespace VX::SysEvent::testing {
namespace {

VXVector<String> namesOf(const VXVector<VXPPtr<INode>>& nodes) {
    VXVector<String> names;
    for (const VXPPtr<INode>& node : nodes) names.push_back(node->getNode()->getReferencedName());
    return names;
}

TEST(Patterns, GetListsMatchingObjectsInRegistrationOrder) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    for (const char* name : {"line2.up", "line1.up", "line1.alarm", "line10.up", "lineX.up.more"}) {
        ASSERT_TRUE(repository->createVariable(N(name), "", Value(true)).isSuccess());
    }
    ASSERT_TRUE(repository->createExpression(N("line3"), "up", "true").isSuccess());

    VXVector<VXPPtr<INode>> nodes{VXPPtr<INode>()};
    ASSERT_TRUE(repository->get(N("line%.up"), nodes).isSuccess());
    EXPECT_EQ(namesOf(nodes),
              (VXVector<String>{N("line2.up"), N("line1.up"), N("line10.up"), N("line3.up")}));

    // A regular expression in braces.
    ASSERT_TRUE(Repository::GET(N("line{[0-9]+}.up"), nodes).isSuccess());
    EXPECT_EQ(namesOf(nodes),
              (VXVector<String>{N("line2.up"), N("line1.up"), N("line10.up"), N("line3.up")}));
    ASSERT_TRUE(Repository::GET(N("line1{0?}.%"), nodes).isSuccess());
    EXPECT_EQ(namesOf(nodes), (VXVector<String>{N("line1.up"), N("line1.alarm"), N("line10.up")}));

    // Nothing matches: success and an empty list.
    ASSERT_TRUE(repository->get(N("port%.up"), nodes).isSuccess());
    EXPECT_TRUE(nodes.empty());

    // A plain name is an exact look-up.
    ASSERT_TRUE(repository->get(N("line1.up"), nodes).isSuccess());
    EXPECT_EQ(namesOf(nodes), VXVector<String>{N("line1.up")});
    const XCode rc = repository->get(N("line9.up"), nodes);
    EXPECT_EQ(rc.getString(), "VARIABLE DOES NOT EXIST: " + N("line9.up"));
    EXPECT_TRUE(nodes.empty());
}

TEST(Patterns, InvalidRegularExpressionIsAnError) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXVector<VXPPtr<INode>> nodes;
    XCode rc = repository->get(N("x{[}"), nodes);
    EXPECT_EQ(rc.getValue(), XCode::GENERIC_FAILURE);
    EXPECT_EQ(rc.getString(), "INVALID REGULAR EXPRESSION");
    VXVector<String> prefixes;
    rc = repository->getMatchingNamePrefixes(N("x{(}"), prefixes);
    EXPECT_EQ(rc.getString(), "INVALID REGULAR EXPRESSION");
    EXPECT_FALSE(Repository::IS_MATCHING_NAME_REG_EX(N("x{[}"), N("x")));
}

TEST(Patterns, WholeNameMatching) {
    struct Case {
        const char* pattern;
        const char* name;
        bool matches;
    };
    const Case cases[] = {
        {"line%.up", "line1.up", true},   {"line%.up", "line1.up.x", false},
        {"line%.up", "line.up", false},   {"line%.up", "line1.2.up", false},
        {"line%", "line1", true},         {"line{[0-9]%}", "line12", true},
        {"line{[0-9]%}", "lineA", false}, {"plain", "plain", true},
        {"plain", "plainer", false},      {"a:%", "a:b", true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Repository::IS_MATCHING_NAME_REG_EX(c.pattern, c.name), c.matches)
            << c.pattern << " ~ " << c.name;
    }
}

TEST(Patterns, PrefixesAreDistinctInOrderOfFirstAppearance) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    for (const char* name : {"port2.rx", "port1.rx", "port2.tx", "port3.a.b", "portal"}) {
        ASSERT_TRUE(repository->createVariable(N(name), "", U(0)).isSuccess());
    }
    VXVector<String> prefixes{"stale"};
    ASSERT_TRUE(Repository::GET_MATCHING_NAME_PREFIXES(N("port%"), prefixes).isSuccess());
    EXPECT_EQ(prefixes, (VXVector<String>{N("port2"), N("port1"), N("port3"), N("portal")}));
    ASSERT_TRUE(Repository::GET_MATCHING_NAME_PREFIXES(N("port{[0-9]}.%"), prefixes).isSuccess());
    EXPECT_EQ(prefixes,
              (VXVector<String>{N("port2.rx"), N("port1.rx"), N("port2.tx"), N("port3.a")}));
    ASSERT_TRUE(Repository::GET_MATCHING_NAME_PREFIXES(N("none%"), prefixes).isSuccess());
    EXPECT_TRUE(prefixes.empty());
}

}  // namespace
}  // namespace VX::SysEvent::testing
