// WatchList: one Observer per watched pattern, printing each change.
#include "tools/sysevent/watch_list.h"

#include <ctime>

#include "host/clock.h"
#include "host/function.h"

namespace SysEventTool {

using VX::SysEvent::Observer;
using VX::SysEvent::Value;

String TIME_OF_DAY(const VX::Time& t) {
    struct tm parts = VX::Clock(t).getClockStruct();
    return String::Formatted("%02d:%02d:%02d.%03d", parts.tm_hour, parts.tm_min, parts.tm_sec,
                             t.getNanoseconds() / 1000000);
}

WatchList::~WatchList() {
    observers_.clear();
}

bool WatchList::watch(const String& pattern) {
    if (observers_.count(pattern)) return false;
    Observer::ValueChangeCallback callback(
        VX::directCall(), [this](String name, Value value) { print(name, value); });
    auto observer = std::make_unique<Observer>(callback);
    Observer* raw = observer.get();
    observers_.emplace(pattern, std::move(observer));
    raw->addTo(pattern, true);
    return true;
}

bool WatchList::unwatch(const String& pattern) {
    return observers_.erase(pattern) > 0;
}

std::vector<String> WatchList::patterns() const {
    std::vector<String> out;
    for (const auto& entry : observers_) out.push_back(entry.first);
    return out;
}

void WatchList::print(const String& name, const Value& value) {
    output_.line(TIME_OF_DAY(VX::Time::NOW()) + " " + name + " = " + value.toString());
}

}  // namespace SysEventTool
