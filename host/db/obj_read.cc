// DB::ObjRead: positioning on entries and typed reads of their fields.
#include "host/db/obj_read.h"

#include <limits>

#include "host/db/queries.h"
#include "host/db/transaction.h"

namespace DB {

ObjRead::ObjRead() = default;

ObjRead::ObjRead(Transaction& tx) : db_(tx.getDatabase()), base_(tx.getDatabaseDescription()) {}

ObjRead::ObjRead(const VXPtr<Database>& db, const VXPtr<const Base>& base,
                 std::shared_ptr<const Row> row)
    : db_(db), base_(base), structNo_(row->structNo), row_(std::move(row)) {}

XCode ObjRead::setStructNo(uint16_t structNo) {
    if (!base_ || !base_->findStruct(structNo)) {
        return XCode(E_SCHEMA).setStringF("INVALID DATABASE TABLE NUMBER: %u", structNo);
    }
    structNo_ = structNo;
    row_.reset();
    return XCode();
}

uint16_t ObjRead::getStructNo() const {
    return structNo_;
}

String ObjRead::getStructName() const {
    const StructDef* s = base_ ? base_->findStruct(structNo_) : nullptr;
    return s ? s->name : String();
}

XCode ObjRead::table(const StructDef*& s) const {
    s = base_ ? base_->findStruct(structNo_) : nullptr;
    if (!s) return XCode(E_SCHEMA, "NO DATABASE TABLE SELECTED");
    if (!db_) return XCode(E_TRANSACTION, "NO DATABASE");
    return XCode();
}

XCode ObjRead::position(uint64_t uid) {
    const StructDef* s;
    XCode rc = table(s);
    std::shared_ptr<const Row> row;
    if (rc.isSuccess()) rc = detail::READ_ROW(*db_->statements_, *s, uid, row);
    if (rc.isSuccess()) row_ = std::move(row);
    return rc;
}

XCode ObjRead::lookup(const _Key& key) {
    const StructDef* s;
    const IndexDef* index;
    VXVector<Cell> values;
    XCode rc = key.resolve(s, index);
    if (rc.isSuccess()) rc = key.getValues(values);
    if (rc.isErr()) return rc;
    if (!db_) return XCode(E_TRANSACTION, "NO DATABASE");
    // The key may come from another dictionary; the entry is read with the
    // key's, so that field numbers and types agree with what was matched.
    VXAutoLock lock(db_->lock_);
    uint64_t uid;
    rc = detail::FIND_BY_INDEX(*db_->statements_, *s, *index, values, uid);
    std::shared_ptr<const Row> row;
    if (rc.isSuccess()) rc = detail::READ_ROW(*db_->statements_, *s, uid, row);
    if (rc.isErr()) return rc;
    base_ = key.getDatabaseDescription();
    structNo_ = s->no;
    row_ = std::move(row);
    return XCode();
}

XCode ObjRead::readFirst() {
    const StructDef* s;
    XCode rc = table(s);
    if (rc.isErr()) return rc;
    VXAutoLock lock(db_->lock_);
    uint64_t uid;
    rc = detail::FIND_NEXT(*db_->statements_, *s, 0, uid);
    return rc.isSuccess() ? position(uid) : rc;
}

XCode ObjRead::readNext() {
    const StructDef* s;
    XCode rc = table(s);
    if (rc.isErr()) return rc;
    VXAutoLock lock(db_->lock_);
    uint64_t uid;
    rc = detail::FIND_NEXT(*db_->statements_, *s, getUID(), uid);
    return rc.isSuccess() ? position(uid) : rc;
}

bool ObjRead::hasParent() const {
    const StructDef* s = base_ && row_ ? base_->findStruct(structNo_) : nullptr;
    uint16_t no;
    uint64_t uid;
    return s && detail::PARENT_OF(*s, *row_, no, uid);
}

XCode ObjRead::getParentObj(ObjRead& parent, uint32_t objType, uint32_t objStatus) const {
    const StructDef* s = base_ && row_ ? base_->findStruct(structNo_) : nullptr;
    if (!s) return XCode(E_NOT_FOUND, "NO DATABASE ENTRY READ");
    uint16_t no;
    uint64_t uid;
    if (!detail::PARENT_OF(*s, *row_, no, uid)) {
        return XCode(E_NOT_FOUND).setStringF("DATABASE ENTRY HAS NO PARENT: %s", s->name.c_str());
    }
    XCode notFound =
        XCode(E_NOT_FOUND).setStringF("PARENT DATABASE ENTRY NOT FOUND: %s", s->name.c_str());
    const StructDef* ps = base_->findStruct(no);
    if (!ps) return notFound;
    // An entry captured for a notification names the parent it had then;
    // any other reads the parent as it is now.
    std::shared_ptr<const Row> row = row_->parentCaptured ? row_->parent : nullptr;
    if (!row_->parentCaptured) {
        if (!db_) return XCode(E_TRANSACTION, "NO DATABASE");
        VXAutoLock lock(db_->lock_);
        XCode rc = detail::READ_ROW(*db_->statements_, *ps, uid, row);
        if (rc.isErr() && rc.getValue() != E_NOT_FOUND) return rc;
    }
    if (!row) return notFound;
    auto matches = [&](int column, uint32_t wanted) {
        return column < 0 || (row->cells[column].kind == Cell::INT &&
                              row->cells[column].i == static_cast<int64_t>(wanted));
    };
    if (!matches(ps->objTypeColumn, objType) || !matches(ps->objStatusColumn, objStatus)) {
        return notFound;
    }
    parent = ObjRead(db_, base_, row);
    return XCode();
}

XCode ObjRead::field(const String& name, unsigned sel1, unsigned sel2, const FieldDef*& def,
                     const Cell*& cell) const {
    const StructDef* s = base_ ? base_->findStruct(structNo_) : nullptr;
    if (!s) return XCode(E_SCHEMA, "NO DATABASE TABLE SELECTED");
    if (!row_) return XCode(E_NOT_FOUND).setStringF("NO DATABASE ENTRY READ: %s", s->name.c_str());
    def = s->findField(name);
    if (!def) {
        return XCode(E_SCHEMA).setStringF("NO SUCH DATABASE FIELD: %s.%s", s->name.c_str(),
                                          name.c_str());
    }
    if (sel1 != 0 || sel2 != 0) {
        return XCode(E_VALUE).setStringF("INVALID FIELD SELECTOR: %s", def->qualified.c_str());
    }
    if (def->type == FT_STRUCT) {
        return XCode(E_VALUE).setStringF("FIELD IS A STRUCTURE: %s", def->qualified.c_str());
    }
    cell = &row_->cells[def->column];
    return CHECK_STORED(*def, *cell);
}

namespace {

XCode mismatch(const FieldDef& def) {
    return XCode(E_VALUE).setStringF("FIELD TYPE MISMATCH: %s", def.qualified.c_str());
}

bool oneOf(uint32_t type, std::initializer_list<uint32_t> types) {
    for (uint32_t t : types) {
        if (t == type) return true;
    }
    return false;
}

}  // namespace

template <typename T>
XCode ObjRead::getNumber(const String& name, T& out, unsigned sel1, unsigned sel2,
                         std::initializer_list<uint32_t> types) const {
    const FieldDef* def;
    const Cell* cell;
    XCode rc = field(name, sel1, sel2, def, cell);
    if (rc.isErr()) return rc;
    if (!oneOf(def->type, types)) return mismatch(*def);
    // The admitted types all fit T (CHECK_STORED checked the range); U64
    // travels as its bit pattern.
    out = static_cast<T>(cell->i);
    return XCode();
}

XCode ObjRead::get(const String& f, unsigned int& out, unsigned s1, unsigned s2) const {
    return getNumber(f, out, s1, s2, {FT_U8, FT_U16, FT_U32});
}

XCode ObjRead::get(const String& f, unsigned long long& out, unsigned s1, unsigned s2) const {
    return getNumber(f, out, s1, s2, {FT_U8, FT_U16, FT_U32, FT_U64});
}

XCode ObjRead::get(const String& f, int& out, unsigned s1, unsigned s2) const {
    return getNumber(f, out, s1, s2, {FT_U8, FT_U16, FT_S8, FT_S16, FT_S32});
}

XCode ObjRead::get(const String& f, long long& out, unsigned s1, unsigned s2) const {
    return getNumber(f, out, s1, s2,
                     {FT_U8, FT_U16, FT_U32, FT_S8, FT_S16, FT_S32, FT_S64, FT_READING});
}

XCode ObjRead::get(const String& f, bool& out, unsigned s1, unsigned s2) const {
    const FieldDef* def;
    const Cell* cell;
    XCode rc = field(f, s1, s2, def, cell);
    if (rc.isErr()) return rc;
    if (def->type != FT_BOOL) return mismatch(*def);
    out = cell->i != 0;
    return XCode();
}

XCode ObjRead::get(const String& f, String& out, unsigned s1, unsigned s2) const {
    const FieldDef* def;
    const Cell* cell;
    XCode rc = field(f, s1, s2, def, cell);
    if (rc.isErr()) return rc;
    if (def->type != FT_CHAR && def->type != FT_TEXT) return mismatch(*def);
    out = cell->s;
    return XCode();
}

XCode ObjRead::get(const String& f, double& out, unsigned s1, unsigned s2) const {
    const FieldDef* def;
    const Cell* cell;
    XCode rc = field(f, s1, s2, def, cell);
    if (rc.isErr()) return rc;
    if (def->type != FT_REAL) return mismatch(*def);
    out = cell->kind == Cell::INT ? static_cast<double>(cell->i) : cell->d;
    return XCode();
}

XCode ObjRead::getAsString(const String& f, String& out, unsigned s1, unsigned s2) const {
    const FieldDef* def;
    const Cell* cell;
    XCode rc = field(f, s1, s2, def, cell);
    if (rc.isErr()) return rc;
    out = STORED_TO_TEXT(*def, *cell);
    return XCode();
}

}  // namespace DB
