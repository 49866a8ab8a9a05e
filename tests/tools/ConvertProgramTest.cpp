#include "tests/support/ClipMaker.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace ostrel {
namespace {

struct Ended {
    /// The exit status; -1: the process was killed.
    int status = -1;
    std::string output;
};

class ConvertProgramTest : public testing::Test {
protected:
    /// Runs the program to its end. The program may write files of at most `largestFile` bytes; 0: of any size.
    Ended run(const std::vector<std::string>& arguments, rlim_t largestFile = 0) {
        const pid_t child = start(arguments, largestFile);
        int status = 0;
        ::waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, folder.read("output")};
    }

    pid_t start(const std::vector<std::string>& arguments, rlim_t largestFile = 0) {
        std::vector<std::string> all{OSTREL_CONVERT_PROGRAM};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::vector<char*> texts;
        for (std::string& text : all) texts.push_back(text.data());
        texts.push_back(nullptr);
        const std::string output = folder.path("output"), errors = folder.path("errors");
        const pid_t child = ::fork();
        if (child != 0) return child;
        if (largestFile) {
            const rlimit limit{largestFile, largestFile};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        }
        if (!std::freopen(output.c_str(), "w", stdout) || !std::freopen(errors.c_str(), "w", stderr)) ::_exit(99);
        ::execv(texts[0], texts.data());
        ::_exit(98);
    }

    /// A second of small pictures, for what does not depend on the clip: its conversion takes little more than a start
    /// of the program.
    static std::string smallClip() { return ClipMaker::shared().plain("small.mov", "160x90"); }
    /// A clip as a camera writes it that was turned by 90 degrees.
    static std::string cameraClip() {
        ClipMaker::shared().plain("landscape.mov", "320x180", 2);
        return ClipMaker::shared().make(
            "clip.mov", "-i {landscape.mov} -c copy -metadata:s:v:0 rotate=270 -movflags use_metadata_tags "
                        "-metadata com.apple.quicktime.location.ISO6709=+31.2304+121.4737+012.345/ "
                        "-metadata com.apple.quicktime.model='Camera 7' -metadata creation_time=2026-11-21T02:32:38Z");
    }
    static bool isWhole(const std::string& path) {
        const std::string command = "ffmpeg -nostdin -v error -xerror -i '" + path + "' -f null - 2>&1";
        FILE* pipe = ::popen(command.c_str(), "r");
        const int first = pipe ? std::fgetc(pipe) : 'x';
        return pipe && ::pclose(pipe) == 0 && first == EOF;
    }
    std::vector<std::string> made() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path("out")))
            names.push_back(entry.path().filename().string());
        return names;
    }

    ConvertProgramTest() { std::filesystem::create_directory(folder.path("out")); }
    TemporaryFolder folder;
};

TEST_F(ConvertProgramTest, TellsTheFactsThatTheEditorReads) {
    const Ended ended =
        run({cameraClip(), folder.path("out/a.mp4"), "--json", "--thumbnail", folder.path("out/a.png")});
    ASSERT_EQ(ended.status, 0) << folder.read("errors");
    EXPECT_EQ(nlohmann::json::parse(ended.output),
              nlohmann::json::parse(R"({"duration":2,"width":180,"height":320,"orientation":"up","turned":"right",
                  "date":"2026-11-21T02:32:38Z","latitude":"+31.2304","longitude":"+121.4737","altitude":"+012.345",
                  "model":"Camera 7","software":null,"preset":"medium"})"));
    EXPECT_TRUE(isWhole(folder.path("out/a.mp4")));
    EXPECT_EQ(folder.read("out/a.png").substr(1, 3), "PNG");
    const Ended text = run({smallClip(), folder.path("out/a.mp4")});
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.output.find("duration     1\n"), std::string::npos) << text.output;
}

TEST_F(ConvertProgramTest, SaysWhatIsWrongAndEndsWithAStatusOfItsOwn) {
    const std::string text = folder.write("text.mov", "no clip");
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char* says;
    };
    for (const Case& c : {Case{{}, 2, "IN is required"}, Case{{smallClip()}, 2, "OUT is required"},
                          Case{{smallClip(), "out.mp4", "--fast"}, 2, "--fast"}, Case{{"--help"}, 0, ""},
                          Case{{text, folder.path("out/a.mp4")}, 1, "This is no clip of a known kind"},
                          Case{{folder.path("none.mov"), folder.path("out/a.mp4")}, 1, "No such file"},
                          Case{{smallClip(), folder.path("out")}, 1, "The destination cannot be written"},
                          Case{{smallClip(), smallClip()}, 1, "onto itself"}}) {
        const Ended ended = run(c.arguments);
        EXPECT_EQ(ended.status, c.status) << testing::PrintToString(c.arguments);
        EXPECT_NE(folder.read("errors").find(c.says), std::string::npos) << folder.read("errors");
    }
    EXPECT_TRUE(made().empty());
    const Ended json = run({text, folder.path("out/a.mp4"), "--json"});
    EXPECT_TRUE(nlohmann::json::parse(json.output).contains("error")) << json.output;
}

TEST_F(ConvertProgramTest, AnInterruptEndsItAndLeavesNothing) {
    smallClip();
    // Its conversion takes much longer than this test, and making it needs no encoding.
    const std::string slow = ClipMaker::shared().make("slow.mov", "-stream_loop 600 -i {small.mov} -c copy");
    const pid_t child = start({slow, folder.path("out/a.mp4")});
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    ASSERT_EQ(::kill(child, SIGINT), 0);
    const auto asked = std::chrono::steady_clock::now();
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(500));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    EXPECT_TRUE(made().empty());
}

TEST_F(ConvertProgramTest, AKillAtAnyMomentLeavesNoFileThatIsNotWhole) {
    const std::string out = folder.path("out/a.mp4");
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(run({smallClip(), out}).status, 0);
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
    std::filesystem::remove(out);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    // Half of the kills come near the end, where the file gets its name.
    std::uniform_int_distribution<std::int64_t> anyMoment(0, whole.count() * 12 / 10);
    std::uniform_int_distribution<std::int64_t> lateMoment(whole.count() * 7 / 10, whole.count() * 12 / 10);
    constexpr int kills = 20;
    int finished = 0;
    for (int i = 0; i < kills; ++i) {
        const pid_t child = start({smallClip(), out});
        std::this_thread::sleep_for(std::chrono::microseconds(i % 2 == 0 ? anyMoment(random) : lateMoment(random)));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        for (const std::string& name : made()) {
            ASSERT_EQ(name, "a.mp4");
            ++finished;
            ASSERT_TRUE(isWhole(out)) << "kill " << i;
        }
        std::filesystem::remove(out);
    }
    // Some kills must have come before the end.
    EXPECT_LT(finished, kills);
}

TEST_F(ConvertProgramTest, AFileThatMayNotGrowIsAnErrorAndLeavesNothing) {
    for (const rlim_t limit : {rlim_t{1}, rlim_t{1000}, rlim_t{10000}, rlim_t{30000}}) {
        EXPECT_EQ(run({smallClip(), folder.path("out/a.mp4")}, limit).status, 1) << limit;
        EXPECT_TRUE(made().empty());
    }
}

}  // namespace
}  // namespace ostrel
