// ObserverEvent<T>: what a published object hands to its observers on a
// change: the source (interface T of the object, counted) and a payload of
// marshalled data. A value change carries the old value followed by the new
// one, in the in-process form of Value (operator<< / operator>>).
//
// Each observer receives its own copy; reading one copy never disturbs
// another. A change is copied once per observer, so the first Values written
// stay Values (no bytes, no buffer at all) until a reader asks for the bytes
// with getPayload(), which then holds exactly what a fully marshalled event
// would hold.
#pragma once

#include <cstddef>
#include <optional>
#include <utility>

#include "host/runtime/marshaller.h"
#include "host/runtime/ref_counted.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

template <class T>
class ObserverEvent {
public:
    ObserverEvent() = default;
    explicit ObserverEvent(VXPPtr<T> source) : m_source(std::move(source)) {}

    const VXPPtr<T>& getSource() const { return m_source; }
    VXPPtr<T>& getSource() { return m_source; }
    VXMarshaller& getPayload() {
        marshalHeld();
        return payload();
    }
    const VXMarshaller& getPayload() const {
        marshalHeld();
        return payload();
    }

    // Appends `v` to the payload with the payload's operator<<.
    template <class V>
    ObserverEvent& operator<<(const V& v) {
        marshalHeld();
        m_bytes = true;
        payload() << v;
        return *this;
    }
    ObserverEvent& operator<<(const Value& v) {
        if (m_bytes || m_held == kHeld) return operator<< <Value>(v);
        m_values[m_held++].emplace(v);
        return *this;
    }
    // Reads the next item of the payload into `v` with operator>>.
    template <class V>
    ObserverEvent& operator>>(V& v) {
        marshalHeld();
        payload() >> v;
        return *this;
    }
    ObserverEvent& operator>>(Value& v) {
        if (m_read == m_held) return operator>><Value>(v);
        v = *m_values[m_read++];
        return *this;
    }

    // Makes an event that was only read (its Values still held, no bytes
    // made, the source still `source`) read as if new, so that the same event
    // can stand for a fresh copy; false, changing nothing, otherwise.
    bool rewind(const T* source) {
        if (m_bytes || m_payload || m_source.get() != source) return false;
        m_read = 0;
        return true;
    }

    // Makes this event what `ObserverEvent(source)` would be, in place (no
    // temporary event, whose empty buffer some compilers then misjudge).
    void reset(VXPPtr<T> source) {
        m_source = std::move(source);
        m_payload.reset();
        for (std::optional<Value>& value : m_values) value.reset();
        m_held = m_read = 0;
        m_bytes = false;
    }

    // The next item when it is a Value held as such, marked read, or null
    // (nothing marked): a reader that only looks at it saves the copy.
    const Value* takeHeld() { return m_read < m_held ? &*m_values[m_read++] : nullptr; }

private:
    static constexpr size_t kHeld = 2;

    // Moves the unread held Values into the payload, ahead of its bytes
    // (Values are held only while no bytes were written).
    void marshalHeld() const {
        if (m_read == m_held) return;
        VXMarshaller bytes;
        for (size_t i = m_read; i < m_held; ++i) bytes << *m_values[i];
        if (m_payload && m_payload->getLength() > 0)
            bytes.addTail(m_payload->getData(), m_payload->getLength());
        m_payload = bytes;
        m_read = m_held = 0;
        m_bytes = true;
    }

    // The byte buffer, made on first use: a change that only ever travels as
    // held Values (every in-process observer) allocates none, and its copies
    // share no buffer.
    VXMarshaller& payload() const {
        if (!m_payload) m_payload.emplace();
        return *m_payload;
    }

    VXPPtr<T> m_source;
    mutable std::optional<VXMarshaller> m_payload;
    mutable std::optional<Value> m_values[kHeld];
    mutable size_t m_held = 0;  // values written and held
    mutable size_t m_read = 0;  // of those, values read
    mutable bool m_bytes = false;
};

}  // namespace VX::SysEvent
