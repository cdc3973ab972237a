// WatchList: one Observer per watched pattern, printing each change.
#include "tools/sysevent/watch_list.h"

#include <ctime>

#include "host/runtime/clock.h"
#include "host/runtime/function.h"

namespace SysEventTool {

using VX::SysEvent::Observer;
using VX::SysEvent::Value;

String TIME_OF_DAY(const VX::Time& t) {
    struct tm parts = VX::Clock(t).getClockStruct();
    return String::Formatted("%02d:%02d:%02d.%03d", parts.tm_hour, parts.tm_min, parts.tm_sec,
                             t.getNanoseconds() / 1000000);
}

WatchList::~WatchList() {
    // Each Observer unsubscribes as it goes, before its Watch does.
    for (auto& entry : watches_) entry.second->observer.reset();
    watches_.clear();
}

bool WatchList::watch(const String& pattern) {
    if (watches_.count(pattern)) return false;
    auto watch = std::make_unique<Watch>();
    Watch* raw = watch.get();
    Observer::ValueChangeCallback callback(
        VX::directCall(), [this, raw](String name, Value value) { print(*raw, name, value); });
    watch->observer = std::make_unique<Observer>(callback);
    watches_.emplace(pattern, std::move(watch));
    raw->observer->addTo(pattern, true);
    return true;
}

bool WatchList::unwatch(const String& pattern) {
    auto it = watches_.find(pattern);
    if (it == watches_.end()) return false;
    it->second->observer.reset();
    watches_.erase(it);
    return true;
}

std::vector<String> WatchList::patterns() const {
    std::vector<String> out;
    for (const auto& entry : watches_) out.push_back(entry.first);
    return out;
}

void WatchList::print(Watch& watch, const String& name, const Value& value) {
    String text = value.toString();
    // Two values with one display text differ when their kinds do (1 and 1.0).
    String key = String::Formatted("%d ", static_cast<int>(value.subtype)) + text;
    {
        std::lock_guard<std::mutex> guard(watch.mutex);
        auto it = watch.lastPrinted.find(name);
        if (it != watch.lastPrinted.end() && it->second == key) return;
        watch.lastPrinted[name] = key;
    }
    if (recorder_) recorder_->record(name, value);
    output_.line(TIME_OF_DAY(VX::Time::NOW()) + " " + name + " = " + text);
}

}  // namespace SysEventTool
