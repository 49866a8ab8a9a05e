#include "article/editor/MediaLayout.h"
#include "tests/article/editor/ArticleEditTest.h"

#include <tuple>

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
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();
};

TEST_F(MediaStripTest, ThreeGridTilesFillALineAlthoughTheirSideIsRounded) {
    openNew(1);
    for (int i = 0; i < 5; ++i) addImage();
    platform.advance(1);
    auto& view = *images().collectionView();
    for (std::int64_t i = 0; i < 5; ++i) {
        const CGRect frame = view.frameForItemAtIndexPath({0, i});
        EXPECT_EQ(frame.size, mediaTileSize(1, view.frame().width()));
        EXPECT_EQ(frame.minY(), i < 3 ? 5 : 15 + frame.height()) << i;
    }
}

TEST_F(MediaStripTest, AHalfSecondPressMakesTilesShakeWithoutTheAddTile) {
    openExisting(articleWith(4));
    const CGPoint point = middle(images(), 0);
    for (const bool shakes : {false, true, false}) {
        if (shakes) platform.press({point.x - 120, point.y}, 0.6);
        if (!shakes) images().end_drag();
        platform.advance(0.1);
        EXPECT_EQ(images().isItemShake(), shakes);
        EXPECT_FALSE(videos().isItemShake());
        EXPECT_EQ(tileCount(images()), shakes ? 4 : 5);
        const auto* const shake = image(0)->animationForKey("shake");
        ASSERT_EQ(shake != nullptr, shakes);
        EXPECT_TRUE(!shake || shake->values == (std::vector<double>{-0.03, 0.03, -0.03}));
        EXPECT_EQ(image(3)->removeButton()->alpha(), shakes ? 0 : 1);
    }
}

TEST_F(MediaStripTest, ADragSwapsTwoItemsWhateverLayBetween) {
    const struct {
        std::int64_t from, to;
        const char *order, *heard;
    } cases[] = {{0, 2, "CBAD", "value "}, {3, 0, "DBCA", "value "}, {1, 2, "ACBD", "value "}, {2, 2, "ABCD", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.from << " to " << c.to);
        openExisting(articleWith(4));
        listen();
        table().setContentOffset({0, 100});
        images().start_drag();
        platform.advance(0.1);
        platform.drag(middle(images(), c.from), middle(images(), c.to), 0.5, true);
        platform.advance(1);
        EXPECT_EQ(order(), c.order);
        EXPECT_EQ(listener->take(), c.heard);
        std::string shown;
        for (std::int64_t i = 0; i < 4; ++i) shown += image(i)->myTextView()->text();
        EXPECT_EQ(shown, c.order) << "the tiles show the array";
        EXPECT_TRUE(images().isItemShake()) << "lifting the finger ends the move, not the reordering";
    }
}

TEST_F(MediaStripTest, NoTileMovesBehindTheAddTile) {
    openExisting(articleWith(2));
    listen();
    auto& view = *images().collectionView();
    for (const auto& [from, proposed, target] : {std::tuple{0, 2, 1}, {0, 1, 1}, {2, 0, 2}}) {
        EXPECT_EQ(images().collectionViewTargetIndexPathForMoveFromItemAtIndexPathToProposedIndexPath(view, {0, from},
                                                                                                      {0, proposed}),
                  (NSIndexPath{0, target}));
    }
    images().collectionViewMoveItemAtIndexPathToIndexPath(view, {0, 2}, {0, 0});
    EXPECT_EQ(order() + listener->take(), "AB");
}

TEST_F(MediaStripTest, ARemovalRemembersTheRecordOfAnExistingItemOnceAndShrinksTheRow) {
    openExisting(articleWith(3));
    addImage();
    platform.advance(1);
    listen();
    remove(images(), 3);
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
    images().setDelegate(editor);
    remove(images(), 1);
    EXPECT_EQ(order(), "A");
    EXPECT_EQ(table().rectForRowAtIndexPath({1, 0}).height(), 202);
    EXPECT_FALSE(images().collectionViewRemoveItemAtIndexPath(*images().collectionView(), {0, 1}));
}

// Picking

