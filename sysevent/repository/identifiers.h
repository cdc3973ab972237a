// Identifiers of the published objects: the driver type under which every
// constant, variable, expression and expression set is registered, the class
// identifiers published for clients, and the prefix of every driver name.
// The interface identifiers are members of their interfaces (interfaces.h).
//
// Each accessor returns a process-wide constant; the values are fixed for
// ever, because components of other processes compare them.
#pragma once

#include "host/runtime/string.h"
#include "host/component/uuid.h"

namespace VX::SysEvent {

// Every published object's driver name is this prefix followed by its name.
inline constexpr const char* DRIVER_NAME_PREFIX = "var/";

// The driver type of every published object.
const VX::UUID& DID_Variable();

// Class identifiers, published for clients; the engine does not consult them.
const VX::UUID& CID_Constant();
const VX::UUID& CID_Variable();
const VX::UUID& CID_Expression();
const VX::UUID& CID_ExpressionSet();

// DRIVER_NAME_PREFIX + name.
inline String DRIVER_NAME_OF(const String& name) {
    return String(DRIVER_NAME_PREFIX) + name;
}

}  // namespace VX::SysEvent
