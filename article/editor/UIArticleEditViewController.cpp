#include "article/editor/UIArticleEditViewController.h"

#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/ArticleRequest.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

enum EditorSection : std::int64_t { textSection, imageSection, videoSection, sectionCount };
enum TextRow : std::int64_t { titleTextRow, bodyTextRow, textRowCount };

constexpr char titleIdentifier[] = "CELL_IDENTIFIER_TITLE";
constexpr char textIdentifier[] = "CELL_IDENTIFIER_TEXT";
constexpr char imagesIdentifier[] = "CELL_IDENTIFIER_IMAGES";
constexpr char videosIdentifier[] = "CELL_IDENTIFIER_VIDEOS";

constexpr CGFloat titleRowHeight = 40;
constexpr CGFloat editorHeaderHeight = 30;
constexpr CGFloat smallestEditorHeight = 66, largestTextHeight = 200;
constexpr CGFloat roomAroundText = 10;
constexpr double secondsBeforeClosing = 0.2;
constexpr UIColor lightGray{0.667f, 0.667f, 0.667f, 1};

std::shared_ptr<UITableViewCell> plainRow(const char* identifier) {
    auto row = make<UITableViewCell>(UITableViewCellStyle::defaultStyle, identifier);
    row->setSelectionStyle(UITableViewCellSelectionStyle::none);
    return row;
}

/// Shows the text that the screen was filled with, and over it the record's text.
template <class Editor>
void fill(Editor& editor, const std::optional<std::string>& prefilled, const Dictionary& record, const char* key) {
    if (prefilled && !prefilled->empty()) editor.setText(*prefilled);
    if (record) editor.setText(recordText(record, key));
}

template <class Editor>
std::string textOf(const std::shared_ptr<Editor>& editor) {
    return editor ? editor->text() : std::string();
}

/// An existing item for each record of a list. An element that is no record makes no item, because a save would take an
/// item without a record for a new one.
template <class Item>
std::vector<std::shared_ptr<Item>> existingItems(const Value& list) {
    std::vector<std::shared_ptr<Item>> items;
    for (const Value& element : list.elements()) {
        if (Dictionary record(element); record)
            items.emplace_back(std::make_shared<Item>())->setRecord(std::move(record));
    }
    return items;
}

}  // namespace

