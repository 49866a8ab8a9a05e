#include "platform/uikit/screens/UIActivityViewController.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "tests/article/detail/ArticleDetailTest.h"

namespace ostrel {
namespace {

constexpr char fullArticle[] = R"({"id":42,"title":"A walk","text":"Over the hill.\nAnd back.","auth_id":"a7",
    "url":"http://127.0.0.1/article/42",
    "images":[{"id":1,"image":"http://h/1.png","thumbnail":"http://h/1t.png","image_width":30,"image_height":20,
               "text":"the hill"}],
    "videos":[{"video":"https://h/1.mp4","thumbnail":"https://h/1t.png","video_width":320,"video_height":180,
               "duration":12,"text":"the brook"}],
    "comments":[{"auth_name":"Ada","auth_id":3,"text":"Fine."},{"auth_name":"Bo","auth_id":4,"text":"Yes."}]})";

TEST_F(ArticleDetailTest, TheScreenIsBuiltBelowTheBarByTheIdiom) {
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::pad, UIUserInterfaceIdiom::mac}) {
        useIdiom(idiom);
        showDetail();
        const CGFloat bar = navigation->navigationBar()->frame().maxY(), top = bar + 10;
        EXPECT_EQ(table().frame(), CGRect(0, top, 375, 667 - top));
        EXPECT_EQ(table().convertRectToView(table().bounds(), nullptr), CGRect(0, top, 375, 667 - top))
            << "in the window too, for the screen reaches under the bar";
        EXPECT_EQ(table().style(), UITableViewStyle::plain);
        EXPECT_TRUE(table().allowsSelection && table().separatorNone);
        EXPECT_EQ(table().estimatedRowHeight, 44);
        EXPECT_EQ(detail->view()->backgroundColor(), UIColor::white());
        ASSERT_NE(detail->navigationItem().rightBarButtonItem(), nullptr);

        const auto control = table().refreshControl();
        EXPECT_EQ(control == nullptr, idiom == UIUserInterfaceIdiom::mac);
        if (control) {
            EXPECT_EQ(control->tintColor(), (UIColor{1, 0, 0, 1}));
            EXPECT_EQ(control->attributedTitle(), "Loading ...");
            EXPECT_TRUE(control->isRefreshing());
            EXPECT_EQ(table().contentOffset(), (CGPoint{0, -60})) << "the wheel is visible";
        } else {
            EXPECT_EQ(table().contentOffset(), CGPoint{});
        }
        EXPECT_EQ(rowCounts(), (std::vector<std::int64_t>{1, 1, 0, 0, 0}));
        server->calls.clear();
    }
}

TEST_F(ArticleDetailTest, TheArticleIsLoadedOnceAndShownInFiveSections) {
    showDetail();
    EXPECT_EQ(server->paths, Lines{"/article/article_42_json.html"});
    answerArticle(fullArticle);
    EXPECT_EQ(rowCounts(), (std::vector<std::int64_t>{1, 1, 1, 1, 2}));
    EXPECT_EQ(table().refreshControl(), nullptr);
    EXPECT_EQ(table().contentOffset(), CGPoint{}) << "nothing is left of the wheel";
    for (const char* text : {"A walk", "Over the hill.\nAnd back.", "the hill", "the brook", "0:12"})
        EXPECT_TRUE(platform.sees(text)) << text;
    table().scrollToRowAtIndexPath({4, 1}, false);
    for (const char* text : {"Comments:", "Ada", "Fine.", "Bo", "Yes."}) EXPECT_TRUE(platform.sees(text)) << text;
    table().setContentOffset({0, 0});
    platform.settle();
    EXPECT_EQ(table().rectForRowAtIndexPath({0, 0}).height(), 30);
    for (std::int64_t section = -1; section < 7; ++section) {
        EXPECT_EQ(detail->tableViewTitleForHeaderInSection(table(), section), section == 4 ? "Comments:" : "");
        const CGFloat height = detail->tableViewHeightForRowAtIndexPath(table(), {section, 0});
        EXPECT_EQ(height, section == 0 ? 30 : section >= 1 && section <= 4 ? UITableViewAutomaticDimension : 0);
    }
    EXPECT_EQ(detail->tableViewNumberOfRowsInSection(table(), 5), 0);
    EXPECT_EQ(detail->tableViewCellForRowAtIndexPath(table(), {5, 0}), nullptr);
    const char* const identifiers[] = {"titleCellIdentifier", "textCellIdentifier", "imageCellIdentifier",
                                       "videoCellIdentifier", "commentCellIdentifier"};
    for (std::int64_t section = 0; section < 5; ++section)
        EXPECT_EQ(table().cellForRowAtIndexPath({section, 0})->reuseIdentifier(), identifiers[section]);

    platform.window().setSize({667, 375});
    platform.settle();
    EXPECT_EQ(table().frame(), CGRect(0, 54, 667, 375 - 54)) << "the table follows the window";
    EXPECT_EQ(row<UIArticleViewTextTableViewCell>(1)->textTextView()->frame().width(), 657);
    EXPECT_EQ(row<UIArticleViewImageTableViewCell>(2)->myImageView()->frame().width(), 657);

    detail->viewWillDisappear(false);
    detail->viewDidAppear(false);
    EXPECT_EQ(server->paths.size(), 1u) << "an article is loaded once";
    detail->openArticleID("43", "ignored", "ignored");
    EXPECT_EQ(server->paths.back(), "/article/article_43_json.html");
    answerArticle(R"({"id":43,"title":"Another"})");
    EXPECT_TRUE(platform.sees("Another"));
    EXPECT_FALSE(platform.sees("ignored"));
}

