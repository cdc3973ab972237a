// Output: whole, flushed lines; lines of other threads deferred while the
// interactive prompt waits.
#include "tools/sysevent/output.h"

namespace SysEventTool {

Output::Output(FILE* out, FILE* err) : out_(out), err_(err), main_(std::this_thread::get_id()) {}

void Output::line(const String& line) {
    emit(false, line);
}

void Output::error(const String& line) {
    emit(true, line);
}

void Output::emit(bool toError, const String& text) {
    std::lock_guard<std::mutex> guard(mutex_);
    if (deferral_ && std::this_thread::get_id() != main_) {
        deferred_.push_back(Pending{toError, text});
        deferral_->wake();
        return;
    }
    FILE* f = toError ? err_ : out_;
    // Standard output first: an error must not overtake output written
    // before it when both streams end in one pipe.
    fflush(out_);
    fprintf(f, "%s\n", text.c_str());
    fflush(f);
}

void Output::setDeferral(Deferral* deferral) {
    std::lock_guard<std::mutex> guard(mutex_);
    deferral_ = deferral;
}

void Output::takeDeferred(std::deque<Pending>& lines) {
    std::lock_guard<std::mutex> guard(mutex_);
    while (!deferred_.empty()) {
        lines.push_back(std::move(deferred_.front()));
        deferred_.pop_front();
    }
}

void Output::write(const Pending& pending) {
    std::lock_guard<std::mutex> guard(mutex_);
    FILE* f = pending.toError ? err_ : out_;
    fprintf(f, "%s\n", pending.text.c_str());
    fflush(f);
}

}  // namespace SysEventTool
