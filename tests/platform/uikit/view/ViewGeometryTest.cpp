#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/controls/UIImageView.h"
#include "platform/uikit/view/Autoresizing.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace ostrel {

namespace {

void expectNear(const CGRect& actual, const CGRect& expected, const char* what) {
    EXPECT_NEAR(actual.origin.x, expected.origin.x, 1e-9) << what;
    EXPECT_NEAR(actual.origin.y, expected.origin.y, 1e-9) << what;
    EXPECT_NEAR(actual.size.width, expected.size.width, 1e-9) << what;
    EXPECT_NEAR(actual.size.height, expected.size.height, 1e-9) << what;
}

void expectNear(CGPoint actual, CGPoint expected, const char* what) { expectNear({actual, {}}, {expected, {}}, what); }

TEST(Autoresizing, FlexiblePartsShareTheDifference) {
    // Along one axis: "margin" is the flexible margin before the view, "end" the one behind it.
    constexpr unsigned none = autoresizingNone, margin = flexibleLeftMargin, length = flexibleWidth,
                       end = flexibleRightMargin;
    // Name, flexible parts, then origin, length and the superview's length, before and after.
    const std::tuple<const char*, unsigned, std::array<CGFloat, 3>, std::array<CGFloat, 3>> cases[] = {
        {"no mask keeps origin and size", none, {10, 30, 100}, {10, 30, 200}},
        {"the length takes all", length, {10, 80, 100}, {10, 120, 140}},
        {"the length shrinks", length, {10, 80, 100}, {10, 40, 60}},
        {"the length ends at zero", length, {10, 30, 100}, {10, 0, 20}},
        {"the margin keeps the distance to the end", margin, {10, 80, 100}, {60, 80, 150}},
        {"the end keeps the view", end, {10, 80, 100}, {10, 80, 150}},
        {"both margins by their lengths", margin | end, {10, 60, 100}, {30, 60, 180}},
        {"equal margins stay centred", margin | end, {20, 60, 100}, {30.5, 60, 121}},
        {"both margins without length share equally", margin | end, {0, 100, 100}, {30, 100, 160}},
        {"all three by their lengths", margin | length | end, {10, 50, 100}, {20, 100, 200}},
        {"length and end", length | end, {10, 30, 100}, {10, 60, 190}},
        {"a margin below zero takes no share", margin | end, {50, 100, 100}, {70, 100, 120}},
        {"from an empty superview", length, {0, 0, 0}, {0, 300, 300}},
    };
    for (const auto& [what, flexible, before, after] : cases) {
        const auto [x, width, whole] = before;
        const auto [newX, newWidth, newWhole] = after;
        // The other axis has no flexible part and another size.
        expectNear(autoresizedFrame({x, 7, width, 9}, flexible, {whole, 50}, {newWhole, 70}), {newX, 7, newWidth, 9},
                   what);
        expectNear(autoresizedFrame({7, x, 9, width}, flexible << 3, {50, whole}, {70, newWhole}),
                   {7, newX, 9, newWidth}, what);
    }
    static_assert(flexibleTopMargin == margin << 3 && flexibleHeight == length << 3);
    static_assert(flexibleBottomMargin == end << 3);
}

TEST(Autoresizing, GoesDownTheTreeAndLeavesScrolledContentAlone) {
    const auto root = make<UIView>(CGRect{0, 0, 100, 100});
    const auto child = make<UIView>(CGRect{10, 10, 80, 80});
    const auto grandchild = make<UIView>(CGRect{0, 0, 80, 20});
    child->setAutoresizingMask(flexibleWidth);
    grandchild->setAutoresizingMask(flexibleWidth | flexibleBottomMargin);
    root->addSubview(child);
    child->addSubview(grandchild);
    root->setBoundsOrigin({0, 500});
    root->setFrame({5, 5, 150, 100});
    expectNear(child->frame(), {10, 10, 130, 80}, "child");
    expectNear(grandchild->frame(), {0, 0, 130, 20}, "grandchild");
}

TEST(ViewGeometry, FramesAreFiniteAndNotNegative) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto view = make<UIView>(CGRect{1, nan, -5, std::numeric_limits<double>::infinity()});
    EXPECT_EQ(view->frame(), (CGRect{1, 0, 0, 0}));
    view->setFrame({nan, 2, 3, -1});
    EXPECT_EQ(view->frame(), (CGRect{0, 2, 3, 0}));
}

