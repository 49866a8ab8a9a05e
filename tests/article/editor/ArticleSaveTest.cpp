#include "article/editor/ArticleSave.h"

#include "platform/foundation/runloop/Clock.h"
#include "tests/article/editor/SaveTest.h"

#include <cstdlib>
#include <unistd.h>

namespace ostrel {
namespace {

/// An editor without a screen: it has a draft, and notes what a save tells it.
class FakeEditor final : public ArticleSaveDelegate {
public:
    ArticleDraft draft;
    std::string heard;

    ArticleDraft draftToSave() override { return draft; }
    void textsWereRefused() override { heard += "refused "; }
    void saveDidEnd(ArticleSaveEnd end) override {
        const char* const names[] = {"done", "failed", "unreadable"};
        heard += names[static_cast<int>(end)];
    }
};

template <class Item>
std::shared_ptr<Item> existing(const char* json, std::optional<std::string> newCaption = {}) {
    auto item = std::make_shared<Item>();
    item->setRecord(record(json));
    item->setTextChanged(newCaption.has_value());
    item->setText(std::move(newCaption));
    return item;
}

class ArticleSaveTest : public SaveTest {
protected:
    /// Article 42 under every kind of change: a save sends ten counted requests, at least one of each kind.
    void changeEverything() {
        editor->draft = {.record = record(R"({"id":42,"title":"Old"})"),
                         .title = "Title",
                         .text = "Text\r\nÜ",
                         .images = {existing<NSArticleImageObject>(R"({"id":11,"text":"one"})"),
                                    existing<NSArticleImageObject>(R"({"id":12,"text":"two"})", "a&b =ü"),
                                    newImage(picture(), "new")},
                         .videos = {existing<NSArticleVideoObject>(R"({"id":"21"})", ""),
                                    newVideo(home.write("Documents/clip.mp4", "clip"))},
                         .removedImages = {record(R"({"id":13})")},
                         .removedVideos = {record(R"({"id":22})")}};
    }
    void save() { std::make_shared<ArticleSave>(editor, outstanding)->start(); }
    std::shared_ptr<FakeEditor> editor = std::make_shared<FakeEditor>();
    std::shared_ptr<ArticleSave::Outstanding> outstanding = std::make_shared<ArticleSave::Outstanding>(0);
};

// The order of requests

TEST_F(ArticleSaveTest, AnUpdateSendsRemovalsThenMediaThenTheArticleAtOnce) {
    changeEverything();
    save();
    EXPECT_EQ(waitingPaths(),
              (Lines{"article/image_remove?id=13", "article/video_remove?id=22", "article/image_update?id=11&value=0",
                     "article/image_update?id=12&value=1", "article/image_update?id=12&text=<a&b =ü>",
                     "article/image_update?article_id=42&value=2", "article/video_update?id=21&value=0",
                     "article/video_update?id=21&text=<>", "article/video_update?article_id=42&value=1",
                     "/article/update_article_json.html?id=42"}));
    EXPECT_EQ(*outstanding, 10);
    const auto file = [this](std::size_t call, const char* name) {
        return std::string(std::get<UploadFile>(server->calls[call].body.at(name)).contents().view().substr(0, 4));
    };
    EXPECT_EQ(file(5, "image.jpg").substr(0, 2), "\xFF\xD8");
    EXPECT_EQ(std::get<std::string>(server->calls[5].body.at("text")), "new");
    EXPECT_EQ(file(8, "thumbnail.jpg").substr(0, 2), "\xFF\xD8");
    EXPECT_EQ(file(8, "video.mp4"), "clip");
    EXPECT_EQ(std::get<std::string>(server->calls[8].body.at("latitude")), "+31.2304");
    EXPECT_EQ(server->calls[9].fields, (FormFields{{"text", "Text\r\nÜ"}, {"title", "Title"}}));
}

TEST_F(ArticleSaveTest, AnUpdateEndsHalfASecondAfterItsLastAnswer) {
    editor->draft.record = record(R"({"id":"seven"})");
    save();
    EXPECT_EQ(waitingPaths(), Lines{"/article/update_article_json.html?id=seven"});
    EXPECT_EQ(*outstanding, 1);
    elapse(0.6);
    server->answer("{}");
    EXPECT_EQ(*outstanding, 0);
    elapse(0.39);
    EXPECT_EQ(waitingPaths(), Lines{});
    elapse(0.02);
    ASSERT_EQ(waitingPaths(), Lines{"/article/article_seven_json.html"});
    EXPECT_FALSE(server->calls[0].cameFromMainThread);
    EXPECT_EQ(*outstanding, 0) << "the last load is not counted";
    EXPECT_EQ(posted, Lines{});
    EXPECT_EQ(editor->heard, "");
    server->answer(R"({"id":"seven","title":"Fresh"})");
    EXPECT_EQ(posted, Lines{"NOTIFICATION_KEY_UPDATE Fresh"});
    EXPECT_EQ(editor->heard, "done");
    EXPECT_EQ(logged(), (Lines{"uploading tasks num:1", "All upload task completed, reload the article info.",
                               "update article's title & text success."}));
}

TEST_F(ArticleSaveTest, ANewArticleIsCreatedBeforeItsMedia) {
    editor->draft = {.title = "T", .images = {newImage(picture())}, .videos = {newVideo("")}};
    save();
    EXPECT_EQ(waitingPaths(), Lines{"/article/update_article_json.html"});
    EXPECT_EQ(server->calls[0].fields, (FormFields{{"text", ""}, {"title", "T"}}));
    EXPECT_EQ(*outstanding, 0) << "the creation is not counted";
    elapse(5);
    // An item that was added in the meantime is sent as well.
    editor->draft.images.push_back(newImage(picture(), "c"));
    server->answer(R"({"id":90071992547409931})");
    EXPECT_EQ(waitingPaths(), (Lines{"article/image_update?article_id=90071992547409931&value=0",
                                     "article/image_update?article_id=90071992547409931&value=1",
                                     "article/video_update?article_id=90071992547409931&value=0"}));
    EXPECT_EQ(*outstanding, 3);
    elapse(1.2);
    server->calls[0].progress(0.42125);
    server->answer(R"({"id":5, "text":"é"})");
    elapse(0.5);
    server->answer("[]");
    server->answer("<html>");
    elapse(0.5);
    EXPECT_EQ(waitingPaths(), Lines{"/article/article_90071992547409931_json.html"});
    server->answer(R"({"id":90071992547409931,"title":"Fresh"})");
    EXPECT_EQ(logged(),
              (Lines{"upload new article success.", "uploading tasks num:3", "uploading tasks num:3",
                     "upload image progress:42.125%", R"(upload image result:{"id":5,"text":"é"})",
                     "uploading tasks num:2", "upload image result:(null)", "upload video result:(null)",
                     "All upload task completed, reload the article info.", "upload new article completed."}));
    EXPECT_EQ(posted, Lines{"NOTIFICATION_KEY_NEW_ARTICLE Fresh"});
    EXPECT_EQ(editor->heard, "done");
}

TEST_F(ArticleSaveTest, AnUpdateContinuesWhateverItsRequestsAreAnswered) {
    const struct {
        const char* answer;
        std::optional<std::string> error;
        const char* log;
    } cases[] = {{"{\"id\":1}",
                  {},
                  "remove image success.|remove video success.|upload image result:{\"id\":1}|"
                  "upload video result:{\"id\":1}|"},
                 {"<html>",
                  {},
                  "remove image success.|remove video success.|upload image result:(null)|"
                  "upload video result:(null)|"},
                 {"<h1>oops</h1>", "down",
                  "remove image failed.|remove video failed.|post image error:down|post video error:down|"
                  "save article failed error: down|"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer);
        changeEverything();
        editor->heard.clear();
        posted.clear();
        save();
        logged();
        for (std::int64_t left = 9; left >= 0; --left) {
            EXPECT_EQ(editor->heard, "");
            server->answer(c.answer, c.error);
            EXPECT_EQ(*outstanding, left);
        }
        std::string lines;
        for (const std::string& line : logged()) lines += line + "|";
        EXPECT_EQ(lines, c.log);
        EXPECT_EQ(errorFile(), c.error ? c.answer : "");
        elapse(0.5);
        server->answer(R"({"id":42,"title":"Fresh"})");
        EXPECT_EQ(posted, Lines{"NOTIFICATION_KEY_UPDATE Fresh"});
        EXPECT_EQ(editor->heard, c.error ? "refused done" : "done");
    }
}

TEST_F(ArticleSaveTest, ACreationOrALastLoadThatFailsEndsTheSave) {
    const std::pair<const char*, std::optional<std::string>> faults[] = {
        {"<h1>oops</h1>", "HTTP 500"}, {"\x01 no JSON", {}}, {"", {}}, {"[1]", {}}};
    editor->draft.images = {newImage(picture())};
    for (const bool isReload : {false, true}) {
        for (const auto& [answer, error] : faults) {
            SCOPED_TRACE(std::string(isReload ? "reload " : "create ") + answer);
            editor->heard.clear();
            std::filesystem::remove(home.path("Documents/error.html"));
            save();
            if (isReload) {
                answerAll(R"({"id":1})");
                answerAll("{}");
                elapse(0.5);
            }
            logged();
            server->answer(answer, error);
            elapse(2);
            EXPECT_EQ(server->calls.size(), 0u) << "nothing more is sent";
            EXPECT_EQ(posted, Lines{});
            EXPECT_EQ(editor->heard, error ? "failed" : "unreadable");
            EXPECT_EQ(errorFile(), error ? answer : "");
            const Lines lines = logged();
            ASSERT_EQ(lines.size(), error || isReload ? 1u : 2u);
            const std::string begin = isReload ? "reload article failed error: " : "save article failed error: ";
            EXPECT_TRUE(error ? lines[0] == begin + *error
                              : lines.back().starts_with("Error:") && lines.back().size() > 6)
                << lines.back();
        }
    }
}

// Lifetimes

TEST_F(ArticleSaveTest, ASecondSaveWaitsForTheRequestsOfTheFirst) {
    changeEverything();
    save();
    elapse(0.2);
    save();
    EXPECT_EQ(*outstanding, 20);
    for (int i = 0; i < 19; ++i) server->answer("{}");
    elapse(3);
    EXPECT_EQ(waitingPaths().size(), 1u);
    server->answer("{}");
    elapse(0.5);
    EXPECT_EQ(waitingPaths(), (Lines{"/article/article_42_json.html", "/article/article_42_json.html"}));
}

TEST_F(ArticleSaveTest, TheEndOfTheServerFrameworkEndsTheWaiting) {
    changeEverything();
    save();
    elapse(0.6);
    OstrelServerFramework::install(nullptr);
    server->cancelAll();
    EXPECT_EQ(*outstanding, 0);
    editor->draft.images.clear();
    editor->draft.videos.clear();
    save();
    EXPECT_EQ(*outstanding, 0) << "without a framework nothing is sent";
    logged();
    elapse(0.6);
    EXPECT_EQ(NSThread::runningCount(), 0);
    const std::string line = "All upload task completed, reload the article info.";
    EXPECT_EQ(logged(), (Lines{line, line}));
    OstrelServerFramework::install(server);
    EXPECT_EQ(waitingPaths(), Lines{});
}

TEST_F(ArticleSaveTest, AProcessMayEndWhileASaveWaits) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            // On real time the thread wakes up while the process ends, after the static objects were destroyed.
            Clock::install(nullptr);
            std::atexit([] { ::usleep(1'200'000); });
            changeEverything();
            save();
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace ostrel
