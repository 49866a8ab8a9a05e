#include "tests/backends/ffmpeg/ClipProbe.h"
#include "tests/backends/ffmpeg/FfmpegTest.h"

#include <cerrno>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrel {
namespace {

std::string contentOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

class BadInputTest : public FfmpegTest {
protected:
    std::string good() { return ClipMaker::shared().plain("good.mov", "320x240", 1); }

    /// The handler is told the end once, and no file appears. The result tells which of the two ends it was.
    enum class End { noQuality, error };
    void expectNothing(const std::string& source, End end, const std::string& destination = "out.mp4") {
        SCOPED_TRACE(source);
        const auto before = filesIn(folder.path());
        const auto lines = log.lines().size();
        const Outcome outcome = convert(source, folder.path(destination));
        EXPECT_EQ(outcome.finishedCalls, 1);
        EXPECT_EQ(outcome.error.has_value(), end == End::error)
            << (outcome.error ? outcome.error->localizedDescription : "");
        if (outcome.error) {
            EXPECT_TRUE(outcome.error->localizedDescription.ends_with("."));
        }
        if (end == End::noQuality) {
            EXPECT_EQ(outcome.last, 0);
            ASSERT_EQ(log.lines().size(), lines + 1);
            EXPECT_EQ(log.lines().back(), "No sutiable video quality.");
        }
        EXPECT_EQ(filesIn(folder.path()), before);
    }
};

TEST_F(BadInputTest, WhatIsNoVideoIsOfferedNoQuality) {
    const std::string clip = contentOf(good());
    for (const std::string& source :
         {folder.write("text.mov", std::string(5000, 'x') + "\n"), folder.write("empty.mov", ""),
          folder.write("one.mov", "\x01"), folder.write("zeros.mp4", std::string(100000, '\0')),
          folder.write("playlist.mov", "#EXTM3U\n#EXTINF:1\nfile:///etc/passwd\n"),
          folder.write("concat.mov", "ffconcat version 1.0\nfile '" + good() + "'\n"),
          // The index stands last and is missing.
          folder.write("no-index.mov", clip.substr(0, clip.find("moov") - 4)), folder.path("missing.mov"),
          folder.path(), std::string("/dev/zero"),
          ClipMaker::shared().make("sound.m4a", "-f lavfi -i sine=440:d=1 -c:a aac"),
          ClipMaker::shared().make("odd.avi", "-f lavfi -i testsrc2=s=64x64:d=0.2 -c:v ffv1")})
        expectNothing(source, End::noQuality);
}

TEST_F(BadInputTest, AClipCutShortAtEveryTenthGivesAnErrorOrNoQuality) {
    struct Case {
        const char *name, *arguments;
        End end;  // with the index in front the clip opens
    };
    for (const Case& c : {Case{"front.mp4", "-i {good.mov} -c copy -movflags faststart", End::error},
                          Case{"back.mp4", "-i {good.mov} -c copy", End::noQuality},
                          Case{"cut.mkv", "-i {good.mov} -c copy", End::error},
                          Case{"cut.avi", "-i {good.mov} -c:v mpeg4 -c:a mp3", End::error}}) {
        good();
        const std::string whole = contentOf(ClipMaker::shared().make(c.name, c.arguments));
        for (int tenths = 0; tenths < 10; ++tenths) {
            SCOPED_TRACE(tenths);
            const std::string cut =
                folder.write(std::string("cut-") + c.name,
                             whole.substr(0, whole.size() / 10 * static_cast<std::size_t>(tenths)));
            const bool opens = asset(cut) && !asset(cut)->file()->exportPresets().empty();
            EXPECT_TRUE(!opens || c.end == End::error);
            EXPECT_TRUE(opens || c.end == End::noQuality || tenths < 3);
            expectNothing(cut, opens ? End::error : End::noQuality);
            picture(cut);  // may fail, must not crash
        }
    }
}

TEST_F(BadInputTest, ImpossibleSizesAreOfferedNoQuality) {
    const std::string clip = contentOf(good());
    // The sizes of a video sample entry (ISO/IEC 14496-12): 28 bytes behind its type "avc1".
    const std::size_t sizes = clip.find("avc1", clip.find("stsd")) + 28;
    for (const auto& [width, height] : {std::pair{32768, 240}, {320, 40000}, {20000, 16000}}) {
        std::string changed = clip;
        changed[sizes] = static_cast<char>(width >> 8);
        changed[sizes + 1] = static_cast<char>(width & 255);
        changed[sizes + 2] = static_cast<char>(height >> 8);
        changed[sizes + 3] = static_cast<char>(height & 255);
        expectNothing(folder.write("size.mov", changed), End::noQuality);
    }
}

TEST_F(BadInputTest, AClipWithoutKeyframesIsGivenUp) {
    // Every slice header damaged: nothing can be decoded, in thousands of packets.
    std::string clip = contentOf(ClipMaker::shared().plain(
        "many.mkv", "64x64", 180, "-an -c:v libx264 -preset ultrafast -g 9999 -pix_fmt yuv420p"));
    const std::string whole = clip;
    const std::size_t firstFrame = clip.find("\x1F\x43\xB6\x75");  // the first Cluster (RFC 9559)
    const std::size_t keyframe = clip.find("x264 - core", firstFrame);
    ASSERT_NE(keyframe, std::string::npos);
    // The keyframe's slice follows the encoder's message.
    for (std::size_t i = keyframe; i < keyframe + 1500; ++i) clip[i] = '\0';
    expectNothing(folder.write("many.mkv", clip), End::error);
}

TEST_F(BadInputTest, PlacesThatCannotBeWrittenAreRefusedBeforeAnythingIsDone) {
    std::filesystem::create_directory(folder.path("folder.mp4"));
    ASSERT_EQ(::mkfifo(folder.path("pipe.mp4").c_str(), 0600), 0);
    for (const std::string destination : {"folder.mp4", "pipe.mp4", "missing/deeper/out.mp4"})
        expectNothing(good(), End::error, destination);
    for (const std::string destination : {"/proc/out.mp4", "/dev/full", "/dev/null"}) {
        const Outcome outcome = convert(good(), destination);
        EXPECT_EQ(outcome.finishedCalls, 1);
        EXPECT_TRUE(outcome.error) << destination;
    }
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    if (::geteuid() != 0) {
        std::filesystem::create_directory(folder.path("closed"));
        std::filesystem::permissions(folder.path("closed"), std::filesystem::perms::owner_read);
        EXPECT_TRUE(convert(good(), folder.path("closed/out.mp4")).error);
        std::filesystem::permissions(folder.path("closed"), std::filesystem::perms::owner_all);
    }
}

TEST_F(BadInputTest, AClipIsNotConvertedOntoItselfByWhateverName) {
    std::filesystem::copy_file(good(), folder.path("self.mov"));
    std::filesystem::create_symlink("self.mov", folder.path("link.mov"));
    std::filesystem::create_hard_link(folder.path("self.mov"), folder.path("hard.mov"));
    for (const std::string destination : {"self.mov", "link.mov", "hard.mov", "./self.mov"})
        expectNothing(folder.path("self.mov"), End::error, destination);
    EXPECT_EQ(folder.read("self.mov"), contentOf(good()));
}

TEST_F(BadInputTest, ASourceDeletedHalfWayIsConvertedToItsEndAndOneThatChangesIsRefused) {
    const std::string slow = ClipMaker::shared().plain("slow2.mp4", "1280x720", 4);
    for (const bool isDeleted : {true, false}) {
        SCOPED_TRACE(isDeleted);
        std::filesystem::copy_file(slow, folder.path("source.mp4"));
        bool isDone = false;
        const Outcome outcome = convert(folder.path("source.mp4"), out(), [&](AVAssetExportSession&, float) {
            if (std::exchange(isDone, true)) return;
            if (isDeleted) {
                std::filesystem::remove(folder.path("source.mp4"));
            } else {
                std::filesystem::resize_file(folder.path("source.mp4"), 100000);
            }
        });
        ASSERT_TRUE(isDone);
        EXPECT_EQ(outcome.succeeded(), isDeleted);
        EXPECT_EQ(outcome.error.has_value(), !isDeleted);
        EXPECT_EQ(std::filesystem::exists(out()), isDeleted);
        std::filesystem::remove(out());
        std::filesystem::remove(folder.path("source.mp4"));
    }
}

/// Lets the call number `failing` fail.
class FailingFiles final : public OutputFiles {
public:
    explicit FailingFiles(bool hasUnnamed) : hasUnnamed_(hasUnnamed) {}

