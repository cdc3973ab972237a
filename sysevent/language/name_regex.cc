// Lexer::NAME_TO_REGEX: name patterns ("line%.up", "{sip[0-9]%}.state") as
// anchored regular expressions for matching published names.
#include "host/runtime/crit.h"
#include "host/runtime/log.h"
#include "sysevent/language/lexer.h"

namespace VX::SysEvent {

String Lexer::NAME_TO_REGEX(const String& pattern, bool prefixOnly) {
    String out = "^";
    bool inBraces = false;
    for (size_t i = 0; i < pattern.length(); ++i) {
        const char c = pattern[i];
        if (inBraces) {
            // Regular-expression text passes through, except that '%' keeps
            // its pattern meaning of "any number of" and '*' is literal.
            if (c == '}') {
                inBraces = false;
            } else if (c == '%') {
                out += '*';
            } else if (c == '*') {
                out += "\\*";
            } else {
                out += c;
            }
        } else if (c == '%') {
            // One name component, or part of one: never crosses '.' or ':'.
            out += "([^\\.\\:]+)";
        } else if (c == '.' || c == ':') {
            out += '\\';
            out += c;
        } else if (c == '{') {
            inBraces = true;
        } else {
            out += c;
        }
    }
    if (!prefixOnly) out += '$';
    SYSEVENT_LOG(3, "Regular expression: %s -> %s", pattern.c_str(), out.c_str());
    return out;
}

}  // namespace VX::SysEvent
