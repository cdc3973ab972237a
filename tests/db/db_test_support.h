// Shared set-up of the database layer's tests (also used by the tracker and
// soak tests): the example device schema, examples/network_device.sql, in a
// real SQLite database, and helpers that write, register for changes and read
// back, each in a transaction of its own.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>

#include "host/db/db.h"

namespace dbtest {

inline String schemaPath() {
    return String(SYSEVENT_SOURCE_DIR "/examples/network_device.sql");
}

inline VXPtr<DB::Database> openExample() {
    VXPtr<DB::Database> db;
    XCode rc = DB::Database::OPEN_IN_MEMORY(db);
    if (rc.isSuccess()) rc = db->applySchemaFile(schemaPath());
    EXPECT_TRUE(rc.isSuccess()) << rc.toString().c_str();
    return db;
}

// Runs `write` in a write transaction and commits; returns the first failure.
template <typename F>
XCode inWrite(const VXPtr<DB::Database>& db, F write) {
    DB::Transaction tx(DB::TRANSACTION_WRITE, db);
    XCode rc = tx.start();
    DB::ObjWrite w(tx);
    if (rc.isSuccess()) rc = write(w);
    return rc.isSuccess() ? tx.commit() : rc;
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

inline String text(uint64_t n) {
    return String::stringOf(static_cast<unsigned long long>(n));
}

// Inserts one entry; returns its UID (0, and a test failure, when refused).
inline uint64_t insert(const VXPtr<DB::Database>& db, const String& table,
                       const DB::ObjWrite::Values& values) {
    uint64_t uid = 0;
    XCode rc = inWrite(db, [&](DB::ObjWrite& w) { return w.insert(table, values, &uid); });
    EXPECT_TRUE(rc.isSuccess()) << table.c_str() << ": " << rc.toString().c_str();
    return uid;
}

inline uint64_t addInterface(const VXPtr<DB::Database>& db, const String& name) {
    return insert(db, "Interface", {{"name", name}});
}

inline uint64_t addAddress(const VXPtr<DB::Database>& db, uint64_t interfaceUid, const String& id,
                           const String& ip) {
    return insert(db, "Address",
                  values("parent.parentStructNo=2,parent.parentId=" + text(interfaceUid).str() +
                         ",id=" + id.str() + ",ip=" + ip.str() + ",prefixLength=24"));
}

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

// The UIDs of the entries of `table` in reading order, and with `name` the
// text of that field of each.
inline VXVector<String> read(const VXPtr<DB::Database>& db, const char* table,
                             const char* name = nullptr) {
    DB::Transaction tx(DB::TRANSACTION_READ, db);
    EXPECT_TRUE(tx.start().isSuccess());
    DB::ObjRead e(tx);
    EXPECT_TRUE(e.setStructNo(tx.getBase().getStructNo(table)).isSuccess()) << table;
    VXVector<String> out;
    for (XCode rc = e.readFirst(); rc.isSuccess(); rc = e.readNext()) {
        String value = text(e.getUID());
        if (name && e.getAsString(name, value).isErr()) value = "?";
        out.push_back(value);
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
