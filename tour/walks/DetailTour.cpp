#include "tour/walks/DetailTour.h"

#include "article/detail/UIArticleCommentViewTableViewCell.h"
#include "article/detail/UIArticleVideoTableViewCell.h"
#include "article/detail/UIArticleViewController.h"
#include "article/detail/UIArticleViewImageTableViewCell.h"
#include "article/detail/UIArticleViewTextTableViewCell.h"
#include "article/detail/UIArticleViewTitleTableViewCell.h"
#include "platform/media/AVPlayer.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/text/UITextView.h"
#include "reader/screens/ReaderTabs.h"
#include "reader/services/ReaderText.h"
#include "serverframework/HttpServerFramework.h"

#include <QClipboard>
#include <QGuiApplication>

namespace ostrel {

namespace {

constexpr int mostSwipes = 40;
/// A video starts to play in this time even on a machine that is busy with other work.
constexpr int videoMilliseconds = 15000;
constexpr char message[] = "Thank you for the rain.";
constexpr char comment[] = "It rains here too.";

}  // namespace

void DetailTour::run() {
    step("article-opens", [this] { articleOpens(); });
    step("text-is-selected", [this] { textIsSelected(); });
    step("text-is-copied", [this] { textIsCopied(); });
    step("picture-comes", [this] { pictureComes(); });
    step("film-plays", [this] { videoPlays(); });
    step("space-pauses", [this] { spacePauses(); });
    step("author-is-addressed", [this] { authorIsAddressed(); });
    step("author-gets-a-message", [this] { authorGetsAMessage(); });
    step("article-is-shared", [this] { articleIsShared(); });
    step("list-keeps-its-place", [this] { listKeepsItsPlace(); });
    step("comment-is-typed", [this] { commentIsTyped(); });
    step("comment-is-sent", [this] { commentIsSent(); });
    step("comment-is-there", [this] { commentIsThere(); });
    step("author-reads-the-message", [this] { authorReadsTheMessage(); });
}

UIArticleViewController* DetailTour::screen() {
    const auto navigation = reader_.root().allArticles().navigationController();
    return navigation ? dynamic_cast<UIArticleViewController*>(navigation->topViewController().get()) : nullptr;
}

bool DetailTour::isWhole(const UIView& view) {
    const CGRect rect = window_.rectOf(view);
    return rect.minY() >= 44 && rect.maxY() <= reader_.rootView().frame().height() - ReaderTabs::barHeight;
}

bool DetailTour::scrollUntil(const std::function<bool()>& isThere) {
    for (int swipe = 0; swipe < mostSwipes; ++swipe) {
        if (isThere()) return true;
        // Short swipes, so that no row is passed without being on screen at rest.
        const CGSize size = reader_.rootView().frame().size;
        const CGFloat x = size.width * 0.75;
        if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
            input_.wheel({x, size.height / 2}, -3);
        } else {
            input_.swipe({x, size.height * 0.7}, {x, size.height * 0.45}, 120, 120);
        }
        window_.settle();
    }
    return isThere();
}

UIArticleListTableViewCell* DetailTour::rowOf(const std::string& articleId) {
    for (auto* row : window_.all<UIArticleListTableViewCell>()) {
        if (idOf(*row) == articleId && isWhole(*row)) return row;
    }
    return nullptr;
}

void DetailTour::articleOpens() {
    const auto ids =
        database_.texts("SELECT a.id FROM articles a JOIN users u ON u.id = a.author_id WHERE u.name = ? AND "
                        "a.open_comment AND "
                        "EXISTS (SELECT 1 FROM images WHERE article_id = a.id) AND "
                        "EXISTS (SELECT 1 FROM videos WHERE article_id = a.id) ORDER BY a.id DESC LIMIT 1",
                        {server_.accounts().front().name});
    if (!check(!ids.empty(), "the samples have an article with pictures and films")) return;
    articleId_ = ids.front();
    openTab("Articles");
    const bool found = scrollUntil([this] { return rowOf(articleId_) != nullptr; });
    if (!check(found, "its row is on screen")) return;
    listOffset_ = reader_.root().allArticles().tableView()->contentOffset().y;
    const CGRect row = window_.rectOf(*rowOf(articleId_));
    press({row.minX() + 140, row.minY() + 30});
    check(window_.waitFor([&] { return screen() && !screen()->resultDict()["id"].isNull(); }), "the article has come");
    window_.settle();
    const auto title = database_.texts("SELECT title FROM articles WHERE id = ?", {articleId_});
    check(!title.empty() && window_.text(title.front()) != nullptr, "its title is on screen");
    if (!screen()) return;
    for (const auto& [table, shown] :
         {std::pair{"images", screen()->imagesArray().size()}, std::pair{"videos", screen()->videosArray().size()},
          std::pair{"comments", screen()->commentsArray().size()}}) {
        const auto stored =
            database_.number(std::string("SELECT count(*) FROM ") + table + " WHERE article_id = ?", {articleId_});
        check(static_cast<std::int64_t>(shown) == stored, std::string("all its ") + table + " are listed");
    }
}

