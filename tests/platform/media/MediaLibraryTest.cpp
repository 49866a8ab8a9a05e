#include "platform/media/MediaLibrary.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>

namespace ostrel {
namespace {

namespace files = std::filesystem;

class MediaLibraryTest : public ::testing::Test {
protected:
    std::string add(const std::string& name, int secondsAgo = 0) {
        const std::string path = folder.write(name, "x");
        files::last_write_time(path, start - std::chrono::seconds(secondsAgo));
        return path;
    }
    MediaLibrary::Contents search(bool pictures, bool clips) {
        return MediaLibrary({.pictures = {folder.path()}, .clips = {folder.path(), folder.path("absent")}})
            .contents(pictures, clips, isStopped);
    }
    /// Paths relative to the folder.
    std::vector<std::string> names(const MediaLibrary::Contents& contents) {
        std::vector<std::string> result;
        for (const auto& item : contents.items)
            result.push_back(item.path.substr(files::canonical(folder.path()).string().size() + 1));
        return result;
    }
    TemporaryFolder folder;
    const files::file_time_type start = files::file_time_type::clock::now();
    std::atomic<bool> isStopped = false;
};

TEST_F(MediaLibraryTest, GivesFilesOfTheWantedKindsNewestFirst) {
    add("old.JPG", 30);
    add("deep/er/new.png", 1);
    add("odd \"name\" 100% 🎈.webp", 20);
    add("clip.MOV", 10);
    add("same-b.gif", 40);
    add("same-a.gif", 40);
    for (const char* other : {"notes.txt", "jpg", ".hidden.jpg", ".cache/thumbnail.png", "picture.jpg.part"})
        add(other);
    files::create_directory(folder.path("folder.jpg"));
    files::create_directory_symlink(folder.path(), folder.path("deep/loop"));
    files::create_symlink(folder.path("gone"), folder.path("broken.jpg"));
    const std::vector<std::string> pictures{"deep/er/new.png", "odd \"name\" 100% 🎈.webp", "old.JPG", "same-a.gif",
                                            "same-b.gif"};
    EXPECT_EQ(names(search(true, false)), pictures);
    EXPECT_EQ(names(search(false, true)), std::vector<std::string>{"clip.MOV"});
    const auto both = search(true, true);
    EXPECT_EQ(both.items.size(), 6u) << "each once, though both kinds name the folder";
    EXPECT_EQ(both.items[1].kind, MediaKind::clip);
    EXPECT_FALSE(both.isIncomplete);
}

TEST_F(MediaLibraryTest, EndsAtItsDepthAndWhenStopped) {
    std::string path;
    for (int depth = 1; depth <= MediaLibrary::greatestDepth + 2; ++depth) {
        add(path + "p.jpg");
        path += "d/";
    }
    EXPECT_EQ(search(true, false).items.size(), std::size_t{MediaLibrary::greatestDepth});
    isStopped = true;
    EXPECT_TRUE(search(true, false).items.empty());
}

TEST_F(MediaLibraryTest, SaysWhenAFolderCannotBeRead) {
    const MediaLibrary library({.pictures = {folder.write("file", "x")}, .clips = {}});
    EXPECT_TRUE(library.contents(true, false, isStopped).isIncomplete) << "a file is no folder";
}

}  // namespace
}  // namespace ostrel
