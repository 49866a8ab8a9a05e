#include "tests/article/editor/save/SaveTest.h"

namespace ostrel {
namespace {

class SaveOrderTest : public SaveTest {};

std::string_view fieldOf(const ScriptedServer::Call& call, const char* name) {
    const auto part = call.body.find(name);
    return part == call.body.end() ? "(none)" : std::string_view(std::get<std::string>(part->second));
}

std::string fileOf(const ScriptedServer::Call& call, const char* name) {
    return std::string(std::get<UploadFile>(call.body.at(name)).contents().view());
}

TEST_F(SaveOrderTest, AnUpdateSendsRemovalsThenMediaThenTheArticleAtOnce) {
    openExistingAndChangeAll();
    editor->save();
    EXPECT_EQ(
        waitingPaths(),
        (Lines{"article/image_remove?id=13", "article/video_remove?id=22",
               "article/image_update?id=11&value=0", "article/image_update?id=12&value=1",
               "article/image_update?id=12&text=<a&b =ü>", "article/image_update?article_id=42&value=2",
               "article/video_update?id=21&value=0", "article/video_update?id=21&text=<>",
               "article/video_update?article_id=42&value=1", "/article/update_article_json.html?id=42"}));
    EXPECT_EQ(editor->uploadTasksNum(), 10);
    const auto& image = server->calls[5];
    EXPECT_EQ(image.body.size(), 2u);
    EXPECT_EQ(fileOf(image, "image.jpg").substr(0, 2), "\xFF\xD8");
    EXPECT_EQ(fieldOf(image, "text"), "new");
    const auto& video = server->calls[8];
    EXPECT_EQ(video.body.size(), 4u) << "absent and empty texts are not sent";
    EXPECT_EQ(fileOf(video, "thumbnail.jpg").substr(0, 2), "\xFF\xD8");
    EXPECT_EQ(fileOf(video, "video.mp4"), "film");
    EXPECT_EQ(fieldOf(video, "latitude"), "+31.2304");
    EXPECT_EQ(fieldOf(video, "duration"), "13");
    EXPECT_EQ(server->calls[9].fields, (FormFields{{"text", "Text\r\nÜ"}, {"title", "Title"}}));
}

TEST_F(SaveOrderTest, AnUpdateEndsHalfASecondAfterItsLastAnswer) {
    openExisting();
    editor->save();
    EXPECT_FALSE(isPostEnabled());
    EXPECT_TRUE(isVeiled());
    EXPECT_TRUE(editor->postingView()->actView()->isAnimating());
    EXPECT_EQ(editor->postingView()->superview(), navigation->view().get());
    EXPECT_EQ(editor->postingView()->frame(), navigation->view()->frame());
    EXPECT_EQ(server->calls.size(), 6u);
    for (std::int64_t left = 5; left >= 0; --left) {
        server->answer("{}");
        EXPECT_EQ(editor->uploadTasksNum(), left);
    }
    elapse(0.49);
    EXPECT_EQ(waitingPaths(), Lines{});
    elapse(0.02);
    EXPECT_EQ(waitingPaths(), Lines{"/article/article_42_json.html"});
    EXPECT_FALSE(server->calls[0].cameFromMainThread);
    EXPECT_EQ(editor->uploadTasksNum(), 0) << "the reload is not counted";
    EXPECT_TRUE(isVeiled());
    EXPECT_EQ(posted, Lines{});
    server->answer(R"({"id":42,"title":"Fresh"})");
    EXPECT_EQ(posted, Lines{"NOTIFICATION_KEY_UPDATE Fresh"});
    EXPECT_FALSE(isVeiled());
    EXPECT_FALSE(editor->postingView()->actView()->isAnimating());
    elapse(0.19);
    EXPECT_TRUE(isOpen());
    elapse(1);
    EXPECT_EQ(navigation->topViewController(), list);
    EXPECT_EQ(logged(), (Lines{"All upload task completed, reload the article info.",
                               "update article's title & text success."}));
}

TEST_F(SaveOrderTest, AnArticleWithoutMediaIsOneCountedRequest) {
    auto screen = make<UIArticleEditViewController>();
    screen->setArticleDictionary(record(R"({"id":"seven","title":"t"})"));
    push(std::move(screen));
    editor->save();
    EXPECT_EQ(waitingPaths(), Lines{"/article/update_article_json.html?id=seven"});
    EXPECT_EQ(editor->uploadTasksNum(), 1);
}

TEST_F(SaveOrderTest, ANewArticleIsCreatedBeforeItsMedia) {
    openNew();
    addImage();
    addImage("c");
    addVideo("");
    editor->titleField()->setText("T");
    editor->save();
    EXPECT_EQ(waitingPaths(), Lines{"/article/update_article_json.html"});
    EXPECT_EQ(server->calls[0].fields, (FormFields{{"text", ""}, {"title", "T"}}));
    EXPECT_EQ(editor->uploadTasksNum(), 0) << "creating is not counted";
    elapse(5);
    server->answer(R"({"id":90071992547409931})");
    EXPECT_EQ(waitingPaths(), (Lines{"article/image_update?article_id=90071992547409931&value=0",
                                     "article/image_update?article_id=90071992547409931&value=1",
                                     "article/video_update?article_id=90071992547409931&value=0"}));
    EXPECT_EQ(editor->uploadTasksNum(), 3);
    elapse(1.2);
    server->calls[0].progress(0.42125);
    server->answer(R"({"id":5, "text":"é"})");
    elapse(0.5);
    server->answer("[]");
    server->answer("<html>");
    elapse(0.5);
    EXPECT_EQ(waitingPaths(), Lines{"/article/article_90071992547409931_json.html"});
    server->answer(R"({"id":90071992547409931,"title":"Fresh"})");
    EXPECT_EQ(
        logged(),
        (Lines{"upload new article success.", "uploading tasks num:3", "uploading tasks num:3",
               "upload image progress:42.125%", R"(upload image result:{"id":5,"text":"é"})",
               "uploading tasks num:2", "upload image result:(null)", "upload video result:(null)",
               "All upload task completed, reload the article info.", "upload new article completed."}));
    EXPECT_EQ(posted, Lines{"NOTIFICATION_KEY_NEW_ARTICLE Fresh"});
}

TEST_F(SaveOrderTest, FiveHundredPicturesAreHandedOverUnmade) {
    push(make<UIArticleEditViewController>(UIArticleEditViewController::Images(500, picture()), "", "",
                                           false));
    editor->save();
    server->answer(R"({"id":1})");
    ASSERT_EQ(editor->uploadTasksNum(), 500);
    EXPECT_EQ(server->calls.back().path, "article/image_update?article_id=1&value=499");
    for (const auto& call : server->calls)
        EXPECT_TRUE(std::holds_alternative<UploadFile>(call.body.at("image.jpg")));
    // From both ends in turn.
    while (!server->calls.empty()) {
        std::swap(server->calls.front(), server->calls.back());
        server->answer("{}");
    }
    elapse(0.5);
    EXPECT_EQ(waitingPaths(), Lines{"/article/article_1_json.html"});
}

TEST_F(SaveOrderTest, AMegabyteOfTitleAndTextArrivesAsItIs) {
    const std::string title(1 << 20, '&'), text = std::string(1 << 20, 'x') + "\r\n\xF0\x9F\x98\x80";
    auto screen = make<UIArticleEditViewController>(UIArticleEditViewController::Images{}, title, text, true);
    push(std::move(screen));
    ASSERT_EQ(server->calls.size(), 1u);
    EXPECT_TRUE(server->calls[0].fields == (FormFields{{"text", text}, {"title", title}}));
}

}  // namespace
}  // namespace ostrel
