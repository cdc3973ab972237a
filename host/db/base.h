// DB::Base: the dictionary of a configuration database, read from its SQLite
// schema: tables ("structs") with their numbers, fields with their type codes,
// structure fields and their members, and indexes with their fields in order.
// A Base is immutable once loaded and shared by counted pointer, so that a
// transaction, a key or a captured entry keeps the dictionary it was made
// with even if the schema is replaced meanwhile. See host/DATABASE.md.
#pragma once

#include <cstdint>

#include "host/db/types.h"
#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

struct sqlite3;

namespace DB {

// A field: a column, or a structure made of the columns that share a dotted
// prefix. Field numbers: the columns in column order from 0, then the
// structures in order of first appearance.
struct FieldDef {
    String name;       // with its member path: "state.admin"
    String qualified;  // table + "." + name, for messages
    String quoted;     // the column's name as SQL text (empty for a structure)
    uint16_t no = NO_FIELD;
    uint32_t type = 0;         // FieldType
    uint32_t size = 0;         // as FieldInfo::size
    int column = -1;           // position among the table's columns; -1 for a structure
    VXVector<String> members;  // a structure's member names, in order of first appearance
};

struct IndexDef {
    String name;     // as the dictionary knows it: "identifier"
    String sqlName;  // as SQLite knows it: "identifier_Port"
    bool unique = false;
    VXVector<uint16_t> fields;  // field numbers, in index order
};

struct StructDef {
    String name;
    String quoted;     // the table's name as SQL text
    String columns;    // every column's name as SQL text, in column order
    String selectRow;  // the SQL that reads every column of the entry ?1 (a rowid)
    bool hasTriggers = false;
    uint16_t no = NO_STRUCT;
    VXVector<FieldDef> fields;  // indexed by field number
    VXStringHashTable<uint16_t> fieldNos;
    uint16_t columnCount = 0;    // fields[0 .. columnCount) are the columns
    VXVector<IndexDef> indexes;  // indexed by index number, in creation order
    uint16_t identifierIndex = NO_INDEX;
    // Columns with a fixed meaning, -1 when the table has none.
    int objTypeColumn = -1;
    int objStatusColumn = -1;
    int parentStructColumn = -1;  // "parent.parentStructNo"
    int parentIdColumn = -1;      // "parent.parentId"

    // The field of that name, or null.
    const FieldDef* findField(const String& name) const;
    bool hasParentFields() const { return parentStructColumn >= 0; }
};

class Base : public VX::RefCounted {
public:
    // An empty dictionary: every look-up answers "none".
    Base() = default;

    // Reads the dictionary of the open connection `conn` and checks it (type
    // names, structure names, identifier indexes, parent fields). On failure
    // `out` is untouched and the text names the offending table or field.
    // `what` names the database in SQLite failure texts.
    static XCode LOAD(sqlite3* conn, const String& what, VXPtr<const Base>& out);

    uint16_t getNumberOfStructs() const { return static_cast<uint16_t>(structs_.size()); }
    // Table number by name (from 1), NO_STRUCT when there is no such table.
    uint16_t getStructNo(const String& name) const;
    // Fails with E_SCHEMA for an unknown number.
    XCode getStructName(uint16_t structNo, String& name) const;
    // Field number by name (with member path), NO_FIELD when unknown.
    uint16_t getFieldNo(uint16_t structNo, const String& field) const;
    // Fails with E_SCHEMA for an unknown table or field; `info` untouched then.
    XCode getFieldInfo(uint16_t structNo, const String& field, FieldInfo& info) const;
    XCode getFieldInfo(uint16_t structNo, uint16_t fieldNo, FieldInfo& info) const;
    // Index number by name ("identifier"), NO_INDEX when the table has none.
    uint16_t getIndexNo(uint16_t structNo, const String& index) const;
    // The fields of an index, in index order (not column order).
    XCode getListOfIndexFields(uint16_t structNo, uint16_t indexNo, VXVector<String>& fields) const;
    // The member names of a structure field ("admin", "oper" for "state"),
    // without the structure's name. Fails for a field that is no structure.
    XCode getListOfStructFields(uint16_t structNo, const String& field,
                                VXVector<String>& members) const;
    // Every field name of a table, by field number.
    XCode getListOfFields(uint16_t structNo, VXVector<String>& fields) const;

    // The table's full description, or null for an unknown number.
    const StructDef* findStruct(uint16_t structNo) const;
    const StructDef* findStruct(const String& name) const;

private:
    VXVector<StructDef> structs_;  // structs_[no - 1]
    VXStringHashTable<uint16_t> structNos_;

    friend class SchemaReader;
};

}  // namespace DB
