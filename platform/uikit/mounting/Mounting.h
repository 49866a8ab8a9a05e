#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/graphics/TextMeasurer.h"
#include "platform/graphics/UIColor.h"
#include "platform/graphics/UIFont.h"
#include "platform/graphics/UIImage.h"
#include "platform/uikit/mounting/UIReturnKeyType.h"

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace ostrel {

class PlayerEngine;

/// Identifies a view for its whole life; no tag is used twice in a process. 0: no view.
using ViewTag = std::uint64_t;

enum class UIViewContentMode { scaleToFill, scaleAspectFit, scaleAspectFill, center, left, right };

/// Text at rest. Drawn within the view's bounds less `insets`, vertically as `vertical` says.
struct TextContent {
    enum class Vertical { top, center };
    std::string text;
    UIFont font;
    UIColor color;
    NSTextAlignment alignment = NSTextAlignment::natural;
    NSLineBreakMode lineBreakMode = NSLineBreakMode::byTruncatingTail;
    int numberOfLines = 1;  ///< 0: as many as fit
    Vertical vertical = Vertical::center;
    CGFloat minimumScale = 1;     ///< below 1: the font shrinks down to this factor until one line fits
    bool onlyWholeLines = false;  ///< leaves out a line of which a part would be cut off at the lower edge
    std::size_t selectionBegin = 0, selectionEnd = 0;  ///< bytes of `text` shown as selected; none when equal
    UIEdgeInsets insets;
    friend bool operator==(const TextContent&, const TextContent&) = default;
};

struct ImageContent {
    std::shared_ptr<const UIImage> image;
    UIViewContentMode contentMode = UIViewContentMode::scaleAspectFit;
    UIColor tint;  ///< colour of symbols
    friend bool operator==(const ImageContent&, const ImageContent&) = default;
};

/// A turning wheel. The backend animates the wheel while its view is mounted and visible.
struct SpinnerContent {
    UIColor color;
    bool animating = true;
    CGFloat progress = 1;  ///< 0 to 1: how much of the wheel is drawn while it does not turn, during a pull
    friend bool operator==(const SpinnerContent&, const SpinnerContent&) = default;
};

/// Text under edit: the backend places its own editor over the view and reports changes to the window.
struct TextInputContent {
    std::string text;  ///< replaces the editor's text when `revision` is newer than the last one it showed
    std::uint64_t revision = 0;
    std::string placeholder;
    UIFont font;
    UIColor color;
    UIColor placeholderColor;
    NSTextAlignment alignment = NSTextAlignment::natural;
    bool secure = false;
    bool multiline = false;
    bool enabled = true;
    bool focused = false;
    std::size_t maximumLength = 0;  ///< UTF-16 units; 0: no limit
    UIReturnKeyType returnKey = UIReturnKeyType::standard;
    UIEdgeInsets insets;
    friend bool operator==(const TextInputContent&, const TextInputContent&) = default;
};

/// A light blur of the backdrop: the parent's own content and the siblings behind this view, blurred within
/// the view's bounds, and covered with `tint`.
struct BlurContent {
    CGFloat radius = 0;  ///< standard deviation in points
    UIColor tint;
    friend bool operator==(const BlurContent&, const BlurContent&) = default;
};

/// The frames of a player, upright, aspect-fit in the view's bounds; nothing before the first frame. The
/// backend's own `PlayerFactory` has made the engine. Frames are drawn only while the view is mounted and
/// visible.
struct PlayerContent {
    std::shared_ptr<PlayerEngine> engine;
    friend bool operator==(const PlayerContent&, const PlayerContent&) = default;
};

using ViewContent = std::variant<std::monostate, TextContent, ImageContent, SpinnerContent, TextInputContent,
                                 BlurContent, PlayerContent>;

struct LayerShadow {
    UIColor color;
    CGFloat radius = 0;
    CGPoint offset;
    friend bool operator==(const LayerShadow&, const LayerShadow&) = default;
};

/// An animated rotation of a view about its centre, applied after the view's transform. The backend computes
/// the angle for each frame of the display while the view is mounted and visible. Immutable.
struct LayerRotation {
    std::vector<double> angles;  ///< radians, clockwise, at equal intervals of a run; at least one
    double duration = 0;         ///< seconds of a run; 0: the view keeps the first angle
    double repeatCount = 1;
    double begin = 0;         ///< monotonic seconds of the first run's start
    bool staysAtEnd = false;  ///< after the last run: keeps its last angle; false: angle 0
    /// Whether the angle still changes after `time`.
    bool isMoving(double time) const;
    double angleAt(double time) const;
};

enum class CursorShape { arrow, pointingHand, text };
enum class AccessibilityRole { none, text, button, image, textField, list, listItem, link, alert, window };

struct AccessibilityState {
    AccessibilityRole role = AccessibilityRole::none;
    std::string label;
    bool disabled = false;
    friend bool operator==(const AccessibilityState&, const AccessibilityState&) = default;
};

/// All that a backend shows of one view.
struct ViewState {
    CGRect frame;                 ///< in the parent's content coordinates, which `boundsOrigin` offsets
    CGPoint boundsOrigin;         ///< the scroll offset: children are drawn moved by its negative
    CGAffineTransform transform;  ///< about the centre of the frame
    std::shared_ptr<const LayerRotation> rotation;  ///< null: no rotation
    double alpha = 1;
    bool hidden = false;
    bool clipsToBounds = false;  ///< clips children to the frame with its rounded corners
    UIColor backgroundColor;
    CGFloat cornerRadius = 0;
    bool roundsTop = true, roundsBottom = true;  ///< the corners to which `cornerRadius` applies
    CGFloat borderWidth = 0;
    UIColor borderColor;
    LayerShadow shadow;
    bool isSurface = false;  ///< painted as one picture together with its subviews (a row, a bar, an alert)
    CursorShape cursor = CursorShape::arrow;
    AccessibilityState accessibility;
    ViewContent content;
    friend bool operator==(const ViewState&, const ViewState&) = default;
};

/// The parts of a state that an update changed. They spare a backend the comparison.
enum ViewStateChange : std::uint32_t {
    changedFrameOrigin = 1,
    changedFrameSize = 2,
    changedBoundsOrigin = 4,
    changedTransform = 8,  ///< also the rotation
    changedAlpha = 16,     ///< alpha or hidden
    changedLayer = 32,     ///< colours, corners, border, shadow, clipping, surface
    changedContent = 64,
    changedAccessibility = 128,  ///< also the cursor
    changedAll = 255,
};

/// One step of a change of the mounted tree.
struct Mutation {
    enum class Type { create, insert, remove, update, destroy };
    Type type;
    ViewTag tag = 0;
    ViewTag parent = 0;  ///< insert, remove
    /// insert, remove: the z-order among the parent's children at that step; 0 is the back
    std::size_t index = 0;
    std::uint32_t changes = 0;               ///< update
    std::shared_ptr<const ViewState> state;  ///< create, update: the whole new state

    static Mutation create(ViewTag tag, std::shared_ptr<const ViewState> state);
    static Mutation insert(ViewTag parent, ViewTag tag, std::size_t index);
    static Mutation remove(ViewTag parent, ViewTag tag, std::size_t index);
    static Mutation update(ViewTag tag, std::shared_ptr<const ViewState> state, std::uint32_t changes);
    static Mutation destroy(ViewTag tag);
};

/// All changes of one turn of the run loop, to be applied in order and shown at once.
struct MountingTransaction {
    std::uint64_t number = 0;  ///< 1, 2, 3 … for each window
    std::vector<Mutation> mutations;
};

/// Shows the views of one window. Implemented by a backend; called on the main thread.
///
/// Order within a transaction: removals and destructions of the views that left, creations, insertions,
/// updates. A created view is inserted in the same transaction. Only the window's own view has no parent: it
/// is the root, the first view created in transaction 1. A view that is removed and inserted again within a
/// transaction keeps its subviews.
class MountingBackend {
public:
    virtual ~MountingBackend() = default;

    virtual void mount(const MountingTransaction& transaction) = 0;
    /// The window has changes: the backend calls `UIWindow::flush` before this turn ends or with the next
    /// frame. The window calls this once between two flushes.
    virtual void setNeedsFlush() = 0;
    /// While frames are wanted, the backend calls `UIWindow::frame` once per refresh of the display.
    virtual void setFramesWanted(bool wanted) = 0;
    /// The device's pixels per point.
    virtual CGFloat scale() const = 0;
};

}  // namespace ostrel
