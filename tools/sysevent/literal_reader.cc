// Literal values through the engine's lexer and evaluateExpression, and the
// mapping of the engine's positional messages back to offsets.
#include "tools/sysevent/literal_reader.h"

#include <cctype>
#include <cstdlib>

#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "sysevent/language/lexer.h"
#include "sysevent/repository/repository.h"

namespace SysEventTool {

using VX::SysEvent::Lexer;
using VX::SysEvent::Repository;
using VX::SysEvent::Token;
using VX::SysEvent::Value;

TextError LOCATE_ENGINE_ERROR(const XCode& rc) {
    TextError error;
    const String& text = rc.getString();
    size_t digits = 0;
    while (digits < text.length() && isdigit(static_cast<unsigned char>(text[digits]))) ++digits;
    if (digits == 0 || digits + 1 >= text.length() || text[digits] != ':' ||
        text[digits + 1] != ' ') {
        error.message = MESSAGE_OF(rc);
        return error;
    }
    size_t number = strtoul(text.c_str(), nullptr, 10);
    error.message = text.substring(digits + 2);
    // Most messages count from 1 (index + 1); these two give the index itself.
    bool zeroBased = error.message.indexOf("is used as a function") >= 0 ||
                     error.message.startsWith("Unterminated regular expression");
    error.offset = zeroBased || number == 0 ? number : number - 1;
    error.located = true;
    return error;
}

String MESSAGE_OF(const XCode& rc) {
    return rc.hasString() ? rc.getString() : rc.toString();
}

bool READ_LITERAL(const String& text, Value& out, TextError& error) {
    Lexer lexer;
    XCode rc = lexer.analyze(text);
    if (rc.isErr()) {
        error = LOCATE_ENGINE_ERROR(rc);
        return false;
    }
    const VXVector<Token>& tokens = lexer.tokens();
    if (tokens.size() <= 1) {
        error = TextError{0, "expecting a value", true};
        return false;
    }
    for (const Token& token : tokens) {
        if (token.type == VX::SysEvent::TT_NAME) {
            error = TextError{static_cast<size_t>(token.position),
                              String::Formatted("expecting a literal, not the name '%s'",
                                                token.value.data.string.c_str()),
                              true};
            return false;
        }
    }
    VXVector<Value> values;
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        rc = repository->evaluateExpression(String(), text, values);
    }
    if (rc.isErr()) {
        error = LOCATE_ENGINE_ERROR(rc);
        return false;
    }
    if (values.size() != 1) {
        error = TextError{0, "expecting one value", true};
        return false;
    }
    out = values.front();
    return true;
}

void SPLIT_DESCRIPTION(const String& text, String& literal, String& description) {
    literal = text;
    description.clear();
    Lexer lexer;
    if (lexer.analyze(text).isErr()) return;  // READ_LITERAL reports it
    const VXVector<Token>& tokens = lexer.tokens();
    if (tokens.size() < 3) return;  // at least operand, string, end
    const Token& last = tokens[tokens.size() - 2];
    const Token& before = tokens[tokens.size() - 3];
    if (last.type != VX::SysEvent::TT_TEXT) return;
    switch (before.type) {
        case VX::SysEvent::TT_NAME:
        case VX::SysEvent::TT_BOOL:
        case VX::SysEvent::TT_NUMBER:
        case VX::SysEvent::TT_TIME:
        case VX::SysEvent::TT_TEXT:
        case VX::SysEvent::TT_RPAREN:
            break;
        default:
            return;
    }
    size_t end = static_cast<size_t>(last.position);
    while (end > 0 && isspace(static_cast<unsigned char>(text[end - 1]))) --end;
    literal = text.substring(0, end);
    description = last.value.data.string;
}

}  // namespace SysEventTool
