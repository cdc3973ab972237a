// Formula texts, evaluated ad hoc and published as an expression over a few
// names (temporal functions included), then destroyed again. A formula may
// be refused, never crash the engine or leave it with a half-made name.
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_support.h"

using VX::SysEvent::Repository;
using VX::SysEvent::Value;

namespace {

// The operands that stay from one input to the next (all but fz.n):
// publishing and destroying them for every input took most of each run.
void publishOperands(Repository& repository) {
    [[maybe_unused]] static const bool kept = [&repository] {
        repository.createConstant("fz.c", "", Value(3ULL));
        repository.createVariable("fz.a", "", Value(true));
        repository.createVariable("fz.s", "", Value("text"));
        repository.createExpression("fz", "t", "DELAY(a, 100ms)");
        return true;
    }();
    repository.createVariable("fz.n", "", Value(2.5));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzSupport::USE_MANUAL_TIME();
    const String text(reinterpret_cast<const char*>(data), size);
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        publishOperands(*repository);

        VXVector<Value> values;
        repository->evaluateExpression("fz", text, values);

        VXPPtr<VX::SysEvent::IExpression> expression;
        const XCode rc = repository->createExpression(expression, "fz", "e", text);
        VXPPtr<VX::SysEvent::INode> node;
        const bool published = repository->get("fz.e", node).isSuccess();
        FUZZ_CHECK(rc.isSuccess() == published, "created: %d, published: %d", rc.isSuccess(),
                   published);
        if (published) {
            // Changes and passing time reach every function of the formula.
            repository->setValue("fz.a", Value(false));
            repository->setValue("fz.n", Value(7ULL));
        }
    }
    VX::ManualTime::ADVANCE(250);
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        repository->setValue("fz.a", Value(true));
        repository->destroy("fz.n");
    }
    VX::ManualTime::ADVANCE(250);
    // What this input made goes (the expression, names made on the fly), and
    // the kept operands are put back as they were.
    FuzzSupport::DESTROY_ALL_NAMES({"fz.c", "fz.a", "fz.s", "fz.t"});
    Repository::SET_VALUE("fz.a", Value(true));
    return 0;
}
