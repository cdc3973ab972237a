// Uses a few public types through the umbrella header; exits non-zero when
// any of them misbehaves, so the build check catches a broken install.
#include <sysevent/sysevent.h>

#include <cstdio>

int main() {
    const String name = String::Formatted("%s.%s", "example", "pi");
    const VX::Time sum = VX::Time(1, 600000000) + VX::Time(2, 500000000);
    const VX::SysEvent::Value value(3ull);
    const VX::SysEvent::Value copy = value;

    const bool ok = name == "example.pi" && sum == VX::Time(4, 100000000) && copy == value &&
                    value.getDataType() == VX::SysEvent::DT_NUMBER;
    printf("%s %s %s: %s\n", name.c_str(), VX::Clock(sum).toString().c_str(),
           value.toString().c_str(), ok ? "ok" : "FAILED");
    return ok ? 0 : 1;
}
