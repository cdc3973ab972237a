// Explaining a value: a read-only walk over the graph under a name.
#include "sysevent/repository/explain.h"

#include <set>

#include "host/component/driver_repository.h"
#include "host/runtime/crit.h"
#include "sysevent/graph/proxy_node.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/interfaces.h"

namespace VX::SysEvent {

namespace {

String bindingOf(const String& name) {
    VXPPtr<IRead> object;
    if (!DRIVER::FIND_IF(DRIVER_NAME_OF(name), object)) return "#N/A! placeholder";
    return object->getType();
}

void walk(const Node* node, unsigned depth, VXVector<ExplainRow>& rows,
          std::set<const Node*>& expanded) {
    ExplainRow row;
    row.depth = depth;
    row.event = node->peekLastEvent();
    const auto* function = dynamic_cast<const FunctionNode*>(node);
    row.dirty = function && function->isDirty();
    if (const auto* proxy = dynamic_cast<const ProxyNode*>(node)) {
        row.kind = ExplainRow::NAME;
        row.text = proxy->getReferencedName();
        row.binding = bindingOf(row.text);
        // A variable's or constant's value node, or a placeholder, is a leaf
        // that the binding already describes; an expression goes on.
        auto* target = dynamic_cast<const FunctionNode*>(proxy->getTarget());
        row.repeated = target && !expanded.insert(target).second;
        rows.push_back(row);
        if (target && !row.repeated) walk(target, depth + 1, rows, expanded);
        return;
    }
    if (!function) {
        row.kind = ExplainRow::LITERAL;
        row.text = node->getName();
        rows.push_back(row);
        return;
    }
    row.kind = ExplainRow::FUNCTION;
    row.text = function->getFunctionName();
    function->describeState(row.state);
    rows.push_back(row);
    for (unsigned i = 0; i < function->getChildCount(); ++i) {
        walk(function->getChild(i), depth + 1, rows, expanded);
    }
}

}  // namespace

XCode EXPLAIN_VALUE(const String& name, bool fresh, VXVector<ExplainRow>& rows) {
    VXAutoLock engine(LOCK());
    rows.clear();
    VXPPtr<INode> object;
    if (!DRIVER::FIND_IF(DRIVER_NAME_OF(name), object)) {
        return XCode::Failure(String::Formatted("VARIABLE DOES NOT EXIST: %s", name.c_str()));
    }
    VXLWPtr<ProxyNode> root = object->getNode();
    if (!root)
        return XCode::Failure(String::Formatted("VARIABLE DOES NOT EXIST: %s", name.c_str()));
    if (fresh) root->getLastEvent();
    std::set<const Node*> expanded;
    walk(root.get(), 0, rows, expanded);
    return XCode();
}

}  // namespace VX::SysEvent
