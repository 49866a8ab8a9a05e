#include "platform/uikit/picker/UIImagePickerGridController.h"

#include "platform/foundation/resources/Files.h"
#include "platform/foundation/resources/PlatformText.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSProgress.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/foundation/values/Text.h"
#include "platform/graphics/TextMeasurer.h"
#include "platform/uikit/picker/UIImagePickerController.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat footerHeight = 64;
constexpr CGFloat emptyWidth = 300;
constexpr int probeSide = 64;

bool hasPhoneIdiom() { return UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::phone; }

std::shared_ptr<const UIImage> picturesSymbol() {
    Path path;
    path.moveTo(3.5, 8).lineTo(17, 8).lineTo(17, 19.5).lineTo(3.5, 19.5).close();
    path.moveTo(6.5, 8).lineTo(6.5, 4.5).lineTo(20.5, 4.5).lineTo(20.5, 16).lineTo(17, 16);
    path.moveTo(4, 18.5).lineTo(8.2, 13.4).lineTo(11.3, 17).lineTo(13.3, 15).lineTo(16.5, 18.5);
    return std::make_shared<const UIImage>(std::move(path), CGSize{24, 24});
}

}  // namespace

/// A file (or a pasted picture) that was opened: what the delegate gets, or why it gets nothing.
struct UIImagePickerGridController::Choice {
    std::string path;
    UIImagePickerMediaInfo info;
    std::string problem;

    bool isUsable() const { return !info.mediaType.empty(); }

    static Choice ofPicture(std::string path, const Data& data) {
        Choice choice{.path = std::move(path), .info = {}, .problem = {}};
        // Its middle is decoded, small: a picture that cannot be decoded is found out here rather than when it is
        // published.
        if (const auto thumbnail = MediaThumbnails::make(data, probeSide); !thumbnail.image) {
            choice.problem = thumbnail.problem;
            return choice;
        }
        choice.info.mediaType = UTTypeImage;
        choice.info.originalImage = UIImage::imageWithData(data);
        if (!choice.path.empty()) choice.info.mediaURL = NSURL::fileURLWithPath(choice.path);
        return choice;
    }

    /// Blocks.
    static Choice ofFile(const std::string& path, bool pictures, bool clips) {
        const bool isClip = clips && (!pictures || MediaLibrary::isOfKind(path, MediaKind::clip));
        if (!isClip) {
            std::string problem;
            const Data data = snapshotOfFile(path, MediaThumbnails::largestFile, &problem);
            if (data) return ofPicture(path, data);
            return {.path = path, .info = {}, .problem = std::move(problem)};
        }
        Choice choice{.path = path, .info = {}, .problem = {}};
        const auto thumbnail = MediaThumbnails::make({.path = path, .kind = MediaKind::clip}, probeSide);
        choice.problem = thumbnail.problem;
        if (!thumbnail.image) return choice;
        choice.info.mediaType = UTTypeMovie;
        choice.info.mediaURL = NSURL::fileURLWithPath(path);
        return choice;
    }
};

UIImagePickerGridController::UIImagePickerGridController() : thumbnails_(make<MediaThumbnails>()) {}

UIImagePickerGridController::~UIImagePickerGridController() {
    NSProgress::removeObserver(this);
    if (searchStopped_) *searchStopped_ = true;
}

std::shared_ptr<UIImagePickerController> UIImagePickerGridController::picker() {
    auto* const owner = dynamic_cast<UIImagePickerController*>(parentViewController());
    return owner ? std::static_pointer_cast<UIImagePickerController>(owner->shared_from_this()) : nullptr;
}

std::weak_ptr<UIImagePickerGridController> UIImagePickerGridController::weakSelf() {
    return std::static_pointer_cast<UIImagePickerGridController>(shared_from_this());
}

bool UIImagePickerGridController::wants(MediaKind kind) {
    const auto owner = picker();
    const std::string_view type = kind == MediaKind::picture ? UTTypeImage : UTTypeMovie;
    return owner && std::ranges::find(owner->mediaTypes(), type) != owner->mediaTypes().end();
}

