#include "reader/ReaderMessagesController.h"

#include "article/records/NSStringForDate.h"
#include "platform/graphics/TextMeasurer.h"
#include "platform/uikit/screens/UIBarButtonItem.h"
#include "platform/uikit/table/UITableViewCell.h"
#include "reader/ReaderText.h"
#include "serverframework/HttpServerFramework.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat margin = 16, gap = 3, headHeight = 22, dotSize = 8;
constexpr int mostTitleLines = 2;

UIFont titleFont() { return UIFont::mediumSystem(15); }
UIFont textFont() { return UIFont::system(14); }

CGFloat heightOf(const std::string& text, const UIFont& font, CGFloat width, int lines) {
    if (text.empty()) return 0;
    return std::ceil(TextMeasurer::shared().measure(text, font, width, lines).size.height) + gap;
}

/// Who wrote, when, and what; a dot says that it is new.
class MessageCell final : public UITableViewCell {
public:
    using UITableViewCell::UITableViewCell;
    void initialise() {
        UITableViewCell::initialise();
        setSelectionStyle(UITableViewCellSelectionStyle::none);
        dot_ = make<UIView>();
        dot_->setBackgroundColor(UIColor::tint());
        dot_->setCornerRadius(dotSize / 2);
        addSubview(dot_);
        sender_ = addLabel(UIFont::mediumSystem(15), UIColor::label());
        date_ = addLabel(UIFont::system(13), UIColor::secondaryLabel());
        date_->setTextAlignment(NSTextAlignment::right);
        title_ = addLabel(titleFont(), UIColor::label());
        title_->setNumberOfLines(mostTitleLines);
        text_ = addLabel(textFont(), UIColor::secondaryLabel());
        text_->setNumberOfLines(0);
    }
    void show(const UserNotification& message) {
        dot_->setHidden(message.isRead);
        sender_->setText(message.senderName);
        date_->setText(message.date ? NSStringForDate::date(*message.date) : "");
        title_->setText(message.title);
        text_->setText(message.text);
        setAccessibility(AccessibilityRole::listItem,
                         message.senderName + ", " + message.title + ", " + message.text);
        setNeedsLayout();
    }
    void layoutSubviews() override {
        UITableViewCell::layoutSubviews();
        const CGFloat width = std::max(0.0, frame().width() - 2 * margin);
        const CGFloat indent = dot_->isHidden() ? 0 : dotSize + 6;
        dot_->setFrame({margin, 10 + (headHeight - dotSize) / 2, dotSize, dotSize});
        const CGFloat dateWidth =
            std::min(width / 2, std::ceil(date_->sizeThatFits({width, headHeight}).width));
        sender_->setFrame({margin + indent, 10, std::max(0.0, width - indent - dateWidth - 8), headHeight});
        date_->setFrame({margin + width - dateWidth, 10, dateWidth, headHeight});
        CGFloat y = 10 + headHeight;
        const auto place = [&](UILabel& label, const UIFont& font, int lines) {
            const CGFloat height = heightOf(label.text(), font, width, lines);
            label.setFrame({margin, y, width, height});
            y += height;
        };
        place(*title_, titleFont(), mostTitleLines);
        place(*text_, textFont(), 0);
    }
    static CGFloat heightFor(const UserNotification& message, CGFloat rowWidth) {
        const CGFloat width = std::max(0.0, rowWidth - 2 * margin);
        return 10 + headHeight + heightOf(message.title, titleFont(), width, mostTitleLines) +
               heightOf(message.text, textFont(), width, 0) + 10;
    }

private:
    std::shared_ptr<UILabel> addLabel(const UIFont& font, UIColor color) {
        auto label = make<UILabel>();
        label->setFont(font);
        label->setTextColor(color);
        addSubview(label);
        return label;
    }
    std::shared_ptr<UIView> dot_;
    std::shared_ptr<UILabel> sender_, date_, title_, text_;
};

}  // namespace

