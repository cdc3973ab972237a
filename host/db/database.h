// DB::Database: one configuration database, an SQLite database opened from a
// file or in memory, with its dictionary (DB::Base), the change callbacks
// registered on its tables, and the changes waiting for their commit.
//
// Threads: a Database may be used from any thread. Its own lock serialises
// its SQLite connection; a transaction holds that lock from start() to its
// commit or rollback, so a transaction is started and ended on one thread and
// other threads wait meanwhile. Change callbacks run on the committing thread
// after the lock is released, so a callback may read or write the database
// and take other locks (such as the engine lock) without ordering problems.
// See host/DATABASE.md.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "host/db/base.h"
#include "host/db/cell.h"
#include "host/db/types.h"
#include "host/runtime/containers.h"
#include "host/runtime/lock.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

struct sqlite3;

namespace VX {
class ComponentManager;
class ComponentEndpoint;
}  // namespace VX

namespace DB {

namespace detail {
class StatementCache;
}

class Database : public VX::RefCounted {
public:
    enum OpenMode {
        OPEN_READ_ONLY,   // an existing file; every write fails
        OPEN_READ_WRITE,  // an existing file
        OPEN_CREATE       // the file is made, empty, when it does not exist
    };

    // Opens the database file at `path` and reads its dictionary. A file that
    // cannot be opened fails with "CANNOT OPEN DATABASE FILE: <path>", one
    // that is not a database or fails SQLite's quick integrity check with
    // "CORRUPT DATABASE FILE: <file>" (both E_CORRUPT), a schema the layer
    // cannot map with its E_SCHEMA text. The file is never written by OPEN.
    // <file>, in these texts and in getPath(), is the absolute path.
    static XCode OPEN(VXPtr<Database>& out, const String& path, OpenMode mode = OPEN_READ_WRITE);
    // A new, empty database that lives in memory as long as the object.
    static XCode OPEN_IN_MEMORY(VXPtr<Database>& out);

    // The process's configuration database: the one a transaction made
    // without naming a database works on. Null until set.
    static void SET_DEFAULT(const VXPtr<Database>& db);
    static VXPtr<Database> GET_DEFAULT();

    // Runs schema SQL (CREATE TABLE, CREATE INDEX, and whatever else the
    // configuration component ships, such as default entries) in one
    // transaction and reloads the dictionary. If the SQL fails or the new
    // schema cannot be mapped, everything is rolled back and the database and
    // its dictionary are as they were; the text says why, prefixed with
    // "INVALID DATABASE SCHEMA". Changes made here are not notified. Fails with
    // E_TRANSACTION while the calling thread has a transaction open.
    XCode applySchema(const String& sql);
    // applySchema on a file's contents; "CANNOT READ SCHEMA FILE: <path>".
    XCode applySchemaFile(const String& path);

    // The current dictionary. Transactions, keys and entries keep the one
    // they were made with.
    VXPtr<const Base> getBase() const;
    // How long a statement waits for another connection (another process)
    // that holds the file before it fails with "DATABASE IS BUSY"; 2000 ms
    // unless set.
    void setBusyTimeout(int milliseconds);

    // The file's absolute path, or ":memory:".
    const String& getPath() const { return path_; }

private:
    friend class Transaction;
    friend class ObjRead;
    friend class ObjWrite;
    friend class VX::ComponentManager;
    friend XCode REGISTER_CALLBACK(class Transaction&, uint16_t, EventType_, uint32_t,
                                   VX::ComponentManager*);

    struct Notification {
        EventType_ type;
        std::shared_ptr<const Row> row;
        VXPtr<const Base> base;  // the dictionary the row was read with
    };
    struct Registration {
        String table;  // by name, so that a schema change cannot misroute it
        EventType_ type;
        std::shared_ptr<VX::ComponentEndpoint> endpoint;
    };

    Database(sqlite3* conn, const String& path);
    ~Database() override;

    static XCode OPEN_CONNECTION(VXPtr<Database>& out, const String& path, int flags, bool check);

    // Transactions. begin takes the connection lock and keeps it on success;
    // `joined` tells whether the calling thread already had a transaction
    // open, which this one then joins instead of opening an SQL transaction.
    // `generation` identifies the outermost transaction, so that a joined one
    // that outlives it (ended out of order) cannot disturb the next one.
    XCode begin(int type, bool& joined, uint64_t& generation);
    // Ends a transaction begun with begin(): commits or rolls back the SQL
    // transaction when it is the outermost one, releases the lock, and after a
    // commit delivers the changes queued meanwhile.
    XCode end(bool commit, bool joined, uint64_t generation);
    // Whether the calling thread has a transaction open, and of which type.
    bool inTransaction() const { return lock_.isHeldByMe() && depth_ > 0; }
    int outerType() const { return outerType_; }

    // Called by writes inside the outermost write transaction.
    void queue(EventType_ type, std::shared_ptr<const Row> row, const VXPtr<const Base>& base);
    void addRegistrations(const VXVector<Registration>& regs);
    void deliver(const VXVector<Notification>& changes);

    sqlite3* conn_;
    // conn_'s prepared statements; guarded by lock_ like conn_ itself.
    std::unique_ptr<detail::StatementCache> statements_;
    String path_;
    // Serialises conn_; held by an open transaction. Guards depth_,
    // outerType_, generation_ and pending_.
    mutable VXLock lock_;
    unsigned depth_ = 0;
    int outerType_ = -1;
    uint64_t generation_ = 0;
    VXVector<Notification> pending_;
    // The entries the open write transaction has updated, as they are now,
    // by (table, UID): the next update of one starts from it instead of
    // reading it. Only updates that cannot change anything else keep it;
    // every other write, and the end of the transaction, empties it.
    struct RowKeyHash {
        size_t operator()(const std::pair<uint16_t, uint64_t>& k) const {
            return std::hash<uint64_t>()(k.second * 0x10001u + k.first);
        }
    };
    std::unordered_map<std::pair<uint16_t, uint64_t>, std::shared_ptr<const Row>, RowKeyHash>
        lastRows_;
    std::shared_ptr<const Row> lastRow(uint16_t structNo, uint64_t uid) const {
        auto it = lastRows_.find({structNo, uid});
        return it == lastRows_.end() ? nullptr : it->second;
    }

    mutable std::mutex baseMutex_;  // guards base_, which is swapped by applySchema
    VXPtr<const Base> base_;

    std::mutex registryMutex_;  // guards registrations_
    VXVector<Registration> registrations_;
};

}  // namespace DB
