#pragma once

#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/values/Data.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UITextView.h"

#include <memory>
#include <string>

namespace ostrel {

/// One image of an article with its caption: a placeholder, then the thumbnail, then the full image, which no later
/// thumbnail covers. Every record set starts a pair of requests from a thread of its own; what an earlier record's
/// requests answer is not discarded and may still show.
class UIArticleViewImageTableViewCell final : public UITableViewCell {
public:
    UIArticleViewImageTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const Dictionary& imageDictionary() const { return imageDictionary_; }
    void setImageDictionary(Dictionary record);
    void setFrame(const CGRect& frame) override;
    /// Places image and caption. Three widths meet here on purpose: the image is as wide as the first window, the caption
    /// is measured at the width of the main screen, and laid out at that of the row.
    void refreshFrame();
    /// Requests the thumbnail and then the full image of the record, on the calling thread; the requests of
    /// `setImageDictionary` are those of another thread.
    void loadThumbnail();
    void loadFullImage();

    bool fullImageHasCompleted() const;
    const std::shared_ptr<UIView>& baseView() const { return baseView_; }
    const std::shared_ptr<UIImageView>& myImageView() const { return myImageView_; }
    const std::shared_ptr<UITextView>& myTextView() const { return myTextView_; }

private:
    struct Loading;
    std::shared_ptr<Loading> makeLoading();
    void showData(const Data& data);

    Dictionary imageDictionary_;
    std::shared_ptr<NSBundle> myBundle_;
    float space_ = 5.0f;
    std::shared_ptr<UIView> baseView_;
    std::shared_ptr<UIImageView> myImageView_;
    std::shared_ptr<UITextView> myTextView_;
    /// Shared with the threads that send requests.
    struct Completion;
    std::shared_ptr<Completion> completion_;
    Data shownData_;  ///< the picture's bytes, so that the same bytes are not decoded twice
};

}  // namespace ostrel