void UIImagePickerGridController::viewDidLoad() {
    const bool pictures = wants(MediaKind::picture), clips = wants(MediaKind::clip);
    setTitle(platformText(pictures && clips ? "Photos and Videos" : clips ? "Videos" : "Photos"));
    view()->setBackgroundColor(UIColor::systemBackground());
    navigationItem().setLeftBarButtonItem(
        std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::cancel, [weak = weakSelf()] {
            const auto self = weak.lock();
            if (const auto owner = self ? self->picker() : nullptr) owner->cancelOperation();
        }));
    const bool hasDialog = UIApplication::sharedApplication().chooseFiles != nullptr;
    const auto openOther = [weak = weakSelf()] {
        if (const auto self = weak.lock()) self->openOtherFile();
    };
    if (hasDialog) {
        navigationItem().setRightBarButtonItem(
            std::make_shared<UIBarButtonItem>(platformText("Browse…"), UIBarButtonItem::Style::plain, openOther));
    }

    grid_ = make<MediaGridView>(thumbnails_);
    grid_->chosen = [weak = weakSelf()](const MediaLibraryItem& item) {
        if (const auto self = weak.lock()) self->choose({item.path});
    };
    view()->addSubview(grid_);
    footer_ = make<UILabel>(CGRect{0, 0, 0, footerHeight});
    footer_->setFont(UIFont::system(13));
    footer_->setTextColor(UIColor::secondaryLabel());
    footer_->setTextAlignment(NSTextAlignment::center);
    footer_->setNumberOfLines(2);
    grid_->setFooterView(footer_);

    empty_ = make<UIView>();
    empty_->setHidden(true);
    emptySymbol_ = make<UIImageView>();
    emptySymbol_->setImage(picturesSymbol());
    emptySymbol_->setContentMode(UIViewContentMode::scaleAspectFit);
    emptySymbol_->setTintColor(UIColor::tertiaryLabel());
    const auto addLabel = [&](const UIFont& font, UIColor color) {
        auto label = make<UILabel>();
        label->setFont(font);
        label->setTextColor(color);
        label->setTextAlignment(NSTextAlignment::center);
        label->setNumberOfLines(0);
        empty_->addSubview(label);
        return label;
    };
    emptyTitle_ = addLabel(UIFont::mediumSystem(20), UIColor::label());
    emptyText_ = addLabel(UIFont::system(15), UIColor::secondaryLabel());
    empty_->addSubview(emptySymbol_);
    emptyButton_ = make<UIButton>(UIButton::Type::system);
    emptyButton_->setTitle(platformText("Choose a File…"));
    emptyButton_->setTitleFont(UIFont::mediumSystem(15));
    emptyButton_->setBackgroundColor(UIColor::tint().withAlpha(0.1f), UIControlState::normal);
    emptyButton_->setCornerRadius(10);
    emptyButton_->setHidden(!hasDialog);
    emptyButton_->addTarget(openOther, UIControlEvent::touchUpInside);
    empty_->addSubview(emptyButton_);
    view()->addSubview(empty_);

    wheel_ = make<UIActivityIndicatorView>(UIActivityIndicatorView::Style::large);
    view()->addSubview(wheel_);

    dropFrame_ = make<UIView>();
    dropFrame_->setUserInteractionEnabled(false);
    dropFrame_->setBackgroundColor(UIColor::tint().withAlpha(0.1f));
    dropFrame_->setBorderColor(UIColor::tint());
    dropFrame_->setBorderWidth(3);
    dropFrame_->setCornerRadius(12);
    dropFrame_->setAlpha(0);
    view()->addSubview(dropFrame_);

    // A clip that was picked is marked until the work on it has ended.
    NSProgress::addObserver(this, [weak = weakSelf()](const auto& work) {
        const auto self = weak.lock();
        if (self && work.empty() && self->opening_ == 0 && !self->busy_.empty()) {
            self->busy_.clear();
            self->grid_->setBusyPaths({});
        }
    });
}

void UIImagePickerGridController::viewWillAppear(bool animated) {
    UIViewController::viewWillAppear(animated);
    if (!searchStopped_) search();
}

void UIImagePickerGridController::viewDidDisappear(bool animated) {
    UIViewController::viewDidDisappear(animated);
    if (view()->window()) return;
    if (searchStopped_) *searchStopped_ = true;
    thumbnails_->stop();
}

void UIImagePickerGridController::search() {
    searchStopped_ = std::make_shared<std::atomic<bool>>(false);
    isSearching_ = true;
    updateWheel();
    NSThread::detachNewThread([weak = weakSelf(), stopped = searchStopped_, library = MediaLibrary::installed(),
                               pictures = wants(MediaKind::picture), clips = wants(MediaKind::clip)] {
        MediaLibrary::Contents contents;
        if (library) contents = library->contents(pictures, clips, *stopped);
        if (*stopped || !RunLoop::hasMain()) return;
        RunLoop::main().perform([weak, contents = std::move(contents)]() mutable {
            if (const auto self = weak.lock()) self->show(std::move(contents));
        });
    });
}

