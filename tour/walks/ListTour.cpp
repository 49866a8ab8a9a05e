#include "tour/walks/ListTour.h"

#include "platform/uikit/text/UITextField.h"
#include "reader/screens/ReaderTabs.h"
#include "reader/services/ReaderText.h"
#include "serverframework/HttpServerFramework.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>

#include <algorithm>
#include <cstdio>

namespace ostrel {

namespace {

constexpr char newestIds[] = "SELECT id FROM articles ORDER BY id DESC LIMIT 20";
constexpr char newName[] = "Tour Guest";
constexpr char newPassword[] = "a long enough one";

}  // namespace

void ListTour::run() {
    step("everybodys-articles", [this] { everybodysArticles(); });
    step("like-reaches-the-database", [this] { likeReachesTheDatabase(); });
    step("like-twice-counts-once", [this] { likeTwiceCountsOnce(); });
    step("comment-needs-a-login", [this] { commentNeedsALogin(); });
    step("share-offers-the-link", [this] { shareOffersTheLink(); });
    step("load-more-pages-on", [this] { loadMorePagesOn(); });
    step("refresh-keeps-the-list", [this] { refreshKeepsTheList(); });
    step("key-refreshes", [this] { keyRefreshes(); });
    step("my-articles-ask-for-a-login", [this] { myArticlesAskForALogin(); });
    step("wrong-password-is-told", [this] { wrongPasswordIsTold(); });
    step("owner-sees-own-articles", [this] { ownerSeesOwnArticles(); });
    step("row-actions-show", [this] { rowActionsShow(); });
    step("owner-deletes-an-article", [this] { ownerDeletesAnArticle(); });
    step("signing-out-asks-again", [this] { signingOutAsksAgain(); });
    step("name-taken-is-told", [this] { nameTakenIsTold(); });
    step("new-account-is-empty", [this] { newAccountIsEmpty(); });
    step("second-user-likes", [this] { secondUserLikes(); });
    step("no-connection-is-told", [this] { noConnectionIsTold(); });
    step("server-comes-back", [this] { serverComesBack(); });
    step("window-resizes", [this] { windowResizes(); });
}

bool ListTour::listShows(const UIArticleListTableViewController& list, const std::vector<std::string>& ids) {
    const auto& articles = list.articlesArray();
    if (articles.size() != ids.size()) return false;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (articles[i]["id"].text() != ids[i]) return false;
    }
    return true;
}

void ListTour::everybodysArticles() {
    check(database_.isOpen(), "the server's database can be read");
    auto& list = reader_.root().allArticles();
    const auto ids = database_.texts(newestIds);
    check(ids.size() == 20, "the database has more than one page of articles");
    check(window_.waitFor([&] { return listShows(list, ids); }), "the first page is the newest twenty of the database");
    window_.settle();
    const auto rows = window_.all<UIArticleListTableViewCell>();
    check(rows.size() >= 3, "several rows are on screen");
    for (auto* row : rows) {
        const std::string id = idOf(*row);
        const auto author =
            database_.texts("SELECT u.name FROM articles a JOIN users u ON u.id = a.author_id WHERE a.id = ?", {id});
        check(!author.empty() && row->authNameLabel()->text() == author.front(), "article " + id + " names its author");
        check(!row->timeLabel()->text().empty(), "article " + id + " tells its age");
        check(row->authFaceImageView()->image() != nullptr, "article " + id + " has an avatar");
        const auto likes = database_.texts("SELECT count(*) FROM likes WHERE article_id = ?", {id});
        check(!likes.empty() && row->likeButton()->currentTitle() == likes.front(),
              "article " + id + " shows its likes");
        check(row->likeButton()->imageForState(UIControlState::normal) != nullptr, "the like button has its icon");
    }
    check(list.moreArticlesURLString().has_value(), "there is a further page");
}

void ListTour::likeReachesTheDatabase() {
    auto* row = topRow();
    if (!check(row != nullptr, "a whole row is on screen")) return;
    likedId_ = idOf(*row);
    const auto before = database_.number("SELECT count(*) FROM likes WHERE article_id = ?", {likedId_});
    press(row->likeButton().get(), "the like button");
    likedBefore_ = std::to_string(before + 1);
    check(window_.waitFor([&] { return row->likeButton()->currentTitle() == likedBefore_; }),
          "the button shows one like more");
    check(database_.number("SELECT count(*) FROM likes WHERE article_id = ?", {likedId_}) == before + 1,
          "the database has one like more");
}

