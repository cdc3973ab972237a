// ChangeLog: the history of the names a run looks at (watched names and
// names that tests check), each change with the engine clock's time. Tests
// check changes against it and print it when a check fails; the timeline is
// drawn from it.
//
// Only names asked for are observed: observing every name would make every
// expression observed, which is not how a device runs its rules (an
// unobserved debounce starts no timer).
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "host/runtime/string.h"
#include "host/runtime/time.h"
#include "sysevent/repository/observer.h"
#include "sysevent/value/value.h"

namespace SysEventTool {

struct Change {
    VX::Time time;
    VX::SysEvent::Value value;
};

class ChangeLog {
public:
    // The log starts now (engine clock).
    ChangeLog();
    ~ChangeLog();
    ChangeLog(const ChangeLog&) = delete;
    ChangeLog& operator=(const ChangeLog&) = delete;

    // Observes the plain name `name` from now on (once; later calls do
    // nothing), recording its current value ("#N/A!" when it does not exist).
    void observe(const String& name);
    // Records a change of `name` seen elsewhere (a watch). A value identical
    // to the last recorded one (kind and text) is no change and is dropped.
    void record(const String& name, const VX::SysEvent::Value& value);

    // The changes of `name` so far, oldest first.
    std::vector<Change> changes(const String& name) const;
    // Every recorded name with its changes, by name.
    std::map<String, std::vector<Change>> all() const;
    const VX::Time& start() const { return start_; }

private:
    const VX::Time start_;
    std::unique_ptr<VX::SysEvent::Observer> observer_;
    std::set<String> observed_;
    mutable std::mutex mutex_;
    std::map<String, std::vector<Change>> changes_;  // guarded by mutex_
};

}  // namespace SysEventTool
