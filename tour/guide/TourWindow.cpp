#include "tour/guide/TourWindow.h"

#include "backends/qt/window/QtWindowView.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/text/UITextView.h"

#include <QElapsedTimer>
#include <QImage>

namespace ostrel {

namespace {

/// A view whose opacity is below this value counts as invisible.
constexpr double faint = 0.05;
/// Longer than half a frame of a display of 60 Hz, so that three looks take longer than a frame.
constexpr int millisecondsBetweenLooks = 10;

void collect(UIView& view, const CGRect& clip, std::vector<UIView*>& into) {
    if (view.isHidden() || view.alpha() < faint) return;
    const CGRect rect = view.convertRectToView(view.bounds(), nullptr);
    const CGRect seen = rect.intersection(clip);
    if (!seen.isEmpty()) into.push_back(&view);
    const CGRect inner = view.clipsToBounds() ? seen : clip;
    if (inner.isEmpty()) return;
    for (const auto& child : view.subviews()) collect(*child, inner, into);
}

const std::string* shownText(UIView& view) {
    if (auto* label = dynamic_cast<UILabel*>(&view)) return &label->text();
    if (auto* text = dynamic_cast<UITextView*>(&view)) return &text->text();
    if (auto* button = dynamic_cast<UIButton*>(&view)) return &button->currentTitle();
    return nullptr;
}

}  // namespace

std::vector<UIView*> TourWindow::visibleViews() const {
    std::vector<UIView*> views;
    UIWindow& window = reader_.rootView();
    collect(window, {{}, window.frame().size}, views);
    return views;
}

UIView* TourWindow::find(const std::function<bool(UIView&)>& wanted) const {
    const auto views = visibleViews();
    for (auto view = views.rbegin(); view != views.rend(); ++view) {
        if (wanted(**view)) return *view;
    }
    return nullptr;
}

UIView* TourWindow::text(const std::string& text) const {
    return find([&](UIView& view) {
        const std::string* shown = shownText(view);
        return shown && *shown == text;
    });
}

UIView* TourWindow::textContaining(const std::string& part) const {
    return find([&](UIView& view) {
        const std::string* shown = shownText(view);
        return shown && shown->find(part) != std::string::npos;
    });
}

CGRect TourWindow::rectOf(const UIView& view) const { return view.convertRectToView(view.bounds(), nullptr); }

CGPoint TourWindow::centerOf(const UIView& view) const {
    const CGRect rect = rectOf(view).intersection({{}, reader_.rootView().frame().size});
    return {rect.midX(), rect.midY()};
}

bool TourWindow::waitFor(const std::function<bool()>& condition, int milliseconds) const {
    QElapsedTimer since;
    since.start();
    while (!condition()) {
        if (since.elapsed() > milliseconds) return false;
        TourInput::pass(5);
    }
    return true;
}

bool TourWindow::settle(int milliseconds) const {
    QElapsedTimer since;
    since.start();
    // The window must be at rest in three looks in a row, because a view that comes to rest may start another
    // animation.
    for (int quiet = 0; quiet < 3;) {
        if (since.elapsed() > milliseconds) return false;
        TourInput::pass(millisecondsBetweenLooks);
        quiet = reader_.view().isSettled() ? quiet + 1 : 0;
    }
    return true;
}

bool TourWindow::savePicture(const std::string& path) const {
    const QImage picture = reader_.window().grabWindow();
    return !picture.isNull() && picture.save(QString::fromStdString(path));
}

}  // namespace ostrel
