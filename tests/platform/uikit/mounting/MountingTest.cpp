#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/text/UILabel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace ostrel {

namespace {

using Type = Mutation::Type;

std::vector<Type> typesOf(const MountingTransaction& transaction) {
    std::vector<Type> types;
    for (const Mutation& mutation : transaction.mutations) types.push_back(mutation.type);
    return types;
}

/// Expects that the mounted tree has exactly the views of `view`'s tree, in their states.
void expectMounted(const HeadlessBackend& backend, const UIView& view, std::size_t& count) {
    ++count;
    const auto* const node = backend.node(view.tag());
    ASSERT_TRUE(node) << "view " << view.tag() << " is not mounted";
    EXPECT_EQ(*node->state, view.state()) << "view " << view.tag();
    std::vector<ViewTag> children;
    for (const auto& child : view.subviews()) children.push_back(child->tag());
    ASSERT_EQ(node->children, children) << "view " << view.tag();
    for (const auto& child : view.subviews()) expectMounted(backend, *child, count);
}

void expectMounted(HeadlessPlatform& platform) {
    std::size_t count = 0;
    expectMounted(platform.backend(), platform.window(), count);
    EXPECT_EQ(platform.backend().count(), count) << "views that left are destroyed";
}

TEST(Mounting, OneLabelInALargeTreeIsOneMutation) {
    HeadlessPlatform platform;
    std::vector<std::shared_ptr<UILabel>> labels;
    for (int i = 0; i < 5000; ++i) {
        labels.push_back(make<UILabel>(CGRect{0, 0, 50, 20}));
        platform.window().addSubview(labels.back());
    }
    platform.settle();
    ASSERT_EQ(platform.backend().count(), 5001u);
    const auto before = platform.backend().transactionCount();

    labels[2500]->setText("new");
    platform.settle();
    EXPECT_EQ(platform.backend().transactionCount(), before + 1);
    const auto& mutations = platform.backend().lastTransaction().mutations;
    ASSERT_EQ(mutations.size(), 1u);
    EXPECT_EQ(mutations[0].tag, labels[2500]->tag());
    EXPECT_EQ(mutations[0].changes, changedContent | changedAccessibility);
}

TEST(Mounting, ChangesThatCancelOutAreNotSent) {
    HeadlessPlatform platform;
    const auto view = make<UILabel>(CGRect{1, 2, 3, 4});
    view->setText("same");
    platform.window().addSubview(view);
    platform.settle();
    const auto before = platform.backend().transactionCount();

    view->setFrame({1, 2, 3, 4});
    view->setAlpha(0.5);
    view->setAlpha(1);
    view->setText("other");
    view->setText("same");
    platform.window().bringSubviewToFront(view);
    const auto guest = make<UIView>();
    platform.window().addSubview(guest);
    guest->removeFromSuperview();
    platform.settle();
    EXPECT_EQ(platform.backend().transactionCount(), before);
}

TEST(Mounting, ChangesOfOneTurnAreOneTransactionOfOneCopyAView) {
    HeadlessPlatform platform;
    const auto view = make<UIView>(CGRect{0, 0, 10, 10});
    platform.window().addSubview(view);
    platform.settle();
    view->setFrame({5, 0, 10, 10});
    view->setAlpha(0.5);
    view->setBoundsOrigin({0, 7});
    platform.settle();
    const auto& mutations = platform.backend().lastTransaction().mutations;
    ASSERT_EQ(mutations.size(), 1u);
    EXPECT_EQ(mutations[0].changes, changedFrameOrigin | changedAlpha | changedBoundsOrigin);

    view->setBoundsOrigin({0, 8});
    platform.settle();
    EXPECT_EQ(platform.backend().lastTransaction().mutations.at(0).changes, changedBoundsOrigin);
}

TEST(Mounting, AMovedViewIsNeitherDestroyedNorCreated) {
    HeadlessPlatform platform;
    const auto a = make<UIView>(), b = make<UIView>(), child = make<UIView>();
    child->addSubview(make<UILabel>());
    platform.window().addSubview(a);
    platform.window().addSubview(b);
    a->addSubview(child);
    platform.settle();

    b->addSubview(child);
    platform.settle();
    EXPECT_EQ(typesOf(platform.backend().lastTransaction()), (std::vector{Type::remove, Type::insert}));
    expectMounted(platform);

    // Out of a tree that leaves the window, after a moment in no window.
    child->removeFromSuperview();
    a->addSubview(child);
    b->removeFromSuperview();
    platform.settle();
    EXPECT_EQ(typesOf(platform.backend().lastTransaction()),
              (std::vector{Type::remove, Type::remove, Type::destroy, Type::insert}));
    expectMounted(platform);
}

TEST(Mounting, AnotherZOrderMovesTheFewestViews) {
    HeadlessPlatform platform;
    std::vector<std::shared_ptr<UIView>> views;
    for (int i = 0; i < 6; ++i) {
        views.push_back(make<UIView>());
        platform.window().addSubview(views.back());
    }
    platform.settle();
    platform.window().bringSubviewToFront(views[1]);
    platform.settle();
    EXPECT_EQ(typesOf(platform.backend().lastTransaction()), (std::vector{Type::remove, Type::insert}));
    platform.window().sendSubviewToBack(views[5]);
    platform.window().insertSubview(views[0], 3);
    platform.settle();
    EXPECT_EQ(platform.backend().lastTransaction().mutations.size(), 4u);
    expectMounted(platform);
}

TEST(Mounting, ANewBackendGetsTheWholeTree) {
    HeadlessPlatform platform;
    UIWindow& window = platform.window();
    const auto view = make<UIView>();
    view->addSubview(make<UIView>());
    window.addSubview(view);
    platform.settle();
    HeadlessBackend& first = platform.backend();

    HeadlessBackend second;
    bool asked = false;
    second.onNeedsFlush = [&] { asked = true; };
    window.setBackend(&second);
    EXPECT_TRUE(asked);
    window.flush();
    EXPECT_EQ(second.count(), 3u);
    EXPECT_EQ(second.transactionCount(), 1u);
    window.setBackend(&first);
    platform.settle();
    expectMounted(platform);
}

TEST(Mounting, AFlushIsAskedForOnceAndNotEnteredTwice) {
    HeadlessPlatform platform;
    UIWindow& window = platform.window();
    platform.settle();
    int asked = 0, mounts = 0;
    platform.backend().onNeedsFlush = [&] { ++asked; };
    const auto view = make<UIView>();
    platform.backend().onMount = [&](const MountingTransaction&) {
        if (++mounts > 1) return;
        view->setAlpha(0.5);
        window.flush();
    };
    window.addSubview(view);
    view->setFrame({1, 1, 1, 1});
    EXPECT_EQ(asked, 1);
    window.flush();
    EXPECT_EQ(mounts, 1);
    EXPECT_EQ(asked, 2) << "the change made while mounting waits for the next flush";
    window.flush();
    EXPECT_EQ(mounts, 2);
}

TEST(Mounting, RandomChangesLeadToTheTreeTheyDescribe) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto pick = [&](std::size_t count) { return static_cast<std::size_t>(random() % count); };

