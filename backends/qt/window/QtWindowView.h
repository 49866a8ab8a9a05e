#pragma once

#include "backends/qt/scene/SceneComposer.h"
#include "backends/qt/window/InputTranslation.h"
#include "platform/uikit/mounting/Mounting.h"

#include <memory>
#include <QPointer>
#include <QQuickItem>
#include <QTimer>
#include <vector>

namespace ostrel {

class TextEditor;
class UIWindow;

/// Shows one window of the view tree in a QQuickWindow of the host and hands it the user's input. The window is sized
/// with this item. All changes of a turn are shown with the next frame. Without a window it shows what is mounted.
/// Main thread.
class QtWindowView final : public QQuickItem, public MountingBackend {
    Q_OBJECT
public:
    explicit QtWindowView(std::shared_ptr<UIWindow> window, QQuickItem* parent = nullptr);
    ~QtWindowView() override;

    const std::shared_ptr<UIWindow>& uiWindow() const { return window_; }
    /// Nothing is under way: no change waits to be shown, everything in sight is painted, no animation runs. Turning
    /// wheels do not count.
    bool isSettled() const;
    /// Everything in sight is painted as it is now; animations may run.
    bool hasPaintedEverything() const;
    SceneComposer::Statistics statistics() const { return composer_->statistics(); }
    /// What is mounted and where it stands, for those who tell it to assistive programs.
    const SceneComposer& composer() const { return *composer_; }
    const MountedTree& mountedTree() const { return composer_->tree(); }
    /// The item under edit; null when none is.
    QQuickItem* editorItem() const;
    /// Where text is edited at once the application starts, this spares the first field the wait for its engine.
    static void warmUpTextEditing();

    // MountingBackend
    void mount(const MountingTransaction& transaction) override;
    void setNeedsFlush() override;
    void setFramesWanted(bool wanted) override;
    CGFloat scale() const override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;
    void updatePolish() override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void touchEvent(QTouchEvent* event) override;
    void touchUngrabEvent() override;
    void wheelEvent(QWheelEvent* event) override;
    void hoverEnterEvent(QHoverEvent* event) override { hoverMoveEvent(event); }
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void updateViewport();
    void placeEditor();
    void endEditor();
    void scheduleFrame();
    void tellFocus();
    void requestFrame();
    void sendPointer(UITouchPhase phase, QPointF point);
    void cancelFingers();
    void updateCursor(QPointF point);
    double refreshInterval() const;
    bool sendKey(const QKeyEvent& event);

    std::shared_ptr<UIWindow> window_;
    std::unique_ptr<SceneComposer> composer_;
    std::unique_ptr<MountingBackend> oracle_;  // builds with assertions: checks every transaction
    std::unique_ptr<TextEditor> editor_;
    QTimer frameTimer_;
    QMetaObject::Connection activeConnection_;
    QPointer<QObject> windowInScene_;
    bool needsFlush_ = false;
    bool framesWanted_ = false;
    bool nodesWaiting_ = false;  // prepared, not synchronised yet
    bool polishing_ = false;
    bool updateRequested_ = false;  // of this item, until it has been synchronised
    double lastFrame_ = -1e9;
    ViewTag toldFocus_ = 0;  // to assistive programs

    TapCounter taps_;
    UITouch pointer_;
    bool pointerDown_ = false;
    QPointF lastPress_;
    double lastPressTime_ = -1e9;
    std::vector<UITouch> fingers_;  // down now
};

}  // namespace ostrel
