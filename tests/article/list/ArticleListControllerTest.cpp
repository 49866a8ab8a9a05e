#include "article/detail/UIArticleViewController.h"
#include "article/editor/UIArticleEditViewController.h"
#include "tests/article/list/ArticleListTest.h"

#include <utility>

namespace ostrel {
namespace {

class ArticleListControllerTest : public ArticleListTest {};

TEST_F(ArticleListControllerTest, SetUpGivesTheTableAndThePropertiesTheirValues) {
    list = make<UIArticleListTableViewController>();
    EXPECT_EQ(table().style(), UITableViewStyle::insetGrouped);
    EXPECT_EQ(table().estimatedRowHeight, 88);
    EXPECT_EQ(table().rowHeight, UITableViewAutomaticDimension);
    EXPECT_EQ(table().tableFooterView()->frame().height(), 50);
    EXPECT_TRUE(table().tableFooterView()->backgroundColor().isClear());
    EXPECT_FALSE(list->isMySelfOnly());
    EXPECT_EQ(list->tintColor(), UIColor::darkGray());
    EXPECT_EQ(list->refreshTitle(), "Loading...");
    EXPECT_EQ(list->lastLoadDate(), std::nullopt);
    EXPECT_EQ(list->tableViewHeightForHeaderInSection(table(), 0), 8);
    EXPECT_EQ(list->tableViewHeightForFooterInSection(table(), 0), 1);
    EXPECT_EQ(logged(), Lines{});

    useBundles("/nowhere");
    EXPECT_EQ(make<UIArticleListTableViewController>()->refreshTitle(), "");
    EXPECT_EQ(logged(), Lines{"Warning: can NOT FOUND \"OstrelArticle.bundle\" in this target."});
}

TEST_F(ArticleListControllerTest, TheFirstAppearanceRequestsThePageAtOnceAndOnceMore) {
    showList();
    EXPECT_EQ(server->paths, Lines{allArticles});
    EXPECT_TRUE(list->refreshControl()->isRefreshing());
    EXPECT_LT(table().contentOffset().y, 0) << "the refresh control is uncovered";
    platform.advance(0.09);
    EXPECT_EQ(server->paths.size(), 1u);
    platform.advance(0.02);
    EXPECT_EQ(server->paths, (Lines{allArticles, allArticles}));

    server->answer(ScriptedServer::page({article(3, "c"), article(2, "b")}));
    EXPECT_FALSE(list->refreshControl()->isRefreshing());
    EXPECT_EQ(rows(), (Lines{"c", "b"}));
    EXPECT_EQ(table().contentOffset().y, 0) << "the list is back in its place";
    server->answer(ScriptedServer::page({article(4, "d"), article(3, "c"), article(2, "b")}));
    EXPECT_EQ(rows(), (Lines{"d", "c", "b"})) << "each answer replaces the list";
    EXPECT_EQ(table().contentOffset().y, 0);
    platform.advance(60);
    EXPECT_EQ(server->paths.size(), 2u);
}

TEST_F(ArticleListControllerTest, AnAppearanceReloadsAListOlderThanThreeMinutes) {
    showArticles({article(1)});
    const double loaded = list->lastLoadDate()->secondsSince1970;
    const double passed = NSDate::now().secondsSince1970 - loaded;
    const auto former = list->refreshControl();
    appearAfter(180 - passed);
    EXPECT_EQ(server->paths, Lines{}) << "180 seconds are not more than 180";
    EXPECT_NE(list->refreshControl(), former) << "every appearance makes a new control";
    appearAfter(1);
    EXPECT_EQ(server->paths, Lines{allArticles});
    EXPECT_TRUE(list->refreshControl()->isRefreshing());
    appearAfter(100);
    EXPECT_EQ(server->paths.size(), 2u) << "the age counts from the request on, answered or not";
}

TEST_F(ArticleListControllerTest, PagesFollowOneAnother) {
    showArticles({article(9, "i")}, "/article/articles_json.html?before=9&x=%20");
    EXPECT_EQ(rows(), (Lines{"i", "more"}));
    tapRow(1);
    EXPECT_EQ(server->paths, Lines{"/article/articles_json.html?before=9&x=%20"})
        << "the path goes back unchanged";
    EXPECT_EQ(rows(), (Lines{"i", "busy"}));
    tapRow(1);
    EXPECT_EQ(server->paths.size(), 2u) << "a second tap sends another request";
    server->calls.pop_back();
    server->answer(ScriptedServer::page({article(8, "h"), article(7, "g")}, "/more"));
    EXPECT_EQ(rows(), (Lines{"i", "h", "g", "more"}));
    const auto loaded = list->lastLoadDate();
    tapRow(3);
    server->answer(ScriptedServer::page({}));
    EXPECT_EQ(rows(), (Lines{"i", "h", "g"})) << "the last page takes the row away";
    EXPECT_EQ(list->lastLoadDate(), loaded) << "only first pages count as a load";
    server->paths.clear();
    list->loadMoreInformationFromServer(nullptr);
    EXPECT_EQ(server->paths, Lines{});

    list->reloadInformationFromServer(false);
    server->answer(ScriptedServer::page({article(9, "i")}));
    EXPECT_EQ(rows(), Lines{"i"}) << "a first page replaces all pages";
}

TEST_F(ArticleListControllerTest, FailedRequestsAreLoggedAndKeepWhatThereWas) {
    const struct {
        std::optional<std::string> answer, error;
        const char* line;
    } failures[] = {
        {std::nullopt, "down", "request articles error:down"},
        {ScriptedServer::page({article(5)}), "HTTP 500", "request articles error:HTTP 500"},
        {R"({"success":false,"error":"no %@ here","results":[{"id":5}]})", std::nullopt,
         "request articles error:no %@ here"},
        {"<html>", std::nullopt, "request articles error:unreadable"},
        {std::nullopt, std::nullopt, "request articles error:unreadable"},
    };
    showArticles({article(1, "a")}, "/more");
    Lines told;
    list->loadFailed = [&](const std::string& reason) { told.push_back("request articles error:" + reason); };
    for (const auto& [answer, error, line] : failures) {
        list->reloadInformationFromServer(true);
        platform.advance(0.2);
        ASSERT_EQ(server->calls.size(), 2u);
        server->answer(answer, error);
        server->answer(answer, error);
        EXPECT_EQ(logged(), (Lines{line, line}));
        EXPECT_EQ(std::exchange(told, {}), (Lines{line, line})) << "a host is told as well";
        EXPECT_TRUE(list->refreshControl()->isRefreshing()) << "the control goes on turning";
        EXPECT_EQ(list->moreArticlesURLString(), "/more");
        EXPECT_EQ(ids(), Lines{"1"});

        answerReload({article(1, "a")}, "/more");
        list->reloadInformationFromServer(false);
        server->answer(ScriptedServer::page({article(1, "a")}, "/more"));
        EXPECT_EQ(rows(), (Lines{"a", "more"}));
        tapRow(1);
        server->answer(answer, error);
        EXPECT_EQ(logged(), Lines{line});
        EXPECT_EQ(std::exchange(told, {}), Lines{line});
        EXPECT_EQ(rows(), (Lines{"a", "busy"}));
        list->reloadInformationFromServer(false);
        server->answer(ScriptedServer::page({article(1, "a")}, "/more"));
        EXPECT_EQ(rows(), (Lines{"a", "more"})) << "until the list is loaded again";
    }
}

TEST_F(ArticleListControllerTest, NewArticlesAreInsertedFirstInOwnerModeOnly) {
    showArticles({article(1, "a")});
    post(NOTIFICATION_KEY_NEW_ARTICLE, json(article(2)));
    EXPECT_EQ(ids(), Lines{"1"}) << "the list of everybody does not observe";

    list->setIsMySelfOnly(true);
    for (const char* other : {"null", "7", "\"id\"", "[{\"id\":5}]"})
        post(NOTIFICATION_KEY_NEW_ARTICLE, json(other));
    post(NOTIFICATION_KEY_NEW_ARTICLE);
    EXPECT_EQ(ids(), Lines{"1"}) << "only dictionaries are records";
    post(NOTIFICATION_KEY_NEW_ARTICLE, json(article(2, "b")));
    post(NOTIFICATION_KEY_NEW_ARTICLE, json(R"({"title":"no id"})"));
    EXPECT_EQ(rows(), (Lines{"no id", "b", "a"}));

    list->setIsMySelfOnly(false);
    post(NOTIFICATION_KEY_NEW_ARTICLE, json(article(3)));
    EXPECT_EQ(list->articlesArray().size(), 3u);
}

TEST_F(ArticleListControllerTest, UpdatesReplaceTheArticleInItsPlace) {
    showArticles({article(3, "c"), article(2, "b"), article(2, "twin"), R"({"title":"no id"})"}, {},
                 Mode::owner);
    for (const char* other :
         {R"({"id":4,"title":"x"})", R"({"title":"x"})", R"([{"id":3,"title":"x"}])", "3"}) {
        post(NOTIFICATION_KEY_UPDATE, json(other));
        EXPECT_EQ(rows(), (Lines{"c", "b", "twin", "no id"})) << other;
    }
    post(NOTIFICATION_KEY_UPDATE, json(R"({"id":"3","title":"C"})"));
    EXPECT_EQ(rows(), (Lines{"C", "b", "twin", "no id"}));
    post(NOTIFICATION_KEY_UPDATE, json(R"({"id":2,"title":"B"})"));
    EXPECT_EQ(list->articlesArray()[1]["title"].string(), "B");
    EXPECT_EQ(list->articlesArray()[2]["title"].string(), "twin") << "the first match alone";
}

TEST_F(ArticleListControllerTest, RemovingTakesTheRowAwayAtOnce) {
    showArticles({article(3, "c"), article(2, "b"), R"({"title":"b","id":2})", article(1, "a")}, "/more",
                 Mode::owner);
    list->removeArticleFor({1, 0});
    EXPECT_EQ(server->paths, Lines{"/article/remove?id=2"});
    EXPECT_EQ(rows(), (Lines{"c", "a", "more"})) << "equal records go together";
    server->answer("<html>gone</html>");
    EXPECT_EQ(logged(), Lines{"Remove Article Result:<html>gone</html>"});
    list->removeArticleFor({0, 0});
    server->answer(std::nullopt, "down");
    EXPECT_EQ(logged(), Lines{"Remove Article Result:(null)"});
    EXPECT_EQ(rows(), (Lines{"a", "more"})) << "a failure brings nothing back";
    for (const NSIndexPath path : {NSIndexPath{1, 0}, {-1, 0}, {99, 0}}) list->removeArticleFor(path);
    EXPECT_EQ(server->calls.size(), 0u) << "the load-more row is no article";
    list->tableViewCommitEditingStyle(table(), UITableViewCellEditingStyle::none, {0, 0});
    EXPECT_EQ(ids(), Lines{"1"});
    list->tableViewCommitEditingStyle(table(), UITableViewCellEditingStyle::deleteStyle, {0, 0});
    EXPECT_EQ(rows(), Lines{"more"});
}

TEST_F(ArticleListControllerTest, OnlyTheOwnersRowsAreEdited) {
    showArticles({article(2, "b"), article(1, "a")}, "/more");
    EXPECT_FALSE(list->tableViewCanEditRowAtIndexPath(table(), {0, 0}));
    EXPECT_EQ(table().cellForRowAtIndexPath({2, 0})->reuseIdentifier(), "load_more_cell_identifier");

    showArticles({article(2, "b"), article(1, "a")}, {}, Mode::owner);
    EXPECT_TRUE(list->tableViewCanEditRowAtIndexPath(table(), {0, 0}));
    EXPECT_EQ(table().cellForRowAtIndexPath({0, 0})->accessoryType(),
              UITableViewCellAccessoryType::detailDisclosureButton);
    const auto actions = list->tableViewEditActionsForRowAtIndexPath(table(), {0, 0});
    ASSERT_EQ(actions.size(), 2u);
    EXPECT_EQ(actions[0].title + actions[1].title, "EditDelete");
    EXPECT_EQ(actions[0].style, UITableViewRowAction::Style::normal);
    EXPECT_EQ(actions[1].style, UITableViewRowAction::Style::destructive);
    const CGPoint middle = platform.middleOf(*table().cellForRowAtIndexPath({1, 0}));
    platform.drag(middle, {20, middle.y});
    platform.advance(1);
    EXPECT_TRUE(platform.tapText("Delete"));
    EXPECT_EQ(server->paths, Lines{"/article/remove?id=1"});
    EXPECT_EQ(rows(), Lines{"b"});
}

TEST_F(ArticleListControllerTest, APullRefreshes) {
    showArticles({article(1, "a")});
    platform.drag({180, 200}, {180, 500}, 0.3, true);
    EXPECT_EQ(server->paths, Lines{allArticles});
    EXPECT_TRUE(list->refreshControl()->isRefreshing());
    server->answer(ScriptedServer::page({article(2, "b")}));
    EXPECT_EQ(rows(), Lines{"b"});
    EXPECT_FALSE(list->refreshControl()->isRefreshing());
    EXPECT_EQ(table().contentOffset().y, 0);
    EXPECT_EQ(server->paths.size(), 1u);
}

TEST_F(ArticleListControllerTest, RowsOfALongListAreReusedForTheirOwnSection) {
    std::vector<std::string> records;
    for (int id = 0; id < 500; ++id) records.push_back(article(id, "title " + std::to_string(id)));
    showArticles(records);
    for (const std::int64_t section : {499, 0, 250, 3}) {
        table().scrollToRowAtIndexPath({section, 0}, false);
        platform.advance(0.1);
        for (const NSIndexPath path : table().indexPathsForVisibleRows()) {
            const auto row =
                std::static_pointer_cast<UIArticleListTableViewCell>(table().cellForRowAtIndexPath(path));
            EXPECT_EQ(row->detailTextLabel()->text(), "title " + std::to_string(path.section));
            EXPECT_EQ(row->reuseIdentifier(), "article_cell_identifier0_" + std::to_string(path.section));
            EXPECT_EQ(row->frame().height(), 24 + 67);
        }
    }
    EXPECT_LT(table().liveCellCount(), 80u);

    tapRow(table().indexPathsForVisibleRows().at(1).section);
    EXPECT_EQ(table().indexPathForSelectedRow(), std::nullopt);
    const CGPoint offset = table().contentOffset();
    appearAfter(181);
    EXPECT_LT(table().contentOffset().y, offset.y);
    answerReload(records);
    EXPECT_EQ(table().contentOffset(), offset) << "a reload comes back to where it began";
}

TEST_F(ArticleListControllerTest, TheKeyFRefreshes) {
    showArticles({article(1)});
    for (const char* characters : {"f", "F"}) {
        EXPECT_TRUE(platform.key(UIKeyCode::other, modifierNone, characters));
        EXPECT_EQ(server->paths, Lines{}) << "not before a tenth of a second";
        platform.advance(0.11);
        EXPECT_EQ(server->paths, Lines{allArticles});
        server->paths.clear();
    }
    for (const char* other : {"g", "", "ff", "é"}) platform.key(UIKeyCode::other, modifierNone, other);
    platform.advance(1);
    EXPECT_EQ(server->paths, Lines{});
}

TEST_F(ArticleListControllerTest, TheDesktopHasNoRefreshControl) {
    useIdiom(UIUserInterfaceIdiom::mac);
    showList();
    platform.advance(1);
    EXPECT_EQ(server->paths, Lines{allArticles}) << "without a control nothing asks again";
    EXPECT_EQ(list->refreshControl(), nullptr);
    list->setTintColor(UIColor::black());
    list->setRefreshTitle("x");
    server->answer(ScriptedServer::page({article(1, "a")}));
    EXPECT_EQ(rows(), Lines{"a"});
    EXPECT_EQ(table().contentOffset().y, 0);
}

TEST_F(ArticleListControllerTest, TheRefreshControlTakesColourAndTitle) {
    list = make<UIArticleListTableViewController>();
    list->setTintColor(UIColor::rgb(0x123456));
    list->setRefreshTitle("Wait");
    show(make<UINavigationController>(list));
    EXPECT_EQ(list->refreshControl()->tintColor(), UIColor::rgb(0x123456));
    EXPECT_EQ(list->refreshControl()->attributedTitle(), "Wait");
    list->setTintColor(UIColor::black());
    list->setRefreshTitle("");
    EXPECT_EQ(list->refreshControl()->tintColor(), UIColor::black());
    EXPECT_EQ(list->refreshControl()->attributedTitle(), "");
}

TEST_F(ArticleListControllerTest, AScreenThatPresentsAnotherDoesNotReload) {
    showArticles({article(1)});
    const auto loaded = list->lastLoadDate();
    const auto other = make<UIViewController>();
    list->presentViewController(other, false);
    platform.advance(200);
    list->reloadInformationFromServer(true);
    list->reloadInformationFromServer(false);
    EXPECT_EQ(server->paths, Lines{});
    EXPECT_EQ(list->lastLoadDate(), loaded);
    other->dismissViewControllerAnimated(false);
    platform.advance(1);
    EXPECT_EQ(server->paths.front(), allArticles) << "but when it appears again";
}

TEST_F(ArticleListControllerTest, AScreenThatIsGoneTouchesNothing) {
    const auto observers = NSNotificationCenter::defaultCenter().observerCount();
    showArticles({article(2, "b"), article(1, "a")}, "/more", Mode::owner);
    tapRow(2);
    list->reloadInformationFromServer(true);
    list->removeArticleFor({0, 0});
    list->loginNow();
    platform.advance(1);
    list->handleRefresh();
    const std::weak_ptr<UIViewController> screen = list;
    const std::weak_ptr<UIView> view = list->tableView(), row = table().cellForRowAtIndexPath({0, 0});
    platform.window().setRootViewController(nullptr);
    navigation.reset();
    list.reset();
    platform.advance(1);
    EXPECT_TRUE(screen.expired());
    EXPECT_TRUE(view.expired());
    EXPECT_TRUE(row.expired());
    EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers);
    while (!server->calls.empty()) server->answer(ScriptedServer::page({article(3)}));
    server->login(true, std::make_shared<OstrelServerUserObject>(), "");
    for (const auto& [user, handlers] : server->faceHandlers) {
        for (const auto& handler : handlers) handler(Data::copy("x"));
    }
    platform.advance(1);
}

TEST_F(ArticleListControllerTest, ATapOpensTheArticleAndTheListIsWhereItWasOnReturn) {
    std::vector<std::string> records;
    for (int id = 1; id <= 60; ++id) records.push_back(article(id, "title " + std::to_string(id)));
    showArticles(records);
    table().setContentOffset({0, 1500});
    platform.settle();
    const CGFloat offset = table().contentOffset().y;
    const NSIndexPath path = table().indexPathsForVisibleRows().at(2);
    const Dictionary opened = list->articlesArray()[static_cast<std::size_t>(path.section)];
    const CGRect place = table().rectForRowAtIndexPath(path);
    tap(table().cellForRowAtIndexPath(path));
    platform.advance(1);
    const auto detail = std::dynamic_pointer_cast<UIArticleViewController>(navigation->topViewController());
    ASSERT_NE(detail, nullptr);
    EXPECT_EQ(detail->articleDictionary(), opened);
    EXPECT_EQ(server->paths, Lines{"/article/article_" + recordId(opened).value() + "_json.html"});
    server->answer(R"({"title":"whole"})");
    platform.window().setSize({667, 375});
    platform.advance(1);
    EXPECT_TRUE(platform.sees("whole"));
    platform.window().setSize({375, 667});
    EXPECT_TRUE(platform.key(UIKeyCode::escape));
    platform.advance(1);
    EXPECT_EQ(navigation->topViewController(), list);
    EXPECT_EQ(table().contentOffset().y, offset);
    EXPECT_EQ(table().rectForRowAtIndexPath(path), place);
    EXPECT_EQ(server->paths.size(), 1u) << "the list is not loaded again so soon";
}

TEST_F(ArticleListControllerTest, HostileRecordsAreListed) {
    showArticles(hostileRecords(), "/more", Mode::owner);
    EXPECT_EQ(rows().size(), hostileRecords().size() + 1);
    for (const auto& hostile : hostileRecords()) {
        post(NOTIFICATION_KEY_NEW_ARTICLE, json(hostile));
        post(NOTIFICATION_KEY_UPDATE, json(hostile));
    }
    while (!list->articlesArray().empty()) list->removeArticleFor({0, 0});
    EXPECT_EQ(rows(), Lines{"more"});
    while (!server->calls.empty()) server->answer("[");

    for (const char* answer :
         {"", "[]", "{\"results\":7}", R"({"results":[1,"x",null,[],{"id":1}],"more":5})"}) {
        list->reloadInformationFromServer(false);
        server->answer(answer);
        platform.advance(1);
    }
    EXPECT_EQ(rows(), Lines{""}) << "the one article of the last answer";
}

TEST_F(ArticleListControllerTest, TheOwnersListOpensTheEditorForNewAndExistingArticles) {
    const auto opened = [this] {
        platform.advance(1);
        const auto editor =
            std::dynamic_pointer_cast<UIArticleEditViewController>(navigation->topViewController());
        const std::string id =
            editor ? recordId(editor->articleDictionary()).value_or("new") : std::string("no editor");
        navigation->popToRootViewControllerAnimated(false);
        platform.advance(1);
        return id;
    };
    showArticles({article(4, "four"), article(5, "five")}, {}, Mode::owner);
    list->navigationItem().rightBarButtonItem()->press();
    EXPECT_EQ(opened(), "new");
    list->tableViewEditActionsForRowAtIndexPath(table(), {1, 0}).front().handler({1, 0});
    EXPECT_EQ(opened(), "5");
    tap(table().cellForRowAtIndexPath({0, 0})->accessoryButton());
    EXPECT_EQ(opened(), "4");
    list->editArticleFor({9, 0});
    EXPECT_EQ(opened(), "no editor");
    server->user = nullptr;
    logged();
    list->write_article();
    EXPECT_EQ(opened(), "no editor");
    EXPECT_EQ(logged().front(), "NOT login can NOT new article.");
}

}  // namespace
}  // namespace ostrel
