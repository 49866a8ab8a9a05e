#pragma once

#include "articleserver/store/ArticleStore.h"
#include "articleserver/store/SqliteConnection.h"

#include <cstdint>
#include <string_view>

namespace articleserver {

// What the sources of the SQLite store share. The inserting ones run inside a transaction of their caller.

ServerFailure noArticle();

/// The single number of a statement that gives one.
ServerResult<std::int64_t> numberOf(SqliteConnection& connection, SqliteStatement statement);

bool insertComment(SqliteConnection& connection, std::int64_t article, std::int64_t author,
                   std::string_view text, ServerTime date);

/// With its read mark; the id is given by the store.
bool insertNotification(SqliteConnection& connection, const StoredNotification& notification);

}  // namespace articleserver
