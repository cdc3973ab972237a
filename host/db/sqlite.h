// Internal to the database layer: the thin SQLite wrapper its .cc files share.
// A Statement owns one prepared statement; failures of SQLite become XCodes
// in the layer's message style here, in one place. Not a public header: it
// includes sqlite3.h, which the library links privately.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <unordered_map>

#include "host/db/cell.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

namespace DB::detail {

// The SQL text of an identifier: in double quotes, inner quotes doubled.
String QUOTE(const String& name);

// The file of a connection as SQLite names it (absolute), ":memory:" for an
// in-memory one, `fallback` without a connection.
String FILE_OF(sqlite3* conn, const String& fallback);

// The XCode of a failed SQLite call `rc` on `conn`. Failures of the file
// (unreadable, busy, read-only, moved, I/O) name the connection's file, or
// `what` without a connection, followed by SQLite's message in parentheses;
// constraint failures name `what` (the table).
// Constraint failures are E_CONSTRAINT, unreadable files E_CORRUPT,
// everything else E_DATABASE.
XCode SQLITE_FAILURE(sqlite3* conn, int rc, const String& what);

// Runs SQL text without results (one or more statements).
XCode EXEC(sqlite3* conn, const String& sql, const String& what);

// The prepared statements of one connection, by SQL text. Compiling SQL
// costs more than running the short statements the layer issues on entries,
// so each text is compiled once per connection and reused. Guarded, like the
// connection, by the database's lock.
class StatementCache {
public:
    explicit StatementCache(sqlite3* conn) : conn_(conn) {}
    ~StatementCache() { clear(); }
    StatementCache(const StatementCache&) = delete;
    StatementCache& operator=(const StatementCache&) = delete;

    sqlite3* conn() const { return conn_; }
    // Finalizes every statement not in use (a schema change makes the old
    // texts useless; SQLite would recompile them on their next use anyway).
    void clear();

private:
    friend class Statement;
    struct Entry {
        sqlite3_stmt* stmt = nullptr;
        bool inUse = false;
    };
    sqlite3* conn_;
    std::unordered_map<String, Entry> entries_;
};

class Statement {
public:
    Statement() = default;
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Prepares one statement; `what` names the object for failure texts and
    // must outlive the Statement (a table's name, a database's path).
    XCode prepare(sqlite3* conn, const String& sql, const String& what);
    // The same, borrowed from `cache` and handed back (reset, unbound) by the
    // destructor. A text already in use by another Statement (a recursive
    // walk) gets a statement of its own.
    XCode prepare(StatementCache& cache, const String& sql, const String& what);

    // Binds parameter `i` (from 1).
    void bind(int i, const Cell& value);
    void bind(int i, int64_t value);
    void bind(int i, const String& value);

    // One step: true with a row, false when done; a failure sets `rc`.
    bool step(XCode& rc);
    // Runs to completion, ignoring rows.
    XCode run();

    Cell column(int i) const;
    int64_t columnInt(int i) const { return sqlite3_column_int64(stmt_, i); }
    String columnText(int i) const;
    bool columnIsNull(int i) const { return sqlite3_column_type(stmt_, i) == SQLITE_NULL; }

private:
    void release();

    sqlite3* conn_ = nullptr;
    sqlite3_stmt* stmt_ = nullptr;
    StatementCache::Entry* borrowed_ = nullptr;
    const String* what_ = nullptr;
};

// Runs one cached statement without parameters or results.
XCode EXEC(StatementCache& cache, const String& sql, const String& what);

}  // namespace DB::detail
