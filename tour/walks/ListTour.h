#pragma once

#include "tour/guide/TourGuide.h"

#include <string>
#include <vector>

namespace ostrel {

/// The tour of the article list, with the accounts: everything a visitor, a reader and an owner do there.
class ListTour final : public TourGuide {
public:
    using TourGuide::TourGuide;
    void run();

private:
    bool listShows(const UIArticleListTableViewController& list, const std::vector<std::string>& ids);

    void everybodysArticles();
    void likeReachesTheDatabase();
    void likeTwiceCountsOnce();
    void commentNeedsALogin();
    void shareOffersTheLink();
    void loadMorePagesOn();
    void refreshKeepsTheList();
    void keyRefreshes();
    void myArticlesAskForALogin();
    void wrongPasswordIsTold();
    void ownerSeesOwnArticles();
    void ownerDeletesAnArticle();
    void rowActionsShow();
    void signingOutAsksAgain();
    void nameTakenIsTold();
    void newAccountIsEmpty();
    void secondUserLikes();
    void noConnectionIsTold();
    void serverComesBack();
    void windowResizes();

    std::string likedId_, likedBefore_, deletedId_;
};

}  // namespace ostrel
