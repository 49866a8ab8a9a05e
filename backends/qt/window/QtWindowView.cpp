#include "backends/qt/window/QtWindowView.h"

#include "backends/qt/system/QtConversions.h"
#include "backends/qt/text/TextEditor.h"
#include "backends/qt/window/QtAccessibility.h"
#include "platform/foundation/runloop/Clock.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cmath>
#include <private/qquickitem_p.h>
#include <QAccessible>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <utility>

#if defined(OSTREL_QT_ORACLE) && !defined(NDEBUG)
#include "backends/headless/HeadlessBackend.h"
#define OSTREL_MAKE_ORACLE() std::make_unique<HeadlessBackend>()
#else
#define OSTREL_MAKE_ORACLE() nullptr
#endif

namespace ostrel {

namespace {

const auto workEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

double frameTime() { return Clock::shared().monotonicSeconds(); }

// Seconds. Platforms without a signal from the display deliver a frame this long after it was requested
// (QPlatformWindow::requestUpdate).
constexpr double requestLead = 0.006;

}  // namespace

QtWindowView::QtWindowView(std::shared_ptr<UIWindow> window, QQuickItem* parent)
    : QQuickItem(parent),
      window_(std::move(window)),
      composer_(std::make_unique<SceneComposer>([this] { QCoreApplication::postEvent(this, new QEvent(workEvent)); })) {
    setFlag(ItemHasContents);
    setFlag(ItemIsFocusScope, false);
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setAcceptTouchEvents(true);
    setFlag(ItemAcceptsDrops);
    setActiveFocusOnTab(false);
    setFocus(true);
    QQuickItemPrivate::get(this)->setAccessible();
    frameTimer_.setSingleShot(true);
    frameTimer_.setTimerType(Qt::PreciseTimer);
    connect(&frameTimer_, &QTimer::timeout, this, [this] { requestFrame(); });
    if (window_) window_->setBackend(this);
}

QtWindowView::~QtWindowView() {
    if (window_) window_->setBackend(nullptr);
    endEditor();
}

bool QtWindowView::isSettled() const { return !framesWanted_ && hasPaintedEverything(); }

bool QtWindowView::hasPaintedEverything() const { return !needsFlush_ && !nodesWaiting_ && composer_->isSettled(); }

void QtWindowView::mount(const MountingTransaction& transaction) {
    if (transaction.number == 1) {
        // The window sends its whole tree, which replaces all that was mounted before.
        composer_->reset();
        oracle_ = OSTREL_MAKE_ORACLE();
    }
    if (oracle_) oracle_->mount(transaction);
    composer_->mount(transaction);
    nodesWaiting_ = true;
    requestFrame();
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(this, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}

void QtWindowView::requestFrame() {
    // Polish and update are requested together: an update requested while polishing would cause a second frame.
    if (!polishing_) polish();
    if (!std::exchange(updateRequested_, true)) update();
}

void QtWindowView::setNeedsFlush() {
    needsFlush_ = true;
    requestFrame();
}

void QtWindowView::setFramesWanted(bool wanted) {
    if (framesWanted_ == wanted) return;
    framesWanted_ = wanted;
    if (wanted) requestFrame();
}

CGFloat QtWindowView::scale() const {
    if (window()) return window()->effectiveDevicePixelRatio();
    return qGuiApp ? qGuiApp->devicePixelRatio() : 1;
}

double QtWindowView::refreshInterval() const {
    const QScreen* screen = window() ? window()->screen() : nullptr;
    const double rate = screen ? screen->refreshRate() : 60;
    return 1 / std::clamp(rate, 30.0, 240.0);
}

bool QtWindowView::event(QEvent* event) {
    if (event->type() == workEvent) {
        if (composer_->takeFinishedWork()) requestFrame();
        return true;
    }
    return QQuickItem::event(event);
}

void QtWindowView::updatePolish() {
    const double time = frameTime();
    polishing_ = true;
    if (window_) {
        if (framesWanted_ && time - lastFrame_ >= refreshInterval() - 0.004) {
            lastFrame_ = time;
            needsFlush_ = false;
            window_->frame(time);
        } else if (needsFlush_) {
            needsFlush_ = false;
            window_->flush();
        }
        composer_->setReduceMotion(UIView::isReduceMotionEnabled());
        tellFocus();
    }
    nodesWaiting_ = composer_->prepare(time);
    polishing_ = false;
    placeEditor();
    if (nodesWaiting_ && !std::exchange(updateRequested_, true)) update();
    if (needsFlush_) requestFrame();
    scheduleFrame();
}

void QtWindowView::tellFocus() {
    const UIView* const focused = window_->focusedView();
    const ViewTag tag = focused ? focused->tag() : 0;
    if (std::exchange(toldFocus_, tag) != tag && tag) tellAccessibleFocus(*this, tag);
}

void QtWindowView::scheduleFrame() {
    double interval = composer_->spinnerInterval();
    if (framesWanted_ || composer_->turnsViews()) interval = refreshInterval();
    if (interval <= 0) return;
    const int wait = static_cast<int>(std::max(0.0, (interval - requestLead) * 1000));
    if (!frameTimer_.isActive() || frameTimer_.remainingTime() > wait) frameTimer_.start(wait);
}

QSGNode* QtWindowView::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
    nodesWaiting_ = updateRequested_ = false;
    return composer_->synchronise(node, *window());
}

void QtWindowView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size()) updateViewport();
}

