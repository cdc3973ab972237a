// Marshalled bytes read back as the engine's values. The first byte picks
// the reader. A read either takes a whole, well-formed value or fails with
// the generic code and leaves its target as it was; every time it yields is
// normalised (nanoseconds 0..999,999,999); what it yields marshals and reads
// back to the same thing.
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "fuzz/fuzz_support.h"
#include "host/runtime/marshaller.h"
#include "sysevent/value/event.h"
#include "sysevent/value/value.h"

using VX::SysEvent::Event;
using VX::SysEvent::Value;

namespace {

// A target's identity for "left unchanged" and "reads back the same". Every
// time it shows must be normalised, so describing one checks that too.
String describe(const VX::Time& t) {
    FUZZ_CHECK(t.getNanoseconds() >= 0 && t.getNanoseconds() < VX::Time::NANOS_PER_SECOND,
               "time %d s %d ns", t.getSeconds(), t.getNanoseconds());
    return String::Formatted("%d.%d", t.getSeconds(), t.getNanoseconds());
}
String describe(const Value& v) {
    if (v.getDataType() == VX::SysEvent::DT_TIME) describe(v.data.time);
    return String::Formatted("%d:", static_cast<int>(v.subtype)) + v.toString();
}
String describe(const Event& e) {
    return describe(e.start) + "-" + describe(e.end) + " " + describe(e.value);
}
String describe(const String& s) {
    return s;
}
String describe(int n) {
    return String::stringOf(n);
}

template <typename T>
XCode read(VXMarshaller& m, T& target) {
    if constexpr (std::is_base_of_v<VXMarshallable, T>) {
        return target.unmarshal(m);
    } else {
        return m.unmarshal(target);
    }
}
template <typename T>
XCode write(VXMarshaller& m, const T& source) {
    if constexpr (std::is_base_of_v<VXMarshallable, T>) {
        return source.marshal(m);
    } else {
        return m.marshal(source);
    }
}

template <typename T>
void readAll(VXMarshaller& m, T target) {
    // Several in a row: a failed read must not disturb the ones after it.
    for (int i = 0; i < 4 && m.getLength() > 0; ++i) {
        const String before = describe(target);
        const size_t left = m.getLength();
        const XCode rc = read(m, target);
        if (rc.isErr()) {
            FUZZ_CHECK(rc.getValue() == XCode::GENERIC_FAILURE, "code 0x%x", rc.getValue());
            // An event keeps the parts it read before the failure; anything
            // else is left as it was.
            if constexpr (!std::is_same_v<T, Event>) {
                FUZZ_CHECK(describe(target) == before, "changed to %s", describe(target).c_str());
            }
            return;
        }
        FUZZ_CHECK(m.getLength() <= left, "read grew the buffer");
        VXMarshaller again;
        FUZZ_CHECK(write(again, target).isSuccess(), "%s does not marshal",
                   describe(target).c_str());
        T copy{};
        FUZZ_CHECK(read(again, copy).isSuccess() && describe(copy) == describe(target),
                   "%s reads back as %s", describe(target).c_str(), describe(copy).c_str());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    VXMarshaller m(data + 1, size - 1);
    switch (data[0] % 5) {
        case 0:
            readAll(m, Value());
            break;
        case 1:
            readAll(m, Event());
            break;
        case 2:
            readAll(m, VX::Time(7, 7));
            break;
        case 3:
            readAll(m, String("unchanged"));
            break;
        default:
            readAll(m, 7);
            break;
    }
    return 0;
}
