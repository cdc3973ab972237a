// DatabaseTracker: binds engine variables named "db." + entry + field to
// fields of the configuration database. It reads a field into its variable
// when tracking starts, registers for the changes of the field's table, and
// writes the new value (or #N/A! for a deleted entry) into every variable
// bound to a changed entry.
//
// Variable names: "db." + table specifier { "." + table specifier } + "." +
// field { "." + member }, a table specifier being a table name with its key
// values after ':' ("db.Interface:eth0.Address:1.ip"). Components that start
// with a lower-case letter or '_' belong to the field (db.Port:1.state.admin).
//
// The owner (a host component) constructs the tracker with its component
// manager, calls startTracking and stopTracking, and forwards each database
// notification to onDatabaseEvent, all from one thread. The tracker has no
// lock of its own; it writes variables holding their lock (the engine lock).
// Lock order: the engine lock before the database's. The tracker opens its
// transactions with or without the engine lock held (its callers may hold
// it), and never takes the engine lock inside one; a caller that reads the
// database must end its transaction before it asks the engine.
// Log lines go to MON at level 2.
#pragma once

#include <cstdint>
#include <set>

#include "host/component/component_manager.h"
#include "host/db/db.h"
#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"
#include "sysevent/repository/interfaces.h"
#include "sysevent/value/value.h"

namespace VX::SysEvent {

class DatabaseTracker {
public:
    using EventType_ = DB::EventType_;

    // The result code of a database entry that cannot be loaded (it does not
    // exist, or its parent does not).
    static constexpr uint32_t CANNOT_LOAD = 0x11000002;

    // One table specifier of a variable name.
    class Obj : public VX::RefCounted {
    public:
        Obj(const String& tableName, const VXVector<String>& keyValues);

        String tableName;
        uint16_t tableNo = DB::NO_STRUCT;
        uint16_t identifierIndex = DB::NO_INDEX;  // of the index "identifier"
        VXVector<String> keyValues;               // as written in the name
        VXLWPtr<Obj> parent;                      // null for the leftmost specifier

        // Parent's entry id + "." (with a parent), the table name, and ":" +
        // the key values joined by ":" (with key values):
        // "Interface:eth0.Address:1".
        String getEntryId() const;

        // Positions `entry` on this specifier's entry: by the identifier index
        // when the table has one, else on the table's first entry. A failed
        // look-up or read has the code CANNOT_LOAD and the text "CANNOT LOAD
        // DATABASE ENTRY: <table>" or "CANNOT LOAD FIRST DATABASE ENTRY:
        // <table>" before its own.
        XCode load(DB::ObjRead& entry, DB::Transaction& tx) const;
        XCode loadByIdentifier(DB::ObjRead& entry, DB::Transaction& tx) const;
        XCode loadAny(DB::ObjRead& entry, DB::Transaction& tx) const;

        // Fills every field of the identifier index: objType 2, objStatus 10,
        // the parent reference from the parent specifier (whose entry is
        // loaded for its UID), the other fields from the key values in order.
        // Fails with "PARENT SPECIFIER REQUIRED: <table>" or "NOT ENOUGH KEY
        // FIELDS SPECIFIED: <table>"; surplus key values are ignored.
        XCode prepareKey(DB::_Key& key, DB::Transaction& tx) const;
        // Sets one key field from text, as its type requires (see the .cc);
        // a structure field sets each member, recursively, to the same text.
        // "Unsupported data type in index: <code>" for the other types.
        XCode setKeyField(DB::_Key& key, DB::Transaction& tx, const String& field,
                          const String& text) const;
    };

    // A bound field: the field name (with member path) of the rightmost
    // table specifier.
    class Field : public VX::RefCounted {
    public:
        Field(const String& fieldName, const VXLWPtr<Obj>& table);

        String fieldName;
        VXLWPtr<Obj> table;

