#include "tests/integration/SaveOverHttpTest.h"
#include "tests/support/ScriptedHttpServer.h"

#include <mutex>

namespace ostrel {
namespace {

using Answer = ScriptedHttpServer::Answer;
using Request = ScriptedHttpServer::Request;

/// A server for article 42, and for what is created, with faults.
class SaveFaultsTest : public SaveOverHttpTest {
protected:
    SaveFaultsTest() {
        for (const char* path : {"image_remove", "video_remove", "image_update", "video_update",
                                 "update_article_json.html", "article_42_json.html"}) {
            web.on(std::string("/article/") + path, [this](const Request& request) { return answerTo(request); });
        }
        startFramework(web.address());
    }
    ~SaveFaultsTest() override { endFramework(); }

    /// What begins with `target` gets `answer` from now on; nothing does with "none".
    void setFault(std::string target, Answer answer = {}) {
        const std::scoped_lock lock(mutex_);
        faulty_ = std::move(target);
        fault_ = std::move(answer);
    }
    std::size_t linesBeginning(std::string_view begin) const {
        const Lines all = log.lines();
        return static_cast<std::size_t>(
            std::ranges::count_if(all, [&](const std::string& line) { return line.starts_with(begin); }));
    }

    static constexpr char article[] = R"({"id":42,"title":"Fresh"})";

private:
    /// On the server's threads.
    Answer answerTo(const Request& request) {
        const std::scoped_lock lock(mutex_);
        return request.target.starts_with(faulty_) ? fault_ : ScriptedHttpServer::answer(article);
    }

    std::mutex mutex_;
    std::string faulty_ = "none";  // guarded by mutex_
    Answer fault_;                 // guarded by mutex_

protected:
    /// Ends before what its threads read.
    ScriptedHttpServer web;
};

TEST_F(SaveFaultsTest, EverySaveEndsWhateverTheServerDoesToARequest) {
    const Answer whole = ScriptedHttpServer::answer(article);
    Answer cut = whole, garbage, twice = whole, late = whole;
    cut.cutAfter = whole.bytes.size() - 5;
    garbage.bytes = "\x01\x02 this is not HTTP\r\n\r\n";
    garbage.closes = true;
    twice.bytes += twice.bytes;
    late.delaySeconds = 0.02;
    const std::pair<const char*, Answer> faults[] = {
        {"closed", Answer()},
        {"cut", cut},
        {"garbage", garbage},
        {"twice", twice},
        {"late", late},
        {"empty", ScriptedHttpServer::answer("")},
        {"500", ScriptedHttpServer::answer("<h1>oops</h1>", 500)},
    };
    // First the requests whose failure leaves its answer in the error file; the last target fits all of them.
    const char* const targets[] = {"/article/image_update?article_id=",
                                   "/article/video_update?article_id=",
                                   "/article/update_article_json.html",
                                   "/article/image_remove",
                                   "/article/video_remove",
                                   "/article/image_update?id=",
                                   "/article/video_update?id=",
                                   "/article/"};
    std::size_t saves = 0;
    for (const auto& [name, answer] : faults) {
        for (std::size_t i = 0; i < std::size(targets); ++i) {
            SCOPED_TRACE(std::string(name) + " for " + targets[i]);
            std::filesystem::remove(home.path("Documents/error.html"));
            openExistingAndChangeAll();
            const std::size_t told = linesBeginning("save article failed error: ");
            setFault(targets[i], answer);
            editor->save();
            EXPECT_EQ(editor->uploadTasksNum(), 10);
            ASSERT_TRUE(waitFor([&] { return editor->uploadTasksNum() == 0; }));
            setFault("none");
            waitForSaves(++saves);
            EXPECT_EQ(editor->uploadTasksNum(), 0);
            EXPECT_EQ(navigation->topViewController(), list);
            if (std::string(name) == "500") {
                EXPECT_EQ(errorFile(), i < 3 || i == 7 ? "<h1>oops</h1>" : "");
                EXPECT_EQ(linesBeginning("save article failed error: ") - told, i == 2 || i == 7 ? 1u : 0u);
            }
        }
    }
    EXPECT_EQ(NSThread::runningCount(), 0);
}

TEST_F(SaveFaultsTest, ARequestThatIsNeverAnsweredHoldsTheSaveUntilTheFrameworkEnds) {
    openExistingAndChangeAll();
    Answer hanging;
    hanging.hangs = true;
    setFault("/article/image_", hanging);
    editor->save();
    ASSERT_TRUE(waitFor([&] { return editor->uploadTasksNum() == 5; }));
    elapse(60);
    EXPECT_EQ(NSThread::runningCount(), 1);
    EXPECT_TRUE(isCovered());
    endFramework();
    EXPECT_EQ(editor->uploadTasksNum(), 0);
    EXPECT_EQ(linesBeginning("post image error:cancelled"), 1u);
    elapse(0.5);
    EXPECT_EQ(NSThread::runningCount(), 0);
    EXPECT_EQ(posted, Lines{});
}

TEST_F(SaveFaultsTest, FiveHundredPicturesArriveWithFewConnections) {
    push(make<UIArticleEditViewController>(UIArticleEditViewController::Images(500, picture()), "", "", false));
    editor->save();
    waitForSaves(1);
    EXPECT_EQ(web.requestCount("/article/image_update"), 500u);
    EXPECT_LE(web.mostAtOnce(), 8);
    EXPECT_EQ(linesBeginning("upload image result:{"), 500u);
}

}  // namespace
}  // namespace ostrel
