// CVariable: a published variable, a named value that clients write. Its
// value is written into the name's proxy node itself (the node's target keeps
// whatever the name was bound to), so a change propagates from there to every
// expression over the name.
#pragma once

#include "host/component/inherit.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/repository/constant.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

class CVariable : public CInherit<CVariable, CConstant, IWrite> {
public:
    // A name left as it is bound ("#N/A!" for a name nobody bound yet).
    CVariable(const String& name, const String& description);

    // IWrite: writes the value into the name's proxy node; observers are told
    // and expressions follow (not during a running propagation: then the
    // value is only stored and observed). Always succeeds, also while
    // another object is published under the name: the name's proxy node then
    // holds the value until what it is bound to changes.
    XCode setValue(const Value& value) override;

    String getType() const override;
    // Rows (prefix + "Variable", name), then Description and Value.
    InfoContainer& getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                           unsigned columnLimit, unsigned column,
                           const String& prefix) const override;

protected:
    ~CVariable() override = default;
};

}  // namespace VX::SysEvent