UIArticleEditViewController::UIArticleEditViewController()
    : UITableViewController(UITableViewStyle::insetGrouped),
      uploadTasksNum_(std::make_shared<ArticleSave::Outstanding>(0)) {}

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
    // The destructor removes the observer, so that the handler never outlives the screen.
    NSNotificationCenter::defaultCenter().addObserver(this, UITextViewTextDidChangeNotification,
                                                      [this](const NSNotification&) { didChange(); });
    view()->setBackgroundColor(UIColor::white());
    auto post =
        std::make_shared<UIBarButtonItem>(articleText("POST"), UIBarButtonItem::Style::done, [weak = weakSelf()] {
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
    // A save sends what the strips hold, and the table makes the strips when it is laid out.
    tableView()->layoutIfNeeded();
    save();
}

void UIArticleEditViewController::viewDidDisappear(bool animated) {
    UITableViewController::viewDidDisappear(animated);
    releaseStripsWhenClosed();
}

void UIArticleEditViewController::didMoveToParentViewController(UIViewController* parent) {
    UITableViewController::didMoveToParentViewController(parent);
    releaseStripsWhenClosed();
}

bool UIArticleEditViewController::isClosed() const {
    if (parentViewController() || presentingViewController()) return false;
    const auto& windows = UIApplication::sharedApplication().windows();
    return std::none_of(windows.begin(), windows.end(),
                        [this](const UIWindow* window) { return window->rootViewController().get() == this; });
}

void UIArticleEditViewController::releaseStripsWhenClosed() {
    if (!isClosed()) return;
    const auto release = [](auto* strip) {
        if (!strip) return;
        strip->close();
        strip->setDelegate(nullptr);
    };
    release(imagesCell_.get());
    release(videosCell_.get());
}

void UIArticleEditViewController::holdStrips() {
    const auto hold = [this](auto* strip) {
        if (!strip || strip->delegate()) return;
        strip->setDelegate(weakSelf().lock());
        strip->reopen();
    };
    hold(imagesCell_.get());
    hold(videosCell_.get());
}

void UIArticleEditViewController::cancel() {
    if (presentingViewController()) {
        dismissViewControllerAnimated(true);
    } else if (auto* const navigation = navigationController();
               navigation && navigation->topViewController().get() == this) {
        // Two saves in a row both end here: the second one finds the screen closed and must not pop the screen below
        // it.
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

bool UIArticleEditViewController::textFieldShouldChangeCharactersInRangeReplacementString(UITextField&, NSRange,
                                                                                          const std::string&) {
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
    const CGFloat height = std::min(std::max(textView.contentSize().height, smallestEditorHeight), largestTextHeight);
    // This runs at every move of the caret, and a layout of the table is needed only when the height changes.
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
    return section == textSection ? editorHeaderHeight : 0;
}

std::shared_ptr<UITableViewCell> UIArticleEditViewController::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                             NSIndexPath path) {
    const auto identifier = cellIdentifierFor(path);
    if (identifier == imagesIdentifier) return imagesRow(path);
    if (identifier == videosIdentifier) return videosRow(path);
    if (identifier == titleIdentifier) return titleRow(table);
    if (identifier == textIdentifier) return textRow(table, path);
    return nullptr;
}

ArticleImages UIArticleEditViewController::initialImages() const {
    if (!preImagesArray_) return existingItems<NSArticleImageObject>(articleDictionary_["images"]);
    ArticleImages items;
    for (const auto& image : *preImagesArray_)
        items.emplace_back(std::make_shared<NSArticleImageObject>())->setImage(image);
    return items;
}

template <class Strip>
void UIArticleEditViewController::prepareStrip(std::shared_ptr<Strip>& strip, const char* identifier) {
    strip = make<Strip>(UITableViewCellStyle::defaultStyle, identifier);
    strip->setArticleEditStyle(articleEditStyle_);
    strip->setDelegate(weakSelf().lock());
    strip->setBackgroundColor(UIColor::clear());
}

std::shared_ptr<UITableViewCell> UIArticleEditViewController::imagesRow(NSIndexPath path) {
    if (imagesCell_) return imagesCell_;
    prepareStrip(imagesCell_, imagesIdentifier);
    imagesCellIndexPath_ = path;
    imagesCell_->setImagesArray(initialImages());
    return imagesCell_;
}

std::shared_ptr<UITableViewCell> UIArticleEditViewController::videosRow(NSIndexPath path) {
    if (videosCell_) return videosCell_;
    prepareStrip(videosCell_, videosIdentifier);
    videosCellIndexPath_ = path;
    videosCell_->setVideosArray(existingItems<NSArticleVideoObject>(articleDictionary_["videos"]));
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
        textTextField_ = make<UITextView>(CGRect(0, 5, row->frame().width(), smallestEditorHeight));
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

// Saving

void UIArticleEditViewController::save() {
    // A screen that saves by itself may appear before its table has made the strips, which hold the items to send.
    view()->layoutIfNeeded();
    showPosting();
    if (const auto& post = navigationItem().rightBarButtonItem()) post->setEnabled(false);
    postingView_->startAnimated();
    newSave()->start();
}

ArticleDraft UIArticleEditViewController::draftToSave() {
    ArticleDraft draft{.record = articleDictionary_, .title = textOf(titleField_), .text = textOf(textTextField_)};
    if (imagesCell_) {
        draft.images = imagesCell_->imagesArray().value_or(ArticleImages());
        draft.removedImages = imagesCell_->removedImagesDictionaryArray().value_or(std::vector<Dictionary>());
    }
    if (videosCell_) {
        draft.videos = videosCell_->videosArray().value_or(ArticleVideos());
        draft.removedVideos = videosCell_->removedVideosDictionaryArray().value_or(std::vector<Dictionary>());
    }
    return draft;
}

void UIArticleEditViewController::textsWereRefused() { presentFailure(); }

void UIArticleEditViewController::saveDidEnd(ArticleSaveEnd end) {
    switch (end) {
    case ArticleSaveEnd::done:
        if (postingView_) postingView_->stopAnimated();
        RunLoop::main().performAfter(secondsBeforeClosing, [self = weakSelf().lock()] { self->cancel(); });
        break;
    // Kept on purpose: after both failures the overlay stays over the whole window, even when "OK" has closed the
    // editor, so that nobody posts the same article twice without knowing what the server has.
    case ArticleSaveEnd::failed: presentFailure(); break;
    case ArticleSaveEnd::unreadable: break;
    }
}

void UIArticleEditViewController::showPosting() {
    if (postingView_) return;
    const UIWindow* const window = UIApplication::sharedApplication().firstWindow();
    const auto root = window ? window->rootViewController() : nullptr;
    const auto under = root ? root->view() : nullptr;
    postingView_ = make<UIArticlePostingView>(under ? under->frame() : CGRect());
    if (under) under->addSubview(postingView_);
}

void UIArticleEditViewController::presentFailure() {
    const auto alert = make<UIAlertController>("Failed", std::string(), UIAlertController::Style::alert);
    alert->addAction({"OK", UIAlertAction::Style::defaultStyle, [weak = weakSelf()] {
                          const auto self = weak.lock();
                          auto* const navigation = self ? self->navigationController() : nullptr;
                          if (navigation && navigation->topViewController() == self)
                              navigation->popViewControllerAnimated(true);
                      }});
    presentViewController(alert, true);
}

// The steps of a save

std::shared_ptr<ArticleSave> UIArticleEditViewController::newSave() {
    return std::make_shared<ArticleSave>(weakSelf().lock(), uploadTasksNum_);
}

void UIArticleEditViewController::uploadNewArticle() { newSave()->createArticle(draftToSave()); }

void UIArticleEditViewController::waitingForUploadArticleID(const std::string& articleId, bool isNewArticle) {
    newSave()->waitAndReload(articleId, isNewArticle);
}

void UIArticleEditViewController::uploadImage(const NSArticleImageObject& item, std::int64_t sort,
                                              const std::string& articleId) {
    newSave()->uploadImage(item, sort, articleId);
}

void UIArticleEditViewController::uploadVideo(const NSArticleVideoObject& item, std::int64_t sort,
                                              const std::string& articleId) {
    newSave()->uploadVideo(item, sort, articleId);
}

void UIArticleEditViewController::updateServerImageSort(int position, const Value& imageId) {
    newSave()->send(ArticleRequest::setImagePosition(imageId, position));
}

void UIArticleEditViewController::updateServerImageText(const std::string& text, const Value& imageId) {
    newSave()->send(ArticleRequest::setImageCaption(imageId, text));
}

void UIArticleEditViewController::removeServerImage(const Dictionary& record) { newSave()->removeImage(record); }

void UIArticleEditViewController::updateServerVideoSort(int position, const Value& videoId) {
    newSave()->send(ArticleRequest::setVideoPosition(videoId, position));
}

void UIArticleEditViewController::updateServerVideoText(const std::string& text, const Value& videoId) {
    newSave()->send(ArticleRequest::setVideoCaption(videoId, text));
}

void UIArticleEditViewController::removeServerVideo(const Dictionary& record) { newSave()->removeVideo(record); }

void UIArticleEditViewController::createArticleForPre() {
    ArticleRequest::createArticle(preArticleTitle_.value_or(""), preArticleText_.value_or(""))
        .send([self = weakSelf().lock()](const ArticleAnswer& answer) {
            if (answer.error) {
                NSLog("create new article in server Error: %@", *answer.error);
                return;
            }
            if (!answer.record) {
                NSLog("create new article failed.");
                return;
            }
            self->articleDictionary_ = answer.record;
            NSNotificationCenter::defaultCenter().postNotification(NOTIFICATION_KEY_NEW_ARTICLE, answer.record.value());
            RunLoop::main().perform([self] { self->viewDidAppear(false); });
        });
}

}  // namespace ostrel
