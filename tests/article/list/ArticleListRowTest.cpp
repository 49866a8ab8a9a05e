#include "article/list/UIArticleListTableViewCell.h"
#include "article/list/UIArticleLoadMoreTableViewCell.h"
#include "article/records/ArticleNotifications.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/uikit/screens/UIActivityViewController.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "tests/article/ArticleTest.h"

#include <algorithm>
#include <array>

namespace ostrel {
namespace {

using Row = UIArticleListTableViewCell;
using OwnerRow = UIArticleListOwnerTableViewCell;

class ArticleListRowTest : public ArticleTest {
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
    void post(const char* name, Value object) {
        NSNotificationCenter::defaultCenter().postNotification(name, object);
    }

    const std::shared_ptr<Row> row = makeRow();
};

TEST_F(ArticleListRowTest, PartsLieWhereTheRowsSizePutsThem) {
    const struct {
        std::shared_ptr<Row> row;
        CGSize size;
        CGRect text;
        CGFloat comment, share, y;
    } cases[] = {
        {makeRow(), {375, 200}, {76, 32, 269, 36}, 76 + 299 * 0.28, 76 + 299 * 0.56, 165},
        {makeRow(), {320, 88}, {76, 32, 214, 36}, 76 + 244 * 0.28, 76 + 244 * 0.56, 53},
        {makeRow(), {1000, 120}, {76, 32, 894, 36}, 76 + 924 * 0.28, 76 + 924 * 0.56, 85},
        {makeRow<OwnerRow>(), {375, 200}, {76, 32, 234, 36}, 76 + 299 * 0.28, 76 + 299 * 0.56, 165},
        {makeRow<OwnerRow>(), {1000, 120}, {76, 32, 859, 36}, 76 + 924 * 0.28, 76 + 924 * 0.56, 85},
        {makeRow(), {40, 10}, {76, 32, 0, 36}, 76 - 36 * 0.28, 76 - 36 * 0.56, -25},
    };
    for (const auto& [cell, size, text, comment, share, y] : cases) {
        cell->setFrame({{16, 500}, size});
        EXPECT_EQ(cell->authFaceImageView()->frame(), CGRect(20, 12, 56, 56));
        EXPECT_EQ(cell->authNameLabel()->frame().origin, (CGPoint{84, 12}));
        EXPECT_EQ(cell->detailTextLabel()->frame(), text) << size.width;
        EXPECT_EQ(cell->likeButton()->frame(), CGRect(76, y, 50, 30)) << size.width;
        EXPECT_NEAR(cell->commentButton()->frame().minX(), comment, 1e-9);
        EXPECT_NEAR(cell->shareButton()->frame().minX(), share, 1e-9);
        EXPECT_EQ(cell->commentButton()->frame().minY(), y);
        EXPECT_EQ(cell->shareButton()->frame().minY(), y);
    }
    EXPECT_EQ(cases[0].row->authNameLabel()->frame().width(), 375 - 84 - 10) << "the name grows with the row";
    EXPECT_EQ(cases[0].row->authNameLabel()->frame().height(), 18);
}

TEST_F(ArticleListRowTest, ANewRowHasItsPicturesAndLeavesTouchesOnItsTextToTheTable) {
    EXPECT_EQ(row->accessoryType(), UITableViewCellAccessoryType::disclosureIndicator);
    EXPECT_EQ(makeRow<OwnerRow>()->accessoryType(), UITableViewCellAccessoryType::detailDisclosureButton);
    EXPECT_FALSE(row->detailTextLabel()->isUserInteractionEnabled());
    EXPECT_EQ(row->likeButton()->currentTitle(), "--");
    EXPECT_EQ(row->authFaceImageView()->image(),
              imageInBundle(openApplicationArticleBundle(), "anonymousAvatar"));
    const auto pictures = [](const Row& of) {
        return std::array{of.likeButton()->imageForState(UIControlState::normal),
                          of.commentButton()->imageForState(UIControlState::normal),
                          of.shareButton()->imageForState(UIControlState::normal)};
    };
    const auto bundle = openFrameworkArticleBundle();
    EXPECT_EQ(pictures(*row), (std::array{imageInBundle(bundle, "like"), imageInBundle(bundle, "comment"),
                                          imageInBundle(bundle, "share")}));
    useBundles("/nowhere");
    const auto bare = makeRow();
    EXPECT_EQ(pictures(*bare), decltype(pictures(*bare)){});
    EXPECT_EQ(bare->authFaceImageView()->image(), nullptr);
}

TEST_F(ArticleListRowTest, TitleAndTextAreShownTogether) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"title":"T","text":"a\r\nb\nc"})", "T\na b c"},
        {R"({"title":"T","text":"\r\n"})", "T\n "},
        {R"({"title":"T","text":""})", "T"},
        {R"({"title":"T","text":null})", "T"},
        {R"({"title":"","text":"a\r\nb\nc"})", "a\r\nb\nc"},
        {R"({"text":"a\nb"})", "a\nb"},
        {R"({"title":2024,"text":7})", "2024\n7"},
        {"{}", ""},
    };
    for (const auto& [article, shown] : cases) {
        row->setArticleDictionary(record(article));
        EXPECT_EQ(row->detailTextLabel()->text(), shown) << article;
    }
}

