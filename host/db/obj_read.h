// DB::ObjRead: one entry of one table, read from the database. It is
// positioned by a key look-up, by reading a table's first (or next) entry,
// or by getParentObj, and holds a copy of the entry's values from then on: its
// typed reads never touch the database, so they cannot fail for a change made
// meanwhile. Entries handed to change callbacks are of this kind; a deleted
// one still carries its last values and its ancestors.
//
// ObjRead is a cheap value type (shared, immutable row). Positioning queries
// the database under its lock, inside the calling thread's open transaction
// when there is one.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>

#include "host/db/base.h"
#include "host/db/cell.h"
#include "host/db/database.h"
#include "host/db/key.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

namespace DB {

class Transaction;

class ObjRead {
public:
    // Bound to no database: getParentObj or an assignment fills it.
    ObjRead();
    // On the transaction's database and dictionary; no table yet.
    explicit ObjRead(Transaction& tx);

    // Selects the table whose entries are read next and forgets the current
    // entry. E_SCHEMA for an unknown number.
    XCode setStructNo(uint16_t structNo);
    uint16_t getStructNo() const;
    // The table's name; empty without a table.
    String getStructName() const;

    // Positions on the entry of the key's table whose index fields equal the
    // key (the oldest if the index admits several). Fails with E_NOT_FOUND
    // "DATABASE ENTRY NOT FOUND: <table>" when there is none, and with the
    // key's own failure for an invalid or incomplete key ("INCOMPLETE
    // DATABASE KEY: <table.field>"); the ObjRead is then unchanged.
    XCode lookup(const _Key& key);
    // Positions on the table's first entry (lowest UID), or the one after the
    // current entry (the first without one). E_NOT_FOUND "NO DATABASE ENTRY: <table>" when there is
    // none; the ObjRead is then unchanged.
    XCode readFirst();
    XCode readNext();

    // The dictionary the entry was read with.
    const VXPtr<const Base>& getDatabaseDescription() const { return base_; }

    // Whether the ObjRead holds an entry.
    bool hasEntry() const { return row_ != nullptr; }
    // The entry's unique id within its table (its SQLite rowid); 0 without one.
    uint64_t getUID() const { return row_ ? row_->uid : 0; }
    // Whether the entry names a parent entry (parent.parentStructNo not 0).
    bool hasParent() const;
    // Positions `parent` on the parent entry, which must have the given
    // objType and objStatus where its table has those fields. E_NOT_FOUND
    // "DATABASE ENTRY HAS NO PARENT: <table>" or "PARENT DATABASE ENTRY NOT
    // FOUND: <table>" (this entry's table).
    XCode getParentObj(ObjRead& parent, uint32_t objType, uint32_t objStatus) const;

    // Typed reads of a field (with member path: "state.admin"). The two
    // selectors address elements of array fields, which this mapping does not
    // have, so both must be 0. A read succeeds when every value of the field's
    // type fits the target: unsigned int from U8/U16/U32; unsigned long long
    // from every unsigned type; int from U8/U16/S8/S16/S32; long long from
    // every integer type but U64; bool from BOOL; String from CHAR/TEXT;
    // double from REAL. Otherwise, or when the field has no value or an
    // invalid one, the read fails (E_VALUE; E_SCHEMA for an unknown field;
    // E_NOT_FOUND without an entry) and `out` is unchanged.
    XCode get(const String& field, unsigned int& out, unsigned sel1 = 0, unsigned sel2 = 0) const;
    XCode get(const String& field, unsigned long long& out, unsigned sel1 = 0,
              unsigned sel2 = 0) const;
    XCode get(const String& field, int& out, unsigned sel1 = 0, unsigned sel2 = 0) const;
    XCode get(const String& field, long long& out, unsigned sel1 = 0, unsigned sel2 = 0) const;
    XCode get(const String& field, bool& out, unsigned sel1 = 0, unsigned sel2 = 0) const;
    XCode get(const String& field, String& out, unsigned sel1 = 0, unsigned sel2 = 0) const;
    XCode get(const String& field, double& out, unsigned sel1 = 0, unsigned sel2 = 0) const;
    // Any field but a structure, as text: decimal integers, "true"/"false",
    // the text itself, the shortest exact decimal of a REAL.
    XCode getAsString(const String& field, String& out, unsigned sel1 = 0, unsigned sel2 = 0) const;

private:
    friend class Database;
    friend class ObjWrite;

    ObjRead(const VXPtr<Database>& db, const VXPtr<const Base>& base,
            std::shared_ptr<const Row> row);

    // The table, or a failure for an ObjRead without one.
    XCode table(const StructDef*& s) const;
    // The field's definition and stored value, checked (CHECK_STORED).
    XCode field(const String& name, unsigned sel1, unsigned sel2, const FieldDef*& def,
                const Cell*& cell) const;
    template <typename T>
    XCode getNumber(const String& name, T& out, unsigned sel1, unsigned sel2,
                    std::initializer_list<uint32_t> types) const;
    // Reads entry `uid` of the current table into row_.
    XCode position(uint64_t uid);

    VXPtr<Database> db_;
    VXPtr<const Base> base_;
    uint16_t structNo_ = NO_STRUCT;
    std::shared_ptr<const Row> row_;
};

}  // namespace DB
