#include "backends/headless/VirtualTime.h"
#include "platform/foundation/runloop/NSProgress.h"
#include "tests/support/ScriptedMedia.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

TEST(ExportProgress, AnExportIsWorkInProgressUntilItEnds) {
    VirtualTime time;
    const auto backend = std::make_shared<ScriptedMediaBackend>();
    backend->clips["/a b/film.mov"] = {.presets = {std::string(AVAssetExportPresetMediumQuality)}};
    MediaBackend::install(backend);
    const auto asset = AVAsset::assetWithURL(NSURL::fileURLWithPath("/a b/film.mov"));
    ASSERT_TRUE(asset);
    for (const auto end : {AVAssetExportSessionStatus::completed, AVAssetExportSessionStatus::failed}) {
        AVAssetExportSession session(asset, std::string(AVAssetExportPresetMediumQuality));
        session.setOutputURL(NSURL::fileURLWithPath("/out.mp4"));
        session.setOutputFileType(AVFileTypeMPEG4);
        bool wasListedAtEnd = false;
        session.exportAsynchronouslyWithCompletionHandler([&] { wasListedAtEnd = !NSProgress::published().empty(); });
        ASSERT_EQ(NSProgress::published().size(), 1u);
        const auto work = NSProgress::published().front();
        EXPECT_EQ(work->localizedDescription(), "Converting \"film.mov\"");
        const auto running = backend->exports.back();
        running->done = 0.25;
        EXPECT_EQ(work->fractionCompleted(), 0.25);
        work->cancel();
        EXPECT_TRUE(running->isCancelled);
        running->complete(end);
        EXPECT_FALSE(wasListedAtEnd);
        EXPECT_TRUE(NSProgress::published().empty());
    }
    // An export that cannot begin is not listed.
    AVAssetExportSession session(asset, "no such preset");
    session.exportAsynchronouslyWithCompletionHandler([] {});
    EXPECT_TRUE(NSProgress::published().empty());
    MediaBackend::install(nullptr);
}

}  // namespace
}  // namespace ostrel
