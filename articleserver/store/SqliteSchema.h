#pragma once

#include "articleserver/store/SqliteConnection.h"

namespace articleserver {

/// Creates the tables or brings an older file up to the newest version in one transaction.
/// Refuses a file whose version is newer than this program's.
ServerResult<ServerDone> migrateSchema(SqliteConnection& connection);

}  // namespace articleserver
