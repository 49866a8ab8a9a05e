#include "article/media/CaptureMetadata.h"
#include "article/media/NSArticleImageObject.h"
#include "tests/article/media/MediaTest.h"

namespace ostrel {
namespace {

// Hosts rely on these types: a single-precision length, a pair of doubles, a flag of one byte.
static_assert(std::is_same_v<decltype(NSArticleVideoObject().duration()), float>);
static_assert(std::is_same_v<decltype(NSArticleVideoObject().videoSize().width), double>);
static_assert(sizeof(NSArticleVideoObject().textChanged()) == 1 && sizeof(NSArticleImageObject().textChanged()) == 1);

TEST(MediaItemTest, AFreshItemHasNothing) {
    const NSArticleImageObject image;
    EXPECT_FALSE(image.image() || image.text() || image.imageDictionary() || image.latitude() || image.longitude() ||
                 image.altitude() || image.textChanged());
    const NSArticleVideoObject video;
    EXPECT_FALSE(video.videoFile() || video.thumbnail() || video.text() || video.videoDictionary() || video.device() ||
                 video.software() || video.date() || video.latitude() || video.longitude() || video.altitude() ||
                 video.textChanged());
    EXPECT_EQ(video.duration(), 0);
    EXPECT_EQ(video.videoSize(), CGSize());
}

class CaptureMetadataTest : public MediaTest {
protected:
    using Facts = std::vector<AVMetadataItem>;
    void copy(Facts facts) {
        clip().facts = std::move(facts);
        copyCaptureMetadata(*AVAsset::assetWithURL(url), item);
    }
    static AVMetadataItem fact(std::string_view key, std::string text) { return {std::string(key), std::move(text)}; }
    NSArticleVideoObject item;
};

TEST_F(CaptureMetadataTest, PlaceIsCutAtFixedPositionsWhateverTheLayout) {
    struct Case {
        std::string text;
        std::optional<std::string> latitude, longitude, altitude;
    };
    for (const Case& c : {
             Case{"+31.2304+121.4737+012.345/", "+31.2304", "+121.4737", "+012.345"},
             Case{"-33.8568+151.2153+1234.5678/more", "-33.8568", "+151.2153", "+1234.567"},
             Case{"+31.2304+121.4737//////////", "+31.2304", "+121.4737", ""},
             // A text of another layout is cut at the same positions.
             Case{"+4.5-100.5+8.25CRSWGS_84//", "+4.5-100", ".5+8.25CR", "SWGS_84"},
             Case{"\u5317\u7eac+31.23+121.4737+012.345/", "\u5317\u7eac+31.23", "+121.4737", "+012.345"},
             // One character fewer than 26.
             Case{"+31.2304+121.4737+012.34/", {}, {}, {}},
             Case{"+31.2304+121.4737/", {}, {}, {}},
             Case{"", {}, {}, {}},
         }) {
        item = {};
        copy({fact(AVMetadataCommonKeyLocation, c.text)});
        EXPECT_EQ(item.latitude(), c.latitude) << c.text;
        EXPECT_EQ(item.longitude(), c.longitude) << c.text;
        EXPECT_EQ(item.altitude(), c.altitude) << c.text;
    }
}

TEST_F(CaptureMetadataTest, FactsGoToTheirPropertiesTheLaterOneWinsAndOthersAreIgnored) {
    copy({fact(AVMetadataCommonKeyModel, "Camera 1"),
          {std::string(AVMetadataCommonKeyCreationDate), NSDate{1000}},
          fact(AVMetadataCommonKeySoftware, "9.1"),
          fact("title", "A walk"),
          fact("", "nothing"),
          fact(AVMetadataCommonKeyModel, "Camera 2"),
          {std::string(AVMetadataCommonKeyCreationDate), NSDate{2000}}});
    EXPECT_EQ(item.device(), "Camera 2");
    EXPECT_EQ(item.software(), "9.1");
    EXPECT_EQ(item.date(), NSDate{2000});
    EXPECT_FALSE(item.latitude() || item.text() || item.thumbnail() || item.textChanged());
}

}  // namespace
}  // namespace ostrel
