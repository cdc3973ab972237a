// DatabaseTracker: tracking variables, observing tables and entries, and
// writing changed entries' values into the variables bound to them.
#include "sysevent/database/database_tracker.h"

#include "sysevent/database/tracker_log.h"
#include "sysevent/repository/repository.h"

namespace VX::SysEvent {

using detail::TRACKER_LOG;

namespace {

// The variable's name, read holding its lock.
String nameOf(const VXPPtr<IRead>& variable) {
    VXLockPtr<IRead> locked(variable);
    return locked->getName();
}

}  // namespace

DatabaseTracker::DatabaseTracker(VX::ComponentManager* manager) : m_manager(manager) {}

// Registrations with the database are not withdrawn: they end with the
// component manager.
DatabaseTracker::~DatabaseTracker() = default;

XCode DatabaseTracker::observeTable(const Obj& table, unsigned fields) {
    auto it = m_observedTables.find(table.tableName);
    if (it != m_observedTables.end()) {
        it->second += fields;
        return XCode();
    }
    TRACKER_LOG("[%s] Start observing database table", table.tableName);
    m_observedTables[table.tableName] = fields;
    DB::Transaction tx(DB::TRANSACTION_CALLBACK);
    XCode rc = tx.start();
    if (rc.isErr()) return rc;
    static const struct {
        DB::EventType_ type;
        const char* failure;
    } kEvents[] = {{DB::EVENT_NEW, "CANNOT REGISTER NEW-OBSERVER"},
                   {DB::EVENT_DELETE, "CANNOT REGISTER DELETE-OBSERVER"},
                   {DB::EVENT_UPDATE, "CANNOT REGISTER UPDATE-OBSERVER"}};
    for (const auto& e : kEvents) {
        rc = DB::REGISTER_CALLBACK(tx, table.tableNo, e.type, DB::CALLBACK_AFTER_COMMIT, m_manager);
        if (rc.isErr()) return rc.setString(e.failure);
    }
    return tx.commit();
}

XCode DatabaseTracker::startObservation(const VXLWPtr<Field>& field) {
    const Obj& table = *field->table;
    XCode rc = observeTable(table, 1);
    // The parents' tables too, at no field: an entry named through a parent
    // stops being named so when the parent goes or takes a new identifier.
    for (const Obj* p = table.parent.get(); p && rc.isSuccess(); p = p->parent.get()) {
        rc = observeTable(*p, 0);
    }
    if (rc.isErr()) return rc;
    String entryId = table.getEntryId();
    auto entry = m_observedEntries.find(entryId);
    if (entry == m_observedEntries.end()) {
        TRACKER_LOG("[%s] Start observing entry", entryId);
        entry = m_observedEntries.emplace(entryId, VXStringHashTable<bool>()).first;
        if (table.parent) m_nestedEntries.insert(entryId);
    }
    entry->second[field->getVariableName()] = true;
    return XCode();
}

XCode DatabaseTracker::stopObservation(const VXLWPtr<Field>& field) {
    auto it = m_observedTables.find(field->table->tableName);
    if (it != m_observedTables.end() && it->second > 0) --it->second;
    String entryId = field->table->getEntryId();
    auto entry = m_observedEntries.find(entryId);
    if (entry != m_observedEntries.end()) {
        TRACKER_LOG("[%s] Stop observing entry", entryId);
        entry->second.erase(field->getVariableName());
    }
    return XCode();
}

XCode DatabaseTracker::startTracking(VXPPtr<IRead>& variable) {
    String name = nameOf(variable);
    TRACKER_LOG("[%s] Start tracking database", name);
    VXLWPtr<Field> field;
    Value value;
    XCode rc = VARIABLE_NAME_TO_FIELD(field, name);
    if (rc.isSuccess()) rc = startObservation(field);
    if (rc.isSuccess()) rc = field->get(value);
    if (rc.isSuccess()) {
        VXLockPtr<IRead> locked(variable);
        VXPPtr<IWrite> writable;
        if (locked->queryIf(writable).isErr()) {
            rc = XCode(XCode::GENERIC_FAILURE, "READ-ONLY CONSTANT");
        } else {
            rc = writable->setValue(value);
            if (rc.isErr()) rc.setString("CANNOT SET VARIABLE VALUE");
        }
    } else if (rc.getValue() == CANNOT_LOAD) {
        // The entry's creation will deliver the value.
        TRACKER_LOG("[%s] Database entry does not exist (yet)", name);
        return XCode();
    }
    if (rc.isErr()) rc.extendString(String::Formatted("%s", name.c_str()), ": ");
    return rc;
}

XCode DatabaseTracker::stopTracking(VXPPtr<IRead>& variable) {
    String name = nameOf(variable);
    TRACKER_LOG("[%s] Stop tracking database", name);
    VXLWPtr<Field> field;
    XCode rc = VARIABLE_NAME_TO_FIELD(field, name);
    if (rc.isSuccess()) rc = stopObservation(field);
    if (rc.isErr()) {
        rc.extendString(String::Formatted("[%s] %s", name.c_str(), rc.toString().c_str()), ": ");
    }
    return rc;
}

XCode DatabaseTracker::onDatabaseEvent(EventType_ type, DB::ObjRead& entry) {
    TRACKER_LOG("[%s] Database table changed", entry.getStructName());
    String id;
    if (GET_ENTRY_ID(id, entry).isErr()) return XCode();
    writeVariables(type, id, &entry);
    followDescendants(type, id);
    return XCode();
}

void DatabaseTracker::writeVariables(EventType_ type, const String& id, DB::ObjRead* entry) {
    auto observed = m_observedEntries.find(id);
    if (observed == m_observedEntries.end()) return;
    TRACKER_LOG("[%s] Database table changed for observed entry", id);
    // A copy: writing a variable runs observers, which may start or stop
    // tracking.
    VXVector<String> names;
    for (const auto& n : observed->second) names.push_back(n.first);
    for (const String& variableName : names) {
        String fieldName = variableName.substring(id.length() + 1);
        String fullName = "db." + variableName;
        TRACKER_LOG("[%s] Database table changed for variable", fullName);
        Value value;
        if (entry) {
            if (GET_ENTRY_VALUE(value, *entry, fieldName).isErr()) continue;
        } else if (type == DB::EVENT_NEW) {
            // The name may again name an entry (a parent renamed back), or
            // still none: then, as when tracking starts, the value stays.
            VXLWPtr<Field> field;
            if (VARIABLE_NAME_TO_FIELD(field, fullName).isErr() || field->get(value).isErr()) {
                continue;
            }
        }
        VXPPtr<IWrite> writable;
        if (Repository::GET(fullName, writable).isErr()) continue;
        VXLockPtr<IWrite> locked(writable);
        if (type == DB::EVENT_DELETE) {
            locked->setValue(Value(DST_ERR_NA));
        } else if (type == DB::EVENT_NEW || type == DB::EVENT_UPDATE) {
            locked->setValue(value);
        }
    }
}

// An update that leaves the identifier alone changes no name below the
// entry; one that changes it comes as a delete and a new entry.
void DatabaseTracker::followDescendants(EventType_ type, const String& id) {
    if (type != DB::EVENT_DELETE && type != DB::EVENT_NEW) return;
    const String below = id + ".";
    VXVector<String> ids;
    for (auto it = m_nestedEntries.lower_bound(below);
         it != m_nestedEntries.end() && it->startsWith(below); ++it) {
        ids.push_back(*it);
    }
    for (const String& nested : ids) writeVariables(type, nested, nullptr);
}

}  // namespace VX::SysEvent
