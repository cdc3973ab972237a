// The function catalogue as the tool shows it: every function registered
// with the engine's FunctionFactory, with its parameter text and description,
// as aligned text (the functions command) or as the Markdown page
// docs/functions.md (sysevent functions --markdown), so that the reference
// is generated from the registry itself and cannot drift from it.
#pragma once

#include <vector>

#include "host/runtime/string.h"

namespace SysEventTool {

struct FunctionEntry {
    String name;
    String parameters;
    String description;
};

// Every registered function, sorted by name.
std::vector<FunctionEntry> CATALOGUE();

// One line per function: "NAME(parameters)", padded, then the description.
std::vector<String> CATALOGUE_LINES();

// The complete Markdown page, ending with a newline.
String CATALOGUE_MARKDOWN();

}  // namespace SysEventTool
