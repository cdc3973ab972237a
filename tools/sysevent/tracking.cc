// Tracking through the engine's DatabaseTracker, when the build has it.
#include "tools/sysevent/tracking.h"

#if __has_include("sysevent/database/database_tracker.h")
#define SYSEVENT_TOOL_HAS_TRACKER 1
#include "host/component_manager.h"
#include "sysevent/database/database_tracker.h"
#include "sysevent/repository/repository.h"
#endif

namespace SysEventTool {

#if SYSEVENT_TOOL_HAS_TRACKER

using VX::SysEvent::DatabaseTracker;
using VX::SysEvent::IRead;
using VX::SysEvent::Repository;

struct Tracking::State {
    VX::ComponentManager manager{"sysevent", VX::ComponentManager::DELIVER_DIRECT};
    DatabaseTracker tracker{&manager};
    unsigned handler = 0;
};

Tracking::Tracking() : state_(std::make_unique<State>()) {
    State* state = state_.get();
    state->handler =
        state->manager.addDatabaseHandler([state](DB::EventType_ type, DB::ObjRead& entry) {
            state->tracker.onDatabaseEvent(type, entry);
        });
}

Tracking::~Tracking() {
    state_->manager.removeDatabaseHandler(state_->handler);
}

bool Tracking::AVAILABLE() {
    return true;
}

namespace {

XCode findVariable(const String& name, VXPPtr<IRead>& variable) {
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    return repository->get(name, variable);
}

}  // namespace

XCode Tracking::track(const String& name) {
    VXPPtr<IRead> variable;
    XCode rc = findVariable(name, variable);
    if (rc.isErr()) return rc;
    return state_->tracker.startTracking(variable);
}

XCode Tracking::untrack(const String& name) {
    VXPPtr<IRead> variable;
    XCode rc = findVariable(name, variable);
    if (rc.isErr()) return rc;
    return state_->tracker.stopTracking(variable);
}

#else

struct Tracking::State {};

Tracking::Tracking() = default;
Tracking::~Tracking() = default;

bool Tracking::AVAILABLE() {
    return false;
}

XCode Tracking::track(const String&) {
    return XCode::Failure("database tracking is not available in this build");
}

XCode Tracking::untrack(const String&) {
    return XCode::Failure("database tracking is not available in this build");
}

#endif

}  // namespace SysEventTool
