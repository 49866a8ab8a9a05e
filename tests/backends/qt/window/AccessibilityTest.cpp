#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/view/UIDevice.h"
#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <QAccessible>

namespace ostrel::test {

namespace {

const UIColor white{1, 1, 1, 1}, clear{};

Spec told(CGRect frame, AccessibilityRole role, const char* label, std::vector<Spec> children = {}) {
    Spec spec = box(frame, clear, std::move(children));
    spec.state.accessibility = {role, label, false};
    return spec;
}

TEST(Accessibility, TellsTheViewsThatHaveARole) {
    QtTestWindow window;
    Spec hidden = told({0, 0, 10, 10}, AccessibilityRole::button, "hidden");
    hidden.state.hidden = true;
    Spec disabled = told({0, 60, 50, 20}, AccessibilityRole::button, "Send");
    disabled.state.accessibility.disabled = true;
    const auto tags = window.mount(box(
        {0, 0, 200, 200}, white,
        {told({0, 0, 200, 100}, AccessibilityRole::list, "Articles",
              {box({0, 10, 200, 50}, clear, {told({20, 5, 100, 30}, AccessibilityRole::image, "A wheel")}), hidden}),
         disabled, told({0, 500, 10, 10}, AccessibilityRole::link, "far below")}));
    window.grab();
    QAccessibleInterface* root = QAccessible::queryAccessibleInterface(&window.view());
    ASSERT_TRUE(root);
    ASSERT_EQ(root->childCount(), 3);
    QAccessibleInterface* list = root->child(0);
    EXPECT_EQ(list->role(), QAccessible::List);
    EXPECT_EQ(list->text(QAccessible::Name), "Articles");
    EXPECT_EQ(list->parent(), root);
    ASSERT_EQ(list->childCount(), 1) << "neither the view without a role nor the hidden one";
    QAccessibleInterface* image = list->child(0);
    EXPECT_EQ(image->role(), QAccessible::Graphic);
    EXPECT_EQ(image->text(QAccessible::Name), "A wheel");
    EXPECT_EQ(image->parent(), list);
    const QPoint origin = window.window().mapToGlobal(QPoint(0, 0));
    EXPECT_EQ(image->rect(), QRect(20, 15, 100, 30).translated(origin));
    EXPECT_EQ(root->childAt(origin.x() + 25, origin.y() + 20), list);
    EXPECT_EQ(list->childAt(origin.x() + 25, origin.y() + 20), image);
    EXPECT_EQ(list, root->child(0)) << "the same one each time";
    EXPECT_TRUE(root->child(1)->state().disabled);
    EXPECT_FALSE(root->child(1)->state().offscreen);
    EXPECT_TRUE(root->child(2)->state().offscreen);

    // A view that was removed is not listed any more.
    window.mount({Mutation::remove(tags[0], tags[5], 1), Mutation::destroy(tags[5])});
    window.grab();
    EXPECT_EQ(root->childCount(), 2);
    EXPECT_EQ(root->child(1)->text(QAccessible::Name), "far below");
}

TEST(Accessibility, TheWindowLeadsToItAndPressingIsATap) {
    auto uiWindow = make<UIWindow>(CGSize{200, 200});
    auto button = make<UIButton>(UIButton::Type::custom, CGRect{20, 20, 80, 40});
    int taps = 0;
    button->setAccessibility(AccessibilityRole::button, "Like");
    button->addTarget([&] { ++taps; }, UIControlEvent::touchUpInside);
    uiWindow->addSubview(button);
    QtTestWindow window(uiWindow);
    window.grab();
    QAccessibleInterface* top = QAccessible::queryAccessibleInterface(&window.window());
    ASSERT_TRUE(top);
    ASSERT_EQ(top->childCount(), 1);
    ASSERT_EQ(top->child(0)->childCount(), 1);
    QAccessibleInterface* found = top->child(0)->child(0);
    EXPECT_EQ(found->text(QAccessible::Name), "Like");
    ASSERT_TRUE(found->actionInterface());
    found->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(taps, 1);
}

TEST(Accessibility, AnnouncesAndFollowsTheFocus) {
    const auto uiWindow = make<UIWindow>(CGSize{200, 200});
    const auto button = make<UIButton>();
    button->setFrame({0, 0, 80, 40});
    button->setAccessibility(AccessibilityRole::button, "Add");
    uiWindow->addSubview(button);
    QtTestWindow window(uiWindow);
    window.grab();
    QAccessibleInterface* const root = QAccessible::queryAccessibleInterface(&window.view());
    ASSERT_EQ(root->childCount(), 1);
    EXPECT_FALSE(root->child(0)->state().focused);
    uiWindow->setFocusedView(button.get(), true);
    window.grab();
    EXPECT_TRUE(root->child(0)->state().focused);
    for (const char* text : {"Moved: Image 2 of 5", "Moved: Image 3 of 5"}) {
        UIApplication::sharedApplication().announce(text);
        ASSERT_EQ(root->childCount(), 2) << "one at a time";
        EXPECT_EQ(root->child(1)->role(), QAccessible::AlertMessage);
        EXPECT_EQ(root->child(1)->text(QAccessible::Name), text);
        EXPECT_EQ(root->indexOfChild(root->child(1)), 1);
    }
}

}  // namespace

}  // namespace ostrel::test
