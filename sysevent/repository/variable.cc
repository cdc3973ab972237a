// CVariable: writing a published variable.
#include "sysevent/repository/variable.h"

namespace VX::SysEvent {

CVariable::CVariable(const String& name, const String& description) : CInherit(name, description) {}

XCode CVariable::setValue(const Value& value) {
    proxy()->setValue(value);
    return XCode();
}

String CVariable::getType() const {
    return "variable";
}

InfoContainer& CVariable::getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                                  unsigned columnLimit, unsigned column,
                                  const String& prefix) const {
    addInfoRows(
        info, depthLimit, depth, columnLimit, column, prefix + "Variable",
        {{"Description", m_description}, {"Value", proxy()->getLastEvent().value.toString()}});
    return info;
}

}  // namespace VX::SysEvent
