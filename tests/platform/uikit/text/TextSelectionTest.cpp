#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/text/UITextView.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

/// At 20 points, a letter of the headless metrics is 10 points wide, an ideograph 20, and a line 28 high.
const UIFont font = UIFont::system(20);

TEST(TextOffset, TheNearestPlaceToAPointIsFound) {
    HeadlessPlatform platform;
    const std::string hao = "\xE5\xA5\xBD";
    struct Place {
        CGPoint point;
        std::size_t offset;
    };
    const std::tuple<std::string, CGFloat, std::vector<Place>> cases[] = {
        {"", 100, {{{50, 50}, 0}}},
        {"abc", 100, {{{-5, 10}, 0}, {{4, 10}, 0}, {{6, 10}, 1}, {{90, 10}, 3}, {{15, -1}, 0}, {{15, 500}, 3}}},
        {"abc", 0, {{{0, 10}, 0}}},
        {"abc def ghi", 75, {{{1, 30}, 8}, {{90, 10}, 7}, {{14, 40}, 9}}},
        {"abcdefgh", 40, {{{1, 30}, 4}}},
        {"ab\ncd\r\nef", 100, {{{11, 30}, 4}, {{1, 57}, 7}}},
        {"ab\n\ncd", 100, {{{50, 30}, 3}}},
        {"ab\n", 100, {{{50, 30}, 3}}},
        {hao + hao + hao, 45, {{{21, 10}, 3}, {{21, 30}, 9}}},
        {"a\xC3\xA4z", 100, {{{19, 10}, 3}}}};
    for (const auto& [text, width, places] : cases) {
        for (const auto& [point, offset] : places)
            EXPECT_EQ(TextMeasurer::shared().offsetAtPoint(text, {.font = font, .width = width}, point), offset)
                << text << " at " << point.x << ", " << point.y;
    }
}

TEST(TextOffset, AVeryLongParagraphIsEstimatedAtOnce) {
    HeadlessPlatform platform;
    std::string text;
    while (text.size() < 1'000'000) text += "\xE5\xA5\xBD";
    const std::size_t place =
        TextMeasurer::shared().offsetAtPoint(text, {.font = font, .width = 400}, {201, 28 * 8000 + 1});
    EXPECT_NEAR(static_cast<double>(place), (8000 * 20 + 10) * 3, 3000);
    EXPECT_EQ(place % 3, 0u) << "between characters";
}

TEST(TextOffset, LinesFollowTheirAlignment) {
    HeadlessPlatform platform;
    const std::tuple<NSTextAlignment, int, CGPoint, std::size_t> cases[] = {
        {NSTextAlignment::center, 0, {41, 10}, 1}, {NSTextAlignment::center, 0, {50, 30}, 6},
        {NSTextAlignment::right, 0, {81, 10}, 1},  {NSTextAlignment::right, 0, {5, 30}, 4},
        {NSTextAlignment::left, 1, {61, 90}, 6},   {NSTextAlignment::right, 1, {31, -4}, 1},
    };
    for (const auto& [alignment, lines, point, place] : cases) {
        const TextLayout layout{.font = font, .width = 100, .alignment = alignment, .maximumLines = lines};
        EXPECT_EQ(TextMeasurer::shared().offsetAtPoint("abc\ndefg", layout, point), place)
            << point.x << ", " << point.y << " of " << lines;
    }
}

TEST(TextSelectionWords, AWordEndsWhereAnotherKindOfCharacterBegins) {
    const std::tuple<const char*, std::size_t, const char*> cases[] = {{"", 0, ""},
                                                                       {"one two", 0, "one"},
                                                                       {"one two", 2, "one"},
                                                                       {"one  two", 3, "  "},
                                                                       {"one two", 7, "two"},
                                                                       {"it's, so", 1, "it's"},
                                                                       {"it's, so", 4, ","},
                                                                       {"\xC3\xA4\xC3\xB6 b", 1, "\xC3\xA4\xC3\xB6"},
                                                                       {"\xE5\xA5\xBD\xE5\xA5\xBE", 3, "\xE5\xA5\xBE"},
                                                                       {"\xF0\x9F\x98\x80x", 2, "\xF0\x9F\x98\x80"}};
    for (const auto& [text, offset, word] : cases) {
        const auto [begin, end] = TextSelection::wordAt(text, offset);
        EXPECT_EQ(std::string_view(text).substr(begin, end - begin), word) << text << " at " << offset;
    }
}

