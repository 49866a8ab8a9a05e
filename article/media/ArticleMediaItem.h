#pragma once

#include "platform/foundation/values/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ostrel {

/// What pictures and videos of an article under edit have in common. An item is *new* while it has no record: the user
/// picked its medium while this editor was open. An item is *existing* when it has the server's record, and then
/// carries nothing else but an edited caption. Setters do not validate; an absent value is an empty pointer, optional
/// or record. Items are compared by identity. Main thread.
class ArticleMediaItem {
public:
    /// The server's record of the picture or video.
    const Dictionary& record() const { return record_; }
    void setRecord(Dictionary record) { record_ = std::move(record); }
    /// The caption as the user edited it; absent until the user types.
    const std::optional<std::string>& text() const { return text_; }
    void setText(std::optional<std::string> text) { text_ = std::move(text); }
    /// Whether the user edited the caption. The module never resets it.
    bool textChanged() const { return textChanged_; }
    void setTextChanged(bool changed) { textChanged_ = changed; }
    /// Where the medium was captured: parts of an ISO 6709 text, for example "+31.2304", "+121.4737" and "+012.345".
    /// Filled for picked videos only.
    const std::optional<std::string>& latitude() const { return latitude_; }
    void setLatitude(std::optional<std::string> latitude) { latitude_ = std::move(latitude); }
    const std::optional<std::string>& longitude() const { return longitude_; }
    void setLongitude(std::optional<std::string> longitude) { longitude_ = std::move(longitude); }
    const std::optional<std::string>& altitude() const { return altitude_; }
    void setAltitude(std::optional<std::string> altitude) { altitude_ = std::move(altitude); }

protected:
    ArticleMediaItem() = default;
    ~ArticleMediaItem() = default;

private:
    Dictionary record_;
    std::optional<std::string> text_, latitude_, longitude_, altitude_;
    bool textChanged_ = false;
};

}  // namespace ostrel
