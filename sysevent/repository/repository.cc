// Repository: the instance, the static entry points, and creating, finding,
// changing and destroying published objects.
#include "sysevent/repository/repository.h"

#include <new>

#include "host/component/driver_repository.h"
#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "sysevent/language/name_resolver.h"
#include "sysevent/language/parser.h"
#include "sysevent/repository/constant.h"
#include "sysevent/repository/expression.h"
#include "sysevent/repository/expression_set.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/name_lookup.h"
#include "sysevent/repository/reevaluation_index.h"
#include "sysevent/repository/variable.h"

namespace VX::SysEvent {

namespace {

XCode failure(const char* format, const String& name) {
    return XCode::Failure(String::Formatted(format, name.c_str()));
}

// Running out of memory inside an operation is the generic failure: each
// operation that builds something ends in a handler returning this, and
// undoes what it had published (see createExpression).
XCode outOfMemory() {
    return XCode(XCode::GENERIC_FAILURE);
}

// Publishes `driver`. Running out of memory on the way (while the observers
// of the driver repository hear of it) takes it out again: a failed creation
// publishes nothing.
XCode publish(const VXPPtr<IDriver>& driver) {
    try {
        return DRIVER::ADD(driver);
    } catch (const std::bad_alloc&) {
        if (driver->getDriverRepository()) DRIVER::REMOVE(driver);
        return outOfMemory();
    }
}

// The re-evaluation after a name appeared, whose result nobody uses: a
// formula it could not finish for want of memory stays stale and is tried
// again next time, and the new name stays published.
void reevaluateAfterPublishing(Repository& repository) {
    try {
        repository.reevaluateExpressions();
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace

Repository::Repository() : VX::RefCounted(&LOCK()) {}

VXPtr<Repository> Repository::INSTANCE() {
    static Repository* const s_instance = [] {
        Repository* repository = new Repository();
        repository->addRef();  // never destroyed
        return repository;
    }();
    return VXPtr<Repository>(s_instance);
}

// --- Static operations ---

XCode Repository::CREATE_CONSTANT(const String& name, const String& description,
                                  const Value& value) {
    VXLockPtr<Repository> repository(INSTANCE());
    return repository->createConstant(name, description, value);
}

void Repository::DESTROY_CONSTANT(const String& name) {
    VXLockPtr<Repository> repository(INSTANCE());
    repository->destroyConstant(name);
}

XCode Repository::SET_VALUE(const String& name, const Value& value) {
    VXLockPtr<Repository> repository(INSTANCE());
    return repository->setValue(name, value);
}

XCode Repository::GET_VALUE(const String& name, Value& value) {
    VXLockPtr<Repository> repository(INSTANCE());
    return repository->getValue(name, value);
}

XCode Repository::GET(const String& name, VXPPtr<IWrite>& out) {
    VXLockPtr<Repository> repository(INSTANCE());
    return repository->get(name, out);
}

XCode Repository::GET(const String& pattern, VXVector<VXPPtr<INode>>& out) {
    VXLockPtr<Repository> repository(INSTANCE());
    return repository->get(pattern, out);
}

XCode Repository::GET_MATCHING_NAME_PREFIXES(const String& pattern, VXVector<String>& out) {
    VXLockPtr<Repository> repository(INSTANCE());
    return repository->getMatchingNamePrefixes(pattern, out);
}

bool Repository::IS_MATCHING_NAME_REG_EX(const String& pattern, const String& name) {
    VXLockPtr<Repository> repository(INSTANCE());
    return repository->isMatchingNameRegEx(pattern, name);
}

// --- Creating ---

XCode Repository::createConstant(const String& name, const String& description,
                                 const Value& value) try {
    // Under a name in use the driver repository refuses the constant, and
    // its text is the answer; the constant never binds a name it does not own.
    VXPtr<CConstant> constant(new (std::nothrow) CConstant(name, description, value));
    if (!constant) return XCode(XCode::GENERIC_FAILURE);
    return addConstant(constant);
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

XCode Repository::addConstant(const VXPtr<CConstant>& constant) try {
    if (!constant) return XCode(XCode::GENERIC_FAILURE);
    if (XCode rc = publish(VXPPtr<IDriver>(constant.get())); rc.isErr()) return rc;
    reevaluateAfterPublishing(*this);
    return XCode();
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

XCode Repository::createVariable(const String& name, const String& description,
                                 const Value& value) try {
    VXPtr<CVariable> variable(new (std::nothrow) CVariable(name, description));
    if (!variable) return XCode(XCode::GENERIC_FAILURE);
    // Writes the name's proxy node, whoever owns the name.
    if (XCode rc = variable->setValue(value); rc.isErr()) return rc;
    return addVariable(variable);
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

XCode Repository::addVariable(const VXPtr<CVariable>& variable) try {
    if (!variable) return XCode(XCode::GENERIC_FAILURE);
    VXPPtr<INode> existing;
    if (DRIVER::FIND_IF(variable->getDriverName(), existing)) {
        // The object published under the name stays the name's object and
        // takes the new description; the value is in the name's proxy node
        // already, so no formula needs to be parsed again.
        existing->updateDescription(variable->getDescription());
        return XCode();
    }
    if (XCode rc = publish(VXPPtr<IDriver>(variable.get())); rc.isErr()) return rc;
    reevaluateAfterPublishing(*this);
    return XCode();
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

XCode Repository::createExpression(VXPPtr<IExpression>& out, const String& context,
                                   const String& name, const String& text) try {
    VXPPtr<IDriver> driver;
    if (NameResolver::IS_PATTERN(context)) {
        VXPtr<CExpressionSet> set(new (std::nothrow) CExpressionSet(context, name));
        if (!set) return XCode(XCode::GENERIC_FAILURE);
        driver = set.get();
        out = set.get();
    } else {
        VXPtr<CExpression> single(new (std::nothrow) CExpression(context, name));
        if (!single) return XCode(XCode::GENERIC_FAILURE);
        driver = single.get();
        out = single.get();
    }
    // `out` holds the object from here on, also when it is refused: under a
    // name in use the driver repository's own text is the answer.
    if (XCode rc = publish(driver); rc.isErr()) return rc;
    XCode rc;
    bool parsed = false;
    try {
        rc = out->setExpression(text);
        parsed = rc.isSuccess();
        if (parsed) rc = reevaluateExpressions();
    } catch (const std::bad_alloc&) {
        rc = outOfMemory();
    }
    if (rc.isErr()) {
        DRIVER::REMOVE(driver->getDriverName());
        if (parsed) reevaluateExpressions();
        return rc;
    }
    return XCode();
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

XCode Repository::createExpression(const String& context, const String& name, const String& text) {
    VXPPtr<IExpression> expression;
    return createExpression(expression, context, name, text);
}

// --- Destroying ---

void Repository::destroy(const String& name) {
    {
        VXPPtr<INode> node;
        if (get(name, node).isSuccess()) node->dropNode();
    }
    DRIVER::REMOVE(DRIVER_NAME_OF(name));
    reevaluateExpressions();
}

void Repository::destroyExpression(const String& context, const String& name) {
    destroy(CExpression::FULL_NAME(context, name));
}

// --- Finding ---

bool Repository::IS_PATTERN(const String& name) {
    return NameResolver::IS_PATTERN(name);
}

XCode Repository::find(const String& name, VXPPtr<IUnknown>& out) {
    out = nullptr;
    if (DRIVER::FIND_IF(DRIVER_NAME_OF(name), out)) return XCode();
    return failure("VARIABLE DOES NOT EXIST: %s", name);
}

XCode Repository::get(const String& name, VXPPtr<INode>& out) {
    if (XCode rc = lookUp(name, out); rc.isErr()) return rc;
    if (out) return XCode();
    return failure("VARIABLE DOES NOT EXIST: %s", name);
}

XCode Repository::lookUp(const String& name, VXPPtr<INode>& out) {
    if (DRIVER::FIND_IF(DRIVER_NAME_OF(name), out)) return XCode();
    if (name.startsWith("db.")) {
        // Database fields come into being when first looked up; the
        // database tracker writes their value.
        VXPtr<CVariable> variable(new (std::nothrow) CVariable(name, "Database field"));
        if (!variable) return XCode(XCode::GENERIC_FAILURE);
        if (XCode rc = addVariable(variable); rc.isErr()) return rc;
        out = variable.get();
        return XCode();
    }
    return XCode();
}

XCode Repository::get(const String& name, VXPPtr<IRead>& out) {
    out = nullptr;
    VXPPtr<INode> node;
    if (XCode rc = get(name, node); rc.isErr()) return rc;
    if (node->queryIf(out).isErr()) return failure("VARIABLE DOES NOT HAVE READ ACCESS: %s", name);
    return XCode();
}

XCode Repository::get(const String& name, VXPPtr<IWrite>& out) {
    out = nullptr;
    VXPPtr<INode> node;
    if (XCode rc = get(name, node); rc.isErr()) return rc;
    if (node->queryIf(out).isErr()) return failure("VARIABLE DOES NOT HAVE WRITE ACCESS: %s", name);
    return XCode();
}

XCode Repository::get(const String& name, VXPPtr<IExpression>& out) {
    out = nullptr;
    VXPPtr<INode> node;
    if (XCode rc = get(name, node); rc.isErr()) return rc;
    if (node->queryIf(out).isErr()) return failure("VARIABLE IS NOT AN EXPRESSION: %s", name);
    return XCode();
}

// --- Values and formulas ---

XCode Repository::setValue(const String& name, const Value& value) try {
    VXPPtr<IWrite> writable;
    if (get(name, writable).isSuccess()) {
        XCode rc = writable->setValue(value);
        if (rc.isErr()) {
            rc.extendString(String::Formatted("COULD NOT CHANGE VARIABLE: %s", name.c_str()), ": ");
        }
        return rc;
    }
    XCode rc = createVariable(name, String(), value);
    if (rc.isErr()) {
        rc.extendString(String::Formatted("COULD NOT CREATE VARIABLE ON THE FLY: %s", name.c_str()),
                        ": ");
    }
    return rc;
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

XCode Repository::getValue(const String& name, Value& value) {
    VXPPtr<IRead> readable;
    if (XCode rc = get(name, readable); rc.isErr()) return rc;
    value = readable->getValue();
    return XCode();
}

XCode Repository::setExpression(const String& context, const String& name, const String& text) try {
    // An expression set has no node, so it is never found here: setting
    // the formula of one under its own name tries to create it again and
    // gets the driver repository's refusal.
    VXPPtr<IExpression> expression;
    if (get(CExpression::FULL_NAME(context, name), expression).isSuccess()) {
        return expression->setExpression(text);
    }
    return createExpression(context, name, text);
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

XCode Repository::evaluateExpression(const String& context, const String& text,
                                     VXVector<Value>& out) try {
    out.clear();
    // The look-ups of this parse are nobody's dependencies.
    RepositoryNameResolver names;
    Parser parser(&names);
    XCode rc = parser.parse(context, text);
    if (rc.isErr()) return rc;
    for (const VXLWPtr<Node>& root : parser.getRoots()) {
        if (!root) {
            out.clear();
            return XCode(XCode::GENERIC_FAILURE);
        }
        out.push_back(root->getLastEvent().value);
    }
    return XCode();
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

XCode Repository::reevaluateExpressions() {
    ReevaluationIndex& index = *ReevaluationIndex::INSTANCE();
    if (!index.hasStale()) return XCode();
    VXVector<VXPPtr<IExpression>> stale;
    index.collectStale(stale);
    for (const VXPPtr<IExpression>& expression : stale) {
        // An earlier re-evaluation may have removed it (a set drops members)
        // or re-evaluated it already (a set sets its members' formulas).
        VXPPtr<IDriver> driver;
        if (expression->queryIf(driver).isErr() || !driver->getDriverRepository()) continue;
        const auto* tracked = dynamic_cast<const Reevaluable*>(expression.get());
        if (tracked && !tracked->isStale()) continue;
        if (XCode rc = expression->reevaluateExpression(); rc.isErr()) return rc;
    }
    return XCode();
}

}  // namespace VX::SysEvent
