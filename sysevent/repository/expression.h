// CExpression: a published expression, a named value computed by a formula
// over other names. Its name's proxy node is bound to the root of the
// formula's graph, so clients and other expressions read and observe it like
// any other name. Names in the formula are resolved in the expression's
// context ("pi" in context "example" is "pi" if that exists, else
// "example.pi").
//
// Setting a formula that cannot be parsed, or that would make the name depend
// on itself ("CIRCULAR REFERENCE"), fails and keeps the previous formula.
#pragma once

#include "host/component/inherit.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/repository/constant.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/observer_list.h"
#include "sysevent/repository/reevaluation_index.h"

namespace VX::SysEvent {

class CExpression : public CInherit<CExpression, CConstant, IExpression>, public Reevaluable {
public:
    // The expression context + "." + name (name alone for an empty context),
    // without a formula: it reads "#N/A!" until one is set.
    CExpression(const String& context, const String& name);

    // The full name of an expression made from `context` and `name`.
    static String FULL_NAME(const String& context, const String& name);

    // IExpression (see interfaces.h). setExpression logs "[%s] Update
    // expression: %s" above verbosity 2, and a failure "[%s] Updating
    // expression failed: %s" at level 4. On success the description becomes
    // "<name> := <text>" and the expression observers are told.
    XCode addExpressionObserver(IExpressionObserver* observer, bool notifyNow) override;
    void removeExpressionObserver(IExpressionObserver* observer) override;
    String getContext() const override;
    String getExpression() const override;
    XCode setExpression(const String& text) override;
    // setExpression with the formula in force: parsed again only if a name
    // it looked up appeared or vanished since, bound again if the name was
    // dropped, logged and told to the expression observers in any case.
    XCode reevaluateExpression() override;
    // INode: unbinds the name like any object, until the next re-evaluation.
    void dropNode() override;

    // "<name> := <text>" of the formula in force, unless a description was
    // given since.
    String getDescription() const override;
    void updateDescription(const String& description) override;
    String getType() const override;
    // Rows (prefix + "Expression", name), then Context, Expression and Value.
    InfoContainer& getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                           unsigned columnLimit, unsigned column,
                           const String& prefix) const override;

    // The text of the formula in force (empty before the first success).
    const String& getText() const { return m_text; }

protected:
    ~CExpression() override = default;
    void callDtor() override;

private:
    // Parses `text` (or reuses the graph in force when `text` is the formula
    // in force and no name it depends on changed) and binds the name to it.
    XCode bind(const String& text);
    // The description: made from the name and the formula when it is the
    // derived one, which every expression has and few are ever asked for.
    String description() const;

    const Text m_context;  // one word; most expressions have none
    String m_text;
    ObserverList<IExpressionObserver> m_expressionObservers;
    bool m_busy = false;  // a setExpression of this object is running
    // The description is "<name> := <m_text>", made when asked for.
    bool m_descriptionDerived = false;
};

}  // namespace VX::SysEvent
