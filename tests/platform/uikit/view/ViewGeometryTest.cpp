#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/controls/UIImageView.h"
#include "platform/uikit/view/Autoresizing.h"

#include <gtest/gtest.h>

#include <limits>

namespace ostrel {

namespace {

void expectNear(const CGRect& actual, const CGRect& expected, const char* what) {
    EXPECT_NEAR(actual.origin.x, expected.origin.x, 1e-9) << what;
    EXPECT_NEAR(actual.origin.y, expected.origin.y, 1e-9) << what;
    EXPECT_NEAR(actual.size.width, expected.size.width, 1e-9) << what;
    EXPECT_NEAR(actual.size.height, expected.size.height, 1e-9) << what;
}

void expectNear(CGPoint actual, CGPoint expected, const char* what) {
    expectNear({actual, {}}, {expected, {}}, what);
}

TEST(Autoresizing, FlexiblePartsShareTheDifference) {
    struct Case {
        const char* what;
        unsigned mask;
        CGRect frame;
        CGSize from, to;
        CGRect expected;
    };
    const Case cases[] = {
        {"no mask keeps origin and size",
         autoresizingNone,
         {10, 20, 30, 40},
         {100, 100},
         {200, 300},
         {10, 20, 30, 40}},
        {"width takes all", flexibleWidth, {10, 0, 80, 10}, {100, 10}, {140, 10}, {10, 0, 120, 10}},
        {"width shrinks", flexibleWidth, {10, 0, 80, 10}, {100, 10}, {60, 10}, {10, 0, 40, 10}},
        {"width ends at zero", flexibleWidth, {10, 0, 30, 10}, {100, 10}, {20, 10}, {10, 0, 0, 10}},
        {"left margin: sticks to the right",
         flexibleLeftMargin,
         {10, 0, 80, 10},
         {100, 10},
         {150, 10},
         {60, 0, 80, 10}},
        {"right margin: stays", flexibleRightMargin, {10, 0, 80, 10}, {100, 10}, {150, 10}, {10, 0, 80, 10}},
        {"both margins by their lengths",
         flexibleLeftMargin | flexibleRightMargin,
         {10, 0, 60, 10},
         {100, 10},
         {180, 10},
         {30, 0, 60, 10}},
        {"equal margins stay centred",
         flexibleLeftMargin | flexibleRightMargin,
         {20, 0, 60, 10},
         {100, 10},
         {121, 10},
         {30.5, 0, 60, 10}},
        {"both margins without length share equally",
         flexibleLeftMargin | flexibleRightMargin,
         {0, 0, 100, 10},
         {100, 10},
         {160, 10},
         {30, 0, 100, 10}},
        {"all three by their lengths",
         flexibleLeftMargin | flexibleWidth | flexibleRightMargin,
         {10, 0, 50, 10},
         {100, 10},
         {200, 10},
         {20, 0, 100, 10}},
        {"width and right margin",
         flexibleWidth | flexibleRightMargin,
         {10, 0, 30, 10},
         {100, 10},
         {190, 10},
         {10, 0, 60, 10}},
        {"a margin below zero takes no share",
         flexibleLeftMargin | flexibleRightMargin,
         {50, 0, 100, 10},
         {100, 10},
         {120, 10},
         {70, 0, 100, 10}},
        {"from an empty superview",
         flexibleWidth | flexibleHeight,
         {0, 0, 0, 0},
         {0, 0},
         {300, 400},
         {0, 0, 300, 400}},
        {"height", flexibleHeight, {0, 10, 5, 80}, {5, 100}, {5, 130}, {0, 10, 5, 110}},
        {"top margin: sticks to the bottom",
         flexibleTopMargin,
         {0, 10, 5, 80},
         {5, 100},
         {5, 130},
         {0, 40, 5, 80}},
        {"bottom margin", flexibleBottomMargin, {0, 10, 5, 80}, {5, 100}, {5, 130}, {0, 10, 5, 80}},
        {"axes are independent",
         flexibleWidth | flexibleTopMargin,
         {0, 0, 50, 50},
         {100, 100},
         {200, 150},
         {0, 50, 150, 50}},
    };
    for (const Case& c : cases)
        expectNear(autoresizedFrame(c.frame, c.mask, c.from, c.to), c.expected, c.what);
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

    struct Case {
        const char* what;
        CGPoint point;
        const UIView *from, *to;
        CGPoint expected;
    };
    const Case cases[] = {
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
    for (const Case& c : cases) expectNear(c.from->convertPointToView(c.point, c.to), c.expected, c.what);
    expectNear(turned->convertRectToView(turned->bounds(), row.get()), {5, -5, 10, 20},
               "box of a turned view");
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
        std::function<void()> change, undo;
        CGPoint point;
        UIView* expected;
    };
    const auto nothing = [] {};
    const Case cases[] = {
        {"alone", nothing, nothing, {10, 10}, back.get()},
        {"the one in front", nothing, nothing, {60, 60}, front.get()},
        {"the deepest", nothing, nothing, {60, 10}, inner.get()},
        {"beyond its superview", nothing, nothing, {160, 10}, &window},
        {"left edge belongs to it", nothing, nothing, {50, 60}, front.get()},
        {"right edge does not", nothing, nothing, {150, 60}, &window},
        {"outside of the window", nothing, nothing, {-1, 10}, nullptr},
        {"hidden", [&] { front->setHidden(true); }, [&] { front->setHidden(false); }, {60, 10}, back.get()},
        {"transparent", [&] { front->setAlpha(0.01); }, [&] { front->setAlpha(1); }, {60, 10}, back.get()},
        {"hardly visible",
         [&] { front->setAlpha(0.02); },
         [&] { front->setAlpha(1); },
         {60, 10},
         inner.get()},
        {"takes no touches",
         [&] { front->setUserInteractionEnabled(false); },
         [&] { front->setUserInteractionEnabled(true); },
         {60, 10},
         back.get()},
        {"scrolled away",
         [&] {
             front->setBoundsOrigin({0, 60});
         },
         [&] { front->setBoundsOrigin({}); },
         {60, 10},
         front.get()},
        {"moved by its transform",
         [&] { front->setTransform(CGAffineTransform::translation(0, 200)); },
         [&] { front->setTransform({}); },
         {60, 210},
         inner.get()},
        {"brought to front",
         [&] { window.bringSubviewToFront(back); },
         [&] { window.sendSubviewToBack(back); },
         {60, 10},
         back.get()},
    };
    for (const Case& c : cases) {
        c.change();
        EXPECT_EQ(window.hitTest(c.point), c.expected) << c.what;
        c.undo();
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
    const auto parent = make<Recorded>(order), child = make<Recorded>(order),
               grandchild = make<Recorded>(order);
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
