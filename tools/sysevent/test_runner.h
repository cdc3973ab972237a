// The test command: each test script runs in a child process of its own, so
// that every file starts from a fresh engine (the engine's tables live as
// long as its process), on the manual clock from the same fixed start. The
// names a script checks with expect are observed from its first line, so
// that a failing check can list all their changes.
//
// Output: the failure lines of the checks (and any command errors) as they
// happen, then per file "FILE: N passed, M failed", and last the totals
// "N passed, M failed". A command error counts as a failed check.
#pragma once

#include "tools/sysevent/options.h"

namespace SysEventTool {

// Where the manual clock starts: a fixed point, so that runs repeat exactly.
extern const char* const MANUAL_TIME_START;

// Runs the test files of `options`; the exit status: 0 when every check
// passed, 1 otherwise.
int RUN_TESTS(const Options& options);

// The timeline file of test file number `index` (1-based) of `count`: the
// given path itself for a single file, else "-index" before its ".svg".
String TIMELINE_PATH(const String& path, size_t index, size_t count);

}  // namespace SysEventTool
