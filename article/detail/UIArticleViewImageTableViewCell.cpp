#include "article/detail/UIArticleViewImageTableViewCell.h"

#include "article/detail/DetailMetrics.h"
#include "article/detail/ImageRequests.h"
#include "article/detail/ImageRowLayout.h"
#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/uikit/view/UIDevice.h"

#include <utility>

namespace ostrel {

UIArticleViewImageTableViewCell::UIArticleViewImageTableViewCell(UITableViewCellStyle style,
                                                                 std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)),
      fullImageHasCompleted_(std::make_shared<std::atomic<bool>>(false)) {}

void UIArticleViewImageTableViewCell::initialise() {
    UITableViewCell::initialise();
    const auto main = NSBundle::mainBundle();
    myBundle_ = main ? main->bundleForResource("UIArticleViewImageTableViewCell") : nullptr;
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    const CGFloat space = detailSpace, width = frame().width(), height = frame().height();

    baseView_ = make<UIView>(CGRect(space, space, width - 2 * space, height - 2 * space));
    addSubview(baseView_);

    myImageView_ = make<UIImageView>(CGRect(0, 0, width - 2 * space, height - space));
    myImageView_->setImage(imageInBundle(myBundle_, "default"));
    myImageView_->setContentMode(UIViewContentMode::scaleAspectFit);
    myImageView_->setAutoresizingMask(autoresizingNone);
    myImageView_->setBorderWidth(0);
    myImageView_->setClipsToBounds(true);
    myImageView_->setCornerRadius(pictureRadius);
    baseView_->addSubview(myImageView_);

    myTextView_ = make<UITextView>(CGRect(0, 0, width - 2 * space, 0));
    myTextView_->setFont(UIFont::fontWithName("PingFangSC-Light", 12));
    myTextView_->setAutoresizingMask(autoresizingNone);
    myTextView_->setTextAlignment(NSTextAlignment::center);
    myTextView_->setTextContainerInset({});
    myTextView_->setSelectable(false);
    myTextView_->setEditable(false);
    myTextView_->setScrollEnabled(false);
    baseView_->addSubview(myTextView_);

    addConstraint({.relation = NSLayoutConstraint::Relation::greaterThanOrEqual,
                   .toItem = baseView_,
                   .constant = ImageRowLayout::heightBesideBase});
}

void UIArticleViewImageTableViewCell::setFrame(const CGRect& frame) {
    UITableViewCell::setFrame(frame);
    if (myTextView_) refreshFrame();
}

bool UIArticleViewImageTableViewCell::fullImageHasCompleted() const {
    return fullImageHasCompleted_->load(std::memory_order_relaxed);
}

void UIArticleViewImageTableViewCell::setImageDictionary(Dictionary record) {
    imageDictionary_ = std::move(record);
    myImageView_->setAccessibility(AccessibilityRole::image, recordText(imageDictionary_, "text"));
    refreshFrame();
    NSThread::detachNewThread([requests = makeRequests()] { requests->sendBoth(); });
}

std::shared_ptr<ImageRequests> UIArticleViewImageTableViewCell::makeRequests() {
    // The requests' threads hold the row weakly, and only the main thread makes that strong: a view must not
    // end on another thread.
    const auto weak = std::weak_ptr(std::static_pointer_cast<UIArticleViewImageTableViewCell>(shared_from_this()));
    return std::make_shared<ImageRequests>(recordText(imageDictionary_, "thumbnail"),
                                           recordText(imageDictionary_, "image"), fullImageHasCompleted_,
                                           [weak](const Data& picture) {
                                               if (const auto row = weak.lock()) row->showPicture(picture);
                                           });
}

void UIArticleViewImageTableViewCell::loadThumbnail() { makeRequests()->sendBoth(); }

void UIArticleViewImageTableViewCell::loadFullImage() { makeRequests()->sendFullImage(); }

void UIArticleViewImageTableViewCell::showPicture(const Data& picture) {
    const bool isShown = shownData_ && shownData_.bytes() == picture.bytes() && shownData_.size() == picture.size();
    if (isShown) return;
    shownData_ = picture;
    myImageView_->setImage(UIImage::imageWithData(picture));
}

void UIArticleViewImageTableViewCell::refreshFrame() {
    const std::string caption = recordText(imageDictionary_, "text");
    // Without a caption the view keeps the text of the record before, at height 0. Kept on purpose: a text
    // that is not seen costs nothing, and the next caption replaces it.
    if (!caption.empty()) myTextView_->setText(caption);
    const CGFloat measureWidth = ImageRowLayout::captionMeasureWidth(UIScreen::mainScreen().bounds().width());
    const auto layout =
        ImageRowLayout::make(frame().width(), {.imageWidth = recordFloat(imageDictionary_, "image_width"),
                                               .imageHeight = recordFloat(imageDictionary_, "image_height"),
                                               .windowWidth = firstWindowWidth(),
                                               .captionHeight = textHeight(caption, myTextView_->font(), measureWidth),
                                               .formerImage = myImageView_->frame()});
    myImageView_->setFrame(layout.image);
    myTextView_->setFrame(layout.caption);
    baseView_->setFrame(layout.base);
}

}  // namespace ostrel
