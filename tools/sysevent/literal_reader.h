// Reading values the way formulas write them (5, 2.5, 'text', 1h30m,
// 2024-01-15, 12:30:00, true), with the engine's own lexer and evaluator
// rather than a parser of the tool's: what the tool accepts is exactly what a
// formula accepts. Operators over literals are allowed (-5, 2 * 30s); names,
// and so function calls, are not.
#pragma once

#include <cstddef>

#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/value/value.h"

namespace SysEventTool {

// A failure located in a text handed to the engine: the 0-based offset of
// the character it is about and the message without the engine's leading
// position.
struct TextError {
    size_t offset = 0;
    String message;
    // False for a failure that carried no position (offset is then 0).
    bool located = false;
};

// The engine's lexer and parser messages begin with a position in the text
// ("4: Expecting ')'"); this turns such a failure into a located TextError.
// Any other failure keeps its whole text (or the code, when it has none).
TextError LOCATE_ENGINE_ERROR(const XCode& rc);

// The text to show for a failure: its message, or its code when it has none.
String MESSAGE_OF(const XCode& rc);

// Evaluates `text` as a value written with literals. Takes the engine lock.
// On failure `error` says where and why, and `out` is unchanged.
bool READ_LITERAL(const String& text, VX::SysEvent::Value& out, TextError& error);

// Splits "LITERAL "description"" into the literal's text and the
// description: a quoted string that directly follows a complete operand is
// the description, since two operands side by side are never one formula.
// Without one, `literal` is the whole text and `description` is empty.
void SPLIT_DESCRIPTION(const String& text, String& literal, String& description);

}  // namespace SysEventTool