void ListTour::likeTwiceCountsOnce() {
    auto* row = topRow();
    if (!check(row && idOf(*row) == likedId_, "the liked row is still there")) return;
    press(row->likeButton().get(), "the like button");
    TourInput::pass(300);
    check(row->likeButton()->currentTitle() == likedBefore_, "a second like of the same visitor changes nothing");
    check(database_.number("SELECT count(*) FROM likes WHERE article_id = ?", {likedId_}) == std::stoll(likedBefore_),
          "nor in the database");
}

void ListTour::commentNeedsALogin() {
    UIArticleListTableViewCell* open = nullptr;
    for (auto* row : window_.all<UIArticleListTableViewCell>()) {
        const CGRect button = window_.rectOf(*row->commentButton());
        if (row->commentButton()->isEnabled() && button.maxY() < reader_.rootView().frame().height() - 60) open = row;
    }
    if (!check(open != nullptr, "an article open for comments is on screen")) return;
    press(open->commentButton().get(), "the comment button");
    check(window_.waitFor([&] { return window_.text("Prohibit") != nullptr; }), "the alert is titled Prohibit");
    check(window_.text("Can't comment before login.") != nullptr, "it says why");
    check(window_.text("Login") != nullptr, "it offers the login");
    window_.settle();
    savePicture("alert.png");
    press(window_.text("Cancel"), "Cancel");
    check(window_.waitFor([&] { return window_.text("Prohibit") == nullptr; }), "Cancel closes it");
}

void ListTour::shareOffersTheLink() {
    auto* row = topRow();
    if (!check(row != nullptr, "a whole row is on screen")) return;
    const std::string url(row->articleDictionary()["url"].string());
    QGuiApplication::clipboard()->setText("before");
    press(row->shareButton().get(), "the share button");
    check(window_.waitFor([&] { return window_.text("Copy Link") != nullptr; }),
          "the share sheet offers to copy the link");
    check(window_.text("Open in Browser") != nullptr, "and to open it in the browser");
    check(window_.text("Send by Mail") != nullptr, "and to send it by mail");
    window_.settle();
    savePicture("share.png");
    press(window_.text("Copy Link"), "Copy Link");
    check(window_.waitFor([&] { return QGuiApplication::clipboard()->text().toStdString() == url; }),
          "the clipboard holds the article's address");
    check(window_.waitFor([&] { return window_.text("Copy Link") == nullptr; }), "the sheet leaves");
}

void ListTour::loadMorePagesOn() {
    auto& list = reader_.root().allArticles();
    for (int i = 0; i < 40 && !window_.first<UIArticleLoadMoreTableViewCell>(); ++i) fling();
    window_.settle();
    scrollDown();
    auto* more = window_.first<UIArticleLoadMoreTableViewCell>();
    press(more, "the row that loads more");
    check(window_.waitFor([&] { return list.articlesArray().size() == 40; }), "a second page is appended");
    const auto ids = database_.texts("SELECT id FROM articles ORDER BY id DESC LIMIT 40");
    check(listShows(list, ids), "the list holds the newest forty of the database, each once");
    window_.settle();
}

void ListTour::refreshKeepsTheList() {
    auto& list = reader_.root().allArticles();
    list.tableView()->stopScrolling();
    input_.key(Qt::Key_Home);
    window_.settle();
    check(list.tableView()->contentOffset().y <= 0.5, "the Home key leads to the beginning");
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        check(list.refreshControl() == nullptr, "there is no refresh control on this idiom");
        return;
    }
    const CGSize size = reader_.rootView().frame().size;
    input_.swipe({size.width * 0.6, 160}, {size.width * 0.6, 560}, 250, 120);
    check(window_.waitFor([&] { return list.articlesArray().size() == 20; }), "pulling loads the first page again");
    check(window_.waitFor([&] { return list.refreshControl() && !list.refreshControl()->isRefreshing(); }),
          "the wheel stops");
    window_.settle();
    check(std::abs(list.tableView()->contentOffset().y) < 0.5, "the list rests at its beginning");
}

void ListTour::keyRefreshes() {
    auto& list = reader_.root().allArticles();
    const auto before = list.lastLoadDate();
    input_.key(Qt::Key_F, "f");
    check(window_.waitFor([&] { return list.lastLoadDate() > before; }), "the F key loads the first page again");
    check(window_.waitFor([&] { return list.articlesArray().size() == 20; }), "which has twenty articles");
}

