// RepositoryNameResolver: look-up through the Repository, with a record of
// every name and pattern asked for.
#include "sysevent/repository/name_lookup.h"

#include <algorithm>

#include "sysevent/graph/proxy_node.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {

XCode RepositoryNameResolver::resolve(const String& name, VXVector<VXLWPtr<Node>>& nodes) {
    nodes.clear();
    const bool pattern = IS_PATTERN(name);
    VXVector<String>& list = pattern ? m_recording.patterns : m_recording.names;
    if (std::find(list.begin(), list.end(), name) == list.end()) list.push_back(name);
    if (!pattern) {
        // An exact name is one object at most, found without the list that
        // a pattern's matches need; the parse holds the engine lock.
        VXPPtr<INode> object;
        if (XCode rc = Repository::INSTANCE()->lookUp(name, object); rc.isErr()) return rc;
        if (!object) return XCode(XCode::GENERIC_FAILURE);
        nodes.push_back(object->getNode());
        return XCode();
    }
    VXVector<VXPPtr<INode>> objects;
    XCode rc = Repository::GET(name, objects);
    if (rc.isErr()) return rc;
    nodes.reserve(objects.size());
    for (const VXPPtr<INode>& object : objects) nodes.push_back(object->getNode());
    return XCode();
}

}  // namespace VX::SysEvent
