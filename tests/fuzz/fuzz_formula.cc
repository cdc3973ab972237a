// Formula texts, evaluated ad hoc and published as an expression over a few
// names (temporal functions included), then destroyed again. A formula may
// be refused, never crash the engine or leave it with a half-made name.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "fuzz/fuzz_support.h"

using VX::SysEvent::Repository;
using VX::SysEvent::Value;

namespace {

// The operands that stay from one input to the next: publishing and
// destroying them for every input took most of each run.
const char* const KEPT[] = {"fz.c", "fz.a", "fz.s", "fz.t"};

void publishOperands(Repository& repository) {
    static const bool kept = [&repository] {
        repository.createConstant("fz.c", "", Value(3ULL));
        repository.createVariable("fz.a", "", Value(true));
        repository.createVariable("fz.s", "", Value("text"));
        repository.createExpression("fz", "t", "DELAY(a, 100ms)");
        return true;
    }();
    (void)kept;
    repository.createVariable("fz.n", "", Value(2.5));
}

// Destroys what this input made (the expression, names made on the fly)
// and puts the kept operands back as they were.
void destroyTheRest(Repository& repository) {
    VXVector<VXPPtr<IDriver>> drivers;
    DRIVER::GET_INTERFACES(VX::SysEvent::DID_Variable(), "var/", drivers);
    for (const VXPPtr<IDriver>& driver : drivers) {
        const String name = driver->getDriverName().substring(4);
        if (std::find(std::begin(KEPT), std::end(KEPT), name) == std::end(KEPT)) {
            repository.destroy(name);
        }
    }
    repository.setValue("fz.a", Value(true));
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
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    destroyTheRest(*repository);
    return 0;
}
