#include "platform/foundation/values/NSURL.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace ostrel {
namespace {

TEST(URLTest, AFilePathSurvivesTheWayThroughAnAddress) {
    for (const std::string& path : std::vector<std::string>{"/a/b.mov", "/with space/\xE7\x89\x87.MOV", "/100%25.mov",
                                                            "/a?b#c;d.mov", "/line\nbreak"}) {
        const NSURL url = NSURL::fileURLWithPath(path);
        EXPECT_TRUE(url.isFileURL());
        EXPECT_EQ(url.path(), path);
        EXPECT_EQ(url.absoluteString().find_first_of(" ?#\n"), std::string::npos) << url.absoluteString();
    }
    EXPECT_EQ(NSURL::fileURLWithPath("x.mov").path(), (std::filesystem::current_path() / "x.mov").string());
    EXPECT_TRUE(NSURL::fileURLWithPath("").isEmpty());
}

TEST(URLTest, PathAndItsLastPart) {
    using Case = std::tuple<const char*, const char*, const char*>;
    for (const auto& [text, path, last] :
         {Case{"file:///DCIM/IMG_0001.MOV", "/DCIM/IMG_0001.MOV", "IMG_0001.MOV"},
          Case{"file://localhost/a/b/", "/a/b/", "b"}, Case{"file:/a/b", "/a/b", "b"},
          Case{"http://h.example/v/1.mp4?t=/2#3", "/v/1.mp4", "1.mp4"}, Case{"http://h.example", "", ""},
          Case{"file:///", "/", "/"}, Case{"/plain/path.mov", "/plain/path.mov", "path.mov"},
          Case{"file:///%E7%89%8", "/\xE7\x89%8", "\xE7\x89%8"}, Case{"", "", ""}}) {
        EXPECT_EQ(NSURL(text).path(), path) << text;
        EXPECT_EQ(NSURL(text).lastPathComponent(), last) << text;
    }
}

}  // namespace
}  // namespace ostrel