TEST_F(ArticleListRowTest, TheTextIsAsHighAsMeasuredWithinItsLimits) {
    const UIFont font = UIFont::fontWithName("PingFangSC-Thin", 12);
    const CGFloat line = TextMeasurer::shared().lineHeight(font);
    ASSERT_LT(line * 1.04, 24);
    std::string text;
    for (int lines = 1; lines <= 40; ++lines) {
        text += lines == 1 ? "x" : "\\ny";
        row->setArticleDictionary(record("{\"text\":\"" + text + "\"}"));
        const CGFloat height = row->detailTextLabel()->frame().height();
        EXPECT_NEAR(height, std::clamp(lines * line * 1.04, 24.0, 120.0), 1e-6) << lines;
        EXPECT_EQ(row->constrainedHeight(), height + 32 + 35);
    }
    row->setArticleDictionary(record(R"({"text":")" + std::string(400, 'w') + "\"}"));
    const CGFloat narrow = row->detailTextLabel()->frame().height();
    row->setFrame({0, 0, 2000, 200});
    row->setArticleDictionary(row->articleDictionary());
    EXPECT_LT(row->detailTextLabel()->frame().height(), narrow) << "a wider row needs fewer lines";
    row->setArticleDictionary(record("{}"));
    EXPECT_EQ(row->constrainedHeight(), 24 + 67);
}

TEST_F(ArticleListRowTest, CountsAndTheCommentButtonFollowTheRecord) {
    const struct {
        const char *article, *liked, *comment;
        bool open;
    } cases[] = {
        {R"({"liked":0,"comment":0,"open_comment":true})", "0", "", true},
        {R"({"liked":12,"comment":1,"open_comment":1})", "12", "1", true},
        {R"({"liked":"12","comment":"34","open_comment":false})", "12", "34", false},
        {R"({"liked":-1,"comment":-1,"open_comment":0})", "-1", "", false},
        {R"({"liked":123456789012345678901234,"comment":123456789012345678901234,"open_comment":"1"})",
         "123456789012345678901234", "9223372036854775807", true},
        {R"({"liked":[],"comment":{},"open_comment":[1]})", "", "", false},
        {"{}", "", "", false},
    };
    for (const auto& [article, liked, comment, open] : cases) {
        row->setArticleDictionary(record(article));
        EXPECT_EQ(row->likeButton()->currentTitle(), liked) << article;
        EXPECT_EQ(row->commentButton()->titleForState(UIControlState::normal), comment) << article;
        EXPECT_EQ(row->commentButton()->isEnabled(), open) << article;
    }
}

TEST_F(ArticleListRowTest, TheTimeStandsBehindTheName) {
    ASSERT_EQ(NSDate::now(), NSDate::fromISO8601("2027-01-15T08:00:00Z"));
    row->setArticleDictionary(record(R"({"auth_name":"Ada","modifie_date":"2027-01-15T07:58:30Z"})"));
    EXPECT_EQ(row->timeLabel()->text(), "1 min ago");
    const CGFloat x =
        84 + TextMeasurer::shared().singleLineWidth("Ada", UIFont::fontWithName("PingFangSC-Medium", 16)) + 5;
    EXPECT_EQ(row->timeLabel()->frame(), CGRect(x, 12, 355 - x, 18));
    for (const char* article : {R"({"auth_name":"Ada"})", R"({"modify_date":"2027-01-15T07:58:30Z"})",
                                R"({"modifie_date":"yesterday"})", R"({"modifie_date":1800000000})"}) {
        row->setArticleDictionary(record(article));
        EXPECT_EQ(row->timeLabel()->text(), "") << article;
    }
    row->setArticleDictionary(record(R"({"auth_name":")" + std::string(500, 'm') + "\"}"));
    EXPECT_EQ(row->timeLabel()->frame().width(), 0) << "a long name leaves no room";
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
    EXPECT_EQ(row->authFaceImageView()->image(), anonymous)
        << "none, no picture, and another author's change nothing";
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
        const char *answer, *error;
        const char* title;
        Lines lines;
    } cases[] = {
        {R"({"success":true,"error":null,"result":"13"})", nullptr, "13", {"Liked num: 13"}},
        {R"({"success":true,"error":null,"result":14})", nullptr, "14", {"Liked num: 14"}},
        {R"({"success":false,"error":null,"result":"13"})", nullptr, "12", {}},
        {R"({"success":true,"error":"no","result":"13"})", nullptr, "12", {}},
        {R"({"success":true,"error":null,"result":"13"})", "HTTP 500", "12", {}},
        {nullptr, nullptr, "12", {}},
        {"<html>", nullptr, "12", {}},
    };
    const Dictionary article = record(R"({"id":42,"liked":12})");
    for (const auto& [answer, error, title, lines] : cases) {
        row->setArticleDictionary(article);
        tap(row->likeButton());
        EXPECT_EQ(server->paths.back(), "/article/like_article_json.html?id=42");
        server->answer(answer ? std::optional<std::string>(answer) : std::nullopt,
                       error ? std::optional<std::string>(error) : std::nullopt);
        EXPECT_EQ(row->likeButton()->currentTitle(), title) << (answer ? answer : "nothing");
        EXPECT_EQ(logged(), lines);
    }
    EXPECT_EQ(row->articleDictionary(), article) << "the record stays";

    row->likeButtonAction();
    row->setArticleDictionary(record(R"({"id":43,"liked":5})"));
    server->answer(R"({"success":true,"error":null,"result":"13"})");
    EXPECT_EQ(row->likeButton()->currentTitle(), "5") << "the row shows another article by now";
}

