#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/uikit/mounting/Mounting.h"

#include <functional>
#include <memory>
#include <optional>
#include <QObject>
#include <QPointer>
#include <QPointF>
#include <QQuickItem>

namespace ostrel {

/// Qt Quick's own text item above the text input that has the focus. The item brings input methods, selection and
/// clipboard. The first editor also makes the QML engine. Main thread.
class TextEditor final : public QObject {
    Q_OBJECT
public:
    struct Handlers {
        std::function<void(const std::string& text)> changed;
        /// For a text of many lines, at most once a turn: the caret, the selection or the text's height (points)
        /// changed.
        std::function<void(NSRange selection, double height)> selectionChanged;
        std::function<void()> returned;
        std::function<void()> focusLost;
        /// Gets each key that moves the focus or closes something before the editor does; true when the key was used.
        std::function<bool(const QKeyEvent& event)> key;
    };

    /// Null, with a line in the log, when Qt Quick's text items are not installed.
    static std::unique_ptr<TextEditor> make(QQuickItem& host, ViewTag tag, const TextInputContent& content,
                                            Handlers handlers);
    /// Loads the engine and the items, so that the first field does not wait for them.
    static void warmUp();
    ~TextEditor() override;

    ViewTag tag() const { return tag_; }
    void update(const std::shared_ptr<const ViewState>& state, const TextInputContent& content);
    /// `frame` and `clip`: points in the window.
    void place(const CGRect& frame, const CGRect& clip, double alpha, const UIEdgeInsets& insets);
    void takeFocus();
    /// Puts the caret at the point at which the window was pressed.
    void pressAt(QPointF point);
    bool hasActiveFocus() const { return item_ && item_->hasActiveFocus(); }
    QQuickItem* item() const { return item_; }

    bool eventFilter(QObject* object, QEvent* event) override;

private Q_SLOTS:
    void textDidChange();
    void didAccept();
    void selectionDidChange();
    void reportSelection();
    void activeFocusDidChange();
    void showCaret();

private:
    TextEditor(QQuickItem& host, ViewTag tag, bool multiline, Handlers handlers, QQuickItem* item);
    void style(const TextInputContent& content);

    const ViewTag tag_;
    const bool multiline_;
    const Handlers handlers_;
    QPointer<QQuickItem> clip_, item_;
    std::shared_ptr<const ViewState> state_;
    std::optional<std::uint64_t> revision_;
    qsizetype maximumLength_ = 0;
    double boxHeight_ = 0, top_ = 0;
    bool applying_ = false;
    // The selection will be reported later in this turn.
    bool reports_ = false;
};

}  // namespace ostrel
