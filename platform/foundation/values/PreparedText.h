#pragma once

#include "platform/foundation/values/Value.h"

#include <string>
#include <string_view>

namespace ostrel {

/// While it lives, `Value::parse` of this very text (the same bytes in memory, not equal ones) on this thread answers
/// with what was parsed before, elsewhere: a long text that is handed from thread to thread is parsed only once. The
/// text must outlive it and stay as it is. May be nested.
class PreparedText final {
public:
    /// `value` absent: the text is no JSON, and `error` says why.
    PreparedText(std::string_view text, Value value, std::string error);
    ~PreparedText();
    PreparedText(const PreparedText&) = delete;
    PreparedText& operator=(const PreparedText&) = delete;

    /// Null when the text is not prepared on this thread.
    static const PreparedText* find(std::string_view text);
    const Value& value() const { return value_; }
    const std::string& error() const { return error_; }

private:
    const std::string_view text_;
    const Value value_;
    const std::string error_;
    const PreparedText* const outer_;
};

}  // namespace ostrel
