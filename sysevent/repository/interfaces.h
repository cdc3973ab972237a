// The interfaces of published objects, as clients find them in the driver
// repository (under "var/" + name, driver type DID_Variable):
//
//   INode        the name's node in the evaluation graph (constants,
//                variables, expressions; never expression sets)
//   IRead        name, description, type and value, and value observers
//   IWrite       setting the value (variables only)
//   IExpression  the formula of an expression or expression set
//
// Every operation expects the object's lock (getLock(), the engine lock) to
// be held by the caller; the Repository's static operations take it.
#pragma once

#include "host/component/unknown.h"
#include "host/component/uuid.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

// A graph node: the engine's own, so only declared here (clients hold it only
// through INode::getNode, which the engine's code resolves).
class ProxyNode;
class IReadObserver;
class IExpressionObserver;

class INode : public virtual IUnknown {
public:
    static const VX::UUID& IID();

    // The proxy node of the object's name (never null while the object lives).
    virtual VXLWPtr<ProxyNode> getNode() = 0;
    // Unbinds the name at once: its proxy node is re-targeted to a fresh
    // "#N/A!" placeholder, which every expression over the name then sees.
    // The object itself lives on.
    virtual void dropNode() = 0;
    virtual void updateDescription(const String& description) = 0;

protected:
    ~INode() override = default;
};

class IRead : public virtual IUnknown {
public:
    static const VX::UUID& IID();

    // Registers `observer` (not owned; it must be removed before it dies),
    // ahead of the registrations present, so the newest is told first. The
    // same observer registered twice is told twice. With notifyNow the
    // observer is told at once of a change from an undefined value to the
    // current one. Always succeeds.
    virtual XCode addValueObserver(IReadObserver* observer, bool notifyNow) = 0;
    // Withdraws one registration of `observer` (the newest live one); no
    // effect when it has none. Safe during a notification: the registration
    // is skipped from then on and cleaned up afterwards.
    virtual void removeValueObserver(IReadObserver* observer) = 0;
    virtual String getName() const = 0;
    virtual String getDescription() const = 0;
    // "constant", "variable" or "expression".
    virtual String getType() const = 0;
    // The current value of the name, brought up to date if it is stale.
    virtual Value getValue() const = 0;

protected:
    ~IRead() override = default;
};

class IWrite : public virtual IUnknown {
public:
    static const VX::UUID& IID();

    // Sets the value of the name. Observers are told if it changed, and the
    // change propagates to the expressions over the name (unless a
    // propagation is already running: then it is stored and observed only).
    virtual XCode setValue(const Value& value) = 0;

protected:
    ~IWrite() override = default;
};

class IExpression : public virtual IUnknown {
public:
    static const VX::UUID& IID();

    // As IRead::addValueObserver, for changes of the formula. An expression
    // set hands its observers to the members it creates later and ignores
    // notifyNow.
    virtual XCode addExpressionObserver(IExpressionObserver* observer, bool notifyNow) = 0;
    virtual void removeExpressionObserver(IExpressionObserver* observer) = 0;
    virtual String getContext() const = 0;
    // An expression: its description, "<name> := <text>" once a formula was
    // set. An expression set: the formula text.
    virtual String getExpression() const = 0;
    // Parses `text` in the object's context and makes it the formula. An
    // empty text changes nothing and succeeds. On failure (parse error,
    // "CIRCULAR REFERENCE", ...) the previous formula stays in force.
    virtual XCode setExpression(const String& text) = 0;
    // Parses the formula again, so that names which appeared or vanished
    // since it was last parsed are picked up. Nothing happens (success) when
    // no formula was set yet, or when no name that the formula's parse
    // looked up (exactly or through a pattern) has appeared or vanished since.
    virtual XCode reevaluateExpression() = 0;

protected:
    ~IExpression() override = default;
};

}  // namespace VX::SysEvent
