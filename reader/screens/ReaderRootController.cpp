#include "reader/screens/ReaderRootController.h"

#include "article/records/ArticleNotifications.h"
#include "article/server/OstrelLoginViewController.h"
#include "article/server/OstrelServer.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/foundation/values/Text.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "platform/uikit/screens/WorkProgressBar.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"
#include "reader/screens/ReaderLogController.h"
#include "reader/screens/ReaderMessagesController.h"
#include "reader/screens/ReaderNotice.h"
#include "reader/services/ReaderText.h"
#include "serverframework/HttpServerFramework.h"

#include <algorithm>
#include <utility>

namespace ostrel {

ReaderRootController::ReaderRootController(std::shared_ptr<HttpServerFramework> framework,
                                           std::shared_ptr<ReaderLog> log)
    : framework_(std::move(framework)), log_(std::move(log)) {}

ReaderRootController::~ReaderRootController() { NSNotificationCenter::defaultCenter().removeObserver(this); }

std::weak_ptr<ReaderRootController> ReaderRootController::weakSelf() {
    return std::static_pointer_cast<ReaderRootController>(shared_from_this());
}

void ReaderRootController::initialise() {
    const char* titles[] = {"Articles", "My Articles"};
    for (std::size_t index = 0; index < 2; ++index) {
        lists_[index] = make<ReaderListController>();
        lists_[index]->setTitle(readerText(titles[index]));
        lists_[index]->coverChanged = [weak = weakSelf()] {
            if (const auto self = weak.lock()) self->layout();
        };
        // The module only logs that a page could not be loaded; the reader tells its user.
        lists_[index]->loadFailed = [weak = weakSelf()](const std::string& reason) {
            const auto self = weak.lock();
            if (!self) return;
            self->showNotice(replacingOccurrences(readerText("The articles could not be loaded. %@"), "%@", reason));
        };
        lists_[index]->setIsMySelfOnly(index == 1);
        navigations_[index] = make<UINavigationController>(lists_[index]);
        WorkProgressBar::addTo(*navigations_[index]);
        addChildViewController(navigations_[index]);
    }
    NSNotificationCenter::defaultCenter().addObserver(this, Current_User_Changed_Notification_Name,
                                                      [this](const NSNotification&) { accountChanged(); });
}

void ReaderRootController::viewDidLoad() {
    view()->setBackgroundColor(UIColor::groupedBackground());
    content_ = make<UIView>();
    content_->setClipsToBounds(true);
    view()->addSubview(content_);
    tabs_ = make<ReaderTabs>();
    tabs_->chosen = [weak = weakSelf()](std::size_t index) {
        if (const auto self = weak.lock()) self->selectTab(index);
    };
    tabs_->accountChosen = [weak = weakSelf()] {
        if (const auto self = weak.lock()) self->showAccount();
    };
    tabs_->helpChosen = [weak = weakSelf()] {
        if (const auto self = weak.lock()) self->showHelp();
    };
    view()->addSubview(tabs_);

    notice_ = make<ReaderNotice>();
    view()->addSubview(notice_);

    content_->addSubview(navigations_[selected_]->view());
    accountChanged();
    layout();
}

bool ReaderRootController::hasSidebar() {
    return UIDevice::currentDevice().userInterfaceIdiom() != UIUserInterfaceIdiom::phone &&
           view()->frame().width() >= sidebarFrom;
}

void ReaderRootController::viewDidLayoutSubviews() { layout(); }

void ReaderRootController::layout() {
    if (!tabs_) return;
    const CGSize size = view()->frame().size;
    const bool sidebar = hasSidebar();
    tabs_->setSidebar(sidebar);
    // A pushed screen, such as an article, takes the whole width of the window.
    const bool isCovered = sidebar && lists_[selected_]->isCovered();
    tabs_->setHidden(isCovered);
    if (isCovered) {
        content_->setFrame({{}, size});
    } else if (sidebar) {
        tabs_->setFrame({0, 0, ReaderTabs::sidebarWidth, size.height});
        content_->setFrame(
            {ReaderTabs::sidebarWidth, 0, std::max(0.0, size.width - ReaderTabs::sidebarWidth), size.height});
    } else {
        content_->setFrame({0, 0, size.width, std::max(0.0, size.height - ReaderTabs::barHeight)});
        tabs_->setFrame({0, size.height - ReaderTabs::barHeight, size.width, ReaderTabs::barHeight});
    }
    const CGRect inside{{}, content_->frame().size};
    navigations_[selected_]->view()->setFrame(inside);
    notice_->placeIn(content_->frame());
}

void ReaderRootController::viewWillAppear(bool animated) {
    navigations_[selected_]->beginAppearanceTransition(true, animated);
}

void ReaderRootController::viewDidAppear(bool) { navigations_[selected_]->endAppearanceTransition(); }

void ReaderRootController::viewWillDisappear(bool animated) {
    navigations_[selected_]->beginAppearanceTransition(false, animated);
}

void ReaderRootController::viewDidDisappear(bool) { navigations_[selected_]->endAppearanceTransition(); }

void ReaderRootController::selectTab(std::size_t index) {
    if (index > 1) return;
    if (index == selected_) {
        navigations_[index]->popToRootViewControllerAnimated(true);
        return;
    }
    const auto from = navigations_[selected_];
    const auto to = navigations_[index];
    selected_ = index;
    tabs_->setSelected(index);
    if (isAppeared()) from->beginAppearanceTransition(false, false);
    from->view()->removeFromSuperview();
    if (isAppeared()) {
        from->endAppearanceTransition();
        to->beginAppearanceTransition(true, false);
    }
    content_->addSubview(to->view());
    layout();
    if (isAppeared()) to->endAppearanceTransition();
}

void ReaderRootController::accountChanged() {
    if (!tabs_) return;
    const auto user = framework_->shareServer().currentUser();
    tabs_->setAccountTitle(user ? user->name : readerText("Sign In"));
}

void ReaderRootController::showAccount() {
    if (presentedViewController()) return;
    const auto user = framework_->shareServer().currentUser();
    if (!user) {
        showLogin();
        return;
    }
    auto sheet = make<UIAlertController>(replacingOccurrences(readerText("Signed in as %@"), "%@", user->name), "",
                                         UIAlertController::Style::actionSheet);
    sheet->addAction({readerText("Messages"), UIAlertAction::Style::defaultStyle, [weak = weakSelf()] {
                          if (const auto self = weak.lock()) self->showMessages();
                      }});
    sheet->addAction({readerText("Log"), UIAlertAction::Style::defaultStyle, [weak = weakSelf()] {
                          if (const auto self = weak.lock()) self->showLog();
                      }});
    sheet->addAction({readerText("Sign Out"), UIAlertAction::Style::destructive, [weak = weakSelf()] {
                          const auto self = weak.lock();
                          if (!self) return;
                          self->framework_->signOut();
                          self->showNotice(readerText("Signed out."));
                      }});
    sheet->addAction({readerText("Cancel"), UIAlertAction::Style::cancel, {}});
    if (UIDevice::currentDevice().userInterfaceIdiom() != UIUserInterfaceIdiom::phone) {
        sheet->modalPresentationStyle = UIModalPresentationStyle::popover;
        sheet->popoverPresentationController.sourceView = tabs_->account();
        sheet->popoverPresentationController.sourceRect = tabs_->account()->bounds();
    }
    presentViewController(sheet, true);
}

void ReaderRootController::showLogin() {
    login_ = OstrelLoginViewController::shareWithHandler(
        [weak = weakSelf()](bool succeeded, const std::shared_ptr<const OstrelServerUserObject>& user,
                            const std::string&) {
            const auto self = weak.lock();
            if (!self || !succeeded || !user || !self->login_) return;
            self->showNotice(replacingOccurrences(readerText("Signed in as %@."), "%@", user->name));
            self->login_->dismissViewControllerAnimated(true, [weak] {
                // The user's own list may still show the empty page that it loaded after the sign-out.
                if (const auto root = weak.lock()) root->myArticles().reloadInformationFromServer(false);
            });
            self->login_ = nullptr;
        });
    auto navigation = make<UINavigationController>(login_);
    navigation->modalPresentationStyle = UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::phone
                                             ? UIModalPresentationStyle::overFullScreen
                                             : UIModalPresentationStyle::formSheet;
    presentViewController(navigation, true);
}

void ReaderRootController::showMessages() {
    auto navigation = make<UINavigationController>(make<ReaderMessagesController>(framework_));
    navigation->modalPresentationStyle = UIModalPresentationStyle::formSheet;
    presentViewController(navigation, true);
}

void ReaderRootController::showHelp() {
    if (presentedViewController()) return;
    auto menu = make<UIAlertController>(readerText("Help"), "", UIAlertController::Style::actionSheet);
    menu->addAction({readerText("Log"), UIAlertAction::Style::defaultStyle, [weak = weakSelf()] {
                         if (const auto self = weak.lock()) self->showLog();
                     }});
    menu->modalPresentationStyle = UIModalPresentationStyle::popover;
    menu->popoverPresentationController.sourceView = tabs_->help();
    menu->popoverPresentationController.sourceRect = tabs_->help()->bounds();
    presentViewController(menu, true);
}

void ReaderRootController::showLog() {
    if (openLogWindow) return openLogWindow();
    const auto close = [weak = weakSelf()] {
        if (const auto self = weak.lock()) self->dismissViewControllerAnimated(true);
    };
    auto navigation = make<UINavigationController>(make<ReaderLogController>(log_, close));
    navigation->modalPresentationStyle = UIModalPresentationStyle::formSheet;
    presentViewController(navigation, true);
}

void ReaderRootController::showNotice(const std::string& text) {
    if (!isViewLoaded()) return;
    notice_->show(text);
    layout();
}

bool ReaderRootController::pressesBegan(const UIPress& press) {
    const bool control = press.key.modifiers & (modifierControl | modifierCommand);
    if (control && (press.key.characters == "1" || press.key.characters == "2")) {
        selectTab(press.key.characters == "1" ? 0 : 1);
        return true;
    }
    if (press.key.code == UIKeyCode::f5) {
        lists_[selected_]->handleRefresh();
        return true;
    }
    // A key that is pressed while the tabs, or no view, have the focus is offered to the screen beside the tabs. A key
    // that this screen does not take comes back here through the responder chain: `offersKey_` ends the circle.
    if (!std::exchange(offersKey_, true)) {
        const auto screen = navigations_[selected_]->topViewController();
        const bool taken = !presentedViewController() && screen && screen->view()->pressesBegan(press);
        offersKey_ = false;
        if (taken) return true;
    }
    return UIViewController::pressesBegan(press);
}

}  // namespace ostrel
