#include "serverframework/media/MediaDiskCache.h"
#include "serverframework/media/MediumBody.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Checking = MediaDiskCache::Checking;

std::string bytesOf(int seed, std::size_t size) {
    std::string bytes(size, '\0');
    auto state = static_cast<std::uint32_t>(seed) * 2654435761U + 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

class MediaDiskCacheTest : public testing::Test {
protected:
    static constexpr const char* url = "http://one.example/a.jpg";

    MediaDiskCache open(MediaDiskCache::Limits limits = {}) const { return {folder_.path("media"), limits}; }
    std::string file(const std::string& of = url) const { return folder_.path("media/") + MediumFile::nameFor(of); }
    static void keep(MediaDiskCache& cache, const std::string& bytes, const std::string& of = url) {
        MediumFacts facts;
        facts.entityTag = "\"tag\"";
        facts.lastModified = "Sat, 21 Nov 2026 02:32:38 GMT";
        facts.freshUntil = 2'000'000'000;
        cache.keep(of, facts, Data::copy(bytes), std::nullopt);
    }
    std::size_t total() const {
        std::size_t sum = 0;
        for (const auto& entry : fs::directory_iterator(folder_.path("media")))
            sum += (entry.file_size() + 4095) / 4096 * 4096;
        return sum;
    }
    std::size_t filesWith(const std::string& extension) const {
        std::size_t count = 0;
        for (const auto& entry : fs::directory_iterator(folder_.path("media")))
            count += entry.path().extension() == extension;
        return count;
    }

    TemporaryFolder folder_;
};

TEST_F(MediaDiskCacheTest, mediaOfAllSizesComeBackWithTheirFactsAfterARestart) {
    for (const std::size_t size : {0u, 1u, 4096u, 256u * 1024, 256u * 1024 + 1, 5u * 1024 * 1024}) {
        const std::string bytes = bytesOf(1, size);
        auto writing = open();
        keep(writing, bytes);
        auto cache = open();
        auto found = cache.find(url, Checking::small);
        if (size > 4u * 1024 * 1024) {
            EXPECT_TRUE(found.needsChecking) << "too large to be checked in passing";
            EXPECT_FALSE(found.medium);
            found = cache.find(url, Checking::all);
            EXPECT_TRUE(cache.find(url, Checking::small).medium) << "checked once";
        }
        ASSERT_TRUE(found.medium) << size;
        EXPECT_TRUE(found.medium->data.view() == bytes) << size;
        EXPECT_EQ(found.medium->facts.entityTag, "\"tag\"");
        EXPECT_EQ(found.medium->facts.lastModified, "Sat, 21 Nov 2026 02:32:38 GMT");
        MediumFacts later;
        later.freshUntil = std::time(nullptr) + 1000;
        cache.refresh(url, later);
        EXPECT_TRUE(writing.find(url, Checking::all).medium->facts.isFreshAt(later.freshUntil - 1));
        EXPECT_FALSE(writing.find(url, Checking::all).medium->facts.isFreshAt(later.freshUntil));
        cache.remove(url);
        EXPECT_FALSE(cache.find(url, Checking::all).medium);
    }
}

TEST_F(MediaDiskCacheTest, damageIsNoticedWhereverItIsAndTheFileDropped) {
    auto cache = open();
    keep(cache, bytesOf(2, 1000));
    const std::string whole = folder_.read("media/" + MediumFile::nameFor(url));
    std::vector<std::string> damaged = {"", "x", whole + "x", whole.substr(1), std::string(whole.size(), '\0')};
    for (std::size_t at = 0; at < whole.size(); at += at < 980 ? 97 : 1) {
        damaged.push_back(whole.substr(0, at));
        damaged.push_back(whole);
        damaged.back()[at] = static_cast<char>(damaged.back()[at] ^ 0x10);
    }
    for (std::size_t index = 0; index < damaged.size(); ++index) {
        folder_.write("media/" + MediumFile::nameFor(url), damaged[index]);
        EXPECT_FALSE(open().find(url, Checking::all).medium) << index;
        EXPECT_FALSE(fs::exists(file())) << index;
    }
    // A large medium is checked in pieces.
    for (const std::size_t at : {0, 255'999, 4'999'999}) {
        keep(cache, bytesOf(2, 5'000'000));
        std::string bytes = folder_.read("media/" + MediumFile::nameFor(url));
        bytes[at] = static_cast<char>(bytes[at] ^ 1);
        folder_.write("media/" + MediumFile::nameFor(url), bytes);
        EXPECT_FALSE(open().find(url, Checking::all).medium) << at;
        EXPECT_FALSE(fs::exists(file())) << at;
    }
    // A file under the name of another address says nothing of that.
    folder_.write("media/" + MediumFile::nameFor("http://two.example/"), whole);
    EXPECT_FALSE(open().find("http://two.example/", Checking::all).medium);
    folder_.write("media/" + MediumFile::nameFor(url), whole);
    EXPECT_TRUE(open().find(url, Checking::all).medium);
    fs::remove(file());
    fs::create_directory(file());
    EXPECT_FALSE(open().find(url, Checking::all).medium);
    keep(cache, "new");
    EXPECT_FALSE(open().find(url, Checking::all).medium) << "a folder is in its place, and nothing else went wrong";
    EXPECT_EQ(filesWith(".part"), 0u);
}

TEST_F(MediaDiskCacheTest, theBoundHoldsAndWhatWasUsedLongestAgoGoesFirst) {
    MediaDiskCache::Limits limits;
    limits.maximumBytes = 1024 * 1024;
    auto cache = open(limits);
    const auto address = [](int number) { return "http://one.example/" + std::to_string(number); };
    for (int number = 0; number < 200; ++number) {
        keep(cache, bytesOf(number, 20'000), address(number));
        EXPECT_TRUE(cache.find(address(0), Checking::all).medium) << "used all the time";
        ASSERT_LE(total(), limits.maximumBytes);
    }
    EXPECT_GT(total(), limits.maximumBytes / 2);
    EXPECT_TRUE(cache.find(address(199), Checking::all).medium);
    EXPECT_FALSE(cache.find(address(1), Checking::all).medium);

    keep(cache, bytesOf(1, 600'000), "http://one.example/giant");
    EXPECT_FALSE(cache.find("http://one.example/giant", Checking::all).medium) << "it would push out everything";

    limits.maximumBytes = 100'000;
    auto smaller = open(limits);
    keep(smaller, "x", address(500));
    EXPECT_LE(total(), limits.maximumBytes) << "a smaller bound holds for what was there before, too";
    limits.maximumBytes = 10'000'000;
    limits.maximumFiles = 10;
    auto fewer = open(limits);
    for (int number = 600; number < 650; ++number) keep(fewer, "x", address(number));
    EXPECT_LE(filesWith(".medium"), 10u);
    EXPECT_TRUE(fewer.find(address(649), Checking::all).medium);
}

TEST_F(MediaDiskCacheTest, leftOversOfACrashAreSweptButNotWhatIsBeingWritten) {
    MediaDiskCache::Limits limits;
    limits.leftOverSeconds = -1;
    auto cache = open(limits);
    keep(cache, "x");
    folder_.write("media/abcdef.part", "half");
    folder_.write("media/notes.txt", "somebody's");
    auto held = open(limits).newFile();
    ASSERT_TRUE(held && held->append("arriving"));
    auto later = open(limits);
    keep(later, "y", "http://one.example/y");
    EXPECT_FALSE(fs::exists(folder_.path("media/abcdef.part")));
    EXPECT_TRUE(fs::exists(folder_.path("media/notes.txt")));
    EXPECT_TRUE(fs::exists(held->path()));
    const Data arrived = Data::mapFile(held->path());
    later.keep("http://one.example/z", {}, arrived, std::move(held));
    EXPECT_EQ(later.find("http://one.example/z", Checking::all).medium->data.view(), "arriving");
    EXPECT_EQ(filesWith(".part"), 0u);
}

/// One process's part: media of known bytes under twenty addresses, written and read at random. The number of those
/// that were found and were wrong.
int useAtRandom(MediaDiskCache& cache, int seed, int times) {
    int wrong = 0;
    auto state = static_cast<std::uint32_t>(seed);
    for (int count = 0; count < times; ++count) {
        state = state * 1664525 + 1013904223;
        const int number = static_cast<int>(state >> 16) % 20;
        const std::string address = "http://one.example/" + std::to_string(number);
        const std::string bytes = bytesOf(number, 1000 + static_cast<std::size_t>(number) * 5000);
        if (state % 3 == 0) {
            cache.keep(address, {}, Data::copy(bytes), std::nullopt);
        } else if (state % 17 == 1) {
            cache.remove(address);
        } else if (const auto found = cache.find(address, Checking::all); found.medium) {
            wrong += found.medium->data.view() != bytes;
        }
    }
    return wrong;
}

TEST_F(MediaDiskCacheTest, processesShareAFolderAndAKilledOneLeavesOnlyWholeMedia) {
    MediaDiskCache::Limits limits;
    limits.maximumBytes = 400'000;
    int wrong = 0;
    for (int round = 0; round < 20; ++round) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            auto cache = open(limits);
            useAtRandom(cache, round + 1, 1'000'000);
            ::_exit(0);
        }
        auto cache = open(limits);
        wrong += useAtRandom(cache, -round, 50 + round);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
    limits.leftOverSeconds = -1;
    auto cache = open(limits);
    wrong += useAtRandom(cache, 77, 2000);
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(total(), limits.maximumBytes);
    EXPECT_EQ(filesWith(".part"), 0u);
}

TEST_F(MediaDiskCacheTest, aFolderThatCannotBeUsedKeepsNothingAndBreaksNothing) {
    folder_.write("file", "");
    for (const std::string& folder : {folder_.path("file/media"), std::string("/proc/nowhere")}) {
        MediaDiskCache cache(folder, {});
        keep(cache, "x");
        EXPECT_FALSE(cache.find(url, Checking::all).medium);
        EXPECT_FALSE(cache.newFile());
    }
}

/// Lets files grow to a size only, as a full disk does.
class FullDisk final {
public:
    explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

TEST_F(MediaDiskCacheTest, aBodyGoesOnInMemoryWhenItsFileCannotGrow) {
    const std::string bytes = bytesOf(3, 900'000);
    MediaLimits limits;
    limits.bodyInMemoryBytes = 100'000;
    limits.bodyWithoutFileBytes = 1'000'000;
    auto cache = open();
    const struct {
        rlim_t disk;
        std::size_t size;
        bool arrives;
        bool isInFile;
    } cases[] = {{RLIM_INFINITY, 100'000, true, false},
                 {RLIM_INFINITY, 900'000, true, true},
                 {500'123, 900'000, true, false},
                 {50, 900'000, true, false},
                 {500'123, 1'800'000, false, false}};
    for (const auto& one : cases) {
        const FullDisk full(one.disk);
        MediumBody body(limits, [&] { return cache.newFile(); });
        bool arrives = true;
        for (std::size_t at = 0; arrives && at < one.size; at += 16'384)
            arrives =
                body.write(std::string_view(bytes).substr(at % 900'000, std::min<std::size_t>(16'384, one.size - at)));
        EXPECT_EQ(arrives, one.arrives) << one.disk << " " << one.size;
        if (arrives) {
            const Data data = body.finish();
            EXPECT_TRUE(data.view() == std::string_view(bytes).substr(0, one.size)) << one.disk << " " << one.size;
            EXPECT_EQ(!data.filePath().empty(), one.isInFile);
        } else {
            EXPECT_EQ(body.failure(), "There is no room on the disk for the medium.");
        }
    }
    EXPECT_EQ(filesWith(".part"), 0u);
}

}  // namespace
}  // namespace ostrel
