#pragma once

#include "article/list/UIArticleListTableViewCell.h"
#include "reader/ArticleServerProcess.h"
#include "reader/ReaderApplication.h"
#include "reader/tour/TourDatabase.h"
#include "reader/tour/TourInput.h"
#include "reader/tour/TourReport.h"
#include "reader/tour/TourWindow.h"

#include <functional>
#include <string>
#include <vector>

namespace ostrel {

/// The tour of the article list, with the accounts: everything a visitor, a reader and an owner do there.
class ListTour final {
public:
    ListTour(const ReaderOptions& options, ReaderApplication& reader, ArticleServerProcess& server);
    std::vector<TourStep> run();

private:
    using Body = void (ListTour::*)();
    void step(const char* name, Body body);
    bool check(bool held, const std::string& what);

    // As a person would on this idiom: a finger, or on the Mac idiom the pointer.
    void press(CGPoint point);
    void press(UIView* view, const std::string& what);
    void scrollDown();
    void openTab(const char* title);
    void fill(const char* name, const std::string& text);
    void signIn(const std::string& name, const std::string& password);
    bool listShows(const UIArticleListTableViewController& list, const std::vector<std::string>& ids);
    UIArticleListTableViewCell* topRow();

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

    const ReaderOptions& options_;
    ReaderApplication& reader_;
    ArticleServerProcess& server_;
    TourDatabase database_;
    TourWindow window_;
    TourInput input_;
    std::vector<TourStep> steps_;
    std::string likedId_, likedBefore_, deletedId_;
};

}  // namespace ostrel
