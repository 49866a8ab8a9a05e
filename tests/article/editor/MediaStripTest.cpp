#include "tests/article/editor/ArticleEditTest.h"

#include <functional>

namespace ostrel {
namespace {

using Status = AVAssetExportSessionStatus;

/// Hears what a strip tells.
class Listener final : public UIArticleEditImagesTableViewCellDelegate,
                       public UIArticleEditVideosTableViewCellDelegate {
public:
    void textAndValueChangedFromArticleEditImagesTableViewCell(UIArticleEditImagesTableViewCell&) override {
        heard += "value ";
    }
    void imageNumberChanged(UIArticleEditImagesTableViewCell&) override { heard += "number "; }
    void textAndValueChangedFromArticleEditVideosTableViewCell(UIArticleEditVideosTableViewCell&) override {
        heard += "value ";
    }
    void videoNumberChanged(UIArticleEditVideosTableViewCell&) override { heard += "number "; }
    std::string take() { return std::exchange(heard, {}); }
    std::string heard;
};

class MediaStripTest : public ArticleEditTest {
protected:
    void listen() {
        images().setDelegate(listener);
        videos().setDelegate(listener);
    }
    /// The middle of a tile in the window.
    CGPoint middle(UIArticleEditMediaTableViewCell& strip, std::int64_t index) {
        return platform.middleOf(*tileAt(strip, index));
    }
    /// A press at `from`, carried to `to`, and let go.
    void drag(CGPoint from, CGPoint to) {
        platform.touch(UITouchPhase::began, from);
        platform.advance(0.1);
        for (int i = 1; i <= 10; ++i) {
            platform.touch(UITouchPhase::moved,
                           {from.x + (to.x - from.x) * i / 10, from.y + (to.y - from.y) * i / 10});
            platform.advance(0.05);
        }
        platform.touch(UITouchPhase::ended, to);
        platform.advance(1);
    }
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();
};

TEST_F(MediaStripTest, HeightsGoByTheNumberOfTilesAndTheStyle) {
    UIScreen::mainScreen();
    showNew();
    const float side = static_cast<float>(375 / 3.0 - 10.0);
    const struct {
        std::size_t items;
        std::int64_t style;
        CGFloat height;
    } cases[] = {{0, 0, 106},      {1, 0, 202},      {500, 0, 48106},      {0, 1, side}, {2, 1, side},
                 {3, 1, 2 * side}, {5, 1, 2 * side}, {500, 1, 167 * side}, {4, 2, 0},    {0, -1, 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(UIArticleEditImagesTableViewCell::heightFor(ArticleImages(c.items), c.style), c.height)
            << c.items << " items in style " << c.style;
        EXPECT_EQ(UIArticleEditVideosTableViewCell::heightFor(ArticleVideos(c.items), c.style), c.height);
    }
    EXPECT_EQ(UIArticleEditImagesTableViewCell::heightFor(std::nullopt, 0), 106);
}

TEST_F(MediaStripTest, TilesHaveTheSizesOfTheStyle) {
    for (const std::int64_t style : {0, 1, 2}) {
        SCOPED_TRACE(style);
        showNew(style);
        auto& view = *images().collectionView();
        const CGFloat width = view.frame().width();
        ASSERT_GT(width, 300);
        const auto grid = static_cast<float>(width / 3.0 - 10.0);
        const CGSize expected[] = {{width - 27, 86}, {grid, grid}, {167, 167}};
        EXPECT_EQ(images().collectionViewLayoutSizeForItemAtIndexPath(view, {0, 0}), expected[style]);
        ArticleImages items;
        for (int i = 0; i < 5; ++i) items.push_back(std::make_shared<NSArticleImageObject>());
        images().setImagesArray(items);
        view.reloadData();
        editor->imageNumberChanged(images());
        platform.advance(1);
        // Three grid tiles fill a line, although their side is rounded.
        const CGFloat first = view.frameForItemAtIndexPath({0, 0}).minY();
        EXPECT_EQ(view.frameForItemAtIndexPath({0, 2}).minY() == first, style == 1);
        EXPECT_GT(view.frameForItemAtIndexPath({0, 3}).minY(), first);
        EXPECT_EQ(first, 5);
    }
}

TEST_F(MediaStripTest, AHalfSecondPressMakesTilesShakeWithoutTheAddTile) {
    showExisting(articleWith(4));
    EXPECT_EQ(tileCount(images()), 5);
    EXPECT_EQ(image(0)->animationForKey("shake"), nullptr);
    EXPECT_EQ(image(0)->removeButton()->alpha(), 1);
    const CGPoint point = middle(images(), 0);
    platform.touch(UITouchPhase::began, {point.x - 120, point.y});
    platform.advance(0.6);
    platform.touch(UITouchPhase::ended, {point.x - 120, point.y});
    platform.advance(0.1);
    EXPECT_TRUE(images().isItemShake());
    EXPECT_FALSE(videos().isItemShake());
    EXPECT_EQ(tileCount(images()), 4);
    const auto* const shake = image(0)->animationForKey("shake");
    ASSERT_NE(shake, nullptr);
    EXPECT_EQ(shake->values, (std::vector<double>{-0.03, 0.03, -0.03}));
    EXPECT_EQ(image(3)->removeButton()->alpha(), 0);
    images().end_drag();
    platform.settle();
    EXPECT_EQ(tileCount(images()), 5);
    EXPECT_EQ(image(0)->animationForKey("shake"), nullptr);
    EXPECT_EQ(image(0)->removeButton()->alpha(), 1);
}

TEST_F(MediaStripTest, ADragSwapsTwoItemsWhateverLayBetween) {
    const struct {
        std::int64_t from, to;
        const char* order;
        const char* heard;
    } cases[] = {
        {0, 2, "CBAD", "value "}, {3, 0, "DBCA", "value "}, {1, 2, "ACBD", "value "}, {2, 2, "ABCD", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.from << " to " << c.to);
        showExisting(articleWith(4));
        listen();
        table().setContentOffset({0, 100});
        images().start_drag();
        platform.advance(0.1);
        drag(middle(images(), c.from), middle(images(), c.to));
        EXPECT_EQ(order(), c.order);
        EXPECT_EQ(listener->take(), c.heard);
        std::string shown;
        for (std::int64_t i = 0; i < 4; ++i) shown += image(i)->myTextView()->text();
        EXPECT_EQ(shown, c.order) << "the tiles show the array";
        EXPECT_TRUE(images().isItemShake()) << "lifting the finger only ends the move";
    }
}

TEST_F(MediaStripTest, TheAddTileIsNoPlaceToMoveTo) {
    showExisting(articleWith(2));
    listen();
    auto& view = *images().collectionView();
    using Path = NSIndexPath;
    EXPECT_EQ(images().collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(
                  view, {0, 0}, {0, 2}),
              (Path{0, 1}));
    EXPECT_EQ(images().collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(
                  view, {0, 2}, {0, 0}),
              (Path{0, 2}));
    images().collectionViewMoveItemAtIndexPathToIndexPath(view, {0, 2}, {0, 0});
    EXPECT_EQ(order(), "AB");
    EXPECT_EQ(listener->take(), "");
}

TEST_F(MediaStripTest, ARemovalRemembersTheRecordOfAnExistingItemOnce) {
    showExisting(articleWith(3));
    finishPicking(pickFrom(images()), "public.image", picture());
    listen();
    EXPECT_EQ(images().removedImagesDictionaryArray(), std::nullopt);
    image(3)->remove();
    platform.advance(1);
    EXPECT_EQ(order(), "ABC");
    EXPECT_EQ(images().removedImagesDictionaryArray(), std::nullopt) << "a new item leaves no trace";
    EXPECT_EQ(listener->take(), "number ");
    const auto tile = image(1);
    tile->remove();
    tile->remove();
    platform.advance(1);
    EXPECT_EQ(order(), "AC");
    ASSERT_EQ(images().removedImagesDictionaryArray()->size(), 1u);
    EXPECT_EQ(recordText(images().removedImagesDictionaryArray()->front(), "text"), "B");
    EXPECT_EQ(listener->take(), "number ");
    EXPECT_EQ(tileCount(images()), 3);
}

TEST_F(ArticleEditTest, ARemovalShrinksTheRow) {
    showExisting(articleWith(3, 1));
    image(1)->remove();
    platform.advance(1);
    EXPECT_EQ(table().rectForRowAtIndexPath({1, 0}).height(), 4 * 10 + 3 * 86);
    EXPECT_EQ(image(1)->myTextView()->text(), "C");
    EXPECT_TRUE(images().collectionViewRemoveItemAtIndexPath(*images().collectionView(), {0, 1}));
    platform.advance(1);
    EXPECT_EQ(order(), "A");
    EXPECT_FALSE(images().collectionViewRemoveItemAtIndexPath(*images().collectionView(), {0, 1}));
}

// Picking

TEST_F(MediaStripTest, ThePickerIsPresentedByTheIdiom) {
    const struct {
        UIUserInterfaceIdiom idiom;
        UIModalPresentationStyle style;
    } cases[] = {{UIUserInterfaceIdiom::phone, UIModalPresentationStyle::fullScreen},
                 {UIUserInterfaceIdiom::pad, UIModalPresentationStyle::formSheet},
                 {UIUserInterfaceIdiom::mac, UIModalPresentationStyle::fullScreen}};
    for (const auto& c : cases) {
        useIdiom(c.idiom);
        showExisting(articleWith(1));
        for (UIArticleEditMediaTableViewCell* const strip :
             std::initializer_list<UIArticleEditMediaTableViewCell*>{&images(), &videos()}) {
            const auto picker = pickFrom(*strip);
            ASSERT_NE(picker, nullptr);
            EXPECT_EQ(picker->modalPresentationStyle, c.style);
            EXPECT_EQ(picker->mediaTypes(), Lines{strip == &images() ? "public.image" : "public.movie"});
            EXPECT_FALSE(picker->allowsEditing());
            images().selectImage();
            platform.settle();
            EXPECT_EQ(picker->presentedViewController(), nullptr) << "one picker at a time";
            strip->imagePickerControllerDidCancel(*picker);
            platform.advance(1);
            EXPECT_EQ(presented<UIImagePickerController>(), nullptr);
        }
        EXPECT_EQ(tileCount(images()), 2);
        EXPECT_FALSE(canPost());
    }
    useIdiom(UIUserInterfaceIdiom::phone);
}

TEST_F(MediaStripTest, APickedPictureIsAddedWhenThePickerHasGone) {
    showExisting(articleWith(1));
    listen();
    const auto picker = pickFrom(images());
    finishPicking(picker, "public.movie", nullptr, NSURL("file:///clip.mov"));
    EXPECT_NE(presented<UIImagePickerController>(), nullptr) << "the wrong kind is ignored";
    EXPECT_EQ(listener->take(), "");
    const auto chosen = picture();
    finishPicking(picker, "public.image", chosen);
    EXPECT_EQ(presented<UIImagePickerController>(), nullptr);
    EXPECT_EQ(order(), "Anew");
    EXPECT_EQ(images().imagesArray()->back()->image(), chosen);
    EXPECT_EQ(listener->take(), "number ");
    EXPECT_EQ(tileCount(images()), 3);
}

class ClipTest : public MediaStripTest {
protected:
    ClipTest() {
        for (const char* name : {"/clip.mov", "/two.MOV"}) {
            auto& clip = media->clips[name];
            clip.presets = {std::string(AVAssetExportPresetMediumQuality)};
            clip.facts = {{std::string(AVMetadataCommonKeyModel), "Camera 7"},
                          {std::string(AVMetadataCommonKeyLocation), "+31.2304+121.4737+012.345/"}};
        }
    }
    void pick(const std::shared_ptr<UIImagePickerController>& picker, const char* address) {
        finishPicking(picker, "public.movie", nullptr, NSURL(address));
    }
    /// What the conversion left at the destination.
    void convertTo(const char* name, int seconds) {
        auto& clip = media->clips[home.path("Documents/" + std::string(name))];
        clip.length = CMTimeMake(seconds, 1);
        clip.frame = CGImage::make(16, 9);
    }
    const ArticleVideos& items() { return *videos().videosArray(); }
};

TEST_F(ClipTest, AClipIsConvertedUnderItsOwnNameAndAddedWithItsFacts) {
    showNew();
    listen();
    const auto picker = pickFrom(videos());
    pick(picker, "file:///clip.mov");
    ASSERT_EQ(media->exports.size(), 1u);
    platform.advance(0.5);
    EXPECT_TRUE(items().empty()) << "progress adds nothing";
    EXPECT_NE(presented<UIImagePickerController>(), nullptr) << "the picker stays while it runs";
    convertTo("clip.mov", 12);
    media->exports[0]->complete(Status::completed);
    EXPECT_TRUE(items().empty()) << "not on the thread of the export";
    platform.advance(1);
    ASSERT_EQ(items().size(), 1u);
    const auto& item = *items()[0];
    EXPECT_EQ(item.videoFile(), home.path("Documents/clip.mov"));
    EXPECT_EQ(item.duration(), 12);
    EXPECT_EQ(item.videoSize(), CGSize(16, 9));
    EXPECT_EQ(item.device(), "Camera 7");
    EXPECT_EQ(item.longitude(), "+121.4737");
    EXPECT_EQ(listener->take(), "number ");
    EXPECT_EQ(presented<UIImagePickerController>(), nullptr);
    EXPECT_EQ(video(0)->durationLabel()->text(), "0:12");
}

TEST_F(ClipTest, HoweverAConversionEndsTheClipIsAdded) {
    const std::vector<std::pair<const char*, std::function<void()>>> ends = {
        {"failed", [this] { media->exports.back()->complete(Status::failed, NSError{"no"}); }},
        {"cancelled", [this] { media->exports.back()->complete(Status::cancelled, NSError{"no"}); }},
        {"no quality fits", {}},
        {"no clip", {}},
    };
    for (const auto& [name, end] : ends) {
        SCOPED_TRACE(name);
        showNew();
        if (std::string_view(name) == "no quality fits") media->clips["/clip.mov"].presets.clear();
        if (std::string_view(name) == "no clip") media->clips.clear();
        pick(pickFrom(videos()), "file:///clip.mov");
        if (end) end();
        platform.advance(1);
        ASSERT_EQ(items().size(), 1u);
        EXPECT_EQ(items()[0]->thumbnail(), nullptr);
        EXPECT_EQ(items()[0]->duration(), 0);
        EXPECT_TRUE(canPost());
        EXPECT_EQ(presented<UIImagePickerController>(), nullptr);
        EXPECT_EQ(table().rectForRowAtIndexPath({2, 0}).height(), 202);
    }
}

TEST_F(ClipTest, ClipsAreAddedInTheOrderInWhichTheyAreDone) {
    showNew();
    const auto picker = pickFrom(videos());
    finishPicking(picker, "public.image", picture());
    pick(picker, "file:///clip.mov");
    pick(picker, "file:///two.MOV");
    ASSERT_EQ(media->exports.size(), 2u);
    media->exports[1]->complete(Status::completed);
    platform.advance(1);
    EXPECT_EQ(presented<UIImagePickerController>(), nullptr);
    // A picker opened meanwhile is not the one that the first clip came from.
    const auto second = pickFrom(videos());
    media->exports[0]->complete(Status::completed);
    platform.advance(1);
    ASSERT_EQ(items().size(), 2u);
    EXPECT_EQ(items()[0]->videoFile(), home.path("Documents/two.MOV"));
    EXPECT_EQ(items()[1]->videoFile(), home.path("Documents/clip.mov"));
    EXPECT_EQ(presented<UIImagePickerController>(), second);
}

TEST_F(ClipTest, AnEditorClosedWhileAClipConvertsAddsNothing) {
    showNew();
    const auto picker = pickFrom(videos());
    pick(picker, "file:///clip.mov");
    videos().imagePickerControllerDidCancel(*picker);
    platform.advance(1);
    EXPECT_FALSE(media->exports[0]->isCancelled);
    const auto strip = editor->videosCell();
    navigation->popViewControllerAnimated(true);
    platform.advance(1);
    EXPECT_TRUE(media->exports[0]->isCancelled);
    media->exports[0]->complete(Status::cancelled, NSError{"cancelled"});
    platform.advance(1);
    EXPECT_TRUE(strip->videosArray()->empty());
}

}  // namespace
}  // namespace ostrel
