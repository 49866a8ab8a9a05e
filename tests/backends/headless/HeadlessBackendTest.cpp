#include "backends/headless/HeadlessBackend.h"

#include <gtest/gtest.h>

namespace ostrel {

namespace {

std::shared_ptr<const ViewState> stateAt(CGFloat x, const std::string& text = {}) {
    ViewState state;
    state.frame = {x, 0, 10, 10};
    if (!text.empty()) state.content = TextContent{.text = text};
    return std::make_shared<const ViewState>(state);
}

std::shared_ptr<const ViewState> stateWith(ViewContent content) {
    ViewState state;
    state.frame = {0, 0, 10, 10};
    state.content = std::move(content);
    return std::make_shared<const ViewState>(state);
}

class OracleTest : public ::testing::Test {
protected:
    OracleTest() { begin(); }
    /// Mounts view 3 in view 2 in view 1, which is the root.
    void begin() {
        backend = HeadlessBackend();
        number = 0;
        backend.onViolation = [this](const std::string& rule) { violations.push_back(rule); };
        mount({Mutation::create(1, stateAt(0)), Mutation::create(2, stateAt(0)), Mutation::create(3, stateAt(0)),
               Mutation::insert(1, 2, 0), Mutation::insert(2, 3, 0)});
    }
    void mount(std::vector<Mutation> mutations) { backend.mount({++number, std::move(mutations)}); }

    HeadlessBackend backend;
    std::vector<std::string> violations;
    std::uint64_t number = 0;
};

TEST_F(OracleTest, EveryBrokenRuleIsFound) {
    const std::tuple<const char*, std::vector<Mutation>> cases[] = {
        {"changes something", {}},
        {"0 is no view", {Mutation::update(0, stateAt(1), changedFrameOrigin)}},
        {"created once", {Mutation::create(2, stateAt(0))}},
        {"has a state", std::vector{Mutation::create(9, nullptr)}},
        {"inserted in the same transaction", {Mutation::create(9, stateAt(0))}},
        {"the view is known", {Mutation::update(9, stateAt(0), changedAll)}},
        {"the view is known", {Mutation::destroy(9)}},
        {"the parent is known", {Mutation::create(9, stateAt(0)), Mutation::insert(8, 9, 0)}},
        {"in one place only", {Mutation::insert(1, 3, 0)}},
        {"in one place only", {Mutation::insert(2, 1, 0)}},
        {"no view is in itself", {Mutation::remove(1, 2, 0), Mutation::insert(3, 2, 0)}},
        {"within the children", {Mutation::create(9, stateAt(0)), Mutation::insert(1, 9, 2)}},
        {"child of that parent", {Mutation::remove(1, 3, 0)}},
        {"at that index", {Mutation::remove(1, 2, 1)}},
        {"changes something", {Mutation::update(2, stateAt(0), changedAll)}},
        {"every change is named", {Mutation::update(2, stateAt(1, "text"), changedFrameOrigin)}},
        {"in no parent is destroyed", {Mutation::destroy(3)}},
        {"in no parent is destroyed", {Mutation::destroy(1)}},
        {"children have left before", {Mutation::remove(1, 2, 0), Mutation::destroy(2)}},
        {"inserted again or destroyed", {Mutation::remove(1, 2, 0)}},
        {"come first",
         {Mutation::update(3, stateAt(1), changedFrameOrigin), Mutation::remove(2, 3, 0), Mutation::destroy(3)}},
        {"its frame is finite", {Mutation::update(3, stateAt(std::nan("")), changedFrameOrigin)}},
        {"a blur has a finite radius",
         {Mutation::update(3, stateWith(BlurContent{.radius = -1, .tint = {}}), changedContent)}},
        {"frames come from an engine", {Mutation::create(9, stateWith(PlayerContent{})), Mutation::insert(1, 9, 0)}},
    };
    for (const auto& [rule, mutations] : cases) {
        begin();
        ASSERT_TRUE(violations.empty());
        mount(mutations);
        bool isFound = false;
        for (const std::string& violation : violations) isFound |= violation.find(rule) != std::string::npos;
        EXPECT_TRUE(isFound) << rule << "; got " << (violations.empty() ? "nothing" : violations.front());
        violations.clear();
    }
}

TEST_F(OracleTest, NumbersFollowEachOther) {
    backend.mount({3, {Mutation::update(3, stateAt(1), changedFrameOrigin)}});
    EXPECT_EQ(violations.size(), 1u);
}

TEST_F(OracleTest, AMovedViewKeepsItsChildren) {
    mount({Mutation::create(4, stateAt(0)), Mutation::insert(1, 4, 1)});
    mount({Mutation::remove(1, 2, 0), Mutation::insert(4, 2, 0)});
    EXPECT_TRUE(violations.empty());
    EXPECT_EQ(backend.node(2)->children, (std::vector<ViewTag>{3}));
    EXPECT_EQ(backend.node(4)->children, (std::vector<ViewTag>{2}));
}

TEST_F(OracleTest, OnlyVisibleTextIsRead) {
    ViewState window, clip, text;
    window.frame = {0, 0, 100, 100};
    clip.frame = {10, 10, 50, 50};
    clip.boundsOrigin = {0, 20};
    clip.clipsToBounds = true;
    text.frame = {0, 25, 10, 10};
    text.content = TextContent{.text = "seen"};
    const auto share = [](const ViewState& state) { return std::make_shared<const ViewState>(state); };
    HeadlessBackend tree;
    tree.mount({1,
                {Mutation::create(1, share(window)), Mutation::create(2, share(clip)), Mutation::create(3, share(text)),
                 Mutation::insert(1, 2, 0), Mutation::insert(2, 3, 0)}});
    EXPECT_EQ(tree.absoluteFrame(3), (CGRect{10, 15, 10, 10}));
    EXPECT_EQ(tree.visibleTexts(), (std::vector<std::string>{"seen"}));
    EXPECT_EQ(tree.tagsWithText("seen"), (std::vector<ViewTag>{3}));

    const std::tuple<const char*, ViewTag, std::function<void(ViewState&)>, bool> cases[] = {
        {"scrolled away", 2, [](ViewState& state) { state.boundsOrigin.y = 35; }, false},
        {"half of it", 2, [](ViewState& state) { state.boundsOrigin.y = 30; }, true},
        {"transparent", 2, [](ViewState& state) { state.alpha = 0; }, false},
        {"hidden", 2, [](ViewState& state) { state.hidden = true; }, false},
        {"beside the window", 2, [](ViewState& state) { state.frame.origin.x = 100; }, false},
        {"without width", 3, [](ViewState& state) { state.frame.size.width = 0; }, false}};
    std::uint64_t next = 2;
    for (const auto& [what, tag, change, isSeen] : cases) {
        const auto before = tree.node(tag)->state;
        ViewState changed = *before;
        change(changed);
        tree.mount({next++, {Mutation::update(tag, share(changed), changedAll)}});
        EXPECT_EQ(!tree.visibleTexts().empty(), isSeen) << what;
        tree.mount({next++, {Mutation::update(tag, before, changedAll)}});
    }
}

}  // namespace

}  // namespace ostrel
