// The SQL the database layer runs on entries. Statements are built from the
// dictionary, with every table and column name quoted, and taken from the
// connection's statement cache: a text is compiled once and then only bound
// and run, which is most of the cost of a write burst otherwise.
#include "host/db/queries.h"

#include "host/db/sqlite.h"

namespace DB::detail {

namespace {

// Ancestor chains longer than this are cut: only a corrupt parent reference
// that points back into its own chain could make one.
constexpr int kMaxAncestors = 64;

XCode notFound(const StructDef& s) {
    return XCode(E_NOT_FOUND).setStringF("DATABASE ENTRY NOT FOUND: %s", s.name.c_str());
}

}  // namespace

XCode READ_CELLS(StatementCache& cache, const StructDef& s, uint64_t uid, Row& row) {
    Statement st;
    XCode rc = st.prepare(cache, s.selectRow, s.name);
    if (rc.isErr()) return rc;
    st.bind(1, static_cast<int64_t>(uid));
    if (!st.step(rc)) return rc.isErr() ? rc : notFound(s);
    row.structNo = s.no;
    row.uid = uid;
    row.cells.clear();
    row.cells.reserve(s.columnCount);
    for (uint16_t c = 0; c < s.columnCount; ++c) row.cells.push_back(st.column(c));
    return XCode();
}

XCode UPDATE_ROW(StatementCache& cache, const StructDef& s, uint64_t uid,
                 const VXVector<std::pair<uint16_t, Cell>>& cells) {
    String sql = "UPDATE " + s.quoted + " SET ";
    for (size_t i = 0; i < cells.size(); ++i) {
        sql += (i ? ", " : "") + s.fields[cells[i].first].quoted + " = ?" +
               DECIMAL(static_cast<uint64_t>(i + 1));
    }
    sql += " WHERE rowid = ?" + DECIMAL(static_cast<uint64_t>(cells.size() + 1));
    Statement st;
    XCode rc = st.prepare(cache, sql, s.name);
    if (rc.isErr()) return rc;
    for (size_t i = 0; i < cells.size(); ++i) st.bind(static_cast<int>(i + 1), cells[i].second);
    st.bind(static_cast<int>(cells.size() + 1), static_cast<int64_t>(uid));
    return st.run();
}

XCode READ_ROW(StatementCache& cache, const StructDef& s, uint64_t uid,
               std::shared_ptr<const Row>& out) {
    auto row = std::make_shared<Row>();
    XCode rc = READ_CELLS(cache, s, uid, *row);
    if (rc.isSuccess()) out = std::move(row);
    return rc;
}

XCode CAPTURE_ROW(StatementCache& cache, const Base& base, const StructDef& s, uint64_t uid,
                  std::shared_ptr<const Row>& out) {
    // Read the chain from the entry upwards, then link it from the top down,
    // since a Row is immutable once shared.
    VXVector<Row> chain(1);
    XCode rc = READ_CELLS(cache, s, uid, chain[0]);
    if (rc.isErr()) return rc;
    const StructDef* def = &s;
    while (static_cast<int>(chain.size()) <= kMaxAncestors) {
        uint16_t parentNo;
        uint64_t parentUid;
        if (!PARENT_OF(*def, chain.back(), parentNo, parentUid)) break;
        chain.back().parentCaptured = true;
        def = base.findStruct(parentNo);
        Row parent;
        if (!def || READ_CELLS(cache, *def, parentUid, parent).isErr()) break;
        chain.push_back(std::move(parent));
    }
    std::shared_ptr<const Row> above;
    for (size_t i = chain.size(); i-- > 0;) {
        auto row = std::make_shared<Row>(std::move(chain[i]));
        if (row->parentCaptured) row->parent = above;
        above = std::move(row);
    }
    out = std::move(above);
    return XCode();
}

XCode FIND_BY_INDEX(StatementCache& cache, const StructDef& s, const IndexDef& index,
                    const VXVector<Cell>& values, uint64_t& uid) {
    String sql = "SELECT rowid FROM " + s.quoted + " WHERE ";
    for (size_t i = 0; i < index.fields.size(); ++i) {
        if (i) sql += " AND ";
        sql += s.fields[index.fields[i]].quoted;
        sql.concatf(" = ?%zu", i + 1);
    }
    sql += " ORDER BY rowid LIMIT 1";
    Statement st;
    XCode rc = st.prepare(cache, sql, s.name);
    if (rc.isErr()) return rc;
    for (size_t i = 0; i < values.size(); ++i) st.bind(static_cast<int>(i + 1), values[i]);
    if (!st.step(rc)) return rc.isErr() ? rc : notFound(s);
    uid = static_cast<uint64_t>(st.columnInt(0));
    return XCode();
}

XCode FIND_NEXT(StatementCache& cache, const StructDef& s, uint64_t after, uint64_t& uid) {
    Statement st;
    XCode rc = st.prepare(
        cache, "SELECT rowid FROM " + s.quoted + " WHERE rowid > ?1 ORDER BY rowid LIMIT 1",
        s.name);
    if (rc.isErr()) return rc;
    st.bind(1, static_cast<int64_t>(after));
    if (!st.step(rc)) {
        if (rc.isErr()) return rc;
        return XCode(E_NOT_FOUND).setStringF("NO DATABASE ENTRY: %s", s.name.c_str());
    }
    uid = static_cast<uint64_t>(st.columnInt(0));
    return XCode();
}

XCode FIND_CHILDREN(StatementCache& cache, const Base& base, uint16_t structNo, uint64_t uid,
                    VXVector<std::pair<uint16_t, uint64_t>>& children) {
    for (uint16_t no = 1; no <= base.getNumberOfStructs(); ++no) {
        const StructDef& child = *base.findStruct(no);
        if (!child.hasParentFields()) continue;
        Statement st;
        XCode rc =
            st.prepare(cache,
                       "SELECT rowid FROM " + child.quoted + " WHERE " +
                           child.fields[child.parentStructColumn].quoted + " = ?1 AND " +
                           child.fields[child.parentIdColumn].quoted + " = ?2 ORDER BY rowid",
                       child.name);
        if (rc.isErr()) return rc;
        st.bind(1, static_cast<int64_t>(structNo));
        st.bind(2, static_cast<int64_t>(uid));
        while (st.step(rc)) children.emplace_back(no, static_cast<uint64_t>(st.columnInt(0)));
        if (rc.isErr()) return rc;
    }
    return XCode();
}

bool PARENT_OF(const StructDef& s, const Row& row, uint16_t& structNo, uint64_t& uid) {
    if (!s.hasParentFields()) return false;
    const Cell& no = row.cells[s.parentStructColumn];
    const Cell& id = row.cells[s.parentIdColumn];
    if (no.kind != Cell::INT || no.i <= 0 || no.i >= NO_STRUCT || id.kind != Cell::INT) {
        return false;
    }
    structNo = static_cast<uint16_t>(no.i);
    uid = static_cast<uint64_t>(id.i);
    return true;
}

}  // namespace DB::detail
