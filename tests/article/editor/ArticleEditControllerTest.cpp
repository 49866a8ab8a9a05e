#include "tests/article/editor/ArticleEditTest.h"

#include <algorithm>
#include <functional>

namespace ostrel {
namespace {

TEST_F(ArticleEditTest, RowsHaveTheirIdentifiersAndHeights) {
    openNew();
    const struct {
        NSIndexPath path;
        const char* identifier;  // null: none
        CGFloat height;
    } cases[] = {
        {{0, 0}, "CELL_IDENTIFIER_TITLE", 40},
        {{0, 1}, "CELL_IDENTIFIER_TEXT", UITableViewAutomaticDimension},
        {{0, 2}, "CELL_IDENTIFIER_IMAGES", UITableViewAutomaticDimension},
        {{1, 0}, "CELL_IDENTIFIER_IMAGES", 106},
        {{1, 7}, "CELL_IDENTIFIER_IMAGES", 106},
        {{2, 0}, "CELL_IDENTIFIER_VIDEOS", 106},
        {{3, 0}, nullptr, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.path.section << ", " << c.path.row);
        const auto identifier = UIArticleEditViewController::cellIdentifierFor(c.path);
        EXPECT_EQ(identifier, c.identifier ? std::optional<std::string>(c.identifier) : std::nullopt);
        EXPECT_EQ(editor->tableViewHeightForRowAtIndexPath(table(), c.path), c.height);
    }
    EXPECT_EQ(editor->tableViewNumberOfRowsInSection(table(), 3), 0);
    EXPECT_EQ(editor->tableViewCellForRowAtIndexPath(table(), {3, 0}), nullptr);
    EXPECT_EQ(table().rectForRowAtIndexPath({0, 0}).minY(), 30);
    EXPECT_EQ(table().rectForRowAtIndexPath({0, 1}).height(), 76);
}

TEST_F(ArticleEditTest, EveryKindOfChangeEnablesPost) {
    const auto type = [this](const std::shared_ptr<UIView>& view, const char* text) {
        view->becomeFirstResponder();
        EXPECT_TRUE(platform.typeOver(text));
    };
    auto& center = NSNotificationCenter::defaultCenter();
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"a key in the title", [&] { type(editor->titleField(), "x"); }},
        {"a key in the text", [&] { type(editor->textTextField(), "x"); }},
        {"a title that is as before again",
         [&] {
             type(editor->titleField(), "x");
             type(editor->titleField(), "A title");
         }},
        {"a caption", [&] { typeCaption(image(0), "new"); }},
        {"an order",
         [&] {
             images().collectionViewMoveItemAtIndexPathToIndexPath(*images().collectionView(), {0, 0}, {0, 1});
         }},
        {"a removal", [&] { tap(image(0)->removeButton()); }},
        {"a removed video", [&] { video(0)->remove(); }},
        {"an addition", [&] { finishPicking(pickFrom(images()), "public.image", picture()); }},
        {"another text view", [&] { center.postNotification(UITextViewTextDidChangeNotification); }},
    };
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        openExisting(articleWith(2, 1));
        EXPECT_FALSE(canPost());
        change();
        platform.advance(1);
        EXPECT_TRUE(canPost());
        EXPECT_TRUE(editor->articleHaveChanged());
        settleRequests();
    }
    editor->setArticleEditStyle(0);
    EXPECT_FALSE(editor->articleHaveChanged());
}

TEST_F(ArticleEditTest, TheScreenIsFilledWithTheRecordAndWithWhatTheHostGave) {
    openExisting(articleWith(3, 2));
    EXPECT_EQ(editor->titleField()->text() + editor->textTextField()->text() + order(), "A titleSome textABC");
    EXPECT_EQ(videos().videosArray()->size(), 2u);
    EXPECT_EQ(table().rectForRowAtIndexPath({1, 0}).height(), 5 * 10 + 4 * 86);
    EXPECT_FALSE(canPost());
    auto screen = make<UIArticleEditViewController>(UIArticleEditViewController::Images{picture(), picture()},
                                                    "pre title", "pre text", false);
    screen->setArticleDictionary(record(R"({"title":"its title","text":"","images":[{},{},{}]})"));
    push(screen);
    EXPECT_TRUE(canPost());
    EXPECT_EQ(editor->titleField()->text() + editor->textTextField()->text() + order(), "its titlenewnew");
    EXPECT_TRUE(server->paths.empty());
}

