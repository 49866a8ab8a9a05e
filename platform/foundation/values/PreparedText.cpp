#include "platform/foundation/values/PreparedText.h"

#include <cassert>
#include <utility>

namespace ostrel {

namespace {

thread_local const PreparedText* innermost = nullptr;

}  // namespace

PreparedText::PreparedText(std::string_view text, Value value, std::string error)
    : text_(text),
      value_(std::move(value)),
      error_(std::move(error)),
      outer_(std::exchange(innermost, this)) {}

PreparedText::~PreparedText() {
    assert(innermost == this);
    innermost = outer_;
}

const PreparedText* PreparedText::find(std::string_view text) {
    for (const PreparedText* prepared = innermost; prepared; prepared = prepared->outer_) {
        if (prepared->text_.data() == text.data() && prepared->text_.size() == text.size()) return prepared;
    }
    return nullptr;
}

}  // namespace ostrel
