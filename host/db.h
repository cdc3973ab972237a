// The configuration database layer in one include: DB::Database, its
// dictionary DB::Base, transactions, keys, reading and writing entries, change
// callbacks, and the VX::ComponentManager that receives them.
#pragma once

#include "host/component_manager.h"
#include "host/db_base.h"
#include "host/db_callback.h"
#include "host/db_database.h"
#include "host/db_key.h"
#include "host/db_obj_read.h"
#include "host/db_obj_write.h"
#include "host/db_transaction.h"
#include "host/db_types.h"
