#pragma once

#include "articleserver/store/ArticleStore.h"
#include "articleserver/store/SqliteConnection.h"

#include <cstdint>
#include <string_view>

namespace articleserver {

// Functions that the sources of SqliteArticleStore share. Their callers have opened a transaction.

ServerFailure noArticle();

/// The number in the first row of a statement.
ServerResult<std::int64_t> numberOf(SqliteConnection& connection, SqliteStatement statement);

bool insertComment(SqliteConnection& connection, std::int64_t article, std::int64_t author, std::string_view text,
                   ServerTime date);

/// Stores `isRead`, too. The store chooses the id.
bool insertNotification(SqliteConnection& connection, const StoredNotification& notification);

}  // namespace articleserver
