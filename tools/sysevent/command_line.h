// Splitting one line of the tool's command language: the comment is cut off,
// the first word is the command, the rest is its argument text. Columns are
// 1-based positions in the original line, so that every error can point at
// the character it is about.
#pragma once

#include <vector>

#include "host/runtime/string.h"

namespace SysEventTool {

struct CommandLine {
    String verb;
    unsigned verbColumn = 1;
    // The text after the verb, without the comment and surrounding blanks.
    String rest;
    // Column of rest's first character (where it would start when empty).
    unsigned restColumn = 1;
};

// Splits `line` into verb and rest. A '#' starts a comment unless it is
// inside a quoted string ('...' or "...", with backslash escapes), inside
// braces (a regular expression in a name) or begins an error value's text
// ("#N/A!"). Returns false when the line holds
// no command (blank, or comment only).
bool SPLIT_COMMAND(const String& line, CommandLine& out);

// A word of an argument text and the column of its first character.
struct Word {
    String text;
    unsigned column = 1;
};

// Splits `text` (starting at column `column`) at blanks. Quotes group blanks
// into a word and are removed ('uplink to core' is one word without its
// quotes; a backslash in quotes takes the next character). A quote left open
// fails: `error` names its column.
bool SPLIT_WORDS(const String& text, unsigned column, std::vector<Word>& words,
                 unsigned& errorColumn);

}  // namespace SysEventTool
