// ObserverEvent<T>: what a published object hands to its observers on a
// change: the source (interface T of the object, counted) and a payload of
// marshalled data. A value change carries the old value followed by the new
// one, in the in-process form of Value (operator<< / operator>>).
//
// Each observer receives its own copy; copies share the payload bytes until
// one of them is read, so reading one copy never disturbs another.
#pragma once

#include <utility>

#include "host/runtime/marshaller.h"
#include "host/runtime/ref_counted.h"

namespace VX::SysEvent {

template <class T>
class ObserverEvent {
public:
    ObserverEvent() = default;
    explicit ObserverEvent(VXPPtr<T> source) : m_source(std::move(source)) {}

    const VXPPtr<T>& getSource() const { return m_source; }
    VXMarshaller& getPayload() { return m_payload; }
    const VXMarshaller& getPayload() const { return m_payload; }

    // Appends `v` to the payload with the payload's operator<<.
    template <class V>
    ObserverEvent& operator<<(const V& v) {
        m_payload << v;
        return *this;
    }
    // Reads the next item of the payload into `v` with operator>>.
    template <class V>
    ObserverEvent& operator>>(V& v) {
        m_payload >> v;
        return *this;
    }

private:
    VXPPtr<T> m_source;
    VXMarshaller m_payload;
};

}  // namespace VX::SysEvent