void DetailTour::textIsSelected() {
    auto* text = window_.first<UIArticleViewTextTableViewCell>();
    if (!check(text != nullptr, "the text is on screen")) return;
    const CGRect rect = window_.rectOf(*text);
    const CGPoint word{rect.minX() + 40, rect.minY() + 16};
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.click(word);
        input_.click(word);
    } else {
        hold(word);
        check(window_.waitFor([&] { return window_.text("Copy") != nullptr; }), "a long press offers to copy");
    }
    const auto& selection = text->textTextView()->selection();
    check(selection && !selection->isEmpty(), "a word of it is selected");
}

void DetailTour::textIsCopied() {
    auto* text = window_.first<UIArticleViewTextTableViewCell>();
    if (!check(text != nullptr, "the text is on screen")) return;
    QGuiApplication::clipboard()->clear();
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.key(Qt::Key_C, "\x03", Qt::ControlModifier);
    } else {
        press(window_.text("Copy"), "Copy");
    }
    const auto copied = [] { return QGuiApplication::clipboard()->text().toStdString(); };
    check(window_.waitFor([&] { return !copied().empty() && text->text().find(copied()) != std::string::npos; }),
          "the word is on the clipboard");
    window_.settle();
    const auto* title = window_.first<UIArticleViewTitleTableViewCell>();
    if (!check(title != nullptr, "the title is on screen")) return;
    press({window_.rectOf(*title).minX() + 10, window_.centerOf(*title).y});
    check(text->textTextView()->selection()->isEmpty(), "a press elsewhere ends the selection");
}

void DetailTour::pictureComes() {
    UIArticleViewImageTableViewCell* row = nullptr;
    const bool found = scrollUntil([&] {
        row = window_.first<UIArticleViewImageTableViewCell>();
        return row && window_.rectOf(*row).maxY() <= reader_.rootView().frame().height() - ReaderTabs::barHeight;
    });
    if (!check(found, "the picture's row is on screen")) return;
    check(window_.waitFor([&] { return row->fullImageHasCompleted(); }), "the full picture is loaded");
    check(row->myImageView()->image() != nullptr, "it is shown");
}

void DetailTour::videoPlays() {
    UIArticleVideoTableViewCell* row = nullptr;
    const bool found = scrollUntil([&] {
        row = window_.first<UIArticleVideoTableViewCell>();
        return row && window_.rectOf(*row->thumbnailImageView()).maxY() <=
                          reader_.rootView().frame().height() - ReaderTabs::barHeight;
    });
    if (!check(found, "the film's row is on screen")) return;
    const CGRect rect = window_.rectOf(*row->thumbnailImageView());
    press({rect.midX(), rect.midY()});
    const auto position = [&] {
        const auto& player = row->player();
        return player && player->currentItem() ? player->currentTime().seconds() : 0;
    };
    check(window_.waitFor(
              [&] { return row->player() && row->player()->timeControlStatus() == AVPlayerTimeControlStatus::playing; },
              videoMilliseconds),
          "it plays");
    check(window_.waitFor([&] { return position() > 0.5; }, videoMilliseconds), "its time goes on");
    check(window_.waitFor([&] {
        const std::string& label = row->durationLabel()->text();
        return label.find('/') != std::string::npos && label != "0:00/0:00";
    }),
          "the label tells the time and the length");
}

void DetailTour::spacePauses() {
    auto* row = window_.first<UIArticleVideoTableViewCell>();
    if (!check(row && row->player(), "the film is on screen")) return;
    input_.key(Qt::Key_Space, " ");
    check(window_.waitFor([&] { return row->player()->timeControlStatus() == AVPlayerTimeControlStatus::paused; }),
          "the space bar pauses it");
}

