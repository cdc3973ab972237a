// Event: a Value with the span of time over which it was established (start:
// when it began to hold; end: when it was last confirmed). Every node of the
// graph keeps the event of its last result.
#pragma once

#include "host/runtime/marshaller.h"
#include "host/runtime/time.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

class Event : public VXMarshallable {
public:
    VX::Time start;
    VX::Time end;
    Value value;

    Event() = default;
    // start = end = VX::Time::NOW(1).
    explicit Event(const Value& v);
    Event(const VX::Time& t, const Value& v) : start(t), end(t), value(v) {}
    Event(const VX::Time& s, const VX::Time& e, const Value& v) : start(s), end(e), value(v) {}
    Event(const Event&) = default;
    Event& operator=(const Event&) = default;
    ~Event() override = default;

    // Copies other's times; the value is untouched.
    void setTime(const Event& other);
    // Widens this span to cover other's (earliest start, latest end).
    void embraceTime(const Event& other);

    // start, end (each as VX::Time), then the value's in-process form.
    XCode marshal(VXMarshaller& m) const override;
    XCode unmarshal(VXMarshaller& m) override;
};

}  // namespace VX::SysEvent