void ListTour::myArticlesAskForALogin() {
    openTab("My Articles");
    check(window_.waitFor([&] { return window_.textContaining("Share your own articles") != nullptr; }),
          "the prompt says what the login is for");
    check(window_.first<UIArticleListTableViewCell>() == nullptr, "no articles are shown");
    check(!reader_.root().myArticles().tableView()->isScrollEnabled(), "there is nothing to scroll");
}

void ListTour::wrongPasswordIsTold() {
    UIView* button = window_.find([](UIView& view) {
        const auto* candidate = dynamic_cast<UIButton*>(&view);
        return candidate && candidate->frame().size == CGSize{220, 100};
    });
    press(button, "the prompt's button");
    check(window_.waitFor([&] { return window_.first<UITextField>() != nullptr; }), "the login screen opens");
    window_.settle();
    savePicture("login.png");
    if (!check(!server_.accounts().empty(), "the server has told its sample accounts")) return;
    signIn(server_.accounts().front().name, "not the password");
    check(window_.waitFor([&] { return window_.text("The name or the password is wrong.") != nullptr; }),
          "a wrong password is told");
    check(reader_.framework().shareServer().currentUser() == nullptr, "nobody is signed in");
}

void ListTour::ownerSeesOwnArticles() {
    if (!check(!server_.accounts().empty(), "the server has told its sample accounts")) return;
    const auto& account = server_.accounts().front();
    fill("Password", account.password);
    input_.key(Qt::Key_Return, "\r");
    auto& list = reader_.root().myArticles();
    const auto ids = database_.texts("SELECT a.id FROM articles a JOIN users u ON u.id = a.author_id WHERE "
                                     "u.name = ? ORDER BY a.id DESC LIMIT 20",
                                     {account.name});
    check(!ids.empty(), "the account has articles");
    check(window_.waitFor([&] { return listShows(list, ids); }), "the list shows exactly the account's own articles");
    check(window_.waitFor([&] { return window_.first<UITextField>() == nullptr; }), "the login screen has left");
    check(window_.waitFor([&] { return window_.text(account.name) != nullptr; }), "the account's name is shown");
    check(list.navigationItem().rightBarButtonItem() && list.navigationItem().rightBarButtonItem()->isEnabled(),
          "the add button is enabled");
    window_.waitFor([&] { return !list.refreshControl() || !list.refreshControl()->isRefreshing(); });
    // The list is loaded once more when the login screen has left, and a reload would close the buttons of a row.
    TourInput::pass(500);
}

void ListTour::rowActionsShow() {
    auto* row = topRow();
    if (!check(row != nullptr, "a whole row is on screen")) return;
    deletedId_ = idOf(*row);
    const CGRect rect = window_.rectOf(*row);
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.click({rect.midX(), rect.midY()}, Qt::RightButton);
    } else {
        input_.swipe({rect.maxX() - 60, rect.midY()}, {rect.minX() + 60, rect.midY()}, 160, 60);
    }
    check(window_.waitFor([&] { return window_.text("Delete") != nullptr; }), "Delete is offered");
    check(window_.text("Edit") != nullptr, "Edit is offered");
}

void ListTour::ownerDeletesAnArticle() {
    auto& list = reader_.root().myArticles();
    const auto before = list.articlesArray().size();
    press(window_.text("Delete"), "Delete");
    check(window_.waitFor([&] { return list.articlesArray().size() == before - 1; }), "the row leaves at once");
    check(window_.waitFor(
              [&] { return database_.number("SELECT count(*) FROM articles WHERE id = ?", {deletedId_}) == 0; }),
          "the article has left the database");
    check(database_.number("SELECT count(*) FROM likes WHERE article_id = ?", {deletedId_}) == 0, "its likes too");
}

void ListTour::signingOutAsksAgain() {
    openTab(server_.accounts().front().name.c_str());
    check(window_.waitFor([&] { return window_.text("Sign Out") != nullptr; }), "the account offers to sign out");
    window_.settle();
    savePicture("account.png");
    press(window_.text("Sign Out"), "Sign Out");
    check(window_.waitFor([&] { return reader_.framework().shareServer().currentUser() == nullptr; }),
          "nobody is signed in");
    check(window_.waitFor([&] { return window_.textContaining("Share your own articles") != nullptr; }),
          "the prompt is back");
    check(reader_.root().myArticles().articlesArray().empty(), "the list is empty");
    check(window_.waitFor([&] { return database_.number("SELECT count(*) FROM sessions") == 0; }),
          "the session is gone from the database");
}

