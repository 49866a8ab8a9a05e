#include "article/detail/UICommentViewController.h"
#include "article/list/ArticleListRowLayout.h"
#include "platform/uikit/screens/UIActivityViewController.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "tests/article/list/ArticleListTest.h"

#include <array>

namespace ostrel {
namespace {

using Row = UIArticleListTableViewCell;
using OwnerRow = UIArticleListOwnerTableViewCell;
using Layout = ArticleListRowLayout;

class ArticleListRowTest : public ArticleListTest {
protected:
    ArticleListRowTest() {
        loadOstrelArticleBundle();
        auto root = make<UIViewController>();
        root->view()->addSubview(row);
        row->setFrame({10, 100, 355, 200});
        show(root);
    }
    template <class Kind = Row>
    static std::shared_ptr<Kind> makeRow() {
        return make<Kind>(UITableViewCellStyle::subtitle, "row");
    }

    const std::shared_ptr<Row> row = makeRow();
};

TEST_F(ArticleListRowTest, PartsStandWhereTheLayoutPutsThem) {
    auto& measurer = TextMeasurer::shared();
    const UIFont font = UIFont::fontWithName("PingFangSC-Thin", 12);
    const CGFloat nameWidth = measurer.singleLineWidth("Ada", UIFont::fontWithName("PingFangSC-Medium", 16));
    const std::string text(150, 'w');
    const std::pair<std::shared_ptr<Row>, CGFloat> cells[] = {{makeRow(), Layout::plainAccessoryRoom},
                                                              {makeRow<OwnerRow>(), Layout::ownersAccessoryRoom}};
    for (const auto& [cell, room] : cells) {
        CGFloat height = 36, name = 0;
        for (const CGSize size : {CGSize{375, 200}, CGSize{700, 120}}) {
            const auto expectFrames = [&, shown = cell] {
                const auto frames =
                    Layout::make(size, {.accessoryRoom = room, .nameWidth = name, .textHeight = height});
                EXPECT_EQ(shown->authFaceImageView()->frame(), frames.face);
                EXPECT_EQ(shown->authNameLabel()->frame(), frames.name);
                EXPECT_EQ(shown->detailTextLabel()->frame(), frames.text);
                EXPECT_EQ(shown->timeLabel()->frame(), frames.time);
                EXPECT_EQ(shown->likeButton()->frame(), frames.like);
                EXPECT_EQ(shown->commentButton()->frame(), frames.comment);
                EXPECT_EQ(shown->shareButton()->frame(), frames.share);
                EXPECT_EQ(shown->constrainedHeight(), height + 67);
            };
            cell->setFrame({{16, 500}, size});
            expectFrames();
            cell->setArticleDictionary(record(R"({"auth_name":"Ada","text":")" + text + "\"}"));
            name = nameWidth;
            height =
                Layout::shownTextHeight(measurer.measure(text, font, Layout::textWidth(size.width, room)).size.height);
            expectFrames();
        }
    }
}

TEST_F(ArticleListRowTest, ANewRowHasItsPicturesAndLeavesTouchesOnItsTextToTheTable) {
    EXPECT_EQ(row->accessoryType(), UITableViewCellAccessoryType::disclosureIndicator);
    EXPECT_EQ(makeRow<OwnerRow>()->accessoryType(), UITableViewCellAccessoryType::detailDisclosureButton);
    EXPECT_FALSE(row->detailTextLabel()->isUserInteractionEnabled());
    EXPECT_EQ(row->likeButton()->currentTitle(), "--");
    const auto pictures = [](const Row& of) {
        const auto normal = UIControlState::normal;
        return std::array{of.authFaceImageView()->image(), of.likeButton()->imageForState(normal),
                          of.commentButton()->imageForState(normal), of.shareButton()->imageForState(normal)};
    };
    const auto bundle = openFrameworkArticleBundle();
    EXPECT_EQ(pictures(*row), (std::array{imageInBundle(openApplicationArticleBundle(), "anonymousAvatar"),
                                          imageInBundle(bundle, "like"), imageInBundle(bundle, "comment"),
                                          imageInBundle(bundle, "share")}));
    useBundles("/nowhere");
    EXPECT_EQ(pictures(*makeRow()), decltype(pictures(*row)){});
}

TEST_F(ArticleListRowTest, TextCountsAndTimeFollowTheRecord) {
    ASSERT_EQ(NSDate::now(), NSDate::fromISO8601("2027-01-15T08:00:00Z"));
    const struct {
        const char *article, *text, *liked, *comment;
        bool open;
    } cases[] = {
        {R"({"title":"T","text":"a\r\nb\nc","liked":0,"comment":0,"open_comment":true})", "T\na b c", "0", "", true},
        {R"({"title":"T","text":"\r\n","liked":12,"comment":1,"open_comment":1})", "T\n ", "12", "1", true},
        {R"({"title":"T","text":"","liked":"12","comment":"34","open_comment":false})", "T", "12", "34", false},
        {R"({"title":"T","text":null,"liked":-1,"comment":-1,"open_comment":0})", "T", "-1", "", false},
        {R"({"title":"","text":"a\r\nb\nc","liked":[],"comment":{},"open_comment":[1]})", "a\r\nb\nc", "", "", false},
        {R"({"title":2024,"text":7,"comment":123456789012345678901234,"open_comment":"1"})", "2024\n7", "",
         "9223372036854775807", true},
        {R"({"text":"a\nb","liked":123456789012345678901234})", "a\nb", "123456789012345678901234", "", false},
        {"{}", "", "", "", false},
    };
    for (const auto& [article, text, liked, comment, open] : cases) {
        row->setArticleDictionary(record(article));
        EXPECT_EQ(row->detailTextLabel()->text(), text) << article;
        EXPECT_EQ(row->likeButton()->currentTitle(), liked) << article;
        EXPECT_EQ(row->commentButton()->titleForState(UIControlState::normal), comment) << article;
        EXPECT_EQ(row->commentButton()->isEnabled(), open) << article;
    }
    const std::pair<const char*, const char*> times[] = {
        {R"({"modifie_date":"2027-01-15T07:58:30Z"})", "1 min ago"},
        {R"({"auth_name":"Ada"})", ""},
        {R"({"modify_date":"2027-01-15T07:58:30Z"})", ""},
        {R"({"modifie_date":"yesterday"})", ""},
        {R"({"modifie_date":1800000000})", ""},
    };
    for (const auto& [article, time] : times) {
        row->setArticleDictionary(record(article));
        EXPECT_EQ(row->timeLabel()->text(), time) << article;
    }
}

TEST_F(ArticleListRowTest, TheAvatarIsAskedForByTheAuthorsNumber) {
    for (const char* article :
         {R"({"auth_id":7})", R"({"auth_id":"8"})", "{}", R"({"auth_id":null})", R"({"auth_id":1e300})"}) {
        row->setArticleDictionary(record(article));
    }
    EXPECT_EQ(server->faces, (Lines{"7", "8", "0", "0", "9223372036854775807"}));

    const auto anonymous = row->authFaceImageView()->image();
    const auto picture = OstrelArticleBundle->pathForResource("loading", "png");
    const Data face = Data::mapFile(*picture);
    row->setArticleDictionary(record(R"({"auth_id":3})"));
    server->faceHandlers["3"][0](Data());
    server->faceHandlers["3"][0](Data::copy("<html>"));
    server->faceHandlers["7"][0](face);
    EXPECT_EQ(row->authFaceImageView()->image(), anonymous) << "none, no picture, and another author's change nothing";
    server->faceHandlers["3"][0](face);
    ASSERT_NE(row->authFaceImageView()->image(), anonymous);
    EXPECT_EQ(row->authFaceImageView()->image()->representation(1).data.view(), face.view());
    row->setArticleDictionary(record(R"({"auth_id":"3","title":"x"})"));
    server->faceHandlers["3"][1](Data());
    EXPECT_NE(row->authFaceImageView()->image(), anonymous) << "none leaves what is there";
    row->setArticleDictionary(record(R"({"auth_id":4})"));
    EXPECT_EQ(row->authFaceImageView()->image(), anonymous) << "but never shows another author's";
}

TEST_F(ArticleListRowTest, ALikeShowsTheNewCountWhenItSucceeded) {
    const struct {
        const char *answer, *title;
        Lines lines;
    } cases[] = {
        {R"({"success":true,"error":null,"result":"13"})", "13", {"Liked num: 13"}},
        {R"({"success":true,"error":null,"result":14})", "14", {"Liked num: 14"}},
        {R"({"success":false,"error":null,"result":"13"})", "12", {}},
        {"<html>", "12", {}},
    };
    const Dictionary article = record(R"({"id":42,"liked":12})");
    for (const auto& [answer, title, lines] : cases) {
        row->setArticleDictionary(article);
        tap(row->likeButton());
        EXPECT_EQ(server->paths.back(), "/article/like_article_json.html?id=42");
        server->answer(answer);
        EXPECT_EQ(row->likeButton()->currentTitle(), title) << answer;
        EXPECT_EQ(logged(), lines);
    }
    EXPECT_EQ(row->articleDictionary(), article) << "the record stays";

    row->likeButtonAction();
    row->setArticleDictionary(record(R"({"id":43,"liked":5})"));
    server->answer(cases[0].answer);
    EXPECT_EQ(row->likeButton()->currentTitle(), "5") << "the row shows another article by now";
}

TEST_F(ArticleListRowTest, CommentingOpensTheComposerForWhoIsSignedIn) {
    row->setArticleDictionary(record(R"({"id":42,"open_comment":true,"comment":2})"));
    const auto present = [this](const std::shared_ptr<UIButton>& button) {
        tap(button);
        platform.advance(1);
    };
    present(row->commentButton());
    const auto alert = presented<UIAlertController>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->title() + alert->message(), "ProhibitCan't comment before login.");
    EXPECT_EQ(alert->style(), UIAlertController::Style::alert);
    ASSERT_EQ(alert->actions().size(), 2u);
    EXPECT_EQ(alert->actions()[0].style, UIAlertAction::Style::destructive);
    EXPECT_EQ(alert->actions()[1].style, UIAlertAction::Style::cancel);
    EXPECT_TRUE(platform.tapText("Cancel"));
    platform.advance(1);
    EXPECT_EQ(presented<UIViewController>(), nullptr);

