// CConstant: a published constant, and the common part of every published
// named value (CVariable and CExpression derive from it). The value itself
// lives in the name's proxy node (ProxyRepository); the object is the
// client-facing face of the name: it observes the proxy node, tells its own
// value observers of changes, and keeps the proxy node current (interest)
// while somebody observes it.
//
// Binding: a name has at most one published object. An object binds the
// name's proxy node (re-targets it, writes it, unbinds it) only while it owns
// the name: when it is published, or when no other object is published under
// the name. A constant made while another object holds its name keeps its
// value node aside and binds it when it is published itself; destroying an
// object that does not own its name leaves the proxy node alone.
//
// Lifetime: reference counted through CDriver; the driver repository holds
// the reference that keeps a published object alive. The lock of every
// object is the engine lock; every operation expects it held (construction
// and destruction take it themselves).
#pragma once

#include "host/component/driver.h"
#include "host/component/info.h"
#include "host/component/inherit.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/graph/node.h"
#include "sysevent/graph/proxy_node.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/repository/observer_list.h"
#include "sysevent/repository/read_observer.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

class CConstant : public CInherit<CConstant, CDriver, INode, IRead, IInfo>, private NodeObserver {
public:
    // A name bound to a new node holding `value`: expressions over the name
    // see the value at once (unless another object holds the name).
    CConstant(const String& name, const String& description, const Value& value);
    // A name left as it is bound: a name nobody bound yet reads "#N/A!".
    CConstant(const String& name, const String& description);

    // INode.
    VXLWPtr<ProxyNode> getNode() override;
    void dropNode() override;
    void updateDescription(const String& description) override;

    // IRead.
    XCode addValueObserver(IReadObserver* observer, bool notifyNow) override;
    void removeValueObserver(IReadObserver* observer) override;
    String getName() const override;
    String getDescription() const override;
    String getType() const override;
    Value getValue() const override;

    // IInfo: a row (prefix + "Constant", name) at `depth`, then Description
    // and Value at depth + 1.
    InfoContainer& getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                           unsigned columnLimit, unsigned column,
                           const String& prefix) const override;

    // Binds a deferred value node once the constant is published.
    void setDriverRepository(IDriverRepository* repository) override;

protected:
    ~CConstant() override;
    // Tells the value observers, detaches from the proxy node and, when the
    // object owns its name, unbinds it ("#N/A!"); then deletes the object.
    // Runs under the engine lock, whichever thread released the last
    // reference.
    void callDtor() override;

    // True when this object may bind the name's proxy node: it is published,
    // or no other object is published under its name.
    bool ownsName() const;
    // Makes `node` what the name is bound to (m_target): at once while this
    // object owns the name, else when it is published. Fails with the proxy
    // node's refusal ("CIRCULAR REFERENCE"), keeping the old binding.
    XCode bindName(Node* node);
    // Adds the rows of a named value: (prefix + kind, name) at depth, and
    // the given (key, value) pairs at depth + 1.
    void addInfoRows(InfoContainer& info, unsigned depthLimit, unsigned depth, unsigned columnLimit,
                     unsigned column, const String& kindKey,
                     std::initializer_list<std::pair<const char*, String>> rows) const;
    // The logging name of the object: its name, which its driver name holds
    // after the common prefix (kept once per object).
    String name() const;
    ProxyNode* proxy() const { return m_proxy.get(); }

    // The node this object binds its name to (a constant's value node, an
    // expression's root); null for a variable, whose value is written into
    // the proxy node itself.
    VXLWPtr<Node> m_target;
    // Shared text holder: one word, nothing allocated for an empty one.
    Text m_description;

private:
    // NodeObserver: the proxy node's value changed.
    void onValueChanged(const Value& oldValue, const Value& newValue) override;
    // Moves this object's observation (and interest) to `proxy` (null: none).
    void attach(ProxyNode* proxy);

    VXLWPtr<ProxyNode> m_proxy;
    ObserverList<IReadObserver> m_valueObservers;
    bool m_bindingDeferred = false;
    bool m_destroying = false;
};

}  // namespace VX::SysEvent
