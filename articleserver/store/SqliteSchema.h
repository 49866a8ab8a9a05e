#pragma once

#include "articleserver/store/SqliteConnection.h"

namespace articleserver {

/// Creates the tables of a new file, or migrates an older file to the newest version, in one transaction.
/// Refuses a file whose version is newer than this program's.
ServerResult<void> migrateSchema(SqliteConnection& connection);

}  // namespace articleserver