    present(row->commentButton());
    EXPECT_TRUE(platform.tapText("Login"));
    platform.advance(1);
    const auto login = presented<UINavigationController>();
    ASSERT_NE(login, nullptr);
    EXPECT_EQ(login->topViewController(), server->loginScreen);
    EXPECT_EQ(login->modalPresentationStyle, UIModalPresentationStyle::overFullScreen);
    const auto user = std::make_shared<OstrelServerUserObject>();
    server->login(false, user, "wrong");
    server->login(true, nullptr, "");
    platform.advance(1);
    EXPECT_EQ(presented<UINavigationController>(), login) << "an unsuccessful login stays";
    server->login(true, user, "");
    platform.advance(1);
    EXPECT_EQ(presented<UINavigationController>(), nullptr);
    EXPECT_EQ(server->paths, Lines{}) << "nothing is sent or reloaded";

    server->signIn();
    for (const char* id : {"42", "\"42\""}) {
        row->setArticleDictionary(record(R"({"open_comment":true,"comment":2,"id":)" + std::string(id) + "}"));
        present(row->commentButton());
        const auto stack = presented<UINavigationController>();
        ASSERT_NE(stack, nullptr);
        EXPECT_EQ(stack->modalPresentationStyle, UIModalPresentationStyle::fullScreen);
        const auto composer = std::dynamic_pointer_cast<UICommentViewController>(stack->topViewController());
        ASSERT_NE(composer, nullptr);
        EXPECT_EQ(composer->article_id(), "42") << id;
        composer->comment();
        platform.advance(1);
        EXPECT_EQ(row->commentButton()->currentTitle(), "2") << "the count stays as the record has it";
    }
}

