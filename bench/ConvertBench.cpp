#include "article/media/NSMov2Mp4.h"
#include "backends/ffmpeg/FfmpegMediaBackend.h"
#include "bench/support/Bench.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/foundation/runloop/SystemRunLoop.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ostrel {

namespace {

using Arguments = std::vector<std::string>;

/// A temporary folder for clips, removed with this object.
class WorkFolder final {
public:
    WorkFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ostrel-bench-XXXXXX").string();
        if (::mkdtemp(pattern.data())) path_ = pattern;
    }
    ~WorkFolder() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    std::string path(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

struct Spent {
    /// Wall time; negative: the program failed.
    double seconds = -1;
    /// The most memory that was resident.
    double mebibytes = -1;
};

/// Runs a program to its end. Its standard error goes to the file `log`; without a name it is dropped.
Spent run(const Arguments& arguments, const std::string& log = {}) {
    std::vector<char*> texts;
    for (const std::string& text : arguments) texts.push_back(const_cast<char*>(text.c_str()));
    texts.push_back(nullptr);
    Spent spent;
    rusage usage{};
    int status = -1;
    const double seconds = secondsOf([&] {
        const pid_t child = ::fork();
        if (child == 0) {
            const int nowhere = ::open("/dev/null", O_RDWR);
            const int errors = log.empty() ? nowhere : ::open(log.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
            ::dup2(nowhere, STDIN_FILENO);
            ::dup2(nowhere, STDOUT_FILENO);
            ::dup2(errors, STDERR_FILENO);
            ::execvp(texts[0], texts.data());
            ::_exit(127);
        }
        ::wait4(child, &status, 0, &usage);
    });
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return spent;
    spent.seconds = seconds;
    spent.mebibytes = static_cast<double>(usage.ru_maxrss) / 1024;
    return spent;
}

std::string besideThis(const char* program) {
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / program).string();
}

Arguments joined(Arguments first, const Arguments& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const Arguments ffmpeg{"ffmpeg", "-nostdin", "-v", "error", "-y"};
/// The settings of both encoders in the medium preset.
const Arguments encoders{"-c:v",     "libx264", "-preset",  "veryfast", "-profile:v", "high",      "-crf", "23",
                         "-maxrate", "1000000", "-bufsize", "2000000",  "-g",         "150",       "-c:a", "aac",
                         "-b:a",     "128000",  "-ac",      "2",        "-movflags",  "+faststart"};

/// Makes a clip of ten seconds of 1920 by 1080 at 30 frames a second and 16 Mbit/s that is shown turned by 90 degrees.
/// False when ffmpeg cannot make it.
bool makeClip(const WorkFolder& folder, const std::string& path, const std::string& picture) {
    const std::string landscape = folder.path("landscape.mp4");
    return run(joined(ffmpeg, {"-f",       "lavfi",   "-i",       picture,
                               "-f",       "lavfi",   "-i",       "sine=440:r=48000:d=10",
                               "-c:v",     "libx264", "-preset",  "veryfast",
                               "-b:v",     "16M",     "-minrate", "16M",
                               "-maxrate", "16M",     "-bufsize", "16M",
                               "-pix_fmt", "yuv420p", "-c:a",     "aac",
                               "-ac",      "2",       landscape}))
                   .seconds >= 0 &&
           run(joined(ffmpeg, {"-i", landscape, "-c", "copy", "-metadata:s:v:0", "rotate=270", path})).seconds >= 0;
}

struct Side {
    double seconds = std::numeric_limits<double>::infinity();
    double mebibytes = std::numeric_limits<double>::infinity();
    bool hasFailed = false;
    void take(const Spent& spent) {
        hasFailed = hasFailed || spent.seconds < 0;
        seconds = std::min(seconds, spent.seconds);
        mebibytes = std::min(mebibytes, spent.mebibytes);
    }
};

std::vector<BenchResult> convertTurned(const std::string& name, const std::string& picture, int rounds) {
    const WorkFolder folder;
    const std::string clip = folder.path("clip.mp4");
    BenchResult time{.name = name, .goal = 1.0, .unit = "s", .note = "the same filters and encoder settings"};
    if (!makeClip(folder, clip, picture)) {
        time.fault = "the clip could not be made with ffmpeg";
        return {time};
    }
    Side ours, same, usual;
    for (int round = 0; round < rounds; ++round) {
        ours.take(run({besideThis("ostrel-convert"), clip, folder.path("ours.mp4"), "--json"}));
        same.take(run(joined(joined(ffmpeg, {"-noautorotate", "-i", clip, "-vf",
                                             "scale=640:360:flags=bicubic,transpose=clock,format=yuv420p,setsar=1"}),
                             joined(encoders, {folder.path("same.mp4")}))));
        usual.take(run(joined(joined(ffmpeg, {"-i", clip, "-vf", "scale=360:640"}),
                              joined(encoders, {folder.path("usual.mp4")}))));
    }
    const auto result = [&](const std::string& what, double goal, const char* unit, double mine, double other,
                            const char* note) {
        BenchResult made{.name = name + what, .ours = mine, .peer = other, .goal = goal, .unit = unit, .note = note};
        if (ours.hasFailed || same.hasFailed || usual.hasFailed) made.fault = "a conversion failed";
        return made;
    };
    return {result("", 1.0, "s", ours.seconds, same.seconds, "the same filters and encoder settings"),
            result(".default", 0.85, "s", ours.seconds, usual.seconds, "ffmpeg -vf scale, which turns first"),
            result(".memory", 1.2, "MiB", ours.mebibytes, same.mebibytes, "most memory, the same filters")};
}

/// The structural similarity of a clip to the source scaled to the size of the clip; negative when it cannot be
/// measured.
double similarity(const WorkFolder& folder, const std::string& clip, const std::string& source) {
    const std::string log = folder.path("ssim");
    Arguments arguments = ffmpeg;
    arguments[3] = "info";
    const Spent spent =
        run(joined(arguments, {"-i", clip, "-noautorotate", "-i", source, "-lavfi",
                               "[1:v]scale=640:360:flags=bicubic,transpose=clock[r];[0:v][r]ssim", "-f", "null", "-"}),
            log);
    std::ostringstream text;
    text << std::ifstream(log).rdbuf();
    const std::string said = text.str();
    const std::size_t all = said.rfind("All:");
    return spent.seconds < 0 || all == std::string::npos ? -1 : std::strtod(said.c_str() + all + 4, nullptr);
}

struct Quality {
    /// 1 less the structural similarity; negative: not measured.
    double distance = -1;
    double bytes = 0;
};

/// The distance that the peer would have at a size of `bytes`, interpolated between two of its own results.
double distanceAt(double bytes, const Quality& one, const Quality& other) {
    const double slope = (other.distance - one.distance) / (other.bytes - one.bytes);
    return one.distance + slope * (bytes - one.bytes);
}

std::vector<BenchResult> convertQuality(const BenchSettings& settings) {
    // The quality of an encoding at a fixed rate depends on the clip, so the distances of several clips are averaged.
    const int rounds = std::clamp(settings.rounds, 3, 10);
    std::vector<BenchResult> results;
    for (const auto& [name, picture] :
         {std::pair<std::string, std::string>{"convert.quality.synthetic", "testsrc2=s=1920x1080:r=30:d=10"},
          {"convert.quality.noise", "testsrc2=s=1920x1080:r=30:d=10,noise=alls=20:allf=t"}}) {
        const WorkFolder folder;
        const std::string clip = folder.path("clip.mp4");
        BenchResult result{.name = name,
                           .goal = 1.0,
                           .unit = "1-SSIM",
                           .note = "distance from the source scaled to the same size, at the same bit rate"};
        const auto measure = [&](const std::string& made, const Arguments& command) {
            Quality quality;
            if (run(command).seconds < 0) return quality;
            const double likeness = similarity(folder, made, clip);
            if (likeness >= 0) quality = {1 - likeness, static_cast<double>(std::filesystem::file_size(made))};
            return quality;
        };
        const auto peer = [&](const std::string& rateFactor) {
            const std::string made = folder.path("peer.mp4");
            Arguments command = joined(joined(ffmpeg, {"-i", clip, "-vf", "scale=360:640"}), encoders);
            *(std::find(command.begin(), command.end(), "-crf") + 1) = rateFactor;
            return measure(made, joined(command, {made}));
        };
        const std::string made = folder.path("ours.mp4");
        int measured = 0;
        for (; measured < rounds && makeClip(folder, clip, picture); ++measured) {
            const Quality ours = measure(made, {besideThis("ostrel-convert"), clip, made, "--json"});
            const Quality same = peer("23"), smaller = peer("23.5");
            if (ours.distance < 0 || same.distance < 0 || smaller.distance < 0 || same.bytes <= smaller.bytes) break;
            result.ours += ours.distance / rounds;
            result.peer += distanceAt(ours.bytes, same, smaller) / rounds;
        }
        if (measured < rounds) result.fault = "the similarity could not be measured";
        results.push_back(result);
    }
    return results;
}

/// One conversion in this process, on its own main loop.
class Conversion final {
public:
    Conversion(const std::string& from, const std::string& to) {
        RunLoop::installMain(loop_);
        session_ = NSMov2Mp4().startConversion(NSURL::fileURLWithPath(from), to,
                                               [this](bool finished, float, const std::optional<NSError>&) {
                                                   if (finished) isFinished_ = true;
                                               });
    }
    ~Conversion() {
        finish();
        RunLoop::installMain(nullptr);
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    void runFor(double seconds) {
        loop_->run([&] { return isFinished_.load(); }, seconds);
    }
    void cancel() {
        if (session_) session_->cancelExport();
    }
    /// Blocks until the thread of the conversion has ended.
    void finish() {
        constexpr double longest = 120;
        if (session_) runFor(longest);
        NSThread::waitForAll(longest);
    }

private:
    std::shared_ptr<SystemRunLoop> loop_ = std::make_shared<SystemRunLoop>();
    std::shared_ptr<AVAssetExportSession> session_;
    std::atomic<bool> isFinished_{false};
};

std::vector<BenchResult> convertInProcess(const BenchSettings&) {
    constexpr double milliseconds = 1000, longestCancel = 100, longestTurn = milliseconds / 60;
    BenchResult middle{.name = "convert.cancel.median",
                       .peer = longestCancel,
                       .goal = 1.0,
                       .unit = "ms",
                       .note = "from a cancel at a random moment to the end of its thread, beside the limit"};
    BenchResult worst = middle;
    worst.name = "convert.cancel.longest";
    BenchResult turns{.name = "convert.loop",
                      .peer = longestTurn,
                      .goal = 1.0,
                      .unit = "ms",
                      .note = "99 of 100 waits between turns of the main loop, beside 60 turns a second"};
    const auto failed = [&](const char* why) {
        middle.fault = worst.fault = turns.fault = why;
        return std::vector<BenchResult>{middle, worst, turns};
    };
    MediaBackend::install(std::make_shared<FfmpegMediaBackend>());
    const WorkFolder folder;
    const std::string clip = folder.path("clip.mp4"), out = folder.path("out/ours.mp4");
    if (!makeClip(folder, clip, "testsrc2=s=1920x1080:r=30:d=10"))
        return failed("the clip could not be made with ffmpeg");

    std::vector<double> waits;
    const double whole = secondsOf([&] {
        Conversion conversion(clip, out);
        auto last = std::chrono::steady_clock::now();
        const auto timer = NSTimer::scheduledTimer(1.0 / 120, true, [&](NSTimer&) {
            const auto now = std::chrono::steady_clock::now();
            waits.push_back(std::chrono::duration<double>(now - last).count());
            last = now;
        });
        conversion.finish();
        timer->invalidate();
    });
    if (waits.empty() || !std::filesystem::remove(out)) return failed("the conversion failed");
    std::sort(waits.begin(), waits.end());
    turns.ours = waits[waits.size() * 99 / 100] * milliseconds;

    constexpr int cancels = 50;
    std::mt19937 random(std::random_device{}());
    std::uniform_real_distribution<double> moment(0, whole);
    std::vector<double> spent;
    for (int i = 0; i < cancels; ++i) {
        Conversion conversion(clip, out);
        conversion.runFor(moment(random));
        spent.push_back(secondsOf([&] {
                            conversion.cancel();
                            conversion.finish();
                        }) *
                        milliseconds);
        // A conversion that was complete before it was cancelled leaves a whole clip; any other leaves no file.
        if (!std::filesystem::remove(out) && std::filesystem::exists(folder.path("out")) &&
            !std::filesystem::is_empty(folder.path("out")))
            return failed("a cancelled conversion left a file");
    }
    std::sort(spent.begin(), spent.end());
    middle.ours = spent[spent.size() / 2];
    worst.ours = spent.back();
    return {middle, worst, turns};
}

double inspectionMilliseconds(const std::string& clip) {
    std::shared_ptr<const UIImage> image;
    float seconds = 0;
    bool hasPicture = false;
    const double spent =
        secondsOf([&] { hasPicture = NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(clip), image, seconds); });
    return hasPicture ? spent * 1000 : -1;
}

std::vector<BenchResult> inspect(const BenchSettings& settings) {
    const WorkFolder folder;
    MediaBackend::install(std::make_shared<FfmpegMediaBackend>());
    const auto clipOf = [&](const char* name, int seconds) {
        const std::string path = folder.path(name), length = std::to_string(seconds);
        return run(joined(ffmpeg,
                          {"-stream_loop", "-1", "-i", folder.path("second.mp4"), "-t", length, "-c", "copy", path}))
                           .seconds >= 0
                   ? path
                   : std::string();
    };
    BenchResult failed{
        .name = "inspect", .goal = 0.25, .unit = "ms", .fault = "the clips could not be made with ffmpeg"};
    if (run(joined(ffmpeg, {"-f", "lavfi", "-i", "testsrc2=s=640x360:r=30:d=1", "-f", "lavfi", "-i",
                            "sine=440:r=48000:d=1", "-c:v", "libx264", "-preset", "veryfast", "-pix_fmt", "yuv420p",
                            "-c:a", "aac", folder.path("second.mp4")}))
            .seconds < 0)
        return {failed};
    const std::string brief = clipOf("brief.mp4", 10), hour = clipOf("hour.mp4", 3600);
    if (brief.empty() || hour.empty()) return {failed};
    const int rounds = std::max(3, settings.rounds * 4);
    BenchResult first = interleaved(
        "inspect", 0.25, "ms", rounds, [&] { return inspectionMilliseconds(brief); },
        [&] {
            return run(joined(ffmpeg, {"-i", brief, "-frames:v", "1", folder.path("frame.bmp")})).seconds * 1000;
        });
    first.note = "first frame and facts of 10 seconds, beside the ffmpeg command line's first frame";
    BenchResult length = interleaved(
        "inspect.hour", 1.1, "ms", rounds, [&] { return inspectionMilliseconds(hour); },
        [&] { return inspectionMilliseconds(brief); });
    length.note = "the same of an hour, beside 10 seconds";
    return {first, length};
}

}  // namespace

void addConvertBenches(std::vector<Bench>& benches) {
    const std::string synthetic = "testsrc2=s=1920x1080:r=30:d=10";
    benches.push_back(
        {"convert.turned", "a turned clip of 1080p to MP4, beside ffmpeg", [=](const BenchSettings& settings) {
             return convertTurned("convert.turned", synthetic, std::max(3, settings.rounds));
         }});
    benches.push_back({"convert.noise", "the same with noise", [=](const BenchSettings& settings) {
                           return convertTurned("convert.noise", synthetic + ",noise=alls=20:allf=t",
                                                std::max(3, settings.rounds));
                       }});
    benches.push_back({"convert.quality", "likeness to the source, beside ffmpeg", convertQuality});
    benches.push_back({"convert.cancel", "how soon a cancel ends, and how the main loop turns", convertInProcess});
    benches.push_back({"inspect", "first frame and facts of a clip, beside ffmpeg", inspect});
}

}  // namespace ostrel
