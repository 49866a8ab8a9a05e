#include "backends/qt/text/TextEditor.h"

#include "backends/qt/system/QtConversions.h"
#include "backends/qt/text/QtFonts.h"
#include "platform/foundation/runloop/NSLog.h"

#include <algorithm>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <utility>

namespace ostrel {

namespace {

const char* const placeholderSource = R"(
    property string placeholder
    property color placeholderColor
    property font placeholderFont
    property int returnKey
    EnterKey.type: returnKey
    Text {
        anchors.fill: parent
        visible: !parent.length && !parent.preeditText
        text: parent.placeholder
        color: parent.placeholderColor
        font: parent.placeholderFont
        elide: Text.ElideRight
        maximumLineCount: 1
        horizontalAlignment: parent.effectiveHorizontalAlignment
        verticalAlignment: parent.verticalAlignment
        renderType: Text.NativeRendering
    }
}
)";

const char* const lineSource = R"(
import QtQuick
TextInput {
    selectByMouse: true
    verticalAlignment: TextInput.AlignVCenter
    renderType: TextInput.NativeRendering
    passwordCharacter: "\u2022"
)";

const char* const textSource = R"(
import QtQuick
TextEdit {
    selectByMouse: true
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    renderType: TextEdit.NativeRendering
)";

/// The QML components of the text items, kept with their engine as long as the application lives.
struct Recipes {
    QQmlEngine engine;
    QQmlComponent line{&engine}, text{&engine};
    Recipes() {
        line.setData(QByteArray(lineSource) + placeholderSource, {});
        text.setData(QByteArray(textSource) + placeholderSource, {});
    }
};

Recipes& recipes() {
    static QPointer<QObject> owner;
    static Recipes* made = nullptr;
    if (!owner) {
        made = new Recipes;
        owner = new QObject(QCoreApplication::instance());
        QObject::connect(owner, &QObject::destroyed, owner, [] { delete std::exchange(made, nullptr); });
    }
    return *made;
}

Qt::EnterKeyType toEnterKey(UIReturnKeyType type) {
    switch (type) {
    case UIReturnKeyType::standard: break;
    case UIReturnKeyType::go: return Qt::EnterKeyGo;
    case UIReturnKeyType::next:
    case UIReturnKeyType::continueKey: return Qt::EnterKeyNext;
    case UIReturnKeyType::search: return Qt::EnterKeySearch;
    case UIReturnKeyType::send: return Qt::EnterKeySend;
    case UIReturnKeyType::done: return Qt::EnterKeyDone;
    }
    return Qt::EnterKeyDefault;
}

Qt::Alignment toAlignment(NSTextAlignment alignment) {
    switch (alignment) {
    case NSTextAlignment::center: return Qt::AlignHCenter;
    case NSTextAlignment::right: return Qt::AlignRight;
    default: return Qt::AlignLeft;
    }
}

}  // namespace

std::unique_ptr<TextEditor> TextEditor::make(QQuickItem& host, ViewTag tag, const TextInputContent& content,
                                             Handlers handlers) {
    QQmlComponent& recipe = content.multiline ? recipes().text : recipes().line;
    QObject* object = recipe.create();
    auto* item = qobject_cast<QQuickItem*>(object);
    if (!item) {
        delete object;
        NSLog("Text cannot be edited: %@", toUtf8(recipe.errorString().simplified()));
        return nullptr;
    }
    return std::unique_ptr<TextEditor>(new TextEditor(host, tag, content.multiline, std::move(handlers), item));
}

void TextEditor::warmUp() { delete recipes().line.create(); }

TextEditor::TextEditor(QQuickItem& host, ViewTag tag, bool multiline, Handlers handlers, QQuickItem* item)
    : tag_(tag), multiline_(multiline), handlers_(std::move(handlers)), clip_(new QQuickItem(&host)), item_(item) {
    clip_->setClip(true);
    item_->setParentItem(clip_);
    item_->setParent(clip_);
    item_->installEventFilter(this);
    connect(item_, SIGNAL(textChanged()), this, SLOT(textDidChange()));
    connect(item_, SIGNAL(activeFocusChanged(bool)), this, SLOT(activeFocusDidChange()));
    if (multiline_) {
        connect(item_, SIGNAL(cursorRectangleChanged()), this, SLOT(showCaret()));
        for (const char* moved : {SIGNAL(cursorPositionChanged()), SIGNAL(selectionStartChanged()),
                                  SIGNAL(selectionEndChanged()), SIGNAL(contentSizeChanged())}) {
            connect(item_, moved, this, SLOT(selectionDidChange()));
        }
    } else {
        connect(item_, SIGNAL(accepted()), this, SLOT(didAccept()));
    }
}

TextEditor::~TextEditor() {
    if (item_) {
        item_->removeEventFilter(this);
        disconnect(item_, nullptr, this, nullptr);
    }
    // An event of the item itself may end the editing, so the item is deleted later.
    if (clip_) {
        clip_->setVisible(false);
        clip_->setParentItem(nullptr);
        clip_->deleteLater();
    }
}

void TextEditor::update(const std::shared_ptr<const ViewState>& state, const TextInputContent& content) {
    if (state == state_ || !item_) return;
    state_ = state;
    style(content);
    if (!revision_ || content.revision > *revision_) {
        revision_ = content.revision;
        const QString text = toQString(content.text);
        if (item_->property("text").toString() != text) {
            applying_ = true;
            item_->setProperty("text", text);
            item_->setProperty("cursorPosition", static_cast<int>(text.size()));
            applying_ = false;
        }
    }
}

