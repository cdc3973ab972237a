// Repository: the engine's public entry point for named values. It creates,
// finds, changes and destroys the published objects (constants, variables,
// expressions, expression sets), evaluates formula texts on demand, matches
// names against name patterns and attaches client Observers.
//
// It keeps no table of its own: published objects live in the host's driver
// repository under "var/" + name (driver type DID_Variable), and the value
// of every name lives in its proxy node (ProxyRepository).
//
// Locking: the static operations take the engine lock (VX::SysEvent::LOCK())
// for the duration of the call and forward to the instance; the member
// operations expect the caller to hold it (VXLockPtr<Repository> does). The
// lock is re-entrant, so member operations, the parser and observer callbacks
// may call the static operations again.
//
// Errors are XCodes with the generic failure code (0x7FFFFFFF) and these
// texts, "%s" being the name the caller passed:
//   "VARIABLE DOES NOT EXIST: %s"             look-up of an unknown name
//   "VARIABLE DOES NOT HAVE READ ACCESS: %s"  no IRead
//   "VARIABLE DOES NOT HAVE WRITE ACCESS: %s" no IWrite (constants, expressions)
//   "VARIABLE IS NOT AN EXPRESSION: %s"       no IExpression
//   "INVALID REGULAR EXPRESSION"              a pattern that does not compile
// setValue prefixes a refusal with "COULD NOT CHANGE VARIABLE: %s: " and a
// failed creation on the fly with "COULD NOT CREATE VARIABLE ON THE FLY: %s: ".
// Errors of the driver repository, the parser and the objects pass unchanged.
//
// Names and patterns: a name containing '%' or '{' is a pattern
// (Lexer::NAME_TO_REGEX). A name beginning with "db." denotes a field of the
// configuration database: looking it up creates a variable of that name on
// the fly (description "Database field", value "#N/A!" until written).
//
// Names already in use: creating a constant or an expression (or an
// expression set) under a name that a published object already has fails
// with the driver repository's "DRIVER ALREADY EXISTS: var/<name>", and the
// published object stays bound to the name. Creating a variable under such a
// name writes the value to the name's proxy node, gives the published object
// the new description and succeeds without registering anything: so setValue
// on a constant or an expression succeeds too (its description becoming
// empty), and the name shows the value until what it is bound to changes.
// Setting the formula of an expression set by its name tries to create it
// again (a set has no node, so it is never found) and is refused likewise.
//
// Re-evaluation: creating or destroying a name re-evaluates the expressions
// (reevaluateExpressions), so formulas pick up names that appeared or
// vanished. Only formulas whose parse looked up such a name, exactly or
// through a pattern, and expressions whose name was dropped are
// re-evaluated; every other one would come out of the parser unchanged and
// is left alone. Each one re-evaluated behaves as its reevaluateExpression:
// it is logged and its expression observers are told.
#pragma once

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

class Observer;
class CConstant;
class CVariable;

class Repository : public VX::RefCounted {
public:
    // The one instance, made on first use, never destroyed. Its lock
    // (getLock()) is the engine lock.
    static VXPtr<Repository> INSTANCE();

    // Static operations: each takes the engine lock and forwards to the
    // member operation of the same name (below).
    static XCode CREATE_CONSTANT(const String& name, const String& description, const Value& value);
    static void DESTROY_CONSTANT(const String& name);
    static XCode SET_VALUE(const String& name, const Value& value);
    static XCode GET_VALUE(const String& name, Value& value);
    static XCode GET(const String& name, VXPPtr<IWrite>& out);
    static XCode GET(const String& pattern, VXVector<VXPPtr<INode>>& out);
    static XCode GET_MATCHING_NAME_PREFIXES(const String& pattern, VXVector<String>& out);
    static bool IS_MATCHING_NAME_REG_EX(const String& pattern, const String& name);
    // True when `name` is a name pattern ('%' or '{') rather than one name.
    static bool IS_PATTERN(const String& name);

    // --- Member operations: the caller holds the engine lock. ---

