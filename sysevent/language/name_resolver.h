// NameResolver: how the parser finds the nodes of published objects by name
// or name pattern. The Repository implements it over the driver repository;
// whoever parses passes the resolver to use (and learns from it what the
// parse looked up). The parser never invents published objects of its own. Names no resolver knows
// become undefined references (ProxyRepository::getOrCreate), which bind once an object of that
// name is created.
#pragma once

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/graph/node.h"

namespace VX::SysEvent {

class NameResolver {
public:
    virtual ~NameResolver() = default;

    // Replaces the contents of `nodes` with the nodes of the published
    // objects whose names match `name`, in the resolver's order. A name
    // containing '%' or '{' is a pattern (Lexer::NAME_TO_REGEX) and succeeds
    // even when nothing matches; any other name is exact and fails when no
    // object has it. Called with the engine lock held.
    virtual XCode resolve(const String& name, VXVector<VXLWPtr<Node>>& nodes) = 0;

    // True when `name` is a pattern rather than an exact name.
    static bool IS_PATTERN(const String& name) {
        return name.indexOf('%') >= 0 || name.indexOf('{') >= 0;
    }
};

}  // namespace VX::SysEvent
