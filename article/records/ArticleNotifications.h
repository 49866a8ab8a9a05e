#pragma once

#include "platform/foundation/values/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// A new article exists; object: its record. The owner's list inserts it first.
inline constexpr char NOTIFICATION_KEY_NEW_ARTICLE[] = "NOTIFICATION_KEY_NEW_ARTICLE";
/// An article changed; object: its record, read back from the server.
inline constexpr char NOTIFICATION_KEY_UPDATE[] = "NOTIFICATION_KEY_UPDATE";
/// The signed-in user changed; posted by the server framework, the object is not used.
inline constexpr char Current_User_Changed_Notification_Name[] = "Current_User_Changed_Notification_Name";

/// A text of a record: a number gives its decimal text, a missing key the empty one.
inline std::string recordText(const Dictionary& record, std::string_view key) {
    return record[key].text().value_or("");
}

/// The decimal text of a record's "id"; none when it has none.
inline std::optional<std::string> recordId(const Dictionary& record) { return record["id"].text(); }

/// Whether two records denote the same article: the texts of their "id" values are equal. A record without "id" is the
/// same as no other.
inline bool isSameArticle(const Dictionary& a, const Dictionary& b) {
    const auto id = recordId(a);
    return id && id == recordId(b);
}

}  // namespace ostrel
