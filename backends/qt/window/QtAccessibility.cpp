#include "backends/qt/window/QtAccessibility.h"

#include "backends/qt/system/QtConversions.h"
#include "backends/qt/window/QtWindowView.h"
#include "platform/foundation/runloop/Clock.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QGuiApplication>
#include <QPointer>
#include <QQuickWindow>
#include <QTimer>
#include <unordered_map>

namespace ostrel {

namespace {

constexpr double leastAlpha = 0.01;
// Milliseconds for which a screen reader can read an announcement.
constexpr int announcementDuration = 5000;

QAccessible::Role roleOf(AccessibilityRole role) {
    switch (role) {
    case AccessibilityRole::none: break;
    case AccessibilityRole::text: return QAccessible::StaticText;
    case AccessibilityRole::button: return QAccessible::Button;
    case AccessibilityRole::image: return QAccessible::Graphic;
    case AccessibilityRole::textField: return QAccessible::EditableText;
    case AccessibilityRole::list: return QAccessible::List;
    case AccessibilityRole::listItem: return QAccessible::ListItem;
    case AccessibilityRole::link: return QAccessible::Link;
    case AccessibilityRole::alert: return QAccessible::AlertMessage;
    case AccessibilityRole::window: return QAccessible::Pane;
    }
    return QAccessible::NoRole;
}

/// Collects the nearest visible views below `view` that have a role, in the order of the tree.
void collectChildren(const MountedView& view, std::vector<const MountedView*>& children) {
    for (const MountedView* child : view.children) {
        const ViewState& state = *child->state;
        if (state.hidden || state.alpha <= leastAlpha) continue;
        if (state.accessibility.role != AccessibilityRole::none) {
            children.push_back(child);
        } else {
            collectChildren(*child, children);
        }
    }
}

class WindowInterface;

/// One view. After the view has gone, the interface stays, marked invalid, until its window next lists its children.
class ViewInterface final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ViewInterface(WindowInterface& window, ViewTag tag) : window_(window), tag_(tag) {}

    ViewTag tag() const { return tag_; }
    bool isValid() const override { return view() != nullptr; }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int index) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    const MountedView* view() const;
    WindowInterface& window_;
    const ViewTag tag_;
};

/// The last announcement, which is read as an alert.
class AnnouncementInterface final : public QAccessibleInterface {
public:
    AnnouncementInterface(WindowInterface& window, QString text) : window_(window), text_(std::move(text)) {}

    bool isValid() const override { return true; }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QString text(QAccessible::Text kind) const override { return kind == QAccessible::Name ? text_ : QString(); }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override { return {}; }
    QAccessible::Role role() const override { return QAccessible::AlertMessage; }
    QAccessible::State state() const override { return {}; }

private:
    WindowInterface& window_;
    const QString text_;
};

class WindowInterface final : public QAccessibleObject {
public:
    explicit WindowInterface(QtWindowView& item) : QAccessibleObject(&item) {}
    ~WindowInterface() override {
        for (const auto& [tag, id] : known_) QAccessible::deleteAccessibleInterface(id);
        if (announcement_) QAccessible::deleteAccessibleInterface(announcement_);
    }
    void announce(const QString& text) {
        endAnnouncement();
        auto* made = new AnnouncementInterface(*this, text);
        announcement_ = QAccessible::registerAccessibleInterface(made);
        for (const auto type : {QAccessible::ObjectCreated, QAccessible::ObjectShow, QAccessible::Alert}) {
            QAccessibleEvent event(made, type);
            QAccessible::updateAccessibility(&event);
        }
        QTimer::singleShot(announcementDuration, object(), [this, id = announcement_] {
            if (announcement_ == id) endAnnouncement();
        });
    }

