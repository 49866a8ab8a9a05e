#include "article/editor/UIArticleEditViewController.h"

#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

enum Section : std::int64_t { textSection, imageSection, videoSection, sectionCount };
enum TextRow : std::int64_t { titleTextRow, bodyTextRow, textRowCount };

constexpr char titleIdentifier[] = "CELL_IDENTIFIER_TITLE";
constexpr char textIdentifier[] = "CELL_IDENTIFIER_TEXT";
constexpr char imagesIdentifier[] = "CELL_IDENTIFIER_IMAGES";
constexpr char videosIdentifier[] = "CELL_IDENTIFIER_VIDEOS";

constexpr CGFloat titleRowHeight = 40;
constexpr CGFloat headerHeight = 30;
constexpr CGFloat smallestTextHeight = 66, largestTextHeight = 200;
constexpr CGFloat roomAroundText = 10;
constexpr UIColor lightGray{0.667f, 0.667f, 0.667f, 1};

std::shared_ptr<UITableViewCell> plainRow(const char* identifier) {
    auto row = make<UITableViewCell>(UITableViewCellStyle::defaultStyle, identifier);
    row->setSelectionStyle(UITableViewCellSelectionStyle::none);
    return row;
}

/// Shows the pre-filled text, then the record's, which wins.
template <class Editor>
void fill(Editor& editor, const std::optional<std::string>& prefilled, const Dictionary& record,
          const char* key) {
    if (prefilled && !prefilled->empty()) editor.setText(*prefilled);
    if (record) editor.setText(recordText(record, key));
}

}  // namespace

UIArticleEditViewController::UIArticleEditViewController()
    : UITableViewController(UITableViewStyle::insetGrouped) {}

UIArticleEditViewController::UIArticleEditViewController(Images images, std::string articleTitle,
                                                         std::string articleText, bool autoSend)
    : UIArticleEditViewController() {
    preImagesArray_ = std::move(images);
    preArticleTitle_ = std::move(articleTitle);
    preArticleText_ = std::move(articleText);
    autoSendPre_ = autoSend;
}

UIArticleEditViewController::~UIArticleEditViewController() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
}

void UIArticleEditViewController::initialise() {
    setArticleEditStyle(0);
    tableView()->estimatedRowHeight = 66;
    tableView()->rowHeight = UITableViewAutomaticDimension;
    tableView()->setDelegate(this);
    tableView()->setDataSource(this);
    tableView()->setScrollViewDelegate(weakSelf().lock());
    articleHaveChanged_ = preImagesArray_.has_value();
}

std::weak_ptr<UIArticleEditViewController> UIArticleEditViewController::weakSelf() {
    return std::static_pointer_cast<UIArticleEditViewController>(shared_from_this());
}

void UIArticleEditViewController::setArticleEditStyle(std::int64_t style) {
    articleEditStyle_ = style;
    articleHaveChanged_ = false;
    tableView()->separatorNone = true;
}

// The screen

void UIArticleEditViewController::viewDidLoad() {
    UITableViewController::viewDidLoad();
    // Removed with the screen, which the handler may therefore hold by address.
    NSNotificationCenter::defaultCenter().addObserver(this, UITextViewTextDidChangeNotification,
                                                      [this](const NSNotification&) { didChange(); });
    view()->setBackgroundColor(UIColor::white());
    auto post = std::make_shared<UIBarButtonItem>(articleText("POST"), UIBarButtonItem::Style::done,
                                                  [weak = weakSelf()] {
                                                      if (const auto self = weak.lock()) self->save();
                                                  });
    post->setEnabled(false);
    navigationItem().setRightBarButtonItem(post);
    navigationItem().setLeftBarButtonItem(
        std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::cancel, [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->cancel();
        }));
}

void UIArticleEditViewController::viewWillAppear(bool animated) {
    UITableViewController::viewWillAppear(animated);
    holdStrips();
}

