#pragma once

#include "article/editor/UIArticleEditViewController.h"
#include "article/records/ArticleNotifications.h"
#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/uikit/picker/UIImagePickerController.h"
#include "tests/article/ArticleTest.h"
#include "tests/support/ScriptedMedia.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ostrel {

/// An editor pushed onto an empty screen in the window; scripted media and a home directory of its own.
class ArticleEditTest : public ArticleTest {
protected:
    ArticleEditTest() : formerHome_(NSHomeDirectory()) {
        setHomeDirectory(home.path());
        MediaBackend::install(media);
        loadOstrelArticleBundle();
        server->signIn();
    }
    ~ArticleEditTest() override {
        if (editor) settleRequests();
        editor = nullptr;
        navigation = nullptr;
        platform.window().setRootViewController(nullptr);
        platform.advance(1);
        MediaBackend::install(nullptr);
        setHomeDirectory(formerHome_);
    }

    void push(std::shared_ptr<UIArticleEditViewController> screen) {
        navigation = make<UINavigationController>(make<UIViewController>());
        show(navigation);
        editor = std::move(screen);
        navigation->pushViewController(editor, false);
        platform.advance(1);
    }
    void showNew(std::int64_t style = 0) {
        auto screen = make<UIArticleEditViewController>();
        screen->setArticleEditStyle(style);
        push(std::move(screen));
    }
    void showExisting(const std::string& article) {
        auto screen = make<UIArticleEditViewController>();
        screen->setArticleDictionary(record(article));
        push(std::move(screen));
    }
    /// An article whose images are captioned "A", "B" and so on, with ids from 1, and likewise its videos.
    static std::string articleWith(int images, int videos = 0) {
        const auto list = [](int count, const char* kind) {
            std::string text;
            for (int i = 0; i < count; ++i) {
                const std::string letter(1, static_cast<char>('A' + i % 26));
                text += std::string(i ? "," : "") + "{\"id\":" + std::to_string(i + 1) + ",\"text\":\"" +
                        letter + "\",\"thumbnail\":\"http://h/" + kind + letter + "\"}";
            }
            return text;
        };
        return R"({"id":42,"title":"A title","text":"Some text","images":[)" + list(images, "image") +
               R"(],"videos":[)" + list(videos, "video") + "]}";
    }
    /// Refuses what was asked for, so that no request outlives the test.
    void settleRequests() {
        for (int i = 0; i < 100 && !server->calls.empty(); ++i) server->answer({}, "refused");
        for (const std::string& url : server->mediaUrls()) server->answerMedia(url, {});
        platform.advance(1);
    }

    UITableView& table() { return *editor->tableView(); }
    UIArticleEditImagesTableViewCell& images() { return *editor->imagesCell(); }
    UIArticleEditVideosTableViewCell& videos() { return *editor->videosCell(); }
    bool canPost() { return editor->navigationItem().rightBarButtonItem()->isEnabled(); }
    std::shared_ptr<UICollectionViewCell> tileAt(UIArticleEditMediaTableViewCell& strip, std::int64_t index) {
        return strip.collectionView()->cellForItemAtIndexPath({0, index});
    }
    std::shared_ptr<ImageCollectionViewCell> image(std::int64_t index) {
        return std::dynamic_pointer_cast<ImageCollectionViewCell>(tileAt(images(), index));
    }
    std::shared_ptr<VideoCollectionViewCell> video(std::int64_t index) {
        return std::dynamic_pointer_cast<VideoCollectionViewCell>(tileAt(videos(), index));
    }
    static std::int64_t tileCount(UIArticleEditMediaTableViewCell& strip) {
        return strip.collectionView()->numberOfItemsInSection(0);
    }
    /// The captions of the items' records in the order of the array; "new" for new items.
    std::string order() {
        std::string text;
        for (const auto& item : *images().imagesArray())
            text += item->imageDictionary() ? recordText(item->imageDictionary(), "text") : "new";
        return text;
    }
    void typeCaption(const std::shared_ptr<MediaCollectionViewCell>& tile, const std::string& text) {
        ASSERT_NE(tile, nullptr);
        tile->myTextView()->becomeFirstResponder();
        ASSERT_TRUE(platform.typeOver(text));
        platform.settle();
    }
    /// Drags the table as a finger does.
    void dragTable() {
        platform.touch(UITouchPhase::began, {180, 150});
        for (int i = 1; i <= 5; ++i) platform.touch(UITouchPhase::moved, {180, 150 - i * 10.0});
        platform.touch(UITouchPhase::ended, {180, 100});
        platform.advance(1);
    }
    /// Presses the add tile of a strip and returns the picker that comes.
    std::shared_ptr<UIImagePickerController> pickFrom(UIArticleEditMediaTableViewCell& strip) {
        table().scrollToRowAtIndexPath(*table().indexPathForCell(strip), false);
        platform.settle();
        const auto add = tileAt(strip, tileCount(strip) - 1);
        if (add) platform.tap(*add);
        platform.advance(1);
        return presented<UIImagePickerController>();
    }
    void finishPicking(const std::shared_ptr<UIImagePickerController>& picker, std::string type,
                       std::shared_ptr<const UIImage> picture, std::optional<NSURL> url = {}) {
        ASSERT_NE(picker, nullptr);
        UIImagePickerMediaInfo info;
        info.mediaType = std::move(type);
        info.originalImage = std::move(picture);
        info.mediaURL = std::move(url);
        picker->delegate()->imagePickerControllerDidFinishPickingMediaWithInfo(*picker, info);
        platform.advance(1);
    }
    static Data pictureData(const char* name = "loading") {
        return Data::mapFile(*OstrelArticleBundle->pathForResource(name, "png"));
    }
    static std::shared_ptr<const UIImage> picture() { return UIImage::imageWithData(pictureData()); }

    TemporaryFolder home;
    std::shared_ptr<ScriptedMediaBackend> media = std::make_shared<ScriptedMediaBackend>();
    std::shared_ptr<UINavigationController> navigation;
    std::shared_ptr<UIArticleEditViewController> editor;

private:
    const std::string formerHome_;
};

}  // namespace ostrel
