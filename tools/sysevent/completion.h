// Completion at the interactive prompt: the word under the cursor is
// completed to a command name at the start of the line, and elsewhere to a
// published name, a built-in function or a keyword of the formula language.
#pragma once

#include <vector>

#include "host/runtime/string.h"

namespace SysEventTool {

// The characters that end a word for completion: blanks and the formula
// language's symbols, so that "SUM(line1.u" completes "line1.u".
extern const char* const COMPLETION_WORD_BREAKS;

// The candidates that begin with `word`, sorted and without repeats.
// `atLineStart` tells whether the word is the line's first (a command).
// Takes the engine lock to list the published names.
std::vector<String> COMPLETE(const String& word, bool atLineStart);

}  // namespace SysEventTool
