// DB::ObjWrite: the one way to change entries of a configuration database, so
// that every change is seen by the registered callbacks. Works inside a
// started write transaction (type 1); each change is queued as a notification
// and delivered after the commit, or dropped by a rollback.
//
// Values are given as text per field ("mtu" = "9000", "state.admin" =
// "true") and converted by the field's type (PARSE_FIELD_TEXT). A failed
// operation leaves the database as it was before that operation; the
// transaction stays usable.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "host/db/cell.h"
#include "host/db/key.h"
#include "host/runtime/containers.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

namespace DB {

class Transaction;
class ObjRead;

class ObjWrite {
public:
    // Field name (with member path) and value text, in any order.
    using Values = VXVector<std::pair<String, String>>;

    explicit ObjWrite(Transaction& tx);

    // Inserts an entry; fields not given take their SQL defaults. A parent
    // reference (parent.parentStructNo, parent.parentId) must name an
    // existing entry. Reports EVENT_NEW; `uid` receives the new entry's UID.
    // Failures: E_SCHEMA for an unknown table or field, E_VALUE for a value
    // that does not fit its field, E_CONSTRAINT "ENTRY ALREADY EXISTS: <table>"
    // (identifier taken), "MISSING VALUE FOR DATABASE FIELD: <table.field>",
    // "PARENT DATABASE ENTRY DOES NOT EXIST: <table>".
    XCode insert(const String& table, const Values& values, uint64_t* uid = nullptr);

    // Changes the given fields of one entry, by UID or by a complete key.
    // Reports EVENT_UPDATE with the new values, nothing when no value
    // actually changed, and, when a field of the identifier index changed,
    // EVENT_DELETE of the entry as it was followed by EVENT_NEW: to whoever
    // knows entries by their identifier, the old one is gone and a new one
    // has appeared. E_NOT_FOUND when there is no such entry.
    XCode update(const String& table, uint64_t uid, const Values& values);
    XCode update(const _Key& key, const Values& values);

    // Deletes one entry and, first, its children (entries whose parent
    // reference names it), recursively. Reports EVENT_DELETE for each,
    // children before their parent, each with its values and ancestors as
    // they were before the delete.
    XCode remove(const String& table, uint64_t uid);
    XCode remove(const _Key& key);

private:
    using Changes = VXVector<std::pair<EventType_, std::shared_ptr<const Row>>>;

    XCode check(const String& table, const StructDef*& s) const;
    XCode parse(const StructDef& s, const Values& values,
                VXVector<std::pair<uint16_t, Cell>>& out) const;
    XCode checkParent(const StructDef& s, const Row& row) const;
    XCode uidOf(const _Key& key, String& table, uint64_t& uid) const;
    XCode removeTree(const StructDef& s, uint64_t uid, int depth, Changes& changes);

    Transaction& tx_;
};

}  // namespace DB
