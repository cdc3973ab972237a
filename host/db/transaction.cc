// DB::Transaction: the start/commit/rollback bracket over Database::begin
// and Database::end, and the staging of callback registrations.
#include "host/db/transaction.h"

namespace DB {

namespace {

const VXPtr<const Base>& emptyBase() {
    static const VXPtr<const Base>* empty = new VXPtr<const Base>(new Base());
    return *empty;
}

}  // namespace

Transaction::Transaction(int type, const VXPtr<Database>& db)
    : type_(type), db_(db ? db : Database::GET_DEFAULT()) {
    base_ = db_ ? db_->getBase() : emptyBase();
}

Transaction::~Transaction() {
    if (started_) rollback();
}

XCode Transaction::start() {
    if (started_) return XCode(E_TRANSACTION, "TRANSACTION ALREADY STARTED");
    if (!db_) return XCode(E_TRANSACTION, "NO DATABASE");
    if (type_ != TRANSACTION_READ && type_ != TRANSACTION_WRITE && type_ != TRANSACTION_CALLBACK) {
        return XCode(E_TRANSACTION).setStringF("INVALID TRANSACTION TYPE: %d", type_);
    }
    XCode rc = db_->begin(type_, joined_, generation_);
    if (rc.isErr()) return rc;
    started_ = true;
    // Nobody can change the schema while the lock is held, so this is the
    // dictionary for the whole transaction.
    base_ = db_->getBase();
    return XCode();
}

XCode Transaction::commit() {
    if (!started_) return XCode(E_TRANSACTION, "TRANSACTION NOT STARTED");
    started_ = false;
    if (!registrations_.empty()) {
        db_->addRegistrations(registrations_);
        registrations_.clear();
    }
    return db_->end(true, joined_, generation_);
}

XCode Transaction::rollback() {
    if (!started_) return XCode(E_TRANSACTION, "TRANSACTION NOT STARTED");
    started_ = false;
    registrations_.clear();
    return db_->end(false, joined_, generation_);
}

}  // namespace DB