TEST_F(ArticleDetailTest, ALoadThatBringsNoArticleSaysNothingAndIsRepeatedAtTheNextAppearance) {
    showDetail();
    server->answer("<html>", "HTTP 500 Internal Server Error");
    platform.advance(5);
    EXPECT_EQ(logged(), Lines{});
    EXPECT_EQ(detail->presentedViewController(), nullptr);
    EXPECT_EQ(navigation->presentedViewController(), nullptr);
    ASSERT_NE(table().refreshControl(), nullptr);
    EXPECT_TRUE(table().refreshControl()->isRefreshing()) << "the wheel goes on turning";

    for (const char* answer : {"<html>", "", "[1,2]", "42", "null", R"({"id":42)", "\xff\xfe"}) {
        detail->viewDidAppear(false);
        ASSERT_EQ(server->calls.size(), 1u) << answer;
        server->answer(answer);
        platform.advance(1);
        EXPECT_FALSE(detail->resultDict()) << answer;
        EXPECT_EQ(rowCounts(), (std::vector<std::int64_t>{1, 1, 0, 0, 0})) << answer;
        EXPECT_EQ(table().refreshControl(), nullptr) << answer;
    }
    detail->viewDidAppear(false);
    answerArticle("{}");
    EXPECT_EQ(rowCounts(), (std::vector<std::int64_t>{1, 1, 0, 0, 0}));
    detail->viewDidAppear(false);
    EXPECT_TRUE(server->calls.empty()) << "an article without anything is one all the same";
}

TEST_F(ArticleDetailTest, SharingIsAnchoredByTheIdiom) {
    showDetail();
    for (const char* article : {"<html>", "{}", R"({"url":null})", R"({"url":""})", R"({"url":[]})"}) {
        answerArticle(article);
        detail->share();
        EXPECT_EQ(logged(), Lines{"share url is nil"}) << article;
        detail->openArticleID("42", "", "");
    }
    answerArticle(fullArticle);
    const auto action = detail->navigationItem().rightBarButtonItem();
    const struct {
        UIUserInterfaceIdiom idiom;
        std::shared_ptr<UIView> source;
        CGRect rect;
        std::shared_ptr<UIBarButtonItem> item;
    } cases[] = {{UIUserInterfaceIdiom::phone, nullptr, {}, nullptr},
                 {UIUserInterfaceIdiom::pad, nullptr, {}, action},
                 {UIUserInterfaceIdiom::mac, detail->view(), {365, 20, 30, 30}, nullptr}};
    for (const auto& [idiom, source, rect, item] : cases) {
        useIdiom(idiom);
        action->press();
        const auto sheet = std::dynamic_pointer_cast<UIActivityViewController>(detail->presentedViewController());
        ASSERT_NE(sheet, nullptr);
        EXPECT_EQ(sheet->url(), "http://127.0.0.1/article/42");
        EXPECT_EQ(sheet->modalPresentationStyle, UIModalPresentationStyle::popover);
        EXPECT_EQ(sheet->popoverPresentationController.sourceView.lock(), source);
        EXPECT_EQ(sheet->popoverPresentationController.sourceRect, rect);
        EXPECT_EQ(sheet->popoverPresentationController.barButtonItem.lock(), item);
        platform.advance(1);
        EXPECT_TRUE(platform.sees("Copy Link"));
        const CGRect shown = sheet->view()->convertRectToView(sheet->view()->bounds(), nullptr);
        EXPECT_EQ(shown.minY() < 100, idiom != UIUserInterfaceIdiom::phone) << "beside the bar's button, or below";
        EXPECT_LE(shown.maxX(), 375);
        sheet->dismissViewControllerAnimated(false);
        platform.advance(1);
    }
}