    QtWindowView* item() const { return static_cast<QtWindowView*>(object()); }
    const MountedView* find(ViewTag tag) const { return item() ? item()->mountedTree().find(tag) : nullptr; }
    QAccessibleInterface* interfaceOf(const MountedView& view) {
        const auto found = known_.find(view.tag);
        if (found != known_.end()) return QAccessible::accessibleInterface(found->second);
        auto* made = new ViewInterface(*this, view.tag);
        known_[view.tag] = QAccessible::registerAccessibleInterface(made);
        return made;
    }
    std::vector<const MountedView*> childrenOf(const MountedView* view) const {
        std::vector<const MountedView*> children;
        if (view) collectChildren(*view, children);
        return children;
    }
    QRect rectOf(const MountedView& view) const {
        CGRect clip;
        double alpha = 1;
        const CGRect seen = item()->composer().frameInWindow(view, clip, alpha).intersection(clip);
        if (seen.isEmpty()) return {};
        const QRectF inScene = item()->mapRectToScene(toQRectF(seen));
        const QQuickWindow* window = item()->window();
        const QPoint origin = window ? window->mapToGlobal(QPoint(0, 0)) : QPoint();
        return inScene.toAlignedRect().translated(origin);
    }

    QAccessibleInterface* parent() const override {
        return item() ? QAccessible::queryAccessibleInterface(item()->window()) : nullptr;
    }
    int childCount() const override {
        const_cast<WindowInterface*>(this)->forgetGone();
        return static_cast<int>(children().size()) + (announcement_ ? 1 : 0);
    }
    QAccessibleInterface* child(int index) const override {
        const auto all = children();
        if (announcement_ && index == static_cast<int>(all.size()))
            return QAccessible::accessibleInterface(announcement_);
        if (index < 0 || index >= static_cast<int>(all.size())) return nullptr;
        return const_cast<WindowInterface*>(this)->interfaceOf(*all[static_cast<std::size_t>(index)]);
    }
    int indexOfChild(const QAccessibleInterface* wanted) const override {
        for (int i = 0, count = childCount(); i < count; ++i) {
            if (child(i) == wanted) return i;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        QAccessibleInterface* found = nullptr;
        for (int i = 0, count = childCount(); i < count; ++i) {
            QAccessibleInterface* one = child(i);
            if (one && one->rect().contains(x, y)) found = one;
        }
        return found;
    }
    QString text(QAccessible::Text) const override { return {}; }
    QRect rect() const override {
        const MountedView* root = item() ? item()->mountedTree().root() : nullptr;
        return root ? rectOf(*root) : QRect();
    }
    QAccessible::Role role() const override { return QAccessible::Pane; }
    QAccessible::State state() const override { return {}; }

private:
    std::vector<const MountedView*> children() const {
        return childrenOf(item() ? item()->mountedTree().root() : nullptr);
    }
    void forgetGone() {
        std::erase_if(known_, [this](const auto& entry) {
            if (find(entry.first)) return false;
            QAccessible::deleteAccessibleInterface(entry.second);
            return true;
        });
    }

    void endAnnouncement() {
        if (announcement_) QAccessible::deleteAccessibleInterface(std::exchange(announcement_, 0));
    }

    std::unordered_map<ViewTag, QAccessible::Id> known_;
    QAccessible::Id announcement_ = 0;
};

QAccessibleInterface* AnnouncementInterface::parent() const { return &window_; }

const MountedView* ViewInterface::view() const { return window_.find(tag_); }

QAccessibleInterface* ViewInterface::parent() const {
    const MountedView* above = view() ? view()->parent : nullptr;
    while (above && above->state->accessibility.role == AccessibilityRole::none) above = above->parent;
    // The root view is represented by the window's own interface.
    return above && above->parent ? window_.interfaceOf(*above) : &window_;
}

QAccessibleInterface* ViewInterface::child(int index) const {
    const auto children = window_.childrenOf(view());
    if (index < 0 || index >= static_cast<int>(children.size())) return nullptr;
    return window_.interfaceOf(*children[static_cast<std::size_t>(index)]);
}

int ViewInterface::childCount() const { return static_cast<int>(window_.childrenOf(view()).size()); }

int ViewInterface::indexOfChild(const QAccessibleInterface* wanted) const {
    for (int i = 0, count = childCount(); i < count; ++i) {
        if (child(i) == wanted) return i;
    }
    return -1;
}

QAccessibleInterface* ViewInterface::childAt(int x, int y) const {
    for (int i = childCount() - 1; i >= 0; --i) {
        QAccessibleInterface* one = child(i);
        if (one && one->rect().contains(x, y)) return one;
    }
    return nullptr;
}

QString ViewInterface::text(QAccessible::Text kind) const {
    const MountedView* shown = view();
    if (!shown) return {};
    if (kind == QAccessible::Name) return toQString(shown->state->accessibility.label);
    const auto* input = std::get_if<TextInputContent>(&shown->state->content);
    return kind == QAccessible::Value && input && !input->secure ? toQString(input->text) : QString();
}

QRect ViewInterface::rect() const { return view() ? window_.rectOf(*view()) : QRect(); }

QAccessible::Role ViewInterface::role() const {
    return view() ? roleOf(view()->state->accessibility.role) : QAccessible::NoRole;
}

QAccessible::State ViewInterface::state() const {
    QAccessible::State state;
    const MountedView* shown = view();
    if (!shown) {
        state.invalid = true;
        return state;
    }
    state.disabled = shown->state->accessibility.disabled;
    state.offscreen = rect().isEmpty();
    const auto* input = std::get_if<TextInputContent>(&shown->state->content);
    state.editable = input && input->enabled;
    state.passwordEdit = input && input->secure;
    const auto window = window_.item() ? window_.item()->uiWindow() : nullptr;
    const UIView* const focused = window ? window->focusedView() : nullptr;
    state.focused = (input && input->focused) || (focused && focused->tag() == tag_);
    state.focusable = state.focused;
    return state;
}

void ViewInterface::doAction(const QString& name) {
    const MountedView* shown = view();
    const auto window = window_.item() ? window_.item()->uiWindow() : nullptr;
    if (name != pressAction() || !shown || !window) return;
    CGRect clip;
    double alpha = 1;
    const CGRect seen = window_.item()->composer().frameInWindow(*shown, clip, alpha).intersection(clip);
    if (seen.isEmpty()) return;
    UITouch touch;
    touch.type = UITouchType::pointer;
    touch.startLocation = touch.location = {seen.midX(), seen.midY()};
    touch.startTimestamp = touch.timestamp = Clock::shared().monotonicSeconds();
    touch.tapCount = 1;
    window->sendTouch(touch);
    touch.phase = UITouchPhase::ended;
    window->sendTouch(touch);
}

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    auto* item = dynamic_cast<QtWindowView*>(object);
    return item ? new WindowInterface(*item) : nullptr;
}