TEST_F(MediaStripTest, TheIdiomDecidesHowThePickerIsPresented) {
    using Style = UIModalPresentationStyle;
    for (const auto& [idiom, style] : {std::pair{UIUserInterfaceIdiom::pad, Style::formSheet},
                                       {UIUserInterfaceIdiom::mac, Style::fullScreen},
                                       {UIUserInterfaceIdiom::phone, Style::fullScreen}}) {
        useIdiom(idiom);
        openExisting(articleWith(1));
        for (const bool isVideo : {false, true}) {
            UIArticleEditMediaTableViewCell& strip = isVideo ? static_cast<decltype(strip)>(videos()) : images();
            const auto picker = pickFrom(strip);
            ASSERT_NE(picker, nullptr);
            EXPECT_EQ(picker->modalPresentationStyle, style);
            EXPECT_EQ(picker->mediaTypes(), Lines{isVideo ? "public.movie" : "public.image"});
            EXPECT_FALSE(picker->allowsEditing());
            images().selectImage();
            platform.settle();
            EXPECT_EQ(picker->presentedViewController(), nullptr) << "one picker at a time";
            strip.imagePickerControllerDidCancel(*picker);
            platform.advance(1);
            EXPECT_EQ(presented<UIImagePickerController>(), nullptr);
        }
        EXPECT_EQ(tileCount(images()), 2);
        EXPECT_FALSE(canPost());
    }
}

TEST_F(MediaStripTest, APickedPictureIsAddedWhenThePickerHasClosed) {
    openExisting(articleWith(1));
    listen();
    const auto picker = pickFrom(images());
    finishPicking(picker, "public.movie", nullptr, NSURL("file:///clip.mov"));
    EXPECT_NE(presented<UIImagePickerController>(), nullptr) << "the wrong kind is ignored";
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
    const ArticleVideos& items() { return *videos().videosArray(); }
};

TEST_F(ClipTest, AClipIsConvertedUnderItsOwnNameAndAddedWithItsFacts) {
    openNew();
    listen();
    const auto picker = pickFrom(videos());
    pick(picker, "file:///clip.mov");
    ASSERT_EQ(media->exports.size(), 1u);
    platform.advance(0.5);
    EXPECT_TRUE(items().empty()) << "progress adds nothing";
    EXPECT_NE(presented<UIImagePickerController>(), nullptr) << "the picker stays while it runs";
    auto& converted = media->clips[home.path("Documents/clip.mov")];
    converted.length = CMTimeMake(12, 1);
    converted.frame = CGImage::make(16, 9);
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

TEST_F(ClipTest, AVideoIsAddedHoweverItsConversionEnds) {
    for (const char* const end : {"failed", "cancelled", "no quality fits", "no clip"}) {
        SCOPED_TRACE(end);
        openNew();
        if (*end == 'n') media->clips["/clip.mov"].presets.clear();
        if (end == std::string("no clip")) media->clips.clear();
        pick(pickFrom(videos()), "file:///clip.mov");
        if (*end != 'n')
            media->exports.back()->complete(*end == 'f' ? Status::failed : Status::cancelled, NSError{"no"});
        platform.advance(1);
        ASSERT_EQ(items().size(), 1u);
        EXPECT_EQ(items()[0]->thumbnail(), nullptr);
        EXPECT_EQ(items()[0]->duration(), 0);
        EXPECT_TRUE(canPost());
        EXPECT_EQ(presented<UIImagePickerController>(), nullptr);
        EXPECT_EQ(table().rectForRowAtIndexPath({2, 0}).height(), 202);
    }
}

TEST_F(ClipTest, AClipWithAnOddNameBecomesAFileOfThatName) {
    openNew();
    for (const std::string& name :
         {std::string("a b'c\"%20 \xf0\x9f\x98\x80.mov"), std::string(251, 'n') + ".mov", std::string("..")}) {
        finishPicking(pickFrom(videos()), "public.movie", nullptr, NSURL::fileURLWithPath("/clips/" + name));
        EXPECT_EQ(items().back()->videoFile(), home.path("Documents/" + name));
    }
}

TEST_F(ClipTest, VideosAreAddedInTheOrderInWhichTheirConversionsEnd) {
    openNew();
    const auto picker = pickFrom(videos());
    finishPicking(picker, "public.image", picture());
    pick(picker, "file:///clip.mov");
    pick(picker, "file:///two.MOV");
    ASSERT_EQ(media->exports.size(), 2u);
    media->exports[1]->complete(Status::completed);
    platform.advance(1);
    EXPECT_EQ(presented<UIImagePickerController>(), nullptr);
    // The picker that is open now is not the one that the first clip was picked from.
    const auto second = pickFrom(videos());
    media->exports[0]->complete(Status::completed);
    platform.advance(1);
    ASSERT_EQ(items().size(), 2u);
    EXPECT_EQ(items()[0]->videoFile(), home.path("Documents/two.MOV"));
    EXPECT_EQ(items()[1]->videoFile(), home.path("Documents/clip.mov"));
    EXPECT_EQ(presented<UIImagePickerController>(), second);
}

TEST_F(ClipTest, AnEditorClosedWhileAClipConvertsAddsNothing) {
    openNew();
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
