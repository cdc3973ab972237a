// The why command: a value's provenance, one line per node of the formula
// under the name, indented by depth:
//
//   line1.alarm = true (expression) [00:00:05.000]
//     DEBOUNCEINC = true [00:00:00.000 .. 00:00:05.000] idle
//       NOT = true [00:00:00.000]
//         line1.up = false (variable) [00:00:00.000]
//       5s
//
// Each line shows the node's value as it stands and the start and end of
// its event (one time when they are equal, "never" before the first
// computation), "dirty" for a node that is stale until read, and the state
// of timer-driven and latching functions. Nothing is recomputed unless
// --fresh is given.
#include "sysevent/repository/explain.h"
#include "tools/sysevent/literal_reader.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

using VX::SysEvent::DST_UNDEF;
using VX::SysEvent::ExplainRow;
using VX::SysEvent::FunctionState;

namespace {

String eventTimes(const VX::SysEvent::Event& event) {
    if (event.start == VX::Time() && event.end == VX::Time()) return "[never]";
    if (event.start == event.end) return "[" + TIME_OF_DAY(event.start) + "]";
    return "[" + TIME_OF_DAY(event.start) + " .. " + TIME_OF_DAY(event.end) + "]";
}

String stateText(const FunctionState& item) {
    String text = item.what;
    if (item.value.subtype != DST_UNDEF) text += " " + item.value.toString();
    if (item.hasTime) text += (item.isDue ? " due " : " at ") + TIME_OF_DAY(item.time);
    return text;
}

String rowText(const ExplainRow& row) {
    String line(std::string(2 * static_cast<size_t>(row.depth), ' '));
    if (row.kind == ExplainRow::LITERAL) return line + row.text;
    line += row.text + " = " + row.event.value.toString();
    if (row.kind == ExplainRow::NAME) line += " (" + row.binding + ")";
    line += " " + eventTimes(row.event);
    if (row.dirty) line += " dirty";
    for (size_t i = 0; i < row.state.size(); ++i) {
        line += (i == 0 ? " " : ", ") + stateText(row.state[i]);
    }
    return line;
}

}  // namespace

bool Session::cmdWhy(const CommandLine& cmd, Failure& failure) {
    String name = cmd.rest;
    bool fresh = false;
    int option = name.indexOf(" --fresh");
    if (option >= 0 && static_cast<size_t>(option) + 8 == name.length()) {
        fresh = true;
        name = name.substring(0, option);
    }
    CommandLine nameOnly = cmd;
    nameOnly.rest = name;
    if (!oneWord(nameOnly, "a name (and --fresh)", name, failure)) return false;
    VXVector<ExplainRow> rows;
    XCode rc = VX::SysEvent::EXPLAIN_VALUE(name, fresh, rows);
    if (rc.isErr()) {
        failure = Failure{cmd.restColumn, MESSAGE_OF(rc)};
        return false;
    }
    for (const ExplainRow& row : rows) output_.line(rowText(row));
    return true;
}

}  // namespace SysEventTool
