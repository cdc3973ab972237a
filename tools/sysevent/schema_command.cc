// The schema command: SQL that extends the configuration database while the
// tool runs (a table for a component being tried out, an index, a trigger).
// The database layer applies it as one step, so refused SQL names its cause
// and leaves the tables as they were.
#include "host/db/db.h"
#include "tools/sysevent/literal_reader.h"
#include "tools/sysevent/session.h"

namespace SysEventTool {

bool Session::cmdSchema(const CommandLine& cmd, Failure& failure) {
    if (cmd.rest.isEmpty()) {
        failure = Failure{cmd.restColumn, "expecting schema SQL, such as CREATE TABLE T (a U8)"};
        return false;
    }
    VXPtr<DB::Database> db = DB::Database::GET_DEFAULT();
    XCode rc = db ? db->applySchema(cmd.rest) : XCode::Failure("NO DATABASE");
    if (rc.isErr()) {
        failure = Failure{cmd.restColumn, MESSAGE_OF(rc)};
        return false;
    }
    return true;
}

}  // namespace SysEventTool