void ListTour::nameTakenIsTold() {
    openTab("Sign In");
    check(window_.waitFor([&] { return window_.first<UITextField>() != nullptr; }), "the login screen opens");
    window_.settle();
    press(window_.text("Create Account"), "Create Account");
    window_.settle();
    signIn(server_.accounts().front().name, newPassword);
    check(window_.waitFor([&] { return window_.text("The name is taken.") != nullptr; }), "a taken name is told");
}

void ListTour::newAccountIsEmpty() {
    fill("Name", newName);
    fill("Password", newPassword);
    input_.key(Qt::Key_Return, "\r");
    check(window_.waitFor([&] { return reader_.framework().shareServer().currentUser() != nullptr; }),
          "the account is made and signed in");
    check(database_.number("SELECT count(*) FROM users WHERE name = ?", {newName}) == 1,
          "the database has the account");
    check(database_.number("SELECT count(*) FROM users WHERE password_hash LIKE '$argon2id$%' AND name = ?",
                           {newName}) == 1,
          "its password is kept as an argon2id hash");
    check(window_.waitFor([&] { return window_.first<UITextField>() == nullptr; }), "the login screen leaves");
    window_.settle();
    check(reader_.root().myArticles().articlesArray().empty(), "a new account has no articles");
    check(window_.textContaining("Share your own articles") == nullptr, "the prompt has left");
}

void ListTour::secondUserLikes() {
    openTab("Articles");
    window_.settle();
    auto* row = topRow();
    if (!check(row != nullptr, "a whole row is on screen")) return;
    const std::string id = idOf(*row);
    const auto before = database_.number("SELECT count(*) FROM likes WHERE article_id = ?", {id});
    press(row->likeButton().get(), "the like button");
    check(window_.waitFor(
              [&] { return database_.number("SELECT count(*) FROM likes WHERE article_id = ?", {id}) == before + 1; }),
          "a second user's like is counted too");
    check(window_.waitFor([&] { return row->likeButton()->currentTitle() == std::to_string(before + 1); }),
          "and shown");
}

void ListTour::noConnectionIsTold() {
    const auto shown = reader_.root().allArticles().articlesArray().size();
    server_.stop();
    input_.key(Qt::Key_F, "f");
    check(window_.waitFor([&] { return window_.textContaining("The server cannot be reached") != nullptr; }, 15000),
          "a lost server is told");
    check(reader_.root().allArticles().articlesArray().size() == shown, "what was on screen stays");
}

void ListTour::serverComesBack() {
    std::string error;
    check(server_.restartOnSamePort(&error),
          "the server starts again" + (error.empty() ? std::string() : ": " + error));
    auto& list = reader_.root().allArticles();
    const auto ids = database_.texts(newestIds);
    input_.key(Qt::Key_F, "f");
    check(window_.waitFor([&] { return listShows(list, ids); }), "the list is loaded again");
    window_.waitFor([&] { return window_.textContaining("cannot be reached") == nullptr; }, 8000);
    check(window_.textContaining("cannot be reached") == nullptr, "the notice has left");
}

void ListTour::windowResizes() {
    const QSize before = reader_.window().size();
    const QSize turned = options_.reader.idiom == UIUserInterfaceIdiom::phone
                             ? before.transposed()
                             : QSize(before.width() * 3 / 4, before.height());
    reader_.window().resize(turned);
    check(window_.waitFor([&] { return static_cast<int>(reader_.rootView().frame().width()) == turned.width(); }),
          "the views follow the window");
    window_.settle();
    for (auto* row : window_.all<UIArticleListTableViewCell>()) {
        const CGRect rect = window_.rectOf(*row);
        check(rect.minX() >= 0 && rect.maxX() <= turned.width(), "rows fit the new width");
        break;
    }
    check(!window_.all<UIArticleListTableViewCell>().empty(), "rows are on screen");
    savePicture("turned.png");
    reader_.window().resize(before);
    check(window_.waitFor([&] { return static_cast<int>(reader_.rootView().frame().width()) == before.width(); }),
          "and back");
}

}  // namespace ostrel
