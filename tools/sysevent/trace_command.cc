// The trace command: the engine's trace lines turned up, down or off in the
// middle of a session, so that a rule author looks at the lines of one step
// (or a transcript pins them) without the noise of everything before it.
// With --trace the run's own monitor changes level; otherwise the session
// installs one of its own and removes it when it ends.
#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "tools/sysevent/session.h"
#include "tools/sysevent/trace_monitor.h"

namespace SysEventTool {

bool Session::cmdTrace(const CommandLine& cmd, Failure& failure) {
    String word;
    if (!oneWord(cmd, "a level from 0 or off", word, failure)) return false;
    int level = -1;
    if (word != "off" && (!word.toInteger(level) || level < 0)) {
        failure = Failure{cmd.restColumn, "expecting a level from 0 or off, not '" + word + "'"};
        return false;
    }
    VXAutoLock engine(VX::SysEvent::LOCK());
    RTD::Monitor*& monitor = VX::SysEvent::MON;
    if (!monitor && level >= 0) {
        trace_ = std::make_unique<TraceMonitor>(level, output_);
        monitor = trace_.get();
    } else if (monitor == trace_.get() && level < 0) {
        monitor = nullptr;
        trace_.reset();
    } else if (monitor) {
        // Off for a monitor the session does not own: nothing is admitted.
        monitor->setVerbosity(level);
    }
    return true;
}

void Session::endTrace() {
    if (!trace_) return;
    VXAutoLock engine(VX::SysEvent::LOCK());
    if (VX::SysEvent::MON == trace_.get()) VX::SysEvent::MON = nullptr;
    trace_.reset();
}

}  // namespace SysEventTool
