#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <random>

namespace ostrel::test {

namespace {

const UIColor red{1, 0, 0, 1}, green{0, 1, 0, 1}, blue{0, 0, 1, 1}, white{1, 1, 1, 1};

Spec list(double top, int rows, double offset) {
    Spec table = box({0, 0, 200, 200}, UIColor::groupedBackground());
    table.state.clipsToBounds = true;
    table.state.boundsOrigin = {0, offset};
    for (int i = 0; i < rows; ++i) {
        Spec text = box({10, 5, 100, 20}, {});
        text.state.content =
            TextContent{.text = std::to_string(i), .font = UIFont::system(14), .color = UIColor::label()};
        table.children.push_back(surface({0, top + i * 30.0, 200, 30}, i % 2 ? red : green, {text}));
    }
    return table;
}

std::vector<Mutation> scrolled(ViewTag table, ViewState state, double offset) {
    state.boundsOrigin.y = offset;
    return {Mutation::update(table, std::make_shared<ViewState>(state), changedBoundsOrigin)};
}

TEST(Mounting, ScrollingOverMountedRowsPaintsNothingAndMovesOneNode) {
    QtTestWindow window;
    const Spec root = box({0, 0, 200, 200}, white, {list(0, 10, 0)});
    const auto tags = window.mount(root);
    window.grab();
    EXPECT_TRUE(waitUntil([&] { return window.view().statistics().bandsPainted == 10; }))
        << "rows out of sight are painted ahead";
    const auto before = window.view().statistics();
    for (int step = 1; step <= 20; ++step) {
        window.mount(scrolled(tags[1], root.children[0].state, step * 1.5));
        window.grab();
        EXPECT_LE(window.view().statistics().nodesChanged, 3u) << "the table, and at most a row that comes or goes";
    }
    EXPECT_EQ(window.view().statistics().bandsPainted, before.bandsPainted);
    EXPECT_EQ(window.view().statistics().listsTaken, before.listsTaken);
}

TEST(Mounting, OnlyWhatTheChangeTouchesIsPaintedAgain) {
    struct Case {
        const char* what;
        // The place of the view in the order of the tree.
        std::size_t view;
        std::uint32_t changes;
        std::function<void(ViewState&)> change;
        std::uint64_t painted;
    };
    // In the order of the tree: root 0, surface 1, its text 2, surface 3, its text 4, plain view 5.
    Spec text = box({0, 0, 50, 20}, {});
    text.state.content = TextContent{.text = "a", .color = UIColor::label()};
    const Spec root = box(
        {0, 0, 200, 200}, white,
        {surface({0, 0, 100, 40}, red, {text}), surface({0, 50, 100, 40}, green, {text}), box({0, 100, 50, 50}, blue)});
    const Case cases[] = {
        {"a surface moves", 1, changedFrameOrigin,
         [](ViewState& s) {
             s.frame.origin = {7, 7};
         },
         0},
        {"a surface fades", 1, changedAlpha, [](ViewState& s) { s.alpha = 0.5; }, 0},
        {"a surface turns", 1, changedTransform, [](ViewState& s) { s.transform = CGAffineTransform::rotation(1); }, 0},
        {"a surface changes colour", 1, changedLayer, [](ViewState& s) { s.backgroundColor = blue; }, 1},
        {"a surface grows", 1, changedFrameSize, [](ViewState& s) { s.frame.size.height = 60; }, 1},
        {"text changes", 2, changedContent, [](ViewState& s) { std::get<TextContent>(s.content).text = "b"; }, 1},
        {"text moves in its surface", 2, changedFrameOrigin, [](ViewState& s) { s.frame.origin.x = 9; }, 1},
        {"what a screen reader says changes", 2, changedAccessibility,
         [](ViewState& s) { s.accessibility.label = "x"; }, 0},
        {"a plain view changes colour", 5, changedLayer, [](ViewState& s) { s.backgroundColor = red; }, 0},
    };
    for (const Case& c : cases) {
        QtTestWindow window;
        const auto tags = window.mount(root);
        window.grab();
        const auto before = window.view().statistics().bandsPainted;
        ViewState state = c.view == 1   ? root.children[0].state
                          : c.view == 2 ? root.children[0].children[0].state
                                        : root.children[2].state;
        c.change(state);
        window.mount({Mutation::update(tags[c.view], std::make_shared<ViewState>(state), c.changes)});
        window.grab();
        EXPECT_EQ(window.view().statistics().bandsPainted - before, c.painted) << c.what;
    }
}

TEST(Mounting, PositionsAreExactFarDownALongList) {
    constexpr double far = 130'000'000;
    QtTestWindow window;
    const Spec root = box({0, 0, 200, 200}, white, {list(far, 8, far)});
    const auto tags = window.mount(root);
    for (const double moved : {0.0, 1.0, 29.0, 31.0}) {
        if (moved > 0) window.mount(scrolled(tags[1], root.children[0].state, far + moved));
        window.grab();
        for (int y = 0; y < 150; ++y) {
            const bool isOdd = static_cast<int>(y + moved) / 30 % 2 == 1;
            const QColor expected = isOdd ? QColor(255, 0, 0) : QColor(0, 255, 0);
            ASSERT_EQ(window.at(150, y), expected) << "moved " << moved << ", at " << y;
        }
    }
}

TEST(Mounting, DestroyedViewsLeaveNoPictures) {
    QtTestWindow window;
    const auto tags = window.mount(box({0, 0, 200, 200}, white, {list(0, 6, 0)}));
    window.grab();
    EXPECT_EQ(window.view().statistics().pictures, 6u);
    std::vector<Mutation> mutations;
    // After root and table, each row is two views.
    for (std::size_t i = 2; i + 1 < tags.size(); i += 2) {
        mutations.push_back(Mutation::remove(tags[1], tags[i], 0));
        mutations.push_back(Mutation::remove(tags[i], tags[i + 1], 0));
        mutations.push_back(Mutation::destroy(tags[i]));
        mutations.push_back(Mutation::destroy(tags[i + 1]));
    }
    window.mount(std::move(mutations));
    window.grab();
    EXPECT_EQ(window.view().statistics().pictures, 0u);
    EXPECT_EQ(window.view().statistics().pictureBytes, 0u);
    EXPECT_EQ(window.view().statistics().mountedViews, 2u);
}

TEST(Mounting, VeryHighSurfaceIsPaintedInBandsWhereItIsSeen) {
    QtTestWindow window;
    Spec text = box({0, 0, 200, 60000}, {});
    std::string words;
    for (int i = 0; i < 20000; ++i) words += "word ";
    text.state.content = TextContent{.text = words,
                                     .font = UIFont::system(15),
                                     .color = UIColor::black(),
                                     .lineBreakMode = NSLineBreakMode::byWordWrapping,
                                     .numberOfLines = 0,
                                     .vertical = TextContent::Vertical::top};
    Spec table = box({0, 0, 200, 200}, white, {surface({0, 0, 200, 60000}, white, {text})});
    table.state.clipsToBounds = true;
    const auto tags = window.mount(box({0, 0, 200, 200}, white, {table}));
    const auto hasInk = [&] {
        window.grab();
        for (int y = 20; y < 180; ++y) {
            for (int x = 0; x < 180; ++x) {
                if (window.at(x, y).red() < 100) return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(hasInk());
    EXPECT_LT(window.view().statistics().pictureBytes, 16u << 20);
    window.mount(scrolled(tags[1], table.state, 50000));
    EXPECT_TRUE(hasInk());
    EXPECT_LT(window.view().statistics().pictureBytes, 16u << 20) << "bands far away are let go";
}

TEST(Mounting, RandomChangesShowWhatANewWindowShows) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto number = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
        const auto change = [&](UIView& view) {
            view.setFrame(
                {double(number(-20, 150)), double(number(-20, 150)), double(number(0, 120)), double(number(0, 120))});
            view.setBackgroundColor(UIColor::rgb(number(0, 0xFFFFFF), number(0, 3) ? 1.0f : 0.0f));
            view.setHidden(number(0, 9) == 0);
            view.setClipsToBounds(number(0, 2) == 0);
            view.setSurface(number(0, 2) == 0);
            view.setBoundsOrigin({0, number(0, 3) == 0 ? double(number(-30, 30)) : 0});
            view.setCornerRadius(number(0, 4) == 0 ? 8 : 0);
        };
        const auto uiWindow = make<UIWindow>(CGSize{200, 200});
        std::vector<std::shared_ptr<UIView>> views{uiWindow};
        const auto pick = [&] { return views[std::size_t(number(0, int(views.size()) - 1))]; };
        const auto add = [&](int count) {
            for (int i = 0; i < count; ++i) {
                const auto view = make<UIView>(), parent = pick();
                change(*view);
                parent->insertSubview(view, std::size_t(number(0, int(parent->subviews().size()))));
                views.push_back(view);
            }
        };
        QImage changed;
        {
            QtTestWindow window(uiWindow);
            add(40);
            for (int step = 0; step < 12; ++step) {
                if (const auto leaving = pick(); leaving != uiWindow) leaving->removeFromSuperview();
                std::erase_if(views, [](const auto& view) { return !view->window(); });
                add(5);
                for (int i = 0; i < 3; ++i) {
                    if (const auto view = pick(); view != uiWindow) change(*view);
                }
                if (step % 3 == 0) window.grab();
                // One view leaves and returns within a turn.
                if (const auto view = pick(); view != uiWindow) {
                    UIView* const parent = view->superview();
                    view->removeFromSuperview();
                    parent->insertSubview(view, 0);
                }
            }
            changed = window.grab();
        }
        ASSERT_EQ(changed, QtTestWindow(uiWindow).grab());
    }
}

}  // namespace

}  // namespace ostrel::test
