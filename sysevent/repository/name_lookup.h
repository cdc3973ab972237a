// RepositoryNameResolver: the parser's name look-up over the published
// objects. Every name a formula mentions is resolved through Repository::GET,
// so that it finds the published objects (and creates database variables on
// the fly). Each parse that needs names gets its own resolver, and the
// resolver keeps what that parse looked up: the formula depends on exactly
// those names and patterns (ReevaluationIndex). A parse nested inside
// another (a look-up that creates a variable on the fly, an observer that
// evaluates a formula) has its own resolver, so nothing is saved or restored.
#pragma once

#include "sysevent/language/name_resolver.h"
#include "sysevent/repository/reevaluation_index.h"

namespace VX::SysEvent {

class RepositoryNameResolver final : public NameResolver {
public:
    XCode resolve(const String& name, VXVector<VXLWPtr<Node>>& nodes) override;

    // The distinct names and patterns looked up so far, in order of first
    // look-up.
    ReevaluationIndex::Recording& recording() { return m_recording; }

private:
    ReevaluationIndex::Recording m_recording;
};

}  // namespace VX::SysEvent
