// RepositoryNameResolver: look-up through the Repository, with a record of
// every name and pattern asked for.
#include "sysevent/repository/name_lookup.h"

#include <algorithm>

#include "sysevent/repository/repository.h"

namespace VX::SysEvent {

XCode RepositoryNameResolver::resolve(const String& name, VXVector<VXLWPtr<Node>>& nodes) {
    nodes.clear();
    VXVector<String>& list = IS_PATTERN(name) ? m_recording.patterns : m_recording.names;
    if (std::find(list.begin(), list.end(), name) == list.end()) list.push_back(name);
    VXVector<VXPPtr<INode>> objects;
    XCode rc = Repository::GET(name, objects);
    if (rc.isErr()) return rc;
    nodes.reserve(objects.size());
    for (const VXPPtr<INode>& object : objects) nodes.push_back(object->getNode());
    return XCode();
}

}  // namespace VX::SysEvent
