// ProxyNode: a name's node, copying the event of whatever the name is bound
// to, and re-targeted when the binding changes.
#include "sysevent/graph/proxy_node.h"

namespace VX::SysEvent {

ProxyNode::ProxyNode(const String& name, Node* target) : FunctionNode(name, String()) {
    m_kind = KIND_PROXY;
    addArgument(target);
}

String ProxyNode::getNormalizedExpression() const {
    return getFunctionName();
}

XCode ProxyNode::verifyArguments() {
    return XCode::testExpression(getChildCount() == 1);
}

XCode ProxyNode::compute(Event& result) {
    result = getChild(0)->currentEvent();
    return XCode();
}

XCode ProxyNode::setNode(Node* node) {
    VXLWPtr<Node> oldTarget;
    const XCode rc = swapChild(0, node, oldTarget);
    if (rc.isSuccess()) forceRecompute();
    // oldTarget is released here, after the proxy no longer links to it.
    return rc;
}

XCode ProxyNode::setInvalidReference() {
    const VXLWPtr<Node> placeholder = MAKE_PLACEHOLDER(getFunctionName());
    return setNode(placeholder.get());
}

VXLWPtr<Node> ProxyNode::MAKE_PLACEHOLDER(const String& name) {
    return VXLWPtr<Node>(new Node(name, Value(DST_ERR_NA)));
}

}  // namespace VX::SysEvent
