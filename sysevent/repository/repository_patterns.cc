// Repository: name patterns matched against the published names.
#include <unordered_set>

#include "host/component/driver_repository.h"
#include "host/runtime/regex.h"
#include "sysevent/language/lexer.h"
#include "sysevent/language/name_resolver.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {

namespace {

// Every published object that can be read, in the driver repository's order.
VXVector<VXPPtr<IRead>> readableObjects() {
    VXVector<VXPPtr<IRead>> objects;
    DRIVER::GET_INTERFACES(DID_Variable(), String(), objects);
    return objects;
}

XCode invalidRegularExpression() {
    return XCode::Failure("INVALID REGULAR EXPRESSION");
}

}  // namespace

XCode Repository::get(const String& pattern, VXVector<VXPPtr<INode>>& out) {
    out.clear();
    if (!NameResolver::IS_PATTERN(pattern)) {
        VXPPtr<INode> node;
        XCode rc = get(pattern, node);
        if (rc.isSuccess()) out.push_back(node);
        return rc;
    }
    const VXPtr<VXRegEx::Pattern> regex =
        VXRegEx::COMPILE_EXPRESSION(Lexer::NAME_TO_REGEX(pattern, false));
    if (!regex) return invalidRegularExpression();
    for (const VXPPtr<IRead>& object : readableObjects()) {
        VXPPtr<INode> node;
        if (regex->match(object->getName()) && object->queryIf(node).isSuccess()) {
            out.push_back(node);
        }
    }
    return XCode();
}

bool Repository::isMatchingNameRegEx(const String& pattern, const String& name) {
    const VXPtr<VXRegEx::Pattern> regex =
        VXRegEx::COMPILE_EXPRESSION(Lexer::NAME_TO_REGEX(pattern, false));
    if (!regex) return false;
    const VXPtr<VXRegEx::Matcher> matcher = regex->createMatcher(name);
    return matcher && matcher->match();
}

XCode Repository::getMatchingNamePrefixes(const String& pattern, VXVector<String>& out) {
    out.clear();
    const VXPtr<VXRegEx::Pattern> regex =
        VXRegEx::COMPILE_EXPRESSION(Lexer::NAME_TO_REGEX(pattern, true));
    if (!regex) return invalidRegularExpression();
    std::unordered_set<String> seen;
    for (const VXPPtr<IRead>& object : readableObjects()) {
        const VXPtr<VXRegEx::Matcher> matcher = regex->createMatcher(object->getName());
        String prefix;
        if (!matcher || !matcher->match() || matcher->getCapture(0, prefix).isErr()) continue;
        if (seen.insert(prefix).second) out.push_back(prefix);
    }
    return XCode();
}

}  // namespace VX::SysEvent
