#include "platform/uikit/screens/UIActivityViewController.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/text/LinkText.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>

namespace ostrel {

namespace {

constexpr CGFloat sheetWidth = 320;
constexpr CGFloat grabberSpace = 16;
constexpr CGFloat headerHeight = 68;
constexpr CGFloat actionRowHeight = 52;
constexpr CGFloat margin = 16;
constexpr CGFloat linkIconSize = 44;
constexpr CGFloat separatorHeight = 0.5;
constexpr double confirmationSeconds = 0.8;

bool isPhoneIdiom() { return UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::phone; }

std::shared_ptr<const UIImage> checkmarkImage() {
    Path path;
    path.moveTo(5, 12.5).lineTo(10, 17.5).lineTo(19, 7);
    return std::make_shared<const UIImage>(std::move(path), CGSize{22, 22});
}

}  // namespace

struct UIActivityViewController::Parts {
    LinkText link;
    std::shared_ptr<UIView> grabber, linkIcon;
    std::shared_ptr<UIImageView> symbol;
    std::shared_ptr<UILabel> host, path;
    std::vector<std::shared_ptr<UIButton>> rows;
    std::vector<std::shared_ptr<UIView>> lines;  ///< above each row
    std::shared_ptr<UIButton> copy;
    bool isLeaving = false;

