#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UITextView.h"
#include "platform/uikit/UIViewController.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

class TextCopyTest : public ::testing::Test {
protected:
    TextCopyTest() {
        UIApplication::sharedApplication().setPasteboardText = [this](const std::string& text) {
            copied = text;
        };
        auto root = make<UIViewController>();
        view->setFrame({0, 100, 300, 100});
        view->setText("to be copied");
        root->view()->addSubview(view);
        platform.window().setRootViewController(root);
        platform.settle();
    }
    ~TextCopyTest() override { UIApplication::sharedApplication().setPasteboardText = nullptr; }

    bool isSelectable() {
        platform.settle();
        const auto* const content =
            std::get_if<TextContent>(&platform.backend().node(view->tag())->state->content);
        return content && content->selectable;
    }
    bool opensByPress() {
        platform.press({50, 120}, 0.6);
        return closeMenu();
    }
    bool opensBySecondaryButton() {
        platform.touchType = UITouchType::pointer;
        platform.touchButton = UIButtonMask::secondary;
        platform.tap(CGPoint{50, 120});
        platform.touchButton = UIButtonMask::primary;
        platform.touchType = UITouchType::direct;
        return closeMenu();
    }

    HeadlessPlatform platform;
    const std::shared_ptr<UITextView> view = make<UITextView>();
    std::string copied;

private:
    bool closeMenu() {
        platform.advance(0.5);
        const bool isOpen = platform.sees("Copy");
        if (isOpen) platform.key(UIKeyCode::escape);
        platform.advance(0.5);
        return isOpen;
    }
};

TEST_F(TextCopyTest, OnlySelectableTextAtRestCanBeCopied) {
    const struct {
        const char* what;
        bool editable, selectable, touches, copies;
    } cases[] = {{"text at rest", false, true, true, true},
                 {"not selectable", false, false, true, false},
                 {"takes no touches", false, true, false, false},
                 {"under edit: the editor's own", true, true, true, false}};
    for (const auto& [what, editable, selectable, touches, copies] : cases) {
        view->setEditable(editable);
        view->setSelectable(selectable);
        view->setUserInteractionEnabled(touches);
        EXPECT_EQ(isSelectable(), copies) << what;
        EXPECT_EQ(opensByPress(), copies) << what;
        EXPECT_EQ(opensBySecondaryButton(), copies) << what;
        view->resignFirstResponder();
    }
    view->setEditable(false);
    view->setUserInteractionEnabled(true);
    view->setSelectable(true);
    view->setText({});
    EXPECT_FALSE(opensByPress()) << "nothing to copy";
}

TEST_F(TextCopyTest, TheMenuCopiesTheWholeText) {
    view->setEditable(false);
    platform.press({50, 120}, 0.6);
    platform.advance(0.5);
    view->setText("changed meanwhile");
    EXPECT_TRUE(platform.tapText("Copy"));
    platform.advance(0.5);
    EXPECT_EQ(copied, "to be copied") << "what was there when the menu was opened";
    platform.drag({50, 120}, {50, 180}, 0.8);
    platform.advance(0.5);
    EXPECT_FALSE(platform.sees("Copy")) << "a drag is no press";
}

TEST_F(TextCopyTest, ALabelIsCopiedOnlyWhenItIsMeantToBe) {
    const auto label = make<UILabel>(CGRect{0, 100, 300, 100});
    label->setText("a label");
    view->superview()->addSubview(label);
    EXPECT_FALSE(opensByPress() || opensBySecondaryButton());
    label->setSelectable(true);
    EXPECT_TRUE(opensByPress());
    EXPECT_TRUE(opensBySecondaryButton());
    platform.press({50, 120}, 0.6);
    platform.advance(0.5);
    EXPECT_TRUE(platform.tapText("Copy"));
    EXPECT_EQ(copied, "a label");
    platform.advance(0.5);
    label->setText({});
    EXPECT_FALSE(opensByPress() || opensBySecondaryButton()) << "nothing to copy";
    label->setText("again");
    label->setSelectable(false);
    EXPECT_FALSE(opensByPress() || opensBySecondaryButton());
}

}  // namespace
}  // namespace ostrel
