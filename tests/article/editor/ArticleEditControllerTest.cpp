#include "tests/article/editor/ArticleEditTest.h"

#include <algorithm>
#include <functional>

namespace ostrel {
namespace {

TEST_F(ArticleEditTest, RowsHaveTheirIdentifiersAndHeights) {
    showNew();
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
    const auto remove = [this] {
        table().scrollToRowAtIndexPath({1, 0}, false);
        platform.settle();
        tap(image(0)->removeButton());
    };
    const std::vector<std::pair<const char*, std::function<void()>>> changes = {
        {"a key in the title",
         [this] {
             tap(editor->titleField());
             EXPECT_TRUE(platform.type("x"));
         }},
        {"a key in the text",
         [this] {
             editor->textTextField()->becomeFirstResponder();
             EXPECT_TRUE(platform.type("x"));
         }},
        {"a caption", [this] { typeCaption(image(0), "new"); }},
        {"an order",
         [this] {
             images().collectionViewMoveItemAtIndexPathToIndexPath(*images().collectionView(), {0, 0},
                                                                   {0, 1});
         }},
        {"a removal", remove},
        {"a removed video", [this] { video(0)->remove(); }},
        {"an addition", [this] { finishPicking(pickFrom(images()), "public.image", picture()); }},
        {"any other text view's text",
         [this] {
             NSNotificationCenter::defaultCenter().postNotification(UITextViewTextDidChangeNotification);
         }},
    };
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        showExisting(articleWith(2, 1));
        table().scrollToRowAtIndexPath({2, 0}, false);
        platform.settle();
        EXPECT_FALSE(canPost());
        change();
        platform.advance(1);
        EXPECT_TRUE(canPost());
        EXPECT_TRUE(editor->articleHaveChanged());
        settleRequests();
    }
}

TEST_F(ArticleEditTest, ATextThatIsAsItWasAgainStillCountsAsChanged) {
    showNew();
    tap(editor->titleField());
    EXPECT_TRUE(platform.type("x"));
    EXPECT_TRUE(platform.typeOver(""));
    EXPECT_EQ(editor->titleField()->text(), "");
    EXPECT_TRUE(canPost());
    editor->setArticleEditStyle(0);
    EXPECT_FALSE(editor->articleHaveChanged());
}

TEST_F(ArticleEditTest, AnExistingArticleFillsTheScreen) {
    showExisting(articleWith(3, 2));
    EXPECT_EQ(editor->titleField()->text(), "A title");
    EXPECT_EQ(editor->textTextField()->text(), "Some text");
    EXPECT_EQ(order(), "ABC");
    EXPECT_EQ(videos().videosArray()->size(), 2u);
    // The article's own height is asked for when its strip exists.
    EXPECT_EQ(table().rectForRowAtIndexPath({1, 0}).height(), 5 * 10 + 4 * 86);
    EXPECT_FALSE(canPost());
}

TEST_F(ArticleEditTest, APrefilledArticleCanBePostedAtOnceAndYieldsToARecordsTexts) {
    auto screen = make<UIArticleEditViewController>(UIArticleEditViewController::Images{picture(), picture()},
                                                    "pre title", "pre text", false);
    screen->setArticleDictionary(record(R"({"title":"its title","text":"","images":[{},{},{}]})"));
    push(screen);
    EXPECT_TRUE(canPost());
    EXPECT_EQ(editor->titleField()->text(), "its title");
    EXPECT_EQ(editor->textTextField()->text(), "");
    EXPECT_EQ(order(), "newnew");
    EXPECT_TRUE(server->paths.empty());
}

TEST_F(ArticleEditTest, AnEditorMadeToSendItselfSavesAtEveryAppearance) {
    push(make<UIArticleEditViewController>(UIArticleEditViewController::Images{}, "pre title", "pre text",
                                           true));
    ASSERT_EQ(server->paths, Lines{"/article/update_article_json.html"});
    EXPECT_EQ(server->calls.front().fields.at("title"), "pre title");
    EXPECT_FALSE(canPost());
    navigation->pushViewController(make<UIViewController>(), false);
    platform.settle();
    navigation->popViewControllerAnimated(false);
    platform.settle();
    EXPECT_EQ(server->paths.size(), 2u);
}

TEST_F(ArticleEditTest, TheTextBoxGrowsWithItsTextWithinBoundsAndItsRowFollows) {
    showNew();
    tap(editor->textTextField());
    platform.typeOver("x");
    const CGFloat one = editor->textTextField()->contentSize().height;
    platform.typeOver("x\nx");
    const CGFloat line = editor->textTextField()->contentSize().height - one;
    ASSERT_GT(line, 0);
    for (const int lines : {1, 2, 5, 8, 100, 3}) {
        std::string text = "x";
        for (int i = 1; i < lines; ++i) text += "\nx";
        ASSERT_TRUE(platform.typeOver(text));
        platform.advance(1);
        const CGFloat content = editor->textTextField()->contentSize().height;
        // Lines are not whole points high, heights are.
        EXPECT_NEAR(content, one + (lines - 1) * line, 1 + lines * 0.5);
        const CGRect box = editor->textTextField()->frame();
        EXPECT_EQ(box.height(), std::clamp(content, 66.0, 200.0)) << lines;
        EXPECT_EQ(box.minY(), 5);
        EXPECT_NEAR(table().rectForRowAtIndexPath({0, 1}).height(), box.height() + 10, 1.0 / 64) << lines;
    }
}

TEST_F(ArticleEditTest, ReturnInTheTitleGoesOnToTheText) {
    showNew();
    tap(editor->titleField());
    EXPECT_TRUE(editor->titleField()->isFirstResponder());
    platform.pressReturn();
    platform.settle();
    EXPECT_TRUE(editor->textTextField()->isFirstResponder());
    EXPECT_EQ(editor->titleField()->text(), "");
}

TEST_F(ArticleEditTest, ScrollingTakesTheFocusAndEndsReordering) {
    showExisting(articleWith(6, 1));
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

TEST_F(ArticleEditTest, CancelClosesHoweverTheEditorWasShown) {
    showNew();
    editor->navigationItem().leftBarButtonItem()->press();
    platform.advance(1);
    EXPECT_NE(navigation->topViewController(), editor);
    EXPECT_TRUE(server->paths.empty());

    auto screen = make<UIArticleEditViewController>();
    navigation->presentViewController(make<UINavigationController>(screen), false);
    platform.advance(1);
    screen->cancel();
    platform.advance(1);
    EXPECT_EQ(navigation->presentedViewController(), nullptr);
}

TEST_F(ArticleEditTest, ClosingLetsGoOfEverything) {
    const std::vector<std::pair<const char*, std::function<void()>>> ways = {
        {"back", [this] { navigation->popViewControllerAnimated(true); }},
        {"to the root from above it",
         [this] {
             navigation->pushViewController(make<UIViewController>(), false);
             platform.settle();
             navigation->popToRootViewControllerAnimated(false);
         }},
        {"the window under a picker",
         [this] {
             pickFrom(images());
             platform.window().setRootViewController(nullptr);
         }},
        {"with tiles that shake",
         [this] {
             images().start_drag();
             platform.settle();
             navigation->popViewControllerAnimated(false);
         }},
    };
    for (const auto& [name, close] : ways) {
        SCOPED_TRACE(name);
        showExisting(articleWith(30, 2));
        const std::weak_ptr<UIViewController> screen = editor;
        const std::weak_ptr<UIView> strip = editor->imagesCell(), tile = image(0);
        const auto raw = editor.get();
        close();
        navigation = nullptr;
        platform.advance(1);
        settleRequests();
        EXPECT_EQ(editor.get(), raw);
        editor = nullptr;
        platform.window().setRootViewController(nullptr);
        platform.advance(1);
        EXPECT_TRUE(screen.expired());
        EXPECT_TRUE(strip.expired());
        EXPECT_TRUE(tile.expired());
    }
}

TEST_F(ArticleEditTest, AnEditorShownOnceMoreHearsItsStripsAgain) {
    showExisting(articleWith(2));
    navigation->popViewControllerAnimated(false);
    platform.advance(1);
    navigation->pushViewController(editor, false);
    platform.advance(1);
    ASSERT_NE(image(0), nullptr);
    image(0)->remove();
    platform.advance(1);
    EXPECT_EQ(order(), "B");
    EXPECT_TRUE(canPost());
}

}  // namespace
}  // namespace ostrel