TEST_F(ArticleEditTest, TheTextBoxGrowsWithItsTextWithinBoundsAndItsRowFollows) {
    openNew();
    tap(editor->textTextField());
    for (const int lines : {1, 5, 8, 100, 3}) {
        std::string text = "x";
        for (int i = 1; i < lines; ++i) text += "\nx";
        ASSERT_TRUE(platform.typeOver(text));
        platform.advance(1);
        const CGFloat content = editor->textTextField()->contentSize().height;
        EXPECT_GT(content, lines * 14.0);
        const CGRect box = editor->textTextField()->frame();
        EXPECT_EQ(box.height(), std::clamp(content, 66.0, 200.0)) << lines;
        EXPECT_EQ(box.minY(), 5);
        EXPECT_NEAR(table().rectForRowAtIndexPath({0, 1}).height(), box.height() + 10, 1.0 / 64) << lines;
    }
}

TEST_F(ArticleEditTest, ReturnInTheTitleMovesTheFocusToTheText) {
    openNew();
    tap(editor->titleField());
    EXPECT_TRUE(editor->titleField()->isFirstResponder());
    platform.pressReturn();
    platform.settle();
    EXPECT_TRUE(editor->textTextField()->isFirstResponder());
    EXPECT_EQ(editor->titleField()->text(), "");
}

TEST_F(ArticleEditTest, ScrollingTakesTheFocusAndEndsReordering) {
    openExisting(articleWith(6, 1));
    for (const auto& view : {std::static_pointer_cast<UIView>(editor->titleField()),
                             std::static_pointer_cast<UIView>(editor->textTextField())}) {
        table().setContentOffset({0, 0});
        platform.settle();
        view->becomeFirstResponder();
        images().start_drag();
        platform.settle();
        dragTable();
        EXPECT_FALSE(view->isFirstResponder());
        EXPECT_FALSE(images().isItemShake());
    }
    images().start_drag();
    editor->titleField()->becomeFirstResponder();
    platform.scroll({180, 400}, -40);
    platform.advance(1);
    EXPECT_FALSE(images().isItemShake()) << "by wheel too";
    EXPECT_TRUE(editor->titleField()->isFirstResponder());
    videos().start_drag();
    platform.settle();
    EXPECT_TRUE(editor->cancelOperation()) << "Escape ends reordering first";
    EXPECT_FALSE(videos().isItemShake());
    EXPECT_FALSE(editor->cancelOperation());
}

TEST_F(ArticleEditTest, CancelClosesHoweverTheEditorWasShownAndItCanBeShownAgain) {
    openExisting(articleWith(2));
    editor->navigationItem().leftBarButtonItem()->press();
    platform.advance(1);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(server->paths.empty());
    navigation->pushViewController(editor, false);
    platform.advance(1);
    remove(images(), 0);
    EXPECT_EQ(order(), "B");
    EXPECT_TRUE(canPost()) << "the screen hears its strips again";

    auto screen = make<UIArticleEditViewController>();
    navigation->presentViewController(make<UINavigationController>(screen), false);
    platform.advance(1);
    screen->cancel();
    platform.advance(1);
    EXPECT_EQ(navigation->presentedViewController(), nullptr);
}

TEST_F(ArticleEditTest, ClosingReleasesTheScreenItsStripsAndTheirTiles) {
    for (const char* const way : {"back", "to the root", "the window goes"}) {
        SCOPED_TRACE(way);
        openExisting(articleWith(30, 2));
        const std::weak_ptr<UIViewController> screen = editor;
        const std::weak_ptr<UIView> strip = editor->imagesCell(), tile = image(0);
        if (*way == 'b') {
            navigation->popViewControllerAnimated(true);
        } else if (way == std::string("to the root")) {
            navigation->pushViewController(make<UIViewController>(), false);
            platform.settle();
            navigation->popToRootViewControllerAnimated(false);
        } else {
            pickFrom(images());
            images().start_drag();
            platform.settle();
            platform.window().setRootViewController(nullptr);
        }
        navigation = nullptr;
        settleRequests();
        editor = nullptr;
        platform.window().setRootViewController(nullptr);
        platform.advance(1);
        EXPECT_TRUE(screen.expired());
        EXPECT_TRUE(strip.expired());
        EXPECT_TRUE(tile.expired());
    }
}

}  // namespace
}  // namespace ostrel
