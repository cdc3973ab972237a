// DB::Transaction: one unit of work on a configuration database. Type 0 reads
// a consistent state, type 1 writes through DB::ObjWrite, type 2 registers
// change callbacks (DB::REGISTER_CALLBACK). Nothing a transaction does is
// visible to others before commit(): writes and their change notifications,
// and callback registrations, all take effect at the commit and vanish on a
// rollback (or when the transaction is destroyed while still open).
//
// Nesting: a read or callback transaction started while the same thread has
// a transaction open on the same database joins it (its commit ends only
// itself); a write transaction cannot be nested.
#pragma once

#include "host/db/base.h"
#include "host/db/database.h"
#include "host/db/types.h"
#include "host/runtime/containers.h"
#include "host/runtime/ref_counted.h"
#include "host/runtime/xcode.h"

namespace VX {
class ComponentManager;
}

namespace DB {

class Transaction {
public:
    // A transaction of `type` (TransactionType) on `db`, or on the default
    // database when `db` is null. Nothing happens before start().
    explicit Transaction(int type, const VXPtr<Database>& db = VXPtr<Database>());
    // Rolls back when still open.
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // Opens the transaction; the calling thread must also end it. Fails with
    // E_TRANSACTION when already started, when there is no database, for an
    // unknown type, or for a write inside another transaction; with
    // "DATABASE IS BUSY" when another process holds the file.
    XCode start();
    // Makes the work permanent and ends the transaction. After the commit of
    // a write transaction the changes are delivered to the registered
    // callbacks, on this thread, before commit returns. A commit that fails
    // rolls everything back.
    XCode commit();
    // Discards the work and ends the transaction.
    XCode rollback();

    bool isStarted() const { return started_; }
    int getType() const { return type_; }
    // The database, null when none was given and no default is set.
    const VXPtr<Database>& getDatabase() const { return db_; }
    // The dictionary this transaction works with (empty without a database):
    // the database's at start(), or at construction before that.
    const VXPtr<const Base>& getDatabaseDescription() const { return base_; }
    const Base& getBase() const { return *base_; }

private:
    friend XCode REGISTER_CALLBACK(Transaction&, uint16_t, EventType_, uint32_t,
                                   VX::ComponentManager*);

    int type_;
    VXPtr<Database> db_;
    VXPtr<const Base> base_;
    bool started_ = false;
    bool joined_ = false;
    uint64_t generation_ = 0;
    VXVector<Database::Registration> registrations_;  // staged until commit
};

}  // namespace DB