void UIArticleEditViewController::viewDidAppear(bool animated) {
    UITableViewController::viewDidAppear(animated);
    navigationItem().rightBarButtonItem()->setEnabled(articleHaveChanged_);
    if (!autoSendPre_) return;
    // What is sent is what the rows hold.
    tableView()->layoutIfNeeded();
    save();
}

void UIArticleEditViewController::viewDidDisappear(bool animated) {
    UITableViewController::viewDidDisappear(animated);
    letGoOfStripsWhenClosed();
}

void UIArticleEditViewController::didMoveToParentViewController(UIViewController* parent) {
    UITableViewController::didMoveToParentViewController(parent);
    letGoOfStripsWhenClosed();
}

bool UIArticleEditViewController::isClosed() const {
    if (parentViewController() || presentingViewController()) return false;
    const auto& windows = UIApplication::sharedApplication().windows();
    return std::none_of(windows.begin(), windows.end(), [this](const UIWindow* window) {
        return window->rootViewController().get() == this;
    });
}

void UIArticleEditViewController::letGoOfStripsWhenClosed() {
    if (!isClosed()) return;
    if (imagesCell_) {
        imagesCell_->close();
        imagesCell_->setDelegate(nullptr);
    }
    if (videosCell_) {
        videosCell_->close();
        videosCell_->setDelegate(nullptr);
    }
}

/// A screen that was closed and is shown once more takes its strips back.
void UIArticleEditViewController::holdStrips() {
    if (imagesCell_ && !imagesCell_->delegate()) {
        imagesCell_->setDelegate(weakSelf().lock());
        imagesCell_->reopen();
    }
    if (videosCell_ && !videosCell_->delegate()) {
        videosCell_->setDelegate(weakSelf().lock());
        videosCell_->reopen();
    }
}

void UIArticleEditViewController::cancel() {
    if (presentingViewController()) {
        dismissViewControllerAnimated(true);
    } else if (auto* const navigation = navigationController();
               navigation && navigation->topViewController().get() == this) {
        // Only itself: a second save must not close the screen below.
        navigation->popViewControllerAnimated(true);
    }
}

bool UIArticleEditViewController::cancelOperation() {
    const bool imagesShake = imagesCell_ && imagesCell_->isItemShake();
    const bool videosShake = videosCell_ && videosCell_->isItemShake();
    if (imagesShake) imagesCell_->end_drag();
    if (videosShake) videosCell_->end_drag();
    return imagesShake || videosShake || UITableViewController::cancelOperation();
}

// Changes

void UIArticleEditViewController::didChange() {
    articleHaveChanged_ = true;
    navigationItem().rightBarButtonItem()->setEnabled(true);
}

bool UIArticleEditViewController::textFieldShouldChangeCharactersInRangeReplacementString(
    UITextField&, NSRange, const std::string&) {
    didChange();
    return true;
}

void UIArticleEditViewController::textAndValueChangedFromArticleEditImagesTableViewCell(
    UIArticleEditImagesTableViewCell&) {
    didChange();
}

void UIArticleEditViewController::textAndValueChangedFromArticleEditVideosTableViewCell(
    UIArticleEditVideosTableViewCell&) {
    didChange();
}

void UIArticleEditViewController::imageNumberChanged(UIArticleEditImagesTableViewCell&) {
    tableView()->reloadRow(imagesCellIndexPath_, UITableViewRowAnimation::none);
    didChange();
}

void UIArticleEditViewController::videoNumberChanged(UIArticleEditVideosTableViewCell&) {
    tableView()->reloadRow(videosCellIndexPath_, UITableViewRowAnimation::none);
    didChange();
}

// Writing

bool UIArticleEditViewController::textFieldShouldReturn(UITextField& field) {
    if (&field == titleField_.get() && textTextField_) textTextField_->becomeFirstResponder();
    return true;
}

