#include "tour/walks/LogTour.h"

#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSProgress.h"
#include "reader/screens/ReaderTabs.h"
#include "reader/services/ReaderText.h"
#include "serverframework/HttpServerFramework.h"

namespace ostrel {

namespace {

constexpr char logged[] = "A line of the tour, for the log.";

std::shared_ptr<NSProgress> work(const std::string& title, int percent, std::function<void()> cancel) {
    auto progress = NSProgress::progressWithTotalUnitCount(100);
    progress->setLocalizedDescription(title);
    progress->setCancellationHandler(std::move(cancel));
    progress->setCompletedUnitCount(percent);
    progress->publish();
    return progress;
}

}  // namespace

void LogTour::run() {
    step("work-in-progress", [this] { workShowsItself(); });
    step("work-list", [this] { workIsListed(); });
    step("work-ends", [this] { workEnds(); });
    step("log", [this] { logShowsLines(); });
    step("log-closed", [this] { logCloses(); });
}

void LogTour::workShowsItself() {
    press(window_.text(readerText("Close")), "the button that closes the messages");
    window_.settle();
    openTab("Articles");
    first_ = work("Uploading \"Harbour at dusk.jpg\"", 20, [this] { ++cancelled_; });
    // The bar tells the time that is left once it has seen progress for a few seconds.
    for (int percent = 20; percent <= 45; ++percent) {
        first_->setCompletedUnitCount(percent);
        TourInput::pass(110);
    }
    check(window_.text(first_->localizedDescription()), "the bar tells what is done");
    check(window_.textContaining("left"), "the bar tells how long it takes");
}

void LogTour::workIsListed() {
    second_ = work("Converting \"Clip 1.mov\"", 60, {});
    check(window_.waitFor([&] { return window_.text("2") != nullptr; }), "the bar tells how much there is");
    press(window_.text(first_->localizedDescription()), "the bar");
    check(window_.waitFor([&] { return window_.text(second_->localizedDescription()) != nullptr; }),
          "a press lists all of it");
    window_.settle();
    press(window_.find(
              [&](UIView& view) { return view.accessibility().label == "Cancel, " + first_->localizedDescription(); }),
          "the button that cancels");
    check(window_.waitFor([&] { return cancelled_ == 1; }), "the work was told to end");
}

void LogTour::workEnds() {
    const std::string title = first_->localizedDescription();
    first_->unpublish();
    second_->unpublish();
    check(window_.waitFor([&] { return window_.text(title) == nullptr; }), "bar and list go with the work");
}

void LogTour::logShowsLines() {
    NSLog(logged);
    const auto* const help = window_.find([](UIView& view) {
        const auto* tab = dynamic_cast<ReaderTab*>(&view);
        return tab && tab->title() == readerText("Help");
    });
    // Where the tabs are no sidebar, the log is in the menu of the account.
    if (help) {
        openTab("Help");
    } else if (const auto user = reader_.framework().shareServer().currentUser();
               check(user != nullptr, "somebody is signed in")) {
        openTab(user->name.c_str());
    }
    window_.settle();
    press(window_.text(readerText("Log")), "Log");
    if (options_.reader.idiom != UIUserInterfaceIdiom::mac) {
        check(window_.waitFor([&] { return window_.text(logged) != nullptr; }), "the log shows the line");
        return;
    }
    check(window_.waitFor([&] { return reader_.logWindow() && reader_.logWindow()->isVisible(); }),
          "the log has a window of its own");
    const auto lines = reader_.log().lines();
    check(!lines.empty() && lines.back().text == logged, "the log holds the line");
    TourInput::pass(500);
    check(reader_.logWindow() &&
              reader_.logWindow()->grabWindow().save(QString::fromStdString(options_.folder + "/log-window.png")),
          "a picture of it is written");
}

void LogTour::logCloses() {
    if (reader_.logWindow()) {
        reader_.logWindow()->close();
    } else {
        press(window_.text(readerText("Close")), "the button that closes the log");
    }
    check(window_.waitFor([&] { return !reader_.logWindow() && window_.text(logged) == nullptr; }), "the log has gone");
}

}  // namespace ostrel
