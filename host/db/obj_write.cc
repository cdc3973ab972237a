// DB::ObjWrite: inserts, updates and deletes with their notifications. Each
// operation runs inside an SQL savepoint and collects its notifications
// locally, so that a failure halfway (a child that cannot be deleted, a bad
// parent reference) undoes the whole operation and reports nothing.
#include "host/db/obj_write.h"

#include <sqlite3.h>

#include <optional>

#include "host/db/obj_read.h"
#include "host/db/queries.h"
#include "host/db/sqlite.h"
#include "host/db/transaction.h"

namespace DB {

namespace {

// Ancestor chains and child trees deeper than this can only come from
// parent references that form a cycle.
constexpr int kMaxDepth = 64;

const String kSavepoint = "SAVEPOINT objwrite";
const String kRollbackTo = "ROLLBACK TO objwrite";
const String kRelease = "RELEASE objwrite";

// An operation's savepoint: released by commit(), rolled back otherwise.
class Savepoint {
public:
    Savepoint(detail::StatementCache& cache, const String& what) : cache_(cache), what_(what) {
        rc_ = detail::EXEC(cache_, kSavepoint, what_);
    }
    ~Savepoint() {
        // When SQLite has ended the savepoint itself (some failures roll the
        // whole transaction back), ROLLBACK TO fails and nothing is released.
        if (open() && detail::EXEC(cache_, kRollbackTo, what_).isSuccess()) {
            detail::EXEC(cache_, kRelease, what_);
        }
    }
    const XCode& status() const { return rc_; }
    XCode commit() {
        XCode rc = detail::EXEC(cache_, kRelease, what_);
        if (rc.isSuccess()) released_ = true;
        return rc;
    }

private:
    bool open() const { return rc_.isSuccess() && !released_; }
    detail::StatementCache& cache_;
    const String& what_;
    XCode rc_;
    bool released_ = false;
};

bool sameCells(const Row& a, const Row& b, const VXVector<uint16_t>& columns) {
    for (uint16_t c : columns) {
        if (!(a.cells[c] == b.cells[c])) return false;
    }
    return true;
}

}  // namespace

ObjWrite::ObjWrite(Transaction& tx) : tx_(tx) {}

XCode ObjWrite::check(const String& table, const StructDef*& s) const {
    if (!tx_.isStarted()) return XCode(E_TRANSACTION, "TRANSACTION NOT STARTED");
    if (tx_.getType() != TRANSACTION_WRITE) return XCode(E_TRANSACTION, "NOT A WRITE TRANSACTION");
    Database& db = *tx_.getDatabase();
    // A transaction belongs to the thread that started it; from any other
    // thread the lock would only be had after its end.
    if (!db.inTransaction() || db.outerType() != TRANSACTION_WRITE) {
        return XCode(E_TRANSACTION, "NOT A WRITE TRANSACTION");
    }
    s = tx_.getBase().findStruct(table);
    if (!s) return XCode(E_SCHEMA).setStringF("NO SUCH DATABASE TABLE: %s", table.c_str());
    return XCode();
}

XCode ObjWrite::parse(const StructDef& s, const Values& values,
                      VXVector<std::pair<uint16_t, Cell>>& out) const {
    for (const auto& [name, text] : values) {
        const FieldDef* f = s.findField(name);
        if (!f) {
            return XCode(E_SCHEMA).setStringF("NO SUCH DATABASE FIELD: %s.%s", s.name.c_str(),
                                              name.c_str());
        }
        for (const auto& done : out) {
            if (done.first == f->no) {
                return XCode(E_VALUE).setStringF("DATABASE FIELD GIVEN TWICE: %s",
                                                 f->qualified.c_str());
            }
        }
        Cell cell;
        XCode rc = PARSE_FIELD_TEXT(*f, text, cell);
        if (rc.isErr()) return rc;
        out.emplace_back(f->no, cell);
    }
    return XCode();
}

// The parent an entry names must exist, and the entry must not be among its
// own ancestors.
XCode ObjWrite::checkParent(const StructDef& s, const Row& row) const {
    uint16_t no;
    uint64_t uid;
    if (!detail::PARENT_OF(s, row, no, uid)) return XCode();
    detail::StatementCache& conn = *tx_.getDatabase()->statements_;
    const Base& base = tx_.getBase();
    for (int depth = 0; depth < kMaxDepth; ++depth) {
        if (no == s.no && uid == row.uid) {
            return XCode(E_CONSTRAINT)
                .setStringF("DATABASE ENTRY WOULD BE ITS OWN ANCESTOR: %s", s.name.c_str());
        }
        const StructDef* ps = base.findStruct(no);
        std::shared_ptr<const Row> parent;
        XCode rc = ps ? detail::READ_ROW(conn, *ps, uid, parent) : XCode(E_NOT_FOUND);
        if (rc.getValue() == E_NOT_FOUND) {
            if (depth > 0) return XCode();  // an older dangling reference is not this write's fault
            return XCode(E_CONSTRAINT)
                .setStringF("PARENT DATABASE ENTRY DOES NOT EXIST: %s", s.name.c_str());
        }
        if (rc.isErr()) return rc;
        if (!detail::PARENT_OF(*ps, *parent, no, uid)) return XCode();
    }
    return XCode();
}

XCode ObjWrite::insert(const String& table, const Values& values, uint64_t* uid) {
    const StructDef* s;
    VXVector<std::pair<uint16_t, Cell>> cells;
    XCode rc = check(table, s);
    if (rc.isSuccess()) rc = parse(*s, values, cells);
    if (rc.isErr()) return rc;
    Database& db = *tx_.getDatabase();

    String sql = "INSERT INTO " + s->quoted;
    if (cells.empty()) {
        sql += " DEFAULT VALUES";
    } else {
        String names, params;
        for (size_t i = 0; i < cells.size(); ++i) {
            names += (i ? ", " : "") + s->fields[cells[i].first].quoted;
            params.concatf("%s?%zu", i ? ", " : "", i + 1);
        }
        sql += " (" + names + ") VALUES (" + params + ")";
    }
    db.lastRows_.clear();
    Savepoint sp(*db.statements_, db.path_);
    if (sp.status().isErr()) return sp.status();
    detail::Statement st;
    rc = st.prepare(*db.statements_, sql, s->name);
    if (rc.isErr()) return rc;
    for (size_t i = 0; i < cells.size(); ++i) st.bind(static_cast<int>(i + 1), cells[i].second);
    rc = st.run();
    if (rc.isErr()) return rc;

    uint64_t newUid = static_cast<uint64_t>(sqlite3_last_insert_rowid(db.conn_));
    std::shared_ptr<const Row> row;
    rc = detail::CAPTURE_ROW(*db.statements_, tx_.getBase(), *s, newUid, row);
    if (rc.isSuccess()) rc = checkParent(*s, *row);
    if (rc.isSuccess()) rc = sp.commit();
    if (rc.isErr()) return rc;
    db.queue(EVENT_NEW, row, tx_.getDatabaseDescription());
    if (uid) *uid = newUid;
    return XCode();
}

XCode ObjWrite::update(const String& table, uint64_t uid, const Values& values) {
    const StructDef* s;
    VXVector<std::pair<uint16_t, Cell>> cells;
    XCode rc = check(table, s);
    if (rc.isSuccess()) rc = parse(*s, values, cells);
    if (rc.isErr()) return rc;
    Database& db = *tx_.getDatabase();

    // An update that leaves the parent reference alone needs no parent check,
    // so its one UPDATE statement is atomic by itself: no savepoint. What it
    // stores is what the parsed values are (each field type's values keep
    // their kind under the column's affinity, and only the table's own
    // triggers could change more), so the entry afterwards is known without
    // reading it again, and the next update of it in this transaction starts
    // from there. A table with triggers or parent fields, or a change of the
    // parent reference, takes the general path.
    bool general = s->hasTriggers || s->hasParentFields();
    std::optional<Savepoint> sp;
    if (general) {
        sp.emplace(*db.statements_, db.path_);
        if (sp->status().isErr()) return sp->status();
        db.lastRows_.clear();
    }
    std::shared_ptr<const Row> before = general ? nullptr : db.lastRow(s->no, uid);
    std::shared_ptr<const Row> after;
    if (!before) {
        rc = detail::CAPTURE_ROW(*db.statements_, tx_.getBase(), *s, uid, before);
        if (rc.isErr()) return rc;
    }
    if (cells.empty()) return XCode();

    rc = detail::UPDATE_ROW(*db.statements_, *s, uid, cells);
    if (general) {
        if (rc.isSuccess())
            rc = detail::CAPTURE_ROW(*db.statements_, tx_.getBase(), *s, uid, after);
        if (rc.isSuccess()) rc = checkParent(*s, *after);
        if (rc.isSuccess()) rc = sp->commit();
        if (rc.isErr()) return rc;
    } else {
        if (rc.isErr()) return rc;
        auto row = std::make_shared<Row>(*before);
        for (const auto& [no, cell] : cells) row->cells[no] = cell;
        after = std::move(row);
        db.lastRows_[{s->no, uid}] = after;
    }

    if (before->cells == after->cells) return XCode();
    if (s->identifierIndex != NO_INDEX &&
        !sameCells(*before, *after, s->indexes[s->identifierIndex].fields)) {
        db.queue(EVENT_DELETE, before, tx_.getDatabaseDescription());
        db.queue(EVENT_NEW, after, tx_.getDatabaseDescription());
    } else {
        db.queue(EVENT_UPDATE, after, tx_.getDatabaseDescription());
    }
    return XCode();
}

XCode ObjWrite::remove(const String& table, uint64_t uid) {
    const StructDef* s;
    XCode rc = check(table, s);
    if (rc.isErr()) return rc;
    Database& db = *tx_.getDatabase();
    db.lastRows_.clear();
    Savepoint sp(*db.statements_, db.path_);
    if (sp.status().isErr()) return sp.status();
    Changes changes;
    rc = removeTree(*s, uid, 0, changes);
    if (rc.isSuccess()) rc = sp.commit();
    if (rc.isErr()) return rc;
    for (auto& [type, row] : changes) db.queue(type, row, tx_.getDatabaseDescription());
    return XCode();
}

XCode ObjWrite::removeTree(const StructDef& s, uint64_t uid, int depth, Changes& changes) {
    if (depth > kMaxDepth) {
        return XCode(E_CONSTRAINT).setStringF("PARENT REFERENCES FORM A CYCLE: %s", s.name.c_str());
    }
    detail::StatementCache& conn = *tx_.getDatabase()->statements_;
    const Base& base = tx_.getBase();
    std::shared_ptr<const Row> row;
    XCode rc = detail::CAPTURE_ROW(conn, base, s, uid, row);
    VXVector<std::pair<uint16_t, uint64_t>> children;
    if (rc.isSuccess()) rc = detail::FIND_CHILDREN(conn, base, s.no, uid, children);
    for (size_t i = 0; rc.isSuccess() && i < children.size(); ++i) {
        rc =
            removeTree(*base.findStruct(children[i].first), children[i].second, depth + 1, changes);
    }
    if (rc.isErr()) return rc;
    detail::Statement st;
    rc = st.prepare(conn, "DELETE FROM " + s.quoted + " WHERE rowid = ?1", s.name);
    if (rc.isErr()) return rc;
    st.bind(1, static_cast<int64_t>(uid));
    rc = st.run();
    if (rc.isErr()) return rc;
    changes.emplace_back(EVENT_DELETE, row);
    return XCode();
}

XCode ObjWrite::uidOf(const _Key& key, String& table, uint64_t& uid) const {
    const StructDef* s;
    const IndexDef* index;
    VXVector<Cell> values;
    XCode rc = key.resolve(s, index);
    if (rc.isSuccess()) rc = key.getValues(values);
    if (rc.isSuccess()) rc = check(s->name, s);
    if (rc.isSuccess()) {
        // Match by the transaction's dictionary, which the write will use.
        const IndexDef* current = nullptr;
        for (const IndexDef& i : s->indexes) {
            if (i.sqlName == index->sqlName) current = &i;
        }
        if (!current || current->fields.size() != values.size()) {
            return XCode(E_SCHEMA).setStringF("INVALID DATABASE INDEX: %s", index->sqlName.c_str());
        }
        rc = detail::FIND_BY_INDEX(*tx_.getDatabase()->statements_, *s, *current, values, uid);
    }
    if (rc.isSuccess()) table = s->name;
    return rc;
}

XCode ObjWrite::update(const _Key& key, const Values& values) {
    String table;
    uint64_t uid;
    XCode rc = uidOf(key, table, uid);
    return rc.isSuccess() ? update(table, uid, values) : rc;
}

XCode ObjWrite::remove(const _Key& key) {
    String table;
    uint64_t uid;
    XCode rc = uidOf(key, table, uid);
    return rc.isSuccess() ? remove(table, uid) : rc;
}

}  // namespace DB
