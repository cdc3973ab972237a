// VX::SysEventExample: the walk through the public API that the example
// program runs. Every step uses the entry point a client would use: the
// Repository's static operations where they exist, its members under the
// engine lock where only members exist, and the typed accessors.
#include "sysevent/repository/example_client.h"

#include <cstdio>

#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "sysevent/repository/repository.h"
#include "sysevent/repository/typed_accessors.h"

namespace VX {

using SysEvent::Repository;
using SysEvent::Value;

namespace {

const char* const kFalse = "example.false";
const char* const kPi = "example.pi";
const char* const kInt = "example.int";
const char* const kExpr = "example.expr";

// Reads "example.int" through the Repository and insists on an unsigned
// integer; a wrong kind is the bare generic code, without a text.
XCode readIntExplicitly(unsigned long long& n) {
    Value value;
    XCode rc = Repository::GET_VALUE(kInt, value);
    if (rc.isErr()) return rc;
    if (value.subtype != SysEvent::DST_UINT) return XCode(XCode::GENERIC_FAILURE);
    n = value.data.uint;
    return XCode();
}

}  // namespace

SysEventExample::SysEventExample()
    : Observer(ValueChangeCallback(VX::directCall(), [this](String name, Value value) {
          onSystemEventValueChanged(std::move(name), std::move(value));
      })) {}

SysEventExample::~SysEventExample() {
    {
        VXAutoLock engine(SysEvent::LOCK());
        VXPtr<Repository> repository = Repository::INSTANCE();
        repository->destroyExpression("example", "expr");
        repository->destroyVariable(kInt);
    }
    Repository::DESTROY_CONSTANT(kPi);
    Repository::DESTROY_CONSTANT(kFalse);
}

XCode SysEventExample::init() {
    XCode rc = Repository::CREATE_CONSTANT(kFalse, "Always false", Value(false));
    if (rc.isErr()) return rc;
    rc = Repository::CREATE_CONSTANT(kPi, "The mathematical constant PI", Value(3.14));
    if (rc.isErr()) return rc;
    {
        VXAutoLock engine(SysEvent::LOCK());
        VXPtr<Repository> repository = Repository::INSTANCE();
        rc = repository->createVariable(kInt, "An example integer value", Value(0ULL));
        if (rc.isErr()) return rc;
        rc = repository->createExpression("example", "expr", "pi * int");
        if (rc.isErr()) return rc;
    }
    addTo(kInt, false);
    addTo(kExpr, false);

    unsigned long long n = 0;
    rc = readIntExplicitly(n);
    if (rc.isErr()) return rc;
    rc = SysEvent::GET_VALUE(kInt, n);
    if (rc.isErr()) return rc;
    return SysEvent::SET_VALUE(kInt, n + 2);
}

XCode SysEventExample::GET_INT_IMPLICIT(unsigned long long& n) {
    return SysEvent::GET_VALUE(kInt, n);
}

XCode SysEventExample::GET_INT_EXPLICIT(unsigned long long& n) {
    return readIntExplicitly(n);
}

XCode SysEventExample::SET_INT_IMPLICIT(unsigned long long n) {
    return SysEvent::SET_VALUE(kInt, n);
}

XCode SysEventExample::SET_INT_EXPLICIT(unsigned long long n) {
    return Repository::SET_VALUE(kInt, Value(n));
}

void SysEventExample::onSystemEventValueChanged(String name, Value value) {
    std::printf("Observed variable %s changed to %s\n", name.c_str(), value.toString().c_str());
    std::fflush(stdout);
}

}  // namespace VX
