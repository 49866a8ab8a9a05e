#include "article/detail/UICommentViewController.h"
#include "article/server/ArticleRequest.h"
#include "tests/article/detail/ArticleDetailTest.h"

namespace ostrel {
namespace {

using CommentRow = UIArticleCommentViewTableViewCell;

TEST_F(ArticleDetailTest, ACommentRowIsAsHighAsItsText) {
    const auto row = make<CommentRow>(UITableViewCellStyle::subtitle, "comment");
    const UIFont font = UIFont::fontWithName("PingFangSC-Thin", 12);
    EXPECT_EQ(row->authNameLabel()->font(), UIFont::fontWithName("PingFangSC-Medium", 16));
    EXPECT_EQ(row->timeLabel()->font(), UIFont::fontWithName("PingFangSC-Regular", 10));
    EXPECT_EQ(row->timeLabel()->textColor(), (UIColor{0.34f, 0.38f, 0.45f, 1}));
    EXPECT_EQ(row->timeLabel()->frame(), CGRect(0, 0, 150, 18));
    EXPECT_EQ(row->textLabel()->font(), font);
    EXPECT_EQ(row->textLabel()->numberOfLines(), 0);
    EXPECT_EQ(row->textLabel()->frame(), CGRect(84, 32, row->frame().width() - 94, 36));

    row->setFrame({0, 0, 375, 44});
    EXPECT_EQ(row->constrainedHeight(), 36 + 37);
    EXPECT_EQ(row->authFaceImageView()->frame(), CGRect(20, 12, 56, 56));
    EXPECT_EQ(row->authNameLabel()->frame(), CGRect(84, 12, 281, 18));
    for (const std::string& text : {std::string(), std::string("Fine."), std::string(400, 'w')}) {
        row->setCommentDictionary(record(R"({"text":")" + text + "\"}"));
        const CGFloat measured = TextMeasurer::shared().measure(text, font, 281).size.height;
        const CGFloat height = std::max(30.0f, static_cast<float>(measured));
        EXPECT_EQ(row->textLabel()->frame(), CGRect(84, 32, 281, height)) << text.size();
        EXPECT_EQ(row->constrainedHeight(), height + 37);
    }
    EXPECT_GT(row->textLabel()->frame().height(), 30);
}

TEST_F(ArticleDetailTest, ACommentRowKeepsWhatTheNextRecordDoesNotSay) {
    ASSERT_EQ(NSDate::now(), NSDate::fromISO8601("2027-01-15T08:00:00Z"));
    const auto row = make<CommentRow>(UITableViewCellStyle::subtitle, "comment");
    row->setCommentDictionary(
        record(R"({"auth_name":"Ada","auth_id":3,"date":"2027-01-15T07:58:30Z","text":"Fine."})"));
    const CGFloat name = TextMeasurer::shared().singleLineWidth("Ada", row->authNameLabel()->font());
    EXPECT_EQ(row->timeLabel()->text(), "1 min ago");
    EXPECT_EQ(row->timeLabel()->superview(), row.get()) << "the time is shown";
    EXPECT_EQ(row->timeLabel()->frame(), CGRect(84 + name + 5, 13, 120, 14));
    EXPECT_EQ(row->accessibility().label, "Ada, 1 min ago, Fine.");
    const auto anonymous = row->authFaceImageView()->image();
    ASSERT_NE(anonymous, nullptr);
    server->faceHandlers["3"][0](Data());
    EXPECT_EQ(row->authFaceImageView()->image(), anonymous);
    server->faceHandlers["3"][0](picture());
    const auto face = row->authFaceImageView()->image();
    EXPECT_EQ(shownBytes(*row->authFaceImageView()), picture().view());

    row->setCommentDictionary(record(R"({"auth_name":"Bo","auth_id":"4","text":"Yes."})"));
    EXPECT_EQ(row->timeLabel()->text(), "1 min ago") << "no date: the time of the record before";
    EXPECT_EQ(row->authFaceImageView()->image(), face) << "until the next one comes";
    EXPECT_EQ(server->faces, (Lines{"3", "4"}));
    server->faceHandlers["3"][0](picture("anonymousAvatar"));
    EXPECT_EQ(row->authFaceImageView()->image(), face) << "too late: another person's comment";
    row->setCommentDictionary(record(R"({"date":"yesterday"})"));
    EXPECT_EQ(row->timeLabel()->text(), "") << "no date at all";
}

/// The composer over a plain screen, as the list presents it.
class CommentComposerTest : public ArticleDetailTest {
protected:
    void showComposer(const std::string& id = "42") {
        auto root = make<UIViewController>();
        show(root);
        composer = make<UICommentViewController>();
        composer->setArticle_id(id);
        auto stack = make<UINavigationController>(composer);
        stack->modalPresentationStyle = UIModalPresentationStyle::fullScreen;
        root->presentViewController(stack, true);
        platform.advance(1);
    }
    bool canReply() { return composer->navigationItem().rightBarButtonItem()->isEnabled(); }
    bool isOpen() { return presented<UIViewController>() != nullptr; }

