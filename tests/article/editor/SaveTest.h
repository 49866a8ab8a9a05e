#pragma once

#include "article/media/NSArticleImageObject.h"
#include "article/media/NSArticleVideoObject.h"
#include "article/records/ArticleNotifications.h"
#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "tests/article/ArticleTest.h"
#include "tests/support/TemporaryFolder.h"

namespace ostrel {

/// A home directory of its own, the notifications of saves, and time that passes while threads wait.
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
        endSaves();
        NSNotificationCenter::defaultCenter().removeObserver(this);
        setHomeDirectory(formerHome_);
    }

    /// Advances the time, once every thread of a save sleeps.
    void elapse(double seconds) {
        EXPECT_TRUE(platform.loop().waitFor(
            [&] { return NSThread::runningCount() == platform.time().clock().sleepingThreads(); }));
        platform.advance(seconds);
    }
    /// Answers every waiting call, in order.
    void answerAll(const std::optional<std::string>& answer, const std::optional<std::string>& error = {}) {
        for (std::size_t count = server->calls.size(); count > 0; --count) server->answer(answer, error);
    }
    /// Cancels all calls. A thread of a save waits until its requests were answered, and then sends one more.
    void endSaves() {
        for (int i = 0; i < 10 && (NSThread::runningCount() > 0 || !server->calls.empty()); ++i) {
            server->cancelAll();
            elapse(0.5);
        }
    }
    /// Answers every call well, until none is left and no thread waits.
    void finish() {
        for (int i = 0; i < 20 && (NSThread::runningCount() > 0 || !server->calls.empty()); ++i) {
            answerAll(R"({"id":42,"title":"Fresh"})");
            elapse(0.5);
        }
        EXPECT_EQ(NSThread::runningCount(), 0);
    }
    Lines waitingPaths() const {
        Lines paths;
        for (const auto& call : server->calls) paths.push_back(call.path);
        return paths;
    }
    std::string errorFile() const { return home.read("Documents/error.html"); }
    static Data pictureData(const char* name = "loading") {
        return Data::mapFile(*OstrelArticleBundle->pathForResource(name, "png"));
    }
    static std::shared_ptr<const UIImage> picture() { return UIImage::imageWithData(pictureData()); }
    static std::shared_ptr<NSArticleImageObject> newImage(std::shared_ptr<const UIImage> image,
                                                          std::optional<std::string> text = {}) {
        auto item = std::make_shared<NSArticleImageObject>();
        item->setImage(std::move(image));
        item->setText(std::move(text));
        return item;
    }
    /// A video of 12.6 seconds with a latitude and an empty altitude.
    static std::shared_ptr<NSArticleVideoObject> newVideo(std::string file) {
        auto item = std::make_shared<NSArticleVideoObject>();
        item->setVideoFile(std::move(file));
        item->setThumbnail(picture());
        item->setDuration(12.6f);
        item->setLatitude("+31.2304");
        item->setAltitude("");
        return item;
    }

    TemporaryFolder home;
    /// The names of the notifications, each with the title of its record.
    Lines posted;
    Dictionary lastRecord;

private:
    const std::string formerHome_;
};

}  // namespace ostrel
