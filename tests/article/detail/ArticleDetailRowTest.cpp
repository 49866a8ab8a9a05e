#include "platform/uikit/view/UIDevice.h"
#include "tests/article/detail/ArticleDetailTest.h"

namespace ostrel {
namespace {

using ImageRow = UIArticleViewImageTableViewCell;

CGFloat measured(const std::string& text, const UIFont& font, CGFloat width) {
    return text.empty() ? 0 : TextMeasurer::shared().measure(text, font, width).size.height;
}

class ArticleDetailRowTest : public ArticleDetailTest {
protected:
    template <class Row>
    static std::shared_ptr<Row> makeRow() {
        return make<Row>(UITableViewCellStyle::defaultStyle, "row");
    }
};

TEST_F(ArticleDetailRowTest, TheTitleRowCentresItsLabelAndPressesRunTheHandlerAtEveryStep) {
    const auto row = makeRow<UIArticleViewTitleTableViewCell>();
    EXPECT_EQ(row->selectionStyle(), UITableViewCellSelectionStyle::none);
    EXPECT_EQ(row->titleLabel()->frame(), CGRect(0, 0, row->frame().width(), 30));
    EXPECT_EQ(row->titleLabel()->font(), UIFont::fontWithName("PingFangSC-Regular", 24));
    EXPECT_EQ(row->titleLabel()->textAlignment(), NSTextAlignment::center);
    row->setTitle("A walk");
    EXPECT_EQ(row->titleLabel()->text(), "A walk");

    auto root = make<UIViewController>();
    root->view()->addSubview(row);
    row->setFrame({0, 100, 375, 30});
    show(root);
    EXPECT_EQ(row->titleLabel()->frame(), CGRect(0, 0, 375, 30));
    platform.press({100, 110}, 1);
    int runs = 0;
    row->setLongPressHandler([&] { ++runs; });
    const auto runsOf = [&](CGPoint to, double seconds, UITouchPhase end, CGPoint last) {
        runs = 0;
        platform.touch(UITouchPhase::began, {100, 110});
        if (to != CGPoint{100, 110}) platform.touch(UITouchPhase::moved, to);
        platform.advance(seconds);
        if (last != to) platform.touch(UITouchPhase::moved, last);
        platform.touch(end, last);
        return runs;
    };
    const CGPoint down{100, 110}, near{104, 110}, far{111, 110};
    EXPECT_EQ(runsOf(down, 0.1, UITouchPhase::ended, down), 0) << "a tap";
    EXPECT_EQ(runsOf(down, 0.6, UITouchPhase::ended, down), 2) << "began and ended";
    EXPECT_EQ(runsOf(far, 0.6, UITouchPhase::ended, far), 0) << "moved too far before it began";
    EXPECT_EQ(runsOf(down, 0.6, UITouchPhase::cancelled, near), 3) << "began, changed and cancelled";
}

TEST_F(ArticleDetailRowTest, TheTextRowIsAsHighAsItsText) {
    const auto row = makeRow<UIArticleViewTextTableViewCell>();
    const UIFont font = UIFont::fontWithName("PingFangSC-Light", 18);
    EXPECT_EQ(row->selectionStyle(), UITableViewCellSelectionStyle::none);
    EXPECT_EQ(row->textTextView()->frame(), CGRect(0, 0, row->frame().width(), 20));
    EXPECT_EQ(row->textTextView()->font(), font);
    EXPECT_EQ(row->textTextView()->contentInset(), (UIEdgeInsets{-6, 0, 0, 0}));
    EXPECT_FALSE(row->textTextView()->isEditable());
    EXPECT_EQ(row->constrainedHeight(), 25);

    row->setFrame({0, 0, 375, 44});
    CGFloat width = 375;
    for (const std::string& text :
         {std::string(), std::string("abc"), std::string("two\nlines"), std::string(3000, 'w')}) {
        row->setText(text);
        EXPECT_EQ(row->text(), text);
        EXPECT_EQ(row->textTextView()->text(), text);
        const CGFloat height = measured(text, font, width);
        EXPECT_EQ(row->textTextView()->frame(), CGRect(5, 2, 365, height)) << text.size();
        EXPECT_EQ(row->constrainedHeight(), height + 5);
        width = 365;
    }
    const CGFloat line = TextMeasurer::shared().lineHeight(font);
    EXPECT_EQ(UIArticleViewTextTableViewCell::heightForText("abc"), line + 8);
    EXPECT_EQ(UIArticleViewTextTableViewCell::heightForText("two\nlines"), line + 8) << "on one line";
}

TEST_F(ArticleDetailRowTest, ThePlatformShowsTheWholeTextOfAnArticle) {
    std::string text;
    for (int i = 0; i < 60; ++i) text += "word ";
    showArticle(R"({"id":42,"text":")" + text + "\"}");
    const auto shown = row<UIArticleViewTextTableViewCell>(1);
    const auto* const node = platform.backend().node(shown->textTextView()->tag());
    ASSERT_NE(node, nullptr);
    const auto* const content = std::get_if<TextContent>(&node->state->content);
    ASSERT_NE(content, nullptr);
    EXPECT_EQ(content->insets, UIEdgeInsets{}) << "what moves the text up cancels out";
    EXPECT_NE(shown->textTextView()->selection(), nullptr) << "it can be selected";
    EXPECT_EQ(shown->textTextView()->frame().height(),
              measured(text, content->font, shown->textTextView()->frame().width()))
        << "measured at the width it is laid out in";
}

TEST_F(ArticleDetailRowTest, AnImageTakesItsThreeWidthsFromThreePlaces) {
    platform.window().setSize({500, 700});
    platform.settle();
    UIScreen::mainScreen().setBounds({0, 0, 200, 700});
    const auto row = makeRow<ImageRow>();
    const CGRect first = row->myImageView()->frame();
    EXPECT_EQ(first, CGRect(0, 0, row->frame().width() - 10, 39));
    row->setFrame({0, 0, 400, 44});
    for (const char* image :
         {"{}", R"({"image_width":100,"image_height":"x"})", R"({"image_width":1e300,"image_height":1e300})"}) {
        row->setImageDictionary(record(image));
        EXPECT_EQ(row->myImageView()->frame(), first) << "without a size it keeps its frame: " << image;
    }
    const std::string caption = "a caption that is longer than the screen is wide";
    const CGFloat height = measured(caption, UIFont::fontWithName("PingFangSC-Light", 12), 190);
    for (const char* size : {R"("image_width":2,"image_height":1)", R"("image_width":"2","image_height":"1")"}) {
        row->setImageDictionary(record("{" + std::string(size) + R"(,"text":")" + caption + "\"}"));
        EXPECT_EQ(row->myImageView()->frame(), CGRect(0, 0, 490, 245)) << "the window's width";
        EXPECT_EQ(row->myTextView()->frame(), CGRect(0, 245, 390, height))
            << "measured by the screen, laid out by the row";
        EXPECT_EQ(row->baseView()->frame(), CGRect(5, 5, 390, 245 + height));
        EXPECT_EQ(row->constrainedHeight(), 245 + height + 17);
    }
    row->setImageDictionary(record(R"({"image_width":0,"text":""})"));
    EXPECT_EQ(row->myImageView()->frame(), CGRect(0, 0, 490, 245));
    EXPECT_EQ(row->myTextView()->text(), caption) << "of the record before, at height 0";
    EXPECT_EQ(row->myTextView()->frame().height(), 0);
    EXPECT_EQ(row->myImageView()->accessibility().label, "");
    UIScreen::mainScreen().setBounds({0, 0, 375, 667});
}

