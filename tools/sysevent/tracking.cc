// Tracking through the engine's DatabaseTracker.
#include "tools/sysevent/tracking.h"

#include "host/component/component_manager.h"
#include "sysevent/database/database_tracker.h"
#include "sysevent/repository/repository.h"

namespace SysEventTool {

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

}  // namespace SysEventTool
