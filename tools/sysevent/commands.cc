// The commands of the tool's language that drive the engine: definitions,
// values, formulas, watches, diagnostics, the configuration database and
// time. Each works through the engine's public API only.
#include <cctype>
#include <chrono>
#include <climits>
#include <thread>

#include "host/component/driver_repository.h"
#include "host/component/info.h"
#include "host/runtime/manual_time.h"
#include "sysevent/repository/repository.h"
#include "tools/sysevent/catalogue.h"
#include "tools/sysevent/literal_reader.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

using VX::SysEvent::DST_REL_TIME;
using VX::SysEvent::INode;
using VX::SysEvent::IRead;
using VX::SysEvent::Repository;
using VX::SysEvent::Value;

namespace {

bool isBlank(char c) {
    return isspace(static_cast<unsigned char>(c)) != 0;
}

String trim(const String& text) {
    size_t start = 0, end = text.length();
    while (start < end && isBlank(text[start])) ++start;
    while (end > start && isBlank(text[end - 1])) --end;
    return text.substring(start, end - start);
}

// The position of the last '.' outside braces, or -1.
int contextSeparator(const String& name) {
    int braces = 0, found = -1;
    for (size_t i = 0; i < name.length(); ++i) {
        if (name[i] == '{') ++braces;
        if (name[i] == '}' && braces > 0) --braces;
        if (name[i] == '.' && braces == 0) found = static_cast<int>(i);
    }
    return found;
}

}  // namespace

Session::Failure Session::ENGINE_FAILURE(const XCode& rc, unsigned textColumn,
                                         unsigned fallbackColumn) {
    TextError located = LOCATE_ENGINE_ERROR(rc);
    if (!located.located) return Failure{fallbackColumn, located.message};
    return Failure{textColumn + static_cast<unsigned>(located.offset), located.message};
}

bool Session::literal(const String& text, unsigned column, Value& value, Failure& failure) {
    TextError error;
    if (READ_LITERAL(text, value, error)) return true;
    failure = Failure{column + static_cast<unsigned>(error.offset), error.message};
    return false;
}

bool Session::oneWord(const CommandLine& cmd, const char* what, String& word, Failure& failure) {
    if (cmd.rest.isEmpty()) {
        failure = Failure{cmd.restColumn, String::Formatted("expecting %s", what)};
        return false;
    }
    for (size_t i = 0; i < cmd.rest.length(); ++i) {
        if (isBlank(cmd.rest[i])) {
            size_t next = i;
            while (isBlank(cmd.rest[next])) ++next;
            failure = Failure{cmd.restColumn + static_cast<unsigned>(next),
                              String::Formatted("unexpected text after %s", what)};
            return false;
        }
    }
    word = cmd.rest;
    return true;
}

bool Session::nameAndRest(const CommandLine& cmd, String& name, String& rest, unsigned& restColumn,
                          Failure& failure) {
    size_t end = 0;
    while (end < cmd.rest.length() && !isBlank(cmd.rest[end]) && cmd.rest[end] != '=') ++end;
    if (end == 0) {
        failure = Failure{cmd.restColumn, "expecting a name"};
        return false;
    }
    name = cmd.rest.substring(0, end);
    size_t pos = end;
    while (pos < cmd.rest.length() && isBlank(cmd.rest[pos])) ++pos;
    rest = cmd.rest.substring(pos);
    restColumn = cmd.restColumn + static_cast<unsigned>(pos);
    return true;
}

bool Session::definition(const CommandLine& cmd, bool constant, Failure& failure) {
    String name, rest;
    unsigned restColumn = 0;
    if (!nameAndRest(cmd, name, rest, restColumn, failure)) return false;
    if (!rest.startsWith("=")) {
        failure = Failure{restColumn, "expecting '=' after the name"};
        return false;
    }
    size_t pos = 1;
    while (pos < rest.length() && isBlank(rest[pos])) ++pos;
    String text = rest.substring(pos);
    unsigned textColumn = restColumn + static_cast<unsigned>(pos);
    String literalText, description;
    SPLIT_DESCRIPTION(text, literalText, description);
    Value value;
    if (!literal(literalText, textColumn, value, failure)) return false;
    XCode rc;
    if (constant) {
        rc = Repository::CREATE_CONSTANT(name, description, value);
    } else {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        rc = repository->createVariable(name, description, value);
    }
    if (rc.isErr()) {
        failure = ENGINE_FAILURE(rc, cmd.restColumn, cmd.restColumn);
        return false;
    }
    return true;
}

bool Session::cmdConstant(const CommandLine& cmd, Failure& failure) {
    return definition(cmd, true, failure);
}

bool Session::cmdVariable(const CommandLine& cmd, Failure& failure) {
    return definition(cmd, false, failure);
}

