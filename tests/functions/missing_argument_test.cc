// Functions given fewer arguments than they read, as an operator is when an
// operand is a pattern that matches nothing: every registered function, at
// every argument count its own check refuses below one it accepts, computes
// "#VAL!" and reads nothing past its argument list (which the sanitizer
// build would report).
#include <gtest/gtest.h>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "support/print.h"
#include "sysevent/graph/function_factory.h"
#include "sysevent/graph/node.h"

namespace VX::SysEvent {
namespace {

VXLWPtr<FunctionNode> withArguments(const String& name, unsigned count) {
    VXLWPtr<FunctionNode> node = FunctionFactory::CREATE(name);
    for (unsigned i = 0; i < count; ++i) node->addArgument(new Node("one", Value(1ULL)));
    return node;
}

TEST(MissingArguments, EveryFunctionLackingAnArgumentIsVal) {
    VXAutoLock lock(LOCK());
    VXVector<String> names;
    FunctionFactory::INSTANCE()->getNames(names);
    constexpr unsigned kMost = 4;
    unsigned checked = 0;
    for (const String& name : names) {
        bool accepted[kMost + 1];
        for (unsigned n = 0; n <= kMost; ++n)
            accepted[n] = withArguments(name, n)->verifyArguments().isSuccess();
        for (unsigned count = 0; count < kMost; ++count) {
            bool lacking = false;
            for (unsigned more = count + 1; more <= kMost; ++more)
                lacking = lacking || (!accepted[count] && accepted[more]);
            if (!lacking) continue;
            // IF reads its last argument only when the condition asks for
            // it, and computes from what it has: IF(1, 1) is 1.
            const bool readsAll = !(count == 2 && name == "IF");
            const Value v = withArguments(name, count)->getValue();
            EXPECT_EQ(v, readsAll ? Value(DST_ERR_VAL) : Value(1ULL))
                << name.c_str() << " of " << count;
            ++checked;
        }
    }
    EXPECT_GE(checked, 40u);
}

}  // namespace
}  // namespace VX::SysEvent
