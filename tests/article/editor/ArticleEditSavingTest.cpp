#include "article/server/ArticleRequest.h"
#include "tests/article/editor/ArticleEditTest.h"

#include <functional>

namespace ostrel {
namespace {

/// What the screen does around a save; what a save sends is tested without the screen.
class ArticleEditSavingTest : public ArticleEditTest {};

TEST_F(ArticleEditSavingTest, TheDraftIsWhatTheScreenShows) {
    openExistingAndChangeAll();
    const ArticleDraft draft = editor->draftToSave();
    EXPECT_EQ(recordId(draft.record), "42");
    EXPECT_EQ(draft.title, "Title");
    EXPECT_EQ(draft.text, "Text\r\nÜ");
    EXPECT_EQ(draft.images, images().imagesArray());
    EXPECT_EQ(draft.videos, videos().videosArray());
    EXPECT_EQ(recordId(draft.removedImages.at(0)), "13");
    EXPECT_EQ(recordId(draft.removedVideos.at(0)), "22");
    editor->save();
    EXPECT_EQ(editor->uploadTasksNum(), 10);
}

TEST_F(ArticleEditSavingTest, OnlyASavedArticleRemovesTheOverlayAndAFailureIsToldOnce) {
    using enum ArticleSaveEnd;
    const struct {
        bool isRefused;
        ArticleSaveEnd end;
    } cases[] = {{false, done}, {false, failed}, {false, unreadable}, {true, failed}, {true, done}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.isRefused << ", " << static_cast<int>(c.end));
        const bool isTold = c.isRefused || c.end == failed;
        openExisting(articleWith(0));
        editor->save();
        EXPECT_FALSE(canPost());
        EXPECT_TRUE(isCovered());
        const auto overlay = editor->postingView();
        EXPECT_TRUE(overlay->actView()->isAnimating());
        EXPECT_EQ(overlay->superview(), navigation->view().get());
        EXPECT_EQ(overlay->frame(), navigation->view()->frame());
        if (c.isRefused) editor->textsWereRefused();
        editor->saveDidEnd(c.end);
        EXPECT_EQ(isCovered(), c.end != done);
        EXPECT_EQ(overlay->actView()->isAnimating(), c.end != done);
        platform.advance(0.19);
        EXPECT_TRUE(isOpen());
        ASSERT_EQ(alert() != nullptr, isTold);
        if (isTold) {
            EXPECT_EQ(alert()->title(), "Failed");
            EXPECT_EQ(alert()->message(), "");
            ASSERT_EQ(alert()->actions().size(), 1u);
            EXPECT_TRUE(alert()->actions()[0].style == UIAlertAction::Style::defaultStyle);
        }
        platform.advance(0.5);
        EXPECT_EQ(isOpen(), c.end != done);
        if (c.end == failed) {
            EXPECT_TRUE(platform.tapText("OK"));
            platform.advance(1);
            EXPECT_EQ(navigation->topViewController(), list);
        }
        EXPECT_EQ(isCovered(), c.end != done) << "the overlay stays after \"OK\" closed the editor";
        finish();
    }
}

TEST_F(ArticleEditSavingTest, ASaveContinuesAfterItsScreenWasClosed) {
    for (const bool hasWindow : {true, false}) {
        SCOPED_TRACE(hasWindow);
        posted.clear();
        openExistingAndChangeAll();
        editor->save();
        if (hasWindow) {
            editor->cancel();
        } else {
            platform.window().setRootViewController(nullptr);
            navigation.reset();
        }
        elapse(0.4);
        const std::weak_ptr<UIArticleEditViewController> weak = editor;
        const auto overlay = editor->postingView();
        editor.reset();
        answerAll("{}", "down");
        EXPECT_FALSE(weak.expired()) << "held by the waiting thread";
        finish();
        elapse(1);
        EXPECT_EQ(posted, Lines{"NOTIFICATION_KEY_UPDATE Fresh"});
        EXPECT_EQ(overlay->alpha(), 0);
        EXPECT_TRUE(weak.expired());
    }
}

TEST_F(ArticleEditSavingTest, TwoSavesInARowCloseOnce) {
    openExisting(articleWith(1));
    const auto below = make<UIViewController>();
    navigation->popViewControllerAnimated(false);
    navigation->pushViewController(below, false);
    navigation->pushViewController(editor, false);
    platform.advance(1);
    for (int i = 0; i < 2; ++i) editor->saveDidEnd(ArticleSaveEnd::done);
    platform.advance(1);
    EXPECT_EQ(navigation->topViewController(), below) << "the second end closes nothing";
}

TEST_F(ArticleEditSavingTest, AnEditorMadeToSendItselfSavesAtEveryAppearance) {
    const std::string title(1 << 20, '&'), text = std::string(1 << 20, 'x') + "\r\n\xF0\x9F\x98\x80";
    push(make<UIArticleEditViewController>(UIArticleEditViewController::Images{picture()}, title, text, true));
    ASSERT_EQ(waitingPaths(), Lines{"/article/update_article_json.html"});
    EXPECT_TRUE(server->calls[0].fields == (FormFields{{"text", text}, {"title", title}}));
    EXPECT_FALSE(canPost());
    const auto overlay = editor->postingView();
    editor->presentViewController(make<UIViewController>(), false);
    elapse(1);
    editor->dismissViewControllerAnimated(false);
    elapse(1);
    EXPECT_EQ(server->calls.size(), 2u) << "creates a second article";
    EXPECT_EQ(editor->postingView(), overlay);
    finish();
    EXPECT_EQ(posted, (Lines{"NOTIFICATION_KEY_NEW_ARTICLE Fresh", "NOTIFICATION_KEY_NEW_ARTICLE Fresh"}));
    EXPECT_EQ(navigation->topViewController(), list);
}

TEST_F(ArticleEditSavingTest, AnArticleCreatedAheadIsUpdatedAtTheNextAppearance) {
    push(make<UIArticleEditViewController>(UIArticleEditViewController::Images{}, "T", "x", false));
    for (const char* const answer : {"<oops>", "[1]", R"({"id":42,"title":"Made"})"}) {
        const bool isRefused = *answer == '<', isMade = *answer == '{';
        editor->createArticleForPre();
        EXPECT_EQ(server->calls[0].fields, (FormFields{{"text", "x"}, {"title", "T"}}));
        server->answer(answer, isRefused ? std::optional<std::string>("down") : std::nullopt);
        EXPECT_EQ(logged(), isMade      ? Lines{}
                            : isRefused ? Lines{"create new article in server Error: down"}
                                        : Lines{"create new article failed."});
        EXPECT_EQ(posted, isMade ? Lines{"NOTIFICATION_KEY_NEW_ARTICLE Made"} : Lines{});
        EXPECT_EQ(static_cast<bool>(editor->articleDictionary()), isMade);
        EXPECT_FALSE(editor->presentedViewController());
    }
    EXPECT_EQ(errorFile(), "<oops>");
    editor->navigationItem().rightBarButtonItem()->setEnabled(false);
    platform.settle();
    EXPECT_TRUE(canPost()) << "the screen behaves as if it appeared again";
}

TEST_F(ArticleEditSavingTest, EachStepOfASaveCanBeSentByItself) {
    openNew();
    const Value id = json("7");
    const Dictionary item = record(R"({"id":7})");
    editor->uploadImage({}, 3, "42");
    editor->uploadVideo({}, 4, "42");
    editor->updateServerImageSort(5, id);
    editor->updateServerVideoSort(6, id);
    editor->updateServerImageText("a", id);
    editor->updateServerVideoText("b", id);
    editor->removeServerImage(item);
    editor->removeServerVideo(item);
    EXPECT_EQ(waitingPaths(),
              (Lines{"article/image_update?article_id=42&value=3", "article/video_update?article_id=42&value=4",
                     "article/image_update?id=7&value=5", "article/video_update?id=7&value=6",
                     "article/image_update?id=7&text=<a>", "article/video_update?id=7&text=<b>",
                     "article/image_remove?id=7", "article/video_remove?id=7"}));
    EXPECT_EQ(editor->uploadTasksNum(), 8);
    answerAll({}, "down");
    editor->uploadNewArticle();
    EXPECT_EQ(waitingPaths(), Lines{"/article/update_article_json.html"});
    answerAll({}, "down");
    editor->waitingForUploadArticleID("42", false);
    elapse(0.6);
    EXPECT_EQ(waitingPaths(), Lines{"/article/article_42_json.html"});
}

}  // namespace
}  // namespace ostrel