bool Session::cmdExpression(const CommandLine& cmd, Failure& failure) {
    int assign = cmd.rest.indexOf(":=");
    if (assign < 0) {
        failure = Failure{cmd.restColumn + static_cast<unsigned>(cmd.rest.length()),
                          "expecting ':=' after the name"};
        return false;
    }
    String fullName = trim(cmd.rest.substring(0, assign));
    if (fullName.isEmpty()) {
        failure = Failure{cmd.restColumn, "expecting a name"};
        return false;
    }
    size_t pos = static_cast<size_t>(assign) + 2;
    while (pos < cmd.rest.length() && isBlank(cmd.rest[pos])) ++pos;
    String formula = cmd.rest.substring(pos);
    unsigned formulaColumn = cmd.restColumn + static_cast<unsigned>(pos);
    if (formula.isEmpty()) {
        failure = Failure{formulaColumn, "expecting a formula after ':='"};
        return false;
    }
    int dot = contextSeparator(fullName);
    String context = dot < 0 ? String() : fullName.substring(0, dot);
    String name = dot < 0 ? fullName : fullName.substring(dot + 1);
    XCode rc;
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        rc = repository->setExpression(context, name, formula);
    }
    if (rc.isErr()) {
        failure = ENGINE_FAILURE(rc, formulaColumn, cmd.restColumn);
        return false;
    }
    return true;
}

bool Session::cmdSet(const CommandLine& cmd, Failure& failure) {
    String name, text;
    unsigned textColumn = 0;
    if (!nameAndRest(cmd, name, text, textColumn, failure)) return false;
    if (text.isEmpty()) {
        failure = Failure{textColumn, "expecting a value after the name"};
        return false;
    }
    Value value;
    if (!literal(text, textColumn, value, failure)) return false;
    XCode rc = Repository::SET_VALUE(name, value);
    if (rc.isErr()) {
        failure = ENGINE_FAILURE(rc, cmd.restColumn, cmd.restColumn);
        return false;
    }
    return true;
}

bool Session::cmdGet(const CommandLine& cmd, Failure& failure) {
    String pattern;
    if (!oneWord(cmd, "a name", pattern, failure)) return false;
    std::vector<String> lines;
    XCode rc;
    if (!Repository::IS_PATTERN(pattern)) {
        Value value;
        rc = Repository::GET_VALUE(pattern, value);
        if (rc.isSuccess()) lines.push_back(pattern + " = " + value.toString());
    } else {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        VXVector<VXPPtr<INode>> nodes;
        rc = repository->get(pattern, nodes);
        for (VXPPtr<INode>& node : nodes) {
            VXPPtr<IRead> read;
            if (node->queryIf(read).isErr()) continue;
            lines.push_back(read->getName() + " = " + read->getValue().toString());
        }
        if (rc.isSuccess() && lines.empty()) lines.push_back("(no name matches " + pattern + ")");
    }
    if (rc.isErr()) {
        failure = ENGINE_FAILURE(rc, cmd.restColumn, cmd.restColumn);
        return false;
    }
    for (const String& line : lines) output_.line(line);
    return true;
}

// Evaluates the command's rest as an ad-hoc formula into `values`, saying so
// when a pattern matched no name; false, with `failure` set, when the rest is
// empty or the engine refuses the formula.
bool Session::evaluateRest(const CommandLine& cmd, VXVector<Value>& values, Failure& failure) {
    if (cmd.rest.isEmpty()) {
        failure = Failure{cmd.restColumn, "expecting a formula"};
        return false;
    }
    XCode rc;
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        rc = repository->evaluateExpression(String(), cmd.rest, values);
    }
    if (rc.isErr()) {
        failure = ENGINE_FAILURE(rc, cmd.restColumn, cmd.restColumn);
        return false;
    }
    if (values.empty()) output_.line("(no value: the pattern matches no name)");
    return true;
}

bool Session::cmdEval(const CommandLine& cmd, Failure& failure) {
    VXVector<Value> values;
    if (!evaluateRest(cmd, values, failure)) return false;
    for (const Value& value : values) output_.line("= " + value.toString());
    return true;
}

bool Session::cmdWatch(const CommandLine& cmd, Failure& failure) {
    if (cmd.rest.isEmpty()) {
        std::vector<String> patterns = watches_.patterns();
        if (patterns.empty()) output_.line("(nothing is watched)");
        for (const String& p : patterns) output_.line("watching " + p);
        return true;
    }
    String pattern;
    if (!oneWord(cmd, "a name or pattern", pattern, failure)) return false;
    if (Repository::IS_PATTERN(pattern)) {
        // A plain name may be published later; a pattern must at least be
        // one that the engine can match.
        VXVector<VXPPtr<INode>> nodes;
        XCode rc = Repository::GET(pattern, nodes);
        if (rc.isErr()) {
            failure = ENGINE_FAILURE(rc, cmd.restColumn, cmd.restColumn);
            return false;
        }
    }
    if (!watches_.watch(pattern)) {
        failure = Failure{cmd.restColumn, "already watching " + pattern};
        return false;
    }
    return true;
}

