// Completion candidates from the command table, the driver repository and
// the function catalogue.
#include "tools/sysevent/completion.h"

#include <algorithm>

#include "host/component/driver_repository.h"
#include "host/runtime/containers.h"
#include "host/runtime/crit.h"
#include "sysevent/repository/identifiers.h"
#include "sysevent/repository/interfaces.h"
#include "tools/sysevent/catalogue.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

const char* const COMPLETION_WORD_BREAKS = " \t\n\"'(),=+-*/<>!&|^~;";

namespace {

const char* const KEYWORDS[] = {"true", "false", "inf", "not", "and", "or", "xor", "within"};

std::vector<String> publishedNames() {
    std::vector<String> names;
    VXAutoLock engine(VX::SysEvent::LOCK());
    VXVector<VXPPtr<VX::SysEvent::IRead>> objects;
    DRIVER::GET_INTERFACES(VX::SysEvent::DID_Variable(), VX::SysEvent::DRIVER_NAME_PREFIX, objects);
    for (const VXPPtr<VX::SysEvent::IRead>& object : objects) names.push_back(object->getName());
    return names;
}

}  // namespace

std::vector<String> COMPLETE(const String& word, bool atLineStart) {
    std::vector<String> all;
    if (atLineStart) {
        all = Session::COMMAND_NAMES();
    } else {
        all = publishedNames();
        for (const FunctionEntry& f : CATALOGUE()) all.push_back(f.name);
        all.insert(all.end(), std::begin(KEYWORDS), std::end(KEYWORDS));
    }
    std::vector<String> matches;
    for (const String& candidate : all) {
        if (candidate.startsWith(word)) matches.push_back(candidate);
    }
    std::sort(matches.begin(), matches.end());
    matches.erase(std::unique(matches.begin(), matches.end()), matches.end());
    return matches;
}

}  // namespace SysEventTool