TEST(ViewGeometry, PointsConvertThroughScrollingAndTransforms) {
    HeadlessPlatform platform;
    UIWindow& window = platform.window();
    const auto scroll = make<UIView>(CGRect{10, 20, 200, 200});
    scroll->setBoundsOrigin({0, 50});
    const auto row = make<UIView>(CGRect{5, 60, 100, 40});
    const auto turned = make<UIView>(CGRect{0, 0, 20, 10});
    turned->setTransform(CGAffineTransform::rotation(3.14159265358979323846 / 2));
    const auto doubled = make<UIView>(CGRect{100, 300, 50, 50});
    doubled->setTransform(CGAffineTransform::scale(2, 2));
    window.addSubview(scroll);
    scroll->addSubview(row);
    row->addSubview(turned);
    window.addSubview(doubled);

    const std::tuple<const char*, CGPoint, const UIView*, const UIView*, CGPoint> cases[] = {
        {"row to window", {1, 2}, row.get(), nullptr, {16, 32}},
        {"window to row", {16, 32}, &window, row.get(), {1, 2}},
        {"row to its scroll view", {1, 2}, row.get(), scroll.get(), {6, 62}},
        {"scroll view to row", {6, 62}, scroll.get(), row.get(), {1, 2}},
        {"across the tree", {0, 0}, row.get(), doubled.get(), {-30, -122.5}},
        {"a quarter turn about the middle", {20, 5}, turned.get(), row.get(), {10, 15}},
        {"and back", {10, 15}, row.get(), turned.get(), {20, 5}},
        {"scaled about the middle", {0, 0}, doubled.get(), nullptr, {75, 275}},
        {"to itself", {3, 4}, row.get(), row.get(), {3, 4}},
    };
    for (const auto& [what, point, from, to, expected] : cases)
        expectNear(from->convertPointToView(point, to), expected, what);
    expectNear(turned->convertRectToView(turned->bounds(), row.get()), {5, -5, 10, 20}, "box of a turned view");
}

TEST(HitTest, FindsTheDeepestVisibleViewFromFrontToBack) {
    HeadlessPlatform platform;
    UIWindow& window = platform.window();
    const auto back = make<UIView>(CGRect{0, 0, 100, 100});
    const auto front = make<UIView>(CGRect{50, 0, 100, 100});
    const auto inner = make<UIView>(CGRect{0, 0, 200, 50});
    window.addSubview(back);
    window.addSubview(front);
    front->addSubview(inner);

    struct Case {
        const char* what;
        CGPoint point;
        UIView* expected;
        std::function<void()> change = [] {};
    };
    const Case cases[] = {
        {"alone", {10, 10}, back.get()},
        {"the one in front", {60, 60}, front.get()},
        {"the deepest", {60, 10}, inner.get()},
        {"beyond its superview", {160, 10}, &window},
        {"left edge belongs to it", {50, 60}, front.get()},
        {"right edge does not", {150, 60}, &window},
        {"outside of the window", {-1, 10}, nullptr},
        {"hidden", {60, 10}, back.get(), [&] { front->setHidden(true); }},
        {"transparent", {60, 10}, back.get(), [&] { front->setAlpha(0.01); }},
        {"hardly visible", {60, 10}, inner.get(), [&] { front->setAlpha(0.02); }},
        {"no interaction", {60, 10}, back.get(), [&] { front->setUserInteractionEnabled(false); }},
        {"scrolled away",
         {60, 10},
         front.get(),
         [&] {
             front->setBoundsOrigin(CGPoint{0, 60});
         }},
        {"moved by its transform",
         {60, 210},
         inner.get(),
         [&] { front->setTransform(CGAffineTransform::translation(0, 200)); }},
        {"brought to front", {60, 10}, back.get(), [&] { window.bringSubviewToFront(back); }},
    };
    for (const Case& c : cases) {
        front->setHidden(false);
        front->setAlpha(1);
        front->setUserInteractionEnabled(true);
        front->setBoundsOrigin({});
        front->setTransform({});
        c.change();
        EXPECT_EQ(window.hitTest(c.point), c.expected) << c.what;
    }
}

TEST(Constraints, TheLargestHeightCountsAndLostItemsDoNot) {
    const auto row = make<UIView>();
    EXPECT_FALSE(row->constrainedHeight());
    const auto text = make<UIView>(CGRect{0, 0, 10, 30});
    auto gone = make<UIView>(CGRect{0, 0, 10, 500});
    row->addConstraint({.toItem = text, .constant = 35});
    row->addConstraint({.toItem = text, .multiplier = 2, .constant = 1});
    row->addConstraint({.toItem = gone});
    gone.reset();
    EXPECT_EQ(row->constrainedHeight(), 65);
    text->setFrame({0, 0, 10, 50});
    EXPECT_EQ(row->constrainedHeight(), 101);
}

TEST(Layout, ParentsComeFirstAndEndlessLayoutIsCutOff) {
    struct Restless final : UIView {
        using UIView::UIView;
        int layouts = 0;
        void layoutSubviews() override {
            ++layouts;
            setNeedsLayout();
        }
    };
    struct Recorded final : UIView {
        Recorded(std::vector<Recorded*>& order) : order_(order) {}
        void layoutSubviews() override { order_.push_back(this); }
        std::vector<Recorded*>& order_;
    };
    HeadlessPlatform platform;
    std::vector<Recorded*> order;
    const auto parent = make<Recorded>(order), child = make<Recorded>(order), grandchild = make<Recorded>(order);
    child->addSubview(grandchild);
    parent->addSubview(child);
    platform.window().addSubview(parent);
    platform.settle();
    EXPECT_EQ(order, (std::vector<Recorded*>{parent.get(), child.get(), grandchild.get()}));
    order.clear();
    grandchild->setNeedsLayout();
    parent->setNeedsLayout();
    platform.settle();
    EXPECT_EQ(order, (std::vector<Recorded*>{parent.get(), grandchild.get()}));

    const auto restless = make<Restless>();
    platform.window().addSubview(restless);
    platform.window().flush();
    EXPECT_LE(restless->layouts, 100);
    EXPECT_TRUE(platform.backend().node(restless->tag()));
    restless->removeFromSuperview();
}

}  // namespace

}  // namespace ostrel
