// Stored values of the database layer. A Cell is one column value as SQLite
// holds it; a Row is one captured entry. The functions here are the only
// place where texts and numbers are converted to and from a field's type, so
// writes, keys and reads agree on ranges and formats.
//
// 64-bit unsigned fields hold their bit pattern in SQLite's signed integer:
// 18446744073709551615 is stored as -1. Equality (keys) is unaffected; SQL
// ordering of such values above 2^63 is not meaningful.
#pragma once

#include <cstdint>
#include <memory>

#include "host/db/base.h"
#include "host/runtime/containers.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

namespace DB {

struct Cell {
    // BLOB only comes from values written past this layer; no field type
    // admits it.
    enum Kind : uint8_t { NUL, INT, REAL, TEXT, BLOB };
    Kind kind = NUL;
    int64_t i = 0;
    double d = 0.0;
    String s;

    static Cell Int(int64_t v) {
        Cell c;
        c.kind = INT;
        c.i = v;
        return c;
    }
    static Cell Real(double v) {
        Cell c;
        c.kind = REAL;
        c.d = v;
        return c;
    }
    static Cell Text(const String& v) {
        Cell c;
        c.kind = TEXT;
        c.s = v;
        return c;
    }
    friend bool operator==(const Cell& a, const Cell& b);
};

// One entry as captured: its table, UID and column values (in column order).
// An entry captured for a change notification also carries its ancestors as
// they were at the change, so that a deleted entry can still name its parent.
struct Row {
    uint16_t structNo = NO_STRUCT;
    uint64_t uid = 0;
    VXVector<Cell> cells;
    bool parentCaptured = false;
    std::shared_ptr<const Row> parent;  // with parentCaptured: null when there was none
};

// The value of a field written as text: decimal (or 0x.. hex) for integers,
// "true"/"false"/"1"/"0" for BOOL, any text for TEXT, at most `size` bytes for
// CHAR(n), a decimal number for REAL. Fails with E_VALUE and the field's
// qualified name, `out` untouched. Structures cannot be written.
XCode PARSE_FIELD_TEXT(const FieldDef& field, const String& text, Cell& out);

// The value of a field given as an unsigned 32-bit number (the key setter).
// Signed fields read it as a two's-complement 32-bit number and sign-extend
// it, so that 0xFFFFFFFB finds -5; U64 fields zero-extend it. Range checked.
XCode FIELD_FROM_UINT32(const FieldDef& field, uint32_t value, Cell& out);

// Whether a stored value fits its field: NULL fails with "DATABASE FIELD HAS
// NO VALUE", a value of the wrong kind or range (written past this layer)
// with "INVALID VALUE IN DATABASE FIELD". Both E_VALUE.
XCode CHECK_STORED(const FieldDef& field, const Cell& cell);

// The decimal text of a number.
String DECIMAL(int64_t v);
String DECIMAL(uint64_t v);

// The text of a stored value that passed CHECK_STORED: decimal integers,
// "true"/"false", the text itself, the shortest exact decimal of a REAL.
String STORED_TO_TEXT(const FieldDef& field, const Cell& cell);

}  // namespace DB
