#pragma once

#include "tour/guide/TourGuide.h"

#include <string>

namespace ostrel {

class UIArticleViewController;

/// The tour of one article: its pictures, its video, its comments, and the message to its author. Follows the tour of
/// the list, which leaves its new account signed in.
class DetailTour final : public TourGuide {
public:
    using TourGuide::TourGuide;
    void run();

private:
    void articleOpens();
    void textIsSelected();
    void textIsCopied();
    void pictureComes();
    void videoPlays();
    void spacePauses();
    void authorIsAddressed();
    void authorGetsAMessage();
    void articleIsShared();
    void listKeepsItsPlace();
    void commentIsTyped();
    void commentIsSent();
    void commentIsThere();
    void authorReadsTheMessage();

    /// The article screen on top; null when another screen is.
    UIArticleViewController* screen();
    /// The row of the article, when the row is wholly on screen; else null.
    UIArticleListTableViewCell* rowOf(const std::string& articleId);
    /// Scrolls down until `isThere`; false when that takes more than forty swipes.
    bool scrollUntil(const std::function<bool()>& isThere);
    /// No bar and no edge of the window covers a part of `view`.
    bool isWhole(const UIView& view);

    std::string articleId_;
    std::int64_t commentsBefore_ = 0;
    /// Where the list was scrolled to when the article opened, in points.
    CGFloat listOffset_ = 0;
};

}  // namespace ostrel
