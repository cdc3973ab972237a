// Explaining a value: the provenance of a published name as a plain tree of
// rows, read from the evaluation graph as it stands. Each row is one node of
// the expression under the name: a function application with its inner
// state (pending debounced values, delay queues, latches), a name with what
// it is bound to, or a literal. Dirty nodes are reported as dirty with the
// value they last stored; nothing is recomputed unless a fresh reading is
// asked for, so that explaining a value never changes what it explains.
#pragma once

#include "host/runtime/containers.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/graph/function_node.h"
#include "sysevent/value/event.h"

namespace VX::SysEvent {

struct ExplainRow {
    enum Kind { NAME, FUNCTION, LITERAL };
    Kind kind = LITERAL;
    unsigned depth = 0;  // 0 for the explained name; children one deeper
    // NAME: the name; FUNCTION: the function name; LITERAL: the literal's key.
    String text;
    Event event;  // the node's last event as stored
    bool dirty = false;
    // NAME: "constant", "variable", "expression" (what the name is published
    // as) or "#N/A! placeholder" when nothing is published under it.
    String binding;
    VXVector<FunctionState> state;  // FUNCTION: its describeState items
};

// Fills `rows` with the tree under the published name `name`, depth first in
// argument order; a name bound to an expression continues with that
// expression's tree. With `fresh` the name's value is brought up to date
// first (which recomputes dirty nodes below it). Takes the engine lock.
// Fails with "VARIABLE DOES NOT EXIST: <name>" when nothing is published
// under the name.
XCode EXPLAIN_VALUE(const String& name, bool fresh, VXVector<ExplainRow>& rows);

}  // namespace VX::SysEvent
