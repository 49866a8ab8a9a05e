#pragma once

#include "article/list/UIArticleListTableViewCell.h"
#include "reader/application/ReaderApplication.h"
#include "reader/services/ArticleServerProcess.h"
#include "tour/guide/TourDatabase.h"
#include "tour/guide/TourInput.h"
#include "tour/guide/TourOptions.h"
#include "tour/guide/TourReport.h"
#include "tour/guide/TourWindow.h"

#include <functional>
#include <string>
#include <vector>

namespace ostrel {

/// What every part of the tour needs: steps with checks and pictures, and what a person does with the window. Main
/// thread.
class TourGuide {
public:
    /// Adds to `steps`, which all parts of the tour share, so that their pictures are numbered in one sequence.
    TourGuide(const TourOptions& options, ReaderApplication& reader, ArticleServerProcess& server,
              std::vector<TourStep>& steps);

protected:
    ~TourGuide() = default;

    /// Runs `body`, waits until the window is at rest, then writes a picture of it and prints which checks failed.
    void step(const char* name, const std::function<void()>& body);
    /// Adds a check to the step under way; `what` says what was checked. Returns `held`.
    bool check(bool held, const std::string& what);
    /// Writes a further picture of the window beside those of the steps.
    void savePicture(const std::string& name) const;

    // These use a finger, or on the Mac idiom the pointer.
    void press(CGPoint point);
    /// Presses the middle of `view`. Checks that the view, which `what` names, is on screen.
    void press(UIView* view, const std::string& what);
    /// Presses for longer than a long press takes.
    void hold(CGPoint point);
    /// Drags the view at `from` to `to`.
    void drag(CGPoint from, CGPoint to);
    /// Scrolls down by a swipe, or by the wheel, whose momentum continues afterwards.
    void fling();
    /// Flings and waits until the window is at rest.
    void scrollDown();
    void openTab(const char* title);
    /// Types `text` into the field with this accessible name, in the place of the text that it holds.
    void fill(const char* name, const std::string& text);
    /// Fills in the login screen and sends it.
    void signIn(const std::string& name, const std::string& password);
    /// The uppermost row that is wholly on screen; null when there is none.
    UIArticleListTableViewCell* topRow();

    const TourOptions& options_;
    ReaderApplication& reader_;
    ArticleServerProcess& server_;
    TourDatabase database_;
    TourWindow window_;
    TourInput input_;
    std::vector<TourStep>& steps_;
};

/// The id of the article that `row` shows.
std::string idOf(const UIArticleListTableViewCell& row);

}  // namespace ostrel