void DetailTour::authorIsAddressed() {
    if (!check(screen() != nullptr, "the article is open")) return;
    input_.key(Qt::Key_Home);
    window_.settle();
    auto* title = window_.first<UIArticleViewTitleTableViewCell>();
    if (!check(title != nullptr, "the title is on screen")) return;
    hold(window_.centerOf(*title));
    check(window_.waitFor([&] { return window_.text("Touch Author") != nullptr; }), "a long press asks for a message");
    window_.settle();
    auto* field = window_.first<UITextField>();
    press(field, "the message's field");
    window_.settle();
    input_.type(message);
    check(field && window_.waitFor([&] { return field->text() == message; }), "it holds what was typed");
}

void DetailTour::authorGetsAMessage() {
    press(window_.text("Touch"), "Touch");
    check(window_.waitFor([&] {
        return database_.number("SELECT count(*) FROM notifications n JOIN articles a ON a.author_id = n.recipient_id "
                                "WHERE a.id = ? AND n.text = ?",
                                {articleId_, message}) == 1;
    }),
          "the message is in the database, for the author");
}

void DetailTour::articleIsShared() {
    if (!check(screen() != nullptr, "the article is open")) return;
    const auto& item = screen()->navigationItem().rightBarButtonItem();
    if (!check(item != nullptr, "there is a share button")) return;
    const CGFloat width = reader_.rootView().frame().width();
    press({width - 24, 22});
    check(window_.waitFor([&] { return window_.text("Copy Link") != nullptr; }), "the share sheet shows");
    window_.settle();
    input_.key(Qt::Key_Escape);
    check(window_.waitFor([&] { return window_.text("Copy Link") == nullptr; }), "Escape closes it");
}

void DetailTour::listKeepsItsPlace() {
    input_.key(Qt::Key_Escape);
    check(window_.waitFor([&] { return screen() == nullptr; }), "Escape goes back to the list");
    window_.settle();
    const CGFloat offset = reader_.root().allArticles().tableView()->contentOffset().y;
    check(std::abs(offset - listOffset_) < 1, "the list is where it was");
}

void DetailTour::commentIsTyped() {
    const bool found = scrollUntil([this] { return rowOf(articleId_) != nullptr; });
    if (!check(found, "the article's row is on screen")) return;
    commentsBefore_ = database_.number("SELECT count(*) FROM comments WHERE article_id = ?", {articleId_});
    press(rowOf(articleId_)->commentButton().get(), "its comment button");
    check(window_.waitFor([&] { return window_.text("Reply") != nullptr; }), "the composer opens");
    window_.settle();
    input_.type(comment);
    check(window_.waitFor([&] { return window_.textContaining(comment) != nullptr; }), "it holds what was typed");
}

void DetailTour::commentIsSent() {
    press(window_.text("Reply"), "Reply");
    check(window_.waitFor([&] {
        return database_.number("SELECT count(*) FROM comments WHERE article_id = ?", {articleId_}) ==
               commentsBefore_ + 1;
    }),
          "the comment is in the database");
    check(window_.waitFor([&] { return window_.text("Reply") == nullptr; }), "the composer leaves");
}

void DetailTour::commentIsThere() {
    auto* row = rowOf(articleId_);
    if (!check(row != nullptr, "the article's row is on screen")) return;
    const CGRect rect = window_.rectOf(*row);
    press({rect.minX() + 140, rect.minY() + 30});
    check(window_.waitFor([&] { return screen() && !screen()->resultDict()["id"].isNull(); }),
          "the article opens again");
    window_.settle();
    check(scrollUntil([&] { return window_.textContaining(comment) != nullptr; }), "the comment is there");
    input_.key(Qt::Key_End);
}

void DetailTour::authorReadsTheMessage() {
    input_.key(Qt::Key_Escape);
    window_.settle();
    reader_.framework().signOut();
    window_.waitFor([&] { return !reader_.framework().shareServer().currentUser(); });
    window_.settle();
    openTab("Sign In");
    check(window_.waitFor([&] { return window_.first<UITextField>() != nullptr; }), "the login screen opens");
    window_.settle();
    const auto& account = server_.accounts().front();
    signIn(account.name, account.password);
    check(window_.waitFor([&] { return reader_.framework().shareServer().currentUser() != nullptr; }),
          "the author is signed in");
    check(window_.waitFor([&] { return window_.first<UITextField>() == nullptr; }), "the login screen has left");
    window_.settle();
    openTab(account.name.c_str());
    check(window_.waitFor([&] { return window_.text(readerText("Messages")) != nullptr; }), "there are messages");
    window_.settle();
    press(window_.text(readerText("Messages")), "Messages");
    check(window_.waitFor([&] { return window_.text(message) != nullptr; }), "the author sees the message");
}

}  // namespace ostrel
