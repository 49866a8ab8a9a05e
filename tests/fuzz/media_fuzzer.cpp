#include "article/media/CaptureMetadata.h"
#include "article/media/NSMov2Mp4.h"
#include "backends/ffmpeg/FfmpegMediaBackend.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSThread.h"

#include <cstdlib>
#include <filesystem>
#include <future>
#include <sys/mman.h>
#include <unistd.h>

using namespace ostrel;

namespace {

/// One clip in this many is also converted, because a conversion takes about fifty times as long as an inspection.
constexpr unsigned inspectionsForOneConversion = 40;

/// A file in memory for the input, and a folder for the results.
struct Place {
    Place() {
        MediaBackend::install(std::make_shared<FfmpegMediaBackend>());
        setLogSink([](std::string_view) {});
        descriptor = ::memfd_create("clip", MFD_CLOEXEC);
        std::string pattern =
            (std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp") + std::string("/ostrel-fuzz-XXXXXX");
        if (descriptor < 0 || !::mkdtemp(pattern.data())) std::abort();
        folder = pattern;
        path = "/proc/self/fd/" + std::to_string(descriptor);
    }
    ~Place() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    void fill(const unsigned char* data, std::size_t size) const {
        if (::ftruncate(descriptor, 0) != 0 || ::pwrite(descriptor, data, size, 0) != static_cast<ssize_t>(size))
            std::abort();
    }

    int descriptor = -1;
    std::string path, folder;
};

/// For any bytes, a conversion ends with a file or with an error, never with both.
void convert(const Place& place, const std::shared_ptr<const AVAsset>& asset) {
    for (const std::string& preset : AVAssetExportSession::exportPresetsCompatibleWithAsset(asset)) {
        const std::string out = place.folder + "/out.mp4";
        AVAssetExportSession session(asset, preset);
        session.setOutputURL(NSURL::fileURLWithPath(out));
        session.setOutputFileType(AVFileTypeMPEG4);
        session.setShouldOptimizeForNetworkUse(true);
        std::promise<void> ended;
        session.exportAsynchronouslyWithCompletionHandler([&] { ended.set_value(); });
        ended.get_future().wait();
        NSThread::waitForAll(10);
        const bool isCompleted = session.status() == AVAssetExportSessionStatus::completed;
        if (isCompleted == session.error().has_value() || isCompleted != std::filesystem::exists(out)) std::abort();
        if (isCompleted) {
            std::shared_ptr<const UIImage> image;
            float seconds = 0;
            if (!NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(out), image, seconds)) std::abort();
            std::filesystem::remove(out);
        }
        if (!std::filesystem::is_empty(place.folder)) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const Place place;
    static unsigned executions = 0;
    static const bool convertsAll = std::getenv("OSTREL_FUZZ_CONVERT_ALL") != nullptr;
    place.fill(data, size);
    const NSURL url = NSURL::fileURLWithPath(place.path);
    std::shared_ptr<const UIImage> image;
    float seconds = -1;
    const bool hasPicture = NSMov2Mp4().mp4Information(url, image, seconds);
    if (hasPicture != (image != nullptr) || (hasPicture && seconds < 0)) std::abort();
    const auto asset = AVAsset::assetWithURL(url);
    if (!asset) return 0;
    NSArticleVideoObject item;
    copyCaptureMetadata(*asset, item);
    if (convertsAll || executions++ % inspectionsForOneConversion == 0) convert(place, asset);
    return 0;
}
