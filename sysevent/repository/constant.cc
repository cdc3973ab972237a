// CConstant: binding of a name, value observers, destruction and diagnostic
// rows of every published named value.
#include "sysevent/repository/constant.h"

#include "host/component/driver_repository.h"
#include "host/runtime/crit.h"
#include "host/runtime/lock.h"
#include "host/runtime/log.h"
#include "sysevent/graph/proxy_repository.h"
#include "sysevent/repository/identifiers.h"

namespace VX::SysEvent {

CConstant::CConstant(const String& name, const String& description, const Value& value)
    : CInherit(DID_Variable(), DRIVER_NAME_OF(name), &LOCK()), m_description(description) {
    VXAutoLock held(LOCK());
    m_target = new Node(name, value);
    VXLWPtr<ProxyNode> proxy = ProxyRepository::INSTANCE()->getOrCreate(name);
    if (ownsName()) {
        // A refused binding cannot happen: a fresh value node depends on
        // nothing. The proxy propagates the value to the expressions at once.
        proxy->setNode(m_target.get());
    } else {
        m_bindingDeferred = true;
    }
    attach(proxy.get());
}

CConstant::CConstant(const String& name, const String& description)
    : CInherit(DID_Variable(), DRIVER_NAME_OF(name), &LOCK()), m_description(description) {
    VXAutoLock held(LOCK());
    attach(ProxyRepository::INSTANCE()->getOrCreate(name).get());
}

CConstant::~CConstant() = default;

bool CConstant::ownsName() const {
    if (getDriverRepository()) return true;
    void* raw = nullptr;
    if (!DRIVER::FIND_IF(getDriverName(), IUnknown::IID(), &raw)) return true;
    IUnknown* other = static_cast<IUnknown*>(raw);
    const bool mine = other == static_cast<const IUnknown*>(this);
    other->release();
    return mine;
}

XCode CConstant::bindName(Node* node) {
    if (!ownsName()) {
        m_target = node;
        m_bindingDeferred = true;
        return XCode();
    }
    // A name still bound to the same node needs no re-binding: the node
    // cannot have closed a cycle through it.
    if (m_proxy->getTarget() != node) {
        if (XCode rc = m_proxy->setNode(node); rc.isErr()) return rc;
    }
    m_target = node;
    m_bindingDeferred = false;
    return XCode();
}

void CConstant::setDriverRepository(IDriverRepository* repository) {
    CDriver::setDriverRepository(repository);
    if (repository && m_bindingDeferred) {
        m_bindingDeferred = false;
        m_proxy->setNode(m_target.get());
    }
}

void CConstant::attach(ProxyNode* proxy) {
    if (m_proxy) {
        if (!m_valueObservers.empty()) m_proxy->removeInterest();
        m_proxy->removeObserver(this);
    }
    m_proxy = proxy;
    if (m_proxy) {
        m_proxy->addObserver(this);
        if (!m_valueObservers.empty()) m_proxy->addInterest();
    }
}

VXLWPtr<ProxyNode> CConstant::getNode() {
    return m_proxy;
}

void CConstant::dropNode() {
    if (m_proxy && ownsName()) m_proxy->setInvalidReference();
}

void CConstant::updateDescription(const String& description) {
    m_description = description;
}

XCode CConstant::addValueObserver(IReadObserver* observer, bool notifyNow) {
    // Interest first: a stale value is brought up to date before it is
    // reported, and is kept current from now on.
    if (m_valueObservers.add(observer) && m_proxy) m_proxy->addInterest();
    if (notifyNow) {
        ObserverEvent<IRead> event(VXPPtr<IRead>(static_cast<IRead*>(this)));
        event << Value() << getValue();
        observer->onValueChanged(event);
    }
    return XCode();
}

void CConstant::removeValueObserver(IReadObserver* observer) {
    if (m_valueObservers.remove(observer) && m_proxy) m_proxy->removeInterest();
}

String CConstant::name() const {
    const String& driverName = getDriverName();
    const size_t prefix = std::char_traits<char>::length(DRIVER_NAME_PREFIX);
    if (driverName.length() < prefix) return String();
    return String(driverName.data() + prefix, driverName.length() - prefix);
}

String CConstant::getName() const {
    return name();
}

String CConstant::getDescription() const {
    return m_description;
}

String CConstant::getType() const {
    return "constant";
}

Value CConstant::getValue() const {
    if (m_bindingDeferred) return m_target->getValue();
    return m_proxy ? m_proxy->getValue() : Value(DST_ERR_NA);
}

void CConstant::onValueChanged(const Value& oldValue, const Value& newValue) {
    SYSEVENT_LOG_AT_VERBOSITY(1, "[%s] %s -> %s", name().c_str(), oldValue.toString().c_str(),
                              newValue.toString().c_str());
    if (m_valueObservers.empty()) return;
    // A callback may destroy this object (through the Repository); it lives
    // until the delivery is over. An object still under construction (no
    // reference yet) is not counted, so that this cannot delete it.
    VXPtr<CConstant> self(getRefCount() > 0 ? this : nullptr);
    IRead* const source = static_cast<IRead*>(this);
    ObserverEvent<IRead> event{VXPPtr<IRead>(source)};
    event << oldValue << newValue;
    // Each observer gets the event as its own copy would be: an event that
    // the previous observer only read is rewound, one it changed (bytes made,
    // source replaced) is built again. A copy per observer would cost a
    // reference on the source each.
    m_valueObservers.notify([&](IReadObserver* observer) {
        if (!event.rewind(source)) {
            event.reset(VXPPtr<IRead>(source));
            event << oldValue << newValue;
        }
        observer->onValueChanged(event);
    });
}

void CConstant::callDtor() {
    // An observer that takes and drops a reference while it is told of the
    // destruction must not start it a second time.
    if (m_destroying) return;
    m_destroying = true;
    VXAutoLock held(LOCK());
    m_valueObservers.notify(
        [this](IReadObserver* observer) { observer->onValueDestroyed(static_cast<IRead*>(this)); });
    m_valueObservers.purge();
    const VXLWPtr<ProxyNode> proxy = m_proxy;
    attach(nullptr);
    if (proxy && !m_bindingDeferred && ownsName()) proxy->setInvalidReference();
    CInherit::callDtor();
}

void CConstant::addInfoRows(InfoContainer& info, unsigned depthLimit, unsigned depth,
                            unsigned columnLimit, unsigned column, const String& kindKey,
                            std::initializer_list<std::pair<const char*, String>> rows) const {
    if (depth > depthLimit || column > columnLimit) return;
    info.add(depth, column, kindKey, String::Formatted("%s", name().c_str()));
    if (depth + 1 > depthLimit) return;
    for (const auto& [key, value] : rows) {
        info.add(depth + 1, column, key, String::Formatted("%s", value.c_str()));
    }
}

InfoContainer& CConstant::getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                                  unsigned columnLimit, unsigned column,
                                  const String& prefix) const {
    addInfoRows(info, depthLimit, depth, columnLimit, column, prefix + "Constant",
                {{"Description", m_description}, {"Value", getValue().toString()}});
    return info;
}

}  // namespace VX::SysEvent
