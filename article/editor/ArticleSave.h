#pragma once

#include "article/media/NSArticleImageObject.h"
#include "article/media/NSArticleVideoObject.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

class ArticleRequest;
struct ArticleAnswer;

/// What a save sends: an article as its editor shows it.
struct ArticleDraft {
    /// The server's record of the article under edit; absent for a new article.
    Dictionary record;
    std::string title, text;
    /// In the order in which readers will see them. An item without a record is new.
    ArticleImages images;
    ArticleVideos videos;
    /// The records of existing items that the user removed.
    std::vector<Dictionary> removedImages, removedVideos;
};

/// How a save ends.
enum class ArticleSaveEnd {
    /// The server has the article; its new record was posted as a notification.
    done,
    /// The article could not be created or loaded again.
    failed,
    /// The server's answer to the creation or to the last load is no record.
    unreadable,
};

/// The editor's screen, as a save sees it. Requests under way and the thread that waits for them hold the delegate, so
/// that a save continues after its screen was closed. Main thread.
class ArticleSaveDelegate {
public:
    virtual ~ArticleSaveDelegate() = default;
    /// The article as the screen shows it now. A save of a new article asks for the draft twice: at its start for the
    /// texts, and when the server has created the article for the items, because a clip may have been converted in
    /// between.
    virtual ArticleDraft draftToSave() = 0;
    /// The server refused the new title and text of an existing article. The save continues, and `saveDidEnd` follows.
    virtual void textsWereRefused() = 0;
    virtual void saveDidEnd(ArticleSaveEnd end) = 0;
};

/// One save of an article: sends all requests at once, waits until each has been answered, loads the article once more
/// and posts its new record. A failed upload, removal, caption or position is logged at most, and does not stop the
/// save. Requests and the waiting thread own the save; nobody else needs to hold it. Main thread.
class ArticleSave final : public std::enable_shared_from_this<ArticleSave> {
public:
    /// The number of requests that were sent and not yet answered. All saves of one screen share the number, so that a
    /// second save waits for the requests of the first. The main thread alone changes it, the waiting thread reads it
    /// too; no other memory depends on its order.
    using Outstanding = std::atomic<std::int64_t>;

    ArticleSave(std::shared_ptr<ArticleSaveDelegate> delegate, std::shared_ptr<Outstanding> outstanding);

    /// Takes the draft and sends it: a draft without a record as a new article, any other as an update.
    void start();

    // The steps of a save

    void createArticle(const ArticleDraft& draft);
    /// Starts the thread that waits until no request is outstanding, and then loads the article.
    void waitAndReload(const std::string& articleId, bool isNewArticle);
    /// `position`: the place among the article's images, from 0.
    void uploadImage(const NSArticleImageObject& item, std::int64_t position, const std::string& articleId);
    void uploadVideo(const NSArticleVideoObject& item, std::int64_t position, const std::string& articleId);
    /// Sends a request and counts it until it is answered; `answered` may be empty. Without a server framework, when
    /// the application ends, nothing is sent.
    void send(const ArticleRequest& request, std::function<void(const ArticleAnswer& answer)> answered = {});
    void removeImage(const Dictionary& record);
    void removeVideo(const Dictionary& record);

private:
    void updateArticle(const ArticleDraft& draft);
    void uploadAll(const std::string& articleId);
    void articleWasReloaded(const ArticleAnswer& answer, bool isNewArticle);

    const std::shared_ptr<ArticleSaveDelegate> delegate_;
    const std::shared_ptr<Outstanding> outstanding_;
};

}  // namespace ostrel