ReaderMessagesController::ReaderMessagesController(std::shared_ptr<HttpServerFramework> framework)
    : UITableViewController(UITableViewStyle::plain), framework_(std::move(framework)) {}

void ReaderMessagesController::viewDidLoad() {
    UITableViewController::viewDidLoad();
    setTitle(readerText("Messages"));
    const auto weak = std::weak_ptr(std::static_pointer_cast<ReaderMessagesController>(shared_from_this()));
    navigationItem().setLeftBarButtonItem(
        std::make_shared<UIBarButtonItem>(readerText("Close"), UIBarButtonItem::Style::plain, [weak] {
            if (const auto self = weak.lock()) self->dismissViewControllerAnimated(true, {});
        }));
    load();
}

bool ReaderMessagesController::cancelOperation() {
    dismissViewControllerAnimated(true);
    return true;
}

void ReaderMessagesController::load() {
    if (isLoading_) return;
    isLoading_ = true;
    const auto weak = std::weak_ptr(std::static_pointer_cast<ReaderMessagesController>(shared_from_this()));
    framework_->loadNotifications(next_, [weak](const auto& page, const auto& error) {
        if (const auto self = weak.lock()) self->show(page, error);
    });
}

void ReaderMessagesController::show(const UserNotificationPage& page,
                                    const std::optional<std::string>& error) {
    isLoading_ = false;
    if (error) {
        if (messages_.empty()) setHint(*error);
        return;
    }
    messages_.insert(messages_.end(), page.notifications.begin(), page.notifications.end());
    next_ = page.next;
    setHint(messages_.empty() ? readerText("You have no messages.") : "");
    tableView()->reloadData();
    if (!page.notifications.empty()) {
        const auto latest = std::max_element(page.notifications.begin(), page.notifications.end(),
                                             [](const auto& a, const auto& b) { return a.id < b.id; });
        framework_->markNotificationsRead(latest->id, [](auto, const auto&) {});
    }
}

void ReaderMessagesController::setHint(const std::string& text) {
    if (!hint_) {
        hint_ = make<UILabel>();
        hint_->setFont(UIFont::system(15));
        hint_->setTextColor(UIColor::secondaryLabel());
        hint_->setNumberOfLines(0);
        hint_->setTextAlignment(NSTextAlignment::center);
        tableView()->addSubview(hint_);
    }
    hint_->setText(text);
    hint_->setHidden(text.empty());
    viewDidLayoutSubviews();
}

void ReaderMessagesController::viewDidLayoutSubviews() {
    UITableViewController::viewDidLayoutSubviews();
    if (!hint_) return;
    const CGSize size = tableView()->frame().size;
    hint_->setFrame({24, size.height * 0.35, std::max(0.0, size.width - 48), 60});
}

std::int64_t ReaderMessagesController::numberOfSectionsInTableView(UITableView&) { return 1; }

std::int64_t ReaderMessagesController::tableViewNumberOfRowsInSection(UITableView&, std::int64_t) {
    return static_cast<std::int64_t>(messages_.size());
}

CGFloat ReaderMessagesController::tableViewHeightForRowAtIndexPath(UITableView& table, NSIndexPath path) {
    return MessageCell::heightFor(messages_.at(static_cast<std::size_t>(path.row)), table.frame().width());
}

std::shared_ptr<UITableViewCell> ReaderMessagesController::tableViewCellForRowAtIndexPath(UITableView& table,
                                                                                          NSIndexPath path) {
    static const std::string identifier = "message";
    auto cell = std::static_pointer_cast<MessageCell>(table.dequeueReusableCell(identifier));
    if (!cell) cell = make<MessageCell>(UITableViewCellStyle::defaultStyle, identifier);
    cell->show(messages_.at(static_cast<std::size_t>(path.row)));
    if (next_ && static_cast<std::size_t>(path.row) + 1 == messages_.size()) load();
    return cell;
}

}  // namespace ostrel