QtWindowView* viewIn(const QQuickItem* item) {
    for (QQuickItem* child : item->childItems()) {
        if (auto* const view = dynamic_cast<QtWindowView*>(child)) return view;
        if (QtWindowView* const view = viewIn(child)) return view;
    }
    return nullptr;
}

WindowInterface* interfaceOf(QtWindowView& item) {
    return dynamic_cast<WindowInterface*>(QAccessible::queryAccessibleInterface(&item));
}

void announce(const std::string& text) {
    if (text.empty()) return;
    const auto* const window = qobject_cast<const QQuickWindow*>(QGuiApplication::focusWindow());
    QtWindowView* const view = window ? viewIn(window->contentItem()) : nullptr;
    if (WindowInterface* const told = view ? interfaceOf(*view) : nullptr) told->announce(toQString(text));
}

}  // namespace

void tellAccessibleFocus(QtWindowView& item, ViewTag tag) {
    if (!QAccessible::isActive()) return;
    WindowInterface* const window = interfaceOf(item);
    const MountedView* const view = window ? window->find(tag) : nullptr;
    if (!view || view->state->accessibility.role == AccessibilityRole::none) return;
    QAccessibleEvent event(window->interfaceOf(*view), QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

void installAccessibility() {
    UIApplication::sharedApplication().announce = announce;
    QAccessible::removeFactory(makeInterface);
    QAccessible::installFactory(makeInterface);
}

}  // namespace ostrel
