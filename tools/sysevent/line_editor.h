// LineEditor: the interactive prompt. With libedit it offers line editing
// and a history (kept in ~/.sysevent_history); without it, plain lines.
//
// Watched changes that arrive on the event loop's thread while the user
// types are not written into the line being edited: the editor defers them
// (Output::Deferral), and between keystrokes it clears the prompt line,
// prints them, and redraws the prompt with what was typed so far.
#pragma once

#include "host/runtime/string.h"
#include "tools/sysevent/output.h"

namespace SysEventTool {

class LineEditor : private Output::Deferral {
public:
    LineEditor(Output& output, const String& prompt);
    ~LineEditor() override;
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    // Reads one line (without its newline) and records it in the history.
    // False at the end of input (Ctrl-D on an empty line).
    bool readLine(String& line);

private:
    void wake() override;
    // Prints the deferred lines above the prompt.
    void flushDeferred(bool redraw);

    Output& output_;
    String prompt_;
    String historyFile_;
    int wakeup_[2] = {-1, -1};  // a pipe: wake() writes, readLine waits on it
};

}  // namespace SysEventTool