TEST_F(ArticleDetailTest, ALongPressOnTheTitleWritesToTheAuthor) {
    showArticle(fullArticle);
    const auto title = row<UIArticleViewTitleTableViewCell>(0);
    platform.press(platform.middleOf(*title), 0.4);
    EXPECT_EQ(detail->presentedViewController(), nullptr) << "too short";
    for (const auto type : {UITouchType::direct, UITouchType::pointer}) {
        platform.touchType = type;
        platform.press(platform.middleOf(*title), 0.6);
        platform.advance(1);
        const auto alert = std::dynamic_pointer_cast<UIAlertController>(detail->presentedViewController());
        ASSERT_NE(alert, nullptr);
        EXPECT_EQ(alert->title(), "Touch Author");
        EXPECT_EQ(alert->message(), "");
        EXPECT_EQ(alert->style(), UIAlertController::Style::alert);
        ASSERT_EQ(alert->textFields().size(), 1u);
        EXPECT_TRUE(platform.sees("Hello")) << "the placeholder";
        ASSERT_EQ(alert->actions().size(), 2u);
        EXPECT_EQ(alert->actions()[0].style, UIAlertAction::Style::destructive);
        EXPECT_EQ(alert->actions()[1].style, UIAlertAction::Style::cancel);
        EXPECT_TRUE(platform.tapText("Cancel"));
        platform.advance(1);
        EXPECT_TRUE(server->messages.empty());
    }
    const std::pair<const char*, const char*> messages[] = {
        {R"({"auth_id":"a7"})", "Dear author"}, {R"({"auth_id":"a7"})", ""}, {"{}", "x"},
        {R"({"auth_id":null})", "x"},           {R"({"auth_id":[1]})", "x"}, {R"({"auth_id":-1})", "x"}};
    for (const auto& [article, text] : messages) {
        showArticle(article);
        detail->touchAuthor();
        platform.advance(1);
        EXPECT_TRUE(platform.type(text));
        EXPECT_TRUE(platform.tapText("Touch"));
        platform.advance(1);
        ASSERT_EQ(server->messages.size(), 1u) << article;
        EXPECT_EQ(server->messages[0].userId, record(article)["auth_id"]) << "as it stands in the record";
        EXPECT_EQ(server->messages[0].title, "Touch You");
        EXPECT_EQ(server->messages[0].text, text);
        EXPECT_EQ(detail->presentedViewController(), nullptr) << "no answer is shown";
        server->messages.clear();
    }
}

TEST_F(ArticleDetailTest, TheScreenGoesWithEverythingUnderWay) {
    showArticle(fullArticle);
    detail->openArticleID("42", "", "");
    tap(video(0));
    detail->touchAuthor();
    platform.advance(0.1);
    EXPECT_EQ(players.playing(), 1u);
    const std::weak_ptr<UIViewController> weak = detail;
    const std::weak_ptr<UIView> weakRow = video(0), weakTable = detail->myTableView();
    detail.reset();
    navigation.reset();
    show(make<UIViewController>());
    platform.advance(2);
    EXPECT_TRUE(weak.expired() && weakRow.expired() && weakTable.expired());
    EXPECT_EQ(players.alive(), 0u);
    while (!server->calls.empty()) server->answer(fullArticle);
    for (const std::string& url : server->mediaUrls()) server->answerMedia(url, picture());
    for (const auto& [author, handlers] : server->faceHandlers) {
        for (const auto& handler : handlers) handler(picture());
    }
    platform.advance(2);
}

}  // namespace
}  // namespace ostrel
