// The configuration database layer in one include: DB::Database, its
// dictionary DB::Base, transactions, keys, reading and writing entries, change
// callbacks, and the VX::ComponentManager that receives them.
#pragma once

#include "host/component/component_manager.h"
#include "host/db/base.h"
#include "host/db/callback.h"
#include "host/db/database.h"
#include "host/db/key.h"
#include "host/db/obj_read.h"
#include "host/db/obj_write.h"
#include "host/db/transaction.h"
#include "host/db/types.h"
