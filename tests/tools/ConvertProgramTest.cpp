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
    int status = -1;  ///< of the exit; -1: killed
    std::string output;
};

class ConvertProgramTest : public testing::Test {
protected:
    /// Runs the program to its end; a file it writes may be at most `largestFile` bytes long (0: as it likes).
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
        if (!std::freopen(output.c_str(), "w", stdout) || !std::freopen(errors.c_str(), "w", stderr))
            ::_exit(99);
        ::execv(texts[0], texts.data());
        ::_exit(98);
    }

    std::string clip() {
        ClipMaker::shared().plain("lying.mov", "640x360", 2);
        return ClipMaker::shared().make(
            "clip.mov",
            "-i {lying.mov} -c copy -metadata:s:v:0 rotate=270 -movflags use_metadata_tags "
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
        run({clip(), folder.path("out/a.mp4"), "--json", "--thumbnail", folder.path("out/a.png")});
    ASSERT_EQ(ended.status, 0) << folder.read("errors");
    EXPECT_EQ(
        nlohmann::json::parse(ended.output),
        nlohmann::json::parse(R"({"duration":2,"width":360,"height":640,"orientation":"up","turned":"right",
                  "date":"2026-11-21T02:32:38Z","latitude":"+31.2304","longitude":"+121.4737","altitude":"+012.345",
                  "model":"Camera 7","software":null,"preset":"medium"})"));
    EXPECT_TRUE(isWhole(folder.path("out/a.mp4")));
    EXPECT_EQ(folder.read("out/a.png").substr(1, 3), "PNG");
    const Ended text = run({clip(), folder.path("out/a.mp4")});
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.output.find("duration     2\n"), std::string::npos) << text.output;
}

TEST_F(ConvertProgramTest, SaysWhatIsWrongAndEndsWithAStatusOfItsOwn) {
    const std::string text = folder.write("text.mov", "no clip");
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char* says;
    };
    for (const Case& c : {Case{{}, 2, "IN is required"}, Case{{clip()}, 2, "OUT is required"},
                          Case{{clip(), "out.mp4", "--fast"}, 2, "--fast"}, Case{{"--help"}, 0, ""},
                          Case{{text, folder.path("out/a.mp4")}, 1, "This is no clip of a known kind"},
                          Case{{folder.path("none.mov"), folder.path("out/a.mp4")}, 1, "No such file"},
                          Case{{clip(), folder.path("out")}, 1, "The destination cannot be written"},
                          Case{{clip(), clip()}, 1, "onto itself"}}) {
        const Ended ended = run(c.arguments);
        EXPECT_EQ(ended.status, c.status) << testing::PrintToString(c.arguments);
        EXPECT_NE(folder.read("errors").find(c.says), std::string::npos) << folder.read("errors");
    }
    EXPECT_TRUE(made().empty());
    const Ended json = run({text, folder.path("out/a.mp4"), "--json"});
    EXPECT_TRUE(nlohmann::json::parse(json.output).contains("error")) << json.output;
}

TEST_F(ConvertProgramTest, AnInterruptEndsItAndLeavesNothing) {
    const std::string slow = ClipMaker::shared().plain("slow.mp4", "1920x1080", 5);
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
    ASSERT_EQ(run({clip(), out}).status, 0);
    const auto whole =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
    std::filesystem::remove(out);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::int64_t> moment(0, whole.count() * 12 / 10);
    constexpr int kills = 100;
    int finished = 0;
    for (int i = 0; i < kills; ++i) {
        const pid_t child = start({clip(), out});
        std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        for (const std::string& name : made()) {
            ASSERT_EQ(name, "a.mp4");
            ++finished;
            ASSERT_TRUE(isWhole(out)) << "kill " << i;
        }
        std::filesystem::remove(out);
    }
    // Both ends were met, else the moments say nothing.
    EXPECT_LT(finished, kills);
}

TEST_F(ConvertProgramTest, AFileThatMayNotGrowIsAnErrorAndLeavesNothing) {
    for (const rlim_t limit : {rlim_t{1}, rlim_t{1000}, rlim_t{30000}, rlim_t{100000}}) {
        EXPECT_EQ(run({clip(), folder.path("out/a.mp4")}, limit).status, 1) << limit;
        EXPECT_TRUE(made().empty());
    }
}

}  // namespace
}  // namespace ostrel
