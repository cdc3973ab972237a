// CExpressionSet: one formula applied under every name prefix that matches a
// pattern. A set with context "port%" and name "load" over the published
// names port1.rx and port2.rx has the members port1.load and port2.load,
// each a published CExpression evaluating the formula in its own context
// ("port1", "port2"). Members come and go as matching names appear and
// vanish, at each setExpression or re-evaluation.
//
// The set itself is registered under "var/" + context + "." + name but has
// no node and no value: look-ups by name never find it.
#pragma once

#include "host/runtime/containers.h"
#include "host/component/driver.h"
#include "host/component/info.h"
#include "host/component/inherit.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/repository/expression.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/observer_list.h"
#include "sysevent/repository/reevaluation_index.h"

namespace VX::SysEvent {

class CExpressionSet : public CInherit<CExpressionSet, CDriver, IInfo, IExpression>,
                       public Reevaluable {
public:
    // A set without members; `context` is a name pattern.
    CExpressionSet(const String& context, const String& name);

    // IExpression. setExpression makes (and publishes) a member for every
    // new matching prefix, sets `text` on every member, and removes the
    // members whose prefix no longer matches. A failure on any member fails
    // the whole operation: the members made by it are removed again, the
    // previous members stay (those reached already carry the new text) and
    // "[%s] Updating set of expressions failed: %s" is logged at level 4.
    // Expression observers of the set are handed to the members it makes
    // later (notifyNow is ignored), not to those present.
    XCode addExpressionObserver(IExpressionObserver* observer, bool notifyNow) override;
    void removeExpressionObserver(IExpressionObserver* observer) override;
    String getContext() const override;
    // The formula text.
    String getExpression() const override;
    XCode setExpression(const String& text) override;
    XCode reevaluateExpression() override;

    // Rows (prefix + "Expression Set", name), Context, Expression and an
    // empty Expressions row, then each member's rows two levels deeper.
    InfoContainer& getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                           unsigned columnLimit, unsigned column,
                           const String& prefix) const override;

    // The members, keyed by prefix immediately followed by the set's name.
    using Members = VXStringHashTable<VXPtr<CExpression>>;
    const Members& getMembers() const { return m_members; }

protected:
    ~CExpressionSet() override = default;
    // Removes every member, then deletes the set; under the engine lock.
    void callDtor() override;

private:
    // Unregisters the set's expression observers from each member of
    // `members`, removes it from the driver repository and empties the table.
    void dropAllExpressions(Members& members);

    const String m_context;
    const String m_name;
    const String m_fullName;
    ObserverList<IExpressionObserver> m_expressionObservers;
    String m_text;
    Members m_members;
    bool m_destroying = false;
    static unsigned s_infoNesting;
};

}  // namespace VX::SysEvent