void UIArticleEditViewController::textViewDidChangeSelection(UITextView& textView) {
    const CGRect present = textView.frame();
    const CGFloat height =
        std::min(std::max(textView.contentSize().height, smallestTextHeight), largestTextHeight);
    // The caret moves far more often than the height.
    if (height == present.height()) return;
    tableView()->beginUpdates();
    textView.setFrame({present.origin, {present.width(), height}});
    tableView()->endUpdates();
}

void UIArticleEditViewController::scrollViewWillBeginDragging(UIScrollView&) {
    if (titleField_ && titleField_->isFirstResponder()) titleField_->resignFirstResponder();
    if (textTextField_ && textTextField_->isFirstResponder()) textTextField_->resignFirstResponder();
    if (imagesCell_) imagesCell_->end_drag();
    if (videosCell_) videosCell_->end_drag();
}

void UIArticleEditViewController::scrollViewDidScroll(UIScrollView&) {
    const auto end = [](UIArticleEditMediaTableViewCell* strip) {
        if (strip && strip->isItemShake() && !strip->collectionView()->isInteractiveMovementUnderWay())
            strip->end_drag();
    };
    end(imagesCell_.get());
    end(videosCell_.get());
}

// The table

std::optional<std::string> UIArticleEditViewController::cellIdentifierFor(NSIndexPath path) {
    switch (path.section) {
    case textSection:
        if (path.row == titleTextRow) return titleIdentifier;
        return path.row == bodyTextRow ? textIdentifier : imagesIdentifier;
    case imageSection: return imagesIdentifier;
    case videoSection: return videosIdentifier;
    default: return std::nullopt;
    }
}

std::int64_t UIArticleEditViewController::numberOfSectionsInTableView(UITableView&) { return sectionCount; }

std::int64_t UIArticleEditViewController::tableViewNumberOfRowsInSection(UITableView&, std::int64_t section) {
    if (section == textSection) return textRowCount;
    return section == imageSection || section == videoSection ? 1 : 0;
}

CGFloat UIArticleEditViewController::tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath path) {
    switch (path.section) {
    case textSection: return path.row == titleTextRow ? titleRowHeight : UITableViewAutomaticDimension;
    case imageSection:
        return imagesCell_ ? imagesCell_->heightFor(imagesCell_->imagesArray(), articleEditStyle_)
                           : UIArticleEditImagesTableViewCell::heightFor(std::nullopt, articleEditStyle_);
    case videoSection:
        return videosCell_ ? videosCell_->heightFor(videosCell_->videosArray(), articleEditStyle_)
                           : UIArticleEditVideosTableViewCell::heightFor(std::nullopt, articleEditStyle_);
    default: return 0;
    }
}

CGFloat UIArticleEditViewController::tableViewHeightForHeaderInSection(UITableView&, std::int64_t section) {
    return section == textSection ? headerHeight : 0;
}

std::shared_ptr<UITableViewCell> UIArticleEditViewController::tableViewCellForRowAtIndexPath(
    UITableView& table, NSIndexPath path) {
    const auto identifier = cellIdentifierFor(path);
    if (identifier == imagesIdentifier) return imagesRow(path);
    if (identifier == videosIdentifier) return videosRow(path);
    if (identifier == titleIdentifier) return titleRow(table);
    if (identifier == textIdentifier) return textRow(table, path);
    return nullptr;
}

ArticleImages UIArticleEditViewController::initialImages() const {
    ArticleImages items;
    if (preImagesArray_) {
        for (const auto& image : *preImagesArray_)
            items.emplace_back(std::make_shared<NSArticleImageObject>())->setImage(image);
        return items;
    }
    // An item without a record would be a new one, so what is no record makes none.
    for (const Value& image : articleDictionary_["images"].elements()) {
        if (Dictionary record(image); record)
            items.emplace_back(std::make_shared<NSArticleImageObject>())
                ->setImageDictionary(std::move(record));
    }
    return items;
}

