// The tool's command language: a whole script run in process on the manual
// clock, as `sysevent run --manual-time --script` would, against the bundled
// schema in memory. Any script may fail its commands; none may take the tool
// down. Everything it published is destroyed before the next input.
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzSupport::RUN_SCRIPT(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
