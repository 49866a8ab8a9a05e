#include "tests/article/editor/save/SaveTest.h"

namespace ostrel {
namespace {

class SaveFailureTest : public SaveTest {
protected:
    struct Reply {
        const char* name;
        std::optional<std::string> answer, error;
    };
    static std::vector<Reply> faults() {
        return {{"refused", std::nullopt, "down"},
                {"500", "<h1>oops</h1>", "HTTP 500"},
                {"cut", "{\"id\":", "The answer ended early."},
                {"garbage", "\x01 no JSON", std::nullopt},
                {"empty", "", std::nullopt}};
    }
    void close() {
        navigation->popToRootViewControllerAnimated(false);
        elapse(1);
    }
    void forgetErrorFile() { std::filesystem::remove(home.path("Documents/error.html")); }
    bool hasLine(const std::string& begin) {
        return std::ranges::any_of(lines_, [&](const auto& line) { return line.starts_with(begin); });
    }
    void readLog() { lines_ = logged(); }

    Lines lines_;
};

/// What the failure of one request leaves: the line it logs, whether its answer is dumped, whether the user is told.
struct Failure {
    const char* line;
    bool isDumped = false;
    bool isTold = false;
};

constexpr Failure failuresOfAnUpdate[] = {{"remove image failed."},
                                          {"remove video failed."},
                                          {nullptr},
                                          {nullptr},
                                          {nullptr},
                                          {"post image error:", true},
                                          {nullptr},
                                          {nullptr},
                                          {"post video error:", true},
                                          {"save article failed error: ", true, true}};
constexpr std::size_t requestCount = std::size(failuresOfAnUpdate);

TEST_F(SaveFailureTest, EveryRequestOfAnUpdateMayFailAloneOrWithAllOthers) {
    for (const Reply& fault : faults()) {
        for (std::size_t failing = 0; failing <= requestCount; ++failing) {
            SCOPED_TRACE(std::string(fault.name) + ", request " + std::to_string(failing));
            forgetErrorFile();
            openExistingAndChangeAll();
            editor->save();
            ASSERT_EQ(server->calls.size(), requestCount);
            posted.clear();
            logged();
            for (std::size_t i = 0; i < requestCount; ++i) {
                const bool fails = i == failing || failing == requestCount;
                server->answer(fails ? fault.answer : R"({"id":1})", fails ? fault.error : std::nullopt);
                EXPECT_EQ(editor->uploadTasksNum(), static_cast<std::int64_t>(requestCount - 1 - i));
            }
            readLog();
            elapse(0.5);
            ASSERT_EQ(waitingPaths(), Lines{"/article/article_42_json.html"}) << "the save goes on";
            bool isDumped = false, isTold = false;
            for (std::size_t i = 0; i < requestCount; ++i) {
                const bool failed = (i == failing || failing == requestCount) && fault.error;
                const Failure& expected = failuresOfAnUpdate[i];
                if (expected.line) {
                    EXPECT_EQ(hasLine(expected.line), failed) << expected.line;
                }
                isDumped = isDumped || (failed && expected.isDumped);
                isTold = isTold || (failed && expected.isTold);
            }
            EXPECT_EQ(errorFile(), isDumped ? fault.answer.value_or("") : "");
            EXPECT_EQ(alert() != nullptr, isTold);
            EXPECT_TRUE(isVeiled());
            server->answer(R"({"id":42,"title":"Fresh"})");
            EXPECT_EQ(posted, Lines{"NOTIFICATION_KEY_UPDATE Fresh"});
            elapse(1);
            EXPECT_EQ(navigation->topViewController(), list) << "closed, with the alert on top or without";
            EXPECT_FALSE(isVeiled());
        }
    }
}

TEST_F(SaveFailureTest, ACreationOrAReloadThatFailsLeavesTheEditorAsItIs) {
    for (const bool isReload : {false, true}) {
        for (const Reply& fault : faults()) {
            SCOPED_TRACE(std::string(isReload ? "reload " : "create ") + fault.name);
            forgetErrorFile();
            openNew();
            addImage();
            editor->save();
            if (isReload) {
                answerAll(R"({"id":1})");
                answerAll("{}");
                elapse(0.5);
            }
            ASSERT_EQ(server->calls.size(), 1u);
            logged();
            server->answer(fault.answer, fault.error);
            elapse(2);
            EXPECT_EQ(server->calls.size(), 0u) << "nothing more is sent";
            readLog();
            if (fault.error) {
                EXPECT_EQ(lines_,
                          Lines{(isReload ? "reload article failed error: " : "save article failed error: ") +
                                *fault.error});
                ASSERT_TRUE(alert());
                EXPECT_EQ(alert()->title(), "Failed");
                EXPECT_EQ(alert()->message(), "");
                ASSERT_EQ(alert()->actions().size(), 1u);
                EXPECT_TRUE(alert()->actions()[0].style == UIAlertAction::Style::defaultStyle);
                EXPECT_TRUE(isOpen());
                EXPECT_TRUE(platform.tapText("OK"));
                elapse(1);
                EXPECT_EQ(navigation->topViewController(), list);
            } else {
                EXPECT_EQ(lines_.size(), isReload ? 1u : 2u);
                EXPECT_TRUE(hasLine("Error:"));
                EXPECT_GT(lines_.back().size(), std::string("Error:").size());
                EXPECT_FALSE(alert());
                EXPECT_TRUE(isOpen());
                EXPECT_FALSE(isPostEnabled());
            }
            EXPECT_EQ(errorFile(), fault.error ? fault.answer.value_or("") : "");
            EXPECT_EQ(posted, Lines{});
            EXPECT_TRUE(isVeiled()) << "the veil stays, even over the list";
            close();
        }
    }
}

TEST_F(SaveFailureTest, TheErrorFileHoldsTheLastFailedAnswer) {
    openNew();
    for (int i = 0; i < 3; ++i) addImage();
    editor->save();
    answerAll(R"({"id":1})");
    std::swap(server->calls[0], server->calls[2]);
    server->answer("first", "down");
    server->answer("last", "down");
    server->answer(std::nullopt, "down");
    EXPECT_EQ(errorFile(), "last");
    elapse(0.5);
    server->answer("the reload's", "gone");
    EXPECT_EQ(errorFile(), "the reload's");
}

TEST_F(SaveFailureTest, AnArticleRemovedElsewhereIsToldOfOnce) {
    openExistingAndChangeAll();
    editor->save();
    answerAll("{}", "There is no such article.");
    elapse(0.5);
    answerAll("{}", "There is no such article.");
    elapse(2);
    EXPECT_EQ(posted, Lines{});
    EXPECT_TRUE(isOpen());
    ASSERT_TRUE(platform.tapText("OK"));
    elapse(1);
    EXPECT_EQ(navigation->topViewController(), list);
}

}  // namespace
}  // namespace ostrel
