// CExpressionSet: membership, formula and diagnostic rows of expression sets.
#include "sysevent/repository/expression_set.h"

#include <new>

#include "host/component/driver_repository.h"
#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "host/runtime/log.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {

unsigned CExpressionSet::s_infoNesting = 0;

CExpressionSet::CExpressionSet(const String& context, const String& name)
    : CInherit(DID_Variable(), DRIVER_NAME_OF(context + "." + name), &LOCK()),
      Reevaluable(static_cast<IExpression*>(this)),
      m_context(context),
      m_name(name),
      m_fullName(context + "." + name) {
    VXAutoLock held(LOCK());
    ReevaluationIndex::INSTANCE()->addPrefixDependency(*this, context);
}

XCode CExpressionSet::addExpressionObserver(IExpressionObserver* observer, bool) {
    m_expressionObservers.add(observer);
    return XCode();
}

void CExpressionSet::removeExpressionObserver(IExpressionObserver* observer) {
    m_expressionObservers.remove(observer);
}

String CExpressionSet::getContext() const {
    return m_context;
}

String CExpressionSet::getExpression() const {
    return m_text;
}

XCode CExpressionSet::setExpression(const String& text) {
    Members old = m_members;
    Members kept;
    Members created;

    // A context that is not a valid pattern has no prefixes.
    VXVector<String> prefixes;
    Repository::GET_MATCHING_NAME_PREFIXES(m_context, prefixes);

    XCode rc;
    for (const String& prefix : prefixes) {
        const String key = prefix + m_name;
        VXPtr<CExpression> member;
        if (auto it = old.find(key); it != old.end()) {
            member = it->second;
            old.erase(it);
            kept.emplace(key, member);
        } else {
            member = new (std::nothrow) CExpression(prefix, m_name);
            if (!member) {
                rc = XCode(XCode::GENERIC_FAILURE);
                break;
            }
            rc = DRIVER::ADD(VXPPtr<IDriver>(static_cast<IDriver*>(member.get())));
            if (rc.isErr()) break;
            created.emplace(key, member);
        }
        rc = member->setExpression(text);
        if (rc.isErr()) break;
    }

    if (rc.isErr()) {
        SYSEVENT_LOG(4, "[%s] Updating set of expressions failed: %s", m_fullName.c_str(),
                     rc.toString().c_str());
        dropAllExpressions(created);
        return rc;
    }

    dropAllExpressions(old);
    m_members = std::move(kept);
    for (auto& [key, member] : created) {
        m_expressionObservers.notify([&member](IExpressionObserver* observer) {
            member->addExpressionObserver(observer, false);
        });
        m_members.emplace(key, member);
    }
    m_text = text;
    // Making members publishes names that may match the context itself.
    ReevaluationIndex::INSTANCE()->clearStale(*this);
    return XCode();
}

XCode CExpressionSet::reevaluateExpression() {
    if (m_text.isEmpty()) {
        ReevaluationIndex::INSTANCE()->clearStale(*this);
        return XCode();
    }
    return setExpression(m_text);
}

void CExpressionSet::dropAllExpressions(Members& members) {
    for (auto& [key, member] : members) {
        m_expressionObservers.notify([&member](IExpressionObserver* observer) {
            member->removeExpressionObserver(observer);
        });
        VXPPtr<IDriver> driver;
        if (member->queryIf(driver).isSuccess() && driver->getDriverRepository()) {
            DRIVER::REMOVE(driver);
        }
    }
    members.clear();
}

InfoContainer& CExpressionSet::getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                                       unsigned columnLimit, unsigned column,
                                       const String& prefix) const {
    ++s_infoNesting;
    if (depth <= depthLimit && column <= columnLimit) {
        info.add(depth, column, prefix + "Expression Set", String::Formatted("%s", m_name.c_str()));
        if (depth + 1 <= depthLimit) {
            info.add(depth + 1, column, "Context", String::Formatted("%s", m_context.c_str()));
            info.add(depth + 1, column, "Expression", String::Formatted("%s", m_text.c_str()));
            info.add(depth + 1, column, "Expressions", String());
        }
        if (depth + 2 <= depthLimit && s_infoNesting == 1) {
            for (const auto& [key, member] : m_members) {
                VXPPtr<IInfo> rows;
                if (member->queryIf(rows).isSuccess()) {
                    rows->getInfo(info, depthLimit, depth + 2, columnLimit, column, String());
                }
            }
        }
    }
    --s_infoNesting;
    return info;
}

void CExpressionSet::callDtor() {
    if (m_destroying) return;
    m_destroying = true;
    VXAutoLock held(LOCK());
    ReevaluationIndex::INSTANCE()->forget(*this);
    dropAllExpressions(m_members);
    CInherit::callDtor();
}

}  // namespace VX::SysEvent
