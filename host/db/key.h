// DB::_Key: the values of one index's fields, prepared field by field, with
// which DB::ObjRead::lookup (and ObjWrite's key forms) find an entry. Every
// field of the index must be set before the key is used.
#pragma once

#include <cstdint>

#include "host/db/base.h"
#include "host/db/cell.h"
#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

namespace DB {

class _Key {
public:
    // A key of index `indexNo` of table `structNo`, in the dictionary
    // `description` (a transaction's getDatabaseDescription()). An invalid
    // table or index makes every set() and every use of the key fail.
    _Key(uint16_t structNo, uint16_t indexNo, const VXPtr<const Base>& description);

    // Sets an index field from an unsigned 32-bit number, as FIELD_FROM_UINT32
    // reads it for the field's type (signed fields: two's complement). Fails
    // with E_SCHEMA for a field not in the index, E_VALUE for a value out of
    // the field's range or a field that is not an integer or BOOL.
    XCode set(const String& field, uint32_t value);
    // Sets an index field from text, as a write would parse it.
    XCode set(const String& field, const String& text);
    XCode set(const String& field, const char* text) { return set(field, String(text)); }

    uint16_t getStructNo() const { return structNo_; }
    uint16_t getIndexNo() const { return indexNo_; }
    const VXPtr<const Base>& getDatabaseDescription() const { return base_; }

    // The table and index, or a failure naming what is wrong with them.
    XCode resolve(const StructDef*& table, const IndexDef*& index) const;
    // The value set for each index field, in index order; fails with
    // "INCOMPLETE DATABASE KEY: <table>.<field>" for the first field not set.
    XCode getValues(VXVector<Cell>& values) const;

private:
    XCode find(const String& field, const FieldDef*& def, size_t& position) const;

    uint16_t structNo_;
    uint16_t indexNo_;
    VXPtr<const Base> base_;
    VXVector<Cell> values_;  // by position in the index; NUL while not set
    VXVector<bool> isSet_;
};

}  // namespace DB
