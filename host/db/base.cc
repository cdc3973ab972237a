// DB::Base: look-ups in a loaded dictionary, and the type-code helpers.
// Loading lives in db_schema.cc.
#include "host/db/base.h"

namespace DB {

bool IS_INTEGER_TYPE(uint32_t type) {
    return type <= FT_S64 || type == FT_READING;
}

bool IS_SIGNED_TYPE(uint32_t type) {
    return (type >= FT_S8 && type <= FT_S64) || type == FT_READING;
}

const char* TYPE_NAME(uint32_t type) {
    switch (type) {
        case FT_U8:
            return "U8";
        case FT_U16:
            return "U16";
        case FT_U32:
            return "U32";
        case FT_U64:
            return "U64";
        case FT_S8:
            return "S8";
        case FT_S16:
            return "S16";
        case FT_S32:
            return "S32";
        case FT_S64:
            return "S64";
        case FT_REAL:
            return "REAL";
        case FT_CHAR:
            return "CHAR";
        case FT_TEXT:
            return "TEXT";
        case FT_READING:
            return "READING";
        case FT_STRUCT:
            return "STRUCT";
        case FT_BOOL:
            return "BOOL";
        default:
            return "?";
    }
}

const FieldDef* StructDef::findField(const String& name) const {
    auto it = fieldNos.find(name);
    return it == fieldNos.end() ? nullptr : &fields[it->second];
}

const StructDef* Base::findStruct(uint16_t structNo) const {
    if (structNo == 0 || structNo > structs_.size()) return nullptr;
    return &structs_[structNo - 1];
}

const StructDef* Base::findStruct(const String& name) const {
    return findStruct(getStructNo(name));
}

namespace {

XCode noStruct(uint16_t structNo) {
    return XCode(E_SCHEMA).setStringF("INVALID DATABASE TABLE NUMBER: %u", structNo);
}

void fillInfo(const FieldDef& f, FieldInfo& info) {
    info.no = f.no;
    info.type = f.type;
    info.size = f.size;
    info.name = f.name;
}

}  // namespace

uint16_t Base::getStructNo(const String& name) const {
    auto it = structNos_.find(name);
    return it == structNos_.end() ? NO_STRUCT : it->second;
}

XCode Base::getStructName(uint16_t structNo, String& name) const {
    const StructDef* s = findStruct(structNo);
    if (!s) return noStruct(structNo);
    name = s->name;
    return XCode();
}

uint16_t Base::getFieldNo(uint16_t structNo, const String& field) const {
    const StructDef* s = findStruct(structNo);
    const FieldDef* f = s ? s->findField(field) : nullptr;
    return f ? f->no : NO_FIELD;
}

XCode Base::getFieldInfo(uint16_t structNo, const String& field, FieldInfo& info) const {
    const StructDef* s = findStruct(structNo);
    if (!s) return noStruct(structNo);
    const FieldDef* f = s->findField(field);
    if (!f) {
        return XCode(E_SCHEMA).setStringF("NO SUCH DATABASE FIELD: %s.%s", s->name.c_str(),
                                          field.c_str());
    }
    fillInfo(*f, info);
    return XCode();
}

XCode Base::getFieldInfo(uint16_t structNo, uint16_t fieldNo, FieldInfo& info) const {
    const StructDef* s = findStruct(structNo);
    if (!s) return noStruct(structNo);
    if (fieldNo >= s->fields.size()) {
        return XCode(E_SCHEMA).setStringF("INVALID DATABASE FIELD NUMBER: %s.%u", s->name.c_str(),
                                          fieldNo);
    }
    fillInfo(s->fields[fieldNo], info);
    return XCode();
}

uint16_t Base::getIndexNo(uint16_t structNo, const String& index) const {
    const StructDef* s = findStruct(structNo);
    if (!s) return NO_INDEX;
    for (size_t i = 0; i < s->indexes.size(); ++i) {
        if (s->indexes[i].name == index) return static_cast<uint16_t>(i);
    }
    return NO_INDEX;
}

XCode Base::getListOfIndexFields(uint16_t structNo, uint16_t indexNo,
                                 VXVector<String>& fields) const {
    const StructDef* s = findStruct(structNo);
    if (!s) return noStruct(structNo);
    if (indexNo >= s->indexes.size()) {
        return XCode(E_SCHEMA).setStringF("INVALID DATABASE INDEX NUMBER: %s.%u", s->name.c_str(),
                                          indexNo);
    }
    fields.clear();
    for (uint16_t no : s->indexes[indexNo].fields) fields.push_back(s->fields[no].name);
    return XCode();
}

XCode Base::getListOfStructFields(uint16_t structNo, const String& field,
                                  VXVector<String>& members) const {
    FieldInfo info;
    XCode rc = getFieldInfo(structNo, field, info);
    if (rc.isErr()) return rc;
    const FieldDef& f = findStruct(structNo)->fields[info.no];
    if (f.type != FT_STRUCT) {
        return XCode(E_SCHEMA).setStringF("NOT A STRUCTURE FIELD: %s", f.qualified.c_str());
    }
    members = f.members;
    return XCode();
}

XCode Base::getListOfFields(uint16_t structNo, VXVector<String>& fields) const {
    const StructDef* s = findStruct(structNo);
    if (!s) return noStruct(structNo);
    fields.clear();
    for (const FieldDef& f : s->fields) fields.push_back(f.name);
    return XCode();
}

}  // namespace DB
