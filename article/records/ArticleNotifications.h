#pragma once

#include "platform/foundation/values/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// An article was created. Object: its record. The list of the user's own articles inserts it as the first row.
inline constexpr char NOTIFICATION_KEY_NEW_ARTICLE[] = "NOTIFICATION_KEY_NEW_ARTICLE";
/// An article changed. Object: its new record, loaded from the server.
inline constexpr char NOTIFICATION_KEY_UPDATE[] = "NOTIFICATION_KEY_UPDATE";
/// Another user signed in, or the user signed out. The server framework posts it; it has no object.
inline constexpr char Current_User_Changed_Notification_Name[] = "Current_User_Changed_Notification_Name";

/// A text of a record. A number gives its decimal text, a missing key an empty text.
inline std::string recordText(const Dictionary& record, std::string_view key) {
    return record[key].text().value_or("");
}

/// The "id" of a record as a text; none when the record has no "id".
inline std::optional<std::string> recordId(const Dictionary& record) { return record["id"].text(); }

/// Whether two records describe the same article: whether their "id" values have the same text. A record without an
/// "id" describes no other record's article.
inline bool isSameArticle(const Dictionary& a, const Dictionary& b) {
    const auto id = recordId(a);
    return id && id == recordId(b);
}

}  // namespace ostrel