void UIImagePickerGridController::show(MediaLibrary::Contents contents) {
    isSearching_ = false;
    updateWheel();
    const std::size_t count = contents.items.size();
    grid_->setItems(std::move(contents.items));
    const bool pictures = wants(MediaKind::picture), clips = wants(MediaKind::clip);
    const char* const key = pictures && clips ? "%ld items" : clips ? "%ld videos" : "%ld photos";
    const char* const oneKey = pictures && clips ? "1 item" : clips ? "1 video" : "1 photo";
    std::string text =
        count == 1 ? platformText(oneKey) : formatLong(platformText(key), static_cast<std::int64_t>(count));
    if (contents.isIncomplete) text += "\n" + platformText("Some folders could not be read.");
    if (!hasPhoneIdiom() && !contents.isIncomplete) {
        text += "\n" + platformText(pictures ? "You can also drop a file here or paste a picture."
                                             : "You can also drop a file here.");
    }
    footer_->setText(text);
    footer_->setHidden(count == 0);
    empty_->setHidden(count > 0);
    if (count == 0) {
        emptyTitle_->setText(platformText(pictures && clips ? "No Photos or Videos"
                                          : clips           ? "No Videos"
                                                            : "No Photos"));
        std::string sentence = platformText(clips && !pictures ? "The clips in your videos folder appear here."
                                                               : "The pictures in your pictures folder appear here.");
        if (!hasPhoneIdiom()) {
            sentence += " " + platformText(pictures ? "You can also drop a file here or paste a picture."
                                                    : "You can also drop a file here.");
        }
        if (contents.isIncomplete) sentence += " " + platformText("Some folders could not be read.");
        emptyText_->setText(sentence);
    }
    viewDidLayoutSubviews();
}

void UIImagePickerGridController::viewDidLayoutSubviews() {
    UIViewController::viewDidLayoutSubviews();
    if (!grid_) return;
    const CGSize size = view()->bounds().size;
    grid_->setFrame({{}, size});
    wheel_->setFrame({std::floor((size.width - 37) / 2), std::floor((size.height - 37) / 2), 37, 37});
    dropFrame_->setFrame({6, 6, std::max(0.0, size.width - 12), std::max(0.0, size.height - 12)});
    const CGFloat width = std::min(emptyWidth, std::max(0.0, size.width - 48));
    const auto heightOf = [&](const UILabel& label) {
        return std::ceil(TextMeasurer::shared().measure(label.text(), label.font(), width).size.height);
    };
    const CGFloat titleHeight = heightOf(*emptyTitle_), textHeight = heightOf(*emptyText_);
    const CGFloat buttonWidth = std::ceil(emptyButton_->sizeThatFits({}).width) + 40;
    emptySymbol_->setFrame({(width - 56) / 2, 0, 56, 56});
    emptyTitle_->setFrame({0, 66, width, titleHeight});
    emptyText_->setFrame({0, 74 + titleHeight, width, textHeight});
    emptyButton_->setFrame({std::floor((width - buttonWidth) / 2), 94 + titleHeight + textHeight, buttonWidth, 44});
    const CGFloat height = emptyButton_->frame().maxY();
    empty_->setFrame({std::floor((size.width - width) / 2), std::max(16.0, std::floor((size.height - height) * 0.4)),
                      width, height});
}

// Choosing

void UIImagePickerGridController::openOtherFile() {
    const auto& dialog = UIApplication::sharedApplication().chooseFiles;
    if (!dialog || !view()->window()) return;
    UIFileRequest request{.title = platformText("Choose a File"), .kindName = title(), .extensions = {}};
    for (const MediaKind kind : {MediaKind::picture, MediaKind::clip}) {
        if (!wants(kind)) continue;
        const auto& extensions = MediaLibrary::extensions(kind);
        request.extensions.insert(request.extensions.end(), extensions.begin(), extensions.end());
    }
    dialog(view()->window(), request, [weak = weakSelf()](std::vector<std::string> paths) {
        if (const auto self = weak.lock()) self->choose(std::move(paths));
    });
}

bool UIImagePickerGridController::takes(const UITransferItems& items) {
    return !items.filePaths.empty() || (items.hasPicture && wants(MediaKind::picture));
}

