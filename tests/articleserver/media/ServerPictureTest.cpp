#include "articleserver/media/ServerPicture.h"
#include "articleserver/media/ExifOrientation.h"
#include "tests/articleserver/ServerFixture.h"

#include <array>

namespace articleserver {

namespace {

/// 48 by 32 pixels; the left upper corner is red, the right upper one green, the rest blue.
ServerPicture flag() {
    ServerPicture picture(48, 32);
    cairo_t* context = cairo_create(picture.surface());
    auto fill = [&](int x, int y, int width, int height, double red, double green, double blue) {
        cairo_set_source_rgb(context, red, green, blue);
        cairo_rectangle(context, x, y, width, height);
        cairo_fill(context);
    };
    fill(0, 0, 48, 32, 0, 0, 1);
    fill(0, 0, 16, 16, 1, 0, 0);
    fill(32, 0, 16, 16, 0, 1, 0);
    cairo_destroy(context);
    return picture;
}

/// The main colour of the pixel: 'r', 'g' or 'b'.
char colourAt(const ServerPicture& picture, int x, int y) {
    cairo_surface_flush(picture.surface());
    const unsigned char* pixel = cairo_image_surface_get_data(picture.surface()) +
                                 std::ptrdiff_t{y} * cairo_image_surface_get_stride(picture.surface()) +
                                 std::ptrdiff_t{x} * 4;
    if (pixel[2] > 150) return 'r';
    return pixel[1] > 150 ? 'g' : 'b';
}

/// The corners: left upper, right upper, left lower, right lower.
std::string cornersOf(const ServerPicture& picture) {
    int right = picture.width() - 6;
    int lower = picture.height() - 6;
    return {colourAt(picture, 5, 5), colourAt(picture, right, 5), colourAt(picture, 5, lower),
            colourAt(picture, right, lower)};
}

}  // namespace

TEST(ServerPictureTest, OrientationsAreCarriedOutAsExifHasThem) {
    // Where the stored corners red and green are shown, by the table of Exif 2.32.
    constexpr std::array<const char*, 9> shown = {"", "rgbb", "grbb", "bbgr", "bbrg", "rbgb", "brbg", "bgbr", "gbrb"};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        auto decoded = ServerPicture::decode(withOrientation(flag().jpeg(95), orientation), 100);
        ASSERT_TRUE(decoded) << orientation;
        EXPECT_EQ(decoded->width(), orientation <= 4 ? 48 : 32) << orientation;
        EXPECT_EQ(decoded->height(), orientation <= 4 ? 32 : 48) << orientation;
        EXPECT_EQ(cornersOf(*decoded), shown[static_cast<std::size_t>(orientation)]) << orientation;
    }
}

TEST(ServerPictureTest, OrientationsOfDamagedSegmentsAreUpright) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const std::string segment = exifSegmentWith(orientation);
        EXPECT_EQ(exifOrientationOf(segment), orientation);
        for (std::size_t length = 0; length < 26; ++length) {
            EXPECT_EQ(exifOrientationOf(std::string_view(segment).substr(0, length)), 1) << length;
        }
        for (std::size_t at = 0; at < segment.size(); ++at) {
            for (int byte : {0, 1, 0x7F, 0xFF}) {
                std::string damaged = segment;
                damaged[at] = static_cast<char>(byte);
                int found = exifOrientationOf(damaged);
                EXPECT_TRUE(found >= 1 && found <= 8);
            }
        }
    }
    using namespace std::string_view_literals;
    EXPECT_EQ(exifOrientationOf("Exif\0\0II\x2A\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0"sv), 6)
        << "the other byte order";
    EXPECT_EQ(exifOrientationOf("Exif\0\0II\x2A\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x09\0\0\0"sv), 1);
    EXPECT_EQ(exifOrientationOf("http://ns.adobe.com/xap/1.0/"sv), 1);
}

}  // namespace articleserver
