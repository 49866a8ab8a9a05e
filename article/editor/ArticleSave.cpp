#include "article/editor/ArticleSave.h"

#include "article/records/ArticleNotifications.h"
#include "article/server/ArticleRequest.h"
#include "article/server/OstrelServerFramework.h"
#include "platform/foundation/runloop/EndsOnMainThread.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/foundation/values/Text.h"

#include <utility>

namespace ostrel {

namespace {

constexpr double secondsBetweenLooks = 0.5;

/// An article's id as a part of a path. A record without an id gives "(null)", which the server refuses.
std::string idText(const Dictionary& record) { return recordId(record).value_or("(null)"); }

void logUpload(const char* failure, const char* result, const ArticleAnswer& answer) {
    if (answer.error) {
        NSLog(failure, *answer.error);
    } else {
        NSLog(result, answer.record ? std::optional(answer.record.value().json()) : std::nullopt);
    }
}

}  // namespace

ArticleSave::ArticleSave(std::shared_ptr<ArticleSaveDelegate> delegate, std::shared_ptr<Outstanding> outstanding)
    : delegate_(std::move(delegate)), outstanding_(std::move(outstanding)) {}

void ArticleSave::start() {
    const ArticleDraft draft = delegate_->draftToSave();
    if (draft.record) {
        updateArticle(draft);
    } else {
        createArticle(draft);
    }
}

void ArticleSave::createArticle(const ArticleDraft& draft) {
    ArticleRequest::createArticle(draft.title, draft.text)
        .send([self = shared_from_this()](const ArticleAnswer& answer) {
            if (answer.error) {
                NSLog("save article failed error: %@", *answer.error);
                self->delegate_->saveDidEnd(ArticleSaveEnd::failed);
                return;
            }
            NSLog("upload new article success.");
            if (!answer.record) {
                NSLog("Error:%@", answer.parseError);
                self->delegate_->saveDidEnd(ArticleSaveEnd::unreadable);
                return;
            }
            self->uploadAll(idText(answer.record));
        });
}

void ArticleSave::uploadAll(const std::string& articleId) {
    const ArticleDraft draft = delegate_->draftToSave();
    std::int64_t position = 0;
    for (const auto& item : draft.images) uploadImage(*item, position++, articleId);
    position = 0;
    for (const auto& item : draft.videos) uploadVideo(*item, position++, articleId);
    waitAndReload(articleId, true);
}

void ArticleSave::updateArticle(const ArticleDraft& draft) {
    for (const Dictionary& record : draft.removedImages) removeImage(record);
    for (const Dictionary& record : draft.removedVideos) removeVideo(record);
    const std::string articleId = idText(draft.record);
    // Kept on purpose: every existing item's position is sent, moved or not, so that the server's order is the one
    // that the user saw, whatever another client did in the meantime.
    int position = 0;
    for (const auto& item : draft.images) {
        if (const Dictionary& record = item->imageDictionary()) {
            send(ArticleRequest::setImagePosition(record["id"], position));
            if (item->textChanged()) send(ArticleRequest::setImageCaption(record["id"], item->text().value_or("")));
        } else {
            uploadImage(*item, position, articleId);
        }
        ++position;
    }
    position = 0;
    for (const auto& item : draft.videos) {
        if (const Dictionary& record = item->videoDictionary()) {
            send(ArticleRequest::setVideoPosition(record["id"], position));
            if (item->textChanged()) send(ArticleRequest::setVideoCaption(record["id"], item->text().value_or("")));
        } else {
            uploadVideo(*item, position, articleId);
        }
        ++position;
    }
    send(ArticleRequest::updateArticle(draft.record["id"], draft.title, draft.text),
         [self = shared_from_this()](const ArticleAnswer& answer) {
             if (!answer.error) return;
             NSLog("save article failed error: %@", *answer.error);
             self->delegate_->textsWereRefused();
         });
    waitAndReload(articleId, false);
}

// Counted requests

void ArticleSave::send(const ArticleRequest& request, std::function<void(const ArticleAnswer& answer)> answered) {
    const auto framework = OstrelServerFramework::current();
    if (!framework) return;
    ++*outstanding_;
    request.sendUnjudged(framework->shareServer(), [self = shared_from_this(), request, answered = std::move(answered)](
                                                       const auto& answer, const auto& error) {
        --*self->outstanding_;
        const ArticleAnswer judged = request.judge(answer, error);
        if (answered) answered(judged);
    });
}

void ArticleSave::uploadImage(const NSArticleImageObject& item, std::int64_t position, const std::string& articleId) {
    send(ArticleRequest::uploadImage(articleId, position, UploadFile::jpegOf(item.image(), uploadedJpegQuality),
                                     item.text().value_or("")),
         [](const ArticleAnswer& answer) { logUpload("post image error:%@", "upload image result:%@", answer); });
}

void ArticleSave::uploadVideo(const NSArticleVideoObject& item, std::int64_t position, const std::string& articleId) {
    ArticleVideoFields fields;
    fields.text = item.text().value_or("");
    fields.altitude = item.altitude().value_or("");
    fields.longitude = item.longitude().value_or("");
    fields.latitude = item.latitude().value_or("");
    fields.duration = item.duration();
    send(ArticleRequest::uploadVideo(articleId, position, UploadFile::jpegOf(item.thumbnail(), uploadedJpegQuality),
                                     UploadFile::atPath(item.videoFile().value_or("")), fields),
         [](const ArticleAnswer& answer) { logUpload("post video error:%@", "upload video result:%@", answer); });
}

void ArticleSave::removeImage(const Dictionary& record) {
    send(ArticleRequest::removeImage(record["id"]),
         [](const ArticleAnswer& answer) { NSLog(answer.error ? "remove image failed." : "remove image success."); });
}

void ArticleSave::removeVideo(const Dictionary& record) {
    send(ArticleRequest::removeVideo(record["id"]),
         [](const ArticleAnswer& answer) { NSLog(answer.error ? "remove video failed." : "remove video success."); });
}

// The end

void ArticleSave::waitAndReload(const std::string& articleId, bool isNewArticle) {
    // The thread may be the last to release the save, and with it the screen's views, which must end on the main
    // thread.
    NSThread::detachNewThread([self = endsOnMainThread(shared_from_this()), articleId, isNewArticle] {
        NSThread::sleepForTimeInterval(secondsBetweenLooks);
        while (const std::int64_t outstanding = *self->outstanding_) {
            NSLog("uploading tasks num:%@", decimalText(outstanding));
            NSThread::sleepForTimeInterval(secondsBetweenLooks);
        }
        NSLog("All upload task completed, reload the article info.");
        const auto framework = endsOnMainThread(OstrelServerFramework::current());
        // Without a framework the application is ending.
        if (!framework) return;
        const auto request = ArticleRequest::loadArticle(articleId, ArticleRequest::LoadPurpose::afterSaving);
        request.sendUnjudged(framework->shareServer(),
                             [self, request, isNewArticle](const auto& answer, const auto& error) {
                                 self->articleWasReloaded(request.judge(answer, error), isNewArticle);
                             });
    });
}

void ArticleSave::articleWasReloaded(const ArticleAnswer& answer, bool isNewArticle) {
    if (answer.error) {
        NSLog("reload article failed error: %@", *answer.error);
        delegate_->saveDidEnd(ArticleSaveEnd::failed);
        return;
    }
    if (!answer.record) {
        NSLog("Error:%@", answer.parseError);
        delegate_->saveDidEnd(ArticleSaveEnd::unreadable);
        return;
    }
    NSLog(isNewArticle ? "upload new article completed." : "update article's title & text success.");
    NSNotificationCenter::defaultCenter().postNotification(
        isNewArticle ? NOTIFICATION_KEY_NEW_ARTICLE : NOTIFICATION_KEY_UPDATE, answer.record.value());
    delegate_->saveDidEnd(ArticleSaveEnd::done);
}

}  // namespace ostrel
