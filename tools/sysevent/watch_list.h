// WatchList: the name patterns the user watches. Each pattern has its own
// Observer, so that unwatching one pattern leaves the others' subscriptions
// alone; each change of a watched name prints one line: the engine clock's
// time of day (UTC, milliseconds), the name, " = " and the value's display
// text. An object matched by two watched patterns prints once per pattern.
//
// Changes are printed from whichever thread makes them: the command thread
// for set and friends, the event loop's thread for timers.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "host/string.h"
#include "host/time.h"
#include "sysevent/repository/observer.h"
#include "sysevent/value/value.h"
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

private:
    void print(const String& name, const VX::SysEvent::Value& value);

    Output& output_;
    // Only the command thread changes the map; the observers' callbacks do
    // not touch it.
    std::map<String, std::unique_ptr<VX::SysEvent::Observer>> observers_;
};

}  // namespace SysEventTool