    HeadlessPlatform platform;
    UIWindow& window = platform.window();
    std::vector<std::shared_ptr<UIView>> views;  // in the tree or out of it
    const auto anyParent = [&]() -> UIView& {
        return pick(8) == 0 || views.empty() ? window : *views[pick(views.size())];
    };
    const auto some = [&] { return views[pick(views.size())]; };
    for (int step = 0; step < 4000 && !HasFatalFailure(); ++step) {
        const std::size_t action = views.empty() ? 0 : pick(12);
        if (action < 2 && views.size() < 120) {
            UIView& parent = anyParent();
            views.push_back(make<UILabel>(CGRect{0, 0, double(pick(50)), double(pick(50))}));
            parent.insertSubview(views.back(), pick(5));
        } else if (action < 4) {
            some()->removeFromSuperview();
        } else if (action == 4 && pick(2)) {  // its superview, if any, keeps it alive
            views.erase(views.begin() + static_cast<std::ptrdiff_t>(pick(views.size())));
        } else if (action < 7) {
            const auto view = some();
            UIView& parent = anyParent();
            if (!parent.isDescendantOfView(*view)) parent.insertSubview(view, pick(6));
        } else if (action == 7) {
            const auto view = some();
            UIView* const parent = view->superview();
            if (parent) pick(2) ? parent->bringSubviewToFront(view) : parent->sendSubviewToBack(view);
        } else if (action == 8) {
            static_cast<UILabel&>(*some()).setText(std::to_string(pick(5)));
        } else if (action == 9) {
            some()->setFrame({double(pick(9)), double(pick(9)), double(pick(9)), 5});
        } else if (action == 10) {
            some()->setHidden(pick(2));
        } else if (pick(3) == 0) {
            platform.settle();
            expectMounted(platform);
        }
    }
    platform.settle();
    expectMounted(platform);
}

}  // namespace

}  // namespace ostrel