void UIImagePickerGridController::take(const UITransferItems& items) {
    if (!items.filePaths.empty()) {
        choose(items.filePaths);
    } else if (items.hasPicture && wants(MediaKind::picture)) {
        choosePicture(items.picture);
    }
}

void UIImagePickerGridController::paste() {
    const auto& read = UIApplication::sharedApplication().readPasteboard;
    if (!read) return;
    read([weak = weakSelf()](const UITransferItems& items) {
        const auto self = weak.lock();
        if (!self || !self->view()->window()) return;
        if (self->takes(items)) {
            self->take(items);
        } else {
            self->showProblem(platformText("There is nothing on the clipboard that can be used here."));
        }
    });
}

void UIImagePickerGridController::setDropHover(bool isHovering) {
    if (!dropFrame_) return;
    UIView::animate(0.15, [&] { dropFrame_->setAlpha(isHovering ? 1 : 0); });
}

void UIImagePickerGridController::choose(std::vector<std::string> paths) {
    // Pressed again while it is still being opened.
    std::erase_if(paths, [&](const std::string& path) { return busy_.contains(path); });
    if (paths.size() > mostAtOnce) paths.resize(mostAtOnce);
    if (!paths.empty()) open(std::move(paths), {});
}

void UIImagePickerGridController::choosePicture(Data picture) {
    if (picture) return open({}, std::move(picture));
    showProblem(platformText("The picture is damaged."));
}

void UIImagePickerGridController::open(std::vector<std::string> paths, Data picture) {
    ++opening_;
    setBusy(paths, true);
    updateWheel();
    NSThread::detachNewThread([weak = weakSelf(), paths = std::move(paths), picture = std::move(picture),
                               pictures = wants(MediaKind::picture), clips = wants(MediaKind::clip)] {
        std::vector<Choice> choices;
        if (picture) choices.push_back(Choice::ofPicture({}, picture));
        for (const std::string& path : paths) choices.push_back(Choice::ofFile(path, pictures, clips));
        if (!RunLoop::hasMain()) return;
        RunLoop::main().perform([weak, choices = std::move(choices)]() mutable {
            if (const auto self = weak.lock()) self->opened(std::move(choices));
        });
    });
}

void UIImagePickerGridController::opened(std::vector<Choice> choices) {
    const auto self = shared_from_this();
    const auto owner = picker();
    --opening_;
    updateWheel();
    std::vector<std::string> over;
    for (const Choice& choice : choices) {
        if (choice.info.mediaType != UTTypeMovie) over.push_back(choice.path);
    }
    setBusy(over, false);
    // The picker was closed in the meantime: its result is not wanted.
    if (!owner || !view()->window()) return;
    bool isAnyUsable = false;
    for (const Choice& choice : choices) {
        if (!choice.isUsable()) {
            NSLog("image picker: %@: %@", choice.path.empty() ? "a pasted picture" : choice.path, choice.problem);
            continue;
        }
        isAnyUsable = true;
        owner->finishPicking(choice.info);
    }
    // Nothing has to be done with it.
    if (opening_ == 0 && NSProgress::published().empty()) setBusy({busy_.begin(), busy_.end()}, false);
    if (!isAnyUsable && !choices.empty()) showProblem(platformText(choices.front().problem));
}

void UIImagePickerGridController::setBusy(const std::vector<std::string>& paths, bool isBusy) {
    for (const std::string& path : paths) {
        if (isBusy) {
            busy_.insert(path);
        } else {
            busy_.erase(path);
        }
    }
    grid_->setBusyPaths(busy_);
}

/// A visible cell shows by its own spinner that its file is being opened.
void UIImagePickerGridController::updateWheel() {
    const auto isListed = [&](const std::string& path) {
        return std::ranges::find(grid_->items(), path, &MediaLibraryItem::path) != grid_->items().end();
    };
    const bool isElsewhere = opening_ > 0 && !std::ranges::all_of(busy_, isListed);
    if (isSearching_ || isElsewhere || (opening_ > 0 && busy_.empty())) {
        wheel_->startAnimating();
    } else {
        wheel_->stopAnimating();
    }
}

void UIImagePickerGridController::showProblem(const std::string& problem) {
    const auto owner = picker();
    if (!owner || owner->presentedViewController()) return;
    auto alert =
        make<UIAlertController>(platformText("This File Cannot Be Used"), problem, UIAlertController::Style::alert);
    alert->addAction({platformText("OK"), UIAlertAction::Style::defaultStyle, {}});
    owner->presentViewController(alert, true);
}

}  // namespace ostrel
