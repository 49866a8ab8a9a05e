#include "tests/backends/qt/QtTestWindow.h"

#include <algorithm>
#include <cstdlib>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

namespace ostrel::test {

namespace {

ViewTag nextTag() {
    // Real views have far smaller tags.
    static ViewTag last = ViewTag(1) << 40;
    return ++last;
}

}  // namespace

Spec box(CGRect frame, UIColor color, std::vector<Spec> children) {
    Spec spec;
    spec.state.frame = frame;
    spec.state.backgroundColor = color;
    spec.children = std::move(children);
    return spec;
}

Spec surface(CGRect frame, UIColor color, std::vector<Spec> children) {
    Spec spec = box(frame, color, std::move(children));
    spec.state.isSurface = true;
    return spec;
}

bool waitUntil(const std::function<bool()>& isDone) {
    QElapsedTimer timer;
    timer.start();
    while (!isDone()) {
        if (timer.elapsed() > 5000) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
    }
    return true;
}

QtTestWindow::QtTestWindow(std::shared_ptr<UIWindow> uiWindow) {
    window_.resize(200, 200);
    window_.setColor(Qt::white);
    view_ = std::make_unique<QtWindowView>(std::move(uiWindow), window_.contentItem());
    view_->setSize({200, 200});
    window_.show();
    window_.requestActivate();
    waitUntil([this] { return window_.isExposed() && window_.isActive(); });
}

std::vector<ViewTag> QtTestWindow::mount(const Spec& root) {
    std::vector<Mutation> mutations;
    std::vector<ViewTag> tags;
    number_ = 0;
    add(mutations, root, 0, 0, tags);
    mount(std::move(mutations));
    return tags;
}

void QtTestWindow::mount(std::vector<Mutation> mutations) {
    const auto phase = [](const Mutation& mutation) {
        switch (mutation.type) {
        case Mutation::Type::create: return 1;
        case Mutation::Type::insert: return 2;
        case Mutation::Type::update: return 3;
        default: return 0;
        }
    };
    std::stable_sort(mutations.begin(), mutations.end(),
                     [&](const Mutation& a, const Mutation& b) { return phase(a) < phase(b); });
    view_->mount({++number_, std::move(mutations)});
}

void QtTestWindow::add(std::vector<Mutation>& mutations, const Spec& spec, ViewTag parent, std::size_t index,
                       std::vector<ViewTag>& tags) {
    const ViewTag tag = nextTag();
    tags.push_back(tag);
    mutations.push_back(Mutation::create(tag, std::make_shared<ViewState>(spec.state)));
    if (parent) mutations.push_back(Mutation::insert(parent, tag, index));
    for (std::size_t i = 0; i < spec.children.size(); ++i) add(mutations, spec.children[i], tag, i, tags);
}

QImage QtTestWindow::grab() {
    window_.grabWindow();
    waitUntil([this] { return view_->isSettled(); });
    grabbed_ = window_.grabWindow();
    return grabbed_;
}

QColor QtTestWindow::at(double x, double y) const {
    return grabbed_.pixelColor(static_cast<int>(x * scale()), static_cast<int>(y * scale()));
}

bool isNear(const QColor& a, const QColor& b, int tolerance) {
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

}  // namespace ostrel::test
