// DB::Database: opening, schema changes, the transaction bracket and the
// delivery of committed changes.
#include "host/db/database.h"

#include <sqlite3.h>

#include <fstream>
#include <sstream>

#include "host/component/component_manager.h"
#include "host/db/obj_read.h"
#include "host/db/sqlite.h"

namespace DB {

namespace {

// How long a statement waits for another process that holds the file.
constexpr int kBusyTimeoutMs = 2000;

struct DefaultDatabase {
    std::mutex mutex;
    VXPtr<Database> db;
};

// Never destroyed, like the host's other singletons.
DefaultDatabase& defaultDatabase() {
    static DefaultDatabase* d = new DefaultDatabase();
    return *d;
}

// SQLite opens any file lazily and reports most damage only when a page is
// read, so the check reads them all (without the slower index cross-check).
XCode quickCheck(sqlite3* conn, const String& path) {
    detail::Statement st;
    XCode rc = st.prepare(conn, "PRAGMA quick_check", path);
    if (rc.isErr()) return rc;
    if (!st.step(rc)) return rc;
    const String found = st.columnText(0);
    if (found != "ok") {
        // SQLite's first finding is the reason; its lines become one.
        String reason;
        for (size_t i = 0; i < found.length(); ++i) reason += found[i] == '\n' ? ' ' : found[i];
        return XCode(E_CORRUPT,
                     "CORRUPT DATABASE FILE: " + detail::FILE_OF(conn, path) + " (" + reason + ")");
    }
    return XCode();
}

}  // namespace

Database::Database(sqlite3* conn, const String& path)
    : conn_(conn), statements_(new detail::StatementCache(conn)), path_(path) {}

Database::~Database() {
    statements_.reset();
    sqlite3_close_v2(conn_);
}

XCode Database::OPEN(VXPtr<Database>& out, const String& path, OpenMode mode) {
    int flags = mode == OPEN_READ_ONLY ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    if (mode == OPEN_CREATE) flags |= SQLITE_OPEN_CREATE;
    return OPEN_CONNECTION(out, path, flags, true);
}

XCode Database::OPEN_IN_MEMORY(VXPtr<Database>& out) {
    return OPEN_CONNECTION(out, ":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, false);
}

XCode Database::OPEN_CONNECTION(VXPtr<Database>& out, const String& path, int flags, bool check) {
    sqlite3* conn = nullptr;
    // The layer serialises each connection itself (lock_).
    int r = sqlite3_open_v2(path.c_str(), &conn, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (r != SQLITE_OK) {
        XCode rc = detail::SQLITE_FAILURE(nullptr, r, path);
        sqlite3_close_v2(conn);
        return rc;
    }
    sqlite3_extended_result_codes(conn, 1);
    sqlite3_busy_timeout(conn, kBusyTimeoutMs);
    XCode rc = check ? quickCheck(conn, path) : XCode();
    VXPtr<const Base> base;
    if (rc.isSuccess()) rc = Base::LOAD(conn, path, base);
    if (rc.isErr()) {
        sqlite3_close_v2(conn);
        return rc;
    }
    VXPtr<Database> db(new Database(conn, detail::FILE_OF(conn, path)));
    db->base_ = base;
    out = db;
    return XCode();
}

void Database::SET_DEFAULT(const VXPtr<Database>& db) {
    DefaultDatabase& d = defaultDatabase();
    std::lock_guard<std::mutex> guard(d.mutex);
    d.db = db;
}

VXPtr<Database> Database::GET_DEFAULT() {
    DefaultDatabase& d = defaultDatabase();
    std::lock_guard<std::mutex> guard(d.mutex);
    return d.db;
}

VXPtr<const Base> Database::getBase() const {
    std::lock_guard<std::mutex> guard(baseMutex_);
    return base_;
}

XCode Database::applySchema(const String& sql) {
    VXAutoLock lock(lock_);
    if (depth_ > 0) return XCode(E_TRANSACTION, "TRANSACTION ALREADY ACTIVE: " + path_);
    // The cached statements were compiled against the old schema.
    statements_->clear();
    XCode rc = detail::EXEC(*statements_, "BEGIN IMMEDIATE", path_);
    if (rc.isErr()) return rc;
    int r = sqlite3_exec(conn_, sql.c_str(), nullptr, nullptr, nullptr);
    if (r != SQLITE_OK) {
        // An SQL error is the schema's fault; busy, read-only or I/O are not.
        if ((r & 0xFF) == SQLITE_ERROR) {
            rc = XCode(E_SCHEMA, String("INVALID DATABASE SCHEMA: ") + sqlite3_errmsg(conn_));
        } else {
            rc = detail::SQLITE_FAILURE(conn_, r, path_);
            if ((r & 0xFF) == SQLITE_CONSTRAINT) rc.extendString("INVALID DATABASE SCHEMA");
        }
    } else if (sqlite3_get_autocommit(conn_)) {
        // The SQL ended the transaction itself, so what it did is permanent:
        // take whatever dictionary that left.
        rc = XCode(E_SCHEMA, "INVALID DATABASE SCHEMA: TRANSACTION STATEMENT IN SCHEMA");
        VXPtr<const Base> base;
        if (Base::LOAD(conn_, path_, base).isSuccess()) {
            std::lock_guard<std::mutex> guard(baseMutex_);
            base_ = base;
        }
        return rc;
    }
    VXPtr<const Base> base;
    if (rc.isSuccess()) {
        rc = Base::LOAD(conn_, path_, base);
        if (rc.isErr()) rc.extendString("INVALID DATABASE SCHEMA");
    }
    if (rc.isSuccess()) rc = detail::EXEC(conn_, "COMMIT", path_);
    if (rc.isErr()) {
        detail::EXEC(conn_, "ROLLBACK", path_);
        return rc;
    }
    std::lock_guard<std::mutex> guard(baseMutex_);
    base_ = base;
    return XCode();
}

void Database::setBusyTimeout(int milliseconds) {
    VXAutoLock lock(lock_);
    sqlite3_busy_timeout(conn_, milliseconds);
}

XCode Database::applySchemaFile(const String& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    std::ostringstream text;
    if (!in || !(text << in.rdbuf())) {
        return XCode(E_SCHEMA, "CANNOT READ SCHEMA FILE: " + path);
    }
    return applySchema(text.str());
}

XCode Database::begin(int type, bool& joined, uint64_t& generation) {
    lock_.lock();
    if (depth_ > 0) {
        // The lock is re-entrant, so getting it with depth_ > 0 means this
        // thread already has a transaction open.
        if (type == TRANSACTION_WRITE) {
            String text = outerType_ == TRANSACTION_READ
                              ? "CANNOT WRITE INSIDE A READ TRANSACTION: "
                              : "TRANSACTION ALREADY ACTIVE: ";
            lock_.unlock();
            return XCode(E_TRANSACTION, text + path_);
        }
        ++depth_;
        joined = true;
        generation = generation_;
        return XCode();
    }
    const char* sql = type == TRANSACTION_READ    ? "BEGIN"
                      : type == TRANSACTION_WRITE ? "BEGIN IMMEDIATE"
                                                  : nullptr;  // registration only
    XCode rc = sql ? detail::EXEC(*statements_, sql, path_) : XCode();
    if (rc.isErr()) {
        lock_.unlock();
        return rc;
    }
    depth_ = 1;
    outerType_ = type;
    joined = false;
    generation = ++generation_;
    return XCode();
}

XCode Database::end(bool commit, bool joined, uint64_t generation) {
    if (joined) {
        // One that outlived its outermost transaction only gives the lock back.
        if (generation == generation_ && depth_ > 0) --depth_;
        lock_.unlock();
        return XCode();
    }
    XCode rc;
    if (outerType_ != TRANSACTION_CALLBACK) {
        if (commit) rc = detail::EXEC(*statements_, "COMMIT", path_);
        // SQLite may have rolled back already after some failures; a second
        // rollback then fails harmlessly.
        if (!commit || rc.isErr()) detail::EXEC(*statements_, "ROLLBACK", path_);
    }
    VXVector<Notification> changes;
    if (commit && rc.isSuccess()) changes.swap(pending_);
    pending_.clear();
    lastRows_.clear();
    depth_ = 0;
    outerType_ = -1;
    lock_.unlock();
    if (!changes.empty()) deliver(changes);
    return rc;
}

void Database::queue(EventType_ type, std::shared_ptr<const Row> row,
                     const VXPtr<const Base>& base) {
    pending_.push_back({type, std::move(row), base});
}

void Database::addRegistrations(const VXVector<Registration>& regs) {
    std::lock_guard<std::mutex> guard(registryMutex_);
    for (const Registration& reg : regs) {
        bool known = false;
        for (const Registration& r : registrations_) {
            known =
                known || (r.table == reg.table && r.type == reg.type && r.endpoint == reg.endpoint);
        }
        if (!known) registrations_.push_back(reg);
    }
}

void Database::deliver(const VXVector<Notification>& changes) {
    VXPtr<Database> self(this);  // a handler may drop the last other reference
    VXVector<std::shared_ptr<VX::ComponentEndpoint>> targets;
    for (const Notification& n : changes) {
        const StructDef* s = n.base->findStruct(n.row->structNo);
        if (!s) continue;
        targets.clear();
        {
            std::lock_guard<std::mutex> guard(registryMutex_);
            std::erase_if(registrations_,
                          [](const Registration& r) { return !r.endpoint->isAlive(); });
            for (const Registration& r : registrations_) {
                if (r.type == n.type && r.table == s->name) targets.push_back(r.endpoint);
            }
        }
        ObjRead entry(self, n.base, n.row);
        for (const auto& target : targets) target->deliver(n.type, entry);
    }
}

}  // namespace DB
