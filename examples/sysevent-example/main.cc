// sysevent-example: runs the example client once. It publishes the example
// names and observes two of them (init prints one "Observed variable" line
// per change it causes), reads and writes "example.int" through the four
// accessors, and removes every name again when the client is destroyed
// (the observed names then report "#N/A!").
#include <cstdio>

#include "host/runtime/xcode.h"
#include "sysevent/repository/example_client.h"

namespace {

// Prints a failed step to standard error; true when the step succeeded.
bool ok(const char* step, const XCode& rc) {
    if (rc.isSuccess()) return true;
    std::fprintf(stderr, "sysevent-example: %s failed: %s\n", step, rc.toString().c_str());
    return false;
}

// The client prints its observations itself; flushing keeps our lines in
// order with them when standard output is a pipe.
void say(const char* text, unsigned long long n) {
    std::printf(text, n);
    std::fflush(stdout);
}

bool showAccessors(VX::SysEventExample& example) {
    unsigned long long n = 0;
    if (!ok("GET_INT_IMPLICIT", example.GET_INT_IMPLICIT(n))) return false;
    say("example.int read through the typed accessor: %llu\n", n);
    if (!ok("GET_INT_EXPLICIT", example.GET_INT_EXPLICIT(n))) return false;
    say("example.int read through the Repository: %llu\n", n);

    say("Setting example.int to %llu through the typed accessor\n", 5);
    if (!ok("SET_INT_IMPLICIT", example.SET_INT_IMPLICIT(5))) return false;
    say("Setting example.int to %llu through the Repository\n", 7);
    if (!ok("SET_INT_EXPLICIT", example.SET_INT_EXPLICIT(7))) return false;
    if (!ok("GET_INT_IMPLICIT", example.GET_INT_IMPLICIT(n))) return false;
    say("example.int reads %llu\n", n);
    return true;
}

}  // namespace

int main() {
    bool success = false;
    {
        VX::SysEventExample example;
        if (ok("init", example.init())) success = showAccessors(example);
        std::printf("Removing the example names\n");
        std::fflush(stdout);
    }
    return success ? 0 : 1;
}
