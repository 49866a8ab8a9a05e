#pragma once

#include "article/editor/UIArticleEditViewController.h"
#include "article/records/ArticleNotifications.h"
#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "tests/article/ArticleTest.h"
#include "tests/support/TemporaryFolder.h"

namespace ostrel {

/// An editor pushed onto a list in the window, a home directory of its own, and the notifications of saves.
class SaveTest : public ArticleTest {
protected:
    SaveTest() : formerHome_(NSHomeDirectory()) {
        setHomeDirectory(home.path());
        loadOstrelArticleBundle();
        for (const char* name : {NOTIFICATION_KEY_NEW_ARTICLE, NOTIFICATION_KEY_UPDATE}) {
            NSNotificationCenter::defaultCenter().addObserver(this, name, [this](const NSNotification& note) {
                lastRecord = Dictionary(note.object);
                posted.push_back(std::string(note.name) + " " + recordText(lastRecord, "title"));
            });
        }
    }
    ~SaveTest() override {
        // No thread waits any longer once everything has been answered.
        for (int i = 0; i < 10 && (NSThread::runningCount() > 0 || !server->calls.empty()); ++i) {
            server->cancelAll();
            elapse(0.5);
        }
        NSNotificationCenter::defaultCenter().removeObserver(this);
        setHomeDirectory(formerHome_);
    }

    void push(std::shared_ptr<UIArticleEditViewController> screen) {
        list = make<UIViewController>();
        navigation = make<UINavigationController>(list);
        show(navigation);
        editor = std::move(screen);
        navigation->pushViewController(editor, false);
        platform.advance(1);
    }
    void openNew() { push(make<UIArticleEditViewController>()); }
    /// Article 42 with images 11, 12, 13 and videos 21, 22.
    void openExisting() {
        auto screen = make<UIArticleEditViewController>();
        screen->setArticleDictionary(record(R"({"id":42,"title":"Old","text":"old text",
            "images":[{"id":11,"text":"one"},{"id":12,"text":"two"},{"id":13}],
            "videos":[{"id":21},{"id":"22"}]})"));
        push(std::move(screen));
    }
    /// An existing article under every kind of change, so that a save sends one request of each kind at least.
    void openExistingAndChangeAll() {
        openExisting();
        removeImage(2);
        removeVideo(1);
        const auto second = images().imagesArray()->at(1);
        second->setText("a&b =ü");
        second->setTextChanged(true);
        const auto film = videos().videosArray()->at(0);
        film->setText("");
        film->setTextChanged(true);
        addImage("new");
        addVideo(home.write("Documents/clip.mp4", "film"));
        editor->titleField()->setText("Title");
        editor->textTextField()->setText("Text\r\nÜ");
    }

    static std::shared_ptr<const UIImage> picture() {
        return UIImage::imageWithData(Data::mapFile(*OstrelArticleBundle->pathForResource("loading", "png")));
    }
    void addImage(std::optional<std::string> text = {}) { addImage(picture(), std::move(text)); }
    void addImage(std::shared_ptr<const UIImage> image, std::optional<std::string> text = {}) {
        auto item = std::make_shared<NSArticleImageObject>();
        item->setImage(std::move(image));
        item->setText(std::move(text));
        images().collectionView()->performBatchUpdates([&] { images().addImageWith(std::move(item)); });
    }
    void addVideo(std::string file) {
        auto item = std::make_shared<NSArticleVideoObject>();
        item->setVideoFile(std::move(file));
        item->setThumbnail(picture());
        item->setDuration(12.6f);
        item->setLatitude("+31.2304");
        item->setAltitude("");
        auto items = *videos().videosArray();
        items.push_back(std::move(item));
        videos().setVideosArray(std::move(items));
        videos().collectionView()->reloadData();
    }
    void removeImage(std::int64_t position) {
        EXPECT_TRUE(images().collectionViewRemoveItemAtIndexPath(*images().collectionView(), {0, position}));
        platform.settle();
    }
    void removeVideo(std::int64_t position) {
        EXPECT_TRUE(videos().collectionViewRemoveItemAtIndexPath(*videos().collectionView(), {0, position}));
        platform.settle();
    }
    UIArticleEditImagesTableViewCell& images() { return *editor->imagesCell(); }
    UIArticleEditVideosTableViewCell& videos() { return *editor->videosCell(); }

    /// Moves time on, once the threads that wait have begun to.
    void elapse(double seconds) {
        EXPECT_TRUE(platform.loop().waitFor(
            [&] { return NSThread::runningCount() == platform.time().clock().sleepingThreads(); }));
        platform.advance(seconds);
    }
    /// Answers every call that waits, in order; the handlers of counted ones each lower the counter.
    void answerAll(const std::optional<std::string>& answer, const std::optional<std::string>& error = {}) {
        const std::size_t count = server->calls.size();
        for (std::size_t i = 0; i < count; ++i) server->answer(answer, error);
    }
    Lines waitingPaths() const {
        Lines paths;
        for (const auto& call : server->calls) paths.push_back(call.path);
        return paths;
    }
    std::string errorFile() const { return home.read("Documents/error.html"); }
    bool isVeiled() const { return editor->postingView() && editor->postingView()->alpha() == 1; }
    bool isPostEnabled() const { return editor->navigationItem().rightBarButtonItem()->isEnabled(); }
    std::shared_ptr<UIAlertController> alert() {
        return std::dynamic_pointer_cast<UIAlertController>(editor->presentedViewController());
    }
    bool isOpen() const { return navigation->topViewController() == editor; }

    TemporaryFolder home;
    std::shared_ptr<UIViewController> list;
    std::shared_ptr<UINavigationController> navigation;
    std::shared_ptr<UIArticleEditViewController> editor;
    Lines posted;  ///< names of notifications, each with the title of its record
    Dictionary lastRecord;

private:
    const std::string formerHome_;
};

}  // namespace ostrel
