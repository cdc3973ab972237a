// The key under which a literal's constant node is shared engine-wide. It is
// also the node's name, so it shows in every normalized expression that uses
// the literal.
#pragma once

#include "host/runtime/string.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

// The display text of `v` (Value::toString), made exact where the display
// text loses information, so that two literals share a node only when they
// are the same value of the same kind:
// - a float gets the shortest "%.Ng" text that reads back as the same double,
//   and ".0" when that text would read as an integer (2.0 -> "2.0", so that it
//   never shares the unsigned 2); 0.1 stays "0.1";
// - a string with an embedded NUL keeps its bytes past the NUL.
String LITERAL_KEY(const Value& v);

}  // namespace VX::SysEvent
