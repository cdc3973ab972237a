// DB::REGISTER_CALLBACK: how a host component asks to be told of changes to a
// table. The registration is made inside a callback transaction (type 2) and
// takes effect when that transaction commits; from then on every committed
// insert, delete or update of the table (as chosen by the event type) reaches
// the component manager, which passes it to its handlers. A registration
// lasts until the manager is destroyed; registering the same manager twice
// for the same table and event type delivers each change once.
#pragma once

#include <cstdint>

#include "host/db/types.h"
#include "host/runtime/xcode.h"

namespace VX {
class ComponentManager;
}

namespace DB {

class Transaction;

// Fails with E_TRANSACTION when `tx` is not a started callback transaction,
// E_SCHEMA "INVALID DATABASE TABLE NUMBER: <n>", E_VALUE for an unknown event
// type or a callback type other than CALLBACK_AFTER_COMMIT, or without a
// manager. A failure leaves the registrations already made in `tx` staged.
XCode REGISTER_CALLBACK(Transaction& tx, uint16_t structNo, EventType_ eventType,
                        uint32_t callbackType, VX::ComponentManager* manager);

}  // namespace DB
