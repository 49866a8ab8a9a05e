#pragma once

#include "article/list/UIArticleListTableViewCell.h"
#include "article/list/UIArticleListTableViewController.h"
#include "article/records/ArticleNotifications.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "tests/article/ArticleTest.h"

#include <functional>
#include <utility>

namespace ostrel {

inline constexpr char allArticles[] = "/article/articles_json.html";
inline constexpr char ownArticles[] = "/article/my_articles_json.html";

inline std::string article(int id, const std::string& title = {}) {
    return "{\"id\":" + std::to_string(id) + ",\"title\":\"" + title + "\"}";
}

/// A list in a navigation controller in the window.
class ArticleListTest : public ArticleTest {
protected:
    enum class Mode { everybody, owner };

    void showList(Mode mode = Mode::everybody) {
        list = make<UIArticleListTableViewController>();
        if (mode == Mode::owner) list->setIsMySelfOnly(true);
        navigation = make<UINavigationController>(list);
        show(navigation);
    }
    /// Shows the list and answers both requests of its first appearance with `records`.
    void showArticles(const std::vector<std::string>& records, const std::string& more = {},
                      Mode mode = Mode::everybody) {
        if (mode == Mode::owner) server->signIn();
        showList(mode);
        answerReload(records, more);
    }
    /// Answers an animated reload: the request at once, and the one that the refresh control's event sends
    /// later.
    void answerReload(const std::vector<std::string>& records, const std::string& more = {}) {
        platform.advance(0.2);
        while (!server->calls.empty()) server->answer(ScriptedServer::page(records, more));
        platform.advance(1);
        server->paths.clear();
        logged();
    }
    /// The user leaves the screen and comes back after `seconds`.
    void appearAfter(double seconds) {
        list->viewWillDisappear(false);
        list->viewDidDisappear(false);
        platform.advance(seconds);
        list->viewWillAppear(false);
        list->viewDidAppear(false);
        platform.settle();
    }
    UITableView& table() { return *list->tableView(); }
    /// The titles of the rows as the table shows them, with a blank between them; "more" or "busy" for the
    /// load-more row.
    std::string rows() {
        platform.advance(1);
        std::string shown;
        for (std::int64_t section = 0; section < table().numberOfSections(); ++section) {
            if (section > 0) shown += ' ';
            const auto cell = table().cellForRowAtIndexPath({section, 0});
            if (const auto row = std::dynamic_pointer_cast<UIArticleListTableViewCell>(cell)) {
                shown += row->detailTextLabel()->text();
            } else if (const auto more = std::dynamic_pointer_cast<UIArticleLoadMoreTableViewCell>(cell)) {
                shown += more->actView()->isAnimating() ? "busy" : "more";
            }
        }
        return shown;
    }
    /// What the user or the server does, and what the list then shows, requests and logs. A second passes
    /// with each step.
    struct Step {
        const char* what;
        std::function<void()> act;
        std::string rows;
        Lines requests, log;
    };
    void live(const std::vector<Step>& steps) {
        for (const auto& [what, act, shown, requests, lines] : steps) {
            act();
            EXPECT_EQ(rows(), shown) << what;
            EXPECT_EQ(std::exchange(server->paths, {}), requests) << what;
            EXPECT_EQ(logged(), lines) << what;
        }
    }
    void tapRow(std::int64_t section) { tap(table().cellForRowAtIndexPath({section, 0})); }
    static void post(const char* name, Value object = {}) {
        NSNotificationCenter::defaultCenter().postNotification(name, std::move(object));
    }

    std::shared_ptr<UIArticleListTableViewController> list;
    std::shared_ptr<UINavigationController> navigation;
};

}  // namespace ostrel