class TextSelectionTest : public ::testing::Test {
protected:
    TextSelectionTest() {
        UIApplication::sharedApplication().setPasteboardText = [this](const std::string& text) { copied = text; };
        auto root = make<UIViewController>();
        view->setFrame({10, 100, 300, 100});
        view->setFont(font);
        view->setText("one two three");
        view->setEditable(false);
        root->view()->addSubview(view);
        platform.window().setRootViewController(root);
        platform.settle();
    }
    ~TextSelectionTest() override { UIApplication::sharedApplication().setPasteboardText = nullptr; }

    /// The part of a text that the backend shows as selected.
    std::string selected(const UIView& of) {
        platform.settle();
        const auto* const node = platform.backend().node(of.tag());
        const auto* const content = node ? std::get_if<TextContent>(&node->state->content) : nullptr;
        return content ? content->text.substr(content->selectionBegin, content->selectionEnd - content->selectionBegin)
                       : std::string();
    }
    std::string selected() { return selected(*view); }
    std::shared_ptr<UILabel> addLabel(CGFloat height, const char* text) {
        const auto label = make<UILabel>(CGRect{10, 300, 300, height});
        label->setFont(font);
        label->setText(text);
        view->superview()->addSubview(label);
        return label;
    }
    void usePointer(UIButtonMask button) {
        platform.touchType = UITouchType::pointer;
        platform.touchButton = button;
    }
    bool closeMenu() {
        platform.advance(0.5);
        const bool isOpen = platform.sees("Copy All");
        if (isOpen) platform.key(UIKeyCode::escape);
        platform.advance(0.5);
        return isOpen;
    }
    bool opensByPress() {
        platform.press({50, 110}, 0.6);
        return closeMenu();
    }
    bool opensBySecondaryButton() {
        usePointer(UIButtonMask::secondary);
        platform.tap(CGPoint{50, 110});
        platform.touchType = UITouchType::direct;
        platform.touchButton = UIButtonMask::primary;
        return closeMenu();
    }

    HeadlessPlatform platform;
    const std::shared_ptr<UITextView> view = make<UITextView>();
    std::string copied;
};

TEST_F(TextSelectionTest, OnlySelectableTextAtRestIsSelected) {
    const std::tuple<const char*, bool, bool, bool, bool> cases[] = {
        {"text at rest", false, true, true, true},
        {"not selectable", false, false, true, false},
        {"takes no touches", false, true, false, false},
        {"under edit: the editor's own", true, true, true, false}};
    for (const auto& [what, editable, selectable, touches, selects] : cases) {
        view->setEditable(editable);
        view->setSelectable(selectable);
        view->setUserInteractionEnabled(touches);
        EXPECT_EQ(opensByPress(), selects) << what;
        EXPECT_EQ(opensBySecondaryButton(), selects) << what;
        view->resignFirstResponder();
    }
    view->setEditable(false);
    view->setUserInteractionEnabled(true);
    view->setSelectable(true);
    view->setText({});
    EXPECT_FALSE(opensByPress() || opensBySecondaryButton()) << "nothing to select";
}

TEST_F(TextSelectionTest, ALongPressSelectsWordsAndOffersToCopyThem) {
    platform.touch(UITouchPhase::began, {65, 110});
    platform.advance(0.6);
    EXPECT_EQ(selected(), "two");
    platform.touch(UITouchPhase::moved, {100, 112});
    EXPECT_EQ(selected(), "two three");
    platform.touch(UITouchPhase::moved, {20, 112});
    EXPECT_EQ(selected(), "one two");
    platform.touch(UITouchPhase::ended, {20, 112});
    platform.advance(0.5);
    EXPECT_TRUE(platform.tapText("Copy"));
    EXPECT_EQ(copied, "one two");
    platform.advance(0.5);
    EXPECT_TRUE(opensByPress());
    platform.press({50, 110}, 0.6);
    platform.advance(0.5);
    EXPECT_TRUE(platform.tapText("Copy All"));
    EXPECT_EQ(copied, "one two three");
    platform.advance(0.5);
    platform.drag({50, 110}, {50, 180}, 0.8);
    EXPECT_FALSE(closeMenu()) << "a drag is no press";
}