    CGFloat top() const { return grabber ? grabberSpace : 0; }
};

UIActivityViewController::UIActivityViewController(std::string url) : url_(std::move(url)) {
    modalPresentationStyle = UIModalPresentationStyle::popover;
}

void UIActivityViewController::loadView() {
    UIViewController::loadView();
    setTitle(platformText("Share"));
    view()->setSurface(true);
    parts_ = std::make_shared<Parts>();
    Parts& parts = *parts_;
    parts.link = linkText(url_);
    if (isPhoneIdiom()) {
        parts.grabber = make<UIView>();
        parts.grabber->setBackgroundColor(UIColor::rgb(0xC9CCD3));
        parts.grabber->setCornerRadius(2.5);
        view()->addSubview(parts.grabber);
    }
    parts.linkIcon = make<UIView>();
    parts.linkIcon->setBackgroundColor(UIColor::fill());
    parts.linkIcon->setCornerRadius(9);
    parts.symbol = make<UIImageView>();
    parts.symbol->setImage(UIImage::systemImageNamed("link"));
    parts.symbol->setContentMode(UIViewContentMode::center);
    parts.symbol->setTintColor(UIColor::secondaryLabel());
    parts.linkIcon->addSubview(parts.symbol);
    parts.host = make<UILabel>();
    parts.host->setText(parts.link.host);
    parts.host->setFont(UIFont::mediumSystem(16));
    parts.path = make<UILabel>();
    parts.path->setFont(UIFont::system(13));
    parts.path->setTextColor(UIColor::secondaryLabel());
    parts.linkIcon->setAccessibility(AccessibilityRole::text, url_);
    view()->addSubview(parts.linkIcon);
    view()->addSubview(parts.host);
    view()->addSubview(parts.path);

    const auto weak = std::weak_ptr(std::static_pointer_cast<UIActivityViewController>(shared_from_this()));
    const auto addRow = [&](std::string_view key, std::string_view symbol,
                            std::function<void(UIActivityViewController&)> action) {
        const std::string title = platformText(key);
        auto row = make<UIButton>(UIButton::Type::custom);
        if (!symbol.empty()) row->setImage(UIImage::systemImageNamed(symbol));
        row->setTitle(title);
        row->setTitleFont(symbol.empty() ? UIFont::mediumSystem(17) : UIFont::system(17));
        row->setTitleColor(symbol.empty() ? UIColor::tint() : UIColor::label());
        row->setBackgroundColor(UIColor::white(), UIControlState::normal);
        row->setBackgroundColor(UIColor::rgb(0xE9EAEE), UIControlState::highlighted);
        row->setImagePadding(14);
        row->setContentInsets({0, margin, 0, margin});
        row->setContentAlignment(symbol.empty() ? NSTextAlignment::center : NSTextAlignment::left);
        row->setAccessibility(AccessibilityRole::button, title);
        row->addTarget(
            [weak, action = std::move(action)] {
                const auto self = weak.lock();
                if (self && !self->parts_->isLeaving) action(*self);
            },
            UIControlEvent::touchUpInside);
        auto line = make<UIView>();
        line->setBackgroundColor(UIColor::separator());
        view()->addSubview(row);
        view()->addSubview(line);
        parts.rows.push_back(row);
        parts.lines.push_back(std::move(line));
        return row;
    };
    parts.copy = addRow("Copy Link", "doc.on.doc", [](auto& self) { self.copyLink(); });
    if (parts.link.isWeb) {
        addRow("Open in Browser", "safari", [](auto& self) { self.leaveAndOpen(self.url_); });
    }
    addRow("Send by Mail", "envelope", [](auto& self) { self.leaveAndOpen(mailAddress(self.url_)); });
    if (isPhoneIdiom()) addRow("Cancel", "", [](auto& self) { self.dismissViewControllerAnimated(true); });
    for (const auto& line : parts.lines) view()->bringSubviewToFront(line);
    preferredContentSize = {isPhoneIdiom() ? 0 : sheetWidth,
                            parts.top() + headerHeight + actionRowHeight * static_cast<CGFloat>(parts.rows.size())};
}

void UIActivityViewController::viewDidLayoutSubviews() {
    UIViewController::viewDidLayoutSubviews();
    if (!parts_) return;
    Parts& parts = *parts_;
    const CGFloat width = view()->bounds().width();
    if (parts.grabber) parts.grabber->setFrame({(width - 36) / 2, 6, 36, 5});
    const CGFloat top = parts.top();
    parts.linkIcon->setFrame({margin, top + (headerHeight - linkIconSize) / 2, linkIconSize, linkIconSize});
    parts.symbol->setFrame({0, 0, linkIconSize, linkIconSize});
    const CGFloat x = margin + linkIconSize + 12;
    const CGFloat room = std::max(0.0, width - x - margin);
    parts.host->setFrame({x, top + 12, room, 22});
    parts.path->setFrame({x, top + 35, room, 20});
    parts.path->setText(truncatedInMiddle(parts.link.path, parts.path->font(), room));
    for (std::size_t i = 0; i < parts.rows.size(); ++i) {
        const CGFloat y = top + headerHeight + actionRowHeight * static_cast<CGFloat>(i);
        parts.rows[i]->setFrame({0, y, width, actionRowHeight});
        parts.lines[i]->setFrame({i == 0 ? 0 : margin, y, width, separatorHeight});
    }
}

void UIActivityViewController::copyLink() {
    const auto& setText = UIApplication::sharedApplication().setPasteboardText;
    if (!setText) return NSLog("The link cannot be copied: there is no clipboard.");
    setText(url_);
    parts_->isLeaving = true;
    const std::string copied = platformText("Copied");
    parts_->copy->setImage(checkmarkImage());
    parts_->copy->setTitle(copied);
    parts_->copy->setAccessibility(AccessibilityRole::button, copied);
    if (const auto& announce = UIApplication::sharedApplication().announce) announce(copied);
    RunLoop::main().performAfter(confirmationSeconds, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (self && self->presentingViewController()) self->dismissViewControllerAnimated(true);
    });
}

void UIActivityViewController::leaveAndOpen(const std::string& address) {
    parts_->isLeaving = true;
    dismissViewControllerAnimated(true, [address] {
        const auto& open = UIApplication::sharedApplication().openURL;
        if (!open || !open(address)) NSLog("The address cannot be opened: %@", address);
    });
}

bool UIActivityViewController::cancelOperation() {
    if (!presentingViewController() || !isDismissableByUser()) return false;
    parts_->isLeaving = true;
    dismissViewControllerAnimated(true);
    return true;
}

bool UIActivityViewController::pressesBegan(const UIPress& press) {
    const bool isArrow = press.key.code == UIKeyCode::up || press.key.code == UIKeyCode::down;
    UIWindow* const window = view()->window();
    if (isArrow && window && press.key.modifiers == modifierNone) {
        window->moveFocus(press.key.code == UIKeyCode::down);
        return true;
    }
    return UIViewController::pressesBegan(press);
}

}  // namespace ostrel
