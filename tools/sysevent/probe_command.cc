// The probe command: a formula's values as the engine holds them. The usual
// display text hides what a rule author sometimes needs to know (3 and 3.0
// print alike, a date and a date-time at midnight too), so probe prints each
// value's kind and marshalled bytes, reads those bytes back, and shows what
// every conversion a function may apply to an argument makes of the value.
#include <iterator>
#include <utility>

#include "host/runtime/marshaller.h"
#include "sysevent/repository/repository.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

using VX::SysEvent::DataSubType;
using VX::SysEvent::ENGINE_ERROR_BASE;
using VX::SysEvent::Repository;
using VX::SysEvent::Value;

namespace {

String kindOf(DataSubType st) {
    static const char* const kNames[] = {"undefined", "empty", "boolean", "uint",     "float",
                                         "date-time", "date",  "time",    "duration", "string",
                                         "error",     "error", "error",   "error",    "error"};
    if (st < 0 || static_cast<size_t>(st) >= std::size(kNames))
        return String::Formatted("kind %d", static_cast<int>(st));
    return kNames[st];
}

// A value with its kind ("3:uint"); a string shows in quotes, so its kind
// goes without saying.
String shown(const Value& v) {
    if (v.subtype == VX::SysEvent::DST_STRING || v.getDataType() == VX::SysEvent::DT_ERROR)
        return v.toString();
    return v.toString() + ":" + kindOf(v.subtype);
}

// A failed conversion: the error value its code stands for, else the code.
String refused(const XCode& rc) {
    const uint32_t code = rc.getValue();
    if (code > ENGINE_ERROR_BASE && code < ENGINE_ERROR_BASE + 15)
        return "fails " + Value(static_cast<DataSubType>(code - ENGINE_ERROR_BASE)).toString();
    return String::Formatted("fails 0x%08X", code);
}

String hex(const VXMarshaller& m) {
    String out;
    for (size_t i = 0; i < m.getLength(); ++i) {
        out += String::Formatted(i == 0 ? "%02x" : " %02x", m.getData()[i]);
    }
    return out;
}

}  // namespace

bool Session::cmdProbe(const CommandLine& cmd, Failure& failure) {
    VXVector<Value> values;
    if (!evaluateRest(cmd, values, failure)) return false;
    using Conversion = XCode (Value::*)();
    static const std::pair<const char*, Conversion> kConversions[] = {
        {"boolean", &Value::toBoolean},       {"uint", &Value::toUInt},
        {"whole", &Value::toUIntStrict},      {"float", &Value::toFloat},
        {"number", &Value::toNumber},         {"time", &Value::toTime},
        {"date", &Value::toAbsDate},          {"time-of-day", &Value::toAbsTime},
        {"date-time", &Value::toAbsDateTime}, {"duration", &Value::toRelTime},
        {"corrected", &Value::correctTime},   {"text", &Value::toText},
    };
    for (const Value& value : values) {
        VXMarshaller m;
        String bytes = value.marshal(m).isSuccess() ? hex(m) : String("(not marshalled)");
        // What the bytes read back as must marshal to the same bytes.
        Value back(VX::SysEvent::DST_ERR_GENERIC);
        VXMarshaller again;
        const bool same = back.unmarshal(m).isSuccess() && m.getLength() == 0 &&
                          back.marshal(again).isSuccess() && hex(again) == bytes;
        output_.line("= " + shown(value) + " [" + bytes + "]" +
                     (same ? "" : " (reads back unlike)"));
        String line = " ";
        for (const auto& [name, convert] : kConversions) {
            Value v = value;
            XCode converted = (v.*convert)();
            line +=
                String(" ") + name + " " + (converted.isSuccess() ? shown(v) : refused(converted));
            if (converted.isErr() &&
                (v.subtype != value.subtype || v.toString() != value.toString()))
                line += " (changed)";
        }
        output_.line(line);
    }
    return true;
}

}  // namespace SysEventTool
