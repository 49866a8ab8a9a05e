#include "platform/foundation/runloop/Clock.h"
#include "tests/article/editor/save/SaveTest.h"

#include <cstdlib>
#include <unistd.h>

namespace ostrel {
namespace {

class SaveLifeTest : public SaveTest {
protected:
    /// Answers whatever is asked, well, until nothing is and no thread waits.
    void finish() {
        for (int i = 0; i < 20 && (NSThread::runningCount() > 0 || !server->calls.empty()); ++i) {
            answerAll(R"({"id":42,"title":"Fresh"})");
            elapse(0.5);
        }
        EXPECT_EQ(NSThread::runningCount(), 0);
    }
};

TEST_F(SaveLifeTest, AnEditorClosedMeanwhileSavesOnAndThenEnds) {
    openExistingAndChangeAll();
    editor->save();
    editor->cancel();
    elapse(1);
    const std::weak_ptr<UIArticleEditViewController> weak = editor;
    const auto veil = editor->postingView();
    editor.reset();
    answerAll("{}", "down");
    EXPECT_FALSE(weak.expired()) << "held by who waits";
    finish();
    EXPECT_EQ(posted, Lines{"NOTIFICATION_KEY_UPDATE Fresh"});
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(veil->alpha(), 0);
    EXPECT_EQ(navigation->topViewController(), list);
}

TEST_F(SaveLifeTest, ALateAnswerFindsTheWindowTakenDown) {
    openExistingAndChangeAll();
    editor->save();
    const std::weak_ptr<UIArticleEditViewController> weak = editor;
    platform.window().setRootViewController(nullptr);
    navigation.reset();
    editor.reset();
    finish();
    EXPECT_EQ(posted.size(), 1u);
    EXPECT_TRUE(weak.expired());
}

TEST_F(SaveLifeTest, TheEndOfTheServerFrameworkEndsTheWaiting) {
    openExistingAndChangeAll();
    editor->save();
    elapse(0.6);
    OstrelServerFramework::install(nullptr);
    server->cancelAll();
    EXPECT_EQ(editor->uploadTasksNum(), 0);
    logged();
    elapse(0.5);
    EXPECT_EQ(NSThread::runningCount(), 0);
    EXPECT_EQ(logged(), Lines{"All upload task completed, reload the article info."});
    OstrelServerFramework::install(server);
    EXPECT_EQ(waitingPaths(), Lines{});
}

TEST_F(SaveLifeTest, AProcessMayEndWhileASaveWaits) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            Clock::install(nullptr);  // the thread looks at real time, also after what is static has gone
            std::atexit([] { ::usleep(1'200'000); });
            openExisting();
            editor->save();
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(SaveLifeTest, TwoSavesInARowWaitForEachOthersRequestsAndCloseOnce) {
    openExisting();
    editor->save();
    elapse(0.2);
    editor->save();
    EXPECT_EQ(editor->uploadTasksNum(), 12);
    for (int i = 0; i < 11; ++i) server->answer("{}");
    elapse(3);
    EXPECT_EQ(waitingPaths().size(), 1u);
    server->answer("{}");
    elapse(0.5);
    EXPECT_EQ(waitingPaths(), (Lines{"/article/article_42_json.html", "/article/article_42_json.html"}));
    answerAll(R"({"id":42,"title":"Fresh"})");
    elapse(1);
    EXPECT_EQ(posted.size(), 2u);
    EXPECT_EQ(navigation->viewControllers().size(), 1u);
    EXPECT_EQ(navigation->topViewController(), list);
}

TEST_F(SaveLifeTest, AnEditorMadeToSendItselfSavesAtEveryAppearance) {
    push(make<UIArticleEditViewController>(UIArticleEditViewController::Images{picture()}, "T", "x", true));
    EXPECT_EQ(waitingPaths(), Lines{"/article/update_article_json.html"});
    const auto veil = editor->postingView();
    editor->presentViewController(make<UIViewController>(), false);
    elapse(1);
    editor->dismissViewControllerAnimated(false);
    elapse(1);
    EXPECT_EQ(server->calls.size(), 2u) << "creates a second article";
    EXPECT_EQ(editor->postingView(), veil);
    finish();
    EXPECT_EQ(posted, (Lines{"NOTIFICATION_KEY_NEW_ARTICLE Fresh", "NOTIFICATION_KEY_NEW_ARTICLE Fresh"}));
    EXPECT_EQ(navigation->topViewController(), list);
}

TEST_F(SaveLifeTest, AnArticleCreatedAheadIsUpdatedAtTheNextAppearance) {
    push(make<UIArticleEditViewController>(UIArticleEditViewController::Images{}, "T", "x", false));
    struct Case {
        std::optional<std::string> answer, error;
        Lines lines, posts;
    };
    const Case cases[] = {
        {"<oops>", "down", {"create new article in server Error: down"}, {}},
        {"[1]", {}, {"create new article failed."}, {}},
        {R"({"id":42,"title":"Made"})", {}, {}, {"NOTIFICATION_KEY_NEW_ARTICLE Made"}},
    };
    for (const Case& expected : cases) {
        editor->createArticleForPre();
        EXPECT_EQ(server->calls[0].fields, (FormFields{{"text", "x"}, {"title", "T"}}));
        server->answer(expected.answer, expected.error);
        EXPECT_EQ(logged(), expected.lines);
        EXPECT_EQ(posted, expected.posts);
        EXPECT_EQ(static_cast<bool>(editor->articleDictionary()), !expected.posts.empty());
        EXPECT_FALSE(editor->presentedViewController());
    }
    EXPECT_EQ(errorFile(), "<oops>");
    editor->navigationItem().rightBarButtonItem()->setEnabled(false);
    platform.settle();
    EXPECT_TRUE(isPostEnabled()) << "it appeared once more";
}

}  // namespace
}  // namespace ostrel
