// Typed accessors: one read through the Repository, then a strict check of
// the value's kind. Nothing is converted: a client that asks for a double
// gets an error for an integer, so it notices when a name changes its kind.
#include "sysevent/repository/typed_accessors.h"

#include "sysevent/repository/repository.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

namespace {

XCode invalidDataType() {
    return XCode::Failure("INVALID DATA TYPE");
}

// Reads `name`; on success `accepts` decides on the value's kind and `store`
// copies its payload into the caller's out parameter.
template <typename Accepts, typename Store>
XCode readChecked(const String& name, Accepts accepts, Store store) {
    Value value;
    XCode rc = Repository::GET_VALUE(name, value);
    if (rc.isErr()) return rc;
    if (!accepts(value)) return invalidDataType();
    store(value);
    return XCode();
}

bool isSubtype(const Value& v, DataSubType st) {
    return v.subtype == st;
}

}  // namespace

XCode GET_VALUE(const String& name, bool& out) {
    return readChecked(
        name, [](const Value& v) { return isSubtype(v, DST_BOOL); },
        [&out](const Value& v) { out = v.data.boolean; });
}

XCode GET_VALUE(const String& name, unsigned long long& out) {
    return readChecked(
        name, [](const Value& v) { return isSubtype(v, DST_UINT); },
        [&out](const Value& v) { out = v.data.uint; });
}

XCode GET_VALUE(const String& name, double& out) {
    return readChecked(
        name, [](const Value& v) { return isSubtype(v, DST_FLP); },
        [&out](const Value& v) { out = v.data.flp; });
}

XCode GET_VALUE(const String& name, VX::Clock& out) {
    return readChecked(
        name,
        [](const Value& v) {
            return isSubtype(v, DST_ABS_DATE_TIME) || isSubtype(v, DST_ABS_DATE) ||
                   isSubtype(v, DST_ABS_TIME);
        },
        [&out](const Value& v) { out = VX::Clock(v.data.time, 0); });
}

XCode GET_VALUE(const String& name, VX::Time& out) {
    return readChecked(
        name, [](const Value& v) { return v.getDataType() == DT_TIME; },
        [&out](const Value& v) { out = v.data.time; });
}

XCode GET_VALUE(const String& name, String& out) {
    return readChecked(
        name, [](const Value& v) { return isSubtype(v, DST_STRING); },
        [&out](const Value& v) { out = v.data.string; });
}

XCode SET_VALUE(const String& name, unsigned long long n) {
    return Repository::SET_VALUE(name, Value(n));
}

}  // namespace VX::SysEvent
