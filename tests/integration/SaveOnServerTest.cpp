#include "article/server/ArticleRequest.h"
#include "tests/integration/SaveOverHttpTest.h"
#include "tests/support/ChildProcess.h"

#include <algorithm>
#include <filesystem>
#include <sqlite3.h>

namespace ostrel {
namespace {

/// The article server as a process of its own, somebody signed in, and a look into its database and its folder.
class SaveOnServerTest : public SaveOverHttpTest {
protected:
    SaveOnServerTest()
        : process_({OSTREL_ARTICLE_SERVER_BINARY, "--data", data_.path(), "--port", "0", "--exit-with-parent"}) {
        const std::string line = process_.line();
        const std::size_t address = line.find("http://");
        if (address == std::string::npos) throw std::runtime_error("The article server said: " + line);
        startFramework(line.substr(address));
        bool signedIn = false;
        framework->signUp("Ada", "long enough", [&](const auto& user, const auto&) { signedIn = user != nullptr; });
        EXPECT_TRUE(waitFor([&] { return signedIn; }));
        EXPECT_EQ(sqlite3_open_v2(data_.path("articles.sqlite").c_str(), &database_, SQLITE_OPEN_READONLY, nullptr),
                  SQLITE_OK);
    }
    ~SaveOnServerTest() override {
        endFramework();
        sqlite3_close(database_);
    }

    /// The rows of a question, their columns joined by "|".
    Lines rows(const char* question) const {
        Lines all;
        const auto add = [](void* to, int count, char** columns, char**) {
            std::string row;
            for (int i = 0; i < count; ++i) row += std::string(i ? "|" : "") + (columns[i] ? columns[i] : "NULL");
            static_cast<Lines*>(to)->push_back(std::move(row));
            return 0;
        };
        char* error = nullptr;
        EXPECT_EQ(sqlite3_exec(database_, question, add, &all, &error), SQLITE_OK) << error;
        sqlite3_free(error);
        return all;
    }
    std::size_t mediaFiles() const {
        return static_cast<std::size_t>(
            std::ranges::count_if(std::filesystem::recursive_directory_iterator(data_.path("media")),
                                  [](const auto& entry) { return entry.is_regular_file(); }));
    }
    static std::shared_ptr<const UIImage> pictureNamed(const char* name) {
        return UIImage::imageWithData(Data::mapFile(*OstrelArticleBundle->pathForResource(name, "png")));
    }

    const std::string clip = std::string(OSTREL_SOURCE_DIR) + "/samples/clips/rain.mp4";
    TemporaryFolder data_;
    ChildProcess process_;
    sqlite3* database_ = nullptr;
};

constexpr char imageRows[] = "SELECT position, text, width FROM images ORDER BY article_id, position, id";

TEST_F(SaveOnServerTest, AnArticleLivesFromCreationToRemovalAsTheEditorSays) {
    const auto wide = pictureNamed("loading"), other = pictureNamed("anonymousAvatar"),
               small = pictureNamed("video_play_image");
    const auto row = [](int position, const char* text, const std::shared_ptr<const UIImage>& image) {
        return std::to_string(position) + "|" + text + "|" + std::to_string(image->header().pixelWidth);
    };
    openNew();
    editor->titleField()->setText("Зима 冬");
    editor->textTextField()->setText("a&b=c+%\r\n😀 שלום");
    addImage(wide, "one & only");
    addImage(other);
    addImage(small, "three");
    addVideo(clip);
    editor->save();
    waitForSaves(1);
    EXPECT_EQ(posted.back(), "NOTIFICATION_KEY_NEW_ARTICLE Зима 冬");
    EXPECT_EQ(rows("SELECT title, text FROM articles"), Lines{"Зима 冬|a&b=c+%\r\n😀 שלום"});
    EXPECT_EQ(rows(imageRows), (Lines{row(0, "one & only", wide), row(1, "", other), row(2, "three", small)}));
    EXPECT_EQ(rows("SELECT position, text, duration, latitude, altitude FROM videos"), Lines{"0||13.0|+31.2304|"});
    EXPECT_EQ(mediaFiles(), 8u) << "each with its small picture";
    const Lines video = rows("SELECT file FROM videos");
    EXPECT_TRUE(Data::mapFile(data_.path("media/" + video.at(0))).view() == Data::mapFile(clip).view());
    ASSERT_EQ(lastRecord["images"].count(), 3u);
    EXPECT_EQ(lastRecord["images"].elements()[0]["text"].string(), "one & only");
    EXPECT_EQ(lastRecord["videos"].count(), 1u);

    // Without the first, the other two exchanged, another at the end, a caption changed.
    const Dictionary created = lastRecord;
    auto screen = make<UIArticleEditViewController>();
    screen->setArticleDictionary(created);
    push(std::move(screen));
    remove(images(), 0);
    images().collectionViewMoveItemAtIndexPathToIndexPath(*images().collectionView(), {0, 0}, {0, 1});
    addImage(wide, "last");
    images().imagesArray()->at(1)->setText("now with text 👋 &value=9");
    images().imagesArray()->at(1)->setTextChanged(true);
    editor->titleField()->setText("");
    editor->save();
    EXPECT_EQ(editor->uploadTasksNum(), 7);
    waitForSaves(2);
    EXPECT_EQ(posted.back(), "NOTIFICATION_KEY_UPDATE ");
    EXPECT_EQ(rows(imageRows),
              (Lines{row(0, "three", small), row(1, "now with text 👋 &value=9", other), row(2, "last", wide)}));
    EXPECT_EQ(mediaFiles(), 8u) << "what was removed leaves no file";
    EXPECT_EQ(lastRecord["id"], created["id"]);
    EXPECT_EQ(errorFile(), "");

    bool removed = false;
    ArticleRequest::removeArticle(created["id"]).send([&](const ArticleAnswer& answer) {
        removed = true;
        EXPECT_FALSE(answer.error) << *answer.error;
    });
    ASSERT_TRUE(waitFor([&] { return removed; }));
    EXPECT_EQ(rows("SELECT id FROM articles UNION SELECT id FROM images UNION SELECT id FROM videos"), Lines{});
    EXPECT_EQ(mediaFiles(), 0u);
}

TEST_F(SaveOnServerTest, WhoIsSignedOutMeanwhileIsToldAndNothingIsLost) {
    openNew();
    editor->titleField()->setText("Kept");
    editor->save();
    waitForSaves(1);
    auto screen = make<UIArticleEditViewController>();
    screen->setArticleDictionary(lastRecord);
    push(std::move(screen));
    addImage("never arrives");
    editor->titleField()->setText("Changed");
    framework->signOut();
    editor->save();
    waitForSaves(2);
    EXPECT_EQ(rows("SELECT title FROM articles"), Lines{"Kept"});
    EXPECT_EQ(rows(imageRows), Lines{});
    EXPECT_EQ(mediaFiles(), 0u);
    EXPECT_EQ(recordText(lastRecord, "title"), "Kept");
    EXPECT_NE(errorFile(), "");
}

}  // namespace
}  // namespace ostrel
