// Value: the tagged marshalled form (subtype, then the payload of that
// subtype) and the in-process form used to hand values to other threads.
//
// Reading never trusts the buffer: every payload read is bounded by the
// marshaller, a short or lying buffer is a returned failure, and the value is
// replaced only once its whole form was read.
#include <cstdint>
#include <cstring>

#include "sysevent/value/value.h"

namespace VX::SysEvent {

XCode Value::marshal(VXMarshaller& m) const {
    if (XCode rc = m.marshal<int>(static_cast<int>(subtype)); rc.isErr()) return rc;
    switch (subtype) {
        case DST_BOOL: {
            const uint8_t byte = data.boolean ? 1 : 0;
            return m.addTail(&byte, 1);
        }
        case DST_UINT: {
            const uint64_t raw = data.uint;
            return m.addTail(&raw, sizeof raw);
        }
        case DST_FLP: {
            const double raw = data.flp;
            return m.addTail(&raw, sizeof raw);
        }
        case DST_ABS_DATE_TIME:
        case DST_ABS_DATE:
        case DST_ABS_TIME:
        case DST_REL_TIME:
            return m.marshal<VX::Time>(data.time);
        case DST_STRING:
            return m.marshal<String>(data.string);
        default:
            return XCode();
    }
}

XCode Value::unmarshal(VXMarshaller& m) {
    int number = 0;
    if (XCode rc = m.unmarshal<int>(number); rc.isErr()) return rc;
    // Any number is kept as it came: one outside the table reads back as a
    // payload-less value that classifies as DT_UNDEF and shows "#NOTYPE!".
    Value read(static_cast<DataSubType>(number));
    switch (read.subtype) {
        case DST_BOOL: {
            uint8_t byte = 0;
            if (XCode rc = m.removeHeader(&byte, 1); rc.isErr()) return rc;
            read.data.boolean = byte != 0;
            break;
        }
        case DST_UINT: {
            uint64_t raw = 0;
            if (XCode rc = m.removeHeader(&raw, sizeof raw); rc.isErr()) return rc;
            read.data.uint = raw;
            break;
        }
        case DST_FLP: {
            double raw = 0.0;
            if (XCode rc = m.removeHeader(&raw, sizeof raw); rc.isErr()) return rc;
            read.data.flp = raw;
            break;
        }
        case DST_ABS_DATE_TIME:
        case DST_ABS_DATE:
        case DST_ABS_TIME:
        case DST_REL_TIME:
            if (XCode rc = m.unmarshal<VX::Time>(read.data.time); rc.isErr()) return rc;
            break;
        case DST_STRING: {
            String text;
            if (XCode rc = m.unmarshal<String>(text); rc.isErr()) return rc;
            read.data.string = std::move(text);
            break;
        }
        default:
            break;
    }
    *this = std::move(read);
    return XCode();
}

// The in-process form is the tagged form: it owns no pointers, so a copy can
// never outlive memory it refers to, and it reads back an equal value.
VXMarshaller& operator<<(VXMarshaller& m, const Value& v) {
    (void)v.marshal(m);
    return m;
}

VXMarshaller& operator>>(VXMarshaller& m, Value& v) {
    (void)v.unmarshal(m);
    return m;
}

}  // namespace VX::SysEvent
