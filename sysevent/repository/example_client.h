// VX::SysEventExample: a small client that shows the public API end to end.
// It publishes two constants ("example.false", "example.pi"), a variable
// ("example.int") and an expression ("example.expr" := pi * int), observes the
// variable and the expression, reads and writes the variable, and removes all
// four names again when it is destroyed.
#pragma once

#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/repository/observer.h"
#include "sysevent/value/value.h"

namespace VX {

class SysEventExample : public SysEvent::Observer {
public:
    // Observes with a direct callback: onSystemEventValueChanged runs in the
    // thread that changes a value, under the engine lock.
    SysEventExample();
    // Destroys the expression and the variable, then the two constants, then
    // the observer part; each name is gone afterwards, whoever created it.
    ~SysEventExample() override;
    SysEventExample(const SysEventExample&) = delete;
    SysEventExample& operator=(const SysEventExample&) = delete;

    // Publishes the four names, observes "example.int" and "example.expr",
    // and raises "example.int" by 2. Stops at the first failure and returns
    // it; what was published before stays. Success means "example.int" now
    // holds its former value + 2 (2 after a fresh start).
    XCode init();

    // Read "example.int" as an unsigned integer: IMPLICIT through the typed
    // accessor (a wrong kind gives "INVALID DATA TYPE"), EXPLICIT through the
    // Repository and a check of its own (a wrong kind gives the bare generic
    // code). `n` is changed only on success.
    XCode GET_INT_IMPLICIT(unsigned long long& n);
    XCode GET_INT_EXPLICIT(unsigned long long& n);
    // Write "example.int": IMPLICIT through the typed accessor, EXPLICIT by
    // building the Value here. Either creates the variable if it is missing.
    XCode SET_INT_IMPLICIT(unsigned long long n);
    XCode SET_INT_EXPLICIT(unsigned long long n);

    // The value-change callback: prints
    // "Observed variable <name> changed to <display text>" to standard output.
    void onSystemEventValueChanged(String name, SysEvent::Value value);
};

}  // namespace VX
