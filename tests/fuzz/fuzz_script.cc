// The tool's command language: a whole script run in process on the manual
// clock, as `sysevent run --manual-time --script` would, against the bundled
// schema in memory. Any script may fail its commands; none may take the tool
// down. Everything it published is destroyed before the next input.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <sstream>

#include "fuzz/fuzz_support.h"
#include "tools/sysevent/script_runner.h"
#include "tools/sysevent/session.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzSupport::USE_MANUAL_TIME();
    static FILE* sink = fopen("/dev/null", "w");
    static SysEventTool::Output output(sink, sink);
    {
        SysEventTool::Session session(output, true);
        FUZZ_CHECK(session.openDatabase("").isSuccess(), "no in-memory database");
        std::istringstream script(std::string(reinterpret_cast<const char*>(data), size));
        SysEventTool::RUN_STREAM(session, output, script, "fuzz.se", false);
    }
    FuzzSupport::DESTROY_ALL_NAMES();
    return 0;
}