    // Publishes a constant holding `value`; expressions over the name see it
    // at once. Then re-evaluates the expressions.
    XCode createConstant(const String& name, const String& description, const Value& value);
    // Publishes a variable holding `value` (see the header comment for a
    // name in use). Then re-evaluates the expressions.
    XCode createVariable(const String& name, const String& description, const Value& value);
    // Publishes an expression named context + "." + name (name alone for an
    // empty context) computing `text`, or, when the context is a pattern, an
    // expression set applying `text` under every name prefix matching it.
    // `out` receives its IExpression before it is registered, so it holds
    // the object also when that fails. A text that fails to parse (or closes
    // a cycle) leaves nothing published. Then re-evaluates the expressions; if
    // that fails, the new object is removed again and the failure returned.
    XCode createExpression(VXPPtr<IExpression>& out, const String& context, const String& name,
                           const String& text);
    XCode createExpression(const String& context, const String& name, const String& text);
    // Publish an object made by the caller (constructed from name,
    // description and, for a constant, value), then re-evaluate the
    // expressions. A constant under a taken name fails with the driver
    // repository's "DRIVER ALREADY EXISTS: var/<name>"; a variable under the
    // name of a published object with a node only hands that object its
    // description and succeeds. Either way the object published under the
    // name stays the name's object.
    XCode addConstant(const VXPtr<CConstant>& constant);
    XCode addVariable(const VXPtr<CVariable>& variable);

    // Unbinds the name (expressions over it see "#N/A!" until it is created
    // again) and removes its object from the driver repository, which
    // destroys it unless a client still holds it. Then re-evaluates the
    // expressions. A name nobody published is no error.
    void destroy(const String& name);
    void destroyConstant(const String& name) { destroy(name); }
    void destroyVariable(const String& name) { destroy(name); }
    void destroyExpression(const String& context, const String& name);

    // The published object of `name`, whatever it offers (expression sets
    // included), or "VARIABLE DOES NOT EXIST: %s". It only looks: a "db."
    // name nobody published is not created (get does that).
    XCode find(const String& name, VXPPtr<IUnknown>& out);
    // The published object of `name` (a "db." name is created on the fly),
    // as the wanted interface.
    XCode get(const String& name, VXPPtr<INode>& out);
    // get() for callers to whom an unpublished name is an expected answer
    // (the parser, which tries every name): success with `out` null then,
    // and no failure text made. Fails only where making a "db." name fails.
    XCode lookUp(const String& name, VXPPtr<INode>& out);
    XCode get(const String& name, VXPPtr<IRead>& out);
    XCode get(const String& name, VXPPtr<IWrite>& out);
    XCode get(const String& name, VXPPtr<IExpression>& out);
    // Replaces `out` with the nodes of the objects matching `pattern`, in the
    // driver repository's order. A plain name is looked up as by get (and
    // fails when it does not exist); a pattern succeeds also when nothing
    // matches. Expression sets are never listed (they have no node).
    XCode get(const String& pattern, VXVector<VXPPtr<INode>>& out);

    // Sets the value of a variable; a name nobody published becomes a new
    // variable (empty description) holding the value.
    XCode setValue(const String& name, const Value& value);
    XCode getValue(const String& name, Value& value);

    // Sets the formula of the expression context.name (or name), creating
    // it when it does not exist.
    XCode setExpression(const String& context, const String& name, const String& text);
    // Evaluates every expression in `text` (one per root of the parse, so a
    // lone pattern gives one value per matching name) and replaces `out`
    // with their values, in order. Publishes nothing.
    XCode evaluateExpression(const String& context, const String& text, VXVector<Value>& out);
    // Re-evaluates the formulas that a name change since their last parse
    // may affect, in registration order. Stops at the first failure and
    // returns it (that formula, and those not reached, are tried again next
    // time).
    XCode reevaluateExpressions();

    // Subscribes `observer` to every object matching `pattern` now (plain
    // name: fails when it does not exist). Later objects are the Observer's
    // own business.
    XCode addObserver(Observer& observer, const String& pattern, bool notifyNow);
    // Unsubscribes `observer` from the objects matching `pattern`; an empty
    // pattern unsubscribes it from everything. Errors are not reported.
    void removeObserver(Observer& observer, const String& pattern);

    // Whether `name` matches `pattern` as a whole name; false for a pattern
    // that does not compile.
    bool isMatchingNameRegEx(const String& pattern, const String& name);
    // Replaces `out` with the distinct leading parts of published names that
    // `pattern` covers (a prefix match), in order of first appearance.
    XCode getMatchingNamePrefixes(const String& pattern, VXVector<String>& out);

protected:
    ~Repository() override = default;

private:
    Repository();
};

}  // namespace VX::SysEvent