TEST_F(ArticleListRowTest, CommentingAsksForALogin) {
    row->setArticleDictionary(record(R"({"id":42,"open_comment":true})"));
    tap(row->commentButton());
    const auto alert = presented<UIAlertController>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->title(), "Prohibit");
    EXPECT_EQ(alert->message(), "Can't comment before login.");
    EXPECT_EQ(alert->style(), UIAlertController::Style::alert);
    ASSERT_EQ(alert->actions().size(), 2u);
    EXPECT_EQ(alert->actions()[0].title, "Login");
    EXPECT_EQ(alert->actions()[0].style, UIAlertAction::Style::destructive);
    EXPECT_EQ(alert->actions()[1].title, "Cancel");
    EXPECT_EQ(alert->actions()[1].style, UIAlertAction::Style::cancel);
    platform.advance(1);
    EXPECT_TRUE(platform.tapText("Cancel"));
    platform.advance(1);
    EXPECT_EQ(presented<UIViewController>(), nullptr);

    row->commentButtonAction();
    platform.advance(1);
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

    server->signIn();
    row->commentButtonAction();
    platform.advance(1);
    EXPECT_NE(presented<UINavigationController>(), nullptr) << "no gate for who is signed in";
    EXPECT_EQ(server->paths, Lines{}) << "nothing is sent or reloaded";
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
    const std::pair<const char*, bool> cases[] = {
        {R"({"id":42,"title":"new"})", true},
        {R"({"id":"42","title":"new"})", true},
        {R"({"id":43,"title":"new"})", false},
        {R"({"title":"new"})", false},
        {R"([{"id":42,"title":"new"}])", false},
        {"42", false},
        {"null", false},
    };
    for (const auto& [object, redrawn] : cases) {
        row->setArticleDictionary(record(R"({"id":42,"title":"old"})"));
        post(NOTIFICATION_KEY_UPDATE, json(object));
        EXPECT_EQ(row->detailTextLabel()->text(), redrawn ? "new" : "old") << object;
    }
    row->setArticleDictionary(record(R"({"title":"old"})"));
    post(NOTIFICATION_KEY_UPDATE, json(R"({"title":"new"})"));
    post(NOTIFICATION_KEY_UPDATE, {});
    EXPECT_EQ(row->detailTextLabel()->text(), "old") << "without an id no record is the same";
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

TEST_F(ArticleListRowTest, HostileRecordsAreShownWithoutHarm) {
    for (const auto& hostile : hostileRecords()) {
        row->setArticleDictionary(record(hostile));
        row->likeButtonAction();
        server->answer(hostile);
        post(NOTIFICATION_KEY_UPDATE, json(hostile));
        row->setFrame({0, 0, 300, row->constrainedHeight().value_or(0)});
        platform.advance(0);
        EXPECT_LE(row->detailTextLabel()->frame().height(), 120);
        EXPECT_GE(row->detailTextLabel()->frame().height(), 24);
    }
}

TEST_F(ArticleListRowTest, TheLoadMoreRowHasTwoLooks) {
    const auto more = make<UIArticleLoadMoreTableViewCell>(UITableViewCellStyle::defaultStyle, "more");
    EXPECT_EQ(more->textLabel()->text(), "Load more articles");
    EXPECT_EQ(more->textLabel()->textAlignment(), NSTextAlignment::center);
    EXPECT_EQ(more->label()->text(), "Loading...");
    EXPECT_EQ(more->label()->font(), UIFont::fontWithName("PingFangSC-Light", 12));
    more->setFrame({0, 0, 300, 60});
    EXPECT_EQ(more->actView()->center(), (CGPoint{150, 30}));
    EXPECT_EQ(more->label()->frame(), CGRect(168, 23, 100, 14));

    const auto expectBusy = [&](bool busy) {
        EXPECT_EQ(more->label()->alpha(), busy ? 1 : 0);
        EXPECT_EQ(more->textLabel()->alpha(), busy ? 0 : 1);
        EXPECT_EQ(more->actView()->isAnimating(), busy);
        EXPECT_EQ(more->actView()->isHidden(), !busy);
    };
    expectBusy(false);
    more->start();
    more->start();
    expectBusy(true);
    more->stop();
    expectBusy(false);

    OstrelArticleBundle = nullptr;
    const auto bare = make<UIArticleLoadMoreTableViewCell>(UITableViewCellStyle::defaultStyle, "more");
    EXPECT_EQ(bare->textLabel()->text() + bare->label()->text(), "");
}

}  // namespace
}  // namespace ostrel
