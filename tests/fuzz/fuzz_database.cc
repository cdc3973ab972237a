// Database entry texts and "db." names: each line of the input becomes, in
// turn, an entry written, changed, shown and deleted through the tool's "db"
// command, a "db." name tracked, read and published under, and a formula
// over it. Keys, field values and table and field names all come from the
// input; refusals are fine, crashes and lost names are not.
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <sstream>
#include <string>

#include "fuzz/fuzz_support.h"

namespace {

// Each line goes between a prefix and a suffix, byte for byte (NULs too).
const struct {
    const char* prefix;
    const char* suffix;
} COMMANDS[] = {
    {"db insert ", ""},       {"track db.", ""}, {"get db.", ""},     {"db update ", ""},
    {"expr fz.e := db.", ""}, {"db show ", ""},  {"untrack db.", ""}, {"var db.", " = 1"},
    {"db delete ", ""},       {"watch db.", ""}, {"destroy db.", ""},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string script;
    std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
    size_t n = 0;
    for (std::string line; std::getline(lines, line); ++n) {
        const auto& command = COMMANDS[n % std::size(COMMANDS)];
        script += command.prefix + line + command.suffix + '\n';
    }
    FuzzSupport::RUN_SCRIPT(script);
    return 0;
}
