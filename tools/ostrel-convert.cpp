// Converts a clip as the article editor does, and prints the facts that the editor reads from the clip.

#include "article/media/CaptureMetadata.h"
#include "article/media/NSMov2Mp4.h"
#include "backends/ffmpeg/FfmpegMediaBackend.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/foundation/runloop/SystemRunLoop.h"
#include "tools/ClipReport.h"

#include <CLI/CLI.hpp>

#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <unistd.h>

using namespace ostrel;

namespace {

enum ExitStatus { succeeded = 0, failed = 1, wrongUse = 2, interrupted = 130 };

constexpr double secondsBetweenLooks = 0.02;
/// Bounds the wait for a conversion; no clip takes this long.
constexpr double longestSeconds = 7 * 24 * 60 * 60.0;

volatile std::sig_atomic_t wasInterrupted = 0;
void rememberInterrupt(int) { wasInterrupted = 1; }

struct Outcome {
    std::string preset;
    std::optional<NSError> error;
    bool isOffered = false;
};

/// A line on a terminal that shows how far the conversion is.
class ProgressBar final {
public:
    explicit ProgressBar(bool isShown) : isShown_(isShown) {}
    ~ProgressBar() {
        if (isDrawn_) std::fputs("\n", stderr);
    }
    void show(float progress) {
        if (!isShown_) return;
        constexpr int width = 40;
        const int filled = static_cast<int>(std::lround(progress * width));
        std::string bar(static_cast<std::size_t>(filled), '#');
        bar.resize(width, '.');
        std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), static_cast<int>(std::floor(progress * 100)));
        std::fflush(stderr);
        isDrawn_ = true;
    }

private:
    bool isShown_;
    bool isDrawn_ = false;
};

Outcome convert(SystemRunLoop& loop, const NSURL& source, const std::string& destination, ProgressBar& bar) {
    Outcome outcome;
    std::atomic<bool> isFinished{false};
    // Written before isFinished is set, read after.
    std::optional<NSError> failure;
    const auto session = NSMov2Mp4().startConversion(
        source, destination, [&](bool finished, float progress, const std::optional<NSError>& error) {
            if (finished) {
                failure = error;
                isFinished.store(true, std::memory_order_release);
            } else {
                bar.show(progress);
            }
        });
    if (!session) return outcome;
    outcome.isOffered = true;
    outcome.preset = session->presetName();
    const auto look = NSTimer::scheduledTimer(secondsBetweenLooks, true, [&](NSTimer&) {
        if (wasInterrupted) session->cancelExport();
    });
    loop.run([&] { return isFinished.load(std::memory_order_acquire); }, longestSeconds);
    look->invalidate();
    // Waits for the thread of the conversion, because the handler above uses variables of this function.
    NSThread::waitForAll(longestSeconds);
    outcome.error = failure;
    if (!failure) bar.show(1);
    return outcome;
}

bool writePicture(const UIImage& picture, const std::string& path) {
    const bool isPng = path.size() > 4 && path.ends_with(".png");
    const Data data = isPng ? UIImagePNGRepresentation(picture) : UIImageJPEGRepresentation(picture, 0.9);
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(data.bytes()), static_cast<std::streamsize>(data.size()));
    file.close();
    return data && file.good();
}

int complain(const std::string& why, bool json) {
    ClipReport::printError(why, json);
    return failed;
}

int run(const std::string& in, const std::string& out, const std::string& thumbnail, bool json) {
    const auto loop = std::make_shared<SystemRunLoop>();
    RunLoop::installMain(loop);
    MediaBackend::install(std::make_shared<FfmpegMediaBackend>());
    std::signal(SIGINT, rememberInterrupt);
    std::signal(SIGTERM, rememberInterrupt);
    // Without this signal, a write beyond the limit of the file's size fails like any other write.
    std::signal(SIGXFSZ, SIG_IGN);
    const NSURL source = NSURL::fileURLWithPath(in);

    Outcome outcome;
    {
        ProgressBar bar(!json && ::isatty(STDERR_FILENO));
        outcome = convert(*loop, source, out, bar);
    }
    if (!outcome.isOffered) {
        std::optional<NSError> why;
        AVAsset::assetWithURL(source, &why);
        return complain(
            why ? why->localizedDescription : "The clip's pictures are in a format that cannot be converted.", json);
    }
    if (outcome.error) {
        complain(outcome.error->localizedDescription, json);
        return wasInterrupted ? interrupted : failed;
    }

    NSArticleVideoObject item;
    const auto clip = AVAsset::assetWithURL(source);
    if (clip) copyCaptureMetadata(*clip, item);
    std::shared_ptr<const UIImage> picture;
    float duration = 0;
    if (!NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(out), picture, duration))
        return complain("The converted clip cannot be inspected.", json);
    if (!thumbnail.empty() && !writePicture(*picture, thumbnail))
        return complain("The picture cannot be written.", json);

    ClipReport report;
    report.width = static_cast<int>(picture->size().width);
    report.height = static_cast<int>(picture->size().height);
    report.duration = static_cast<int>(duration);
    report.preset = outcome.preset == AVAssetExportPresetMediumQuality ? "medium" : "low";
    report.source = clip;
    report.result = AVAsset::assetWithURL(NSURL::fileURLWithPath(out));
    report.print(item, json);
    return succeeded;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Converts a clip to MP4 as the article editor does, and prints what the editor reads of it.",
                 "ostrel-convert"};
    std::string in, out, thumbnail;
    bool json = false;
    app.add_option("IN", in, "The clip: MOV, MP4, MKV, WebM or AVI")->required();
    app.add_option("OUT", out, "The MP4 file to make; replaced when it is there, once the new one is complete")
        ->required();
    app.add_option("--thumbnail", thumbnail, "Write the first frame, upright, to this file (.png; else JPEG)");
    app.add_flag("--json", json, "Print the facts, or the error, as one JSON object");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help()
                  << "\nFacts: duration (whole seconds), width and height of the upright picture, orientation of "
                     "the\n"
                     "result, how the source was turned, date (UTC), place, model, software, preset.\n"
                     "Ends with 0; 1 when the clip cannot be converted, 2 on wrong use, 130 when interrupted.\n";
        return succeeded;
    } catch (const CLI::ParseError& error) {
        std::cerr << "ostrel-convert: " << error.what() << ". See --help.\n";
        return wrongUse;
    }
    return run(in, out, thumbnail, json);
}
