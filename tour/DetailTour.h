#pragma once

#include "tour/TourGuide.h"

#include <string>

namespace ostrel {

class UIArticleViewController;

/// The tour of one article: its pictures, its film, its comments, and the message to its author. Follows the tour of the
/// list, whose new account is signed in.
class DetailTour final : public TourGuide {
public:
    using TourGuide::TourGuide;
    void run();

private:
    void articleOpens();
    void pictureComes();
    void filmPlays();
    void spacePauses();
    void textIsSelected();
    void textIsCopied();
    void authorIsAddressed();
    void authorGetsAMessage();
    void articleIsShared();
    void listKeepsItsPlace();
    void commentIsTyped();
    void commentIsSent();
    void commentIsThere();
    void authorReadsTheMessage();

    /// The article screen on top; null when there is none.
    UIArticleViewController* screen();
    UIArticleListTableViewCell* rowOf(const std::string& articleId);
    /// Scrolls down until `isThere`; false when that takes more than a bounded number of swipes.
    bool scrollUntil(const std::function<bool()>& isThere);
    bool isWhole(const UIView& view);

    std::string articleId_;
    std::int64_t commentsBefore_ = 0;
    CGFloat listOffset_ = 0;
};

}  // namespace ostrel
