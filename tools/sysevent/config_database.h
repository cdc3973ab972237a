// ConfigDatabase: the configuration database the tool works on, and the
// "db" command that changes it. The tool writes entries through DB::ObjWrite
// like the device's configuration component would, so every change reaches
// the change callbacks and, through the database tracker, the "db."
// variables bound to it.
//
// Entries are named like the tables of "db." variable names: table
// specifiers joined by '.', each a table name with its key values after ':'
// ("Interface:eth0", "Interface:eth0.Address:1"). A key value fills the
// table's identifier index fields in index order; objType and objStatus take
// the running configuration's 2 and 10, and the parent reference fields name
// the entry of the specifier to the left. A table without an identifier
// index holds one entry and takes no key values. Unlike in variable names, a
// '.' starts a new specifier only when a letter or '_' follows it, so that
// key values may contain dots ("Route:10.0.0.0:8").
#pragma once

#include <cstdint>
#include <vector>

#include "host/db/db.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "tools/sysevent/command_line.h"
#include "tools/sysevent/output.h"

namespace SysEventTool {

class ConfigDatabase {
public:
    explicit ConfigDatabase(Output& output) : output_(output) {}

    // Opens the database file at `path`, made when missing, or an in-memory
    // database when `path` is empty; a database without tables gets the
    // bundled example schema. The database becomes the process's default
    // one, on which the tracker works.
    XCode open(const String& path);
    // Works on `database`, open already, instead; it becomes the default one.
    void use(const VXPtr<DB::Database>& database);

    // "db insert ENTRY FIELD=VALUE...", "db update ENTRY FIELD=VALUE...",
    // "db delete ENTRY", "db show ENTRY|TABLE": `words` are the words after
    // "db". On failure `column` is the column the failure is about.
    XCode command(const std::vector<Word>& words, unsigned& column);

private:
    struct Specifier {
        String table;
        std::vector<String> keys;
    };
    using Values = DB::ObjWrite::Values;

    static XCode PARSE_SPECIFIERS(const String& text, std::vector<Specifier>& chain);
    // The identifier index fields of chain[i] and their values as text; for
    // a table without identifier index, nothing.
    XCode keyValues(DB::Transaction& tx, const std::vector<Specifier>& chain, size_t i,
                    Values& out);
    // Positions `entry` on the entry named by chain[0..i].
    XCode locate(DB::Transaction& tx, const std::vector<Specifier>& chain, size_t i,
                 DB::ObjRead& entry);
    void show(const DB::ObjRead& entry);

    Output& output_;
    VXPtr<DB::Database> database_;
};

}  // namespace SysEventTool