void QtWindowView::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) updateViewport();
    if (change != ItemSceneChange) return;
    disconnect(activeConnection_);
    if (windowInScene_) windowInScene_->removeEventFilter(this);
    windowInScene_ = data.window;
    setAcceptHoverEvents(false);
    if (!data.window) return;
    data.window->installEventFilter(this);
    updateViewport();
    activeConnection_ = connect(data.window, &QWindow::activeChanged, this, [this] {
        if (window_ && window()) window_->setActive(window()->isActive());
    });
}

void QtWindowView::updateViewport() {
    const CGSize points{width(), height()};
    composer_->setViewport(points, scale());
    if (window_ && points.width > 0 && points.height > 0) window_->setSize(points);
    requestFrame();
}

void QtWindowView::placeEditor() {
    if (!window_) return;
    const std::vector<ViewTag>& focused = composer_->tree().focusedInputs();
    const MountedView* view = focused.empty() ? nullptr : composer_->tree().find(focused.back());
    const auto* content = view ? std::get_if<TextInputContent>(&view->state->content) : nullptr;
    if (!content || (editor_ && editor_->tag() != view->tag)) endEditor();
    if (!content) return;
    bool isNew = false;
    if (!editor_) {
        TextEditor::Handlers handlers;
        const ViewTag tag = view->tag;
        handlers.changed = [this, tag](const std::string& text) { window_->textInputChanged(tag, text); };
        handlers.selectionChanged = [this, tag](NSRange selection, double height) {
            window_->textInputSelectionChanged(tag, selection, height);
        };
        handlers.returned = [this, tag] { window_->textInputReturn(tag); };
        handlers.focusLost = [this, tag] { window_->textInputFocusChanged(tag, false); };
        handlers.key = [this](const QKeyEvent& key) { return sendKey(key); };
        editor_ = TextEditor::make(*this, tag, *content, std::move(handlers));
        if (!editor_) return;
        isNew = true;
    }
    editor_->update(view->state, *content);
    CGRect clip;
    double alpha = 1;
    const CGRect frame = composer_->frameInWindow(*view, clip, alpha);
    editor_->place(frame, clip, alpha, content->insets);
    if (!isNew) return;
    editor_->takeFocus();
    const QPointF press = lastPress_;
    if (frameTime() - lastPressTime_ < 0.5 && frame.contains({press.x(), press.y()})) {
        editor_->pressAt(mapToScene(press));
    }
}

void QtWindowView::endEditor() {
    if (!editor_) return;
    const bool hadFocus = editor_->hasActiveFocus();
    editor_.reset();
    if (hadFocus && window()) forceActiveFocus(Qt::OtherFocusReason);
}

QQuickItem* QtWindowView::editorItem() const { return editor_ ? editor_->item() : nullptr; }

void QtWindowView::warmUpTextEditing() { TextEditor::warmUp(); }

}  // namespace ostrel
