// DB::_Key: index field values, converted by the field types of the
// dictionary the key was made with.
#include "host/db/key.h"

namespace DB {

_Key::_Key(uint16_t structNo, uint16_t indexNo, const VXPtr<const Base>& description)
    : structNo_(structNo), indexNo_(indexNo), base_(description) {
    const StructDef* table;
    const IndexDef* index;
    if (resolve(table, index).isSuccess()) {
        values_.resize(index->fields.size());
        isSet_.resize(index->fields.size(), false);
    }
}

XCode _Key::resolve(const StructDef*& table, const IndexDef*& index) const {
    table = base_ ? base_->findStruct(structNo_) : nullptr;
    if (!table) {
        return XCode(E_SCHEMA).setStringF("INVALID DATABASE TABLE NUMBER: %u", structNo_);
    }
    if (indexNo_ >= table->indexes.size()) {
        return XCode(E_SCHEMA).setStringF("INVALID DATABASE INDEX NUMBER: %s.%u",
                                          table->name.c_str(), indexNo_);
    }
    index = &table->indexes[indexNo_];
    return XCode();
}

XCode _Key::find(const String& field, const FieldDef*& def, size_t& position) const {
    const StructDef* table;
    const IndexDef* index;
    XCode rc = resolve(table, index);
    if (rc.isErr()) return rc;
    for (size_t i = 0; i < index->fields.size(); ++i) {
        if (table->fields[index->fields[i]].name == field) {
            def = &table->fields[index->fields[i]];
            position = i;
            return XCode();
        }
    }
    return XCode(E_SCHEMA).setStringF("NOT A FIELD OF DATABASE INDEX %s: %s.%s",
                                      index->name.c_str(), table->name.c_str(), field.c_str());
}

XCode _Key::set(const String& field, uint32_t value) {
    const FieldDef* def;
    size_t position;
    Cell cell;
    XCode rc = find(field, def, position);
    if (rc.isSuccess()) rc = FIELD_FROM_UINT32(*def, value, cell);
    if (rc.isErr()) return rc;
    values_[position] = cell;
    isSet_[position] = true;
    return XCode();
}

XCode _Key::set(const String& field, const String& text) {
    const FieldDef* def;
    size_t position;
    Cell cell;
    XCode rc = find(field, def, position);
    if (rc.isSuccess()) rc = PARSE_FIELD_TEXT(*def, text, cell);
    if (rc.isErr()) return rc;
    values_[position] = cell;
    isSet_[position] = true;
    return XCode();
}

XCode _Key::getValues(VXVector<Cell>& values) const {
    const StructDef* table;
    const IndexDef* index;
    XCode rc = resolve(table, index);
    if (rc.isErr()) return rc;
    for (size_t i = 0; i < isSet_.size(); ++i) {
        if (!isSet_[i]) {
            return XCode(E_VALUE).setStringF("INCOMPLETE DATABASE KEY: %s",
                                             table->fields[index->fields[i]].qualified.c_str());
        }
    }
    values = values_;
    return XCode();
}

}  // namespace DB