TEST_F(ArticleListRowTest, SharingPresentsASheetAnchoredByTheIdiom) {
    for (const char* article : {"{}", R"({"url":""})", R"({"url":null})", R"({"url":[]})"}) {
        row->setArticleDictionary(record(article));
        row->shareButtonAction();
        EXPECT_EQ(logged(), Lines{"share url is nil"}) << article;
        EXPECT_EQ(presented<UIViewController>(), nullptr) << article;
    }
    row->setArticleDictionary(record(R"({"url":"http://127.0.0.1/article/42"})"));
    const CGRect inRow = row->shareButton()->frame();
    const struct {
        UIUserInterfaceIdiom idiom;
        std::shared_ptr<UIView> source;
        CGRect rect;
    } cases[] = {{UIUserInterfaceIdiom::phone, nullptr, {}},
                 {UIUserInterfaceIdiom::pad, row->shareButton(), inRow.offsetBy(10, 100)},
                 {UIUserInterfaceIdiom::mac, row, inRow}};
    for (const auto& [idiom, source, rect] : cases) {
        useIdiom(idiom);
        tap(row->shareButton());
        const auto sheet = presented<UIActivityViewController>();
        ASSERT_NE(sheet, nullptr);
        EXPECT_EQ(sheet->url(), "http://127.0.0.1/article/42");
        EXPECT_EQ(sheet->popoverPresentationController.sourceView.lock(), source);
        EXPECT_EQ(sheet->popoverPresentationController.sourceRect, rect);
        sheet->dismissViewControllerAnimated(false);
        platform.advance(1);
    }
}

TEST_F(ArticleListRowTest, AnUpdateOfTheSameArticleRedrawsTheRow) {
    const struct {
        const char *shown, *object;
        bool isRedrawn;
    } cases[] = {
        {R"({"id":42})", R"({"id":42,"title":"new"})", true},
        {R"({"id":42})", R"({"id":"42","title":"new"})", true},
        {R"({"id":42})", R"({"id":43,"title":"new"})", false},
        {R"({"id":42})", R"([{"id":42,"title":"new"}])", false},
        {R"({"id":42})", "null", false},
        {R"({"title":""})", R"({"title":"new"})", false},
    };
    for (const auto& [shown, object, isRedrawn] : cases) {
        row->setArticleDictionary(record(shown));
        post(NOTIFICATION_KEY_UPDATE, json(object));
        EXPECT_EQ(row->detailTextLabel()->text(), isRedrawn ? "new" : "") << object;
    }
}

TEST_F(ArticleListRowTest, ARowThatGoesLeavesNoObserverAndItsAnswersTouchNothing) {
    const auto observers = NSNotificationCenter::defaultCenter().observerCount();
    auto gone = makeRow<OwnerRow>();
    EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers + 1);
    gone->setArticleDictionary(record(R"({"id":1,"auth_id":5})"));
    gone->likeButtonAction();
    gone->loginNow();
    platform.advance(1);
    const std::weak_ptr<UIView> weak = gone;
    gone.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers);
    server->faceHandlers["5"][0](Data::copy("x"));
    server->answer(R"({"success":true,"error":null,"result":"2"})");
    server->login(true, std::make_shared<OstrelServerUserObject>(), "");
    EXPECT_EQ(logged(), Lines{"Liked num: 2"});
}

