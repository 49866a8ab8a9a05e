#include "tests/backends/ffmpeg/ClipProbe.h"
#include "tests/backends/ffmpeg/FfmpegTest.h"

#include <sys/stat.h>
#include <unistd.h>

namespace ostrel {
namespace {

class BadInputTest : public FfmpegTest {
protected:
    std::string good() { return ClipMaker::shared().plain("good.mov", "320x240", 1); }

    /// The handler is called once with the given end, and no file appears.
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
          // The index would be at the end and is missing.
          folder.write("no-index.mov", clip.substr(0, clip.find("moov") - 4)), folder.path("missing.mov"),
          folder.path(), std::string("/dev/zero"),
          ClipMaker::shared().make("sound.m4a", "-f lavfi -i sine=440:d=1 -c:a aac"),
          ClipMaker::shared().make("odd.avi", "-f lavfi -i testsrc2=s=64x64:d=0.2 -c:v ffv1")})
        expectNothing(source, End::noQuality);
}

TEST_F(BadInputTest, AClipCutShortAtEveryTenthGivesAnErrorOrNoQuality) {
    struct Case {
        const char *name, *arguments;
        // A clip whose index is in front can be opened.
        End end;
    };
    for (const Case& c : {Case{"front.mp4", "-i {good.mov} -c copy -movflags faststart", End::error},
                          Case{"back.mp4", "-i {good.mov} -c copy", End::noQuality},
                          Case{"cut.mkv", "-i {good.mov} -c copy", End::error},
                          Case{"cut.avi", "-i {good.mov} -c:v mpeg4 -c:a mp3", End::error}}) {
        good();
        const std::string whole = contentOf(ClipMaker::shared().make(c.name, c.arguments));
        for (int tenths = 0; tenths < 10; ++tenths) {
            SCOPED_TRACE(tenths);
            const std::string cut = folder.write(std::string("cut-") + c.name,
                                                 whole.substr(0, whole.size() / 10 * static_cast<std::size_t>(tenths)));
            const bool opens = asset(cut) && !asset(cut)->file()->exportPresets().empty();
            EXPECT_TRUE(!opens || c.end == End::error);
            EXPECT_TRUE(opens || c.end == End::noQuality || tenths < 3);
            expectNothing(cut, opens ? End::error : End::noQuality);
            // The picture may be missing; the program must not crash.
            picture(cut);
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
    // One keyframe, then more pictures that depend on it than a conversion tries without a picture.
    std::string clip = contentOf(ClipMaker::shared().plain(
        "many.mkv", "64x64", 102, "-an -c:v libx264 -preset ultrafast -g 9999 -pix_fmt yuv420p"));
    // The first Cluster (RFC 9559) has the encoder's message, then the keyframe's slice, which is cleared.
    const std::size_t keyframe = clip.find("x264 - core", clip.find("\x1F\x43\xB6\x75"));
    ASSERT_NE(keyframe, std::string::npos);
    std::fill_n(clip.begin() + static_cast<std::ptrdiff_t>(keyframe), 1500, '\0');
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

TEST_F(BadInputTest, ADeletedSourceIsConvertedToItsEndAndAChangedOneIsRefused) {
    const std::string source = folder.path("source.mov");
    struct Case {
        const char* what;
        std::function<void()> change;
        bool succeeds;
    };
    for (const Case& c : {Case{"deleted", [&] { std::filesystem::remove(source); }, true},
                          Case{"cut short", [&] { std::filesystem::resize_file(source, 30000); }, false},
                          Case{"longer", [&] { std::ofstream(source, std::ios::app) << "more"; }, false}}) {
        SCOPED_TRACE(c.what);
        std::filesystem::copy_file(good(), source, std::filesystem::copy_options::overwrite_existing);
        // The source is open by then, and nearly all of it is still to be read.
        watch([&](WatchedFiles::Call call, int) {
            if (call == WatchedFiles::Call::open) c.change();
            return true;
        });
        const Outcome outcome = convert(source, out());
        EXPECT_EQ(outcome.succeeded(), c.succeeds);
        EXPECT_EQ(outcome.error.has_value(), !c.succeeds);
        EXPECT_EQ(std::filesystem::exists(out()), c.succeeds);
        std::filesystem::remove(out());
    }
}

TEST_F(BadInputTest, EveryWriteThatFailsInItsTurnLeavesWhatWasThere) {
    // Noise, so that a small and short clip becomes large enough for several writes.
    const std::string clip =
        ClipMaker::shared().plain("failing.mov", "320x180", 0.7,
                                  "-vf noise=alls=80:allf=t -c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac");
    for (const auto& [hasUnnamed, number] : {std::pair{true, ENOSPC}, {false, EIO}}) {
        bool hasSucceeded = false;
        int failures = 0;
        for (int failing = 0; !hasSucceeded && failing < 100; ++failing) {
            SCOPED_TRACE(testing::Message() << "call " << failing << ", errno " << number);
            int calls = 0;
            watch(
                [&, failing = failing](WatchedFiles::Call, int call) {
                    calls = call;
                    return call != failing;
                },
                hasUnnamed, number);
            folder.write("out.mp4", "what was there");
            const Outcome outcome = convert(clip, out());
            ASSERT_EQ(outcome.finishedCalls, 1);
            hasSucceeded = outcome.succeeded();
            if (hasSucceeded) {
                EXPECT_TRUE(probeClip(out()));
                EXPECT_LT(calls, failing);
            } else {
                ++failures;
                ASSERT_TRUE(outcome.error);
                EXPECT_EQ(outcome.error->code, number);
                EXPECT_EQ(folder.read("out.mp4"), "what was there");
            }
            ASSERT_EQ(filesIn(folder.path()), (std::vector<std::string>{"out.mp4"}));
        }
        EXPECT_TRUE(hasSucceeded);
        // Opening, two writes, synchronising and the rename at least.
        EXPECT_GE(failures, 5);
    }
}

TEST_F(BadInputTest, TheFuzzersCorpusIsReadWithoutHarm) {
    const std::string seeds = std::string(OSTREL_SOURCE_DIR) + "/tests/fuzz/clips";
    int clips = 0, converted = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(seeds)) {
        if (!entry.is_regular_file()) continue;
        SCOPED_TRACE(entry.path().filename().string());
        ++clips;
        const bool isInspected = picture(entry.path().string()) != nullptr;
        const Outcome outcome = convert(entry.path().string(), out());
        EXPECT_EQ(outcome.finishedCalls, 1);
        EXPECT_EQ(outcome.succeeded(), probeClip(out()).has_value());
        converted += outcome.succeeded();
        std::filesystem::remove(out());
        if (entry.path().parent_path() != seeds) continue;
        EXPECT_TRUE(isInspected);
        const std::string bytes = contentOf(entry.path().string());
        for (std::size_t part = 1; part < 20; ++part)
            picture(folder.write("cut", bytes.substr(0, bytes.size() * part / 20)));
    }
    EXPECT_GE(clips, 100);
    // All seeds can be converted; the mutated clips need not.
    EXPECT_GE(converted, 10);
}

}  // namespace
}  // namespace ostrel
