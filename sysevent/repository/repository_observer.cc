// Repository: attaching client Observers to the objects a pattern matches.
// The Observer itself follows objects that appear or vanish later.
#include "sysevent/repository/observer.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {

XCode Repository::addObserver(Observer& observer, const String& pattern, bool notifyNow) {
    VXVector<VXPPtr<INode>> nodes;
    if (XCode rc = get(pattern, nodes); rc.isErr()) return rc;
    for (const VXPPtr<INode>& node : nodes) {
        VXPPtr<IRead> object;
        if (node->queryIf(object).isSuccess()) observer.addTo(object, notifyNow);
    }
    return XCode();
}

void Repository::removeObserver(Observer& observer, const String& pattern) {
    if (pattern.isEmpty()) {
        observer.removeFromAll();
        return;
    }
    VXVector<VXPPtr<INode>> nodes;
    if (get(pattern, nodes).isErr()) return;
    for (const VXPPtr<INode>& node : nodes) {
        VXPPtr<IRead> object;
        if (node->queryIf(object).isSuccess()) observer.removeFrom(object);
    }
}

}  // namespace VX::SysEvent
