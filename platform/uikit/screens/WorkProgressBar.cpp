#include "platform/uikit/screens/WorkProgressBar.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/values/Text.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat barMargin = 12, gap = 8, lineHeight = 2, badgeHeight = 16, cancelWidth = 36;
constexpr CGFloat workRowHeight = 64, rowMargin = 16, listWidth = 320, listMargin = 6;
constexpr double accessorySeconds = 0.22;
constexpr UIColor barRestColor = UIColor::rgb(0xF7F8FA);

std::int64_t roundedUp(double value, std::int64_t step) {
    return static_cast<std::int64_t>(std::ceil(value / static_cast<double>(step))) * step;
}

std::shared_ptr<UILabel> labelWith(const UIFont& font, UIColor color) {
    auto label = make<UILabel>();
    label->setFont(font);
    label->setTextColor(color);
    return label;
}

std::shared_ptr<UIButton> cancelButton() {
    auto button = make<UIButton>(UIButton::Type::custom);
    Path cross;
    cross.moveTo(8, 8).lineTo(16, 16).moveTo(16, 8).lineTo(8, 16);
    button->setImage(std::make_shared<const UIImage>(std::move(cross), CGSize{22, 22}));
    button->setTintColor(UIColor::secondaryLabel());
    return button;
}

/// A line that fills from the left. Steps are animated; a new start is not.
void setLine(UIView& line, const UIView& track, double fraction) {
    const CGRect all = track.frame();
    const CGRect wanted{all.minX(), all.minY(), std::round(all.width() * fraction * 2) / 2, all.height()};
    if (line.frame() == wanted) return;
    if (wanted.width() < line.frame().width() || line.frame().origin != wanted.origin) return line.setFrame(wanted);
    UIView::animate(
        NSProgress::updateInterval * 1.5, [&] { line.setFrame(wanted); }, {}, UIViewAnimationCurve::linear);
}

std::string stateText(const NSProgress& work) {
    if (work.isCancelled()) return platformText("Cancelling…");
    return remainingTimeText(work.estimatedTimeRemaining());
}

std::string percentText(double fraction) {
    return decimalText(static_cast<std::int64_t>(std::floor(fraction * 100 + 1e-9))) + " %";
}

}  // namespace

std::string remainingTimeText(std::optional<double> seconds) {
    if (!seconds) return {};
    if (*seconds <= 5) return platformText("A few seconds left");
    if (*seconds <= 55) return formatLong(platformText("%ld sec left"), roundedUp(*seconds, 5));
    const std::int64_t minutes = roundedUp(*seconds, 60) / 60;
    if (minutes < 60) return formatLong(platformText("%ld min left"), minutes);
    return formatLong(formatLong(platformText("%ld hr %ld min left"), minutes / 60), minutes % 60);
}

void WorkProgressBar::addTo(UINavigationController& owner) {
    const auto shared = std::static_pointer_cast<UINavigationController>(owner.shared_from_this());
    owner.setAccessoryView(make<WorkProgressBar>(shared), height);
}

WorkProgressBar::WorkProgressBar(std::weak_ptr<UINavigationController> owner) : owner_(std::move(owner)) {}

WorkProgressBar::~WorkProgressBar() { NSProgress::removeObserver(this); }

void WorkProgressBar::initialise() {
    setSurface(true);
    setClipsToBounds(true);
    title_ = labelWith(UIFont::system(13), UIColor::label());
    time_ = labelWith(UIFont::system(13), UIColor::secondaryLabel());
    time_->setTextAlignment(NSTextAlignment::right);
    badge_ = make<UIView>();
    badge_->setBackgroundColor(UIColor::fill());
    badge_->setCornerRadius(badgeHeight / 2);
    badge_->setUserInteractionEnabled(false);
    number_ = labelWith(UIFont::mediumSystem(11), UIColor::secondaryLabel());
    number_->setTextAlignment(NSTextAlignment::center);
    badge_->addSubview(number_);
    cancel_ = cancelButton();
    track_ = make<UIView>();
    track_->setBackgroundColor(UIColor::fill());
    track_->setUserInteractionEnabled(false);
    line_ = make<UIView>();
    line_->setBackgroundColor(UIColor::tint());
    line_->setUserInteractionEnabled(false);
    wheel_ = make<UIActivityIndicatorView>();
    for (const std::shared_ptr<UIView>& view :
         std::initializer_list<std::shared_ptr<UIView>>{track_, line_, title_, badge_, time_, wheel_, cancel_}) {
        addSubview(view);
    }
    const auto weak = std::weak_ptr(std::static_pointer_cast<WorkProgressBar>(shared_from_this()));
    cancel_->addTarget(
        [weak] {
            const auto self = weak.lock();
            if (const auto work = self ? self->shownWork_.lock() : nullptr) work->cancel();
        },
        UIControlEvent::touchUpInside);
    addTarget(
        [weak] {
            if (const auto self = weak.lock()) self->openList();
        },
        UIControlEvent::touchUpInside);
    controlStateDidChange();
    NSProgress::addObserver(this, [weak](const auto& work) {
        if (const auto self = weak.lock()) self->show(work);
    });
}

