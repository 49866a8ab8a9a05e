#pragma once

#include "platform/foundation/values/Value.h"
#include "platform/graphics/UIImage.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ostrel {

/// One picture of an article under edit, in the order the user sees them. *New* while it has no record: the user picked
/// `image` in this pass. *Existing* when it has one: then the record is all it carries. Items are compared by identity;
/// setting never validates; absent is an empty pointer, optional or record. Main thread.
class NSArticleImageObject final {
public:
    const std::shared_ptr<const UIImage>& image() const { return image_; }
    void setImage(std::shared_ptr<const UIImage> image) { image_ = std::move(image); }
    /// The caption as the user edited it in this pass; absent until the user types.
    const std::optional<std::string>& text() const { return text_; }
    void setText(std::optional<std::string> text) { text_ = std::move(text); }
    /// The server's image record.
    const Dictionary& imageDictionary() const { return imageDictionary_; }
    void setImageDictionary(Dictionary record) { imageDictionary_ = std::move(record); }
    /// Where it was taken; declared for hosts, neither set nor read here.
    const std::optional<std::string>& latitude() const { return latitude_; }
    void setLatitude(std::optional<std::string> latitude) { latitude_ = std::move(latitude); }
    const std::optional<std::string>& longitude() const { return longitude_; }
    void setLongitude(std::optional<std::string> longitude) { longitude_ = std::move(longitude); }
    const std::optional<std::string>& altitude() const { return altitude_; }
    void setAltitude(std::optional<std::string> altitude) { altitude_ = std::move(altitude); }
    /// The user edited the caption; nothing resets it.
    bool textChanged() const { return textChanged_; }
    void setTextChanged(bool changed) { textChanged_ = changed; }

private:
    std::shared_ptr<const UIImage> image_;
    std::optional<std::string> text_, latitude_, longitude_, altitude_;
    Dictionary imageDictionary_;
    bool textChanged_ = false;
};

}  // namespace ostrel
