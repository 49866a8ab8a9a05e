#include "article/detail/UIArticleViewImageTableViewCell.h"

#include "article/detail/DetailMetrics.h"
#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/OstrelRequestManager.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/uikit/view/UIDevice.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat roomBelow = 12;
constexpr CGFloat pictureRadius = 6;

}  // namespace

/// True once the full image's request has answered, well or not. Set by the thread that sends it and by its answer; a
/// flag on its own, so no order with other data is needed.
struct UIArticleViewImageTableViewCell::Completion {
    std::atomic<bool> hasCompleted = false;
};

/// What the requests of one record need. Holds the row weakly, and only the main thread makes that strong: a view does not
/// end on another.
struct UIArticleViewImageTableViewCell::Loading : std::enable_shared_from_this<Loading> {
    std::string thumbnail, image;
    std::weak_ptr<UIArticleViewImageTableViewCell> row;
    std::shared_ptr<Completion> completion;

    void show(const Data& data) const {
        if (const auto shown = row.lock()) shown->showData(data);
    }

    void showSoon(const Data& data) {
        if (!data || !RunLoop::hasMain()) return;
        RunLoop::main().perform([self = shared_from_this(), data] { self->show(data); });
    }

    void loadThumbnail() {
        auto& manager = OstrelRequestManager::defaultOstrelRequestManager();
        showSoon(manager.request(
            thumbnail, [self = shared_from_this()](const Data& data, bool loaded, const auto&) {
                if (loaded && !self->completion->hasCompleted.load(std::memory_order_relaxed))
                    self->show(data);
            }));
        loadFullImage();
    }

    void loadFullImage() {
        completion->hasCompleted.store(false, std::memory_order_relaxed);
        auto& manager = OstrelRequestManager::defaultOstrelRequestManager();
        showSoon(
            manager.request(image, [self = shared_from_this()](const Data& data, bool loaded, const auto&) {
                if (loaded) self->show(data);
                self->completion->hasCompleted.store(true, std::memory_order_relaxed);
            }));
    }
};

UIArticleViewImageTableViewCell::UIArticleViewImageTableViewCell(UITableViewCellStyle style,
                                                                 std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)), completion_(std::make_shared<Completion>()) {}

void UIArticleViewImageTableViewCell::initialise() {
    UITableViewCell::initialise();
    const auto main = NSBundle::mainBundle();
    myBundle_ = main ? main->bundleForResource("UIArticleViewImageTableViewCell") : nullptr;
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    space_ = detailSpace;
    const CGFloat space = space_, width = frame().width(), height = frame().height();

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
                   .constant = space + roomBelow});
}

void UIArticleViewImageTableViewCell::setFrame(const CGRect& frame) {
    UITableViewCell::setFrame(frame);
    if (myTextView_) refreshFrame();
}

bool UIArticleViewImageTableViewCell::fullImageHasCompleted() const {
    return completion_->hasCompleted.load(std::memory_order_relaxed);
}

void UIArticleViewImageTableViewCell::setImageDictionary(Dictionary record) {
    imageDictionary_ = std::move(record);
    myImageView_->setAccessibility(AccessibilityRole::image, recordText(imageDictionary_, "text"));
    refreshFrame();
    NSThread::detachNewThread([loading = makeLoading()] { loading->loadThumbnail(); });
}

std::shared_ptr<UIArticleViewImageTableViewCell::Loading> UIArticleViewImageTableViewCell::makeLoading() {
    auto loading = std::make_shared<Loading>();
    loading->thumbnail = recordText(imageDictionary_, "thumbnail");
    loading->image = recordText(imageDictionary_, "image");
    loading->row = std::static_pointer_cast<UIArticleViewImageTableViewCell>(shared_from_this());
    loading->completion = completion_;
    return loading;
}

void UIArticleViewImageTableViewCell::loadThumbnail() { makeLoading()->loadThumbnail(); }

void UIArticleViewImageTableViewCell::loadFullImage() { makeLoading()->loadFullImage(); }

void UIArticleViewImageTableViewCell::showData(const Data& data) {
    const bool isShown = shownData_ && shownData_.bytes() == data.bytes() && shownData_.size() == data.size();
    if (isShown) return;
    shownData_ = data;
    myImageView_->setImage(UIImage::imageWithData(data));
}

void UIArticleViewImageTableViewCell::refreshFrame() {
    const CGFloat space = space_;
    const std::int64_t w = truncated(recordFloat(imageDictionary_, "image_width"));
    const std::int64_t h = truncated(recordFloat(imageDictionary_, "image_height"));
    if (w > 0 && h > 0) {
        const auto width = static_cast<float>(std::max(0.0, firstWindowWidth() - 2 * space));
        const float height = static_cast<float>(h) * width / static_cast<float>(w);
        myImageView_->setFrame(
            {myImageView_->frame().origin, {width, std::min(height, largestPictureHeight)}});
    }
    const std::string caption = recordText(imageDictionary_, "text");
    CGFloat captionHeight = 0;
    if (!caption.empty()) {
        captionHeight = textHeight(caption, myTextView_->font(),
                                   std::max(0.0, UIScreen::mainScreen().bounds().width() - 2 * space));
        myTextView_->setText(caption);
    }
    // Without a caption the view keeps the text it had, at height 0.
    const CGFloat width = std::max(0.0, frame().width() - 2 * space);
    myTextView_->setFrame({0, myImageView_->frame().maxY(), width, captionHeight});
    baseView_->setFrame({space, space, width, myImageView_->frame().height() + captionHeight});
}

}  // namespace ostrel