ArticleVideos UIArticleEditViewController::initialVideos() const {
    ArticleVideos items;
    for (const Value& video : articleDictionary_["videos"].elements()) {
        if (Dictionary record(video); record)
            items.emplace_back(std::make_shared<NSArticleVideoObject>())
                ->setVideoDictionary(std::move(record));
    }
    return items;
}

std::shared_ptr<UITableViewCell> UIArticleEditViewController::imagesRow(NSIndexPath path) {
    if (imagesCell_) return imagesCell_;
    imagesCell_ =
        make<UIArticleEditImagesTableViewCell>(UITableViewCellStyle::defaultStyle, imagesIdentifier);
    imagesCellIndexPath_ = path;
    imagesCell_->setArticleEditStyle(articleEditStyle_);
    imagesCell_->setDelegate(weakSelf().lock());
    imagesCell_->setBackgroundColor(UIColor::clear());
    imagesCell_->setImagesArray(initialImages());
    return imagesCell_;
}

std::shared_ptr<UITableViewCell> UIArticleEditViewController::videosRow(NSIndexPath path) {
    if (videosCell_) return videosCell_;
    videosCell_ =
        make<UIArticleEditVideosTableViewCell>(UITableViewCellStyle::defaultStyle, videosIdentifier);
    videosCellIndexPath_ = path;
    videosCell_->setArticleEditStyle(articleEditStyle_);
    videosCell_->setDelegate(weakSelf().lock());
    videosCell_->setBackgroundColor(UIColor::clear());
    videosCell_->setVideosArray(initialVideos());
    return videosCell_;
}

std::shared_ptr<UITableViewCell> UIArticleEditViewController::titleRow(UITableView& table) {
    if (auto row = table.dequeueReusableCell(titleIdentifier)) return row;
    auto row = plainRow(titleIdentifier);
    if (!titleField_) {
        titleField_ = make<UITextField>(CGRect(5, 5, row->frame().width() - 10, 20));
        titleField_->setTextFieldDelegate(weakSelf());
        titleField_->setPlaceholder(articleText("Article title"));
        titleField_->setTextAlignment(NSTextAlignment::center);
        titleField_->setFont(UIFont::fontWithName("PingFangSC-Regular", 18));
        titleField_->setReturnKeyType(UIReturnKeyType::continueKey);
        titleField_->setAutoresizingMask(flexibleWidth);
        row->addSubview(titleField_);
    }
    fill(*titleField_, preArticleTitle_, articleDictionary_, "title");
    return row;
}

std::shared_ptr<UITableViewCell> UIArticleEditViewController::textRow(UITableView& table, NSIndexPath path) {
    if (auto row = table.dequeueReusableCell(textIdentifier)) return row;
    auto row = plainRow(textIdentifier);
    row->setBackgroundColor(UIColor::clear());
    textIndexPath_ = path;
    if (!textTextField_) {
        textTextField_ = make<UITextView>(CGRect(0, 5, row->frame().width(), smallestTextHeight));
        textTextField_->setTextViewDelegate(weakSelf());
        textTextField_->setAutoresizingMask(flexibleWidth);
        textTextField_->setBackgroundColor(UIColor::clear());
        textTextField_->setReturnKeyType(UIReturnKeyType::done);
        textTextField_->setFont(UIFont::fontWithName("PingFangSC-Regular", 14));
        textTextField_->setBorderColor(lightGray);
        textTextField_->setBorderWidth(0.7f);
        textTextField_->setClipsToBounds(true);
        textTextField_->setCornerRadius(6);
        textTextField_->setAccessibility(AccessibilityRole::textField, articleText("Article text"));
        row->addSubview(textTextField_);
        row->addConstraint({.toItem = textTextField_, .multiplier = 1, .constant = roomAroundText});
    }
    fill(*textTextField_, preArticleText_, articleDictionary_, "text");
    return row;
}

}  // namespace ostrel
