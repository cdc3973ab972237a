// Output: the one way the tool writes a line. Watched changes arrive on the
// engine's event-loop thread while commands print on the main thread, so
// every line is written whole under one mutex and flushed at once; lines to
// standard output and standard error thus keep their order when both go to
// the same pipe (as in the golden tests).
//
// While the interactive prompt waits for input, a line from another thread
// must not be written into the middle of the line being edited: the prompt
// installs a Deferral, and such lines are queued for it to print between
// keystrokes instead.
#pragma once

#include <cstdio>
#include <deque>
#include <mutex>
#include <thread>

#include "host/runtime/string.h"

namespace SysEventTool {

class Output {
public:
    // Receives lines that other threads write while the prompt waits.
    class Deferral {
    public:
        virtual ~Deferral() = default;
        // Called with Output's mutex held, from the writing thread: wake the
        // prompt so that it calls Output::takeDeferred. Must not block.
        virtual void wake() = 0;
    };

    // Writes to the given streams; the constructing thread is the main one.
    explicit Output(FILE* out = stdout, FILE* err = stderr);

    // Writes `line` and a newline to standard output (or error) and flushes.
    void line(const String& line);
    void error(const String& line);

    // While a deferral is installed, lines written by threads other than the
    // main one are queued and deferral->wake() is called; null removes it.
    // The deferral must outlive its installation.
    void setDeferral(Deferral* deferral);
    // Moves the queued lines into `lines` (each with whether it goes to
    // standard error), in order.
    struct Pending {
        bool toError;
        String text;
    };
    void takeDeferred(std::deque<Pending>& lines);
    // Writes a line taken from takeDeferred.
    void write(const Pending& pending);

private:
    void emit(bool toError, const String& text);

    FILE* out_;
    FILE* err_;
    const std::thread::id main_;
    std::mutex mutex_;
    Deferral* deferral_ = nullptr;  // guarded by mutex_
    std::deque<Pending> deferred_;  // guarded by mutex_
};

}  // namespace SysEventTool
