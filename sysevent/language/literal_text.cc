// Value::STRING_TO_NUMBER and STRING_TO_TIME: a number or a time read out of
// a string value exactly as the formula language reads its literals. They
// live with the lexer, which depends on values, so that the value layer
// never includes the language.
#include "sysevent/language/lexer.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

namespace {

// The first token of `s`, if the lexer accepts the whole text and the first
// token has type `type`. The lexer's message is dropped on purpose: callers
// report the plain #VAL! code.
bool firstToken(const String& s, TokenType type, Token& out) {
    Lexer lexer;
    if (lexer.analyze(s).isErr()) return false;
    if (!lexer.peek(out)) return false;
    return out.type == type;
}

}  // namespace

XCode Value::STRING_TO_NUMBER(Value& v, String s) {
    Token token;
    if (!firstToken(s, TT_NUMBER, token)) return errToXCode(DST_ERR_VAL);
    v = std::move(token.value);
    return XCode();
}

XCode Value::STRING_TO_TIME(VX::Time& t, DataSubType& st, const String& s) {
    Token token;
    if (!firstToken(s, TT_TIME, token)) return errToXCode(DST_ERR_VAL);
    t = token.value.data.time;
    st = token.value.subtype;
    return XCode();
}

}  // namespace VX::SysEvent
