#include "platform/foundation/resources/Files.h"
#include "platform/foundation/values/Data.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace ostrel {
namespace {

TEST(Data, TakesLongTextsWithoutCopyingAndAnEmptyOneIsNotNull) {
    std::string text(1000, 'x');
    const char* storage = text.data();
    auto data = std::make_unique<Data>(Data::take(std::move(text)));
    const Data copy = *data;
    data.reset();
    EXPECT_EQ(copy.view().data(), storage);
    EXPECT_EQ(copy.view(), std::string(1000, 'x'));
    EXPECT_EQ(Data::take("short").view(), "short");
    EXPECT_TRUE(Data().isNull() && Data().view().empty());
    EXPECT_TRUE(!Data::copy(std::string_view()).isNull() && Data::copy(std::string_view()).isEmpty());
}

TEST(Data, MapsFilesAlsoAfterTheirRemoval) {
    const TemporaryFolder folder;
    std::string content(10'003, 'v');
    content.replace(10'000, 3, "end");
    const std::string path = folder.write("clip.mov", content);
    const Data data = Data::mapFile(path);
    std::filesystem::remove(path);
    ASSERT_TRUE(data);
    EXPECT_EQ(data.size(), 10'003u);
    EXPECT_EQ(data.view().substr(10'000), "end");
    EXPECT_EQ(data.filePath(), path);

    const Data empty = Data::mapFile(folder.write("empty", ""));
    EXPECT_TRUE(empty && empty.isEmpty());
}

TEST(Files, WritesAtomicallyKeepsTheModeOfAnOldFileAndMakesNewOnesPrivate) {
    const TemporaryFolder folder;
    EXPECT_TRUE(writeFileAtomically(folder.path("a/b/new"), "one"));
    EXPECT_TRUE(writeFileAtomically(folder.path("a/b/new"), std::string(100'000, '2')));
    EXPECT_EQ(folder.read("a/b/new"), std::string(100'000, '2'));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path("a/b")), {}), 1);
    const auto mode = [&](const char* name) {
        struct stat status {};
        stat(folder.path(name).c_str(), &status);
        return status.st_mode & 07777u;
    };
    ASSERT_EQ(chmod(folder.write("old", "x").c_str(), 0640), 0);
    EXPECT_TRUE(writeFileAtomically(folder.path("old"), "y"));
    EXPECT_EQ(mode("old"), 0640u);
    EXPECT_EQ(mode("a/b/new"), 0600u);
}

TEST(Files, AFailureKeepsTheOldFile) {
    const TemporaryFolder folder;
    folder.write("file", "old");
    folder.write("busy/inside", "old");
    EXPECT_FALSE(writeFileAtomically(folder.path("file/below"), "new"));
    EXPECT_FALSE(writeFileAtomically(folder.path("busy"), "new"));  // a folder that is not empty
    EXPECT_FALSE(writeFileAtomically(folder.path("busy/"), "new"));
    EXPECT_FALSE(writeFileAtomically("", "new"));
    EXPECT_EQ(folder.read("file"), "old");
    EXPECT_EQ(folder.read("busy/inside"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2);
}

TEST(Files, HomeIsWhatWasSetElseTheEnvironments) {
    const std::string former = NSHomeDirectory();
    for (const std::string home : {"/some/where", ""}) {
        setHomeDirectory(home);
        EXPECT_EQ(NSHomeDirectory(), home.empty() ? former : home);
    }
}

TEST(Data, SlicesShareTheStorageAndAreClamped) {
    const TemporaryFolder folder;
    Data whole = Data::mapFile(folder.write("file", "0123456789"));
    const Data part = whole.slice(2, 3);
    EXPECT_EQ(whole.slice(0, 10).filePath(), whole.filePath());
    EXPECT_EQ(part.filePath(), "") << "the part is not the whole file";
    EXPECT_EQ(part.bytes(), whole.bytes() + 2);
    EXPECT_EQ(whole.slice(8, 100).view(), "89");
    EXPECT_TRUE(whole.slice(100, 1).isEmpty() && !whole.slice(100, 1).isNull());
    whole = Data();
    EXPECT_EQ(part.view(), "234") << "the mapping lives as long as its parts";
    EXPECT_EQ(part.slice(1, 1).view(), "3");
    EXPECT_TRUE(Data().slice(0, 5).isNull());
}

TEST(Files, ReadBytesStayWhenTheFileChanges) {
    TemporaryFolder folder;
    for (const auto& read : {readFile, snapshotOfFile}) {
        const std::string path = folder.write("odd \"name\" 100% \xF0\x9F\x8E\x88", std::string(100'000, 'a'));
        const Data data = read(path, 100'000, nullptr);
        std::filesystem::resize_file(path, 0);
        EXPECT_EQ(data.view(), std::string(100'000, 'a')) << "a mapping of the file would end the process here";
        std::filesystem::remove(path);
        EXPECT_EQ(data.size(), 100'000u);
    }
}

TEST(Files, UnreadableFilesAreRejectedWithASentence) {
    TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const std::pair<std::string, const char*> cases[] = {
        {folder.path("absent"), "No such file"},
        {folder.path(), "no regular file"},
        {folder.path("pipe"), "no regular file"},
        {folder.write("large", std::string((1 << 20) + 1, 'a')), "larger than 1 MiB"},
    };
    for (const auto& read : {readFile, snapshotOfFile}) {
        for (const auto& [path, part] : cases) {
            std::string error;
            EXPECT_TRUE(read(path, 1 << 20, &error).isNull()) << path;
            EXPECT_NE(error.find(part), std::string::npos) << error;
        }
        EXPECT_TRUE(read(folder.write("empty", ""), 1, nullptr).isEmpty());
    }
    for (const std::string& path : {folder.path("absent"), folder.path(), folder.path("pipe"), std::string()}) {
        std::string error;
        EXPECT_TRUE(Data::mapFile(path, &error).isNull());
        EXPECT_NE(error.find("\"" + path + "\""), std::string::npos) << error;
    }
}

}  // namespace
}  // namespace ostrel