TEST_F(TextSelectionTest, APointerSelectsByDragging) {
    usePointer(UIButtonMask::primary);
    platform.drag({12, 110}, {62, 112});
    EXPECT_EQ(selected(), "one t");
    for (const auto& [characters, modifiers] : {std::pair{"c", modifierCommand}, std::pair{"\x03", modifierControl}}) {
        copied.clear();
        EXPECT_TRUE(platform.key(UIKeyCode::other, modifiers, characters));
        EXPECT_EQ(copied, "one t");
    }
    EXPECT_FALSE(platform.key(UIKeyCode::other, modifierNone, "c"));
    platform.drag({110, 110}, {112, 111});
    EXPECT_EQ(selected(), "") << "too short to be a drag";
    EXPECT_FALSE(platform.key(UIKeyCode::other, modifierControl, "\x03")) << "nothing to copy";
}

TEST_F(TextSelectionTest, TwoPressesSelectAWordThreeAParagraphAndDraggingGoesOnByThem) {
    view->setText("one two\nthree\r\n\nfour");
    UITouch press{.type = UITouchType::pointer, .view = {}};
    const auto send = [&](UITouchPhase phase, CGPoint location, int taps) {
        press.phase = phase;
        press.location = location;
        press.tapCount = taps;
        platform.window().sendTouch(press);
    };
    const std::tuple<int, CGPoint, CGPoint, const char*> cases[] = {
        {2, {55, 110}, {55, 110}, "two"},
        {2, {15, 110}, {56, 111}, "one two"},
        {2, {55, 110}, {15, 111}, "one two"},
        {3, {15, 110}, {15, 110}, "one two"},
        {3, {15, 138}, {15, 139}, "three"},
        {3, {15, 166}, {15, 166}, ""},
        {3, {15, 138}, {15, 105}, "one two\nthree"},
        {4, {15, 110}, {15, 194}, "one two\nthree\r\n\nfour"},
    };
    for (const auto& [taps, from, to, expected] : cases) {
        send(UITouchPhase::began, from, taps);
        send(UITouchPhase::moved, to, taps);
        EXPECT_EQ(selected(), expected) << taps << " presses at " << from.y;
        send(UITouchPhase::ended, to, taps);
    }
}

TEST_F(TextSelectionTest, AllIsSelectedOfTheTextThatWasPressedLast) {
    const auto selectAll = [&] { return platform.key(UIKeyCode::other, modifierControl, "\x01"); };
    EXPECT_FALSE(selectAll()) << "no text was pressed";
    usePointer(UIButtonMask::primary);
    platform.tap(CGPoint{50, 110});
    EXPECT_EQ(selected(), "");
    EXPECT_TRUE(selectAll());
    EXPECT_EQ(selected(), "one two three");
    platform.tap(CGPoint{100, 600});
    EXPECT_FALSE(selectAll());
    EXPECT_EQ(selected(), "");
}

TEST_F(TextSelectionTest, WithoutSelectionByPressOnlyThePointerSelects) {
    const auto label = addLabel(28, "atitle");
    label->setTextAlignment(NSTextAlignment::center);
    label->setSelectable(true, false);
    platform.press({160, 310}, 0.6);
    EXPECT_EQ(selected(*label), "");
    EXPECT_FALSE(closeMenu());
    usePointer(UIButtonMask::primary);
    platform.drag({141, 310}, {169, 312});
    EXPECT_EQ(selected(*label), "tit");
}

TEST_F(TextSelectionTest, AWindowHasOneSelectionWhichATouchElsewhereEnds) {
    const auto label = addLabel(100, "a label");
    view->selection()->select(0, 3);
    platform.press({30, 350}, 0.6);
    platform.advance(0.5);
    EXPECT_EQ(selected(*label), "") << "labels are not selectable by default";
    EXPECT_EQ(selected(), "");

    label->setSelectable(true);
    view->selection()->select(4, 7);
    EXPECT_EQ(selected(), "two");
    platform.touch(UITouchPhase::began, {45, 350});
    platform.advance(0.6);
    EXPECT_EQ(selected(*label), "label") << "the label centres its line vertically";
    EXPECT_EQ(selected(), "");
    platform.touch(UITouchPhase::ended, {45, 350});
    EXPECT_TRUE(closeMenu());
    platform.tap(CGPoint{100, 600});
    EXPECT_EQ(selected(*label), "");

    label->setSelectable(true);
    platform.press({45, 350}, 0.6);
    EXPECT_TRUE(closeMenu());
    label->setText("short");
    EXPECT_EQ(selected(*label), "") << "another text";
    view->selection()->select(4, 7);
    view->setText("x");
    EXPECT_EQ(selected(), "");
    EXPECT_FALSE(view->selection()->copy());
}

}  // namespace
}  // namespace ostrel