void WorkProgressBar::controlStateDidChange() {
    setBackgroundColor(isHighlighted() ? UIColor::rgb(0xE9EAEE) : barRestColor);
}

void WorkProgressBar::show(const std::vector<std::shared_ptr<NSProgress>>& work) {
    if (work.empty()) {
        since_.reset();
        setShown(false);
        return;
    }
    const double now = Clock::shared().monotonicSeconds();
    if (!since_) since_ = now;
    const NSProgress& first = *work.front();
    shownWork_ = work.front();
    title_->setText(first.localizedDescription());
    fraction_ = first.fractionCompleted();
    time_->setText(stateText(first));
    cancel_->setHidden(!first.isCancellable());
    cancel_->setEnabled(!first.isCancelled());
    cancel_->setAccessibility(AccessibilityRole::button, platformText("Cancel") + ", " + first.localizedDescription());
    number_->setText(work.size() > 1 ? decimalText(static_cast<std::int64_t>(work.size())) : "");
    badge_->setHidden(work.size() < 2);
    std::string spoken = first.localizedDescription();
    if (fraction_) spoken += ", " + percentText(*fraction_);
    if (!time_->text().empty()) spoken += ", " + time_->text();
    if (work.size() > 1)
        spoken += ", " + formatLong(platformText("%ld in progress"), static_cast<std::int64_t>(work.size()));
    setAccessibility(AccessibilityRole::button, spoken);
    if (fraction_) {
        wheel_->stopAnimating();
    } else {
        wheel_->startAnimating();
    }
    setNeedsLayout();
    if (isShown_) {
        layoutIfNeeded();
        setLine(*line_, *track_, fraction_.value_or(0));
    }
    // The bar shows a little early, because it is updated at an interval.
    if (now - *since_ >= delay - 1e-3) setShown(true);
}

void WorkProgressBar::setShown(bool shown) {
    if (shown == std::exchange(isShown_, shown)) return;
    const auto owner = owner_.lock();
    if (!owner) return;
    if (shown) {
        layoutIfNeeded();
        line_->setFrame({track_->frame().origin, {track_->frame().width() * fraction_.value_or(0), lineHeight}});
    }
    owner->setAccessoryShown(shown, accessorySeconds);
}

void WorkProgressBar::layoutSubviews() {
    const CGSize size = bounds().size;
    const CGFloat inside = size.height - lineHeight;
    track_->setFrame({0, inside, size.width, lineHeight});
    CGFloat low = barMargin, high = size.width - (cancel_->isHidden() ? barMargin : cancelWidth);
    cancel_->setFrame({size.width - cancelWidth, 0, cancelWidth, inside});
    if (wheel_->isAnimating()) {
        wheel_->setFrame({low, (inside - 16) / 2, 16, 16});
        low += 16 + gap;
    }
    const CGFloat room = std::max(0.0, high - low);
    const CGFloat timeWidth = std::min(room / 2, std::ceil(time_->sizeThatFits({room, inside}).width));
    time_->setFrame({high - timeWidth, 0, timeWidth, inside});
    CGFloat titleRoom = std::max(0.0, room - (timeWidth > 0 ? timeWidth + gap : 0));
    if (!badge_->isHidden()) {
        const CGFloat width = std::max(badgeHeight, std::ceil(number_->sizeThatFits({room, inside}).width) + 10);
        titleRoom = std::max(0.0, titleRoom - width - gap);
        const CGFloat title = std::min(titleRoom, std::ceil(title_->sizeThatFits({titleRoom, inside}).width));
        badge_->setFrame({low + title + gap, (inside - badgeHeight) / 2, width, badgeHeight});
        number_->setFrame({0, 0, width, badgeHeight});
        titleRoom = title;
    }
    title_->setFrame({low, 0, titleRoom, inside});
}

void WorkProgressBar::openList() {
    const auto owner = owner_.lock();
    if (!owner || owner->presentedViewController()) return;
    auto list = make<WorkProgressListController>();
    list->popoverPresentationController.sourceView = weak_from_this();
    owner->presentViewController(list, true);
}

