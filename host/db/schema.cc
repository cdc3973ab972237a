// Base::LOAD: reads a database's dictionary from its SQLite schema and checks
// it against the rules of host/DATABASE.md. The reader is strict on purpose:
// a schema that the layer would misread (a type it does not know, a name the
// variable syntax cannot address, an identifier that is not unique) is
// refused as a whole, so no user ever sees half a dictionary.
#include <cctype>

#include "host/db/base.h"
#include "host/db/sqlite.h"

namespace DB {

class SchemaReader {
public:
    SchemaReader(sqlite3* conn, const String& what) : conn_(conn), what_(what), statements_(conn) {}

    XCode read(Base& base);

private:
    XCode readTable(StructDef& s);
    XCode readColumns(StructDef& s);
    XCode addStructures(StructDef& s);
    XCode checkSpecialFields(StructDef& s);
    XCode readIndexes(StructDef& s);
    XCode readIndex(StructDef& s, IndexDef& index);

    sqlite3* conn_;
    String what_;
    // The per-table queries, compiled once for all tables: compiling them
    // again for each table took most of the time of opening a database.
    detail::StatementCache statements_;
};

namespace {

XCode schemaError(const char* fmt, const String& name) {
    return XCode(E_SCHEMA).setStringF(fmt, name.c_str());
}

bool lowerOrUnderscore(char c) {
    return islower(static_cast<unsigned char>(c)) || c == '_';
}

String upper(const String& text) {
    String out = text;
    for (size_t i = 0; i < out.length(); ++i) {
        out[i] = static_cast<char>(toupper(static_cast<unsigned char>(out[i])));
    }
    return out;
}

// The field type of a declared SQL column type; false for an unknown one.
bool parseDeclaredType(const String& declared, uint32_t& type, uint32_t& size) {
    static const struct {
        const char* name;
        uint32_t type;
        uint32_t size;
    } kSimple[] = {
        {"U8", FT_U8, 1},     {"U16", FT_U16, 2},         {"U32", FT_U32, 4},
        {"U64", FT_U64, 8},   {"S8", FT_S8, 1},           {"S16", FT_S16, 2},
        {"S32", FT_S32, 4},   {"S64", FT_S64, 8},         {"INTEGER", FT_S64, 8},
        {"INT", FT_S64, 8},   {"READING", FT_READING, 8}, {"TEXT", FT_TEXT, 0},
        {"BOOL", FT_BOOL, 1}, {"BOOLEAN", FT_BOOL, 1},    {"REAL", FT_REAL, 8},
    };
    String t = upper(declared);
    for (const auto& s : kSimple) {
        if (t == s.name) {
            type = s.type;
            size = s.size;
            return true;
        }
    }
    // CHAR(n), blanks allowed around the parts.
    String rest;
    for (size_t i = 0; i < t.length(); ++i) {
        if (t[i] != ' ') rest += t[i];
    }
    if (!rest.startsWith("CHAR(") || !rest.endsWith(")")) return false;
    String digits = rest.substring(5, rest.length() - 6);
    uint32_t n;
    if (digits.isEmpty() || !isdigit(static_cast<unsigned char>(digits[0])) ||
        !digits.toUInt32(n) || n == 0) {
        return false;
    }
    type = FT_CHAR;
    size = n;
    return true;
}

bool isUnsignedInteger(uint32_t type) {
    return type <= FT_U64;
}

}  // namespace

XCode Base::LOAD(sqlite3* conn, const String& what, VXPtr<const Base>& out) {
    VXPtr<Base> base(new Base());
    XCode rc = SchemaReader(conn, what).read(*base);
    if (rc.isSuccess()) out = base;
    return rc;
}

XCode SchemaReader::read(Base& base) {
    detail::Statement tables;
    XCode rc =
        tables.prepare(conn_,
                       "SELECT s.name, l.type, l.wr, EXISTS (SELECT 1 FROM sqlite_schema AS t"
                       " WHERE t.type = 'trigger' AND t.tbl_name = s.name)"
                       " FROM sqlite_schema AS s"
                       " JOIN pragma_table_list AS l ON l.name = s.name AND l.schema = 'main'"
                       " WHERE s.type = 'table' AND s.name NOT LIKE 'sqlite\\_%' ESCAPE '\\'"
                       " ORDER BY s.rowid",
                       what_);
    if (rc.isErr()) return rc;
    while (tables.step(rc)) {
        StructDef s;
        s.name = tables.columnText(0);
        if (tables.columnText(1) != "table") {
            return schemaError("UNSUPPORTED KIND OF DATABASE TABLE: %s", s.name);
        }
        if (tables.columnInt(2) != 0) return schemaError("TABLE WITHOUT ROWID: %s", s.name);
        if (base.structs_.size() >= NO_STRUCT - 1) {
            return schemaError("TOO MANY DATABASE TABLES: %s", s.name);
        }
        s.no = static_cast<uint16_t>(base.structs_.size() + 1);
        s.hasTriggers = tables.columnInt(3) != 0;
        rc = readTable(s);
        if (rc.isErr()) return rc;
        base.structNos_[s.name] = s.no;
        base.structs_.push_back(std::move(s));
    }
    return rc;
}

XCode SchemaReader::readTable(StructDef& s) {
    // The variable syntax tells tables from field members by the first
    // letter and splits at '.' and ':', so such names could never be bound.
    if (s.name.isEmpty() || lowerOrUnderscore(s.name[0]) || s.name.indexOf('.') >= 0 ||
        s.name.indexOf(':') >= 0) {
        return schemaError("INVALID DATABASE TABLE NAME: %s", s.name);
    }
    XCode rc = readColumns(s);
    if (rc.isSuccess()) rc = addStructures(s);
    if (rc.isSuccess()) rc = checkSpecialFields(s);
    if (rc.isSuccess()) rc = readIndexes(s);
    return rc;
}

XCode SchemaReader::readColumns(StructDef& s) {
    detail::Statement cols;
    XCode rc = cols.prepare(statements_,
                            "SELECT name, type FROM pragma_table_info(?1) ORDER BY cid", what_);
    if (rc.isErr()) return rc;
    cols.bind(1, s.name);
    while (cols.step(rc)) {
        FieldDef f;
        f.name = cols.columnText(0);
        f.qualified = s.name + "." + f.name;
        f.quoted = detail::QUOTE(f.name);
        f.column = static_cast<int>(s.fields.size());
        f.no = static_cast<uint16_t>(s.fields.size());
        for (const String& part : f.name.splitAtChars(".")) {
            if (part.isEmpty()) return schemaError("INVALID DATABASE FIELD NAME: %s", f.qualified);
        }
        String declared = cols.columnText(1);
        if (declared.isEmpty()) return schemaError("MISSING FIELD TYPE: %s", f.qualified);
        if (!parseDeclaredType(declared, f.type, f.size)) {
            return XCode(E_SCHEMA).setStringF("UNSUPPORTED FIELD TYPE '%s': %s", declared.c_str(),
                                              f.qualified.c_str());
        }
        s.fieldNos[f.name] = f.no;
        s.fields.push_back(std::move(f));
    }
    if (rc.isErr()) return rc;
    s.columnCount = static_cast<uint16_t>(s.fields.size());
    s.quoted = detail::QUOTE(s.name);
    for (uint16_t c = 0; c < s.columnCount; ++c) s.columns += (c ? ", " : "") + s.fields[c].quoted;
    s.selectRow = "SELECT " + s.columns + " FROM " + s.quoted + " WHERE rowid = ?1";
    return XCode();
}

// Every proper dotted prefix of a column name is a structure field whose
// members are the next components: "maintenance.window.start" makes
// "maintenance" (member "window") and "maintenance.window" (member "start").
XCode SchemaReader::addStructures(StructDef& s) {
    for (uint16_t c = 0; c < s.columnCount; ++c) {
        String name = s.fields[c].name;
        size_t start = 0;  // of the component that ends at `dot`
        int dot = name.indexOf('.');
        while (dot >= 0) {
            size_t d = static_cast<size_t>(dot);
            String prefix = name.substring(0, d);
            int next = name.indexOf('.', d + 1);
            size_t end = next < 0 ? name.length() : static_cast<size_t>(next);
            String member = name.substring(d + 1, end - d - 1);
            // A structure name is a member path of the variable syntax, which
            // only knows paths whose components start in lower case or '_'.
            if (!lowerOrUnderscore(name[start])) {
                return schemaError("INVALID DATABASE STRUCTURE NAME: %s", s.name + "." + prefix);
            }
            auto it = s.fieldNos.find(prefix);
            if (it == s.fieldNos.end()) {
                FieldDef f;
                f.name = prefix;
                f.qualified = s.name + "." + prefix;
                f.type = FT_STRUCT;
                f.no = static_cast<uint16_t>(s.fields.size());
                s.fieldNos[prefix] = f.no;
                s.fields.push_back(std::move(f));
                it = s.fieldNos.find(prefix);
            }
            FieldDef& st = s.fields[it->second];
            if (st.type != FT_STRUCT) {
                return schemaError("FIELD IS BOTH VALUE AND STRUCTURE: %s", st.qualified);
            }
            bool known = false;
            for (const String& m : st.members) known = known || m == member;
            if (!known) st.members.push_back(member);
            start = d + 1;
            dot = next;
        }
    }
    return XCode();
}

XCode SchemaReader::checkSpecialFields(StructDef& s) {
    for (const char* name : {"objType", "objStatus"}) {
        const FieldDef* f = s.findField(name);
        if (f && !IS_INTEGER_TYPE(f->type)) {
            return schemaError("INVALID TYPE OF DATABASE FIELD: %s", f->qualified);
        }
    }
    if (const FieldDef* f = s.findField("objType")) s.objTypeColumn = f->column;
    if (const FieldDef* f = s.findField("objStatus")) s.objStatusColumn = f->column;

    const FieldDef* parent = s.findField("parent");
    if (!parent || parent->type != FT_STRUCT) return XCode();
    const FieldDef* structNo = s.findField("parent.parentStructNo");
    const FieldDef* id = s.findField("parent.parentId");
    if (parent->members.size() != 2 || !structNo || !id || !isUnsignedInteger(structNo->type) ||
        !isUnsignedInteger(id->type)) {
        return schemaError("INVALID PARENT FIELDS: %s", s.name);
    }
    s.parentStructColumn = structNo->column;
    s.parentIdColumn = id->column;
    return XCode();
}

XCode SchemaReader::readIndexes(StructDef& s) {
    // Indexes the schema created itself (automatic ones have no SQL), in the
    // order it created them: that order gives the index numbers.
    detail::Statement list;
    XCode rc = list.prepare(statements_,
                            "SELECT s.name, l.\"unique\", l.partial FROM sqlite_schema AS s"
                            " JOIN pragma_index_list(?1) AS l ON l.name = s.name"
                            " WHERE s.type = 'index' AND s.tbl_name = ?1 AND s.sql IS NOT NULL"
                            " ORDER BY s.rowid",
                            what_);
    if (rc.isErr()) return rc;
    list.bind(1, s.name);
    while (list.step(rc)) {
        IndexDef index;
        index.sqlName = list.columnText(0);
        index.unique = list.columnInt(1) != 0;
        bool partial = list.columnInt(2) != 0;
        // identifier_Port on table Port is known as "identifier".
        String suffix = "_" + s.name;
        index.name = index.sqlName;
        if (index.sqlName.length() > suffix.length() && index.sqlName.endsWith(suffix)) {
            index.name = index.sqlName.substring(0, index.sqlName.length() - suffix.length());
        }
        for (const IndexDef& other : s.indexes) {
            if (other.name == index.name) {
                return schemaError("DUPLICATE DATABASE INDEX NAME: %s", s.name + "." + index.name);
            }
        }
        if (index.name == "identifier") {
            if (!index.unique) return schemaError("IDENTIFIER INDEX NOT UNIQUE: %s", s.name);
            if (partial) return schemaError("IDENTIFIER INDEX IS PARTIAL: %s", s.name);
            s.identifierIndex = static_cast<uint16_t>(s.indexes.size());
        }
        rc = readIndex(s, index);
        if (rc.isErr()) return rc;
        s.indexes.push_back(std::move(index));
    }
    return rc;
}

XCode SchemaReader::readIndex(StructDef& s, IndexDef& index) {
    detail::Statement cols;
    XCode rc = cols.prepare(statements_,
                            "SELECT cid, name FROM pragma_index_info(?1) ORDER BY seqno", what_);
    if (rc.isErr()) return rc;
    cols.bind(1, index.sqlName);
    while (cols.step(rc)) {
        if (cols.columnInt(0) < 0 || cols.columnIsNull(1)) {
            return schemaError("UNSUPPORTED INDEX EXPRESSION: %s", index.sqlName);
        }
        const FieldDef* f = s.findField(cols.columnText(1));
        if (!f) return schemaError("UNSUPPORTED INDEX EXPRESSION: %s", index.sqlName);
        index.fields.push_back(f->no);
    }
    return rc;
}

}  // namespace DB
