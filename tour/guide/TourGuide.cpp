#include "tour/guide/TourGuide.h"

#include "platform/uikit/text/UITextField.h"
#include "reader/screens/ReaderTabs.h"
#include "reader/services/ReaderText.h"

#include <QElapsedTimer>

#include <cstdio>
#include <utility>

namespace ostrel {

TourGuide::TourGuide(const TourOptions& options, ReaderApplication& reader, ArticleServerProcess& server,
                     std::vector<TourStep>& steps)
    : options_(options),
      reader_(reader),
      server_(server),
      database_(server.dataFolder() + "/articles.sqlite"),
      window_(reader),
      input_(reader.window()),
      steps_(steps) {}

std::string idOf(const UIArticleListTableViewCell& row) { return row.articleDictionary()["id"].text().value_or(""); }

void TourGuide::step(const char* name, const std::function<void()>& body) {
    TourStep& current = steps_.emplace_back();
    current.name = name;
    QElapsedTimer since;
    since.start();
    body();
    check(window_.settle(), "the window comes to rest");
    current.milliseconds = static_cast<double>(since.nsecsElapsed()) / 1e6;
    char number[8];
    std::snprintf(number, sizeof number, "%02zu", steps_.size());
    current.picture = std::string(number) + "-" + name + ".png";
    check(window_.savePicture(options_.folder + "/" + current.picture), "a picture is written");
    std::printf("%s %s (%.0f ms)\n", current.ok() ? "ok    " : "FAILED", current.picture.c_str(), current.milliseconds);
    for (const auto& failure : current.failed) std::printf("       not so: %s\n", failure.c_str());
    std::fflush(stdout);
}

void TourGuide::savePicture(const std::string& name) const { window_.savePicture(options_.folder + "/" + name); }

bool TourGuide::check(bool held, const std::string& what) {
    (held ? steps_.back().held : steps_.back().failed).push_back(what);
    return held;
}

void TourGuide::press(CGPoint point) {
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.click(point);
    } else {
        input_.tap(point);
    }
}

void TourGuide::press(UIView* view, const std::string& what) {
    if (check(view != nullptr, what + " is on screen")) press(window_.centerOf(*view));
}

void TourGuide::hold(CGPoint point) {
    constexpr int milliseconds = 800;
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.click(point, Qt::LeftButton, milliseconds);
    } else {
        input_.tap(point, milliseconds);
    }
}

void TourGuide::drag(CGPoint from, CGPoint to) {
    constexpr int milliseconds = 500, rest = 200;
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.drag(from, to, milliseconds, rest);
    } else {
        input_.swipe(from, to, milliseconds, rest);
    }
    window_.settle();
}

void TourGuide::fling() {
    const CGSize size = reader_.rootView().frame().size;
    const CGFloat x = size.width * 0.6;
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.wheel({x, size.height / 2}, -8);
    } else {
        input_.swipe({x, size.height * 0.75}, {x, size.height * 0.2}, 90);
    }
}

void TourGuide::scrollDown() {
    fling();
    window_.settle();
}

void TourGuide::openTab(const char* title) {
    const std::string wanted = readerText(title);
    UIView* tab = window_.find([&](UIView& view) {
        const auto* candidate = dynamic_cast<ReaderTab*>(&view);
        return candidate && candidate->title() == wanted;
    });
    press(tab, "the tab " + wanted);
    window_.settle();
}

void TourGuide::fill(const char* name, const std::string& text) {
    UIView* field = window_.find(
        [&](UIView& view) { return dynamic_cast<UITextField*>(&view) && view.accessibility().label == name; });
    press(field, std::string("the field ") + name);
    window_.settle();
    input_.key(Qt::Key_A, {}, Qt::ControlModifier);
    input_.key(Qt::Key_Backspace);
    input_.type(text);
    auto* editor = static_cast<UITextField*>(field);
    check(editor && window_.waitFor([&] { return editor->text() == text; }),
          std::string(name) + " holds what was typed");
}

void TourGuide::signIn(const std::string& name, const std::string& password) {
    fill("Name", name);
    fill("Password", password);
    input_.key(Qt::Key_Return, "\r");
}

UIArticleListTableViewCell* TourGuide::topRow() {
    const CGFloat top = 40, bottom = reader_.rootView().frame().height() - ReaderTabs::barHeight;
    UIArticleListTableViewCell* best = nullptr;
    for (auto* row : window_.all<UIArticleListTableViewCell>()) {
        const CGRect rect = window_.rectOf(*row);
        if (rect.minY() < top || rect.maxY() > bottom) continue;
        if (!best || rect.minY() < window_.rectOf(*best).minY()) best = row;
    }
    return best;
}

}  // namespace ostrel