        // The entry id, ".", the field name: the variable's name without
        // "db.", in canonical form.
        String getVariableName() const;
        // Reads the field's current value, in a read transaction of its own
        // or in `tx`. On failure `value` is unchanged.
        XCode get(Value& value) const;
        XCode get(Value& value, DB::Transaction& tx) const;
    };

    explicit DatabaseTracker(VX::ComponentManager* manager);
    ~DatabaseTracker();
    DatabaseTracker(const DatabaseTracker&) = delete;
    DatabaseTracker& operator=(const DatabaseTracker&) = delete;

    // Binds the variable (by its name) to its database field and writes the
    // field's value into it. An entry that does not exist yet is no failure:
    // the variable keeps its value until the entry appears. Other failures
    // come back with the variable's name before their text.
    XCode startTracking(VXPPtr<IRead>& variable);
    // Unbinds the variable: changes of its entry no longer reach it. The
    // table's registration with the database stays.
    XCode stopTracking(VXPPtr<IRead>& variable);
    // A change notification of the database: writes the changed entry's
    // field values (#N/A! after a delete) into the variables bound to it.
    // An entry's identifier is part of the names of the entries below it,
    // which the database reports no change for: when an entry goes (deleted,
    // or its identifier changed), the variables named through it below it
    // become #N/A! too, and when one appears, those named through its new
    // identifier read their fields afresh. Always succeeds.
    XCode onDatabaseEvent(EventType_ type, DB::ObjRead& entry);

    // Parses a variable name and checks its tables and field against the
    // dictionary. Fails with the generic code (no text) for a name not
    // starting with "db.", "MISSING FIELD NAME", "MISSING TABLE NAME",
    // "INVALID DATABASE TABLE: <table>", "INVALID DATABASE FIELD:
    // <table>.<field>".
    static XCode VARIABLE_NAME_TO_FIELD(VXLWPtr<Field>& field, const String& name);
    // The entry id of a database entry, built to match Obj::getEntryId: the
    // parent's entry id and ".", the table name, and ":" with the values of
    // the identifier's user key fields joined by ":".
    static XCode GET_ENTRY_ID(String& id, DB::ObjRead& entry);
    // Reads a field of an entry into a value: unsigned integers as DST_UINT,
    // signed ones as DST_UINT above 0 and as DST_FLP otherwise, texts as
    // DST_STRING, booleans as DST_BOOL; "INVALID DATA TYPE OF DATABASE FIELD"
    // for the others. On failure `value` is unchanged.
    static XCode GET_ENTRY_VALUE(Value& value, DB::ObjRead& entry, const String& fieldName);

    // Diagnostics: the number of tracked fields per observed table (a table
    // observed only as a parent of tracked entries has none), and the
    // variable names (without "db.") bound per observed entry id.
    const VXStringHashTable<unsigned>& getObservedTables() const { return m_observedTables; }
    const VXStringHashTable<VXStringHashTable<bool>>& getObservedEntries() const {
        return m_observedEntries;
    }

private:
    // Adds `fields` to the table's count; registers for its changes first
    // when it is not yet observed.
    XCode observeTable(const Obj& table, unsigned fields);
    XCode startObservation(const VXLWPtr<Field>& field);
    XCode stopObservation(const VXLWPtr<Field>& field);
    // Writes into each variable bound to the observed entry `id` its field
    // read from `entry`, the changed entry itself; without one (an entry
    // below the changed one) #N/A! after a delete, and after a new entry the
    // field as the database now holds it, if it exists.
    void writeVariables(EventType_ type, const String& id, DB::ObjRead* entry);
    // The entries below the one with id `id` that was deleted or appeared.
    void followDescendants(EventType_ type, const String& id);

    VX::ComponentManager* m_manager;
    VXStringHashTable<unsigned> m_observedTables;
    VXStringHashTable<VXStringHashTable<bool>> m_observedEntries;
    // The observed entry ids that have a parent, ordered so that the entries
    // below one id are one range.
    std::set<String> m_nestedEntries;
};

}  // namespace VX::SysEvent