    int openUnnamed(const std::string& place) override {
        if (!hasUnnamed_) {
            errno = EOPNOTSUPP;
            return -1;
        }
        return fails() ? -1 : OutputFiles::openUnnamed(place);
    }
    int openTemporary(std::string& pattern) override {
        return fails() ? -1 : OutputFiles::openTemporary(pattern);
    }
    long write(int descriptor, const std::uint8_t* bytes, std::size_t count, std::int64_t offset) override {
        if (!fails()) return OutputFiles::write(descriptor, bytes, count, offset);
        // A full disk takes what still fits first.
        if (number == ENOSPC && count > 1 && !isFull_) {
            isFull_ = true;
            --calls;
            return OutputFiles::write(descriptor, bytes, count / 2, offset);
        }
        errno = number;
        return -1;
    }
    int synchronise(int descriptor) override { return fails() ? -1 : OutputFiles::synchronise(descriptor); }
    int link(int descriptor, const std::string& path) override {
        return fails() ? -1 : OutputFiles::link(descriptor, path);
    }
    int rename(const std::string& from, const std::string& to) override {
        return fails() ? -1 : OutputFiles::rename(from, to);
    }

    int failing = -1, calls = 0, number = ENOSPC;

private:
    bool fails() {
        errno = number;
        return calls++ == failing;
    }
    const bool hasUnnamed_;
    bool isFull_ = false;
};

TEST_F(BadInputTest, EveryWriteThatFailsInItsTurnLeavesWhatWasThere) {
    // Long enough for a dozen calls to the system, small enough to be made again for each.
    const std::string clip = ClipMaker::shared().plain(
        "failing.mov", "320x180", 1,
        "-vf noise=alls=80:allf=t -c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac");
    for (const bool hasUnnamed : {true, false}) {
        for (const int number : {ENOSPC, EIO}) {
            bool hasSucceeded = false;
            int failures = 0;
            for (int failing = 0; !hasSucceeded && failing < 100; ++failing) {
                SCOPED_TRACE(testing::Message() << "call " << failing << ", errno " << number);
                const auto files = std::make_shared<FailingFiles>(hasUnnamed);
                files->failing = failing;
                files->number = number;
                MediaBackend::install(std::make_shared<FfmpegMediaBackend>(files));
                folder.write("out.mp4", "what was there");
                const Outcome outcome = convert(clip, out());
                ASSERT_EQ(outcome.finishedCalls, 1);
                hasSucceeded = outcome.succeeded();
                if (hasSucceeded) {
                    EXPECT_TRUE(probeClip(out()));
                    EXPECT_LE(files->calls, failing);
                } else {
                    ++failures;
                    ASSERT_TRUE(outcome.error);
                    EXPECT_EQ(outcome.error->code, number);
                    EXPECT_EQ(folder.read("out.mp4"), "what was there");
                }
                ASSERT_EQ(filesIn(folder.path()), (std::vector<std::string>{"out.mp4"}));
            }
            EXPECT_TRUE(hasSucceeded);
            EXPECT_GE(failures, 4);
        }
    }
}

TEST_F(BadInputTest, TheFuzzersCorpusIsReadWithoutHarm) {
    int clips = 0, converted = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(std::string(OSTREL_SOURCE_DIR) +
                                                                           "/tests/fuzz/clips")) {
        if (!entry.is_regular_file()) continue;
        SCOPED_TRACE(entry.path().filename().string());
        ++clips;
        picture(entry.path().string());
        const Outcome outcome = convert(entry.path().string(), out());
        EXPECT_EQ(outcome.finishedCalls, 1);
        const bool isWhole = std::filesystem::exists(out()) && probeClip(out()).has_value();
        EXPECT_EQ(outcome.succeeded(), isWhole);
        converted += isWhole;
        std::filesystem::remove(out());
    }
    EXPECT_GE(clips, 100);
    // The seeds at least.
    EXPECT_GE(converted, 10);
}

TEST_F(BadInputTest, ASeedCutShortAtEveryTwentiethIsInspectedWithoutHarm) {
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(OSTREL_SOURCE_DIR) + "/tests/fuzz/clips")) {
        if (!entry.is_regular_file()) continue;
        const std::string bytes = contentOf(entry.path().string());
        EXPECT_TRUE(picture(entry.path().string()));
        for (std::size_t part = 1; part < 20; ++part)
            picture(folder.write("cut", bytes.substr(0, bytes.size() * part / 20)));
    }
}

}  // namespace
}  // namespace ostrel
