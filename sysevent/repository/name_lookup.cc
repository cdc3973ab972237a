// The parser's name look-up: every name a formula mentions is resolved
// through Repository::GET, so that it finds the published objects (and
// creates database variables on the fly). Installed as the parsers' default
// resolver when the library loads. Each look-up is also recorded for the
// formula being parsed, which then depends on that name (ReevaluationIndex).
#include "sysevent/graph/proxy_node.h"
#include "sysevent/language/name_resolver.h"
#include "sysevent/repository/reevaluation_index.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {

namespace {

class RepositoryNameResolver final : public NameResolver {
public:
    XCode resolve(const String& name, VXVector<VXLWPtr<Node>>& nodes) override {
        nodes.clear();
        ReevaluationIndex::INSTANCE()->record(name);
        VXVector<VXPPtr<INode>> objects;
        XCode rc = Repository::GET(name, objects);
        if (rc.isErr()) return rc;
        nodes.reserve(objects.size());
        for (const VXPPtr<INode>& object : objects) nodes.push_back(object->getNode());
        return XCode();
    }
};

RepositoryNameResolver s_resolver;

[[maybe_unused]] const bool s_installed = [] {
    NameResolver::SET_DEFAULT(&s_resolver);
    return true;
}();

}  // namespace

}  // namespace VX::SysEvent
