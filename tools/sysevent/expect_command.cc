// The expect command: checks of a value now, or of every change of a name
// while time passes. A check that fails prints where it stands, what was
// expected, what came instead and when, and the name's changes so far; the
// script goes on with its next command either way.
#include <chrono>
#include <climits>
#include <cstring>
#include <thread>

#include "host/runtime/manual_time.h"
#include "host/runtime/regex.h"
#include "sysevent/repository/repository.h"
#include "tools/sysevent/literal_reader.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

using VX::SysEvent::DST_REL_TIME;
using VX::SysEvent::DT_NUMBER;
using VX::SysEvent::Repository;
using VX::SysEvent::Value;

namespace {

// What an expectation compares with: a literal, or a display text for the
// values no literal writes (the error values, "#N/A!").
struct Expected {
    String text;
    Value value;
    bool byText = false;
};

// Numbers compare as numbers (1.0 equals 1); everything else by value.
bool matches(const Value& actual, const Expected& expected) {
    if (expected.byText) return actual.toString() == expected.text;
    if (actual.getDataType() == DT_NUMBER && expected.value.getDataType() == DT_NUMBER) {
        Value a = actual, b = expected.value;
        if (Value::NORMALIZE_NUMBERS(a, b).isErr()) return false;
        return a == b;
    }
    return actual == expected.value;
}

// The last occurrence of `word` as a whole word in `text`, or -1.
int lastWord(const String& text, const char* word) {
    const std::string& s = text.str();
    const std::string w = std::string(" ") + word + " ";
    size_t at = s.rfind(w);
    return at == std::string::npos ? -1 : static_cast<int>(at) + 1;
}

String currentValue(const String& name) {
    Value value;
    // A name that is not published reads as what expressions over it see.
    if (Repository::GET_VALUE(name, value).isErr()) return "#N/A!";
    return value.toString();
}

}  // namespace

void Session::passTime(uint64_t ms) {
    if (!manualTime_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        return;
    }
    while (ms > 0) {
        unsigned step = static_cast<unsigned>(std::min<uint64_t>(ms, UINT_MAX));
        VX::ManualTime::ADVANCE(step);
        ms -= step;
    }
}

void Session::checkFailed(const String& expected, const String& got, const VX::Time& at,
                          const String& name) {
    ++failed_;
    output_.line(String::Formatted("%s:%u: expected %s, got %s at %s", file_.c_str(), line_,
                                   expected.c_str(), got.c_str(), TIME_OF_DAY(at).c_str()));
    std::vector<Change> history = changes_.changes(name);
    if (history.empty()) {
        output_.line("  no changes of " + name + " recorded");
        return;
    }
    output_.line("  changes of " + name + " so far:");
    for (const Change& c : history) {
        output_.line("    " + TIME_OF_DAY(c.time) + " " + c.value.toString());
    }
}

bool Session::cmdExpect(const CommandLine& cmd, Failure& failure) {
    String name, rest;
    unsigned restColumn = 0;
    if (!nameAndRest(cmd, name, rest, restColumn, failure)) return false;
    const char* const forms =
        "expecting '= LITERAL', '~ REGEX', 'changes to LITERAL within DURATION' or "
        "'stays LITERAL for DURATION' after the name";
    enum { NOW_EQUAL, NOW_LIKE, CHANGES, STAYS } form;
    size_t skip;
    if (rest.startsWith("=")) {
        form = NOW_EQUAL, skip = 1;
    } else if (rest.startsWith("~")) {
        form = NOW_LIKE, skip = 1;
    } else if (rest.startsWith("changes to ")) {
        form = CHANGES, skip = 11;
    } else if (rest.startsWith("stays ")) {
        form = STAYS, skip = 6;
    } else {
        failure = Failure{restColumn, forms};
        return false;
    }
    while (skip < rest.length() && rest[skip] == ' ') ++skip;
    String operand = rest.substring(skip);
    unsigned operandColumn = restColumn + static_cast<unsigned>(skip);
    uint64_t ms = 0;
    String durationText;
    if (form == CHANGES || form == STAYS) {
        const char* joint = form == CHANGES ? "within" : "for";
        int at = lastWord(" " + operand + " ", joint) - 1;
        if (at <= 0 || at + strlen(joint) + 1 > operand.length()) {
            failure = Failure{operandColumn + static_cast<unsigned>(operand.length()),
                              String::Formatted("expecting '%s DURATION'", joint)};
            return false;
        }
        durationText = operand.substring(at + strlen(joint) + 1);
        unsigned durationColumn = operandColumn + static_cast<unsigned>(at + strlen(joint) + 1);
        operand = operand.substring(0, at - 1);
        Value duration;
        if (!literal(durationText, durationColumn, duration, failure)) return false;
        if (duration.subtype != DST_REL_TIME || duration.data.time < VX::Time()) {
            failure = Failure{durationColumn, "expecting a duration, such as 5s or 1h30m, not " +
                                                  duration.toString()};
            return false;
        }
        ms = duration.data.time.toMilliseconds();
    }
    if (operand.isEmpty()) {
        failure = Failure{operandColumn, forms};
        return false;
    }
    changes_.observe(name);

    if (form == NOW_LIKE) {
        VXPtr<VXRegEx::Pattern> pattern = VXRegEx::COMPILE_EXPRESSION(operand);
        if (!pattern) {
            failure = Failure{operandColumn, "invalid regular expression"};
            return false;
        }
        String got = currentValue(name);
        if (pattern->match(got)) {
            ++passed_;
        } else {
            checkFailed(name + " ~ " + operand, got, VX::Time::NOW(), name);
        }
        return true;
    }

    Expected expected;
    expected.text = operand;
    TextError error;
    if (!READ_LITERAL(operand, expected.value, error)) {
        if (!operand.startsWith("#")) {
            failure = Failure{operandColumn + static_cast<unsigned>(error.offset), error.message};
            return false;
        }
        expected.byText = true;
    }
    auto matchesNow = [&] {
        Value value;
        if (Repository::GET_VALUE(name, value).isErr()) value = Value(VX::SysEvent::DST_ERR_NA);
        return matches(value, expected);
    };

    if (form == NOW_EQUAL) {
        if (matchesNow()) {
            ++passed_;
        } else {
            checkFailed(name + " = " + operand, currentValue(name), VX::Time::NOW(), name);
        }
        return true;
    }

    String what = form == CHANGES ? name + " changes to " + operand + " within " + durationText
                                  : name + " stays " + operand + " for " + durationText;
    if (form == STAYS && !matchesNow()) {
        checkFailed(what, currentValue(name), VX::Time::NOW(), name);
        passTime(ms);
        return true;
    }
    size_t seen = changes_.changes(name).size();
    passTime(ms);
    std::vector<Change> history = changes_.changes(name);
    for (size_t i = seen; i < history.size(); ++i) {
        bool hit = matches(history[i].value, expected);
        if (form == CHANGES && hit) {
            ++passed_;
            return true;
        }
        if (form == STAYS && !hit) {
            checkFailed(what, history[i].value.toString(), history[i].time, name);
            return true;
        }
    }
    if (form == STAYS) {
        ++passed_;
    } else {
        checkFailed(what, currentValue(name), VX::Time::NOW(), name);
    }
    return true;
}

}  // namespace SysEventTool
