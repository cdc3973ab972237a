// LineEditor: libedit's callback interface driven by a select() loop that
// also waits for deferred output; plain line reading without libedit.
#include "tools/sysevent/line_editor.h"

#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <iostream>
#include <string>

#if SYSEVENT_WITH_LIBEDIT
#include <editline/readline.h>

#include <vector>

#include "tools/sysevent/completion.h"
#endif

namespace SysEventTool {

namespace {

#if SYSEVENT_WITH_LIBEDIT
// libedit hands a finished line to a plain function.
char* s_line = nullptr;
bool s_done = false;

void onLine(char* line) {
    s_line = line;
    s_done = true;
    // Without this, libedit would prompt again before readLine returns.
    rl_callback_handler_remove();
}

// libedit asks for the candidates one at a time.
std::vector<String> s_matches;

char* nextMatch(const char* /*text*/, int state) {
    size_t index = static_cast<size_t>(state);
    return index < s_matches.size() ? strdup(s_matches[index].c_str()) : nullptr;
}

char** complete(const char* text, int start, int /*end*/) {
    bool atLineStart = true;
    for (int i = 0; i < start; ++i) {
        if (!isspace(static_cast<unsigned char>(rl_line_buffer[i]))) atLineStart = false;
    }
    s_matches = COMPLETE(String(text), atLineStart);
    rl_attempted_completion_over = 1;  // no file names
    return rl_completion_matches(text, nextMatch);
}
#endif

}  // namespace

LineEditor::LineEditor(Output& output, const String& prompt) : output_(output), prompt_(prompt) {
    if (pipe(wakeup_) == 0) {
        fcntl(wakeup_[0], F_SETFL, O_NONBLOCK);
        fcntl(wakeup_[1], F_SETFL, O_NONBLOCK);
    }
#if SYSEVENT_WITH_LIBEDIT
    const char* home = getenv("HOME");
    if (home && *home) historyFile_ = String(home) + "/.sysevent_history";
    using_history();
    stifle_history(1000);
    rl_attempted_completion_function = complete;
    rl_completer_word_break_characters = const_cast<char*>(COMPLETION_WORD_BREAKS);
    if (!historyFile_.isEmpty()) read_history(historyFile_.c_str());
#endif
}

LineEditor::~LineEditor() {
#if SYSEVENT_WITH_LIBEDIT
    if (!historyFile_.isEmpty()) write_history(historyFile_.c_str());
#endif
    output_.setDeferral(nullptr);
    if (wakeup_[0] >= 0) close(wakeup_[0]);
    if (wakeup_[1] >= 0) close(wakeup_[1]);
}

void LineEditor::wake() {
    char byte = 1;
    // A full pipe already wakes the reader; nothing is lost.
    [[maybe_unused]] ssize_t n = ::write(wakeup_[1], &byte, 1);
}

void LineEditor::flushDeferred(bool redraw) {
    char buffer[64];
    while (read(wakeup_[0], buffer, sizeof buffer) > 0) {
    }
    std::deque<Output::Pending> lines;
    output_.takeDeferred(lines);
    if (lines.empty()) return;
    if (redraw) {
        // Clear the prompt line; the lines go where it was.
        fputs("\r\033[K", stdout);
        fflush(stdout);
    }
    for (const Output::Pending& line : lines) output_.write(line);
#if SYSEVENT_WITH_LIBEDIT
    if (redraw) rl_forced_update_display();
#endif
}

#if SYSEVENT_WITH_LIBEDIT

bool LineEditor::readLine(String& line) {
    s_line = nullptr;
    s_done = false;
    rl_callback_handler_install(prompt_.c_str(), onLine);
    if (wakeup_[0] >= 0) output_.setDeferral(this);
    while (!s_done) {
        fd_set fds;
        FD_ZERO(&fds);
        FD_SET(STDIN_FILENO, &fds);
        int top = STDIN_FILENO;
        if (wakeup_[0] >= 0) {
            FD_SET(wakeup_[0], &fds);
            if (wakeup_[0] > top) top = wakeup_[0];
        }
        if (select(top + 1, &fds, nullptr, nullptr, nullptr) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        if (wakeup_[0] >= 0 && FD_ISSET(wakeup_[0], &fds)) flushDeferred(true);
        if (FD_ISSET(STDIN_FILENO, &fds)) rl_callback_read_char();
    }
    if (!s_done) rl_callback_handler_remove();
    output_.setDeferral(nullptr);
    if (wakeup_[0] >= 0) flushDeferred(false);
    if (!s_line) {
        fputs("\n", stdout);
        fflush(stdout);
        return false;
    }
    line = String(s_line);
    if (!line.isEmpty()) add_history(s_line);
    free(s_line);
    s_line = nullptr;
    return true;
}

#else

bool LineEditor::readLine(String& line) {
    fputs(prompt_.c_str(), stdout);
    fflush(stdout);
    std::string text;
    if (!std::getline(std::cin, text)) {
        fputs("\n", stdout);
        fflush(stdout);
        return false;
    }
    line = String(text);
    return true;
}

#endif

}  // namespace SysEventTool