TEST_F(ArticleListRowTest, TheLoadMoreRowHasTwoLooks) {
    const auto make = [] {
        return ostrel::make<UIArticleLoadMoreTableViewCell>(UITableViewCellStyle::defaultStyle, "more");
    };
    const auto more = make();
    EXPECT_EQ(more->textLabel()->text() + more->label()->text(), "Load more articlesLoading...");
    EXPECT_EQ(more->textLabel()->textAlignment(), NSTextAlignment::center);
    EXPECT_EQ(more->label()->font(), UIFont::fontWithName("PingFangSC-Light", 12));
    more->setFrame({0, 0, 300, 60});
    EXPECT_EQ(more->actView()->center(), (CGPoint{150, 30}));
    EXPECT_EQ(more->label()->frame(), CGRect(168, 23, 100, 14));
    const auto expectBusy = [&](bool busy) {
        EXPECT_EQ(more->label()->alpha(), busy ? 1 : 0);
        EXPECT_EQ(more->textLabel()->alpha(), busy ? 0 : 1);
        EXPECT_EQ(more->actView()->isAnimating(), busy);
    };
    expectBusy(false);
    for (int i = 0; i < 2; ++i) more->start();
    expectBusy(true);
    more->stop();
    expectBusy(false);
    OstrelArticleBundle = nullptr;
    EXPECT_EQ(make()->textLabel()->text() + make()->label()->text(), "");
}

}  // namespace
}  // namespace ostrel
