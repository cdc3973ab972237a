// DB::REGISTER_CALLBACK: checks a registration and stages it in its
// transaction.
#include "host/db/callback.h"

#include "host/component/component_manager.h"
#include "host/db/transaction.h"

namespace DB {

XCode REGISTER_CALLBACK(Transaction& tx, uint16_t structNo, EventType_ eventType,
                        uint32_t callbackType, VX::ComponentManager* manager) {
    if (!tx.isStarted()) return XCode(E_TRANSACTION, "TRANSACTION NOT STARTED");
    if (tx.getType() != TRANSACTION_CALLBACK) {
        return XCode(E_TRANSACTION, "NOT A CALLBACK TRANSACTION");
    }
    const StructDef* s = tx.getBase().findStruct(structNo);
    if (!s) return XCode(E_SCHEMA).setStringF("INVALID DATABASE TABLE NUMBER: %u", structNo);
    if (eventType != EVENT_NEW && eventType != EVENT_DELETE && eventType != EVENT_UPDATE) {
        return XCode(E_VALUE).setStringF("INVALID DATABASE EVENT TYPE: %u", eventType);
    }
    if (callbackType != CALLBACK_AFTER_COMMIT) {
        return XCode(E_VALUE).setStringF("UNSUPPORTED CALLBACK TYPE: %u", callbackType);
    }
    if (!manager) return XCode(E_VALUE, "NO COMPONENT MANAGER");
    tx.registrations_.push_back({s->name, eventType, manager->getEndpoint()});
    return XCode();
}

}  // namespace DB
