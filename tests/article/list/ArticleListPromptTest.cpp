#include "tests/article/list/ArticleListTest.h"

namespace ostrel {
namespace {

/// The owner's list while nobody is signed in.
class ArticleListPromptTest : public ArticleListTest {
protected:
    struct Prompt {
        std::shared_ptr<UIButton> button;
        std::shared_ptr<UILabel> headline, detail;
    };
    Prompt prompt() {
        Prompt found;
        for (const auto& view : table().subviews()) {
            if (auto button = std::dynamic_pointer_cast<UIButton>(view)) found.button = button;
            const auto label = std::dynamic_pointer_cast<UILabel>(view);
            if (label && label->text() == "Write an Article") found.headline = label;
            if (label && label->text() == "Share your own articles, media and more!") found.detail = label;
        }
        return found;
    }
    std::shared_ptr<UIBarButtonItem> addButton() { return list->navigationItem().rightBarButtonItem(); }
};

TEST_F(ArticleListPromptTest, ItAsksForALoginOverAnEmptyList) {
    platform.window().setSize({400, 800});
    showList(Mode::owner);
    EXPECT_EQ(server->paths, Lines{});
    EXPECT_EQ(list->refreshControl(), nullptr);
    EXPECT_FALSE(table().isScrollEnabled());
    EXPECT_EQ(table().numberOfSections(), 0);

    const auto [button, headline, detail] = prompt();
    ASSERT_TRUE(button && headline && detail);
    const CGSize size = list->view()->frame().size;
    EXPECT_EQ(button->frame(), CGRect((size.width - 220) / 2, size.height * 0.457, 220, 100));
    EXPECT_EQ(headline->frame(), CGRect(0, size.height * 0.31, size.width, 36));
    EXPECT_EQ(detail->frame(), CGRect(10, size.height * 0.37, size.width - 20, 28));
    EXPECT_EQ(button->currentTitle(), "Write an Article");
    EXPECT_TRUE(button->clipsToBounds() && button->isEnabled());
    EXPECT_EQ(button->cornerRadius(), 50);
    const auto fontOf = [](CGFloat points, const char* face) { return UIFont::fontWithName(face, points); };
    EXPECT_EQ(button->titleLabel()->font(), fontOf(25, "PingFangSC-Medium"));
    EXPECT_EQ(headline->font(), fontOf(30, "PingFangSC-Medium"));
    EXPECT_EQ(detail->font(), fontOf(24, "PingFangSC-Regular"));
    EXPECT_EQ(button->backgroundColorForState(UIControlState::normal), (UIColor{0.4f, 0.79f, 0.98f, 1}));
    EXPECT_EQ(button->backgroundColorForState(UIControlState::selected), (UIColor{0.33f, 0.58f, 0.71f, 1}));
    EXPECT_EQ(detail->textColor(), (UIColor{0.4f, 0.4f, 0.58f, 1}));

    platform.window().setSize({800, 400});
    platform.advance(1);
    EXPECT_EQ(headline->frame().width(), list->view()->frame().width()) << "it follows the window";
    appearAfter(1);
    EXPECT_EQ(prompt().button, button) << "the prompt is made once";

    useBundles("/nowhere");
    showList(Mode::owner);
    EXPECT_EQ(prompt().button->currentTitle(), "") << "without a bundle there are no texts";
    for (const auto& action : list->tableViewEditActionsForRowAtIndexPath(table(), {0, 0})) EXPECT_EQ(action.title, "");
}

TEST_F(ArticleListPromptTest, SigningInThroughItLoadsTheList) {
    showList(Mode::owner);
    tap(prompt().button);
    platform.advance(1);
    const auto login = std::dynamic_pointer_cast<UINavigationController>(list->presentedViewController());
    ASSERT_NE(login, nullptr);
    EXPECT_EQ(login->topViewController(), server->loginScreen);
    EXPECT_EQ(login->modalPresentationStyle, UIModalPresentationStyle::overFullScreen);
    EXPECT_FALSE(login->navigationBar()->isTranslucent());

    server->login(false, nullptr, "wrong");
    server->login(true, nullptr, "");
    server->login(false, std::make_shared<OstrelServerUserObject>(), "");
    platform.advance(1);
    EXPECT_EQ(list->presentedViewController(), login) << "an unsuccessful login stays";
    EXPECT_EQ(server->paths, Lines{});

    server->signIn();
    post(Current_User_Changed_Notification_Name);
    EXPECT_EQ(server->paths, Lines{}) << "not while the login is shown";
    server->login(true, server->user, "");
    EXPECT_EQ(server->paths, Lines{}) << "only when the dismissal has ended";
    platform.advance(0.6);
    EXPECT_EQ(list->presentedViewController(), nullptr);
    EXPECT_EQ(server->paths, (Lines{ownArticles, ownArticles})) << "with the refresh animation, which asks once more";
    EXPECT_TRUE(list->refreshControl()->isRefreshing());
    EXPECT_TRUE(table().isScrollEnabled());
    EXPECT_EQ(prompt().button->alpha() + prompt().headline->alpha() + prompt().detail->alpha(), 0);
    EXPECT_TRUE(addButton()->isEnabled());
    answerReload({article(1, "mine")});
    EXPECT_EQ(rows(), "mine");
}

TEST_F(ArticleListPromptTest, TheUserWhoChangesDecidesWhatIsShown) {
    const auto changesTo = [this](bool isSignedIn) {
        return [=, this] {
            server->user = nullptr;
            if (isSignedIn) server->signIn();
            post(Current_User_Changed_Notification_Name);
        };
    };
    showArticles({article(2, "b")}, "/more", Mode::owner);
    live({{"a list of less than three minutes loses its next page alone", changesTo(true), "b"},
          {"nobody is signed in", changesTo(false), ""}});
    EXPECT_EQ(prompt().button->alpha(), 1);
    EXPECT_FALSE(addButton()->isEnabled());
    EXPECT_FALSE(table().isScrollEnabled());
    EXPECT_EQ(list->refreshControl(), nullptr);
    const auto adds = [] { post(NOTIFICATION_KEY_NEW_ARTICLE, json(article(5, "new"))); };
    live({{"inserted under the prompt all the same", adds, "new"}});
    platform.advance(200);
    live({{"an old list is loaded", changesTo(true), "new", {ownArticles, ownArticles}}});
    EXPECT_FALSE(prompt().button->isEnabled());
    EXPECT_TRUE(addButton()->isEnabled());
    answerReload({article(2, "b")}, "/more");
    live({{"the answer", [] {}, "b more"}, {"nobody is signed in", changesTo(false), ""}});
    EXPECT_TRUE(prompt().button->isEnabled()) << "whoever signed out can sign in again";
}

}  // namespace
}  // namespace ostrel
