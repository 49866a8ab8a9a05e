#include "tests/article/editor/ArticleEditTest.h"

namespace ostrel {
namespace {

std::shared_ptr<NSArticleImageObject> existingImage(const char* json) {
    auto item = std::make_shared<NSArticleImageObject>();
    item->setImageDictionary(record(json));
    return item;
}

/// Tiles on their own, without a strip.
class MediaTileTest : public ArticleEditTest {
protected:
    template <class Tile>
    std::shared_ptr<Tile> shown(CGRect frame = {0, 0, 348, 86}) {
        auto tile = make<Tile>(frame);
        auto screen = make<UIViewController>();
        show(screen);
        screen->view()->addSubview(tile);
        platform.settle();
        return tile;
    }
    static std::string_view bytes(const MediaCollectionViewCell& tile) {
        const auto& image = tile.img()->image();
        return image ? image->representation(1).data.view() : std::string_view();
    }
    const Data one = pictureData("anonymousAvatar"), other = pictureData("video_play_image");
};

TEST_F(MediaTileTest, PartsFollowTheStyleAndTheWidthOfTheTile) {
    auto tile = shown<VideoCollectionViewCell>();
    for (const auto& [style, width] : {std::pair{2, 348.0}, {1, 348.0}, {0, 348.0}, {0, 448.0}}) {
        SCOPED_TRACE(testing::Message() << style << ", " << width);
        tile->setArticleEditStyle(style);
        tile->setFrame({0, 0, width, 86});
        const CGRect picture = tile->img()->frame();
        EXPECT_EQ(picture, style == 0 ? CGRect(0, 0, 117, 86) : CGRect(0, 0, 167, 167));
        EXPECT_EQ(tile->actView()->center(), tile->img()->center());
        EXPECT_EQ(tile->myTextView()->frame().width(), style == 0 ? width - 121 : 0);
        EXPECT_EQ(tile->myTextPlaceholder()->frame().width(), style == 0 ? width - 130 : 0);
        EXPECT_EQ(tile->removeButton()->frame(), CGRect(width - 30, 0, 30, 30));
        EXPECT_EQ(tile->durationLabel()->frame(), CGRect(0, picture.height() - 14, picture.width() - 8, 11));
    }
}

TEST_F(MediaTileTest, TheSpinnerTurnsUntilTheThumbnailCameAndALateThumbnailStillShows) {
    auto tile = shown<ImageCollectionViewCell>();
    const std::string loading(pictureData().view());
    tile->setImageObject(existingImage(R"({"thumbnail":"http://h/slow"})"));
    EXPECT_TRUE(tile->actView()->isAnimating());
    EXPECT_EQ(bytes(*tile), loading);
    server->mediaUrls();
    server->answerMedia("http://h/slow", {});
    EXPECT_FALSE(tile->actView()->isAnimating());
    EXPECT_EQ(bytes(*tile), loading) << "a failure leaves the picture";

    server->cachedMedia["http://h/kept"] = one;
    tile->setImageObject(existingImage(R"({"thumbnail":"http://h/kept"})"));
    EXPECT_EQ(bytes(*tile), one.view());
    EXPECT_TRUE(tile->actView()->isAnimating()) << "until the request is answered";
    server->answerMedia("http://h/kept", one);
    EXPECT_FALSE(tile->actView()->isAnimating());

    // The tile is used for other items: it no longer shows the first picture, and a late thumbnail still shows.
    tile->setImageObject(existingImage(R"({"thumbnail":"http://h/late"})"));
    EXPECT_EQ(bytes(*tile), loading);
    auto fresh = std::make_shared<NSArticleImageObject>();
    fresh->setImage(UIImage::imageWithData(one));
    tile->setImageObject(fresh);
    EXPECT_FALSE(tile->actView()->isAnimating());
    EXPECT_EQ(bytes(*tile), one.view());
    server->answerMedia("http://h/late", other);
    EXPECT_EQ(bytes(*tile), other.view());
    tile->setImageObject(existingImage(R"({"thumbnail":"http://h/none"})"));
    server->mediaUrls();
    server->answerMedia("http://h/none", Data::copy("<html>404"));
    EXPECT_EQ(tile->img()->image(), nullptr) << "bytes that are no picture";
    EXPECT_FALSE(tile->actView()->isAnimating());
    settleRequests();
}

TEST_F(MediaTileTest, ANewVideoShowsItsLengthAndAnExistingOneLeavesTheLabel) {
    auto tile = shown<VideoCollectionViewCell>();
    for (const auto& [seconds, text] : {std::pair{0.0f, "0:00"}, {125.0f, "2:05"}}) {
        auto item = std::make_shared<NSArticleVideoObject>();
        item->setDuration(seconds);
        tile->setVideoObject(item);
        EXPECT_EQ(tile->durationLabel()->text(), text);
        EXPECT_FALSE(tile->actView()->isAnimating());
    }
    server->cachedMedia["http://h/kept"] = one;
    tile->actView()->startAnimating();
    auto existing = std::make_shared<NSArticleVideoObject>();
    existing->setVideoDictionary(record(R"({"thumbnail":"http://h/kept","duration":9})"));
    tile->setVideoObject(existing);
    EXPECT_EQ(tile->durationLabel()->text(), "2:05");
    EXPECT_FALSE(tile->actView()->isAnimating()) << "the spinner of a video stops for cached data";
    settleRequests();
}

TEST_F(ArticleEditTest, ACaptionGoesToItsItemAndARedisplayShowsTheServersAgain) {
    openExisting(articleWith(2));
    const auto item = images().imagesArray()->front();
    EXPECT_EQ(image(0)->myTextView()->text(), "A");
    EXPECT_EQ(image(0)->myTextPlaceholder()->alpha(), 0);
    EXPECT_EQ(item->text(), std::nullopt);
    typeCaption(image(0), "mine");
    EXPECT_EQ(item->text(), "mine");
    EXPECT_TRUE(item->textChanged());
    typeCaption(image(0), "");
    EXPECT_EQ(item->text(), "");
    EXPECT_EQ(image(0)->myTextPlaceholder()->alpha(), 1);
    typeCaption(image(0), "mine again");
    image(0)->myTextView()->resignFirstResponder();
    images().collectionView()->reloadData();
    platform.settle();
    EXPECT_EQ(image(0)->myTextView()->text(), "A");
    EXPECT_EQ(item->text(), "mine again");
    EXPECT_FALSE(images().imagesArray()->back()->textChanged());
}

TEST_F(MediaTileTest, ACaptionUnderEditStaysWithTheItemItWasTypedFor) {
    auto tile = shown<ImageCollectionViewCell>();
    tile->setArticleEditStyle(0);
    const auto first = existingImage(R"({"text":"first"})"), second = existingImage(R"({"text":"second"})");
    tile->setImageObject(first);
    tile->myTextView()->becomeFirstResponder();
    ASSERT_TRUE(platform.typeOver("typed"));
    tile->setImageObject(second);
    EXPECT_FALSE(tile->myTextView()->isFirstResponder());
    EXPECT_EQ(first->text(), "typed");
    EXPECT_EQ(second->text(), std::nullopt);
    EXPECT_FALSE(second->textChanged());
    settleRequests();
}

TEST_F(ArticleEditTest, ATileHasANameForScreenReaders) {
    openExisting(articleWith(3));
    const auto label = [&](std::int64_t index) { return image(index)->accessibility().label; };
    EXPECT_EQ(label(1), "Image 2 of 3, caption B");
    typeCaption(image(1), "");
    EXPECT_EQ(label(1), "Image 2 of 3");
    typeCaption(image(1), std::string(100'000, 'x'));
    EXPECT_LT(label(1).size(), 300u);
    image(0)->remove();
    platform.advance(1);
    EXPECT_EQ(label(1), "Image 2 of 2, caption C");
    finishPicking(pickFrom(images()), "public.image", picture());
    platform.advance(1);
    EXPECT_EQ(label(1), "Image 2 of 3, caption C");
    EXPECT_EQ(label(2), "Image 3 of 3");
}

}  // namespace
}  // namespace ostrel
