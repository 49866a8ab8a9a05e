#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <map>
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
        EXPECT_LE(window.view().statistics().nodesChanged, 3u)
            << "the table, and at most a row that comes or goes";
    }
    EXPECT_EQ(window.view().statistics().bandsPainted, before.bandsPainted);
    EXPECT_EQ(window.view().statistics().listsTaken, before.listsTaken);
}

TEST(Mounting, OnlyWhatTheChangeTouchesIsPaintedAgain) {
    struct Case {
        const char* what;
        std::size_t view;  // in the order of the tree
        std::uint32_t changes;
        std::function<void(ViewState&)> change;
        std::uint64_t painted;
    };
    // root 0, surface 1, text in it 2, surface 3, plain view 4
    Spec text = box({0, 0, 50, 20}, {});
    text.state.content = TextContent{.text = "a", .color = UIColor::label()};
    const Spec root = box({0, 0, 200, 200}, white,
                          {surface({0, 0, 100, 40}, red, {text}), surface({0, 50, 100, 40}, green, {text}),
                           box({0, 100, 50, 50}, blue)});
    const Case cases[] = {
        {"a surface moves", 1, changedFrameOrigin,
         [](ViewState& s) {
             s.frame.origin = {7, 7};
         },
         0},
        {"a surface fades", 1, changedAlpha, [](ViewState& s) { s.alpha = 0.5; }, 0},
        {"a surface turns", 1, changedTransform,
         [](ViewState& s) { s.transform = CGAffineTransform::rotation(1); }, 0},
        {"a surface changes colour", 1, changedLayer, [](ViewState& s) { s.backgroundColor = blue; }, 1},
        {"a surface grows", 1, changedFrameSize, [](ViewState& s) { s.frame.size.height = 60; }, 1},
        {"text changes", 2, changedContent, [](ViewState& s) { std::get<TextContent>(s.content).text = "b"; },
         1},
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
    // Each row is two views behind root and table.
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

/// Random trees, changed at random: what is shown must be what a new window shows of the same tree.
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : random_(seed) {}

    Spec spec(int depth) {
        Spec spec;
        change(spec.state);
        const int children = depth > 3 ? 0 : number(0, 4);
        for (int i = 0; i < children; ++i) spec.children.push_back(this->spec(depth + 1));
        return spec;
    }
    void change(ViewState& state) {
        state.frame = {double(number(-20, 150)), double(number(-20, 150)), double(number(0, 120)),
                       double(number(0, 120))};
        state.backgroundColor = UIColor::rgb(number(0, 0xFFFFFF), number(0, 3) ? 1.0f : 0.0f);
        state.hidden = number(0, 9) == 0;
        state.clipsToBounds = number(0, 2) == 0;
        state.isSurface = number(0, 2) == 0;
        state.boundsOrigin = {0, number(0, 3) == 0 ? double(number(-30, 30)) : 0};
        state.cornerRadius = number(0, 4) == 0 ? 8 : 0;
    }
    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

private:
    std::mt19937 random_;
};

struct Shown {
    ViewState state;
    std::vector<ViewTag> children;
    ViewTag parent = 0;
};

TEST(Mounting, RandomChangesShowWhatANewWindowShows) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomTree random(seed);
        QtTestWindow window;
        std::map<ViewTag, Shown> model;
        const auto enter = [&](const Spec& spec, ViewTag parent, std::size_t index,
                               std::vector<Mutation>& mutations) {
            std::vector<ViewTag> tags;
            QtTestWindow::add(mutations, spec, parent, index, tags);
            std::size_t next = 0;
            const auto note = [&](auto& self, const Spec& s, ViewTag above) -> void {
                const ViewTag tag = tags[next++];
                model[tag] = {s.state, {}, above};
                for (const Spec& child : s.children) {
                    model[tag].children.push_back(tags[next]);
                    self(self, child, tag);
                }
            };
            note(note, spec, parent);
            if (parent) {
                auto& siblings = model[parent].children;
                siblings.insert(siblings.begin() + static_cast<std::ptrdiff_t>(index), tags[0]);
            }
            return tags[0];
        };
        std::vector<Mutation> first;
        Spec rootSpec = box({0, 0, 200, 200}, white);
        for (int i = 0; i < 4; ++i) rootSpec.children.push_back(random.spec(0));
        const ViewTag root = enter(rootSpec, 0, 0, first);
        window.mount(std::move(first));

        const auto pick = [&] {
            auto it = model.begin();
            std::advance(it, random.number(0, static_cast<int>(model.size()) - 1));
            return it->first;
        };
        const auto specOf = [&](auto& self, ViewTag tag) -> Spec {
            Spec spec{model[tag].state, {}};
            for (const ViewTag child : model[tag].children) spec.children.push_back(self(self, child));
            return spec;
        };
        for (int step = 0; step < 12; ++step) {
            std::vector<Mutation> mutations;
            if (const ViewTag leaving = pick(); leaving != root) {
                auto& siblings = model[model[leaving].parent].children;
                const auto at = std::find(siblings.begin(), siblings.end(), leaving);
                mutations.push_back(
                    Mutation::remove(model[leaving].parent, leaving, std::size_t(at - siblings.begin())));
                siblings.erase(at);
                const auto destroy = [&](auto& self, ViewTag tag) -> void {
                    for (const ViewTag child : model[tag].children) {
                        mutations.push_back(Mutation::remove(tag, child, 0));
                        self(self, child);
                    }
                    mutations.push_back(Mutation::destroy(tag));
                    model.erase(tag);
                };
                destroy(destroy, leaving);
            }
            const ViewTag parent = pick();
            enter(random.spec(2), parent,
                  std::size_t(random.number(0, static_cast<int>(model[parent].children.size()))), mutations);
            for (int i = 0; i < 3; ++i) {
                const ViewTag changed = pick();
                if (changed == root) continue;
                random.change(model[changed].state);
                mutations.push_back(
                    Mutation::update(changed, std::make_shared<ViewState>(model[changed].state), changedAll));
            }
            window.mount(std::move(mutations));
            if (step % 3 == 0) window.grab();
        }
        QtTestWindow fresh;
        fresh.mount(specOf(specOf, root));
        ASSERT_EQ(window.grab(), fresh.grab());
    }
}

}  // namespace

}  // namespace ostrel::test
