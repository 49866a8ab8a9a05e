#pragma once

#include "article/editor/UIArticleEditViewController.h"
#include "platform/uikit/picker/UIImagePickerController.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "tests/article/editor/SaveTest.h"
#include "tests/support/ScriptedMedia.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ostrel {

/// An editor pushed onto an empty screen in the window, with scripted media.
class ArticleEditTest : public SaveTest {
protected:
    ArticleEditTest() {
        MediaBackend::install(media);
        server->signIn();
    }
    ~ArticleEditTest() override {
        endSaves();
        settleRequests();
        editor = nullptr;
        navigation = nullptr;
        platform.window().setRootViewController(nullptr);
        platform.advance(1);
        MediaBackend::install(nullptr);
    }

    void push(std::shared_ptr<UIArticleEditViewController> screen) {
        list = make<UIViewController>();
        navigation = make<UINavigationController>(list);
        show(navigation);
        editor = std::move(screen);
        navigation->pushViewController(editor, false);
        platform.advance(1);
    }
    void openNew(std::int64_t style = 0) {
        auto screen = make<UIArticleEditViewController>();
        screen->setArticleEditStyle(style);
        push(std::move(screen));
    }
    void openExisting(const std::string& article) {
        auto screen = make<UIArticleEditViewController>();
        screen->setArticleDictionary(record(article));
        push(std::move(screen));
    }
    /// Article 42. Its images are captioned "A", "B" and so on and have ids from 1, and likewise its videos.
    static std::string articleWith(int images, int videos = 0) {
        const auto list = [](int count, const char* kind) {
            std::string text;
            for (int i = 0; i < count; ++i) {
                const std::string letter(1, static_cast<char>('A' + i % 26));
                text += std::string(i ? "," : "") + "{\"id\":" + std::to_string(i + 1) + ",\"text\":\"" + letter +
                        "\",\"thumbnail\":\"http://h/" + kind + letter + "\"}";
            }
            return text;
        };
        return R"({"id":42,"title":"A title","text":"Some text","images":[)" + list(images, "image") +
               R"(],"videos":[)" + list(videos, "video") + "]}";
    }
    /// Article 42 with three images and two videos, under every kind of change: a save sends ten counted requests, at
    /// least one of each kind.
    void openExistingAndChangeAll() {
        openExisting(R"({"id":42,"title":"Old","text":"old text","videos":[{"id":21},{"id":"22"}],
            "images":[{"id":11,"text":"one"},{"id":12,"text":"two"},{"id":13}]})");
        remove(images(), 2);
        remove(videos(), 1);
        const auto changeCaption = [](ArticleMediaItem& item, const char* caption) {
            item.setText(caption);
            item.setTextChanged(true);
        };
        changeCaption(*images().imagesArray()->at(1), "a&b =ü");
        changeCaption(*videos().videosArray()->at(0), "");
        addImage("new");
        addVideo(home.write("Documents/clip.mp4", "clip"));
        editor->titleField()->setText("Title");
        editor->textTextField()->setText("Text\r\nÜ");
    }
    void addImage(std::optional<std::string> text = {}) { addImage(picture(), std::move(text)); }
    void addImage(std::shared_ptr<const UIImage> image, std::optional<std::string> text = {}) {
        const auto item = newImage(std::move(image), std::move(text));
        images().collectionView()->performBatchUpdates([&] { images().addImageWith(item); });
    }
    void addVideo(std::string file) {
        auto items = *videos().videosArray();
        items.push_back(newVideo(std::move(file)));
        videos().setVideosArray(std::move(items));
        videos().collectionView()->reloadData();
    }
    void remove(UIArticleEditMediaTableViewCell& strip, std::int64_t position) {
        EXPECT_TRUE(strip.collectionViewRemoveItemAtIndexPath(*strip.collectionView(), {0, position}));
        platform.advance(1);
    }
    /// Refuses all requests, so that none outlives the test.
    void settleRequests() {
        for (int i = 0; i < 100 && !server->calls.empty(); ++i) server->answer({}, "refused");
        for (const std::string& url : server->mediaUrls()) server->answerMedia(url, {});
        platform.advance(1);
    }

    UITableView& table() { return *editor->tableView(); }
    UIArticleEditImagesTableViewCell& images() { return *editor->imagesCell(); }
    UIArticleEditVideosTableViewCell& videos() { return *editor->videosCell(); }
    bool canPost() { return editor->navigationItem().rightBarButtonItem()->isEnabled(); }
    bool isOpen() const { return navigation->topViewController() == editor; }
    /// Whether the overlay covers the window.
    bool isCovered() const { return editor->postingView() && editor->postingView()->alpha() == 1; }
    std::shared_ptr<UIAlertController> alert() {
        return std::dynamic_pointer_cast<UIAlertController>(editor->presentedViewController());
    }
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
        platform.drag({180, 150}, {180, 100});
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
                       std::shared_ptr<const UIImage> image, std::optional<NSURL> url = {}) {
        ASSERT_NE(picker, nullptr);
        UIImagePickerMediaInfo info;
        info.mediaType = std::move(type);
        info.originalImage = std::move(image);
        info.mediaURL = std::move(url);
        picker->delegate()->imagePickerControllerDidFinishPickingMediaWithInfo(*picker, info);
        platform.advance(1);
    }

    std::shared_ptr<ScriptedMediaBackend> media = std::make_shared<ScriptedMediaBackend>();
    std::shared_ptr<UIViewController> list;
    std::shared_ptr<UINavigationController> navigation;
    std::shared_ptr<UIArticleEditViewController> editor;
};

}  // namespace ostrel
