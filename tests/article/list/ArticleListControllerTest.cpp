#include "article/detail/UIArticleViewController.h"
#include "article/editor/UIArticleEditViewController.h"
#include "platform/uikit/table/RowHeights.h"
#include "tests/article/list/ArticleListTest.h"

#include <utility>

namespace ostrel {
namespace {

class ArticleListControllerTest : public ArticleListTest {
protected:
    auto answers(std::optional<std::string> text, std::optional<std::string> error = {}) {
        return [=, this] { server->answer(text, error); };
    }
    auto answersPage(std::vector<std::string> records, std::string more = {}) {
        return answers(ScriptedServer::page(records, more));
    }
    auto taps(std::int64_t section) {
        return [=, this] { tapRow(section); };
    }
    auto posts(const char* name, const std::string& object) {
        return [=] { post(name, json(object)); };
    }
    auto reloads(bool animated) {
        return [=, this] { list->reloadInformationFromServer(animated); };
    }
};

TEST_F(ArticleListControllerTest, SetUpGivesTheTableAndTheRefreshControlTheirValues) {
    list = make<UIArticleListTableViewController>();
    EXPECT_EQ(table().style(), UITableViewStyle::insetGrouped);
    EXPECT_EQ(table().estimatedRowHeight, 88);
    EXPECT_EQ(table().rowHeight, UITableViewAutomaticDimension);
    EXPECT_EQ(table().tableFooterView()->frame().height(), 50);
    EXPECT_TRUE(table().tableFooterView()->backgroundColor().isClear());
    EXPECT_EQ(list->tableViewHeightForHeaderInSection(table(), 0), 8);
    EXPECT_EQ(list->tableViewHeightForFooterInSection(table(), 0), 1);
    EXPECT_EQ(list->lastLoadDate(), std::nullopt);
    EXPECT_EQ(list->tintColor(), UIColor::darkGray());
    EXPECT_EQ(list->refreshTitle(), "Loading...");
    EXPECT_EQ(logged(), Lines{});

    const std::pair<UIColor, const char*> looks[] = {{UIColor::rgb(0x123456), "Wait"}, {UIColor::black(), ""}};
    for (const auto& [colour, title] : looks) {
        list->setTintColor(colour);
        list->setRefreshTitle(title);
        if (!navigation) show(navigation = make<UINavigationController>(list));
        EXPECT_EQ(list->refreshControl()->tintColor(), colour);
        EXPECT_EQ(list->refreshControl()->attributedTitle(), title);
    }
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

    server->paths.clear();
    live({{"the first answer", answersPage({article(3, "c"), article(2, "b")}), "c b"}});
    EXPECT_FALSE(list->refreshControl()->isRefreshing());
    EXPECT_EQ(table().contentOffset().y, 0) << "the list is back in its place";
    live({{"the second one replaces the list", answersPage({article(4, "d"), article(3, "c")}), "d c"},
          {"and nothing more is asked", [this] { platform.advance(60); }, "d c"}});
    EXPECT_EQ(table().contentOffset().y, 0);
}

TEST_F(ArticleListControllerTest, AnAppearanceReloadsAListOlderThanThreeMinutesUnlessItPresents) {
    showArticles({article(1)});
    const auto loaded = *list->lastLoadDate();
    const double passed = NSDate::now().secondsSince1970 - loaded.secondsSince1970;
    const auto former = list->refreshControl();
    appearAfter(180 - passed);
    EXPECT_EQ(server->paths, Lines{}) << "180 seconds are not more than 180";
    EXPECT_NE(list->refreshControl(), former) << "every appearance makes a new control";
    appearAfter(1);
    EXPECT_EQ(server->paths, Lines{allArticles});
    EXPECT_TRUE(list->refreshControl()->isRefreshing());
    appearAfter(100);
    EXPECT_EQ(server->paths.size(), 2u) << "the age counts from the request on, answered or not";

    const auto other = make<UIViewController>();
    list->presentViewController(other, false);
    platform.advance(200);
    const auto before = list->lastLoadDate();
    for (const bool animated : {true, false}) list->reloadInformationFromServer(animated);
    EXPECT_EQ(server->paths.size(), 2u);
    EXPECT_EQ(list->lastLoadDate(), before);
    other->dismissViewControllerAnimated(false);
    platform.advance(1);
    EXPECT_GT(server->paths.size(), 2u) << "it is loaded when it appears again";
}

TEST_F(ArticleListControllerTest, PagesFollowOneAnother) {
    const char* const next = "/article/articles_json.html?before=9&x=%20";
    showArticles({article(9, "i")}, next);
    const auto loaded = list->lastLoadDate();
    live({
        {"the path goes back unchanged", taps(1), "i busy", {next}},
        {"a second tap sends another request", taps(1), "i busy", {next}},
        {"a page that fails leaves its row busy", answers({}, "down"), "i busy", {}, {"request articles error:down"}},
        {"the other one comes", answersPage({article(8, "h"), article(7, "g")}, "/more"), "i h g more"},
        {"the next page", taps(3), "i h g busy", {"/more"}},
        {"the last page takes the row away", answersPage({}), "i h g"},
        {"there is no further page", [&] { list->loadMoreInformationFromServer(nullptr); }, "i h g"},
    });
    EXPECT_EQ(list->lastLoadDate(), loaded) << "only first pages count as a load";
    live({
        {"a reload", reloads(false), "i h g", {allArticles}},
        {"a first page replaces all pages", answersPage({article(9, "i")}, "/more"), "i more"},
        {"the next page", taps(1), "i busy", {"/more"}},
        {"that fails", answers("<html>"), "i busy", {}, {"request articles error:unreadable"}},
        {"a reload", reloads(false), "i busy", {allArticles}},
        {"gives the row its idle look", answersPage({article(9, "i")}, "/more"), "i more"},
    });
    EXPECT_GT(list->lastLoadDate()->timeIntervalSinceDate(*loaded), 0);
}

TEST_F(ArticleListControllerTest, AFailedReloadIsLoggedAndKeepsWhatThereWas) {
    const std::string refusal = R"({"success":false,"error":"no %@ here","results":[{"id":5}]})";
    const std::string page = ScriptedServer::page({article(5)});
    showArticles({article(1, "a")}, "/more");
    Lines told;
    list->loadFailed = [&](const std::string& reason) { told.push_back(reason); };
    live({{"a reload asks twice", reloads(true), "a more", {allArticles, allArticles}},
          {"no connection", answers(page, "HTTP 500"), "a more", {}, {"request articles error:HTTP 500"}},
          {"a refusal", answers(refusal), "a more", {}, {"request articles error:no %@ here"}}});
    EXPECT_TRUE(list->refreshControl()->isRefreshing()) << "the control goes on turning";
    EXPECT_EQ(told, (Lines{"HTTP 500", "no %@ here"})) << "a host is told as well";
}

TEST_F(ArticleListControllerTest, TheOwnersListFollowsNewChangedAndRemovedArticles) {
    const auto isNew = [this](const std::string& object) { return posts(NOTIFICATION_KEY_NEW_ARTICLE, object); };
    const auto isChanged = [this](const std::string& object) { return posts(NOTIFICATION_KEY_UPDATE, object); };
    const auto removes = [this](std::int64_t section) { return [=, this] { list->removeArticleFor({section, 0}); }; };
    const auto commits = [this](UITableViewCellEditingStyle style) {
        return [=, this] { list->tableViewCommitEditingStyle(table(), style, {0, 0}); };
    };
    showArticles({article(1, "a")});
    live({{"the list of everybody does not observe", isNew(article(2)), "a"}});

    showArticles({article(3, "c"), article(1, "a"), R"({"title":"a","id":1})"}, "/more", Mode::owner);
    for (const char* other : {"null", "7", "\"id\"", "[{\"id\":5}]"})
        live({{"only a dictionary is a record", isNew(other), "c a a more"}});
    for (const char* other : {R"({"id":4,"title":"x"})", R"({"title":"x"})", R"([{"id":3,"title":"x"}])", "3"})
        live({{"no article of the list", isChanged(other), "c a a more"}});
    live({
        {"a change", isChanged(R"({"id":"3","title":"C"})"), "C a a more"},
        {"a new one is first", isNew(article(2, "b")), "b C a a more"},
        {"without an id too", isNew(R"({"title":"none"})"), "none b C a a more"},
        {"equal records go together", removes(3), "none b C more", {"/article/remove?id=1"}},
        {"the answer is logged", answers("<p>gone</p>"), "none b C more", {}, {"Remove Article Result:<p>gone</p>"}},
        {"another", removes(1), "none C more", {"/article/remove?id=2"}},
        {"a failure brings nothing back", answers({}, "down"), "none C more", {}, {"Remove Article Result:(null)"}},
        {"the load-more row is no article", removes(2), "none C more"},
        {"nor is what is above", removes(-1), "none C more"},
        {"or below", removes(99), "none C more"},
        {"no deletion", commits(UITableViewCellEditingStyle::none), "none C more"},
        {"a deletion", commits(UITableViewCellEditingStyle::deleteStyle), "C more", {"/article/remove?id=(null)"}},
        {"a twin", isNew(R"({"id":3,"title":"twin"})"), "twin C more"},
    });
    post(NOTIFICATION_KEY_UPDATE, json(R"({"id":3,"title":"T"})"));
    EXPECT_EQ(recordText(list->articlesArray()[0], "title") + recordText(list->articlesArray()[1], "title"), "TC")
        << "the first match alone";
    list->setIsMySelfOnly(false);
    post(NOTIFICATION_KEY_NEW_ARTICLE, json(article(3)));
    EXPECT_EQ(list->articlesArray().size(), 2u);
}

TEST_F(ArticleListControllerTest, APullAndTheKeyFRefreshAndTheDesktopHasTheKeyAlone) {
    const auto types = [this](const char* text) {
        return [=, this] { platform.key(UIKeyCode::other, modifierNone, text); };
    };
    showArticles({article(1, "a")});
    live({{"a pull", [&] { platform.drag({180, 200}, {180, 500}, 0.3, true); }, "a", {allArticles}}});
    EXPECT_TRUE(list->refreshControl()->isRefreshing());
    live({{"its answer", answersPage({article(2, "b")}), "b"}});
    EXPECT_FALSE(list->refreshControl()->isRefreshing());
    EXPECT_EQ(table().contentOffset().y, 0);
    for (const char* other : {"g", "", "ff", "é"}) live({{other, types(other), "b"}});
    live({{"f", types("f"), "b", {allArticles}}, {"F", types("F"), "b", {allArticles}}});
    types("f")();
    platform.advance(0.09);
    EXPECT_EQ(server->paths, Lines{}) << "not before a tenth of a second";

    useIdiom(UIUserInterfaceIdiom::mac);
    platform.advance(1);
    server->calls.clear();
    server->paths.clear();
    showList();
    live({{"without a control nothing asks again", [] {}, "", {allArticles}}});
    EXPECT_EQ(list->refreshControl(), nullptr);
    list->setTintColor(UIColor::black());
    list->setRefreshTitle("x");
    live({{"its answer", answersPage({article(1, "a")}), "a"}, {"f", types("f"), "a", {allArticles}}});
    EXPECT_EQ(table().contentOffset().y, 0);
}

TEST_F(ArticleListControllerTest, ALongListReusesItsRowsAndIsWhereItWasAfterAnArticleAndAReload) {
    std::vector<std::string> records;
    for (int id = 0; id < 500; ++id) records.push_back(article(id, "title " + std::to_string(id)));
    showArticles(records);
    for (const std::int64_t section : {499, 0, 250, 3}) {
        table().scrollToRowAtIndexPath({section, 0}, false);
        platform.advance(0.1);
        for (const NSIndexPath path : table().indexPathsForVisibleRows()) {
            const auto row = std::static_pointer_cast<UIArticleListTableViewCell>(table().cellForRowAtIndexPath(path));
            EXPECT_EQ(row->detailTextLabel()->text(), "title " + std::to_string(path.section));
            EXPECT_EQ(row->reuseIdentifier(), "article_cell_identifier0_" + std::to_string(path.section));
            EXPECT_EQ(row->frame().height(), 24 + 67);
        }
    }
    EXPECT_LT(table().liveCellCount(), 80u);

    CGPoint offset = table().contentOffset();
    appearAfter(181);
    EXPECT_LT(table().contentOffset().y, offset.y);
    answerReload(records);
    EXPECT_EQ(table().contentOffset(), offset) << "a reload comes back to where it began";

    table().setContentOffset({0, 1500});
    platform.settle();
    offset = table().contentOffset();
    const NSIndexPath path = table().indexPathsForVisibleRows().at(2);
    const Dictionary opened = list->articlesArray()[static_cast<std::size_t>(path.section)];
    const CGRect place = table().rectForRowAtIndexPath(path);
    tapRow(path.section);
    platform.advance(1);
    EXPECT_EQ(table().indexPathForSelectedRow(), std::nullopt);
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
    EXPECT_EQ(table().contentOffset(), offset);
    EXPECT_EQ(table().rectForRowAtIndexPath(path), place);
    EXPECT_EQ(server->paths.size(), 1u) << "the list is not loaded again so soon";
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
    EXPECT_TRUE(screen.expired() && view.expired() && row.expired());
    EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers);
    while (!server->calls.empty()) server->answer(ScriptedServer::page({article(3)}));
    server->login(true, std::make_shared<OstrelServerUserObject>(), "");
    for (const auto& [user, handlers] : server->faceHandlers) {
        for (const auto& handler : handlers) handler(Data::copy("x"));
    }
    server->paths.clear();
    platform.advance(1);
    EXPECT_EQ(server->paths, Lines{});
}

TEST_F(ArticleListControllerTest, HostileRecordsAreListed) {
    const auto records = hostileRecords();
    showArticles(records, "/more", Mode::owner);
    ASSERT_EQ(table().numberOfSections(), static_cast<std::int64_t>(records.size()) + 1);
    for (std::int64_t section = 0; section < static_cast<std::int64_t>(records.size()); ++section) {
        table().scrollToRowAtIndexPath({section, 0}, false);
        platform.settle();
        const std::string& record = records[static_cast<std::size_t>(section)];
        const auto row =
            std::dynamic_pointer_cast<UIArticleListTableViewCell>(table().cellForRowAtIndexPath({section, 0}));
        ASSERT_NE(row, nullptr) << record;
        const CGFloat height = row->detailTextLabel()->frame().height();
        EXPECT_TRUE(height >= 24 && height <= 120) << record;
        EXPECT_EQ(row->frame().height(), roundedHeight(height + 67)) << record;
        row->likeButtonAction();
        server->answer(record);
        post(NOTIFICATION_KEY_UPDATE, json(record));
    }
    for (const std::string& record : records) post(NOTIFICATION_KEY_NEW_ARTICLE, json(record));
    EXPECT_EQ(list->articlesArray().size(), 2 * records.size());
    while (!list->articlesArray().empty()) list->removeArticleFor({0, 0});
    EXPECT_EQ(rows(), "more");
    while (!server->calls.empty()) server->answer("[");

    for (const char* answer : {"", "[]", "{\"results\":7}", R"({"results":[1,"x",null,[],{"id":1}],"more":5})"}) {
        list->reloadInformationFromServer(false);
        server->answer(answer);
        platform.advance(1);
    }
    EXPECT_EQ(rows(), "") << "the one article of the last answer";
}

TEST_F(ArticleListControllerTest, TheOwnerWritesEditsAndRemovesArticles) {
    const auto opened = [this] {
        platform.advance(1);
        const auto editor = std::dynamic_pointer_cast<UIArticleEditViewController>(navigation->topViewController());
        const std::string id =
            editor ? recordId(editor->articleDictionary()).value_or("new") : std::string("no editor");
        navigation->popToRootViewControllerAnimated(false);
        platform.advance(1);
        return id;
    };
    showArticles({article(1)}, "/more");
    EXPECT_FALSE(list->tableViewCanEditRowAtIndexPath(table(), {0, 0}));
    EXPECT_EQ(table().cellForRowAtIndexPath({1, 0})->reuseIdentifier(), "load_more_cell_identifier");

    showArticles({article(4, "d"), article(5, "e")}, {}, Mode::owner);
    EXPECT_TRUE(list->tableViewCanEditRowAtIndexPath(table(), {0, 0}));
    const auto actions = list->tableViewEditActionsForRowAtIndexPath(table(), {1, 0});
    ASSERT_EQ(actions.size(), 2u);
    EXPECT_EQ(actions[0].title + actions[1].title, "EditDelete");
    EXPECT_EQ(actions[0].style, UITableViewRowAction::Style::normal);
    EXPECT_EQ(actions[1].style, UITableViewRowAction::Style::destructive);
    list->navigationItem().rightBarButtonItem()->press();
    EXPECT_EQ(opened(), "new");
    actions[0].handler({1, 0});
    EXPECT_EQ(opened(), "5");
    tap(table().cellForRowAtIndexPath({0, 0})->accessoryButton());
    EXPECT_EQ(opened(), "4");
    list->editArticleFor({9, 0});
    EXPECT_EQ(opened(), "no editor");

    const CGPoint middle = platform.middleOf(*table().cellForRowAtIndexPath({1, 0}));
    platform.drag(middle, {20, middle.y});
    platform.advance(1);
    server->paths.clear();
    logged();
    live({{"a swipe and a tap", [&] { platform.tapText("Delete"); }, "d", {"/article/remove?id=5"}}});
    server->user = nullptr;
    const Lines refused{"NOT login can NOT new article."};
    live({{"nobody can write", [&] { list->write_article(); }, "d", {}, refused}});
    EXPECT_EQ(opened(), "no editor");
    list->reloadInformationFromServer(false);
    EXPECT_FALSE(list->navigationItem().rightBarButtonItem()->isEnabled()) << "a reload makes the button anew";
}

}  // namespace
}  // namespace ostrel
