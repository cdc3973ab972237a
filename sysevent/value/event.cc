// Event: construction, the two span operations and the marshalled form
// (start, end, then the value in its in-process form).
#include "sysevent/value/event.h"

namespace VX::SysEvent {

Event::Event(const Value& v) : start(VX::Time::NOW(1)), end(start), value(v) {}

void Event::setTime(const Event& other) {
    if (&other == this) return;
    start = other.start;
    end = other.end;
}

void Event::embraceTime(const Event& other) {
    if (&other == this) return;
    if (other.start < start) start = other.start;
    if (other.end > end) end = other.end;
}

XCode Event::marshal(VXMarshaller& m) const {
    if (XCode rc = m.marshal<VX::Time>(start); rc.isErr()) return rc;
    if (XCode rc = m.marshal<VX::Time>(end); rc.isErr()) return rc;
    // The value's in-process form is its tagged form; called directly so that
    // a failure is not dropped as the stream operators drop it.
    return value.marshal(m);
}

XCode Event::unmarshal(VXMarshaller& m) {
    if (XCode rc = m.unmarshal<VX::Time>(start); rc.isErr()) return rc;
    if (XCode rc = m.unmarshal<VX::Time>(end); rc.isErr()) return rc;
    return value.unmarshal(m);
}

}  // namespace VX::SysEvent
