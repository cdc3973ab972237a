// Command splitting and word splitting of the tool's command language.
#include "tools/sysevent/command_line.h"

#include <cctype>
#include <cstring>

namespace SysEventTool {

namespace {

bool isBlank(char c) {
    return isspace(static_cast<unsigned char>(c)) != 0;
}

// Whether an error value's display text ("#N/A!", "#DIV/0!", ...) starts
// at `at`: a check may compare with one, and it is no comment.
bool isErrorValue(const String& line, size_t at) {
    static const char* const ERRORS[] = {"#N/A!", "#DIV/0!", "#NUM!", "#VAL!", "#ERR!"};
    for (const char* e : ERRORS) {
        if (line.str().compare(at, strlen(e), e) == 0) return true;
    }
    return false;
}

// The length of `line` without its comment.
size_t codeLength(const String& line) {
    char quote = 0;
    int braces = 0;
    for (size_t i = 0; i < line.length(); ++i) {
        char c = line[i];
        if (quote) {
            if (c == '\\') {
                ++i;
            } else if (c == quote) {
                quote = 0;
            }
        } else if (braces > 0) {
            if (c == '}') --braces;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '{') {
            ++braces;
        } else if (c == '#' && !isErrorValue(line, i)) {
            return i;
        }
    }
    return line.length();
}

}  // namespace

bool SPLIT_COMMAND(const String& line, CommandLine& out) {
    size_t end = codeLength(line);
    while (end > 0 && isBlank(line[end - 1])) --end;
    size_t pos = 0;
    while (pos < end && isBlank(line[pos])) ++pos;
    if (pos == end) return false;
    size_t verbStart = pos;
    while (pos < end && !isBlank(line[pos])) ++pos;
    out.verb = line.substring(verbStart, pos - verbStart);
    out.verbColumn = static_cast<unsigned>(verbStart + 1);
    while (pos < end && isBlank(line[pos])) ++pos;
    out.rest = line.substring(pos, end - pos);
    out.restColumn = static_cast<unsigned>(pos + 1);
    return true;
}

bool SPLIT_WORDS(const String& text, unsigned column, std::vector<Word>& words,
                 unsigned& errorColumn) {
    words.clear();
    size_t pos = 0;
    while (pos < text.length()) {
        if (isBlank(text[pos])) {
            ++pos;
            continue;
        }
        Word word;
        word.column = column + static_cast<unsigned>(pos);
        while (pos < text.length() && !isBlank(text[pos])) {
            char c = text[pos];
            if (c != '\'' && c != '"') {
                word.text += c;
                ++pos;
                continue;
            }
            size_t open = pos++;
            while (pos < text.length() && text[pos] != c) {
                if (text[pos] == '\\' && pos + 1 < text.length()) ++pos;
                word.text += text[pos++];
            }
            if (pos >= text.length()) {
                errorColumn = column + static_cast<unsigned>(open);
                return false;
            }
            ++pos;  // the closing quote
        }
        words.push_back(word);
    }
    return true;
}

}  // namespace SysEventTool
