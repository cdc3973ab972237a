// The vocabulary shared by every part of the configuration database layer
// (DB::): field type codes, change event types, the "none" numbers that the
// dictionary returns, and the layer's result codes. See host/DATABASE.md for
// how tables, fields and indexes map onto SQLite.
#pragma once

#include <cstdint>

#include "host/runtime/string.h"

namespace DB {

// Returned by the dictionary's number look-ups when the name is unknown.
constexpr uint16_t NO_STRUCT = 0xFFFF;
constexpr uint16_t NO_FIELD = 0xFFFF;
constexpr uint16_t NO_INDEX = 0xFFFF;

// Field type codes, as getFieldInfo reports them. The numbers are fixed: users
// of the dictionary switch on them. Each comes from a column's declared SQL
// type (in brackets).
enum FieldType : uint32_t {
    FT_U8 = 0,        // [U8]
    FT_U16 = 1,       // [U16]
    FT_U32 = 2,       // [U32]
    FT_U64 = 3,       // [U64]
    FT_S8 = 4,        // [S8]
    FT_S16 = 5,       // [S16]
    FT_S32 = 6,       // [S32]
    FT_S64 = 7,       // [S64], [INTEGER], [INT]
    FT_REAL = 10,     // [REAL]: a double
    FT_CHAR = 13,     // [CHAR(n)]: text of at most n bytes
    FT_TEXT = 16,     // [TEXT]: text of any length
    FT_READING = 20,  // [READING]: a signed 64-bit sampled reading
    FT_STRUCT = 22,   // no column: the common prefix of dotted column names
    FT_BOOL = 25      // [BOOL], [BOOLEAN]
};

// True for the integer types (codes 0-7 and 20).
bool IS_INTEGER_TYPE(uint32_t type);
bool IS_SIGNED_TYPE(uint32_t type);
// The name of a type code as a schema declares it ("U16", "CHAR", ...), or
// "?" for a code that is not one of the above.
const char* TYPE_NAME(uint32_t type);

// What a change notification reports about the entry it carries.
enum EventType_ : uint32_t {
    EVENT_NEW = 0,     // the entry was inserted
    EVENT_DELETE = 1,  // the entry was deleted; it carries the last values
    EVENT_UPDATE = 2   // the entry was changed; it carries the new values
};

// Callback types of REGISTER_CALLBACK. Only delivery after the commit exists:
// a change that is rolled back reaches nobody.
constexpr uint32_t CALLBACK_AFTER_COMMIT = 1;

// Transaction types.
enum TransactionType : int {
    TRANSACTION_READ = 0,     // a consistent read of the database
    TRANSACTION_WRITE = 1,    // inserts, updates and deletes through ObjWrite
    TRANSACTION_CALLBACK = 2  // callback registration
};

// One field as the dictionary describes it.
struct FieldInfo {
    uint16_t no = NO_FIELD;
    uint32_t type = 0;  // a FieldType code
    // Bytes of an integer, BOOL (1) or REAL (8); the maximum length of CHAR(n);
    // 0 for TEXT and structures.
    uint32_t size = 0;
    String name;  // with its member path: "state.admin"
};

// Result codes of the layer. Texts are upper-case phrases naming the
// offending table, field or file last.
constexpr uint32_t E_DATABASE = 0x11000001;     // SQLite failure: I/O, busy, read-only
constexpr uint32_t E_NOT_FOUND = 0x11000002;    // no such entry
constexpr uint32_t E_SCHEMA = 0x11000003;       // unknown table/field/index, invalid schema
constexpr uint32_t E_VALUE = 0x11000004;        // wrong type, out of range, no value
constexpr uint32_t E_CONSTRAINT = 0x11000005;   // duplicate entry, missing value, parent
constexpr uint32_t E_TRANSACTION = 0x11000006;  // transaction not started, wrong type, nesting
constexpr uint32_t E_CORRUPT = 0x11000007;      // file cannot be opened or is not a database

}  // namespace DB
