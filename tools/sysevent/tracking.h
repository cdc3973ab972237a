// Tracking: the track and untrack commands. Binds "db." variables to fields
// of the configuration database through the engine's DatabaseTracker, fed
// with the database's change notifications by a component manager of the
// tool's own, so that a "db" command that changes an entry updates the
// variables bound to it before the command returns.
#pragma once

#include <memory>

#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

namespace SysEventTool {

class Tracking {
public:
    Tracking();
    // Ends the database notifications before the tracker goes.
    ~Tracking();
    Tracking(const Tracking&) = delete;
    Tracking& operator=(const Tracking&) = delete;

    // Binds the variable `name` ("db." + table specifiers + field), made on
    // the fly when it does not exist, and reads the field into it.
    XCode track(const String& name);
    XCode untrack(const String& name);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace SysEventTool
