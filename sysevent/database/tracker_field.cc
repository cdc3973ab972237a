// DatabaseTracker::Field and the tracker's static helpers: parsing a variable
// name into its specifiers and field, reading a field into a Value, and the
// entry id of a changed entry.
#include <cctype>

#include "host/runtime/crit.h"
#include "sysevent/database/database_tracker.h"

namespace VX::SysEvent {

namespace {

XCode failure(const char* text) {
    return XCode(XCode::GENERIC_FAILURE, text);
}

bool isMemberComponent(const String& component) {
    return !component.isEmpty() &&
           (islower(static_cast<unsigned char>(component[0])) || component[0] == '_');
}

// Table number and identifier index of a specifier, in a read transaction of
// their own.
XCode resolveTable(DatabaseTracker::Obj& obj) {
    DB::Transaction tx(DB::TRANSACTION_READ);
    XCode rc = tx.start();
    if (rc.isErr()) return rc;
    obj.tableNo = tx.getBase().getStructNo(obj.tableName);
    if (obj.tableNo == DB::NO_STRUCT) {
        return XCode(XCode::GENERIC_FAILURE)
            .setStringF("INVALID DATABASE TABLE: %s", obj.tableName.c_str());
    }
    obj.identifierIndex = tx.getBase().getIndexNo(obj.tableNo, "identifier");
    return tx.commit();
}

// A signed reading: above 0 an unsigned integer, else (no negative integers
// exist in the engine) a float.
Value signedValue(long long v) {
    return v > 0 ? Value(static_cast<unsigned long long>(v)) : Value(static_cast<double>(v));
}

}  // namespace

DatabaseTracker::Field::Field(const String& fieldName, const VXLWPtr<Obj>& table)
    : VX::RefCounted(&LOCK()), fieldName(fieldName), table(table) {}

String DatabaseTracker::Field::getVariableName() const {
    return table->getEntryId() + "." + fieldName;
}

XCode DatabaseTracker::Field::get(Value& value) const {
    DB::Transaction tx(DB::TRANSACTION_READ);
    XCode rc = tx.start();
    if (rc.isErr()) return rc;
    rc = get(value, tx);
    if (rc.isErr()) return rc;
    return tx.commit();
}

XCode DatabaseTracker::Field::get(Value& value, DB::Transaction& tx) const {
    DB::ObjRead entry(tx);
    XCode rc = table->load(entry, tx);
    return rc.isErr() ? rc : GET_ENTRY_VALUE(value, entry, fieldName);
}

XCode DatabaseTracker::VARIABLE_NAME_TO_FIELD(VXLWPtr<Field>& field, const String& name) {
    if (!name.startsWith("db.")) return XCode(XCode::GENERIC_FAILURE);
    String rest = name.substring(3);
    if (rest.isEmpty()) return failure("MISSING FIELD NAME");
    VXVector<String> parts = rest.splitAtChars(".");

    // The field: the last component and the member path before it.
    size_t n = parts.size() - 1;
    String fieldName = parts[n];
    while (n > 0 && isMemberComponent(parts[n - 1])) {
        fieldName = parts[n - 1] + "." + fieldName;
        --n;
    }
    if (n == 0) return failure("MISSING TABLE NAME");

    // The specifiers, right to left, each the parent of the one before.
    VXLWPtr<Obj> rightmost, child;
    for (size_t i = n; i-- > 0;) {
        VXVector<String> pieces = parts[i].splitAtChars(":");
        VXLWPtr<Obj> obj(new Obj(pieces[0], VXVector<String>(pieces.begin() + 1, pieces.end())));
        if (child) {
            child->parent = obj;
        } else {
            rightmost = obj;
        }
        child = obj;
    }
    for (Obj* obj = rightmost.get(); obj; obj = obj->parent.get()) {
        XCode rc = resolveTable(*obj);
        if (rc.isErr()) return rc;
    }

    DB::Transaction tx(DB::TRANSACTION_READ);
    XCode rc = tx.start();
    if (rc.isErr()) return rc;
    if (tx.getBase().getFieldNo(rightmost->tableNo, fieldName) == DB::NO_FIELD) {
        return XCode(XCode::GENERIC_FAILURE)
            .setStringF("INVALID DATABASE FIELD: %s.%s", rightmost->tableName.c_str(),
                        fieldName.c_str());
    }
    rc = tx.commit();
    if (rc.isSuccess()) field = new Field(fieldName, rightmost);
    return rc;
}

XCode DatabaseTracker::GET_ENTRY_VALUE(Value& value, DB::ObjRead& entry, const String& fieldName) {
    const VXPtr<const DB::Base>& base = entry.getDatabaseDescription();
    DB::FieldInfo info;
    XCode rc = base ? base->getFieldInfo(entry.getStructNo(), fieldName, info)
                    : XCode(XCode::GENERIC_FAILURE, "NO DATABASE ENTRY READ");
    if (rc.isErr()) return rc;
    switch (info.type) {
        case DB::FT_U8:
        case DB::FT_U16:
        case DB::FT_U32: {
            unsigned v;
            rc = entry.get(fieldName, v, 0, 0);
            if (rc.isSuccess()) value = Value(static_cast<unsigned long long>(v));
            return rc;
        }
        case DB::FT_U64: {
            unsigned long long v;
            rc = entry.get(fieldName, v, 0, 0);
            if (rc.isSuccess()) value = Value(v);
            return rc;
        }
        case DB::FT_S8:
        case DB::FT_S16:
        case DB::FT_S32: {
            int v;
            rc = entry.get(fieldName, v, 0, 0);
            if (rc.isSuccess()) value = signedValue(v);
            return rc;
        }
        case DB::FT_S64:
        case DB::FT_READING: {
            long long v;
            rc = entry.get(fieldName, v, 0, 0);
            if (rc.isSuccess()) value = signedValue(v);
            return rc;
        }
        case DB::FT_CHAR:
        case DB::FT_TEXT: {
            String v;
            rc = entry.get(fieldName, v, 0, 0);
            if (rc.isSuccess()) value = Value(v);
            return rc;
        }
        case DB::FT_BOOL: {
            bool v;
            rc = entry.get(fieldName, v, 0, 0);
            if (rc.isSuccess()) value = Value(v);
            return rc;
        }
        default:
            return failure("INVALID DATA TYPE OF DATABASE FIELD");
    }
}

XCode DatabaseTracker::GET_ENTRY_ID(String& id, DB::ObjRead& entry) {
    String out;
    if (entry.hasParent()) {
        DB::ObjRead parent;
        XCode rc = entry.getParentObj(parent, 2, 10);
        String parentId;
        if (rc.isSuccess()) rc = GET_ENTRY_ID(parentId, parent);
        if (rc.isErr()) return rc;
        out = parentId + ".";
    }
    // The dictionary's own description of the table: its field names and
    // identifier, without copies of them for every change.
    const VXPtr<const DB::Base>& base = entry.getDatabaseDescription();
    const DB::StructDef* table = base ? base->findStruct(entry.getStructNo()) : nullptr;
    if (!table) return XCode(DB::E_SCHEMA, "NO DATABASE TABLE SELECTED");
    out += table->name;
    if (table->identifierIndex != DB::NO_INDEX) {
        out += ":";
        bool first = true;
        for (uint16_t no : table->indexes[table->identifierIndex].fields) {
            const String& f = table->fields[no].name;
            if (f == "objType" || f == "objStatus" || f.startsWith("parent.")) continue;
            String text;
            XCode rc = entry.getAsString(f, text, 0, 0);
            if (rc.isErr()) return rc;
            if (!first) out += ":";
            out += text;
            first = false;
        }
    }
    id = out;
    return XCode();
}

}  // namespace VX::SysEvent