bool Session::cmdUnwatch(const CommandLine& cmd, Failure& failure) {
    String pattern;
    if (!oneWord(cmd, "a name or pattern", pattern, failure)) return false;
    if (!watches_.unwatch(pattern)) {
        failure = Failure{cmd.restColumn, "not watching " + pattern};
        return false;
    }
    return true;
}

bool Session::cmdDestroy(const CommandLine& cmd, Failure& failure) {
    String name;
    if (!oneWord(cmd, "a name", name, failure)) return false;
    VXLockPtr<Repository> repository(Repository::INSTANCE());
    VXPPtr<IUnknown> object;
    if (repository->find(name, object).isErr()) {
        // Nothing is published under the name: let the engine's creating
        // look-up say so (or, for a "db." name, make the variable that it
        // then destroys).
        VXPPtr<INode> node;
        XCode rc = repository->get(name, node);
        if (rc.isErr()) {
            failure = ENGINE_FAILURE(rc, cmd.restColumn, cmd.restColumn);
            return false;
        }
    }
    object = nullptr;
    repository->destroy(name);
    return true;
}

bool Session::cmdInfo(const CommandLine& cmd, Failure& failure) {
    String name;
    if (!oneWord(cmd, "a name", name, failure)) return false;
    InfoContainer info;
    {
        VXLockPtr<Repository> repository(Repository::INSTANCE());
        VXPPtr<IUnknown> found;
        VXPPtr<IInfo> object;
        if (repository->find(name, found).isErr() || found->queryIf(object).isErr()) {
            VXPPtr<INode> node;
            XCode rc = repository->get(name, node);
            if (rc.isSuccess()) rc = node->queryIf(object);
            if (rc.isErr()) {
                failure = ENGINE_FAILURE(rc, cmd.restColumn, cmd.restColumn);
                return false;
            }
        }
        // Depth 3 reaches the rows of an expression set's members.
        object->getInfo(info, 3, 0, 0, 0, String());
    }
    for (const InfoContainer::Row& row : info.getRows()) {
        String indent(std::string(2 * static_cast<size_t>(row.level), ' '));
        output_.line(indent + row.key + (row.value.isEmpty() ? String(":") : ": " + row.value));
    }
    return true;
}

bool Session::cmdTrack(const CommandLine& cmd, Failure& failure) {
    String name;
    if (!oneWord(cmd, "a db. name", name, failure)) return false;
    if (!name.startsWith("db.")) {
        failure = Failure{cmd.restColumn, "expecting a name that begins with 'db.'"};
        return false;
    }
    XCode rc = tracking_.track(name);
    if (rc.isErr()) {
        failure = Failure{cmd.restColumn, MESSAGE_OF(rc)};
        return false;
    }
    return true;
}

bool Session::cmdUntrack(const CommandLine& cmd, Failure& failure) {
    String name;
    if (!oneWord(cmd, "a db. name", name, failure)) return false;
    if (!name.startsWith("db.")) {
        failure = Failure{cmd.restColumn, "expecting a name that begins with 'db.'"};
        return false;
    }
    XCode rc = tracking_.untrack(name);
    if (rc.isErr()) {
        failure = Failure{cmd.restColumn, MESSAGE_OF(rc)};
        return false;
    }
    return true;
}

bool Session::cmdDatabase(const CommandLine& cmd, Failure& failure) {
    std::vector<Word> words;
    unsigned column = cmd.restColumn;
    if (!SPLIT_WORDS(cmd.rest, cmd.restColumn, words, column)) {
        failure = Failure{column, "unterminated quoted text"};
        return false;
    }
    XCode rc = database_.command(words, column);
    if (rc.isErr()) {
        failure = Failure{column, MESSAGE_OF(rc)};
        return false;
    }
    return true;
}

bool Session::cmdFunctions(const CommandLine& cmd, Failure& failure) {
    if (!cmd.rest.isEmpty()) {
        failure = Failure{cmd.restColumn, "unexpected text after functions"};
        return false;
    }
    for (const String& line : CATALOGUE_LINES()) output_.line(line);
    return true;
}

bool Session::cmdWait(const CommandLine& cmd, Failure& failure) {
    if (cmd.rest.isEmpty()) {
        failure = Failure{cmd.restColumn, "expecting a duration, such as 5s or 1h30m"};
        return false;
    }
    Value value;
    if (!literal(cmd.rest, cmd.restColumn, value, failure)) return false;
    if (value.subtype != DST_REL_TIME || value.data.time < VX::Time()) {
        failure = Failure{cmd.restColumn,
                          "expecting a duration, such as 5s or 1h30m, not " + value.toString()};
        return false;
    }
    uint64_t ms = value.data.time.toMilliseconds();
    if (!manualTime_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        return true;
    }
    while (ms > 0) {
        unsigned step = static_cast<unsigned>(std::min<uint64_t>(ms, UINT_MAX));
        VX::ManualTime::ADVANCE(step);
        ms -= step;
    }
    return true;
}

}  // namespace SysEventTool
