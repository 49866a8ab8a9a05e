#pragma once

#include "article/list/UIArticleListTableViewCell.h"
#include "reader/ArticleServerProcess.h"
#include "reader/ReaderApplication.h"
#include "tour/TourDatabase.h"
#include "tour/TourInput.h"
#include "tour/TourReport.h"
#include "tour/TourWindow.h"

#include <functional>
#include <string>
#include <vector>

namespace ostrel {

/// What every tour needs: steps with checks and pictures, and the ways of a person through the window.
class TourGuide {
public:
    /// Adds to `steps`, so that the pictures of several tours are numbered through.
    TourGuide(const ReaderOptions& options, ReaderApplication& reader, ArticleServerProcess& server,
              std::vector<TourStep>& steps);

protected:
    ~TourGuide() = default;

    void step(const char* name, const std::function<void()>& body);
    bool check(bool held, const std::string& what);

    // As a person would on this idiom: a finger, or on the Mac idiom the pointer.
    void press(CGPoint point);
    void press(UIView* view, const std::string& what);
    /// Presses for longer than a long press takes.
    void hold(CGPoint point);
    /// Drags what lies at `from` to `to`.
    void drag(CGPoint from, CGPoint to);
    void scrollDown();
    void openTab(const char* title);
    /// The text field with this accessible name gets this text, typed.
    void fill(const char* name, const std::string& text);
    void signIn(const std::string& name, const std::string& password);
    /// The uppermost row that is wholly on screen; null when there is none.
    UIArticleListTableViewCell* topRow();

    const ReaderOptions& options_;
    ReaderApplication& reader_;
    ArticleServerProcess& server_;
    TourDatabase database_;
    TourWindow window_;
    TourInput input_;
    std::vector<TourStep>& steps_;
};

std::string idOf(const UIArticleListTableViewCell& row);

}  // namespace ostrel