TEST_F(ArticleDetailRowTest, TheFullImageIsNeverCoveredByItsThumbnail) {
    const auto row = makeRow<ImageRow>();
    const auto placeholder = row->myImageView()->image();
    ASSERT_NE(placeholder, nullptr);
    const Data small = picture("loading"), full = picture("anonymousAvatar");
    const Dictionary image = record(R"({"image":"http://h/full","thumbnail":"http://h/small","text":"the hill"})");
    row->setImageDictionary(image);
    EXPECT_EQ(row->myImageView()->accessibility().role, AccessibilityRole::image);
    EXPECT_EQ(row->myImageView()->accessibility().label, "the hill");
    EXPECT_EQ(server->mediaUrls(), (Lines{"http://h/small", "http://h/full"})) << "in this order";
    EXPECT_EQ(row->myImageView()->image(), placeholder);
    server->answerMedia("http://h/small", small);
    EXPECT_EQ(shownBytes(*row->myImageView()), small.view());
    EXPECT_FALSE(row->fullImageHasCompleted());
    server->answerMedia("http://h/full", full);
    EXPECT_EQ(shownBytes(*row->myImageView()), full.view());
    EXPECT_TRUE(row->fullImageHasCompleted());

    row->setImageDictionary(image);
    EXPECT_EQ(server->mediaUrls().size(), 2u) << "every record asks anew";
    EXPECT_FALSE(row->fullImageHasCompleted());
    server->answerMedia("http://h/full", Data());
    EXPECT_TRUE(row->fullImageHasCompleted()) << "not successfully, but answered";
    EXPECT_EQ(shownBytes(*row->myImageView()), full.view()) << "left as it is";
    server->answerMedia("http://h/small", small);
    EXPECT_EQ(shownBytes(*row->myImageView()), full.view()) << "too late";

    row->setImageDictionary(image);
    server->answerMedia("http://h/small", Data::copy("<html>"));
    EXPECT_EQ(row->myImageView()->image(), nullptr) << "what is no image gives an empty one";
    server->answerMedia("http://h/full", full);

    row->setImageDictionary(image);
    row->setImageDictionary(record(R"({"image":"http://h/2","thumbnail":"http://h/2s"})"));
    EXPECT_EQ(server->mediaUrls().size(), 4u);
    server->answerMedia("http://h/2", full);
    server->answerMedia("http://h/full", small);
    EXPECT_EQ(shownBytes(*row->myImageView()), small.view()) << "an earlier record's answer still shows";
}

TEST_F(ArticleDetailRowTest, CachedImagesShowInTheMainThreadsNextTurnUnlessTheirRowIsGone) {
    auto row = makeRow<ImageRow>();
    const Data small = picture("loading"), full = picture("anonymousAvatar");
    const Dictionary image = record(R"({"image":"http://h/full","thumbnail":"http://h/small"})");
    server->cachedMedia = {{"http://h/small", small}, {"http://h/full", full}};
    const auto placeholder = row->myImageView()->image();
    row->setImageDictionary(image);
    EXPECT_EQ(server->mediaUrls().size(), 2u);
    EXPECT_EQ(row->myImageView()->image(), placeholder);
    platform.settle();
    const auto shown = row->myImageView()->image();
    EXPECT_EQ(shownBytes(*row->myImageView()), full.view());
    server->answerMedia("http://h/full", full);
    EXPECT_EQ(row->myImageView()->image(), shown) << "the same bytes are the same picture, decoded once";

    row->setImageDictionary(image);
    EXPECT_EQ(server->mediaUrls().size(), 3u);
    const std::weak_ptr<UIView> weak = row;
    row.reset();
    EXPECT_TRUE(weak.expired()) << "the threads of the requests hold no row";
    platform.settle();
    server->answerMedia("http://h/full", full);
    server->answerMedia("http://h/small", small);
}

}  // namespace
}  // namespace ostrel
