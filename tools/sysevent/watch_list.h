// WatchList: the name patterns the user watches. Each pattern has its own
// Observer, so that unwatching one pattern leaves the others' subscriptions
// alone; each change of a watched name prints one line: the engine clock's
// time of day (UTC, milliseconds), the name, " = " and the value's display
// text. An object matched by two watched patterns prints once per pattern.
//
// A notification that repeats the value last printed for the name under the
// same pattern is no change and prints nothing: the engine may tell an
// observer of one change twice (an object that is destroyed reports "#N/A!"
// from its node and again from the driver repository).
//
// Changes are printed from whichever thread makes them: the command thread
// for set and friends, the event loop's thread for timers.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "host/runtime/string.h"
#include "host/runtime/time.h"
#include "sysevent/repository/observer.h"
#include "sysevent/value/value.h"
#include "tools/sysevent/change_log.h"
#include "tools/sysevent/output.h"

namespace SysEventTool {

// "hh:mm:ss.mmm" of `t` in zone 0.
String TIME_OF_DAY(const VX::Time& t);

class WatchList {
public:
    explicit WatchList(Output& output) : output_(output) {}
    // Ends every watch; no line is printed once it returns.
    ~WatchList();
    WatchList(const WatchList&) = delete;
    WatchList& operator=(const WatchList&) = delete;

    // Watches `pattern` (a name, or a pattern with '%' or '{...}') and
    // prints the current value of each matching name at once ("#N/A!" for a
    // plain name that does not exist yet). False when it is watched already.
    bool watch(const String& pattern);
    // False when `pattern` was not watched.
    bool unwatch(const String& pattern);
    // The watched patterns, sorted.
    std::vector<String> patterns() const;
    // Every printed change also goes to `log` (null: none).
    void setRecorder(ChangeLog* log) { recorder_ = log; }

private:
    struct Watch {
        std::unique_ptr<VX::SysEvent::Observer> observer;
        std::mutex mutex;
        std::map<String, String> lastPrinted;  // name -> kind and text; guarded by mutex
    };

    void print(Watch& watch, const String& name, const VX::SysEvent::Value& value);

    Output& output_;
    ChangeLog* recorder_ = nullptr;
    // Only the command thread changes the map; a watch's callback touches
    // only its own Watch.
    std::map<String, std::unique_ptr<Watch>> watches_;
};

}  // namespace SysEventTool
