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

/// Shows one UIWindow in a QQuickWindow of the host and sends the user's input to the UIWindow, which gets the size of
/// this item. The next frame shows all changes of a turn. Without a UIWindow (in tests) the item shows the views
/// that the test mounts. Main thread.
class QtWindowView final : public QQuickItem, public MountingBackend {
    Q_OBJECT
public:
    explicit QtWindowView(std::shared_ptr<UIWindow> window, QQuickItem* parent = nullptr);
    ~QtWindowView() override;

    const std::shared_ptr<UIWindow>& uiWindow() const { return window_; }
    /// No change waits to be shown, all visible pictures are up to date, and no animation runs. Turning spinners do not
    /// count as animations.
    bool isSettled() const;
    /// All visible pictures are up to date; animations may run.
    bool hasPaintedEverything() const;
    SceneComposer::Statistics statistics() const { return composer_->statistics(); }
    /// The mounted views and their frames, for the interfaces of assistive programs.
    const SceneComposer& composer() const { return *composer_; }
    const MountedTree& mountedTree() const { return composer_->tree(); }
    /// The item in which the user edits text; null when no text input has the focus.
    QQuickItem* editorItem() const;
    /// Loads the engine of text items now, for applications whose first screen has a text field.
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
    // In builds with assertions: checks every transaction. Null in others.
    std::unique_ptr<MountingBackend> oracle_;
    std::unique_ptr<TextEditor> editor_;
    QTimer frameTimer_;
    QMetaObject::Connection activeConnection_;
    QPointer<QObject> windowInScene_;
    bool needsFlush_ = false;
    bool framesWanted_ = false;
    // Changes of nodes are prepared but not synchronised.
    bool nodesWaiting_ = false;
    bool polishing_ = false;
    // An update of this item is requested and not synchronised.
    bool updateRequested_ = false;
    double lastFrame_ = -1e9;
    // The view whose focus was last reported to assistive programs.
    ViewTag toldFocus_ = 0;

    TapCounter taps_;
    UITouch pointer_;
    bool pointerDown_ = false;
    QPointF lastPress_;
    double lastPressTime_ = -1e9;
    // The fingers that are down now.
    std::vector<UITouch> fingers_;
};

}  // namespace ostrel