namespace {

/// The row of one piece of work: its title, a line, and the figures below.
class WorkCell final : public UITableViewCell {
public:
    using UITableViewCell::UITableViewCell;
    void initialise() {
        UITableViewCell::initialise();
        setSelectionStyle(UITableViewCellSelectionStyle::none);
        title_ = labelWith(UIFont::system(15), UIColor::label());
        figures_ = labelWith(UIFont::system(12), UIColor::secondaryLabel());
        cancel_ = cancelButton();
        cancel_->addTarget(
            [this] {
                if (const auto work = work_.lock()) work->cancel();
            },
            UIControlEvent::touchUpInside);
        track_ = make<UIView>();
        track_->setBackgroundColor(UIColor::fill());
        track_->setCornerRadius(1.5);
        line_ = make<UIView>();
        line_->setBackgroundColor(UIColor::tint());
        line_->setCornerRadius(1.5);
        for (const std::shared_ptr<UIView>& view :
             std::initializer_list<std::shared_ptr<UIView>>{title_, figures_, track_, line_, cancel_}) {
            addSubview(view);
        }
    }
    void show(const std::shared_ptr<NSProgress>& work) {
        const bool isNew = work_.lock() != work;
        work_ = work;
        title_->setText(work->localizedDescription());
        const auto fraction = work->fractionCompleted();
        std::string figures = fraction ? percentText(*fraction) : platformText("In progress");
        const std::string state = stateText(*work);
        if (!state.empty()) figures += " · " + state;
        figures_->setText(figures);
        cancel_->setHidden(!work->isCancellable());
        cancel_->setEnabled(!work->isCancelled());
        cancel_->setAccessibility(AccessibilityRole::button, platformText("Cancel") + ", " + title_->text());
        setAccessibility(AccessibilityRole::listItem, title_->text() + ", " + figures);
        if (isNew) line_->setFrame({});
        fraction_ = fraction.value_or(0);
        setNeedsLayout();
        layoutIfNeeded();
        setLine(*line_, *track_, fraction_);
    }
    void layoutSubviews() override {
        UITableViewCell::layoutSubviews();
        const CGSize size = bounds().size;
        const CGFloat width = std::max(0.0, size.width - 2 * rowMargin - 32);
        title_->setFrame({rowMargin, 9, width, 20});
        track_->setFrame({rowMargin, 34, width, 3});
        figures_->setFrame({rowMargin, 41, width, 16});
        cancel_->setFrame({size.width - 46, (size.height - 44) / 2, 44, 44});
    }

private:
    std::weak_ptr<NSProgress> work_;
    double fraction_ = 0;
    std::shared_ptr<UILabel> title_, figures_;
    std::shared_ptr<UIButton> cancel_;
    std::shared_ptr<UIView> track_, line_;
};

constexpr std::size_t mostRowsShown = 5;

}  // namespace

WorkProgressListController::WorkProgressListController() : UITableViewController(UITableViewStyle::plain) {
    modalPresentationStyle = UIModalPresentationStyle::popover;
}

WorkProgressListController::~WorkProgressListController() { NSProgress::removeObserver(this); }

void WorkProgressListController::viewDidLoad() {
    UITableViewController::viewDidLoad();
    setTitle(platformText("In progress"));
    tableView()->setContentInset({listMargin, 0, listMargin, 0});
    const auto weak = std::weak_ptr(std::static_pointer_cast<WorkProgressListController>(shared_from_this()));
    NSProgress::addObserver(this, [weak](const auto& work) {
        if (const auto self = weak.lock()) self->show(work);
    });
}

void WorkProgressListController::viewDidAppear(bool animated) {
    UITableViewController::viewDidAppear(animated);
    // The work may have ended while the list was being shown.
    if (work_.empty()) dismissViewControllerAnimated(true);
}

void WorkProgressListController::show(const std::vector<std::shared_ptr<NSProgress>>& work) {
    const bool isSame = work == work_;
    work_ = work;
    if (work_.empty()) {
        if (isAppeared()) dismissViewControllerAnimated(true);
        return;
    }
    if (isSame) {
        for (std::size_t row = 0; row < work_.size(); ++row) {
            const auto cell = tableView()->cellForRowAtIndexPath({0, static_cast<std::int64_t>(row)});
            if (const auto shown = std::dynamic_pointer_cast<WorkCell>(cell)) shown->show(work_[row]);
        }
        return;
    }
    preferredContentSize = {listWidth, 2 * listMargin +
                                           workRowHeight * static_cast<CGFloat>(std::min(work_.size(), mostRowsShown))};
    preferredContentSizeDidChange();
    tableView()->reloadData();
}

std::int64_t WorkProgressListController::tableViewNumberOfRowsInSection(UITableView&, std::int64_t) {
    return static_cast<std::int64_t>(work_.size());
}

CGFloat WorkProgressListController::tableViewHeightForRowAtIndexPath(UITableView&, NSIndexPath) {
    return workRowHeight;
}

std::shared_ptr<UITableViewCell> WorkProgressListController::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                            NSIndexPath path) {
    static const std::string identifier = "work";
    auto cell = std::static_pointer_cast<WorkCell>(table.dequeueReusableCell(identifier));
    if (!cell) cell = make<WorkCell>(UITableViewCellStyle::defaultStyle, identifier);
    cell->show(work_.at(static_cast<std::size_t>(path.row)));
    return cell;
}

bool WorkProgressListController::cancelOperation() {
    if (!presentingViewController()) return false;
    dismissViewControllerAnimated(true);
    return true;
}

}  // namespace ostrel
