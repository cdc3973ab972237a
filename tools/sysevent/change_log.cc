// ChangeLog: one Observer for the observed names, one history per name.
#include "tools/sysevent/change_log.h"

#include "host/runtime/function.h"

namespace SysEventTool {

using VX::SysEvent::Observer;
using VX::SysEvent::Value;

ChangeLog::ChangeLog() : start_(VX::Time::NOW()) {}

ChangeLog::~ChangeLog() {
    observer_.reset();
}

void ChangeLog::observe(const String& name) {
    if (!observed_.insert(name).second) return;
    if (!observer_) {
        observer_ = std::make_unique<Observer>(Observer::ValueChangeCallback(
            VX::directCall(), [this](String changed, Value value) { record(changed, value); }));
    }
    observer_->addTo(name, true);
}

void ChangeLog::record(const String& name, const Value& value) {
    VX::Time now = VX::Time::NOW();
    std::lock_guard<std::mutex> guard(mutex_);
    std::vector<Change>& history = changes_[name];
    if (!history.empty()) {
        const Value& last = history.back().value;
        if (last.subtype == value.subtype && last.toString() == value.toString()) return;
    }
    history.push_back(Change{now, value});
}

std::vector<Change> ChangeLog::changes(const String& name) const {
    std::lock_guard<std::mutex> guard(mutex_);
    auto it = changes_.find(name);
    return it == changes_.end() ? std::vector<Change>() : it->second;
}

std::map<String, std::vector<Change>> ChangeLog::all() const {
    std::lock_guard<std::mutex> guard(mutex_);
    return changes_;
}

}  // namespace SysEventTool
