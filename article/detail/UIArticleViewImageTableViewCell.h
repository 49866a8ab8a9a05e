#pragma once

#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/values/Data.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UITextView.h"

#include <atomic>
#include <memory>
#include <string>

namespace ostrel {

class ImageRequests;

/// One image of an article with its caption: a placeholder, then the thumbnail, then the full image, which no
/// later thumbnail covers. Every record starts a pair of requests from a thread of its own; the answers to an
/// earlier record's requests are not discarded and may still show. `ImageRowLayout` places its parts.
class UIArticleViewImageTableViewCell final : public UITableViewCell {
public:
    UIArticleViewImageTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const Dictionary& imageDictionary() const { return imageDictionary_; }
    void setImageDictionary(Dictionary record);
    void setFrame(const CGRect& frame) override;
    void refreshFrame();
    /// Requests the thumbnail and then the full image of the record, on the calling thread, whereas
    /// `setImageDictionary` requests them on a thread of its own.
    void loadThumbnail();
    void loadFullImage();

    /// Whether the full image's request has been answered, well or not.
    bool fullImageHasCompleted() const;
    const std::shared_ptr<UIView>& baseView() const { return baseView_; }
    const std::shared_ptr<UIImageView>& myImageView() const { return myImageView_; }
    const std::shared_ptr<UITextView>& myTextView() const { return myTextView_; }

private:
    std::shared_ptr<ImageRequests> makeRequests();
    void showPicture(const Data& picture);

    Dictionary imageDictionary_;
    std::shared_ptr<NSBundle> myBundle_;
    std::shared_ptr<UIView> baseView_;
    std::shared_ptr<UIImageView> myImageView_;
    std::shared_ptr<UITextView> myTextView_;
    std::shared_ptr<std::atomic<bool>> fullImageHasCompleted_;
    /// The bytes of the picture that is shown, so that the same bytes are not decoded twice.
    Data shownData_;
};

}  // namespace ostrel
