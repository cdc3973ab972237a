// Feeding the Session: definition files and scripts line by line, standard
// input as a script, and the interactive prompt.
#pragma once

#include <istream>

#include "host/runtime/string.h"
#include "tools/sysevent/output.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

// Runs every line of the file at `path`, named `path` in error reports. With
// `echo` each non-blank line is printed first, after "> ", so that the
// output reads as a transcript. A file that cannot be read is reported and
// counted as an error. Returns false when a quit command ended it.
bool RUN_FILE(Session& session, Output& output, const String& path, bool echo);

// The same for a stream named `name`.
bool RUN_STREAM(Session& session, Output& output, std::istream& in, const String& name, bool echo);

// Reads commands at a prompt until quit or the end of input.
void RUN_PROMPT(Session& session, Output& output);

}  // namespace SysEventTool
