#include "article/editor/UIArticleEditViewController.h"

#include "article/records/ArticleNotifications.h"
#include "article/server/ArticleRequest.h"
#include "article/server/OstrelServerFramework.h"
#include "platform/foundation/runloop/EndsOnMainThread.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/foundation/values/Text.h"
#include "platform/uikit/screens/UIAlertController.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <utility>

namespace ostrel {

namespace {

constexpr double secondsBetweenLooks = 0.5;
constexpr double secondsBeforeClosing = 0.2;

/// An article's id as part of a path; what has none reads "(null)", and the server refuses it.
std::string idText(const Dictionary& record) { return recordId(record).value_or("(null)"); }

std::string textOf(const std::shared_ptr<UITextField>& field) {
    return field ? field->text() : std::string();
}
std::string textOf(const std::shared_ptr<UITextView>& view) { return view ? view->text() : std::string(); }

const auto& itemsOf(const UIArticleEditImagesTableViewCell& strip) { return strip.imagesArray(); }
const auto& itemsOf(const UIArticleEditVideosTableViewCell& strip) { return strip.videosArray(); }

/// Calls `visit` with each item and its position. What there is is looked up anew for each.
template <class Strip, class Visit>
void forEachItem(const std::shared_ptr<Strip>& strip, const Visit& visit) {
    for (std::size_t i = 0; strip && itemsOf(*strip) && i < itemsOf(*strip)->size(); ++i) {
        const auto item = (*itemsOf(*strip))[i];
        visit(*item, static_cast<int>(i));
    }
}

void logUpload(const char* failure, const char* result, const ArticleAnswer& answer) {
    if (answer.error) {
        NSLog(failure, *answer.error);
    } else {
        NSLog(result, answer.record ? std::optional(answer.record.value().json()) : std::nullopt);
    }
}

}  // namespace

// The order of requests

void UIArticleEditViewController::save() {
    // One that sends itself may appear before its rows were made.
    view()->layoutIfNeeded();
    showPosting();
    if (const auto& post = navigationItem().rightBarButtonItem()) post->setEnabled(false);
    postingView_->startAnimated();
    if (!articleDictionary_) return uploadNewArticle();

    if (imagesCell_ && imagesCell_->removedImagesDictionaryArray()) {
        for (const Dictionary& record : *imagesCell_->removedImagesDictionaryArray())
            removeServerImage(record);
    }
    if (videosCell_ && videosCell_->removedVideosDictionaryArray()) {
        for (const Dictionary& record : *videosCell_->removedVideosDictionaryArray())
            removeServerVideo(record);
    }
    const std::string articleId = idText(articleDictionary_);
    forEachItem(imagesCell_, [&](const NSArticleImageObject& item, int position) {
        if (!item.imageDictionary()) return uploadImage(item, position, articleId);
        const Value id = item.imageDictionary()["id"];
        updateServerImageSort(position, id);
        if (item.textChanged()) updateServerImageText(item.text().value_or(""), id);
    });
    forEachItem(videosCell_, [&](const NSArticleVideoObject& item, int position) {
        if (!item.videoDictionary()) return uploadVideo(item, position, articleId);
        const Value id = item.videoDictionary()["id"];
        updateServerVideoSort(position, id);
        if (item.textChanged()) updateServerVideoText(item.text().value_or(""), id);
    });
    sendCounted(
        ArticleRequest::updateArticle(articleDictionary_["id"], textOf(titleField_), textOf(textTextField_)),
        [self = strongSelf()](const ArticleAnswer& answer) {
            if (!answer.error) return;
            NSLog("save article failed error: %@", *answer.error);
            self->presentFailure();
        });
    waitingForUploadArticleID(articleId, false);
}

void UIArticleEditViewController::uploadNewArticle() {
    ArticleRequest::createArticle(textOf(titleField_), textOf(textTextField_))
        .send([self = strongSelf()](const ArticleAnswer& answer) {
            if (answer.error) {
                NSLog("save article failed error: %@", *answer.error);
                self->presentFailure();
                return;
            }
            NSLog("upload new article success.");
            if (!answer.record) {
                // The editor stays as it is, with its veil: so is required.
                NSLog("Error:%@", answer.parseError);
                return;
            }
            self->uploadEverything(idText(answer.record));
        });
}

void UIArticleEditViewController::uploadEverything(const std::string& articleId) {
    forEachItem(imagesCell_, [&](const NSArticleImageObject& item, int position) {
        uploadImage(item, position, articleId);
    });
    forEachItem(videosCell_, [&](const NSArticleVideoObject& item, int position) {
        uploadVideo(item, position, articleId);
    });
    waitingForUploadArticleID(articleId, true);
}

void UIArticleEditViewController::createArticleForPre() {
    ArticleRequest::createArticle(preArticleTitle_.value_or(""), preArticleText_.value_or(""))
        .send([self = strongSelf()](const ArticleAnswer& answer) {
            if (answer.error) {
                NSLog("create new article in server Error: %@", *answer.error);
                return;
            }
            if (!answer.record) {
                NSLog("create new article failed.");
                return;
            }
            self->articleDictionary_ = answer.record;
            NSNotificationCenter::defaultCenter().postNotification(NOTIFICATION_KEY_NEW_ARTICLE,
                                                                   answer.record.value());
            RunLoop::main().perform([self] { self->viewDidAppear(false); });
        });
}

// Counted requests

void UIArticleEditViewController::sendCounted(const ArticleRequest& request,
                                              std::function<void(const ArticleAnswer& answer)> answered) {
    const auto framework = OstrelServerFramework::current();
    if (!framework) return;  // the application is ending
    ++uploadTasksNum_;
    request.sendUnjudged(framework->shareServer(),
                         [self = strongSelf(), request, answered = std::move(answered)](const auto& answer,
                                                                                        const auto& error) {
                             --self->uploadTasksNum_;
                             const ArticleAnswer judged = request.judge(answer, error);
                             if (answered) answered(judged);
                         });
}

void UIArticleEditViewController::uploadImage(const NSArticleImageObject& item, std::int64_t sort,
                                              const std::string& articleId) {
    sendCounted(ArticleRequest::uploadImage(articleId, sort,
                                            UploadFile::jpegOf(item.image(), uploadedJpegQuality),
                                            item.text().value_or("")),
                [](const ArticleAnswer& answer) {
                    logUpload("post image error:%@", "upload image result:%@", answer);
                });
}

void UIArticleEditViewController::uploadVideo(const NSArticleVideoObject& item, std::int64_t sort,
                                              const std::string& articleId) {
    ArticleVideoFields fields;
    fields.text = item.text().value_or("");
    fields.altitude = item.altitude().value_or("");
    fields.longitude = item.longitude().value_or("");
    fields.latitude = item.latitude().value_or("");
    fields.duration = item.duration();
    sendCounted(ArticleRequest::uploadVideo(articleId, sort,
                                            UploadFile::jpegOf(item.thumbnail(), uploadedJpegQuality),
                                            UploadFile::atPath(item.videoFile().value_or("")), fields),
                [](const ArticleAnswer& answer) {
                    logUpload("post video error:%@", "upload video result:%@", answer);
                });
}

void UIArticleEditViewController::updateServerImageSort(int position, const Value& imageId) {
    sendCounted(ArticleRequest::setImagePosition(imageId, position));
}

void UIArticleEditViewController::updateServerImageText(const std::string& text, const Value& imageId) {
    sendCounted(ArticleRequest::setImageCaption(imageId, text));
}

void UIArticleEditViewController::removeServerImage(const Dictionary& record) {
    sendCounted(ArticleRequest::removeImage(record["id"]), [](const ArticleAnswer& answer) {
        NSLog(answer.error ? "remove image failed." : "remove image success.");
    });
}

void UIArticleEditViewController::updateServerVideoSort(int position, const Value& videoId) {
    sendCounted(ArticleRequest::setVideoPosition(videoId, position));
}

void UIArticleEditViewController::updateServerVideoText(const std::string& text, const Value& videoId) {
    sendCounted(ArticleRequest::setVideoCaption(videoId, text));
}

void UIArticleEditViewController::removeServerVideo(const Dictionary& record) {
    sendCounted(ArticleRequest::removeVideo(record["id"]), [](const ArticleAnswer& answer) {
        NSLog(answer.error ? "remove video failed." : "remove video success.");
    });
}

// The end of a save

void UIArticleEditViewController::waitingForUploadArticleID(const std::string& articleId, bool isNewArticle) {
    NSThread::detachNewThread([self = endsOnMainThread(strongSelf()), articleId, isNewArticle] {
        NSThread::sleepForTimeInterval(secondsBetweenLooks);
        while (const std::int64_t outstanding = self->uploadTasksNum_) {
            NSLog("uploading tasks num:%@", decimalText(outstanding));
            NSThread::sleepForTimeInterval(secondsBetweenLooks);
        }
        NSLog("All upload task completed, reload the article info.");
        const auto framework = endsOnMainThread(OstrelServerFramework::current());
        if (!framework) return;  // the application is ending
        const auto request = ArticleRequest::loadArticle(articleId, ArticleRequest::LoadPurpose::afterSaving);
        request.sendUnjudged(framework->shareServer(),
                             [self, request, isNewArticle](const auto& answer, const auto& error) {
                                 self->articleWasReloaded(request.judge(answer, error), isNewArticle);
                             });
    });
}

void UIArticleEditViewController::articleWasReloaded(const ArticleAnswer& answer, bool isNewArticle) {
    if (answer.error) {
        NSLog("reload article failed error: %@", *answer.error);
        presentFailure();
        return;
    }
    if (!answer.record) {
        NSLog("Error:%@", answer.parseError);
        return;
    }
    NSLog(isNewArticle ? "upload new article completed." : "update article's title & text success.");
    NSNotificationCenter::defaultCenter().postNotification(
        isNewArticle ? NOTIFICATION_KEY_NEW_ARTICLE : NOTIFICATION_KEY_UPDATE, answer.record.value());
    if (postingView_) postingView_->stopAnimated();
    RunLoop::main().performAfter(secondsBeforeClosing, [self = strongSelf()] { self->cancel(); });
}

// What the user sees of it

void UIArticleEditViewController::showPosting() {
    if (postingView_) return;
    const UIWindow* const window = UIApplication::sharedApplication().firstWindow();
    const auto root = window ? window->rootViewController() : nullptr;
    const auto under = root ? root->view() : nullptr;
    postingView_ = make<UIArticlePostingView>(under ? under->frame() : CGRect());
    if (under) under->addSubview(postingView_);
}

void UIArticleEditViewController::presentFailure() {
    const auto alert = make<UIAlertController>("Failed", std::string(), UIAlertController::Style::alert);
    alert->addAction({"OK", UIAlertAction::Style::defaultStyle, [weak = weakSelf()] {
                          const auto self = weak.lock();
                          auto* const navigation = self ? self->navigationController() : nullptr;
                          if (navigation && navigation->topViewController() == self)
                              navigation->popViewControllerAnimated(true);
                      }});
    presentViewController(alert, true);
}

}  // namespace ostrel
