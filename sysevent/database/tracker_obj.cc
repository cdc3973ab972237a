// DatabaseTracker::Obj: one table specifier, and how it finds its entry: the
// identifier key built from the specifier chain, or the table's first entry.
#include "host/runtime/crit.h"
#include "sysevent/database/database_tracker.h"

namespace VX::SysEvent {

namespace {

XCode failure(const char* format, const String& name) {
    return XCode(XCode::GENERIC_FAILURE).setStringF(format, name.c_str());
}

// A failed look-up or read: the entry cannot be loaded, for whatever reason.
XCode cannotLoad(const XCode& rc, const char* format, const String& table) {
    XCode out(DatabaseTracker::CANNOT_LOAD, rc.getString());
    out.extendString(String::Formatted(format, table.c_str()), ": ");
    return out;
}

}  // namespace

DatabaseTracker::Obj::Obj(const String& tableName, const VXVector<String>& keyValues)
    : VX::RefCounted(&LOCK()), tableName(tableName), keyValues(keyValues) {}

String DatabaseTracker::Obj::getEntryId() const {
    String id = parent ? parent->getEntryId() + "." : String();
    id += tableName;
    for (size_t i = 0; i < keyValues.size(); ++i) id += ":" + keyValues[i];
    return id;
}

XCode DatabaseTracker::Obj::load(DB::ObjRead& entry, DB::Transaction& tx) const {
    XCode rc = entry.setStructNo(tableNo);
    if (rc.isErr()) return rc;
    return identifierIndex != DB::NO_INDEX ? loadByIdentifier(entry, tx) : loadAny(entry, tx);
}

XCode DatabaseTracker::Obj::loadByIdentifier(DB::ObjRead& entry, DB::Transaction& tx) const {
    DB::_Key key(tableNo, identifierIndex, tx.getDatabaseDescription());
    XCode rc = prepareKey(key, tx);
    if (rc.isErr()) return rc;
    rc = entry.lookup(key);
    return rc.isErr() ? cannotLoad(rc, "CANNOT LOAD DATABASE ENTRY: %s", tableName) : rc;
}

XCode DatabaseTracker::Obj::loadAny(DB::ObjRead& entry, DB::Transaction&) const {
    // Without an identifier the table holds one entry; key values are unused.
    XCode rc = entry.readFirst();
    return rc.isErr() ? cannotLoad(rc, "CANNOT LOAD FIRST DATABASE ENTRY: %s", tableName) : rc;
}

XCode DatabaseTracker::Obj::prepareKey(DB::_Key& key, DB::Transaction& tx) const {
    VXVector<String> fields;
    XCode rc = tx.getBase().getListOfIndexFields(tableNo, identifierIndex, fields);
    size_t nextKey = 0;
    DB::ObjRead parentEntry(tx);
    bool parentLoaded = false;
    for (size_t i = 0; rc.isSuccess() && i < fields.size(); ++i) {
        const String& f = fields[i];
        if (f == "objType") {
            rc = key.set(f, 2u);
        } else if (f == "objStatus") {
            rc = key.set(f, 10u);
        } else if (f == "parent.parentStructNo" || f == "parent.parentId") {
            if (!parent) return failure("PARENT SPECIFIER REQUIRED: %s", tableName);
            if (f == "parent.parentStructNo") {
                rc = setKeyField(key, tx, f,
                                 String::stringOf(static_cast<unsigned>(parent->tableNo)));
                continue;
            }
            if (!parentLoaded) {
                rc = parent->load(parentEntry, tx);
                if (rc.isErr()) return rc;
                parentLoaded = true;
            }
            rc = setKeyField(
                key, tx, f,
                String::stringOf(static_cast<unsigned long long>(parentEntry.getUID())));
        } else {
            if (nextKey >= keyValues.size()) {
                return failure("NOT ENOUGH KEY FIELDS SPECIFIED: %s", tableName);
            }
            rc = setKeyField(key, tx, f, keyValues[nextKey++]);
        }
    }
    return rc;
}

// How a key value's text becomes a key field, by the field's type: integers
// are parsed and set through the key's 32-bit setter (64-bit types keep their
// low 32 bits, signed ones their two's-complement bits), texts are set as
// they are, structures member by member.
XCode DatabaseTracker::Obj::setKeyField(DB::_Key& key, DB::Transaction& tx, const String& field,
                                        const String& text) const {
    DB::FieldInfo info;
    XCode rc = tx.getBase().getFieldInfo(key.getStructNo(), field, info);
    if (rc.isErr()) return rc;
    switch (info.type) {
        case DB::FT_U8:
        case DB::FT_U16:
        case DB::FT_U32: {
            uint32_t v;
            if (text.toUInt32(v)) return key.set(field, v);
            break;
        }
        case DB::FT_U64: {
            uint64_t v;
            if (text.toUInt64(v)) return key.set(field, static_cast<uint32_t>(v));
            break;
        }
        case DB::FT_S8:
        case DB::FT_S16:
        case DB::FT_S32: {
            int v;
            if (text.toInteger(v)) return key.set(field, static_cast<uint32_t>(v));
            break;
        }
        case DB::FT_S64: {
            int64_t v;
            if (text.toInt64(v)) return key.set(field, static_cast<uint32_t>(v));
            break;
        }
        case DB::FT_CHAR:
        case DB::FT_TEXT:
            return key.set(field, text);
        case DB::FT_STRUCT: {
            VXVector<String> members;
            rc = tx.getBase().getListOfStructFields(key.getStructNo(), field, members);
            for (size_t i = 0; rc.isSuccess() && i < members.size(); ++i) {
                rc = setKeyField(
                    key, tx, String::Formatted("%s.%s", field.c_str(), members[i].c_str()), text);
            }
            return rc;
        }
        default:
            return XCode(XCode::GENERIC_FAILURE)
                .setStringF("Unsupported data type in index: %u", info.type);
    }
    // A key value that is no number of the field's kind can name no entry.
    return XCode(XCode::GENERIC_FAILURE)
        .setStringF("INVALID KEY VALUE FOR DATABASE FIELD %s.%s: %s", tableName.c_str(),
                    field.c_str(), text.c_str());
}

}  // namespace VX::SysEvent
