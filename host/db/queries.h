// Internal to the database layer: the SQL it runs on entries, in one place.
// Every function expects the caller to hold the database's connection lock.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <utility>

#include "host/db/base.h"
#include "host/db/cell.h"
#include "host/db/sqlite.h"
#include "host/runtime/containers.h"
#include "host/runtime/xcode.h"

namespace DB::detail {

// Entry `uid` of table `s` into `row`, without ancestors. E_NOT_FOUND when
// missing.
XCode READ_CELLS(StatementCache& cache, const StructDef& s, uint64_t uid, Row& row);

// Sets the given columns (field number, value) of entry `uid`.
XCode UPDATE_ROW(StatementCache& cache, const StructDef& s, uint64_t uid,
                 const VXVector<std::pair<uint16_t, Cell>>& cells);

// Entry `uid` of table `s`, without ancestors. E_NOT_FOUND when missing.
XCode READ_ROW(StatementCache& cache, const StructDef& s, uint64_t uid,
               std::shared_ptr<const Row>& out);

// Entry `uid` with its ancestors as they are now: what a change notification
// carries. A missing ancestor ends the chain (parent null).
XCode CAPTURE_ROW(StatementCache& cache, const Base& base, const StructDef& s, uint64_t uid,
                  std::shared_ptr<const Row>& out);

// The lowest UID of an entry whose `index` fields equal `values`.
XCode FIND_BY_INDEX(StatementCache& cache, const StructDef& s, const IndexDef& index,
                    const VXVector<Cell>& values, uint64_t& uid);

// The lowest UID above `after`. E_NOT_FOUND "NO DATABASE ENTRY: <table>".
XCode FIND_NEXT(StatementCache& cache, const StructDef& s, uint64_t after, uint64_t& uid);

// The entries of every table whose parent is entry `uid` of table `structNo`.
XCode FIND_CHILDREN(StatementCache& cache, const Base& base, uint16_t structNo, uint64_t uid,
                    VXVector<std::pair<uint16_t, uint64_t>>& children);

// The parent reference of an entry; false when it names none.
bool PARENT_OF(const StructDef& s, const Row& row, uint16_t& structNo, uint64_t& uid);

}  // namespace DB::detail
