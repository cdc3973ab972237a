// The SQLite wrapper of the database layer and its one mapping of SQLite
// failures to the layer's result codes and texts.
#include "host/db/sqlite.h"

#include <cstring>

namespace DB::detail {

String QUOTE(const String& name) {
    String out = "\"";
    for (size_t i = 0; i < name.length(); ++i) {
        if (name[i] == '"') out += '"';
        out += name[i];
    }
    out += '"';
    return out;
}

namespace {

// SQLite's constraint texts are "<KIND> constraint failed: <detail>"; the
// detail (table.column, or the constraint's name) is what a reader needs.
String constraintDetail(const char* msg) {
    const char* colon = strstr(msg, "failed: ");
    return colon ? String(colon + strlen("failed: ")) : String(msg);
}

}  // namespace

String FILE_OF(sqlite3* conn, const String& fallback) {
    if (!conn) return fallback;
    const char* name = sqlite3_db_filename(conn, "main");
    return name && *name ? String(name) : String(":memory:");
}

XCode SQLITE_FAILURE(sqlite3* conn, int rc, const String& what) {
    const char* msg = conn ? sqlite3_errmsg(conn) : sqlite3_errstr(rc);
    // A fault of the file: which file, and SQLite's own words for what is
    // wrong with it, since the kind alone rarely tells an operator what to do.
    auto file = [&](uint32_t code, const char* kind) {
        return XCode(code, String(kind) + ": " + FILE_OF(conn, what) + " (" + msg + ")");
    };
    switch (rc & 0xFF) {
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
            return file(E_CORRUPT, "CORRUPT DATABASE FILE");
        case SQLITE_CANTOPEN:
            return file(E_CORRUPT, "CANNOT OPEN DATABASE FILE");
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return file(E_DATABASE, "DATABASE IS BUSY");
        case SQLITE_READONLY:
            // Writing to a file unlinked or renamed under an open connection
            // would lose the changes with the last handle.
            if (rc == SQLITE_READONLY_DBMOVED)
                return file(E_DATABASE, "DATABASE FILE MOVED OR DELETED");
            return file(E_DATABASE, "DATABASE IS READ-ONLY");
        case SQLITE_IOERR:
        case SQLITE_FULL:
            return file(E_DATABASE, "DATABASE I/O ERROR");
        case SQLITE_CONSTRAINT:
            switch (rc) {
                case SQLITE_CONSTRAINT_UNIQUE:
                case SQLITE_CONSTRAINT_PRIMARYKEY:
                    return XCode(E_CONSTRAINT, "ENTRY ALREADY EXISTS: " + what);
                case SQLITE_CONSTRAINT_NOTNULL:
                    return XCode(E_CONSTRAINT,
                                 "MISSING VALUE FOR DATABASE FIELD: " + constraintDetail(msg));
                case SQLITE_CONSTRAINT_CHECK:
                    return XCode(E_CONSTRAINT, "CHECK CONSTRAINT FAILED: " + constraintDetail(msg));
                default:
                    return XCode(E_CONSTRAINT, String("CONSTRAINT FAILED: ") + msg);
            }
        default:
            return XCode(E_DATABASE, String("DATABASE ERROR: ") + msg);
    }
}

XCode EXEC(sqlite3* conn, const String& sql, const String& what) {
    int rc = sqlite3_exec(conn, sql.c_str(), nullptr, nullptr, nullptr);
    return rc == SQLITE_OK ? XCode() : SQLITE_FAILURE(conn, rc, what);
}

XCode EXEC(StatementCache& cache, const String& sql, const String& what) {
    Statement st;
    XCode rc = st.prepare(cache, sql, what);
    return rc.isSuccess() ? st.run() : rc;
}

void StatementCache::clear() {
    for (auto it = entries_.begin(); it != entries_.end();) {
        if (it->second.inUse) {
            ++it;
            continue;
        }
        sqlite3_finalize(it->second.stmt);
        it = entries_.erase(it);
    }
}

Statement::~Statement() {
    release();
}

void Statement::release() {
    if (borrowed_) {
        sqlite3_reset(stmt_);
        sqlite3_clear_bindings(stmt_);
        borrowed_->inUse = false;
        borrowed_ = nullptr;
    } else {
        sqlite3_finalize(stmt_);
    }
    stmt_ = nullptr;
}

XCode Statement::prepare(StatementCache& cache, const String& sql, const String& what) {
    release();
    auto [it, added] = cache.entries_.try_emplace(sql);
    StatementCache::Entry& entry = it->second;
    if (entry.inUse) return prepare(cache.conn_, sql, what);
    if (added) {
        int rc = sqlite3_prepare_v3(cache.conn_, sql.c_str(), static_cast<int>(sql.length()),
                                    SQLITE_PREPARE_PERSISTENT, &entry.stmt, nullptr);
        if (rc != SQLITE_OK) {
            sqlite3_finalize(entry.stmt);
            cache.entries_.erase(it);
            return SQLITE_FAILURE(cache.conn_, rc, what);
        }
    }
    entry.inUse = true;
    borrowed_ = &entry;
    stmt_ = entry.stmt;
    conn_ = cache.conn_;
    what_ = &what;
    return XCode();
}

XCode Statement::prepare(sqlite3* conn, const String& sql, const String& what) {
    release();
    conn_ = conn;
    what_ = &what;
    int rc = sqlite3_prepare_v2(conn, sql.c_str(), static_cast<int>(sql.length()), &stmt_, nullptr);
    return rc == SQLITE_OK ? XCode() : SQLITE_FAILURE(conn, rc, what);
}

void Statement::bind(int i, const Cell& value) {
    switch (value.kind) {
        case Cell::NUL:
            sqlite3_bind_null(stmt_, i);
            break;
        case Cell::INT:
            sqlite3_bind_int64(stmt_, i, value.i);
            break;
        case Cell::REAL:
            sqlite3_bind_double(stmt_, i, value.d);
            break;
        case Cell::TEXT:
            bind(i, value.s);
            break;
        case Cell::BLOB:
            sqlite3_bind_blob(stmt_, i, value.s.data(), static_cast<int>(value.s.length()),
                              SQLITE_TRANSIENT);
            break;
    }
}

void Statement::bind(int i, int64_t value) {
    sqlite3_bind_int64(stmt_, i, value);
}

void Statement::bind(int i, const String& value) {
    sqlite3_bind_text(stmt_, i, value.data(), static_cast<int>(value.length()), SQLITE_TRANSIENT);
}

bool Statement::step(XCode& rc) {
    int r = sqlite3_step(stmt_);
    if (r == SQLITE_ROW) return true;
    if (r != SQLITE_DONE) rc = SQLITE_FAILURE(conn_, r, *what_);
    return false;
}

XCode Statement::run() {
    XCode rc;
    while (step(rc)) {
    }
    return rc;
}

Cell Statement::column(int i) const {
    switch (sqlite3_column_type(stmt_, i)) {
        case SQLITE_INTEGER:
            return Cell::Int(sqlite3_column_int64(stmt_, i));
        case SQLITE_FLOAT:
            return Cell::Real(sqlite3_column_double(stmt_, i));
        case SQLITE_NULL:
            return Cell();
        case SQLITE_BLOB: {
            Cell c;
            c.kind = Cell::BLOB;
            const void* p = sqlite3_column_blob(stmt_, i);
            if (p) c.s = String(static_cast<const char*>(p), sqlite3_column_bytes(stmt_, i));
            return c;
        }
        default:
            return Cell::Text(columnText(i));
    }
}

String Statement::columnText(int i) const {
    const unsigned char* p = sqlite3_column_text(stmt_, i);
    int n = sqlite3_column_bytes(stmt_, i);
    return p ? String(reinterpret_cast<const char*>(p), static_cast<size_t>(n)) : String();
}

}  // namespace DB::detail
