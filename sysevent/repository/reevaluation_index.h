// ReevaluationIndex: which formulas a name change may affect.
//
// A formula's parse resolves names through the Repository: each plain name
// is looked up as written and, in a context, qualified; each pattern is
// matched against every published name. Parsing the formula again gives the
// very same graph unless one of those looked-up names, or a name matching one
// of those patterns, has appeared or vanished in between (every other input
// of the parse, the function catalogue and the shared nodes, stays as it
// is). So re-evaluation after a name change needs to parse only the formulas
// that looked up that name; this index records, per formula, the names and
// patterns of its last successful parse, watches the driver repository for
// published names that appear or vanish, and marks the affected formulas
// stale. An expression set depends in the same way on the names its context
// pattern covers.
//
// Guarded by the engine lock: every call expects it held.
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/regex.h"
#include "host/runtime/string.h"
#include "sysevent/repository/interfaces.h"

namespace VX::SysEvent {

// The part of an expression or expression set that the index tracks. Holds
// no reference; the owner calls ReevaluationIndex::forget before it dies.
class Reevaluable {
public:
    explicit Reevaluable(IExpression* self);
    Reevaluable(const Reevaluable&) = delete;
    Reevaluable& operator=(const Reevaluable&) = delete;

    // True when a name that the last successful parse depended on has
    // appeared or vanished since.
    bool isStale() const { return m_stale; }

private:
    friend class ReevaluationIndex;
    IExpression* const m_self;
    uint64_t m_sequence;  // creation order: the order of re-evaluation
    bool m_stale = false;
    bool m_hasPatterns = false;
    // Most expressions have none: the list is made for the first.
    std::unique_ptr<VXVector<String>> m_names;  // exact names of the last successful parse
};

class ReevaluationIndex {
public:
    // The names and patterns that a parse looked up.
    struct Recording {
        VXVector<String> names;
        VXVector<String> patterns;
    };

    // The one index; made on first use (under the engine lock, which the
    // caller holds), never destroyed.
    static ReevaluationIndex* INSTANCE();

    // `r` now depends on what `recording` holds (replacing its old
    // dependencies) and is no longer stale.
    void setDependencies(Reevaluable& r, Recording& recording);
    // `r` (an expression set) depends on the names whose leading part
    // `context` covers.
    void addPrefixDependency(Reevaluable& r, const String& context);
    // `r` is (no longer) to be re-evaluated at the next occasion.
    void markStale(Reevaluable& r);
    void clearStale(Reevaluable& r);
    // Drops every trace of `r`.
    void forget(Reevaluable& r);

    // A published name appeared or vanished: marks its dependents stale.
    void nameChanged(const String& name);
    // The published stale formulas, in creation order, each counted.
    void collectStale(VXVector<VXPPtr<IExpression>>& out) const;
    bool hasStale() const { return !m_stale.empty(); }

private:
    ReevaluationIndex();
    class DriverWatch;

    struct PatternUse {
        VXPtr<VXRegEx::Pattern> regex;
        Reevaluable* user;
    };

    void dropDependencies(Reevaluable& r);
    // The compiled form of a regular expression text, compiled once.
    VXPtr<VXRegEx::Pattern> compile(const String& regex);

    uint64_t m_nextSequence = 0;
    VXStringHashTable<VXVector<Reevaluable*>> m_byName;
    VXVector<PatternUse> m_patterns;
    VXStringHashTable<VXPtr<VXRegEx::Pattern>> m_compiled;
    std::map<uint64_t, Reevaluable*> m_stale;
    DriverWatch* m_watch;  // never destroyed, like the index

    friend class Reevaluable;
};

}  // namespace VX::SysEvent