void TextEditor::style(const TextInputContent& content) {
    item_->setProperty("font", qtFont(content.secure ? bulletFont(content.font) : content.font));
    item_->setProperty("placeholderFont", qtFont(content.font));
    item_->setProperty("color", toQColor(content.color));
    item_->setProperty("selectionColor", toQColor(UIColor::tint()));
    item_->setProperty("selectedTextColor", QColor(Qt::white));
    item_->setProperty("placeholder", toQString(content.placeholder));
    item_->setProperty("placeholderColor", toQColor(content.placeholderColor));
    item_->setProperty("readOnly", !content.enabled);
    item_->setProperty("returnKey", static_cast<int>(toEnterKey(content.returnKey)));
    if (content.alignment != NSTextAlignment::natural) {
        item_->setProperty("horizontalAlignment", static_cast<int>(toAlignment(content.alignment)));
    }
    maximumLength_ = static_cast<qsizetype>(content.maximumLength);
    if (multiline_) return;
    constexpr int normal = 0, password = 2;  // QQuickTextInput::EchoMode
    item_->setProperty("echoMode", content.secure ? password : normal);
    constexpr int unlimited = 1 << 20;
    item_->setProperty("maximumLength", maximumLength_ > 0 ? static_cast<int>(maximumLength_) : unlimited);
}

void TextEditor::place(const CGRect& frame, const CGRect& clip, double alpha, const UIEdgeInsets& insets) {
    if (!item_) return;
    const CGRect box = frame.insetBy(insets);
    // An item outside of the viewport keeps the focus, with an empty clip.
    const CGRect seen = box.intersection(clip);
    clip_->setPosition({seen.minX(), seen.minY()});
    clip_->setSize({seen.width(), seen.height()});
    clip_->setOpacity(alpha);
    item_->setX(box.minX() - seen.minX());
    item_->setWidth(box.width());
    top_ = box.minY() - seen.minY();
    boxHeight_ = box.height();
    if (multiline_) {
        showCaret();
    } else {
        item_->setY(top_);
        item_->setHeight(box.height());
    }
}

void TextEditor::takeFocus() {
    if (item_ && !item_->hasActiveFocus()) item_->forceActiveFocus(Qt::OtherFocusReason);
}

void TextEditor::pressAt(QPointF point) {
    if (!item_ || !item_->window()) return;
    const QPointF local = item_->mapFromScene(point);
    const QPointF global = item_->window()->mapToGlobal(point);
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        const bool down = type == QEvent::MouseButtonPress;
        QMouseEvent event(type, local, point, global, Qt::LeftButton, down ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(item_, &event);
    }
}

bool TextEditor::eventFilter(QObject* object, QEvent* event) {
    if (object != item_ || event->type() != QEvent::KeyPress) return QObject::eventFilter(object, event);
    auto& key = static_cast<QKeyEvent&>(*event);
    const int code = key.key();
    const bool controls = key.modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    const bool isReturn = code == Qt::Key_Return || code == Qt::Key_Enter;
    const bool leaves = code == Qt::Key_Tab || code == Qt::Key_Backtab || code == Qt::Key_Escape;
    if (!leaves && !(isReturn && controls)) return false;
    // The handler may end the editing, which destroys this object.
    const bool used = handlers_.key && handlers_.key(key);
    key.setAccepted(used);
    return true;
}

void TextEditor::textDidChange() {
    if (applying_ || !item_) return;
    QString text = item_->property("text").toString();
    if (maximumLength_ > 0 && text.size() > maximumLength_) {
        const int cursor = item_->property("cursorPosition").toInt();
        text.truncate(text.at(maximumLength_ - 1).isHighSurrogate() ? maximumLength_ - 1 : maximumLength_);
        applying_ = true;
        item_->setProperty("text", text);
        item_->setProperty("cursorPosition", std::min(cursor, static_cast<int>(text.size())));
        applying_ = false;
    }
    if (handlers_.changed) handlers_.changed(toUtf8(text));
}

void TextEditor::selectionDidChange() {
    // One keystroke changes text, caret, selection and height. They are reported once, after the text.
    if (!std::exchange(reports_, true)) {
        QMetaObject::invokeMethod(this, &TextEditor::reportSelection, Qt::QueuedConnection);
    }
}

void TextEditor::reportSelection() {
    reports_ = false;
    if (!item_ || !handlers_.selectionChanged) return;
    const auto begin = static_cast<std::size_t>(std::max(0, item_->property("selectionStart").toInt()));
    const auto end = static_cast<std::size_t>(std::max(0, item_->property("selectionEnd").toInt()));
    handlers_.selectionChanged({begin, end - std::min(begin, end)}, item_->property("contentHeight").toDouble());
}

void TextEditor::didAccept() {
    if (handlers_.returned) handlers_.returned();
}

void TextEditor::activeFocusDidChange() {
    if (!item_ || item_->hasActiveFocus()) return;
    // A window in the background keeps its focused field; the item gets the focus back with the window.
    if (!item_->window() || QGuiApplication::focusWindow() != item_->window()) return;
    if (handlers_.focusLost) handlers_.focusLost();
}

void TextEditor::showCaret() {
    if (!item_ || !multiline_) return;
    const double content = std::max(boxHeight_, item_->property("contentHeight").toDouble());
    item_->setHeight(content);
    const QRectF caret = item_->property("cursorRectangle").toRectF();
    double scrolled = top_ - item_->y();
    if (caret.bottom() > scrolled + boxHeight_) scrolled = caret.bottom() - boxHeight_;
    if (caret.top() < scrolled) scrolled = caret.top();
    scrolled = std::clamp(scrolled, 0.0, content - boxHeight_);
    item_->setY(top_ - scrolled);
}

}  // namespace ostrel
