#include "article/records/NSStringForDate.h"
#include "tests/article/ArticleTest.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <utility>

namespace ostrel {
namespace {

class ArticleTextsTest : public ArticleTest {};

TEST_F(ArticleTextsTest, DatesReadAsTheTimeThatPassed) {
    loadOstrelArticleBundle();
    const NSDate now = NSDate::now();
    ASSERT_EQ(now, NSDate::fromISO8601("2027-01-15T08:00:00Z"));
    const std::pair<double, std::string> cases[] = {
        {0, "just now"},
        {59.9, "just now"},
        {-1, "just now"},
        {-1e12, "just now"},
        {60, "1 min ago"},
        {119.9, "1 min ago"},
        {120, "2 min ago"},
        {3599, "59 min ago"},
        {3600, "1/15/27, 7:00 AM"},
        {86400, "1/14/27, 8:00 AM"},
    };
    for (const auto& [ago, text] : cases) EXPECT_EQ(NSStringForDate::date({now.secondsSince1970 - ago}), text) << ago;
    platform.advance(60);
    EXPECT_EQ(NSStringForDate::date(now), "1 min ago");
    platform.advance(3540);
    EXPECT_EQ(NSStringForDate::date(now), "1/15/27, 8:00 AM");

    OstrelArticleBundle = nullptr;
    EXPECT_EQ(NSStringForDate::date(NSDate::now()), "");
    EXPECT_EQ(NSStringForDate::date({NSDate::now().secondsSince1970 - 90}), "");
    EXPECT_EQ(NSStringForDate::date(now), "1/15/27, 8:00 AM") << "needs no looked-up text";
}

TEST_F(ArticleTextsTest, ABundleThatIsMissingIsLoggedAtEachAttemptAndLeavesTextsEmpty) {
    const TemporaryFolder empty;
    useBundles(empty.path());
    loadOstrelArticleBundle();
    loadOstrelArticleBundle();
    const std::string warning = "Warning: can NOT FOUND \"OstrelArticle.bundle\" in this target.";
    EXPECT_EQ(logged(), (Lines{warning, warning}));
    EXPECT_EQ(OstrelArticleBundle, nullptr);
    EXPECT_EQ(articleText("Edit"), "");
    EXPECT_EQ(imageInBundle(openApplicationArticleBundle(), "anonymousAvatar"), nullptr);
    EXPECT_EQ(imageInBundle(openFrameworkArticleBundle(), "like"), nullptr);

    std::filesystem::create_directory(std::filesystem::path(empty.path()) / "OstrelArticle.bundle");
    loadOstrelArticleBundle();
    EXPECT_EQ(articleText("Edit"), "Edit") << "a bundle without the table yields the keys";
    const auto loaded = OstrelArticleBundle;
    loadOstrelArticleBundle();
    EXPECT_EQ(OstrelArticleBundle, loaded) << "it is loaded once";
    EXPECT_EQ(logged(), Lines{});
}

TEST_F(ArticleTextsTest, EveryTextIsThereInBothLanguages) {
    const std::pair<const char*, const char*> texts[] = {
        {"Load more articles", "加载更多文章"},
        {"Loading...", "正在加载…"},
        {"Write an Article", "写文章"},
        {"Share your own articles, media and more!", "分享你的文章、照片、视频与更多精彩！"},
        {"Edit", "编辑"},
        {"Delete", "删除"},
        {"just now", "刚刚"},
        {"%ld min ago", "%ld 分钟前"},
        {"Say something ... ", "说点什么… "},
        {"POST", "发布"},
        {"Article title", "文章标题"},
        {"Comments:", "评论："},
    };
    platform.locale().languages = {"en-GB"};
    loadOstrelArticleBundle();
    for (const auto& [key, chinese] : texts) EXPECT_EQ(articleText(key), key);
    OstrelArticleBundle = nullptr;
    platform.locale().languages = {"zh-Hans-CN", "en"};
    loadOstrelArticleBundle();
    for (const auto& [key, chinese] : texts) EXPECT_EQ(articleText(key), chinese);
}

TEST_F(ArticleTextsTest, EveryPictureIsThereForEachScale) {
    loadOstrelArticleBundle();
    const auto application = openApplicationArticleBundle(), framework = openFrameworkArticleBundle();
    const auto imageRow = NSBundle::mainBundle()->bundleForResource("UIArticleViewImageTableViewCell");
    const std::pair<std::shared_ptr<NSBundle>, const char*> pictures[] = {
        {application, "anonymousAvatar"},
        {framework, "like"},
        {framework, "comment"},
        {framework, "share"},
        {application, "loading"},
        {framework, "close"},
        {framework, "add_image"},
        {framework, "add_video"},
        {OstrelArticleBundle, "video_play_image"},
        {imageRow, "default"},
    };
    for (const auto& [bundle, name] : pictures) {
        const auto image = imageInBundle(bundle, name);
        ASSERT_NE(image, nullptr) << name;
        const ImageHeader& header = image->header();
        EXPECT_EQ(image->size(), (CGSize{double(header.pixelWidth), double(header.pixelHeight)})) << name;
        for (const int scale : {1, 2, 3}) {
            const auto& form = image->representation(scale);
            const auto pixels = ImageHeader::read(form.data);
            EXPECT_EQ(form.scale, scale) << name;
            ASSERT_TRUE(pixels) << name;
            EXPECT_EQ(pixels->pixelWidth, image->size().width * scale) << name;
        }
    }
    EXPECT_EQ(imageInBundle(application, "../Article.bundle/like"), nullptr);
}

}  // namespace
}  // namespace ostrel
