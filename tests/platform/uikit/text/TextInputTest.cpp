#include "backends/headless/HeadlessPlatform.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/text/UITextView.h"

#include <gtest/gtest.h>

namespace ostrel {

namespace {

class Writer final : public UITextFieldDelegate, public UITextViewDelegate {
public:
    struct Change {
        NSRange range;
        std::string replacement;
        friend bool operator==(const Change&, const Change&) = default;
    };
    bool allows = true, returns = true;
    std::vector<Change> changes;
    int returned = 0;
    std::vector<std::string> told;
    std::shared_ptr<UITextView> next;

    bool textFieldShouldReturn(UITextField&) override {
        ++returned;
        if (next) next->becomeFirstResponder();
        return returns;
    }
    bool textFieldShouldChangeCharactersInRangeReplacementString(UITextField&, NSRange range,
                                                                 const std::string& replacement) override {
        changes.push_back({range, replacement});
        return allows;
    }
    void textViewDidChange(UITextView&) override { told.emplace_back("text"); }
    void textViewDidChangeSelection(UITextView& view) override {
        told.push_back("caret " + std::to_string(view.selectedRange().location));
    }
};

class TextInputTest : public ::testing::Test {
protected:
    TextInputTest() {
        platform.window().addSubview(field);
        platform.window().addSubview(text);
        field->setTextFieldDelegate(writer);
        text->setTextViewDelegate(writer);
        platform.settle();
    }
    HeadlessPlatform platform;
    std::shared_ptr<Writer> writer = std::make_shared<Writer>();
    std::shared_ptr<UITextField> field = make<UITextField>(CGRect{0, 0, 200, 30});
    std::shared_ptr<UITextView> text = make<UITextView>(CGRect{0, 40, 200, 100});
};

TEST_F(TextInputTest, TheDelegateIsAskedForTheRangeThatChanges) {
    const std::tuple<const char*, const char*, Writer::Change> cases[] = {
        {"", "a", {{0, 0}, "a"}},       {"abc", "ac", {{1, 1}, ""}}, {"aaa", "aaaa", {{3, 0}, "a"}},
        {"abcd", "aXd", {{1, 2}, "X"}}, {"é", "è", {{0, 1}, "è"}},   {"😀b", "😁b", {{0, 2}, "😁"}},
        {"a😀", "a", {{1, 2}, ""}},
    };
    field->becomeFirstResponder();
    for (const auto& [before, after, change] : cases) {
        SCOPED_TRACE(after);
        for (const bool allows : {false, true}) {
            field->setText(before);
            platform.settle();
            writer->allows = allows;
            writer->changes.clear();
            platform.typeOver(after);
            EXPECT_EQ(writer->changes, std::vector{change});
            EXPECT_EQ(field->text(), allows ? after : before);
        }
    }
}

TEST_F(TextInputTest, ReturnGoesToTheDelegateAndThenToTheTargets) {
    writer->next = text;
    field->becomeFirstResponder();
    platform.pressReturn();
    EXPECT_EQ(writer->returned, 1);
    EXPECT_TRUE(text->isFirstResponder());
    writer->next.reset();
    int exits = 0;
    field->addTarget([&] { ++exits; }, UIControlEvent::editingDidEndOnExit);
    field->becomeFirstResponder();
    writer->returns = false;
    platform.pressReturn();
    EXPECT_EQ(exits, 0);
    EXPECT_TRUE(field->isFirstResponder());
    writer->returns = true;
    platform.pressReturn();
    EXPECT_EQ(exits, 1);
    EXPECT_FALSE(field->isFirstResponder());
}

TEST_F(TextInputTest, CaretAndHeightOfTextUnderEditAreReported) {
    constexpr CGFloat around = UITextView::editableInset.top + UITextView::editableInset.bottom;
    const CGFloat line = text->contentSize().height - around;
    EXPECT_GT(line, 0) << "an empty text is one line high";
    int posts = 0;
    auto& center = NSNotificationCenter::defaultCenter();
    center.addObserver(&posts, UITextViewTextDidChangeNotification, [&](const NSNotification&) { ++posts; });
    text->becomeFirstResponder();
    EXPECT_EQ(writer->told, std::vector<std::string>{"caret 0"});
    platform.type("one\ntwo\n😀");
    EXPECT_EQ(writer->told, (std::vector<std::string>{"caret 0", "text", "caret 10"}));
    const auto content = platform.backend().node(text->tag())->state->content;
    EXPECT_TRUE(std::get<TextInputContent>(content).multiline);
    EXPECT_EQ(text->contentSize().height, 3 * line + around);
    // The report of an editor whose layout of the text differs from the measured one.
    platform.window().textInputSelectionChanged(text->tag(), {2, 3}, 77);
    EXPECT_EQ(text->contentSize().height, 77 + around);
    EXPECT_EQ(text->selectedRange(), (NSRange{2, 3}));
    text->setText("x");
    EXPECT_EQ(text->contentSize().height, line + around);
    EXPECT_EQ(text->selectedRange(), (NSRange{1, 0}));
    EXPECT_EQ(posts, 1) << "only the user's change is told";
    EXPECT_EQ(std::count(writer->told.begin(), writer->told.end(), "text"), 1);
    center.removeObserver(&posts);
}

}  // namespace
}  // namespace ostrel
