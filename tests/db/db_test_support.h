// Shared set-up of the database layer's tests: the example device schema (the
// one the configuration component ships, examples/network_device.sql) in a
// real SQLite database in memory or in a temporary file, and helpers that
// write entries, register for changes and read entries back, each in a
// transaction of its own.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "host/db/db.h"

namespace dbtest {

// The example schema, found beside this source file's tree.
inline String schemaPath() {
    return String(SYSEVENT_SOURCE_DIR "/examples/network_device.sql");
}

inline String readSchema() {
    std::ifstream in(schemaPath().c_str());
    std::ostringstream text;
    text << in.rdbuf();
    return String(text.str());
}

// An in-memory database with the example schema.
inline VXPtr<DB::Database> openExample() {
    VXPtr<DB::Database> db;
    XCode rc = DB::Database::OPEN_IN_MEMORY(db);
    EXPECT_TRUE(rc.isSuccess()) << rc.toString().c_str();
    rc = db->applySchemaFile(schemaPath());
    EXPECT_TRUE(rc.isSuccess()) << rc.toString().c_str();
    return db;
}

// Runs `write` in a write transaction and commits; returns the first failure.
template <typename F>
XCode inWrite(const VXPtr<DB::Database>& db, F write) {
    DB::Transaction tx(DB::TRANSACTION_WRITE, db);
    XCode rc = tx.start();
    if (rc.isErr()) return rc;
    DB::ObjWrite w(tx);
    rc = write(w);
    if (rc.isErr()) return rc;
    return tx.commit();
}

// Field values written as "name=value,name=value" (values without commas).
inline DB::ObjWrite::Values values(const std::string& list) {
    DB::ObjWrite::Values out;
    std::istringstream in(list);
    for (std::string item; std::getline(in, item, ',');) {
        const size_t eq = item.find('=');
        out.emplace_back(String(item.substr(0, eq)), String(item.substr(eq + 1)));
    }
    return out;
}

// Inserts one entry in its own transaction; returns its UID (0 on failure,
// which is also a test failure).
inline uint64_t insert(const VXPtr<DB::Database>& db, const String& table,
                       const DB::ObjWrite::Values& values) {
    uint64_t uid = 0;
    XCode rc = inWrite(db, [&](DB::ObjWrite& w) { return w.insert(table, values, &uid); });
    EXPECT_TRUE(rc.isSuccess()) << table.c_str() << ": " << rc.toString().c_str();
    return uid;
}

inline String text(uint64_t n) {
    return String::stringOf(static_cast<unsigned long long>(n));
}

// The UID of the Interface of that name.
inline uint64_t addInterface(const VXPtr<DB::Database>& db, const String& name) {
    return insert(db, "Interface", {{"name", name}});
}

// An Address under an Interface.
inline uint64_t addAddress(const VXPtr<DB::Database>& db, uint64_t interfaceUid, const String& id,
                           const String& ip) {
    return insert(db, "Address",
                  {{"parent.parentStructNo", "2"},
                   {"parent.parentId", text(interfaceUid)},
                   {"id", id},
                   {"ip", ip},
                   {"prefixLength", "24"}});
}

// Registers `manager` for `type` changes of `table` in a callback transaction
// of its own.
inline XCode registerFor(const VXPtr<DB::Database>& db, const char* table, DB::EventType_ type,
                         VX::ComponentManager* manager) {
    DB::Transaction tx(DB::TRANSACTION_CALLBACK, db);
    XCode rc = tx.start();
    if (rc.isSuccess()) {
        rc = DB::REGISTER_CALLBACK(tx, tx.getBase().getStructNo(table), type,
                                   DB::CALLBACK_AFTER_COMMIT, manager);
    }
    return rc.isSuccess() ? tx.commit() : rc;
}

// The UIDs of the entries of `table`, in reading order.
inline VXVector<uint64_t> uids(const VXPtr<DB::Database>& db, const char* table) {
    DB::Transaction tx(DB::TRANSACTION_READ, db);
    EXPECT_TRUE(tx.start().isSuccess());
    DB::ObjRead e(tx);
    EXPECT_TRUE(e.setStructNo(tx.getBase().getStructNo(table)).isSuccess()) << table;
    VXVector<uint64_t> out;
    for (XCode rc = e.readFirst(); rc.isSuccess(); rc = e.readNext()) out.push_back(e.getUID());
    return out;
}

// The text of field `name` of the entry `uid` of `table` ("" when none).
inline String field(const VXPtr<DB::Database>& db, const char* table, uint64_t uid,
                    const char* name) {
    DB::Transaction tx(DB::TRANSACTION_READ, db);
    EXPECT_TRUE(tx.start().isSuccess());
    DB::ObjRead e(tx);
    EXPECT_TRUE(e.setStructNo(tx.getBase().getStructNo(table)).isSuccess()) << table;
    String out;
    for (XCode rc = e.readFirst(); rc.isSuccess(); rc = e.readNext()) {
        if (e.getUID() == uid) {
            EXPECT_TRUE(e.getAsString(name, out).isSuccess()) << name;
        }
    }
    return out;
}

// A file path in the temporary directory, removed with the object.
class TempFile {
public:
    explicit TempFile(const char* tag) {
        std::string dir = ::testing::TempDir();
        if (!dir.empty() && dir.back() == '/') dir.pop_back();
        path_ = String::Formatted("%s/sysevent_db_%s_%d.sqlite", dir.c_str(), tag,
                                  static_cast<int>(getpid()));
        std::remove(path_.c_str());
    }
    ~TempFile() {
        std::remove(path_.c_str());
        std::remove((path_ + "-journal").c_str());
    }
    const String& path() const { return path_; }

private:
    String path_;
};

}  // namespace dbtest