    std::shared_ptr<UICommentViewController> composer;
};

TEST_F(CommentComposerTest, ReplyIsEnabledExactlyWhileThereIsText) {
    showComposer();
    const auto& text = *composer->replyTextView();
    const CGSize view = composer->view()->frame().size;
    EXPECT_EQ(text.frame(), CGRect(5, 10, view.width - 10, view.height));
    EXPECT_EQ(text.font(), UIFont::fontWithName("PingFangSC-Light", 16));
    EXPECT_EQ(composer->view()->backgroundColor(), UIColor::white());
    const auto &reply = *composer->navigationItem().rightBarButtonItem(),
               &cancel = *composer->navigationItem().leftBarButtonItem();
    EXPECT_EQ(reply.title() + cancel.title(), "ReplyCancel");
    EXPECT_EQ(reply.style(), UIBarButtonItem::Style::done);
    EXPECT_EQ(cancel.style(), UIBarButtonItem::Style::plain);
    EXPECT_TRUE(text.isFirstResponder());
    EXPECT_FALSE(canReply());
    const std::pair<const char*, bool> texts[] = {{"a", true}, {"", false}, {"  ", true}, {"\n", true}, {"", false}};
    for (const auto& [typed, enabled] : texts) {
        EXPECT_TRUE(platform.typeOver(typed));
        EXPECT_EQ(canReply(), enabled) << typed;
    }
    platform.window().setSize({667, 375});
    platform.settle();
    EXPECT_EQ(text.frame().width(), 657);
}

TEST_F(CommentComposerTest, ReplySendsAndClosesWhateverTheServerSays) {
    const std::string file = home.path() + articleErrorFile;
    const struct {
        std::optional<std::string> answer, error;
        Lines lines;
        std::string left;
    } cases[] = {
        {R"({"success":true,"error":null,"result":"3"})", {}, {"Comment count is 3 now."}, ""},
        {R"({"success":false,"error":"Closed."})", {}, {"comment error:Closed."}, ""},
        {"<html>500</html>", "HTTP 500 Internal Server Error", {}, "HTTP 500 Internal Server Error"},
    };
    for (const auto& [answer, error, lines, left] : cases) {
        std::filesystem::remove(file);
        showComposer();
        EXPECT_TRUE(platform.typeOver("Fine & \"good\"\n\xE5\xA5\xBD"));
        EXPECT_TRUE(platform.tapText("Reply"));
        composer->navigationItem().rightBarButtonItem()->press();
        EXPECT_FALSE(composer->replyTextView()->isFirstResponder());
        ASSERT_EQ(server->calls.size(), 1u) << "pressed twice, sent once";
        EXPECT_EQ(server->calls[0].method, ScriptedServer::Method::form);
        EXPECT_EQ(server->calls[0].path, "/article/json_add_comment.html?id=42");
        EXPECT_EQ(server->calls[0].fields, (FormFields{{"text", "Fine & \"good\"\n\xE5\xA5\xBD"}}));
        platform.advance(1);
        EXPECT_FALSE(isOpen()) << "without waiting for the answer";
        const std::weak_ptr<UIViewController> weak = composer;
        composer.reset();
        EXPECT_TRUE(weak.expired()) << "the answer holds nothing of it";
        logged();
        server->answer(answer, error);
        EXPECT_EQ(logged(), lines);
        EXPECT_EQ(home.read("Documents/error.html"), left);
        EXPECT_EQ(presented<UIViewController>(), nullptr) << "nothing is shown";
    }
}

TEST_F(CommentComposerTest, CancelSendsNothing) {
    showComposer();
    EXPECT_TRUE(platform.typeOver("half a thou"));
    EXPECT_TRUE(platform.tapText("Cancel"));
    platform.advance(1);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(server->calls.empty());
}

TEST_F(CommentComposerTest, AHundredThousandCharactersAreWrittenAndSent) {
    showComposer();
    std::string text;
    for (int i = 0; i < 12'500; ++i) text += "word \xE5\xA5\xBD ";
    for (int i = 0; i < 200; ++i) ASSERT_TRUE(platform.typeOver(text += 'x'));
    EXPECT_TRUE(canReply());
    composer->comment();
    ASSERT_EQ(server->calls.size(), 1u);
    EXPECT_EQ(server->calls[0].fields.at("text"), text);
}

}  // namespace
}  // namespace ostrel
