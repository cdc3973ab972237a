// Test support for the parser: small test functions with known arity checks,
// the operator functions when the library does not provide them yet, a name
// resolver over a private table of published nodes, and parse helpers.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/runtime/crit.h"
#include "host/runtime/regex.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/graph/proxy_repository.h"
#include "sysevent/language/lexer.h"
#include "sysevent/language/name_resolver.h"
#include "sysevent/language/parser.h"

namespace VX::SysEvent::ParserTest {

// The code TFONE's arity check fails with: the parser must keep it.
constexpr uint32_t kArityCode = 0x12340001;

// A function taking between MIN and MAX arguments; computes nothing useful.
template <unsigned MIN, unsigned MAX>
class TestFunction : public NonTemporalFunctionNode {
public:
    TestFunction(const String& name, const String& parameterText)
        : NonTemporalFunctionNode(name, parameterText) {}
    XCode verifyArguments() override {
        const unsigned n = getChildCount();
        return n >= MIN && n <= MAX ? XCode() : XCode(kArityCode);
    }
    XCode compute(Value& result) override {
        result = Value(static_cast<unsigned long long>(getChildCount()));
        return XCode();
    }
};

using AnyArity = TestFunction<0, 1000000000>;
using OneArgument = TestFunction<1, 1>;
using OneOrTwo = TestFunction<1, 2>;

// Registers the test functions, and every operator function the library does
// not register (yet), once per process.
void REGISTER_TEST_FUNCTIONS();

// Unregisters every factory of `name` for its lifetime and restores them.
class HiddenFunction {
public:
    explicit HiddenFunction(const char* name);
    ~HiddenFunction();

private:
    String m_name;
    std::vector<FunctionFactory::FactoryBase*> m_saved;
};

// Published names for the parser: exact names fail when absent, patterns
// match through NAME_TO_REGEX and VXRegEx, in name order. Records every name
// it was asked for.
class TestResolver : public NameResolver {
public:
    // Publishes a plain value node under `name` and returns it.
    Node* publish(const String& name, const Value& value = Value(1ULL));
    XCode resolve(const String& name, VXVector<VXLWPtr<Node>>& nodes) override;

    std::vector<std::string> calls;

private:
    std::map<std::string, VXLWPtr<Node>> m_published;
};

// The normalized expressions of the roots of a successful parse joined by
// " ; ", or "ERROR <text>" (with "[0x........]" appended when the code is not
// the generic one).
String PARSE(const String& text, NameResolver* resolver = nullptr,
             const String& context = String());

// A fixture that registers the test functions.
class ParserFixture : public ::testing::Test {
protected:
    static void SetUpTestSuite() { REGISTER_TEST_FUNCTIONS(); }
};

}  // namespace VX::SysEvent::ParserTest
