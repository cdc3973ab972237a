// Uses the public API through the umbrella header alone (the installed
// headers, in the package build): publishes a constant and an expression over
// it, reads the result, and reads the manual clock. Exits non-zero when any
// of it misbehaves, so the build check catches a broken install.
#include <sysevent/sysevent.h>

#include <cstdio>

int main() {
    using VX::SysEvent::Repository;
    using VX::SysEvent::Value;

    const String name = String::Formatted("%s.%s", "example", "pi");
    const VX::Time sum = VX::Time(1, 600000000) + VX::Time(2, 500000000);
    const Value value(3ull);

    VX::ManualTime::ENABLE(VX::Time(1000, 0));
    const bool clockOk = VX::Time::NOW() == VX::Time(1000, 0);
    VX::ManualTime::DISABLE();

    Value twice;
    const bool engineOk = Repository::CREATE_CONSTANT(name, "three", value).isSuccess() &&
                          VXLockPtr<Repository>(Repository::INSTANCE())
                              ->createExpression("example", "twice", "pi * 2")
                              .isSuccess() &&
                          Repository::GET_VALUE("example.twice", twice).isSuccess() &&
                          twice == Value(6ull);

    const bool ok = sum == VX::Time(4, 100000000) && clockOk && engineOk;
    printf("%s %s %s: %s\n", name.c_str(), VX::Clock(sum).toString().c_str(),
           twice.toString().c_str(), ok ? "ok" : "FAILED");
    return ok ? 0 : 1;
}
